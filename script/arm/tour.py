"""The bench's tour, taken in the machine."""
from .steps import BRIEF, LONG, expect

# What the tour leaves in the PHY's registers of port 0: debug select, debug route, swing, debug
# enable, test mode, disconnect threshold.
REGISTERS = {0x9C000088: 0, 0x9C0000A0: 0x0004100C, 0x9C000190: 0x7F7F0046, 0x9C004A8C: 1,
             0x9C004A90: 7, 0x9C004A9C: 0x13}


def start(machine, *options):
    bench = machine.tree / "build/armhf/bin/testmode-bench"
    return machine.start([bench, "--tour", "/results/pictures", *options], LONG)


def finish(machine, job):
    """Every step is a line of its own in results/tour.txt; returns the tour's last line."""
    status = job.wait()
    said = job.said()
    (machine.results / "tour.txt").write_text(said, encoding="utf-8")
    failed = [line for line in said.splitlines() if line.startswith("FAILED")]
    expect(status == 0, "; ".join(failed) or f"ended with {status}: {said[-300:]}")
    pictures = len(list((machine.results / "pictures").glob("*.png")))
    return f"{next(line for line in said.splitlines() if ' steps, ' in line)} ({pictures} pictures)"


def start_on_real_memory(machine):
    """The PHY page's accesses go to the machine's own memory, where somebody else reads them."""
    for address in REGISTERS:
        machine.run(["busybox", "devmem", hex(address), "32", "0xFFFFFFFF"], BRIEF)
    return start(machine, "--real-memory")


def finish_on_real_memory(machine, job):
    seen = finish(machine, job)
    for address, expected in REGISTERS.items():
        word = int(machine.run(["busybox", "devmem", hex(address), "32"], BRIEF), 16)
        expect(word == expected, f"{address:#x} holds {word:#x}, not {expected:#x}")
    return f"{seen}; {len(REGISTERS)} registers found as written"

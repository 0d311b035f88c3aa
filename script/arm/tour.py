"""The bench's tour, taken in the machine."""
from .steps import expect


def take(machine, *options):
    """Every step is a line of its own in results/tour.txt; returns the tour's last line."""
    bench = machine.tree / "build/armhf/bin/testmode-bench"
    job = machine.start([bench, "--tour", "/results/pictures", *options], 280)
    status = job.wait()
    said = job.said()
    (machine.results / "tour.txt").write_text(said, encoding="utf-8")
    failed = [line for line in said.splitlines() if line.startswith("FAILED")]
    expect(status == 0, "; ".join(failed) or f"ended with {status}: {said[-300:]}")
    pictures = len(list((machine.results / "pictures").glob("*.png")))
    return f"{next(line for line in said.splitlines() if ' steps, ' in line)} ({pictures} pictures)"

"""Updates over /dev/ttyS4: a UART and its driver in the machine, the receiver on this PC."""
import json
import time

from .receiver import Package
from .steps import BRIEF, LONGEST, Failed, expect

# Through the update page without "Check": the port opens at the download's own rate.
UNCHECKED = """\
ui.click object=key_gps_update
ui.click object=pushButton_2
ui.click object=pushButton_3
ui.wait object=pushButton_3 property=enabled value=true timeout_ms=120000
ui.state object=textBrowser
"""

# A PC that stands still for longer than the dialogue's time-outs makes an update fail, some only after
# many more of them: it is broken off then. A good one takes seconds.
ATTEMPTS = 5
ATTEMPT_SECONDS = 300

# Well within the second image.
SOME_PACKETS = 40


class Updates:
    """The checks with one receiver, in one machine or another."""

    def __init__(self, unit, receiver):
        self.results = unit.results
        self.receiver = receiver
        self.programs = unit.tree / "build/armhf/bin"
        self.sample = unit.sample
        self.helper = unit.tree / "script/arm/guest/bench-calls"

    def prepare_line(self, machine):
        """The kernel takes the UART's clock for the usual slow one until it is told."""
        machine.run("setserial /dev/ttyS4 baud_base 921600", BRIEF)
        seen = machine.run("setserial -G /dev/ttyS4", BRIEF)
        expect("uart 16550A" in seen and "baud_base 921600" in seen, seen)
        return " ".join(seen.split())

    def _options(self, package):
        return ["--uart", "/dev/ttyS4", "--stand-ins", "--package", f"/results/{package.folder.name}"]

    def _flash(self, machine, package, *options, seconds=ATTEMPT_SECONDS):
        """Presses "Check" on its way: the port opens at 115200."""
        return machine.start([self.programs / "testmode-bench", "--flash",
                              *self._options(package), "--log", "/results/flash.trace", *options],
                             seconds)

    def _writes(self, machine, job):
        """Waits until it does, or has ended."""
        while not self.receiver.has_packets(SOME_PACKETS):
            machine.ended(patience=0.02)
            if job.status is not None:
                return False
        return True

    def _new_package(self):
        self.receiver.mark()
        return Package(self.sample, self.results)

    def _succeeded(self, job, package, opened_at):
        expect(job.wait() == 0, f"ended with {job.status}: {job.said()[-300:]}")
        missing = self.receiver.missing(package)
        expect(not missing, f"the flash differs in {', '.join(missing)}")
        rates = self.receiver.rates()
        expect(rates["sync"] == {opened_at}, f"opened at {rates['sync']}, not {opened_at}")
        for step in ("line-check", "load-stage-2", "packet"):
            expect(rates[step] == {921600}, f"{step} at {rates[step]}, not 921600")
        state = self.receiver.call("receiver.state")
        expect(not state["anomalies"], f"the receiver saw {state['anomalies'][:3]}")
        return (f"opened at {opened_at}, images at {state['host_baud']} baud, "
                f"{state['image_bytes_per_second']:.0f} bytes/s; all four equal in the flash")

    def unchecked(self, machine):
        """Opens at the rate that it downloads with."""
        package = self._new_package()
        (self.results / "unchecked.calls").write_text(UNCHECKED, encoding="utf-8")
        for _ in range(ATTEMPTS):
            self.receiver.mark()
            job = machine.start([self.helper, self.programs, "/results/unchecked.calls",
                                 *self._options(package)], ATTEMPT_SECONDS)
            job.wait()
            if "succed" in job.said():
                return self._succeeded(job, package, 921600)
        raise Failed(f"the page says: {job.said()[-300:]}")

    def checked(self, machine):
        """Opens at 115200 and switches."""
        package = self._new_package()
        for _ in range(ATTEMPTS):
            self.receiver.mark()
            job = self._flash(machine, package)
            if job.wait() == 0:
                break
        return self._succeeded(job, package, 115200)

    def line_pulled(self, machine):
        """The line goes in mid-update: the update ends by itself and says so. Back again, it carries
        the next one of the same process."""
        package = self._new_package()
        job = self._flash(machine, package, "--attempts", 1 + ATTEMPTS, "--format", "json",
                          seconds=LONGEST)
        expect(self._writes(machine, job), f"it did not come to write: {job.said()[-300:]}")
        machine.pull_line()
        pulled = time.monotonic()
        while not any('"kind":"failure"' in line and '"phase":"write"' in line
                      for line in job.said().splitlines()):
            time.sleep(0.1)
        noticed = time.monotonic() - pulled
        expect(self.receiver.missing(package), "the flash is complete all the same")
        machine.plug_line()
        expect(job.wait() == 0, f"ended with {job.status}: {job.said()[-300:]}")
        missing = self.receiver.missing(package)
        expect(not missing, f"the flash differs in {', '.join(missing)}")
        result = json.loads(job.said().splitlines()[-1])
        return (f"failed {noticed:.1f} s after the pull; attempt {result['attempts']} on the healed "
                "line: all four images equal in the flash")

    def power_cut(self, machine):
        """The machine goes in mid-update: an image is left half written."""
        package = self._new_package()
        for _ in range(ATTEMPTS):
            self.receiver.mark()
            job = self._flash(machine, package)
            if self._writes(machine, job):
                break
        machine.cut_power()
        missing = self.receiver.missing(package)
        expect(missing, "the flash is complete all the same")
        return f"not complete in the flash: {', '.join(missing)}"

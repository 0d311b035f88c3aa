"""Updates over USB serial adapters with their real driver: adapters and receivers are in the machine."""
import collections
import functools
import json
import time

from . import resetlines
from .receiver import Package, missing
from .steps import BRIEF, LONG, LONGEST, expect
from .updates import ATTEMPTS, ATTEMPT_SECONDS

# A line that nobody uses, as --reset names it, and as the kernel numbers it.
GPIO = "gpio:0:5"
GPIO_NUMBER = 2045

# Where the receiver falls silent, so that the host waits there while the adapter is pulled, and what
# the receiver's reset hangs on. One adapter each: the driver of their device side has eight ports.
# Those that wait for longest come first.
STEPS = {
    "stage-1-announce": "rts",
    "line-check": GPIO,
    "read-16": "dtr",
    "sync": "!dtr",
    "flash-id": "!rts",
    "load-stage-2": "rts",
    "load-stage-1": "dtr",
    "packet": "!rts",
}

# Bytes of an image of two packets: the whole sample package is for the other UART.
SHORT_IMAGE = 8192

AT_ONCE = 2

# Of one of this PC's processors, for each update whose adapter has gone, and for all of them. One that
# spins takes 100 %, several all that the two emulated ones have; the poll once a millisecond, next to
# nothing on a PC, takes 10 to 20 %, and the machine itself some more where only one is left.
MOST_PROCESSOR_PERCENT = 70
MOST_TOGETHER_PERCENT = 150
PROCESSOR_SECONDS = 5


class Adapters:
    """The checks in one machine; plug() comes first."""

    def __init__(self, machine, sample):
        self.machine = machine
        self.sample = sample
        self.programs = machine.tree / "build/armhf/bin"
        self.helpers = machine.tree / "script/arm/guest"
        self.devices = []
        self.lines = None
        self.pulled = []

    def plug(self):
        """An adapter for each step, with a receiver behind it."""
        said = self.machine.run([self.helpers / "adapters", "make", len(STEPS), self.programs], BRIEF)
        self.devices = said.split()
        expect(len(self.devices) == len(STEPS), said)
        self.lines = self.machine.start([self.helpers / "reset-lines", GPIO_NUMBER], 2 * LONGEST)
        return " ".join(self.devices)

    def update(self):
        """The reset is on the adapter's own line."""
        package = self._package()
        reset = next(iter(STEPS.values()))
        update = HealthyUpdate(self, 0, reset, package)
        self._few_at_once([update], HealthyUpdate.has_ended)
        return self._succeeded(0, reset, package, update.job)

    def pull(self):
        """In each step an adapter goes."""
        package = self._package()
        self.pulled = [PulledUpdate(self, number, step, package)
                       for number, step in enumerate(STEPS)]
        self._few_at_once(self.pulled, PulledUpdate.is_pulled)
        return f"in {', '.join(STEPS)}; {self._processor_share()}"

    def ends(self):
        """Every update whose adapter went ends by itself, and fails."""
        return "; ".join(update.end() for update in self.pulled)

    def plug_again(self):
        """Each comes back and carries an update. One that an ending update still has open comes back
        under another name."""
        said = self.machine.run([self.helpers / "adapters", "plug", *range(len(STEPS))], BRIEF)
        self.devices = said.split()
        package = self._package()
        updates = [HealthyUpdate(self, number, reset, package)
                   for number, reset in enumerate(STEPS.values())]
        self._few_at_once(updates, HealthyUpdate.has_ended)
        return "; ".join(self._succeeded(number, reset, package, updates[number].job)
                         for number, reset in enumerate(STEPS.values()))

    def _few_at_once(self, updates, is_done):
        """Many dialogues beside one another would make the emulated processor too slow for each."""
        waiting, running = collections.deque(updates), []
        while waiting or running:
            while waiting and len(running) < AT_ONCE:
                running.append(waiting.popleft())
                running[-1].start()
            self.machine.ended(patience=1)
            running = [update for update in running if not is_done(update)]

    def flash(self, number, reset, package, seconds):
        return self.machine.start(
            [self.programs / "testmode-bench", "--flash", "--uart", self.devices[number],
             "--reset", reset, "--stand-ins", "--package", f"/results/{package.folder.name}",
             "--format", "json", "--log", f"/results/adapter{number}.trace"], seconds)

    def _package(self):
        return Package(self.sample, self.machine.results, SHORT_IMAGE)

    def _succeeded(self, number, reset, package, job):
        device = self.devices[number]
        expect(job.wait() == 0, f"{device}: ended with {job.status}: {job.said()[-300:]}")
        differs = missing(package, lambda **place: self._call(number, "receiver.flash", **place))
        expect(not differs, f"{device}: the flash differs in {', '.join(differs)}")
        held = resetlines.held(self.lines.said(), number + 1, reset)
        expect(held, f"{device}: {self.lines.output} shows no reset by {reset}")
        return f"{device} flashed, {reset} held for {held:.0f} ms"

    def _processor_share(self):
        self.machine.run("true", BRIEF)  # hears of those that have ended
        waiting = sum(update.job.status is None for update in self.pulled)
        before = self.machine.processor_seconds()
        time.sleep(PROCESSOR_SECONDS)
        spent = self.machine.processor_seconds() - before
        expect(waiting, "no update was left whose processor time could be seen")
        together = 100 * spent / PROCESSOR_SECONDS
        percent = together / waiting
        expect(percent < MOST_PROCESSOR_PERCENT and together < MOST_TOGETHER_PERCENT,
               f"{waiting} of them take the emulator {percent:.0f} % of a processor each")
        return f"{waiting} of them take the emulator {percent:.1f} % of a processor each"

    def _call(self, number, method, **params):
        words = [f"{name}={json.dumps(value)}" for name, value in params.items()]
        return json.loads(self.machine.run(
            [self.programs / "testmode-ctl", "--socket", f"/run/adapters/{number}", method, *words],
            BRIEF))


class HealthyUpdate:
    """An update that nothing happens to."""

    def __init__(self, adapters, number, reset, package):
        self.begin = functools.partial(adapters.flash, number, reset, package, ATTEMPT_SECONDS)
        self.attempts = 0
        self.job = None

    def start(self):
        self.attempts += 1
        self.job = self.begin()

    def has_ended(self):
        if self.job.status and self.attempts < ATTEMPTS:
            self.start()
        return self.job.status is not None


class PulledUpdate:
    """An update whose adapter goes in one step."""

    def __init__(self, adapters, number, step, package):
        self.step = step
        self.attempts = 0
        self.begin = functools.partial(adapters.flash, number, STEPS[step], package, LONG)
        self.begin_to_pull = functools.partial(
            adapters.machine.start,
            [adapters.helpers / "adapters", "pull-at", number, step, adapters.programs],
            LONGEST)
        self.pulling = None
        self.job = None

    def start(self):
        self.attempts += 1
        self.pulling = self.pulling or self.begin_to_pull()
        self.job = self.begin()

    def is_pulled(self):
        """An update that fails before it gets there is ended and begun again."""
        if self.pulling.status is None and self._has_failed():
            expect(self.attempts < ATTEMPTS,
                   f"{self.step}: not reached in {ATTEMPTS} attempts: {self.job.said()[-300:]}")
            self.job.kill()
            self.job.wait()
            self.start()
        expect(not self.pulling.status, f"{self.step}: {self.pulling.said()}")
        return self.pulling.status is not None

    def _has_failed(self):
        told = (self.job.status is not None or '"kind":"failure"' in self.job.said()
                or time.monotonic() - self.job.started > ATTEMPT_SECONDS)
        return told and '{"phase":"silent"}' not in self.pulling.said()

    def end(self):
        status = self.job.wait()
        events = [json.loads(line) for line in self.job.said().splitlines() if line.startswith("{")]
        failures = [event["text"] for event in events if event["kind"] == "failure"]
        expect(status == 1 and failures,
               f"{self.step}: ended with {status}: {self.job.said()[-300:]}")
        seconds = self.job.at - self.pulling.at
        return f"{self.step}: {failures[0]}, after {seconds:.1f} s"

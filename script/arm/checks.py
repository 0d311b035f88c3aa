"""What is checked in the machine, in order."""
import contextlib

from . import build, tests, tour
from .adapters import Adapters
from .machine import Machine
from .receiver import Receiver
from .updates import Updates

BOOT_SECONDS = 180


class Unit:
    """The machine with all that stands around it."""

    def __init__(self, tree, results, files, run):
        self.tree = tree
        self.results = results
        self.files = files
        self.run = run

    @contextlib.contextmanager
    def powered(self, **options):
        """The machine, booted."""
        with contextlib.ExitStack() as stack:
            with self.run.preparing("machine on", BOOT_SECONDS):
                machine = Machine(self.files, self.tree, self.results, **options)
                stack.enter_context(machine)
            yield machine

    def receiver(self):
        return Receiver(self.tree / "build/dev/bin/testmode-receiver",
                        self.results / "receiver.log")

    def short(self):
        with self.receiver() as receiver, self.powered(line=receiver.line) as machine:
            updates = Updates(self.tree, self.results, receiver)
            self._line(machine, updates)
            self._update(machine, updates)
            with self._tour(tour.start(machine), tour.finish, machine):
                pass

    def whole(self):
        """What takes processor time beside the machine's, and what mostly waits, runs meanwhile."""
        chosen = tests.chosen(self.tree)
        folder = self.results.parent
        with build.Build(self.tree, folder, "armhf", *(test.name for test in chosen)) as building, \
                tests.OnPC(self.tree, self.results / "on-pc.txt") as on_pc, \
                self.receiver() as receiver:
            updates = Updates(self.tree, self.results, receiver)
            with self.powered(line=receiver.line, real_memory=True) as machine:
                self._first(machine, updates)
            with self.powered(line=receiver.line) as machine:
                self._line(machine, updates)
                self._update(machine, updates)
                with self.run.preparing("tests for the machine", 1800):
                    building.finish()
                tests.run_in(machine, chosen, self.run)
                with self.run.preparing("tests on this PC", 900):
                    on_pc.finish(self.run)
                self.run.check("plug-in for a unit, loaded", 60,
                               lambda: tests.load_plugin(machine))

    def _first(self, machine, updates):
        check = self.run.check
        adapters = Adapters(machine, updates.sample)
        self._line(machine, updates)
        check("update that opens at 921600", 200, lambda: updates.unchecked(machine))
        with self._tour(tour.start_on_real_memory(machine), tour.finish_on_real_memory, machine):
            check("line pulled in mid-update, and back", 300, lambda: updates.line_pulled(machine))
            check("USB adapters plugged in", 90, adapters.plug)
            check("update over an adapter", 200, adapters.update)
        check("adapter pulled in each phase", 500, adapters.pull)
        check("adapters plugged in again", 300, adapters.plug_again)
        check("updates whose adapter was pulled", 400, adapters.ends)
        check("power cut in mid-update", 120, lambda: updates.power_cut(machine))

    def _line(self, machine, updates):
        self.run.check("UART of the machine", 30, lambda: updates.prepare_line(machine))

    def _update(self, machine, updates):
        self.run.check("update that opens at 115200", 200, lambda: updates.checked(machine))

    @contextlib.contextmanager
    def _tour(self, job, finish, machine):
        """A tour that was started goes on beside what is done within."""
        yield
        self.run.check("tour", 300, lambda: finish(machine, job))

"""What is checked in the machine, in order."""
import contextlib

from . import build, groups, tests, tour
from .adapters import Adapters
from .machine import Machine
from .receiver import Receiver
from .steps import LONG, LONGEST
from .updates import Updates


class Unit:
    """The machine with all that stands around it."""

    def __init__(self, tree, results, files, run):
        self.tree = tree
        self.results = results
        self.files = files
        self.run = run
        self.sample = tree / "build/armhf/share/headunit/package"

    @contextlib.contextmanager
    def powered(self, **options):
        """The machine, booted."""
        with contextlib.ExitStack() as stack:
            with self.run.preparing("machine on", LONG):
                machine = Machine(self.files, self.tree, self.results, **options)
                stack.enter_context(machine)
                machine.await_ready()
            yield machine

    def receiver(self):
        return Receiver(self.tree / "build/dev/bin/testmode-receiver",
                        self.results / "receiver.log")

    def short(self):
        with self.receiver() as receiver, self.powered(line=receiver.line) as machine:
            updates = Updates(self, receiver)
            self._line(machine, updates)
            self._update(machine, updates)
            with self._tour(tour.start(machine), tour.finish, machine):
                pass

    def whole(self):
        """Most of what is waited for in one machine needs little of the processor."""
        groups.beside_one_another(self, {"line": Unit.line, "adapters": Unit.adapters,
                                         "tests": Unit.tests})

    def line(self):
        """Over /dev/ttyS4, to the receiver on this PC."""
        check = self.run.check
        with self.receiver() as receiver:
            updates = Updates(self, receiver)
            with self.powered(line=receiver.line, real_memory=True) as machine:
                self._line(machine, updates)
                check("update that opens at 921600", LONGEST, lambda: updates.unchecked(machine))
                with self._tour(tour.start_on_real_memory(machine), tour.finish_on_real_memory,
                                machine):
                    check("line pulled in mid-update, and back", 2 * LONGEST,
                          lambda: updates.line_pulled(machine))
                check("power cut in mid-update", LONG, lambda: updates.power_cut(machine))
            with self.powered(line=receiver.line) as machine:
                self._line(machine, updates)
                self._update(machine, updates)

    def adapters(self):
        """Over USB adapters with receivers behind them, all in the machine."""
        check = self.run.check
        with self.powered() as machine:
            adapters = Adapters(machine, self.sample)
            check("USB adapters plugged in", LONG, adapters.plug)
            check("update over an adapter", LONGEST, adapters.update)
            check("adapter pulled in each phase", LONGEST, adapters.pull)
            check("adapters plugged in again", LONGEST, adapters.plug_again)
            check("updates whose adapter was pulled", LONGEST, adapters.ends)

    def tests(self):
        """The other machines come first: what the tests take is processor time."""
        chosen = tests.chosen(self.tree)
        with build.Build(self.tree, self.results, "armhf", *(test.name for test in chosen),
                         niceness=10) as building, \
                tests.OnPC(self.tree, self.results / "on-pc.txt") as on_pc:
            with self.run.preparing("tests for the machine", 2 * LONGEST):
                building.finish()
            with self.powered(niceness=10) as machine:
                tests.run_in(machine, chosen, self.run)
                with self.run.preparing("tests on this PC", LONGEST):
                    on_pc.finish(self.run)
                self.run.check("plug-in for a unit, loaded", LONG,
                               lambda: tests.load_plugin(machine))

    def _line(self, machine, updates):
        self.run.check("UART of the machine", LONG, lambda: updates.prepare_line(machine))

    def _update(self, machine, updates):
        self.run.check("update that opens at 115200", LONGEST, lambda: updates.checked(machine))

    @contextlib.contextmanager
    def _tour(self, job, finish, machine):
        """A tour that was started goes on beside what is done within."""
        yield
        self.run.check("tour", LONGEST, lambda: finish(machine, job))

"""What is checked in the machine, in order."""
import concurrent.futures
import contextlib

from . import build, tests, tour
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
            updates = Updates(self.tree, self.results, receiver)
            self._line(machine, updates)
            self._update(machine, updates)
            with self._tour(tour.start(machine), tour.finish, machine):
                pass

    def whole(self):
        """The tests have a machine of their own, which takes what processor time the other one
        leaves. Both are in use while the tests are still being built."""
        chosen = tests.chosen(self.tree)
        folder = self.results.parent
        with concurrent.futures.ThreadPoolExecutor(1) as beside, \
                build.Build(self.tree, folder, "armhf", *(test.name for test in chosen)) as building, \
                tests.OnPC(self.tree, self.results / "on-pc.txt") as on_pc, \
                Machine(self.files, self.tree, self.results / "tests", niceness=10) as tester, \
                self.receiver() as receiver:
            tested = beside.submit(tests.run, tester, chosen, building, on_pc, self.run)
            updates = Updates(self.tree, self.results, receiver)
            with self.powered(line=receiver.line, real_memory=True) as machine:
                self._first(machine, updates)
            with self.powered(line=receiver.line) as machine:
                self._line(machine, updates)
                self._update(machine, updates)
            self.run.check("tests", LONGEST, tested.result)

    def _first(self, machine, updates):
        check = self.run.check
        adapters = Adapters(machine, updates.sample)
        self._line(machine, updates)
        check("update that opens at 921600", LONGEST, lambda: updates.unchecked(machine))
        with self._tour(tour.start_on_real_memory(machine), tour.finish_on_real_memory, machine):
            check("line pulled in mid-update, and back", LONGEST, lambda: updates.line_pulled(machine))
            check("USB adapters plugged in", LONG, adapters.plug)
            check("update over an adapter", LONGEST, adapters.update)
        check("adapter pulled in each phase", LONGEST, adapters.pull)
        check("adapters plugged in again", LONGEST, adapters.plug_again)
        check("updates whose adapter was pulled", LONGEST, adapters.ends)
        check("power cut in mid-update", LONG, lambda: updates.power_cut(machine))

    def _line(self, machine, updates):
        self.run.check("UART of the machine", LONG, lambda: updates.prepare_line(machine))

    def _update(self, machine, updates):
        self.run.check("update that opens at 115200", LONGEST, lambda: updates.checked(machine))

    @contextlib.contextmanager
    def _tour(self, job, finish, machine):
        """A tour that was started goes on beside what is done within."""
        yield
        self.run.check("tour", LONGEST, lambda: finish(machine, job))

"""What is checked in the machine, in order."""
import contextlib
import functools

from . import tests, tour
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
            self._tour(machine)

    def whole(self):
        with self.receiver() as receiver:
            updates = Updates(self.tree, self.results, receiver)
            check = self.run.check
            with self.powered(line=receiver.line, real_memory=True) as machine:
                self._line(machine, updates)
                check("update that opens at 921600", 200, lambda: updates.unchecked(machine))
                check("line pulled in mid-update", 200, lambda: updates.line_pulled(machine))
                check("tour on the machine's own memory", 300,
                      lambda: tour.take_on_real_memory(machine))
                check("power cut in mid-update", 60, lambda: updates.power_cut(machine))
            with self.powered(line=receiver.line) as machine:
                self._line(machine, updates)
                self._update(machine, updates)
                self._tests(machine)

    def _line(self, machine, updates):
        self.run.check("UART of the machine", 30, lambda: updates.prepare_line(machine))

    def _update(self, machine, updates):
        self.run.check("update that opens at 115200", 200, lambda: updates.checked(machine))

    def _tour(self, machine):
        self.run.check("tour", 300, lambda: tour.take(machine))

    def _tests(self, machine):
        chosen = tests.chosen(self.tree)
        with self.run.preparing("tests for the machine", 1800):
            tests.prepare(self.tree, self.results.parent, chosen)
        tests.run_in(machine, chosen, self.run)
        for name in tests.ON_PC:
            self.run.check(name, 600, functools.partial(tests.run_here, self.tree, name))

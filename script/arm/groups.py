"""Checks that go on beside others: each group has a process, a machine and a results folder of its own."""
import ctypes
import multiprocessing
import signal
import sys

from . import steps

PR_SET_PDEATHSIG = 1


class Group:
    """A process that makes one group's checks; its list is read when it has ended."""

    def __init__(self, unit, name, checks):
        self.name = name
        self.results = unit.results / name
        self.results.mkdir()
        self.list = self.results / "list.txt"
        self.process = multiprocessing.get_context("fork").Process(
            name=name, target=self._make, args=(unit, checks))
        self.process.start()

    def _make(self, unit, checks):
        # Also where the first process is killed: what this one has started ends with it.
        ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, lambda *_: sys.exit(1))  # the first process tells of it
        run = steps.Steps()
        try:
            checks(type(unit)(unit.tree, self.results, unit.files, run))
        except steps.Failed as failure:
            sys.exit(f"arm-unit: {self.name}: {failure}")
        finally:
            run.write(self.list)

    def finish(self, run):
        """Adds its lines to the list of `run`."""
        self.process.join()
        run.read(self.list)
        if self.process.exitcode != 0:
            run.add(False, 0, self.name, "broken off; what it said stands above")

    def end(self):
        """Its machine is switched off, and what it has started ends."""
        if self.process.is_alive():
            self.process.terminate()
        self.process.join()


def beside_one_another(unit, named):
    """Makes the groups of checks in `named`, by their names."""
    running = []
    try:
        for name, checks in named.items():
            running.append(Group(unit, name, checks))
        for group in running:
            group.finish(unit.run)
    finally:
        for group in running:
            group.end()

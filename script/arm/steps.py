"""Steps with a name, a time and a deadline, and the list of what they found."""
import contextlib
import signal
import sys
import time


# Deadlines, in seconds, that a PC keeps also where it has ten times as much to do as it can: for what
# takes next to no time, for an update or a tour, for a check that makes attempts at them.
BRIEF, LONG, LONGEST = 120, 900, 1800


FAILED = "FAILED"  # begins the line of a check that does not hold


class Failed(Exception):
    """A check that does not hold; what comes after it in its step is left out."""


class Late(Exception):
    """A step that did not end within its time."""


def say(text):
    print(f"arm-unit: {text}", file=sys.stderr, flush=True)


def expect(holds, otherwise):
    if not holds:
        raise Failed(otherwise)


class Steps:
    """Prints one line a check and keeps them for the list at the end."""

    def __init__(self):
        self.lines = []
        self.failures = 0
        self.started = time.monotonic()
        signal.signal(signal.SIGALRM, self._late)

    @staticmethod
    def _late(*_):
        raise Late()

    @contextlib.contextmanager
    def deadline(self, seconds):
        """Ends what runs within it by Late. Not nested: a step has one."""
        signal.setitimer(signal.ITIMER_REAL, seconds)
        try:
            yield
        finally:
            signal.setitimer(signal.ITIMER_REAL, 0)

    @contextlib.contextmanager
    def preparing(self, name, seconds):
        """A step without which nothing else can be: its failure ends the run."""
        begun = time.monotonic()
        try:
            with self.deadline(seconds):
                yield
        except Late:
            sys.exit(f"arm-unit: {name}: not done after {seconds} s")
        say(f"{time.monotonic() - begun:6.1f} s  {name}")

    def check(self, name, seconds, act):
        """`act` returns what was seen, or raises Failed; the run goes on in any case."""
        begun = time.monotonic()
        try:
            with self.deadline(seconds):
                seen, ok = act(), True
        except Failed as failure:
            seen, ok = str(failure), False
        except Late:
            seen, ok = f"not done after {seconds} s", False
        self.add(ok, time.monotonic() - begun, name, seen)
        return ok

    def add(self, ok, seconds, name, seen):
        """One more line of the list."""
        if not ok:
            self.failures += 1
        line = f"{'ok' if ok else FAILED:6} {seconds:6.1f} s  {name}"
        self.lines.append(f"{line}: {seen}" if seen else line)
        sys.stdout.write(f"{self.lines[-1]}\n")  # whole, also where two are told of at once
        sys.stdout.flush()

    def write(self, listing):
        listing.write_text("".join(f"{line}\n" for line in self.lines), encoding="utf-8")

    def read(self, listing):
        """Adds what another process has written."""
        lines = listing.read_text(encoding="utf-8").splitlines() if listing.exists() else []
        self.lines += lines
        self.failures += sum(line.startswith(FAILED) for line in lines)

    def finish(self, listing):
        """Writes the list to `listing`; the exit status of the run."""
        whole = time.monotonic() - self.started
        self.lines.append(f"{len(self.lines)} checks, {self.failures} failed, {whole:.0f} s")
        self.write(listing)
        print(f"{self.lines[-1]}; logs and pictures in {listing.parent}", flush=True)
        return 1 if self.failures else 0

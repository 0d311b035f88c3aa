"""A bench of one's own: the program, started in a folder of its own and ended without a trace."""
from __future__ import annotations

import json
import os
import shutil
import subprocess
import tempfile
from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path
from typing import Any

from .connection import PATIENCE, Connection
from .errors import BenchEnded, BenchError

LOOK_AGAIN = 0.005  # seconds, while the program starts
LONGEST_START = 60.0  # seconds; a machine may be busy
LONGEST_END = 60.0  # an update that is writing goes on to its end


@dataclass(frozen=True)
class Setup:
    """What a bench is started with."""

    program: str = "testmode-bench"
    plugin: str | None = None
    """The plug-in to load; None: the bench's own."""
    uart: str | None = None
    """A serial device with a real receiver; None: the simulated one."""
    reset: str | None = None
    """The line that the real receiver's reset hangs on."""
    package: Path | None = None
    """The folder with the update package; None: the bench's sample."""
    unit: dict[str, Any] | None = None
    """The document of the unit's state at the start."""
    line_rate: bool = False
    """The simulated receiver keeps to the rate of the line; else it answers at once."""


@lru_cache(maxsize=None)
def offers(program: str, option: str) -> bool:
    """True if the program's help names the option."""
    said = subprocess.run([program, "--help"], capture_output=True, text=True, check=False)
    return any(line.split()[:1] == [option] for line in said.stdout.splitlines())


class Program:
    """One running testmode-bench without a display."""

    def __init__(self, setup: Setup) -> None:
        self.setup = setup
        # Not pytest's own folder: the name of a socket is short.
        self.folder = Path(tempfile.mkdtemp(prefix="testmode-"))
        self.socket = self.folder / "monitor"
        self.capsule = self.folder / "run.capsule" if offers(setup.program, "--capture") else None
        """What the bench records of its run, complete when it has ended; None: it cannot."""
        self._said = self.folder / "said"
        try:
            with open(self._said, "wb") as said:
                self._process = subprocess.Popen(
                    self._words(), env=environment_without_display(), stdin=subprocess.DEVNULL,
                    stdout=said, stderr=subprocess.STDOUT)
        except BaseException:
            self.remove()
            raise

    def connect(self) -> Connection:
        """A first connection, as soon as the program listens."""
        for _ in range(int(LONGEST_START / LOOK_AGAIN)):
            try:
                return Connection(str(self.socket))
            except (FileNotFoundError, ConnectionRefusedError):
                pass
            # What else may come is the program's end.
            try:
                status = self._process.wait(LOOK_AGAIN)
            except subprocess.TimeoutExpired:
                continue
            raise BenchEnded(f"the bench ended with {status}: {self.said()}")
        raise BenchEnded(f"the bench does not listen after {LONGEST_START} s: {self.said()}")

    def said(self) -> str:
        """What the program has said on standard output and error."""
        return self._said.read_text(errors="replace").strip()

    def is_running(self) -> bool:
        return self._process.poll() is None

    def end(self) -> None:
        """Ends the program if it runs; BenchError if it ends with anything but success."""
        if self.is_running():
            self._process.terminate()
        try:
            status = self._process.wait(LONGEST_END)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait(PATIENCE)
            raise BenchError(f"the bench did not end within {LONGEST_END} s: "
                             f"{self.said()}") from None
        if status != 0:
            raise BenchError(f"the bench ended with {status}: {self.said()}")

    def remove(self) -> None:
        """Takes the program's folder away, once it has ended and nobody wants its capsule."""
        shutil.rmtree(self.folder)

    def _words(self) -> list[str]:
        words = [self.setup.program, "--monitor", str(self.socket)]
        # A test process that is killed takes its benches with it.
        if shutil.which("setpriv"):
            words = ["setpriv", "--pdeathsig", "TERM", "--", *words]
        for option, value in (("--plugin", self.setup.plugin), ("--uart", self.setup.uart),
                              ("--reset", self.setup.reset), ("--package", self.setup.package),
                              ("--unit", self._unit_file()), ("--capture", self.capsule)):
            if value is not None:
                words += [option, str(value)]
        if not self.setup.line_rate and self.setup.uart is None:
            words.append("--full-speed")
        return words

    def _unit_file(self) -> Path | None:
        if not self.setup.unit:
            return None
        file = self.folder / "unit.json"
        file.write_text(json.dumps(self.setup.unit))
        return file


def environment_without_display() -> dict[str, str]:
    return {name: value for name, value in os.environ.items() if "DISPLAY" not in name}

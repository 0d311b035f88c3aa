"""Tries what a person does: --shell on a terminal, --vnc with a client, Ctrl-C at any moment."""
import contextlib
import fcntl
import os
import pathlib
import pty
import select
import signal
import socket
import struct
import subprocess
import tempfile
import termios
import time
import uuid

from . import console
from .steps import Failed, expect

# When a run is interrupted: what is going on then, the mode, what it has said just before, and what
# is taken away from the build folder beforehand so that there is something to do.
MOMENTS = [
    ("packages are extracted", "--build", "packages of this PC", "arm/sysroot.packages"),
    ("the compiler works", "--build", "root file system and disk",
     "armhf/bench/program/CMakeFiles/testmode-bench.dir/*.o"),
    ("the machine boots", "--short", "bench for the machine", None),
    ("an update is on the line", "--short", "UART of the machine", None),
    ("the tour is taken", "--short", "update that opens at 115200", None),
]

PATIENCE = 900  # for whatever is waited for: this PC may be loaded
ENDING = 60
VANISHING = 2
PIXEL = 4  # bytes


class Run:
    """script/arm-unit as a process that can be told from all others; its output is read."""

    def __init__(self, tree, mode, output, stdin=subprocess.DEVNULL, **options):
        self.mark = f"ARM_UNIT_SELF_TEST={uuid.uuid4()}"
        self.files = tempfile.TemporaryDirectory(prefix="arm-unit-test-")
        name, value = self.mark.split("=")
        self.process = subprocess.Popen(
            [tree / "script/arm-unit", mode], stdin=stdin, stdout=options.get("stdout", output),
            stderr=output, start_new_session=True,
            preexec_fn=options.get("preexec_fn"),
            env={**os.environ, name: value, "TMPDIR": self.files.name})

    def leavings(self):
        """Processes and files that are there and should not. One that was killed takes a moment."""
        end = time.monotonic() + VANISHING
        while self._there() and time.monotonic() < end:
            time.sleep(0.1)
        return self._there()

    def _there(self):
        found = [f"{path.name} in the folder for temporary files"
                 for path in pathlib.Path(self.files.name).iterdir()]
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                words = (process / "cmdline").read_bytes().replace(b"\0", b" ").decode()
                if self.mark.encode() in (process / "environ").read_bytes().split(b"\0"):
                    found.append(f"process {process.name} ({words.strip()[:80]})")
        return found

    def end(self, number):
        """Sends the signal; the run has to end by itself, and everything of it with it."""
        begun = time.monotonic()
        self.process.send_signal(number)
        try:
            status = self.process.wait(ENDING)
        except subprocess.TimeoutExpired:
            raise Failed(f"still runs {ENDING} s after the signal") from None
        took = time.monotonic() - begun
        expect(status == 1, f"ended with {status}")
        return took

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.files.cleanup()


class Reader:
    """What comes over a descriptor, waited for."""

    def __init__(self, descriptor):
        self.descriptor = descriptor
        self.seen = ""

    def until(self, text):
        end = time.monotonic() + PATIENCE
        while text not in self.seen:
            ready = select.select([self.descriptor], [], [], max(0, end - time.monotonic()))[0]
            expect(ready, f"no '{text}' within {PATIENCE} s: {self.seen[-300:]}")
            data = b""
            with contextlib.suppress(OSError):  # a terminal whose other side is closed
                data = os.read(self.descriptor, 4096)
            expect(data, f"no '{text}', but: {self.seen[-300:]}")
            self.seen += data.decode(errors="replace")

    def after(self, text):
        """The rest of the line that has `text`."""
        self.until(text)
        self.seen = self.seen[self.seen.index(text) + len(text):]
        self.until("\n")
        return self.seen.partition("\n")[0]


def mounts():
    return pathlib.Path("/proc/self/mounts").read_text(encoding="utf-8")


def prompt(unit):
    """The shell takes words, Ctrl-C interrupts a command and not the machine, `exit` ends."""
    outside, inside = pty.openpty()

    def own_terminal():
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)

    with Run(unit.tree, "--shell", inside, stdin=inside, preexec_fn=own_terminal) as run:
        os.close(inside)
        reader = Reader(outside)
        reader.until("exit ends")
        reader.until("# ")
        for typed, answer in ((b"uname -m; tty\n", "/dev/hvc0"), (b"echo $((6*7)).; sleep 1000\n", "42."),
                              (b"\x03", "^C"), (b"echo $((6*8)).\n", "48.")):
            reader.seen = ""
            os.write(outside, typed)
            reader.until(answer)
        os.write(outside, b"exit\n")
        status = run.process.wait(PATIENCE)
        os.close(outside)
        expect(status == 0, f"ended with {status}")
        expect(not run.leavings(), f"left behind: {run.leavings()}")
    return "words, Ctrl-C and exit"


def screen(unit):
    """A VNC client sees the bench, from this PC only."""
    output, written = os.pipe()
    with Run(unit.tree, "--vnc", written) as run:
        os.close(written)
        reader = Reader(output)
        port = int(reader.after(f"{console.LOOPBACK}:").split()[0])
        listening = listeners(port)
        expect(listening == {console.LOOPBACK}, f"listens on {listening}")
        seen = look(port)
        run.end(signal.SIGINT)
        os.close(output)
        expect(not run.leavings(), f"left behind: {run.leavings()}")
    return f"{console.LOOPBACK} alone; {seen}"


def listeners(port):
    """The addresses of this PC on which somebody listens on `port`."""
    found = set()
    for row in pathlib.Path("/proc/net/tcp").read_text(encoding="ascii").splitlines()[1:]:
        address, number = row.split()[1].split(":")
        if int(number, 16) == port and row.split()[3] == "0A":
            found.add(socket.inet_ntoa(struct.pack("=I", int(address, 16))))
    ending = f":{port:04X}"
    six = pathlib.Path("/proc/net/tcp6").read_text(encoding="ascii").splitlines()[1:]
    found.update("IPv6" for row in six if row.split()[1].endswith(ending))
    return found


def look(port):
    """What a client of the remote frame buffer protocol is shown."""
    with socket.create_connection((console.LOOPBACK, port), timeout=PATIENCE) as client, \
            client.makefile("rwb") as channel:
        version = channel.read(12)
        expect(version.startswith(b"RFB 003.00"), f"the server began with {version}")
        channel.write(b"RFB 003.003\n")
        channel.flush()
        expect(channel.read(4) == b"\0\0\0\1", "it wants a password")
        channel.write(b"\1")  # others may look, too
        channel.flush()
        width, height, name = struct.unpack(">HH16xI", channel.read(24))
        channel.read(name)
        channel.write(struct.pack(">B3xBBBBHHHBBB3x", 0, 8 * PIXEL, 24, 0, 1, *[255] * 3, 16, 8, 0))
        channel.write(struct.pack(">BxHi", 2, 1, 0))  # pixels one after the other
        colours = set()
        end = time.monotonic() + PATIENCE
        while len(colours) < 20:  # more than a desktop without the window has
            expect(time.monotonic() < end, f"{len(colours)} colours on the screen")
            channel.write(struct.pack(">BBHHHH", 3, 0, 0, 0, width, height))
            channel.flush()
            kind, rectangles = struct.unpack(">BxH", channel.read(4))
            expect(kind == 0, f"message {kind}")
            for _ in range(rectangles):
                _, _, columns, rows, encoding = struct.unpack(">HHHHi", channel.read(12))
                expect(encoding == 0, f"encoding {encoding}")
                area = channel.read(columns * rows * PIXEL)
                colours.update(area[at:at + PIXEL] for at in range(0, len(area), PIXEL))
    return f"{version.decode().strip()}, {width} x {height}, {len(colours)} colours"


def interrupted(unit, mode, said, spoiled):
    """SIGINT just after a step's line: nothing is left, and the next run works."""
    for path in (unit.tree / "build").glob(spoiled) if spoiled else ():
        path.unlink()
    before = mounts()
    output, written = os.pipe()
    with Run(unit.tree, mode, written) as run:
        os.close(written)
        Reader(output).until(said)
        time.sleep(1)  # within the next step
        took = run.end(signal.SIGINT)
        os.close(output)
        left = run.leavings()
        expect(not left, f"left behind: {left}")
    expect(mounts() == before, f"mounts: {set(mounts().splitlines()) - set(before.splitlines())}")
    return f"ended after {took:.1f} s, no process, mount or file left"


def whole(unit):
    check = unit.run.check
    for moment, *how in MOMENTS:
        check(f"interrupted while {moment}", 2 * PATIENCE,
              lambda how=how: interrupted(unit, *how))
    check("--shell", PATIENCE, lambda: prompt(unit))
    check("--vnc", PATIENCE, lambda: screen(unit))

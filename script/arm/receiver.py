"""testmode-receiver on this PC: the simulated chip at the other end of the machine's UART."""
import base64
import functools
import json
import re
import shutil
import socket
import subprocess
import tempfile

from . import children
from .steps import Failed, expect

# The package's files, and where the receiver keeps them.
IMAGES = {
    "partition_table.bin": 0x08000000,
    "gnss_demo.bin": 0x08013000,
    "bootloader.bin": 0x08030000,
    "gnss_config.bin": 0x083FF000,
}


class Caller:
    """Calls of the monitor, one at a time."""

    def __init__(self, channel):
        self.channel = channel
        self.hello = json.loads(channel.readline())

    def __call__(self, method, **params):
        request = {"jsonrpc": "2.0", "id": 1, "method": method, "params": params}
        self.channel.write(json.dumps(request).encode() + b"\n")
        self.channel.flush()
        answer = json.loads(self.channel.readline())
        if "error" in answer:
            raise Failed(f"{method} {params}: {answer['error']['message']}")
        return answer["result"]


class Receiver:
    """One receiver with its line; a context manager that ends it."""

    def __init__(self, program, log):
        self.program = program
        self.log = log
        self.process = None
        self.line = None
        self.call = None
        self.folder = None
        self.resets = 0
        self.since = 0

    def __enter__(self):
        # A short name: a socket's path has little room.
        self.folder = tempfile.TemporaryDirectory(prefix="arm-unit-")
        path = f"{self.folder.name}/monitor"
        try:
            with open(self.log, "ab") as log:
                self.process = children.start([self.program, "--monitor", path],
                                              stdout=subprocess.PIPE, stderr=log)
            self.line = self.process.stdout.readline().decode().strip()
            expect(self.line, f"testmode-receiver did not start; see {self.log}")
            connection = socket.socket(socket.AF_UNIX)
            connection.connect(path)
            self.call = Caller(connection.makefile("rwb"))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.process is not None:
            children.end(self.process)
        self.folder.cleanup()

    def mark(self):
        """What is asked from here on is of the next update."""
        self.resets = self.call("receiver.state")["resets"]
        page = {"more": True, "next": 0}
        while page["more"]:
            page = self.call("receiver.dialogue", since=page["next"])
        self.since = page["next"]

    def has_packets(self, packets):
        """Whether the next update has written so many."""
        state = self.call("receiver.state")
        return state["resets"] > self.resets and state["packets"] >= packets

    def missing(self, package):
        return missing(package, functools.partial(self.call, "receiver.flash"))

    def rates(self):
        """The rates that the receiver saw since mark(), by the dialogue's steps."""
        seen = {}
        start = self.since
        while True:
            page = self.call("receiver.dialogue", since=start)
            for line in page["lines"]:
                found = re.search(r"(\d+) baud ([a-z0-9-]+)", line)
                if found:
                    seen.setdefault(found[2], set()).add(int(found[1]))
            if not page["more"]:
                return seen
            start = page["next"]


class Package:
    """A copy of the sample package whose images no other package has: what an earlier update left
    in the flash is not taken for this one's."""

    count = 0

    def __init__(self, sample, folder, most_bytes=None):
        Package.count += 1
        self.folder = folder / f"package{Package.count}"
        shutil.copytree(sample, self.folder)
        self.images = {}
        for name in IMAGES:
            image = (sample / name).read_bytes()[:most_bytes]
            self.images[name] = bytes(byte ^ Package.count for byte in image)
            (self.folder / name).write_bytes(self.images[name])


def missing(package, flash):
    """Names of the package's images that a receiver's flash, read by `flash`, does not hold."""
    return [name for name, image in package.images.items()
            if base64.b64decode(flash(address=IMAGES[name], length=len(image))["base64"]) != image]

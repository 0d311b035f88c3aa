"""The emulated machine: started, told what to do over its control port, switched off."""
import contextlib
import json
import os
import select
import shlex
import socket
import subprocess
import time

from . import children
from .steps import Failed

# The rest, from 0x80000000 up, is left out of the kernel's hands: /dev/mem reaches it there, and
# the addresses of the USB PHY's registers lie in it.
KERNEL_MEMORY = "1024M"
MACHINE_MEMORY = "2048"


class Job:
    """A command in the machine."""

    def __init__(self, machine, number, output):
        self.machine = machine
        self.number = number
        self.output = output
        self.status = None
        self.started = time.monotonic()
        self.at = None  # when it ended

    @property
    def seconds(self):
        return self.at - self.started

    def end(self, status):
        self.status = status
        self.at = time.monotonic()

    def wait(self):
        while self.status is None:
            self.machine.ended()
        return self.status

    def said(self):
        return self.output.read_text(encoding="utf-8", errors="replace")

    def kill(self):
        self.machine.tell(f"kill {self.number}")


class Machine:
    """One power-on. A context manager: its start switches the machine on, its end off, hard if need
    be."""

    def __init__(self, disk, tree, results, line=None, real_memory=False, extra=(),
                 interactive=False, niceness=0):
        self.disk = disk
        self.tree = tree
        self.results = results
        self.line = line  # a pseudo-terminal that is the other end of /dev/ttyS4
        self.words = "testmode.real_memory" if real_memory else ""
        self.extra = extra
        self.interactive = interactive  # the terminal is the machine's
        self.niceness = niceness
        self.process = None
        self.control = None
        self.monitor = None
        self.jobs = {}
        self.pending = b""

    def __enter__(self):
        (self.results / "jobs").mkdir(parents=True, exist_ok=True)
        (self.results / "tree").write_text(f"{self.tree}\n", encoding="utf-8")
        self.control, control = socket.socketpair()
        self.monitor, monitor = socket.socketpair()
        words = self._command(control.fileno(), monitor.fileno())
        with open(self.results / "emulator.log", "ab") as log:
            terminal = {"stdin": None, "stdout": None} if self.interactive else {"stdout": log}
            self.process = children.start(["nice", "-n", self.niceness, *words], **terminal,
                                          stderr=log,
                                          pass_fds=(control.fileno(), monitor.fileno()))
        control.close()
        monitor.close()
        return self

    def _command(self, control, monitor):
        line = f"serial,path={self.line}" if self.line else "null"
        words = [
            "qemu-system-arm", "-M", "virt,highmem=off", "-cpu", "cortex-a15", "-smp", "2",
            "-accel", "tcg,thread=multi", "-m", MACHINE_MEMORY, "-no-reboot",
            "-nodefaults", "-display", "none",
            "-kernel", self.disk.kernel, "-initrd", self.disk.ramdisk,
            "-append", f"console=ttyAMA0 rdinit=/init quiet panic=-1 mem={KERNEL_MEMORY} {self.words}",
            "-serial", f"file:{escaped(self.results / 'console.log')}",
            # What is written to the disk is gone at power-off.
            "-drive", f"file={escaped(self.disk.image)},format=raw,if=none,id=disk,snapshot=on",
            "-device", "virtio-blk-device,drive=disk",
            *share("tree", self.tree, ",readonly=on"), *share("results", self.results, ""),
            # ttyS0 to ttyS3, and ttyS4 with the clock of a UART that reaches 921600.
            *(word for number in range(4) for word in ("-chardev", f"null,id=n{number}")),
            "-device", ",".join(["pci-serial-4x"] + [f"chardev{n + 1}=n{n}" for n in range(4)]),
            "-chardev", f"{line},id=uart", "-device", "pci-serial,chardev=uart",
            "-global", "serial.baudbase=921600",
            "-chardev", f"socket,fd={control},id=control", "-device", "virtio-serial-device",
            "-device", "virtserialport,chardev=control,name=unit.control",
            "-chardev", f"socket,fd={monitor},id=monitor", "-mon", "chardev=monitor,mode=control",
        ]
        return [*words, *self.extra]

    def await_ready(self):
        """Nothing can be started in it before."""
        while b"ready\n" not in self.pending:
            self._receive()
        self.pending = b""

    def _receive(self):
        data = self.control.recv(4096)
        if not data:
            raise Failed(f"the machine has gone (status {self.process.wait()}); its last words "
                         f"are in {self.results}/console.log")
        self.pending += data

    def ended(self, patience=None):
        """Waits until the machine tells of ended jobs, or so many seconds; returns them."""
        if not select.select([self.control], [], [], patience)[0]:
            return []
        self._receive()
        *lines, self.pending = self.pending.split(b"\n")
        jobs = []
        for line in lines:
            number, status = map(int, line.split())
            jobs.append(self.jobs.pop(number))
            jobs[-1].end(status)
        return jobs

    def tell(self, line):
        self.control.sendall(line.encode() + b"\n")

    def start(self, words, seconds):
        """Starts a command (a list of words, or a text for its shell) in the machine."""
        command = words if isinstance(words, str) else shlex.join(map(str, words))
        taken = [int(path.name) for path in (self.results / "jobs").iterdir()]
        number = max(taken, default=0) + 1
        output = self.results / "jobs" / str(number)
        output.write_text("", encoding="utf-8")
        job = Job(self, number, output)
        self.jobs[number] = job
        self.tell(f"{number} {seconds} {command}")
        return job

    def run(self, words, seconds):
        """A command that must succeed; returns what it said."""
        job = self.start(words, seconds)
        if job.wait() != 0:
            raise Failed(f"{words} in the machine ended with {job.status}: {job.said()[-400:]}")
        return job.said()

    def emulator(self, command, **arguments):
        """A command to the emulator itself; see the QMP reference."""
        with self.monitor.dup().makefile("rwb") as channel:
            if not hasattr(self, "greeted"):
                self.greeted = json.loads(channel.readline())
                self._ask(channel, "qmp_capabilities", {})
            return self._ask(channel, command, arguments)

    @staticmethod
    def _ask(channel, command, arguments):
        channel.write(json.dumps({"execute": command, "arguments": arguments}).encode() + b"\n")
        channel.flush()
        while True:
            answer = json.loads(channel.readline())
            if "return" in answer:
                return answer["return"]
            if "error" in answer:
                raise Failed(f"the emulator refused {command}: {answer['error']['desc']}")

    def processor_seconds(self):
        """Of this PC, that the emulator has taken so far."""
        with open(f"/proc/{self.process.pid}/stat", encoding="ascii") as stat:
            fields = stat.read().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def pull_line(self):
        """Takes the other end of /dev/ttyS4 away."""
        self.emulator("chardev-change", id="uart", backend={"type": "null", "data": {}})

    def plug_line(self):
        self.emulator("chardev-change", id="uart",
                      backend={"type": "serial", "data": {"device": str(self.line)}})

    def cut_power(self):
        self.process.kill()
        self.process.wait()

    def __exit__(self, *_):
        with contextlib.suppress(OSError, subprocess.TimeoutExpired):
            self.tell("end")
            self.process.wait(10)
        children.end(self.process)
        self.control.close()
        self.monitor.close()


def escaped(path):
    """A path as the emulator's comma-separated options want it."""
    return str(path).replace(",", ",,")


def share(tag, folder, options):
    return ["-fsdev", f"local,id={tag},path={escaped(folder)},security_model=none,"
                      f"multidevs=remap{options}",
            "-device", f"virtio-9p-device,fsdev={tag},mount_tag={tag}"]

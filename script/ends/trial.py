"""A bench with a receiver beside it that is told to end at a moment of an update."""
import os
import random
import shutil
import signal
import subprocess
import tempfile
import time

from . import lateness
from .monitor import Monitor

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FLASH_BASE = 0x08000000
FLASH_BYTES = 4 * 1024 * 1024
PLACES = {
    "bootloader.bin": 0x08030000,
    "partition_table.bin": 0x08000000,
    "gnss_demo.bin": 0x08013000,
    "gnss_config.bin": 0x083FF000,
}
STEPS_BEFORE_WRITING = [
    "sync", "read-16", "write-16", "load-stage-1", "stage-1-greeting", "line-check",
    "load-stage-2", "jump", "handshake", "parameters",
]
STEPS = STEPS_BEFORE_WRITING + [
    "image-start", "download", "packet", "image-end", "image-sum", "disconnect", "finish",
]
# Said to an operator, who is not there: the receiver resets itself.
RESET_PROMPT = "receiver's reset line now"

# The trace is told from everything else that is said, and when.
TRACE_MARK = "trace "
TRACE_PATTERN = "%{if-debug}" + TRACE_MARK + "%{time boot} %{endif}%{message}"

TORN = "the flash is torn"
NOT_FINISHED = "what was being written was not finished"

# Seconds, as docs/bench.md has them.
UNTIL_WRITING = 2.0
AFTER_LAST_BYTE = 10.0
LONGEST_UPDATE = 60.0

# A synchronisation has 5 ms for its answers; one that fails for want of the processor is tried anew.
UNTIL_NOT_BEGUN = 10.0
TRIES = 4


def write_package(folder, sizes, dice):
    """Returns its images with their places in the flash."""
    os.makedirs(folder)
    shutil.copy(os.path.join(ROOT, "bench/package/flash_download.cfg"), folder)
    images = []
    for name, address in PLACES.items():
        image = dice.randbytes(sizes[name])
        with open(os.path.join(folder, name), "wb") as file:
            file.write(image)
        images.append((address - FLASH_BASE, image))
    return images


class NotBegun(Exception):
    """The update never came to what the trial is about."""


class Trial:
    """One of them; what happens in it follows from its seed."""

    def __init__(self, build, seed, slack):
        self.build = build
        self.seed = seed
        self.slack = slack
        self.folder = tempfile.mkdtemp(prefix="pull-and-end-")
        self.processes = []
        dice = random.Random(seed)
        self.choose(dice)
        self.images = write_package(self.path("package"), self.sizes, dice)

    def choose(self, dice):
        self.sizes = {name: dice.randrange(1, 4096 if name == "gnss_config.bin" else 40000)
                      for name in PLACES}
        self.kind = dice.choices(["healthy", "silent", "refused", "refused for ever"],
                                 [12, 5, 5, 2])[0]
        # A torn flash that nobody has asked for must be explained.
        self.traced = dice.random() < 0.5 or self.kind in ("healthy", "refused")
        self.way = dice.choice(["SIGTERM", "SIGINT", "SIGHUP", "bench.quit"])
        self.moment = dice.uniform(0, 2.5)
        self.faults = self.choose_faults(dice)

    def choose_faults(self, dice):
        if self.kind == "silent":
            return [{"kind": "silence", "step": dice.choice(STEPS), "times": "always"}]
        if self.kind == "refused":
            return [{"kind": "nack", "value": dice.choice([7, 3061, 3065]), "times": dice.randrange(1, 4),
                     "image": dice.randrange(1, 5), "packet": 1}]
        if self.kind == "refused for ever":
            return [{"kind": "nack", "value": 7, "times": "always", "image": dice.randrange(1, 5)}]
        return []

    def run(self):
        """Tells what has happened, what was wrong with it, and what excuses that, if anything does."""
        try:
            self.start()
            self.await_moment()
            self.tell()
            self.await_end()
            self.gather()
            wrong = self.judge()
            return self.story(), wrong, self.excuse(wrong)
        finally:
            for process in self.processes:
                if process.poll() is None:
                    os.killpg(process.pid, signal.SIGKILL)
                    process.wait()
                process.stdout.close()
            shutil.rmtree(self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def launch(self, program, *words):
        with open(self.path(program + ".err"), "wb") as errors:
            process = subprocess.Popen(
                [os.path.join(self.build, "bin", program), *words],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors,
                start_new_session=True, env=dict(os.environ, QT_MESSAGE_PATTERN=TRACE_PATTERN))
        self.processes.append(process)
        return process

    def start(self):
        """An update begins."""
        self.old = b"\x5a" * FLASH_BYTES
        with open(self.path("flash"), "wb") as file:
            file.write(self.old)
        self.receiver = self.launch("testmode-receiver", "--monitor", self.path("r"),
                                    "--flash-image", self.path("flash"))
        line = self.receiver.stdout.readline().decode().strip()
        self.chip = Monitor(self.path("r"))
        if self.faults:
            self.chip("receiver.faults", set=self.faults)
        self.bench = self.launch("testmode-bench", "--monitor", self.path("b"), "--uart", line,
                                 "--package", self.path("package"), *["--trace"] * self.traced)
        self.unit = Monitor(self.path("b"))
        for button in ("key_gps_update", "pushButton_2", "pushButton_3"):
            self.unit("ui.click", object=button)

    def await_moment(self):
        time.sleep(self.moment)

    def tell(self):
        state = self.chip("receiver.state")
        self.told_at = state["phase"], state["step"]
        self.told = time.monotonic()
        if self.way == "bench.quit":
            self.unit("bench.quit")
        else:
            self.bench.send_signal(getattr(signal, self.way))

    def await_end(self):
        """Seconds to the end, and from the last byte on the line to the end; None: it does not come."""
        self.took = self.since_byte = None
        moved, last = None, self.told
        while time.monotonic() < self.told + LONGEST_UPDATE:
            state = self.chip("receiver.state")
            now = time.monotonic()
            if (state["bytes_in"], state["bytes_out"]) != moved:
                moved, last = (state["bytes_in"], state["bytes_out"]), now
            if self.bench.poll() is not None:
                self.took, self.since_byte = now - self.told, now - last
                return
            time.sleep(0.02)

    def gather(self):
        self.read_words()
        self.late = self.find_lateness()
        self.unit.close()
        self.chip.close()
        self.receiver.send_signal(signal.SIGTERM)
        self.receiver.wait(30)
        with open(self.path("flash"), "rb") as file:
            flash = file.read()
        self.written = all(flash[place:place + len(image)] == image for place, image in self.images)
        self.untouched = flash == self.old

    def read_words(self):
        self.trace, self.said = [], []
        with open(self.path("testmode-bench.err"), encoding="utf-8", errors="replace") as file:
            for line in file.read().splitlines():
                if line.startswith(TRACE_MARK):
                    seconds, _, text = line[len(TRACE_MARK):].lstrip().partition(" ")
                    self.trace.append((float(seconds), text))
                elif RESET_PROMPT not in line:
                    self.said.append(line)

    def find_lateness(self):
        """A late receiver has yet to answer what the host has given up."""
        deadline = time.monotonic() + self.slack
        while lateness.packet_failed(self.trace) and time.monotonic() < deadline:
            late = lateness.of_answer(self.trace, self.chip.dialogue())
            if late:
                return late
            time.sleep(0.05)
        return None

    def judge(self):
        """What is not as docs/bench.md has it, each in words."""
        if self.took is None:
            return [f"still there after {LONGEST_UPDATE:.0f} s"]
        limit = AFTER_LAST_BYTE
        if self.kind == "silent" and self.faults[0]["step"] in STEPS_BEFORE_WRITING:
            limit = UNTIL_WRITING
        ends_whole = self.kind in ("healthy", "refused")
        success_told = any(text == "hdl_download success" for _, text in self.trace)
        checks = [
            (self.bench.returncode == 0, f"exit status {self.bench.returncode}"),
            (self.since_byte <= limit + self.slack, f"{self.since_byte:.1f} s after the last byte"),
            (not self.is_left(), "a process of its is left"),
            (not self.said, "it said: " + "; ".join(self.said[:3])),
            (self.written or not success_told, "a torn flash was reported as written"),
            (self.written or self.untouched or not ends_whole, TORN),
            (self.written or self.told_at[0] != "stage-2-writing" or not ends_whole, NOT_FINISHED),
        ]
        return [text for holds, text in checks if not holds]

    def excuse(self, wrong):
        """That the machine was late excuses an update that failed, and nothing else."""
        return self.late if wrong and {TORN, NOT_FINISHED}.issuperset(wrong) else None

    def story(self):
        took = f"ended after {self.took:.2f} s" if self.took is not None else "did not end"
        flash = "written" if self.written else "untouched" if self.untouched else "torn"
        return (f"seed {self.seed}: {self.kind}, {self.way} after {self.moment:.2f} s in "
                f"{self.told_at[0]} ({self.told_at[1]}): {took}, {flash}")

    def is_left(self):
        """The kernel takes a moment to clear the private root away."""
        deadline = time.monotonic() + self.slack
        while time.monotonic() < deadline:
            if not runs_in_group(self.bench.pid):
                return False
            time.sleep(0.02)
        return True


def runs_in_group(group):
    """A dead process that nobody has asked after yet, as in a container without an init, runs no more."""
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{process}/stat", encoding="utf-8", errors="replace") as stat:
                state, _, its_group = stat.read().rpartition(")")[2].split()[:3]
        except (FileNotFoundError, ProcessLookupError):
            continue  # gone meanwhile
        if int(its_group) == group and state not in "ZX":
            return True
    return False


class LongTrial(Trial):
    """An update that takes longer, once it was told to end, than one that stands still may."""

    def choose(self, dice):
        self.sizes = {name: dice.randrange(1, 4096) for name in PLACES}
        self.sizes["bootloader.bin"] = 1000000
        self.kind = "healthy"
        self.traced = True
        self.way = "SIGTERM"
        self.moment = 0.0
        self.faults = []

    def is_there(self, state):
        """Whether this is the moment."""
        return state["phase"] == "stage-2-writing"

    def await_moment(self):
        began = time.monotonic()
        while not self.is_there(self.chip("receiver.state")):
            if time.monotonic() > began + UNTIL_NOT_BEGUN:
                raise NotBegun(f"seed {self.seed}: nothing was written in {UNTIL_NOT_BEGUN:.0f} s")
            time.sleep(0.02)
        self.moment = time.monotonic() - began

    def judge(self):
        wrong = super().judge()
        if not wrong and self.took <= AFTER_LAST_BYTE:
            wrong.append(f"took {self.took:.1f} s, too short to show anything")
        return wrong


class BusyTrial(LongTrial):
    """One packet that takes so long: refused three times by a receiver that is busy for 3.8 s each."""

    def choose(self, dice):
        super().choose(dice)
        self.sizes["bootloader.bin"] = 50000
        self.kind = "refused"
        busy = {"kind": "late", "direction": "to-host", "step": "packet-repeat", "value": 1900, "times": 3}
        self.faults = [{"kind": "nack", "value": 3065, "times": 3, "image": 1, "packet": 3},
                       {**busy, "index": 1}, {**busy, "index": 3}]

    def is_there(self, state):
        return state["step"] == "packet-repeat"


def run(kind, build, seed, slack):
    """Runs such a trial, again where the update has not begun."""
    for _ in range(TRIES - 1):
        try:
            return kind(build, seed, slack).run()
        except NotBegun:
            pass
    return kind(build, seed, slack).run()

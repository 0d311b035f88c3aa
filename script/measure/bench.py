"""What the bench costs: to start and end, and beside an update."""
import contextlib
import json
import os
import socket
import subprocess
import tempfile
import threading
import time

from .rows import Row, against, typical_time


# What a script asks that watches an update.
QUESTION = (b'{"jsonrpc":"2.0","id":1,"method":"ui.state","params":{"object":"progressBar"}}\n')


def environment():
    return {name: value for name, value in os.environ.items() if "DISPLAY" not in name}


def start_to_quit(build, folder, number=0):
    """Seconds from the start of a bench to its end by the monitor."""
    path = os.path.join(folder, f"monitor{number}")
    began = time.monotonic()
    words = [f"{build}/bin/testmode-bench", "--monitor", path]
    with subprocess.Popen(words, env=environment()) as bench:
        with connected(path, bench) as client:
            client.sendall(b'{"jsonrpc":"2.0","id":1,"method":"bench.quit"}\n')
            client.recv(4096)
        if bench.wait(60) != 0:
            raise RuntimeError(f"the bench ended with {bench.returncode}")
    return time.monotonic() - began


@contextlib.contextmanager
def connected(path, process):
    client = socket.socket(socket.AF_UNIX)
    while True:
        try:
            client.connect(path)
            break
        except OSError:
            if process.poll() is not None:
                raise RuntimeError("the bench has ended") from None
            time.sleep(0.0005)
    with client:
        yield client


def nothing(build, folder):
    """Seconds that the same process takes which ends where a session would begin."""
    began = time.monotonic()
    subprocess.run([f"{build}/bin/benchmark_nothing", "--monitor", os.path.join(folder, "none")],
                   env=environment(), check=True, timeout=60)
    return time.monotonic() - began


def start_rows(build, quick):
    times = 3 if quick else 15
    with tempfile.TemporaryDirectory() as folder:
        floor, ours = [], []
        for _ in range(times):
            floor.append(1000 * nothing(build, folder))
            ours.append(1000 * start_to_quit(build, folder))
        together = [threading.Thread(target=start_to_quit, args=(build, folder, number))
                    for number in range(20)]
        began = time.monotonic()
        for one in together:
            one.start()
        for one in together:
            one.join()
        all_twenty = time.monotonic() - began
    return [
        against("a bench from start to end, against one without a session", ours, floor, quick,
                most=1.5, quick_most=8),
        Row("twenty benches from start to end at once", all_twenty, "s", most=3, absolute=True),
    ]


class Asking(threading.Thread):
    """Asks the bench so often a second and keeps the longest time that an answer took."""

    def __init__(self, path, process, calls_a_second):
        super().__init__()
        self.path, self.process, self.pause = path, process, 1 / calls_a_second
        self.longest = 0.0
        self.calls = 0
        self.enough = threading.Event()

    def run(self):
        with connected(self.path, self.process) as client:
            answers = client.makefile("rb")
            due = time.monotonic()
            while not self.enough.is_set():
                began = time.monotonic()
                try:
                    client.sendall(QUESTION)
                    if not answers.readline():
                        return
                except (BrokenPipeError, ConnectionResetError):
                    return  # the update is over, and the bench with it
                self.longest = max(self.longest, time.monotonic() - began)
                self.calls += 1
                due += self.pause
                self.enough.wait(max(0.0, due - time.monotonic()))


def flash(build, folder, calls_a_second):
    """A whole update of the sample package: what it told, and who asked meanwhile."""
    path = os.path.join(folder, "flash-monitor")
    words = [f"{build}/bin/testmode-bench", "--flash", "--attempts", "3", "--format", "json",
             "--monitor", path, "--log", os.path.join(folder, "trace")]
    with subprocess.Popen(words, env=environment(), stdout=subprocess.PIPE, text=True) as bench:
        asking = Asking(path, bench, calls_a_second) if calls_a_second else None
        if asking:
            asking.start()
        lines = [json.loads(line) for line in bench.stdout]
        if asking:
            asking.enough.set()
            asking.join()
        if bench.wait(60) != 0:
            raise RuntimeError(f"the update ended with {bench.returncode}")
    return lines, asking


def milliseconds(lines):
    """From the reset to the receiver's end."""
    moments = {line["phase"]: line["ms"] for line in lines if line["kind"] == "phase"}
    return moments["end"] - moments["reset"]


def beside_rows(build, quick):
    with tempfile.TemporaryDirectory() as folder:
        alone, asked, longest, calls = [], [], [], 0
        for _ in range(2 if quick else 5):
            lines, _ = flash(build, folder, 0)
            alone.append(milliseconds(lines))
            lines, asking = flash(build, folder, 100)
            asked.append(milliseconds(lines))
            longest.append(1000 * asking.longest)
            calls += asking.calls
    return [
        against(f"update beside 100 calls a second ({calls}), against one alone", asked, alone,
                quick, most=1.01, quick_most=2),
        Row("longest time without an answer in an update", typical_time(longest, quick), "ms",
            most=16, absolute=True, remark=f"most of all: {max(longest):.1f} ms"),
    ]


def rows(build, quick):
    return beside_rows(build, quick) + start_rows(build, quick)

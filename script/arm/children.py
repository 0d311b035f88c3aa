"""Processes that never outlive this one."""
import contextlib
import os
import pathlib
import signal
import subprocess
import time

PATIENCE = 5  # seconds for a process that has been asked to end


def command_of(words):
    # Also where this process is killed: the kernel tells the child.
    return ["setpriv", "--pdeathsig", "KILL", "--", *map(str, words)]


def start(words, **options):
    """A process in a session of its own, so that end() reaches what it starts, too."""
    options.setdefault("stdin", subprocess.DEVNULL)
    options.setdefault("start_new_session", True)
    return subprocess.Popen(command_of(words), **options)


def end(process):
    """Asks a process and those that it has started to end, and kills what does not."""
    _send(process, signal.SIGTERM)
    deadline = time.monotonic() + PATIENCE
    while _family(process) and time.monotonic() < deadline:
        process.poll()
        time.sleep(0.05)
    _send(process, signal.SIGKILL)
    process.wait()


def _send(process, number):
    for member in _family(process):
        with contextlib.suppress(OSError):
            os.kill(member, number)


def _family(process):
    """The processes of its session, or it alone where it has none: a build gives each compiler a
    group of its own."""
    found = [process.pid] if process.poll() is None else []
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            state, _, _, session = stat.read_text(encoding="ascii", errors="replace").rpartition(
                ")")[2].split()[:4]
            if int(session) == process.pid and state != "Z":
                found.append(int(stat.parent.name))
    return found


def run(words, log, **options):
    """Runs to the end with its output in `log`; ends this program where it fails."""
    with open(log, "wb") as output:
        process = start(words, stdout=output, stderr=subprocess.STDOUT, **options)
        finish(process, words, log)


def finish(process, words, log):
    """Waits for a process with its output in `log`."""
    try:
        status = process.wait()
    finally:
        end(process)
    if status != 0:
        with open(log, encoding="utf-8", errors="replace") as output:
            tail = "".join(output.readlines()[-30:])
        raise SystemExit(f"{tail}arm-unit: {words[0]} failed ({status}); its output is in {log}")

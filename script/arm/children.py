"""Processes that never outlive this one."""
import contextlib
import os
import signal
import subprocess


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
    if process.poll() is not None:
        return
    _send(process, signal.SIGTERM)
    with contextlib.suppress(subprocess.TimeoutExpired):
        process.wait(5)
    _send(process, signal.SIGKILL)
    process.wait()


def _send(process, number):
    try:
        os.killpg(process.pid, number)
    except ProcessLookupError:  # it has no session of its own, or has ended
        process.send_signal(number)


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

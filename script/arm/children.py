"""Processes that never outlive this one."""
import contextlib
import subprocess


def command_of(words):
    # Also where this process is killed: the kernel tells the child.
    return ["setpriv", "--pdeathsig", "KILL", "--", *map(str, words)]


def start(words, **options):
    """A process of this one's group of things to end; see ended()."""
    options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.Popen(command_of(words), **options)


def end(process):
    """Asks a process to end, and kills it where it does not."""
    if process.poll() is not None:
        return
    process.terminate()
    with contextlib.suppress(subprocess.TimeoutExpired):
        process.wait(5)
        return
    process.kill()
    process.wait()


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

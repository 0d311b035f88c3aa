"""What benches leave behind: nothing."""
import os
import select
import signal
import subprocess
import sys
from pathlib import Path

import pytest

from testmode_bench import BenchError, run


@pytest.fixture
def folder(tmp_path, monkeypatch):
    """Where the benches of this test have their own folders."""
    monkeypatch.setattr("tempfile.tempdir", None)
    monkeypatch.setenv("TMPDIR", str(tmp_path))
    return tmp_path


def processes_of(folder):
    """Of a bench with its socket there, by their command lines."""
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        try:
            words = (process / "cmdline").read_bytes()
        except (FileNotFoundError, ProcessLookupError):
            continue
        if os.fsencode(folder) in words and int(process.name) != os.getpid():
            found.append(words)
    return found


def leave_by_word(bench):
    bench.bench_quit()


def leave_in_an_update(bench):
    bench.page("GPS Update").press("选择").press("开始")
    bench.receiver.wait("boot-rom-commands")


def leave_by_force(bench):
    os.kill(bench.connection.hello["pid"], signal.SIGKILL)


def test_benches_come_and_go_without_a_leftover(folder, testmode_setup, request):
    ways = [leave_by_word, leave_by_force, lambda _: None, leave_in_an_update]
    mounts = Path("/proc/self/mountinfo").read_text()
    for number in range(request.config.getoption("--benches")):
        way = ways[number % len(ways)]
        try:
            with run(testmode_setup) as bench:
                assert processes_of(folder), "the bench is seen while it runs"
                way(bench)
        except BenchError:
            assert way is leave_by_force
        if way is not leave_by_force:
            assert processes_of(folder) == []
    assert list(folder.iterdir()) == []
    assert Path("/proc/self/mountinfo").read_text() == mounts
    assert_that_all_have_ended(folder)


def assert_that_all_have_ended(folder):
    """A root whose bench was killed goes by itself, a moment later."""
    for process in Path("/proc").glob("[0-9]*"):
        try:
            descriptor = os.pidfd_open(int(process.name))
        except (ProcessLookupError, OSError):
            continue
        try:
            ours = os.fsencode(folder) in (process / "cmdline").read_bytes()
            ended = not ours or int(process.name) == os.getpid() or select.select(
                [descriptor], [], [], 30)[0]
            assert ended, f"{process} is still there"
        except (FileNotFoundError, ProcessLookupError):
            pass
        finally:
            os.close(descriptor)


A_TEST_PROCESS = """
import os, signal, sys
from testmode_bench import Setup, run
with run(Setup(program=sys.argv[1])) as bench:
    print(bench.connection.hello["pid"], flush=True)
    sys.stdin.read()
"""


def test_bench_of_a_killed_test_process_ends(folder, testmode_setup):
    with subprocess.Popen([sys.executable, "-c", A_TEST_PROCESS, testmode_setup.program],
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                          env={**os.environ, "PYTHONPATH": os.pathsep.join(sys.path)}) as tester:
        bench = os.pidfd_open(int(tester.stdout.readline()))
        tester.kill()
    assert select.select([bench], [], [], 30)[0], "the bench has not ended"
    os.close(bench)
    assert_that_all_have_ended(folder)

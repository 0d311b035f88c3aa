"""What bash offers after half a word."""
import os
import subprocess
from pathlib import Path

import pytest

COMPLETION = Path(__file__).parents[2] / "packaging" / "completion"


@pytest.fixture
def offered(testmode_setup):
    """Words offered for the last of `words`, which the shell has parted as it does."""
    def complete(*words, monitor=""):
        programs = Path(testmode_setup.program).parent
        run = subprocess.run(
            ["bash", "-uc", """
                . "$1"
                COMP_WORDS=("${@:2}")
                COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
                COMPREPLY=()
                "_${COMP_WORDS[0]//-/_}" "${COMP_WORDS[0]}"
                printf '%s\\n' "${COMPREPLY[@]}"
             """, "bash", str(COMPLETION / words[0]), *words],
            env={**os.environ, "PATH": f"{programs}:{os.environ['PATH']}",
                 "TESTMODE_MONITOR": str(monitor)},
            capture_output=True, text=True, check=True)
        assert run.stderr == ""
        return run.stdout.split()
    return complete


def test_options_are_those_of_the_help(offered):
    assert offered("testmode-bench", "--to") == ["--tour"]
    assert {"--flash", "--doctor", "--uart"} <= set(offered("testmode-bench", "--"))
    assert offered("testmode-bench", "--format", "j") == ["json"]
    assert offered("testmode-receiver", "--flash") == ["--flash-image"]
    assert offered("testmode-ctl", "--sock") == ["--socket"]


def test_calls_are_those_of_the_running_bench(bench, offered):
    monitor = bench.program.socket
    assert offered("testmode-ctl", "ui.c", monitor=monitor) == ["ui.choose", "ui.click"]
    assert offered("testmode-ctl", "--socket", str(monitor), "window.d") == ["window.destroy"]
    calls = offered("testmode-ctl", "", monitor=monitor)
    assert set(calls) == {method["name"] for method in bench.bench_schema()["methods"]}


def test_objects_are_those_on_the_screen(bench, offered):
    monitor = bench.program.socket
    assert offered("testmode-ctl", "ui.click", "object", "=", "key_gps_u", monitor=monitor) == [
        "key_gps_update"]
    keys = offered("testmode-ctl", "ui.click", "object", "=", monitor=monitor)
    assert {"key_quit", "testEntryWidget"} <= set(keys)


def test_arguments_are_those_of_the_call(offered):
    assert offered("testmode-ctl", "ui.wait", "t") == ["timeout_ms="]


def test_nothing_is_offered_without_a_bench(offered):
    assert offered("testmode-ctl", "ui.c", monitor="/nowhere") == []

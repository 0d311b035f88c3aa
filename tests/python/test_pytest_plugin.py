"""The pytest plug-in as its users see it: options, fixtures, evidence."""
import json
import os
import re
import sys
import xml.etree.ElementTree
from pathlib import Path

import pytest


@pytest.fixture
def run_tests(pytester, testmode_setup, monkeypatch):
    """Runs a test file with the plug-in in a process of its own."""
    monkeypatch.setenv("PYTHONPATH", os.pathsep.join(filter(None, sys.path)))
    # pytester's folders are deep, and the bench's sockets lie in none of them.
    monkeypatch.delenv("TMPDIR", raising=False)

    def run(text, *options):
        pytester.makepyfile(text)
        return pytester.runpytest_subprocess(
            "-p", "testmode_bench.pytest_plugin", "-p", "no:cacheprovider",
            "--testmode-bench", testmode_setup.program, *options)

    return run


FAILING = """
    def test_gain(bench):
        bench.page("Mic Test").press("key_mic_next")
        assert bench.page().text("txt_mic") == "another"
"""


def test_failing_test_keeps_its_evidence(run_tests, pytester):
    result = run_tests(FAILING, "--testmode-capture", "kept", "--junitxml", "result.xml",
                       "-o", "junit_logging=system-out")
    result.assert_outcomes(failed=1)
    [folder] = (pytester.path / "kept").iterdir()
    assert folder.name == "test_failing_test_keeps_its_evidence.py-test_gain"
    assert (folder / "screen.png").read_bytes().startswith(b"\x89PNG")
    assert "AudioService.setMicAnalogGain(1, 1)" in (folder / "journal.txt").read_text()
    assert "on_key_mic_next_clicked" in (folder / "trace.txt").read_text()
    assert (folder / "dialogue.txt").exists()
    assert json.loads((folder / "unit.json").read_text())["gnss"]["module_kind"] == 1

    [case] = xml.etree.ElementTree.parse(pytester.path / "result.xml").iter("testcase")
    attached = [entry.get("value") for entry in case.iter("property")
                if entry.get("name") == "attachment"]
    assert {Path(path).name for path in attached} >= {
        "screen.png", "journal.txt", "trace.txt", "dialogue.txt"}
    assert all(Path(path).exists() for path in attached)
    assert f"[[ATTACHMENT|{folder / 'screen.png'}]]" in case.findtext("system-out")


def test_failure_is_shown_where_the_test_called(run_tests):
    result = run_tests("""
        def test_press(bench):
            bench.page().press("Nothing")
    """)
    result.stdout.fnmatch_lines(["*BenchError: nothing on the screen shows 'Nothing'*"])
    result.stdout.no_fnmatch_line("*def press(self*")


def test_passing_test_keeps_nothing(run_tests, pytester):
    run_tests("def test_menu(bench): assert bench.page().shows('QUIT')").assert_outcomes(passed=1)
    assert not (pytester.path / "testmode-capture").exists()


def test_bench_that_has_died_leaves_what_it_said(run_tests, pytester):
    result = run_tests("""
        import os, signal
        def test_death(bench):
            os.kill(bench.connection.hello["pid"], signal.SIGTERM)
            bench.ui_wait("testEntryWidget", "visible", False, 60000)
    """)
    result.assert_outcomes(failed=1)
    result.stdout.fnmatch_lines(["no screen.png: *", "no journal.txt: *"])
    assert [file.name for file in pytester.path.glob("testmode-capture/*/*")
            if file.name != "run.capsule"] == ["said.txt"]


def test_unit_and_package_are_made_to_order(run_tests, pytester):
    (pytester.path / "cold.json").write_text('{"gnss": {"version": "cold"}}')
    result = run_tests("""
        import pytest

        @pytest.mark.parametrize("unit", [{"gnss": {"version": "warm"}}, "cold.json"],
                                 indirect=True)
        def test_version(bench, unit):
            assert bench.unit["gnss.version"] == unit["gnss"]["version"]

        @pytest.mark.parametrize("package", [{"gnss_demo.bin": 5}], indirect=True)
        def test_size(bench, package):
            assert bench.unit.read("/media/update/gnss_demo.bin") == package.images["gnss_demo.bin"]
            assert len(package.images["gnss_demo.bin"]) == 5
            package.write("gnss_demo.bin", b"changed")
            assert bench.unit.read("/media/update/gnss_demo.bin") == b"changed"
    """, "-v")
    result.assert_outcomes(passed=3)
    result.stdout.fnmatch_lines(["*test_version?unit0? PASSED*", "*test_version?cold? PASSED*"])


def test_missing_bench_is_told_with_the_cure(run_tests):
    result = run_tests("def test_menu(bench): pass", "--testmode-bench", "no-such-bench")
    result.stdout.fnmatch_lines(["*there is no program no-such-bench; install the bench, or*"])


def test_real_receiver_takes_no_faults(run_tests):
    main, terminal = os.openpty()
    try:
        result = run_tests("""
            def test_fault(receiver):
                receiver.fault("drop")
            def test_menu(bench):
                assert bench.page().shows("QUIT")
        """, "--testmode-uart", os.ttyname(terminal), "-rs")
    finally:
        os.close(main)
        os.close(terminal)
    result.assert_outcomes(passed=1, skipped=1)
    result.stdout.fnmatch_lines(["*the receiver at /dev/pts/* is not the simulated one"])


def test_workers_have_benches_of_their_own(run_tests):
    result = run_tests("""
        import pytest

        @pytest.mark.parametrize("number", range(6))
        def test_gain(bench, number):
            bench.unit["audio.op_gain"] = number
            page = bench.page("Mic Test").press("key_op_next")
            assert page.text("txt_op") == "OP Gain:21"
    """, "-n", "3")
    result.assert_outcomes(passed=6)


def test_another_plugin_can_be_tested(run_tests, request):
    result = run_tests("""
        def test_lamp(bench):
            assert bench.page().text("state") == "The lamp is off"
    """, "--testmode-plugin", request.config.getoption("--testmode-lamp"))
    result.assert_outcomes(passed=1)


@pytest.mark.parametrize("document", ["docs/pytest.md", "python/README.md"])
def test_documents_example_passes(run_tests, document):
    text = (Path(__file__).parents[2] / document).read_text()
    [example] = re.findall(r"^```python\n(.*?)^```", text, re.DOTALL | re.MULTILINE)
    run_tests(example).assert_outcomes(passed=1)


RECORDING_BENCH = """#!/bin/bash
# The bench, but that its help names --capture, and that it writes a word there when it has ended.
[ "$1" != --help ] || { echo '  --capture FILE  record'; exit; }
while [ $# -gt 0 ]; do
    if [ "$1" = --capture ]; then capsule=$2; shift; else words+=("$1"); fi
    shift
done
trap 'kill "$bench"' TERM
%s "${words[@]}" &
bench=$!
wait "$bench" || wait "$bench"
status=$?
echo recorded >"$capsule"
exit $status
"""


def test_capsule_is_kept_of_a_bench_that_records(run_tests, pytester, testmode_setup):
    program = pytester.path / "recording-bench"
    program.write_text(RECORDING_BENCH % testmode_setup.program)
    program.chmod(0o755)
    result = run_tests("""
        def test_failing(bench):
            assert not bench.page().shows("QUIT")
        def test_passing(bench):
            assert bench.page().shows("QUIT")
    """, "--testmode-bench", str(program))
    result.assert_outcomes(passed=1, failed=1)
    [capsule] = pytester.path.glob("testmode-capture/*/run.capsule")
    assert capsule.read_text() == "recorded\n"
    result.stdout.fnmatch_lines([f"*ATTACHMENT|{capsule}*"])

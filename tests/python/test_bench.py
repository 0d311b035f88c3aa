"""A bench of one's own: its calls, its events, its end."""
import os
import re
import signal
import tomllib
from pathlib import Path

import pytest

from testmode_bench import BenchEnded, BenchError, CallError, Setup, WaitTimeout, run

PROJECT = Path(__file__).parents[2] / "python" / "pyproject.toml"


def test_every_call_of_the_schema_is_a_method(bench):
    schema = bench.bench_schema()
    for method in schema["methods"]:
        assert callable(getattr(bench, method["name"].replace(".", "_")))


def test_package_is_of_the_benchs_version(bench):
    project = tomllib.loads(PROJECT.read_text())["project"]
    assert bench.connection.hello["bench"] == project["version"]


def test_error_names_call_and_class(bench):
    with pytest.raises(CallError, match=r"ui.click\(object='no_such_key'\): ") as caught:
        bench.ui_click("no_such_key")
    assert caught.value.error_class == "NotFound"


def test_value_may_be_nothing(bench):
    bench.unit["settings.cache.SOMETHING"] = 7
    assert bench.unit["settings.cache"]["SOMETHING"] == 7
    bench.unit["settings.cache.SOMETHING"] = None
    assert "SOMETHING" not in bench.unit["settings.cache"]


def test_events_come_in_their_order_to_who_listens(bench):
    with bench.events("unit.changed") as changes, bench.events("unit.journal") as journal:
        bench.unit["audio.op_gain"] = 9
        bench.unit["audio.op_gain"] = 12
        assert [changes.next().params["value"] for _ in range(2)] == [9, 12]
        with pytest.raises(WaitTimeout, match="no unit.journal that fits came, 0 that do not fit"):
            journal.next(within=0.01)
    with bench.events("unit.changed") as changes:
        bench.unit["audio.op_gain"] = 0
        assert changes.next().params == {"path": "audio.op_gain", "value": 0}


def test_event_that_does_not_fit_is_passed_over(bench):
    with bench.events("unit.changed") as changes:
        bench.unit["audio.op_gain"] = 9
        bench.unit["audio.pga_gain"] = 3
        changes.next(lambda change: change.params["path"] == "audio.pga_gain")
        with pytest.raises(WaitTimeout):
            changes.next(within=0)


def test_what_has_been_is_not_waited_for(bench):
    bench.unit["audio.op_gain"] = 9
    bench.unit.wait("audio.op_gain", 9, within=0)
    bench.page("Mic Test").press("key_op_next")
    assert bench.journal.wait("AudioService", within=0).arguments == (21, 6, 0)


def test_bench_that_is_gone_is_told(bench):
    os.kill(bench.connection.hello["pid"], signal.SIGTERM)
    with pytest.raises(BenchEnded):
        bench.ui_wait("testEntryWidget", "visible", False, 60000)


@pytest.mark.parametrize("unit, said", [({"gnss": {"kind": 1}}, "gnss.kind: the unit has no such")])
def test_start_that_fails_says_why(testmode_setup, unit, said):
    setup = Setup(program=testmode_setup.program, unit=unit)
    with pytest.raises(BenchEnded, match=f"ended with 3: .*{re.escape(said)}"), run(setup):
        pass


def test_end_with_a_failure_is_told(testmode_setup):
    with pytest.raises(BenchError, match="ended with 70: .*ended by signal 9"):
        with run(testmode_setup) as bench:
            inside = Path(f"/proc/{bench.connection.hello['pid']}/task")
            bwrap = (next(inside.iterdir()) / "children").read_text().split()[0]
            init = Path(f"/proc/{bwrap}/task/{bwrap}/children").read_text().split()[0]
            os.kill(int(init), signal.SIGKILL)

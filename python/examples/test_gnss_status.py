"""The status page: what the GNSS service tells, and what it is told."""
import pytest


def satellites(count):
    return [{"number": 3 + i, "in_use": 1, "elevation": 40, "azimuth": 30 * i, "signal": 38}
            for i in range(count)]


@pytest.mark.parametrize("unit", [{"gnss": {"version": "7.4.1"}}], indirect=True)
def test_version_is_asked_for_and_shown(bench, unit):
    page = bench.page("GPS test")
    page.wait("gps_test/txt_version", text="7.4.1")
    assert bench.journal.texts("GpsService", "read_set_CMD_VERSION")


def test_position_has_six_digits(bench):
    page = bench.page("GPS test")
    bench.unit["gnss"] = {"latitude": 3150.1234, "longitude": 11712.5, "speed": 42.5}
    bench.unit.tell("gnss.status")
    page.wait("latitude_vol", text="31.5012")
    assert page.text("longitude_vol") == "117.125"
    assert page.text("speed_vol") == "42.5"


@pytest.mark.parametrize("count, scrolls", [(5, False), (6, True)])
def test_list_scrolls_from_six_satellites_on(bench, count, scrolls):
    page = bench.page("GPS test")
    bench.unit["gnss.satellites"] = satellites(count)
    bench.unit.tell("gnss.status")
    page.wait("numInView_vol", text=str(count))
    assert bench.ui_state("satellitesScrollBar")["visible"] == scrolls


@pytest.mark.parametrize("unit, line", [
    ({"gnss": {"module_kind": 0, "install_status": "CC"}}, "Install status(CC is ok): CC"),
    ({"gnss": {"module_kind": 1, "install_status": "3"}}, "Install status(3 is ok): 3"),
    ({"gnss": {"module_kind": 2, "install_status": "3"}}, "(null)"),
], indirect=["unit"], ids=["kind 0", "kind 1", "another kind"])
def test_install_status_depends_on_the_module(bench, unit, line):
    page = bench.page("GPS test")
    bench.unit.tell("gnss.status")
    page.wait("install_mode", text=line)


def test_recording_is_switched(bench):
    page = bench.page("GPS test")
    assert page.text("gpslog_txt") == "Open"
    assert page.press("Open").text("gpslog_txt") == "Close"
    assert bench.unit["settings.cache.SetupRecordKrnmData"] is True


def test_cold_start(bench):
    page = bench.page("GPS test")
    bench.journal.mark()
    page.press("Cold Start")
    assert bench.journal.texts("GpsService") == ["GpsService.read_set_CMD_COLD_START()"]

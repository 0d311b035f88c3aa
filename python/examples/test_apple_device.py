"""The Apple device page: network tests, and as "USB Test" charging and certification."""
import pytest

SPEED_SWITCH = "/sys/devices/platform/ehci-platform.2/usb_speed_switch"


def test_tests_wait_for_the_network(bench):
    page = bench.page("NCM Test")
    assert not page.widget("btn_c_udp50").enabled
    page.press("btn_c_ncm_sw")
    assert page.widget("btn_c_udp50").enabled
    assert page.text("ncm_sw_state") == "NCM ON"
    page.press("btn_c_ncm_sw")
    assert not page.widget("btn_c_udp50").enabled
    assert bench.journal.texts("LMUsbManager", "switchUsbMode") == [
        "LMUsbManager.switchUsbMode(6)", "LMUsbManager.switchUsbMode(7)"]


@pytest.mark.parametrize("unit", [{"usb": {"network": {"run_ms": 0, "report": "94.1 Mbits/sec"}}}],
                         indirect=True)
@pytest.mark.parametrize("test, operation", [
    ("UDP 50", "startUdp50Client"), ("btn_c_tcp", "startTcpClient"),
    ("UDP 100", "startUdp100Client")])
def test_client_run_shows_its_report(bench, unit, test, operation):
    page = bench.page("NCM Test").press("btn_c_ncm_sw").press(test)
    assert page.text("result_view") == "94.1 Mbits/sec"
    assert not bench.ui_state("busy_text")["visible"]
    assert bench.journal.texts("LMPlatformControl") == [f"LMPlatformControl.{operation}()"]


@pytest.mark.parametrize("unit", [
    {"usb": {"network": {"run_ms": 0, "results": {"startUdp50Client": 1}}}}], indirect=True)
def test_run_that_fails_goes_on_looking_busy(bench, unit):
    page = bench.page("NCM Test").press("btn_c_ncm_sw").press("UDP 50")
    assert page.shows("Testing, please wait...")
    assert page.text("result_view") == ""


def test_speed_switch_writes_the_state_before_it(bench):
    page = bench.page("NCM Test").press("btn_c_usb_sw")
    assert (page.text("usb_sw_state"), bench.unit.read(SPEED_SWITCH)) == ("ON", b"0")
    page.press("btn_c_usb_sw")
    assert (page.text("usb_sw_state"), bench.unit.read(SPEED_SWITCH)) == ("OFF", b"1")


@pytest.mark.parametrize("mode, number", [
    ("USB 0 CDP MODE", 0), ("USB 0 DCP MODE", 1), ("USB 0 SDP MODE", 2)])
def test_charging_mode(bench, mode, number):
    page = bench.page("USB Test").press(mode)
    assert page.widget(mode).checked
    assert bench.unit["usb.0.charging_mode"] == number


@pytest.mark.parametrize("mode, code", [("USB NORMAL", 79), ("USB TID", 84), ("USB MIF", 77)])
def test_certification_resets_the_unit_a_second_later(bench, mode, code):
    bench.page("USB Test").press(mode)
    assert bench.journal.texts("DeviceManager", "setUsbCertification") == [
        f"DeviceManager.setUsbCertification({code})"]
    bench.journal.wait("McuService", "factoryReset")

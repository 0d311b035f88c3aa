"""The USB PHY page: registers of the physical memory, and files of the USB controllers."""
import pytest

SWING = 0x9C000190
TEST_MODE = [0x9C004A90, 0x9C004B10]  # by port
DISCONNECT = 0x9C004A9C


def test_page_starts_port_0_at_high_speed(bench):
    bench.page("USB Tid")
    assert bench.journal.commands() == [
        "echo 1 > /sys/module/usbcore/parameters/usb_logo_test_start",
        "echo 1 > /sys/devices/platform/ehci-platform.1/usb_speed_switch",
    ]


@pytest.mark.parametrize("pattern, value", [
    ("Eye Diagram", 1), ("Test J", 9), ("Test K", 10), ("SE0", 7)])
def test_pattern_is_written(bench, pattern, value):
    bench.page("USB Tid").press("Port1").press(pattern).press("Write")
    assert bench.unit.word(TEST_MODE[1]) == value


def test_full_speed_leaves_no_pattern(bench):
    page = bench.page("USB Tid").press("Full Speed")
    assert page.widget("None").checked
    assert not page.shows("Test J")
    assert bench.journal.commands()[-1] == (
        "echo 0 > /sys/devices/platform/ehci-platform.1/usb_speed_switch")


@pytest.mark.parametrize("code, shown", [(0x5F, "31"), (0x40, "0"), (0x60, "-0"), (0x7F, "-31")])
def test_swing_is_shown_with_its_sign(bench, code, shown):
    bench.unit.write_word(SWING, code)
    page = bench.page("USB Tid").press("Use UPHY")
    assert page.text("SetupUsbForm/uphyData") == shown


def test_swing_of_port_1_is_written_beside_the_others(bench):
    bench.unit.write_word(SWING, 0x00114433)
    bench.page("USB Tid").press("Port1").press("Use UPHY").press("uphyAddBtn").press("Write")
    assert bench.unit.word(SWING) == 0x7F7F4533


def test_disconnect_threshold_is_written_behind_the_debug_route(bench):
    bench.unit.write_word(DISCONNECT, 0x12)
    page = bench.page("USB Tid").press("Use UPHY").press("Disconnect").press("uphyAddBtn")
    page.press("Write")
    assert bench.unit.word(DISCONNECT) == 0x13
    assert bench.unit.word(TEST_MODE[0]) == 7
    assert bench.unit.word(0x9C0000A0) == 0x0004100C


def test_device_role_has_port_0_alone(bench):
    page = bench.page("USB Tid").press("Port1").press("Device Mode")
    assert page.widget("Port0").checked
    assert not page.shows("Port1")
    assert bench.journal.commands()[-1] == "usb_control --uphy_role 1"

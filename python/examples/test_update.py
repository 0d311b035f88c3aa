"""The update page: packages, the receiver's flash, and what goes wrong on the way."""
import pytest

A_WHILE = 120  # seconds at most: an update takes one or two, a machine may be busy


def flash(bench, attempts=1):
    """Flashes the package; the last line of the page's log. Tries again as often as it is told."""
    page = bench.page("GPS Update").press("选择")
    for _ in range(attempts):
        page.press("开始").wait("开始", enabled=True, within=A_WHILE)
        line = page.text("textBrowser").splitlines()[-1]
        if "succed" in line:
            break
    return line


def test_package_gets_into_the_flash(bench, receiver, package):
    # The wire's time-outs are real: on a machine that stands still for a moment an update fails.
    assert "/dev/ttyS4: succed" in flash(bench, attempts=5)
    assert receiver.differences(package) == []


@pytest.mark.parametrize("package", [{"gnss_demo.bin": 1}], indirect=True)
def test_image_of_one_byte_is_filled_up(bench, receiver, package):
    assert "/dev/ttyS4: succed" in flash(bench, attempts=5)
    assert receiver.flash(0x08013000, 4096) == package.images["gnss_demo.bin"] + b"\xff" * 4095


def test_refused_packet_ends_in_a_red_line(bench, receiver):
    receiver.fault("nack", step="packet", packet=2, value=3061, times=4)
    assert "/dev/ttyS4: failed" in flash(bench)
    assert "color:#ff0000" in bench.page("GPS Update").widget("textBrowser").property("html")


def test_packet_that_is_not_taken_fails_its_image(bench, receiver):
    receiver.fault("acknowledge", step="packet", packet=1, index=1, value=0x96)
    assert "/dev/ttyS4: failed" in flash(bench)
    assert receiver.faults()[0]["done"] == 1


def test_update_begins_with_a_pulse_on_the_reset_line(bench, receiver):
    bench.page("GPS Update").press("选择")
    bench.journal.mark()
    bench.page().press("开始")
    receiver.wait("boot-rom")
    assert bench.journal.texts("PlatformService") == [
        "PlatformService.setGPSResetGPIO(true)", "PlatformService.setGPSResetGPIO(false)"]


@pytest.mark.parametrize("missing", ["flash_download.cfg", "gnss_demo.bin"])
def test_missing_file_is_told_in_a_box(bench, package, missing):
    package.remove(missing)
    page = bench.page("GPS Update")
    page.press("选择")
    box = bench.box()
    assert (box.title, box.buttons) == ("Error", ["Close"])
    box.press("Close")


@pytest.mark.parametrize("folder, said", [("/media/update", "OK"), ("", "No Update file!")])
def test_check_looks_for_a_package(bench, folder, said):
    bench.unit["update.folder"] = folder
    page = bench.page("GPS Update").press("Check")
    page.wait("lineEdit_2", text=said)


def test_log_is_cleared(bench, receiver):
    receiver.fault("nack", step="packet", packet=1, value=3061, times=4)
    flash(bench)
    page = bench.page("GPS Update").press("清除")
    assert page.text("textBrowser") == ""


def test_port_is_handed_over_at_the_next_start(bench):
    page = bench.page("GPS Update")
    bench.journal.mark()
    page.press("设置端口(重启)")
    bench.journal.wait("shell")
    assert bench.journal.texts("SettingsFunc", "setValue") == [
        'SettingsFunc.setValue("GPS_UPDATE", false, true, true)']
    assert bench.journal.commands() == ["reboot"]


@pytest.mark.parametrize("unit", [
    {"gnss": {"module_kind": 0}, "usb": {"1": {"disk": True, "path": "/media/usb1"}}}],
    indirect=True, ids=["kind 0"])
def test_other_modules_are_left_to_the_units_own_updater(bench, unit):
    bench.unit.write("/media/usb1/gps.bin", b"package for the unit's updater\n")
    bench.journal.mark()
    bench.page("GPS Update")
    assert bench.journal.commands()[:2] == ["cp /media/usb1/gps.bin /media/flash/nvm/", "sync"]
    assert bench.unit.read("/media/flash/nvm/gps.bin") == b"package for the unit's updater\n"

"""The tools page: screenshots, logs and dumps, all by services of the unit."""
import pytest

LOGS_ARE_ON = {"settings": {"func": {"ToolsUSBLogEnable": True}}}


@pytest.mark.parametrize("key, stored", [
    ("screenShotEnBtn", "true"), ("screenShotDisBtn", "false")])
def test_screenshots_are_switched(bench, key, stored):
    page = bench.page("System Tools")
    assert page.widget("Disable").checked
    bench.journal.mark()
    page.press(key)
    assert bench.journal.texts("SettingsCache", "setValue") == [
        f'SettingsCache.setValue("ToolsScreenShotEnable", false, {stored})']


@pytest.mark.parametrize("unit, can_be_copied", [({}, False), (LOGS_ARE_ON, True)],
                         indirect=["unit"], ids=["logs off", "logs on"])
def test_log_is_copied_where_it_is_kept(bench, unit, can_be_copied):
    page = bench.page("System Tools")
    assert page.widget("SystemToolsWidget/readBtn").enabled == can_be_copied
    if can_be_copied:
        page.press("Copy log")
        assert bench.journal.texts("OutputLogsUsb") == ["OutputLogsUsb.updateLogToUsb(true)"]


def test_dump_is_started_and_ended(bench):
    bench.page("System Tools").press("Start").press("End")
    assert bench.journal.texts("OutputLogsUsb") == [
        "OutputLogsUsb.startDumpsys(true)", "OutputLogsUsb.endDumpsys(true)"]


def test_log_service_opens_by_command_reset_and_setting(bench):
    page = bench.page("System Tools")
    bench.journal.mark()
    page.press("openLogBtn")
    assert bench.journal.texts()[:3] == [
        "logset NAND_FILE_OUTPUT y\n",
        "McuService.setResetSystem(1)",
        'SettingsFunc.setValue("ToolsUSBLogEnable", false, true, true)',
    ]


@pytest.mark.parametrize("unit", [LOGS_ARE_ON], indirect=True, ids=["logs on"])
def test_log_service_closes_by_setting_command_and_reset(bench, unit):
    page = bench.page("System Tools")
    bench.journal.mark()
    page.press("closeLogBtn")
    assert bench.journal.texts()[:3] == [
        'SettingsFunc.setValue("ToolsUSBLogEnable", false, false, true)',
        "logset NAND_FILE_OUTPUT n\n",
        "McuService.setResetSystem(1)",
    ]

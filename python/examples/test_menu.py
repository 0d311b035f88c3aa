"""The menu: eight entries, and the keys that the framework hands on."""
import pytest

ENTRIES = {  # what the menu shows: the page's form
    "USB Test": "apple_dev_test",
    "USB Tid": "SetupUsbForm",
    "GPS test": "gps_test",
    "NCM Test": "apple_dev_test",
    "System Tools": "SystemToolsWidget",
    "Mic Test": "mic_test",
    "GPS Update": "Gpsupdate",
}


@pytest.mark.parametrize("title", ENTRIES)
def test_entry_opens_its_page_and_home_leaves_it(bench, title):
    page = bench.page(title)
    assert page.widget(ENTRIES[title]).visible

    bench.window_home()
    assert not bench.ui_state(ENTRIES[title])["visible"]
    assert page.widget("testEntryWidget").visible


def test_menu_shows_eight_entries(bench):
    assert set(ENTRIES) | {"QUIT"} <= set(bench.page().texts())


def test_quit_asks_the_framework_to_leave(bench):
    bench.page("QUIT")
    assert bench.journal.texts("framework") == ["framework.TouchEvent(1008, 9, -1, -1)"]


def test_back_key_closes_nothing(bench):
    page = bench.page("Mic Test")
    assert bench.window_back()["result"] == 1
    assert page.widget("mic_test").visible


@pytest.mark.parametrize("code", [1, 12, 99])
def test_no_key_is_taken(bench, code):
    assert bench.window_key(code)["result"] == -1

"""Another plug-in of the same framework: pytest --testmode-plugin liblamp.so test_lamp.py."""


def test_lamp_is_switched(bench):
    page = bench.page()
    assert page.text("state") == "The lamp is off"
    assert page.press("Switch").text("state") == "The lamp is on"
    assert page.press("Switch").text("state") == "The lamp is off"
    assert bench.journal.texts("SettingsCache", "setValue") == [
        'SettingsCache.setValue("LAMP", true)', 'SettingsCache.setValue("LAMP", false)']


def test_forgetting_is_asked_about(bench):
    page = bench.page().press("Forget")
    box = bench.box()
    assert (box.title, box.text) == ("Lamp", "Forget it?")
    box.press("Yes")
    page.wait("state", text="")


def test_window_is_built_anew(bench):
    bench.page().press("Switch")
    bench.window_destroy()
    bench.window_home()  # the old window goes from the event loop
    bench.page().wait("state", text="The lamp is off")

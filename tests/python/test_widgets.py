"""How a widget is found by what it shows."""
import pytest

from testmode_bench import BenchError, widgets


def widget(name, *children, text="", visible=True, of_class="QLabel"):
    return {"name": name, "class": of_class, "text": text, "visible": visible,
            "children": list(children)}


SCREEN = widget("screen", widget("page_a", widget("key", text="Next "), widget("one", text="Go")),
                widget("page_b", widget("key", text="Prev"), widget("two", text="Same"),
                       widget("three", text="Same"), widget("gone", text="Go", visible=False)),
                widget("", widget("key", text="inner"), of_class="test::Inner"),
                widget("", text="nameless"))


@pytest.mark.parametrize("what, address", [
    ("Go", "one"),  # the other one that shows it is hidden
    ("Next", "page_a/key"),  # blanks around a text do not count
    ("Prev", "page_b/key"),
    ("inner", "test::Inner/key"),
    ("three", "three"),  # by its name
    ("gone", None),
    ("nameless", None),
])
def test_widget_is_found_by_text_or_name(what, address):
    assert widgets.find(SCREEN, what) == address


@pytest.mark.parametrize("what, said", [
    ("Same", "'Same' may be two, three"),
    ("key", "'key' may be page_a/key, page_b/key, test::Inner/key"),
])
def test_several_are_told_apart_by_the_tester(what, said):
    with pytest.raises(BenchError, match=said):
        widgets.find(SCREEN, what)


def test_only_visible_texts_are_shown():
    assert widgets.shown_texts(SCREEN) == [
        "Next", "Go", "Prev", "Same", "Same", "inner", "nameless"]

"""What stands on the unit's screen, for a tester: pages, widgets, message boxes."""
from __future__ import annotations

from dataclasses import dataclass
from typing import Any

from . import widgets
from .calls import Calls, Json
from .errors import BenchError


@dataclass(frozen=True)
class Widget:
    """One widget; asks the bench anew each time."""

    calls: Calls
    address: str

    def state(self, *properties: str) -> dict[str, Any]:
        return self.calls.ui_state(self.address, list(properties) or None)

    @property
    def text(self) -> str:
        return str(self.state()["text"])

    @property
    def enabled(self) -> bool:
        return bool(self.state()["enabled"])

    @property
    def visible(self) -> bool:
        return bool(self.state()["visible"])

    @property
    def checked(self) -> bool:
        return bool(self.state()["checked"])

    @property
    def items(self) -> list[Any]:
        """Of a combo box or a list."""
        return list(self.state()["items"])

    def property(self, name: str) -> Json:
        """Any other property that the widget has: value of a bar, html of a text."""
        return self.state(name)["properties"][name]

    def press(self) -> None:
        self.calls.ui_click(self.address)

    def hold(self) -> None:
        self.calls.ui_press(self.address)

    def release(self) -> None:
        self.calls.ui_release(self.address)

    def choose(self, item: str) -> None:
        self.calls.ui_choose(self.address, item)

    def type(self, text: str) -> str:
        """Types in place of what stands there; returns what the field then holds."""
        return str(self.calls.ui_type(self.address, text)["text"])

    def wait(self, within: float = 10.0, **properties: Json) -> Widget:
        """Waits until each property has its value: wait(text="OK", enabled=True)."""
        for name, value in properties.items():
            self.calls.ui_wait(self.address, name, value, int(within * 1000))
        return self


@dataclass(frozen=True)
class Box:
    """An open message box or dialog."""

    calls: Calls
    title: str
    text: str
    buttons: list[str]

    def press(self, button: str) -> None:
        self.calls.ui_answer(button)


class Page:
    """The screen as it stands. Widgets are named by what they show, or by their objectName."""

    def __init__(self, calls: Calls) -> None:
        self._calls = calls

    def widget(self, what: str) -> Widget:
        """The one visible widget that shows `what`, or has that objectName.

        With a '/', `what` is ancestor/objectName as the monitor takes it.
        """
        address = what if "/" in what else widgets.find(self._calls.ui_tree(), what)
        if address is None:
            raise BenchError(f"nothing on the screen shows {what!r} or is called so; there is: "
                             + ", ".join(self.texts()))
        return Widget(self._calls, address)

    def press(self, what: str, times: int = 1) -> Page:
        widget = self.widget(what)
        for _ in range(times):
            widget.press()
        return self

    def choose(self, what: str, item: str) -> Page:
        self.widget(what).choose(item)
        return self

    def type(self, what: str, text: str) -> Page:
        self.widget(what).type(text)
        return self

    def wait(self, what: str, within: float = 10.0, **properties: Json) -> Page:
        """Waits until the widget's properties have these values; it may come only then."""
        address = what if "/" in what else widgets.find(self._calls.ui_tree(), what)
        Widget(self._calls, address or what).wait(within, **properties)
        return self

    def text(self, what: str) -> str:
        return self.widget(what).text

    def texts(self) -> list[str]:
        """All that can be read, widget by widget."""
        return widgets.shown_texts(self._calls.ui_tree())

    def shows(self, text: str) -> bool:
        """True if some widget shows exactly this."""
        return text in self.texts()

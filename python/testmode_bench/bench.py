"""The bench, for those who test with it."""
from __future__ import annotations

import base64
from contextlib import contextmanager
from typing import Iterator

from .calls import Calls, Json, Result
from .connection import Connection, Events
from .errors import BenchError
from .page import Box, Page
from .program import Program, Setup
from .receiver import Receiver
from .records import Journal, Trace
from .unit import Unit


class Bench(Calls):
    """A running bench: its calls as methods, and parts that read as a tester speaks."""

    def __init__(self, connection: Connection, program: Program | None = None) -> None:
        """`program`: the one that was started for this bench; None: somebody else's."""
        self.connection = connection
        self.program = program
        self.journal = Journal(self, self.events)
        self.trace = Trace(self, self.events)
        self.receiver = Receiver(self, self.events)
        self.unit = Unit(self, self.events)

    @staticmethod
    def at(socket: str) -> Bench:
        """A bench that somebody has started with --monitor SOCKET."""
        return Bench(Connection(socket))

    def call(self, method: str, /, **arguments: Json) -> Result:
        return self.connection.call(method, arguments)

    def events(self, *names: str) -> Events:
        """The events of these names, while a `with` block lasts."""
        return Events(self.connection, names)

    def page(self, title: str | None = None) -> Page:
        """What stands on the screen; with a title, after the menu's entry of it was pressed."""
        page = Page(self)
        if title is not None:
            self.window_home()
            page.press(title)
        return page

    def box(self, within: float = 10.0) -> Box:
        """The topmost open box, as soon as there is one."""
        top = self.ui_boxes(int(within * 1000))["boxes"][-1]
        return Box(self, top["title"], top["text"], list(top["buttons"]))

    def popup(self, within: float = 10.0) -> str:
        """The message that the unit shows for a while, as soon as there is one."""
        with self.events("unit.popup") as events:
            shown = str(self.unit["system.popup"])
            return shown or str(events.next(within=within).params["text"])

    def picture(self) -> bytes:
        """The unit's screen with its boxes, as PNG."""
        return base64.b64decode(self.ui_screenshot()["base64"])

    def leave(self) -> None:
        """Ends the program that was started for this bench, and lets the connection go."""
        self.connection.close()
        if self.program is not None:
            self.program.end()


@contextmanager
def run(setup: Setup = Setup()) -> Iterator[Bench]:
    """Starts a bench of one's own and ends it, without a trace, with the `with` block."""
    program = Program(setup)
    try:
        try:
            bench = Bench(program.connect(), program)
        except BenchError:
            if program.is_running():
                program.end()
            raise
        try:
            yield bench
        finally:
            bench.leave()
    finally:
        program.remove()

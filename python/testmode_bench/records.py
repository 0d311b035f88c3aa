"""What the bench has written down: the journal of the unit and the plug-in's trace."""
from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Callable, Iterator

from .calls import Calls, Result
from .connection import Events, Happening

SHELL = "shell"


@dataclass(frozen=True)
class Call:
    """A call that the plug-in made of a service, a shell command, or an event of the framework."""

    number: int
    milliseconds: int
    service: str
    name: str
    arguments: tuple[Any, ...]

    @staticmethod
    def of(entry: dict[str, Any]) -> Call:
        return Call(entry["n"], entry["ms"], entry["service"], entry["call"],
                    tuple(entry["args"]))

    def __str__(self) -> str:
        """As a tester writes it: AudioService.setMicAnalogGain(-24, -24), or the command."""
        if self.service == SHELL:
            return self.name
        return f"{self.service}.{self.name}({', '.join(map(_word, self.arguments))})"


def _word(argument: object) -> str:
    if isinstance(argument, bool):
        return str(argument).lower()
    if isinstance(argument, float) and argument.is_integer():
        return str(int(argument))
    return f'"{argument}"' if isinstance(argument, str) else str(argument)


def pieces(read: Callable[[int], Result], since: int) -> Iterator[Result]:
    """Every answer of a list that comes in pieces."""
    more = True
    while more:
        answer = read(since)
        yield answer
        since, more = answer["next"], answer["more"]


class Journal:
    """The calls that the plug-in made, in order, since the bench began or `mark` was called."""

    def __init__(self, calls: Calls, events: Callable[..., Events]) -> None:
        self._calls = calls
        self._events = events
        self._since = 0

    def mark(self) -> None:
        """Forgets what has been: from now on only what comes after this counts."""
        for piece in pieces(self._calls.unit_journal, self._since):
            self._since = piece["next"]

    def calls(self, service: str | None = None, name: str | None = None) -> list[Call]:
        """The calls, of one service and of one name if these are given."""
        return [call for piece in pieces(self._calls.unit_journal, self._since)
                for call in map(Call.of, piece["entries"]) if _is(call, service, name)]

    def whole(self) -> list[str]:
        """Every call since the bench began, marked or not, with its time."""
        return [f"{call.milliseconds:8} ms  {call}" for piece in pieces(self._calls.unit_journal, 0)
                for call in map(Call.of, piece["entries"])]

    def commands(self) -> list[str]:
        """The shell commands, whole."""
        return [call.name for call in self.calls(SHELL)]

    def texts(self, service: str | None = None, name: str | None = None) -> list[str]:
        """The calls as they are written."""
        return [str(call) for call in self.calls(service, name)]

    def wait(self, service: str, name: str | None = None, within: float = 10.0) -> Call:
        """The first such call, as soon as it has been made."""
        with self._events("unit.journal") as events:
            for call in self.calls(service, name):
                return call

            def fits(happening: Happening) -> bool:
                return _is(Call.of(happening.params), service, name)

            return Call.of(events.next(fits, within).params)


def _is(call: Call, service: str | None, name: str | None) -> bool:
    return service in (None, call.service) and name in (None, call.name)


class Trace:
    """The plug-in's debug lines."""

    def __init__(self, calls: Calls, events: Callable[..., Events]) -> None:
        self._calls = calls
        self._events = events

    def lines(self) -> list[str]:
        return [line for piece in pieces(self._calls.trace_read, 0) for line in piece["lines"]]

    def wait(self, text: str, within: float = 10.0) -> str:
        """The first line that holds the text, as soon as it has been written."""
        with self._events("trace.line") as events:
            for line in self.lines():
                if text in line:
                    return line
            return str(events.next(lambda line: text in line.params["line"], within).params["line"])

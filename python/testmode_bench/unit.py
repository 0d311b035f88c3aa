"""The simulated unit's state, files and memory."""
from __future__ import annotations

import base64
from typing import Callable

from .calls import Address, Calls, Json
from .connection import Events


class Unit:
    """Read and written by paths: unit["usb.0.disk"] = True. The paths stand in docs/monitor.md."""

    def __init__(self, calls: Calls, events: Callable[..., Events]) -> None:
        self._calls = calls
        self._events = events

    def __getitem__(self, path: str) -> Json:
        return self._calls.unit_get(path)["value"]

    def __setitem__(self, path: str, value: Json) -> None:
        self._calls.unit_set(path, value)

    def document(self) -> dict[str, Json]:
        """The whole state, as --unit takes it."""
        return dict(self._calls.unit_get()["value"])

    def tell(self, signal: str) -> None:
        """Has a service tell the plug-in: gnss.status, gnss.version or gnss.module_kind."""
        self._calls.unit_emit(signal)

    def wait(self, path: str, value: Json, within: float = 10.0) -> None:
        """Waits until the value at the path is this one."""
        with self._events("unit.changed") as events:
            if self[path] != value:
                events.next(lambda change: bool(change.params == {"path": path, "value": value}),
                            within)

    def read(self, path: str) -> bytes:
        """Content of a file, named as the plug-in would name it."""
        return base64.b64decode(self._calls.unit_file_read(path)["base64"])

    def write(self, path: str, content: bytes) -> None:
        self._calls.unit_file_write(path, base64=base64.b64encode(content).decode())

    def remove(self, path: str) -> None:
        self._calls.unit_file_remove(path)

    def word(self, address: Address) -> int:
        """A 32-bit word of the physical memory."""
        return int(self._calls.unit_memory_read(address)["value"])

    def write_word(self, address: Address, value: Address) -> None:
        self._calls.unit_memory_write(address, value)

"""One connection to a monitor: JSON-RPC, an object a line, calls and events."""
from __future__ import annotations

import json
import socket
import time
from collections import deque
from typing import Any, Callable, NamedTuple

from .calls import Result
from .errors import BenchEnded, CallError, WaitTimeout

PATIENCE = 30.0
"""Seconds that the bench may take to answer, beside what a call itself waits for."""


class Happening(NamedTuple):
    """One event of the bench's."""

    name: str
    params: dict[str, Any]


class Connection:
    """Calls and events of one client. Events come while anybody waits here; not for threads."""

    def __init__(self, path: str) -> None:
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(PATIENCE)
        self._received = b""
        self._calls = 0
        self._listeners: list[Events] = []
        try:
            self._socket.connect(path)
            self.hello: dict[str, Any] = self._line(time.monotonic() + PATIENCE)["params"]
        except BaseException:
            self._socket.close()
            raise

    def close(self) -> None:
        self._socket.close()

    def call(self, method: str, arguments: dict[str, Any]) -> Result:
        """Makes one call and waits for its answer."""
        self._calls += 1
        number = self._calls
        request = {"jsonrpc": "2.0", "id": number, "method": method, "params": arguments}
        deadline = time.monotonic() + PATIENCE + arguments.get("timeout_ms", 0) / 1000
        try:
            self._socket.settimeout(PATIENCE)
            self._socket.sendall(json.dumps(request).encode() + b"\n")
            while True:
                line = self._line(deadline)
                if line.get("id") == number:
                    break
                self._tell(line)
        except (OSError, WaitTimeout) as trouble:
            raise BenchEnded(f"no answer to {method}: {trouble}") from trouble
        if "error" in line:
            raise CallError(method, arguments, line["error"])
        result: Result = line["result"]
        return result

    def wait(self, deadline: float) -> None:
        """Waits for one event and hands it to who listens; WaitTimeout at the deadline."""
        self._tell(self._line(deadline))

    def listen(self, listener: Events) -> None:
        self._subscribe([*self._listeners, listener])

    def forget(self, listener: Events) -> None:
        self._subscribe([other for other in self._listeners if other is not listener])

    def _subscribe(self, listeners: list[Events]) -> None:
        self._listeners = listeners
        names = sorted({name for listener in listeners for name in listener.names})
        self.call("bench.subscribe", {"events": names})

    def _tell(self, line: dict[str, Any]) -> None:
        for listener in self._listeners:
            listener.take(Happening(line.get("method", ""), line.get("params", {})))

    def _line(self, deadline: float) -> dict[str, Any]:
        while b"\n" not in self._received:
            rest = deadline - time.monotonic()
            if rest <= 0:
                raise WaitTimeout("it did not come in time")
            self._socket.settimeout(rest)
            try:
                piece = self._socket.recv(65536)
            except TimeoutError:
                continue
            if not piece:
                raise BenchEnded("the bench has closed the connection")
            self._received += piece
        text, _, self._received = self._received.partition(b"\n")
        line: dict[str, Any] = json.loads(text)
        return line


class Events:
    """The events of some names, from the beginning of a `with` block to its end."""

    def __init__(self, connection: Connection, names: tuple[str, ...]) -> None:
        self.names = names
        self._connection = connection
        self._come: deque[Happening] = deque()

    def __enter__(self) -> Events:
        self._connection.listen(self)
        return self

    def __exit__(self, kind: object, value: BaseException | None, trace: object) -> None:
        if not isinstance(value, BenchEnded):
            self._connection.forget(self)

    def take(self, happening: Happening) -> None:
        if happening.name in self.names:
            self._come.append(happening)

    def next(self, fits: Callable[[Happening], bool] = lambda _: True,
             within: float = 10.0) -> Happening:
        """The next event that fits; those before it are passed over. Waits for it."""
        deadline = time.monotonic() + within
        passed = 0
        while True:
            while self._come:
                happening = self._come.popleft()
                if fits(happening):
                    return happening
                passed += 1
            try:
                self._connection.wait(deadline)
            except WaitTimeout:
                raise WaitTimeout(f"within {within} s no {' or '.join(self.names)} that fits came, "
                                  f"{passed} that do not fit") from None

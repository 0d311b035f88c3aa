"""What can go wrong between a test and its bench."""
from __future__ import annotations

from typing import Any


class BenchError(Exception):
    """Something is wrong with the bench, or with what it was asked for."""


class CallError(BenchError):
    """The bench refused a call, or waited in vain for what it was to wait for."""

    def __init__(self, method: str, arguments: dict[str, Any], error: dict[str, Any]) -> None:
        words = ", ".join(f"{name}={value!r}" for name, value in arguments.items())
        super().__init__(f"{method}({words}): {error['message']}")
        self.method = method
        self.arguments = arguments
        self.error_class: str = error.get("data", {}).get("class", "")
        """One of calls.ErrorClass."""


class WaitTimeout(BenchError):
    """An event that was waited for did not come in time."""


class BenchEnded(BenchError):
    """The bench has ended, or does not answer any more."""

"""The simulated receiver on the unit's serial line."""
from __future__ import annotations

import base64
import hashlib
from typing import Any, Callable

from .calls import Calls, FaultKind, Json, Phase, Step, given
from .connection import Events
from .package import Package
from .records import pieces


class Receiver:
    """What the receiver is, went through and holds, and what shall go wrong with it."""

    def __init__(self, calls: Calls, events: Callable[..., Events]) -> None:
        self._calls = calls
        self._events = events

    def fault(self, kind: FaultKind, step: Step | None = None, **where: Json) -> Receiver:
        """One more fault to come: fault("nack", step="packet", packet=2, value=1).

        `where` may hold count, index, image, packet, direction, value, times and probability.
        """
        fault = {"kind": kind, **given(step=step), **where}
        armed = [entry["fault"] for entry in self.faults()]
        self._calls.receiver_faults(set=[*armed, fault])
        return self

    def faults(self) -> list[dict[str, Any]]:
        """Each fault that is armed, with how often it struck."""
        return list(self._calls.receiver_faults()["faults"])

    def heal(self) -> None:
        """Takes all faults away."""
        self._calls.receiver_faults(clear=True)

    def set(self, **settings: Json) -> Receiver:
        """Changes how the receiver is built; see Calls.receiver_set."""
        self._calls.receiver_set(**settings)
        return self

    def wait(self, phase: Phase, within: float = 30.0) -> Receiver:
        """Waits until the receiver stands in the phase or passes through it."""
        self._calls.receiver_wait(phase, int(within * 1000))
        return self

    def reset(self) -> None:
        """A pulse on the reset line."""
        self._calls.receiver_reset()

    @property
    def state(self) -> dict[str, Any]:
        return self._calls.receiver_state()

    @property
    def phase(self) -> str:
        return str(self.state["phase"])

    @property
    def anomalies(self) -> list[str]:
        """What came that should not have come, each in words."""
        return list(self.state["anomalies"])

    def dialogue(self) -> list[str]:
        """The frames of both directions, a line of words each."""
        return [line for piece in pieces(self._calls.receiver_dialogue, 0)
                for line in piece["lines"]]

    def flash(self, address: int, length: int) -> bytes:
        """Content of the flash."""
        return base64.b64decode(self._calls.receiver_flash(address, length)["base64"])

    def differences(self, package: Package) -> list[str]:
        """Which images of the package the flash does not hold as they are; none: []."""
        return [f"{name} at 0x{package.addresses[name]:08X}"
                for name, content in package.images.items()
                if self._sum_of_flash(package.addresses[name], len(content))
                != hashlib.sha256(content).hexdigest()]

    def _sum_of_flash(self, address: int, length: int) -> str:
        return str(self._calls.receiver_flash(address, length, content=False)["sha256"])

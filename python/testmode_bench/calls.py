"""The monitor's calls, a method each. Written by script/render-docs from a schema."""
from __future__ import annotations

from abc import ABC, abstractmethod
from typing import Any, Literal, Union

Json = Any
Result = dict[str, Any]
Address = Union[int, str]
"""A number of 32 bits, or a text such as "0x9C005000"."""


def given(**arguments: Json) -> Result:
    """The arguments that were not left out."""
    return {name: value for name, value in arguments.items() if value is not None}


Event = Literal[
    "receiver.anomaly", "receiver.baud", "receiver.fault", "receiver.frame", "receiver.image",
    "receiver.phase", "receiver.written", "trace.line", "unit.changed", "unit.journal",
    "unit.popup", "unit.register", "unit.reset",
]
"""What bench.subscribe takes."""

ErrorClass = Literal[
    "Parse", "Request", "UnknownMethod", "Argument", "Limit", "NotFound", "Ambiguous", "Hidden",
    "Disabled", "Covered", "WrongKind", "WrongState", "Timeout", "File", "Unavailable", "Internal",
]
"""Classes of errors."""

FaultKind = Literal[
    "silence", "reset", "baud", "garbage", "flow-byte", "status", "checksum", "acknowledge", "nack",
    "no-write", "repeat", "drop", "double", "flip", "late", "swap",
]
"""What a fault may do."""

Step = Literal[
    "command", "sync", "read-16", "read-32", "write-16", "write-32", "configuration",
    "load-stage-1", "stage-1-greeting", "stage-1-announce", "stage-1-confirm", "stage-1-switch",
    "line-check", "stage-1-ready", "stage-1-first", "stage-1-second", "load-stage-2", "jump",
    "handshake", "logging", "power-key", "flash-id", "parameters", "image-start", "download",
    "packet", "packet-repeat", "image-end", "image-sum", "disconnect", "finish", "watchdog",
]
"""Exchanges of the dialogue that a fault may strike at."""

Phase = Literal[
    "off", "application", "reset", "boot-rom", "boot-rom-commands", "stage-1",
    "stage-1-download-rate", "stage-2-handshake", "stage-2-sync", "stage-2-ready",
    "stage-2-writing", "finished", "watchdog", "silent",
]
"""Where the receiver may stand."""


class Calls(ABC):
    """Every call that a bench of this version takes."""

    @abstractmethod
    def call(self, method: str, /, **arguments: Json) -> Result:
        """Makes one call by its name and returns its result."""

    def bench_schema(self) -> Result:
        """All methods, errors, events and paths of the unit."""
        return self.call("bench.schema")

    def bench_subscribe(self, events: list[Any]) -> Result:
        """Has events sent to this client as notifications from now on.

        events: names of the events to send; [] ends them
        """
        return self.call("bench.subscribe", events=events)

    def bench_quit(self) -> Result:
        """Ends the bench with status 0."""
        return self.call("bench.quit")

    def ui_tree(self, root: str | None = None) -> Result:
        """The widgets on the unit's screen, or below one of them, with their children.

        root: an objectName, or ancestor/objectName with the ancestor's name or class
        """
        return self.call("ui.tree", **given(root=root))

    def ui_state(self, object: str, properties: list[Any] | None = None) -> Result:
        """One widget; a combo box or list comes with the texts of its items.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        properties: names of further properties of the widget to tell
        """
        return self.call("ui.state", object=object, **given(properties=properties))

    def ui_screenshot(self, file: str | None = None, object: str | None = None) -> Result:
        """A picture of the unit's screen with its boxes and pop-ups, or of one widget.

        file: PNG file to write; without it the answer holds the picture
        object: an objectName, or ancestor/objectName with the ancestor's name or class
        """
        return self.call("ui.screenshot", **given(file=file, object=object))

    def ui_wait(self, object: str, property: str, value: Json, timeout_ms: int) -> Result:
        """Answers when the property has the value; a widget that is not there yet is waited for.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        property: text, visible, enabled, checked or another property of the widget
        value: what it must become
        timeout_ms: how long to wait, in milliseconds
        """
        return self.call(
            "ui.wait",
            object=object,
            property=property,
            value=value,
            timeout_ms=timeout_ms,
        )

    def ui_click(self, object: str) -> Result:
        """Presses and releases the centre of a widget.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        """
        return self.call("ui.click", object=object)

    def ui_press(self, object: str) -> Result:
        """Presses the centre of a widget and holds it.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        """
        return self.call("ui.press", object=object)

    def ui_release(self, object: str) -> Result:
        """Lifts the finger at the centre of a widget.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        """
        return self.call("ui.release", object=object)

    def ui_choose(self, object: str, text: str) -> Result:
        """Opens a combo box and takes an item.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        text: text of the item
        """
        return self.call("ui.choose", object=object, text=text)

    def ui_type(self, object: str, text: str) -> Result:
        """Types a text into a field; the answer says what the field then holds.

        object: an objectName, or ancestor/objectName with the ancestor's name or class
        text: text that replaces what stands there
        """
        return self.call("ui.type", object=object, text=text)

    def ui_boxes(self, timeout_ms: int | None = None) -> Result:
        """The open message boxes and dialogs, the topmost last.

        timeout_ms: how long to wait for a box when none is open, in milliseconds
        """
        return self.call("ui.boxes", **given(timeout_ms=timeout_ms))

    def ui_answer(self, button: str) -> Result:
        """Presses a button of the topmost box.

        button: text of the button
        """
        return self.call("ui.answer", button=button)

    def window_create(self) -> Result:
        """onCreate, on a new window if there is none."""
        return self.call("window.create")

    def window_show(self, data: str | None = None) -> Result:
        """onShow, and the window on the screen.

        data: what onShow is given
        """
        return self.call("window.show", **given(data=data))

    def window_home(self) -> Result:
        """onCreate and onShow: the Home key."""
        return self.call("window.home")

    def window_destroy(self) -> Result:
        """onDestroy."""
        return self.call("window.destroy")

    def window_back(self) -> Result:
        """backEvent: the Back key; answers with what the window returned."""
        return self.call("window.back")

    def window_key(self, code: int) -> Result:
        """keyEvent; answers with what the window returned.

        code: the key's code
        """
        return self.call("window.key", code=code)

    def unit_get(self, path: str | None = None) -> Result:
        """State of the simulated unit.

        path: a value or a branch; empty: the whole unit
        """
        return self.call("unit.get", **given(path=path))

    def unit_set(self, path: str, value: Json) -> Result:
        """Changes the unit; a value that does not fit changes nothing.

        path: a value or a branch
        value: the new value; for a branch an object
        """
        return self.call("unit.set", path=path, value=value)

    def unit_emit(self, signal: str) -> Result:
        """Has a service tell the plug-in what the unit's state is.

        signal: gnss.status, gnss.version or gnss.module_kind
        """
        return self.call("unit.emit", signal=signal)

    def unit_cold_start(self) -> Result:
        """Has the GNSS receiver forget satellites, position and time; it finds them while it
        follows the sky.
        """
        return self.call("unit.cold_start")

    def unit_journal(self, since: int | None = None) -> Result:
        """The calls that the plug-in made of the unit, shell commands and framework events, in
        order; 'more' says that 'next' asks for a rest.

        since: only what came after this number: the 'next' of an earlier answer
        """
        return self.call("unit.journal", **given(since=since))

    def unit_file_read(self, path: str) -> Result:
        """Content of a file as base64, and as text where it is UTF-8.

        path: absolute, as the plug-in would name it
        """
        return self.call("unit.file.read", path=path)

    def unit_file_write(
        self,
        path: str,
        text: str | None = None,
        base64: str | None = None,
    ) -> Result:
        """Writes a file whole; one of text and base64.

        path: absolute, as the plug-in would name it
        text: content as text
        base64: content as base64
        """
        return self.call("unit.file.write", path=path, **given(text=text, base64=base64))

    def unit_file_remove(self, path: str) -> Result:
        """Removes a file.

        path: absolute, as the plug-in would name it
        """
        return self.call("unit.file.remove", path=path)

    def unit_memory_read(self, address: Address) -> Result:
        """A word of the physical memory.

        address: of a 32-bit word
        """
        return self.call("unit.memory.read", address=address)

    def unit_memory_write(self, address: Address, value: Address) -> Result:
        """Writes a word of the physical memory.

        address: of a 32-bit word
        value: the word
        """
        return self.call("unit.memory.write", address=address, value=value)

    def unit_registers(self) -> Result:
        """The named registers: value, fields with their meanings, the value before, who wrote last
        (plug-in, script, bench) and when.
        """
        return self.call("unit.registers")

    def unit_register_write(self, name: str, value: Address, field: str | None = None) -> Result:
        """Writes a named register.

        name: of the register
        value: the word, or the field's value
        field: writes this field and leaves the others
        """
        return self.call("unit.register.write", name=name, value=value, **given(field=field))

    def trace_read(self, since: int | None = None) -> Result:
        """The plug-in's debug lines, whole, in order; 'more' says that 'next' asks for a rest.

        since: only what came after this number: the 'next' of an earlier answer
        """
        return self.call("trace.read", **given(since=since))

    def receiver_state(self) -> Result:
        """Where the dialogue stands, the baud rates, counts and what went wrong."""
        return self.call("receiver.state")

    def receiver_set(
        self,
        powered: bool | None = None,
        reset_on_sync: bool | None = None,
        line_rate: bool | None = None,
        download_rate: int | None = None,
        hw_code: int | None = None,
        hw_subcode: int | None = None,
        flash_id: list[Any] | None = None,
        watchdog_ms: int | None = None,
    ) -> Result:
        """Changes how the receiver is built; counts from its next use.

        powered: off: silent, but the line stays up
        reset_on_sync: the first synchronisation byte after silence resets the receiver
        line_rate: answers wait until their bytes would have passed the line
        download_rate: baud after the switch; 0: the rate that the host uses
        hw_code: of the chip
        hw_subcode: of the chip
        flash_id: three words of 16 bits
        watchdog_ms: from the synchronisation to a reset; 0: none
        """
        return self.call(
            "receiver.set",
            **given(powered=powered, reset_on_sync=reset_on_sync, line_rate=line_rate,
                    download_rate=download_rate, hw_code=hw_code, hw_subcode=hw_subcode,
                    flash_id=flash_id, watchdog_ms=watchdog_ms),
        )

    def receiver_reset(self, asserted: bool | None = None) -> Result:
        """Drives the reset line.

        asserted: holds the line, or lets it go; left out: a pulse
        """
        return self.call("receiver.reset", **given(asserted=asserted))

    def receiver_faults(
        self,
        set: list[Any] | None = None,
        clear: bool | None = None,
        seed: int | None = None,
    ) -> Result:
        """Sets faults; answers with each fault, how often it struck and what it did.

        set: faults to come, in place of those before
        clear: takes all faults away
        seed: of the faults' chances; the same seed brings the same faults
        """
        return self.call("receiver.faults", **given(set=set, clear=clear, seed=seed))

    def receiver_dialogue(self, since: int | None = None, entries: bool | None = None) -> Result:
        """The frames of both directions, a line of words each; 'more' says that 'next' asks for a
        rest.

        since: only what came after this number: the 'next' of an earlier answer
        entries: true: 'entries', each as in 'receiver.frame', in place of 'lines'
        """
        return self.call("receiver.dialogue", **given(since=since, entries=entries))

    def receiver_wait(self, phase: str, timeout_ms: int) -> Result:
        """Answers when the receiver is in the phase, or passes through it.

        phase: a phase of the receiver
        timeout_ms: how long to wait, in milliseconds
        """
        return self.call("receiver.wait", phase=phase, timeout_ms=timeout_ms)

    def receiver_flash(
        self,
        address: Address,
        length: int,
        content: bool | None = None,
        package: str | None = None,
    ) -> Result:
        """Content of the flash as base64, and its SHA-256; with a package 'differences', the bytes
        that are not its images'.

        address: of the first byte
        length: bytes
        content: false: only the SHA-256
        package: folder of an update package to compare with
        """
        return self.call(
            "receiver.flash",
            address=address,
            length=length,
            **given(content=content, package=package),
        )

    def receiver_flash_map(self, package: str | None = None) -> Result:
        """The sectors that hold something or differ from the package: 'image' that wrote it last
        since the reset, 0 for none, and how many 'times'; the package's images.

        package: folder of an update package to compare with
        """
        return self.call("receiver.flash.map", **given(package=package))

    def receiver_flash_save(self, file: str) -> Result:
        """Writes the whole flash, 4 MiB, to a file.

        file: file to write
        """
        return self.call("receiver.flash.save", file=file)

    def receiver_flash_load(self, file: str) -> Result:
        """Replaces the whole flash by a file.

        file: of 4 MiB, as 'receiver.flash.save' writes it
        """
        return self.call("receiver.flash.load", file=file)

    def receiver_flash_erase(self) -> Result:
        """Erases the whole flash: every byte is 0xFF."""
        return self.call("receiver.flash.erase")

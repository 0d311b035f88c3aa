"""An update package, made to order."""
from __future__ import annotations

import random
from pathlib import Path

CONFIGURATION = "flash_download.cfg"

ADDRESSES = {
    "bootloader.bin": 0x08030000,
    "partition_table.bin": 0x08000000,
    "gnss_demo.bin": 0x08013000,
    "gnss_config.bin": 0x083FF000,
}
"""Where the receiver keeps each image, in the order of the package."""

SIZES = {
    "bootloader.bin": 8193,
    "partition_table.bin": 4095,
    "gnss_demo.bin": 12288,
    "gnss_config.bin": 301,
}
"""Quick to flash: a byte over whole packets, a byte short of one, whole packets, a part of one."""


class Package:
    """A folder with an update package; the bench sees at once what is changed in it."""

    def __init__(self, folder: Path, sizes: dict[str, int] | None = None, seed: int = 0) -> None:
        """The same seed brings the same content; `sizes` in bytes, in place of SIZES."""
        self.folder = folder
        self.addresses = dict(ADDRESSES)
        for name, size in {**SIZES, **(sizes or {})}.items():
            self.write(name, random.Random(f"{seed} {name}").randbytes(size))
        lines = [f"{name} 0x{address:08X}\n" for name, address in self.addresses.items()]
        self.write(CONFIGURATION, "".join(lines).encode())

    @property
    def images(self) -> dict[str, bytes]:
        return {name: (self.folder / name).read_bytes() for name in self.addresses}

    def write(self, name: str, content: bytes) -> Package:
        """Changes a file, or makes one."""
        (self.folder / name).write_bytes(content)
        return self

    def remove(self, name: str) -> Package:
        """Takes a file away."""
        (self.folder / name).unlink()
        return self

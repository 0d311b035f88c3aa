"""What is kept of a bench whose test has failed."""
from __future__ import annotations

import json
import shutil
from pathlib import Path
from typing import Callable

from .bench import Bench
from .errors import BenchError


def _texts(lines: list[str]) -> bytes:
    return "".join(f"{line}\n" for line in lines).encode()


def _unit(bench: Bench) -> bytes:
    return json.dumps(bench.unit.document(), indent=1, ensure_ascii=False).encode()


def _said(bench: Bench) -> bytes:
    return bench.program.said().encode() if bench.program else b""


KINDS: dict[str, Callable[[Bench], bytes]] = {
    "screen.png": Bench.picture,
    "journal.txt": lambda bench: _texts(bench.journal.whole()),
    "trace.txt": lambda bench: _texts(bench.trace.lines()),
    "dialogue.txt": lambda bench: _texts(bench.receiver.dialogue()),
    "unit.json": _unit,
    "said.txt": _said,
}
"""Each file and where it comes from."""

CAPSULE = "run.capsule"


def keep(bench: Bench, folder: Path) -> tuple[list[Path], list[str]]:
    """Writes the evidence into the folder: the files, and a line for each that could not be had."""
    folder.mkdir(parents=True, exist_ok=True)
    kept, missed = [], []
    for name, content in KINDS.items():
        try:
            (folder / name).write_bytes(content(bench))
            kept.append(folder / name)
        except BenchError as trouble:
            missed.append(f"no {name}: {trouble}\n")
    if bench.program is not None and bench.program.capsule is not None:
        kept.append(folder / CAPSULE)
    return kept, missed


def keep_capsule(bench: Bench, folder: Path) -> None:
    """Adds what the bench has recorded; once it has ended, as the record is whole only then."""
    recorded = bench.program.capsule if bench.program is not None else None
    if recorded is not None and recorded.exists():  # one that was killed may have left none
        shutil.copyfile(recorded, folder / CAPSULE)

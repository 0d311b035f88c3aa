"""The includes between folders are those that docs/architecture.md draws."""
import pathlib
import re
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENT = "docs/architecture.md"
HEADING = "### Which folder includes which"

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include\s+"([^"]+)"', re.MULTILINE)


def drawn(document):
    """The rows of the table under HEADING: a folder, and the folders it includes."""
    text = document.split(HEADING, 1)[1].split("\n#", 1)[0]
    rows = {}
    for left, right in re.findall(r"^\| `([^`]+)` \|([^|]*)\|$", text, re.MULTILINE):
        rows[left] = set(re.findall(r"`([^`]+)`", right))
    return rows


def folder_of(path):
    """The folder that the drawing knows a file by: the first, in bench/ the second too."""
    parts = path.split("/")
    return "/".join(parts[:2]) if parts[0] == "bench" else parts[0]


def includes(root, files):
    """Yields (file, line, included file) for each include that leaves its folder."""
    known = set(files)
    contract = {name.split("/", 1)[1]: name for name in files if name.startswith("platform/")}
    for name in files:
        if not name.endswith((".h", ".cpp")):
            continue
        text = (root / name).read_text(encoding="utf-8")
        for match in INCLUDE.finditer(text):
            word = match.group(1)
            beside = name.rsplit("/", 1)[0] + "/" + word
            if beside in known:
                continue
            target = word if word in known else contract.get(word)
            if word.startswith("ui_"):
                target = "forms/" + word
            if target and folder_of(target) != folder_of(name):
                yield name, text.count("\n", 0, match.start()) + 1, target


def complaints(root, files, rows):
    """One line for each include that is not drawn, and for each that is drawn and not there."""
    left = {(here, there) for here, others in rows.items() for there in others}
    said = []
    for name, line, target in includes(root, files):
        here, there = folder_of(name), folder_of(target)
        if here not in rows:
            said.append(f"{here} has no row in {DOCUMENT}.")
        elif there not in rows[here]:
            may = ", ".join(sorted(rows[here])) or "nothing"
            said.append(f"{name}:{line} includes {target}: {here} may include {may}. "
                        f"If {there} is meant to be seen there, say so in {DOCUMENT}.")
        left.discard((here, there))
    said += [f"{DOCUMENT} has {here} include {there}; nothing in {here} does any more."
             for here, there in sorted(left)]
    return said


class Folders(unittest.TestCase):
    def test_the_tree_is_as_drawn(self):
        rows = drawn((ROOT / DOCUMENT).read_text(encoding="utf-8"))
        tops = sorted({row.split("/")[0] for row in rows})
        files = [path.relative_to(ROOT).as_posix() for top in tops
                 for path in (ROOT / top).rglob("*") if path.suffix in (".h", ".cpp")]
        self.assertGreater(len(files), 200, "the sources are not where the drawing has them")
        self.assertEqual("\n".join(complaints(ROOT, files, rows)), "")

    def test_what_is_not_drawn_is_named(self):
        with tempfile.TemporaryDirectory() as place:
            root = pathlib.Path(place)
            files = {"gps/page.cpp": '#include "page.h"\n\n#include "bench/unit/unit.h"\n',
                     "gps/page.h": "", "bench/unit/unit.h": '#include "mcu/mcu.h"\n',
                     "platform/mcu/mcu.h": ""}
            for name, text in files.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text, encoding="utf-8")
            rows = drawn(f"{HEADING}\n\n| folder | includes |\n|---|---|\n"
                         "| `gps` | `platform` |\n| `bench/unit` | `platform` |\n")
            self.assertEqual(complaints(root, list(files), rows), [
                "gps/page.cpp:3 includes bench/unit/unit.h: gps may include platform. "
                "If bench/unit is meant to be seen there, say so in docs/architecture.md.",
                "docs/architecture.md has gps include platform; nothing in gps does any more."])


if __name__ == "__main__":
    sys.exit(unittest.main())

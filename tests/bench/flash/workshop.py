#!/usr/bin/env python3
"""Runs the commands of docs/workshop.md: workshop.py BENCH RECEIVER PACKAGE DOCUMENT FOLDER.

Each command in a block of the document is run, with these words replaced:

    script/run           the built bench
    testmode-receiver    the built receiver
    FOLDER               the sample package
    /dev/ttyUSB0         the line of a simulated receiver that stands alone
    /tmp/...             a file in FOLDER, the argument

Left out are "--agents AGENTS" (the recipe of the README is tried with them) and "--reset LINE" (a
pseudo-terminal has no modem lines, and the receiver takes the synchronisation for a reset). Every
other word must be one that stands in KNOWN. Each update must end with 0, and the receiver's flash
must hold the package's images.
"""
import os
import re
import shlex
import subprocess
import sys

BENCH, RECEIVER, PACKAGE, DOCUMENT, FOLDER = sys.argv[1:]
PROGRAMS = {"script/run": BENCH, "testmode-receiver": RECEIVER}
KNOWN = {"--flash", "--attempts", "3", "--package", "--uart", "--format", "json", "--link",
         "--flash-image"}
LEFT_OUT = re.compile(r" --agents AGENTS| --reset (rts|gpio:0:3)\b")
LINE = os.path.join(FOLDER, "ttyUSB0")
FLASH = os.path.join(FOLDER, "flash.bin")
IMAGES = {"partition_table.bin": 0x000000, "bootloader.bin": 0x030000, "gnss_demo.bin": 0x013000,
          "gnss_config.bin": 0x3FF000}


def replaced(word):
    if word.startswith("/tmp/"):
        return os.path.join(FOLDER, word[len("/tmp/"):])
    if word in KNOWN:
        return word
    return {"FOLDER": PACKAGE, "/dev/ttyUSB0": LINE, **PROGRAMS}[word]


def words_of(command):
    try:
        words = [replaced(word) for word in shlex.split(LEFT_OUT.sub("", command))]
    except KeyError as unknown:
        sys.exit(f"{command}: the word {unknown} is not known here")
    if words[0] not in PROGRAMS.values():
        sys.exit(f"{command}: no program of this tree")
    return words


def start_receiver(words):
    receiver = subprocess.Popen(words, stdout=subprocess.PIPE, text=True)
    if not receiver.stdout.readline():
        sys.exit(f"{words}: no line: status {receiver.wait()}")
    return receiver


def end_receiver(receiver):
    """Ends it, and looks at the flash that it leaves."""
    receiver.terminate()
    status = receiver.wait(30)
    if status != 0:
        sys.exit(f"the receiver ends with status {status}")
    with open(FLASH, "rb") as file:
        flash = file.read()
    for name, address in IMAGES.items():
        with open(os.path.join(PACKAGE, name), "rb") as file:
            image = file.read()
        if flash[address:address + len(image)] != image:
            sys.exit(f"{name} is not what the flash holds")
    os.remove(FLASH)


def run(command):
    print(f"== {command}", flush=True)
    words = words_of(command)
    receiver = None
    if LINE in words:
        receiver = start_receiver([RECEIVER, "--full-speed", "--link", LINE, "--flash-image", FLASH])
    environment = {k: v for k, v in os.environ.items() if "DISPLAY" not in k}
    environment["XDG_STATE_HOME"] = FOLDER
    status = subprocess.run(words, env=environment, timeout=400, check=False).returncode
    if receiver:
        end_receiver(receiver)
    if status != 0:
        sys.exit(f"{command}: ends with status {status}")


with open(DOCUMENT, encoding="utf-8") as document:
    blocks = re.findall(r"^```sh\n(.*?)^```", document.read(), re.DOTALL | re.MULTILINE)
if not blocks:
    sys.exit("the document has no commands")
for block in blocks:
    beside = None
    for line in block.splitlines():
        if line.endswith(" &"):
            beside = start_receiver(words_of(line[:-2]))
        else:
            run(line)
    if beside:
        end_receiver(beside)

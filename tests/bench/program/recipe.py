#!/usr/bin/env python3
"""Runs the README's recipe for a receiver on one's own UART: recipe.py SOURCE BUILD REALPORT FOLDER.

The agents are made up, of the vendor's sizes; the receiver is the simulated one that stands alone,
whose pseudo-terminal REALPORT (preloaded) makes look like an adapter's port.
"""
import json
import os
import random
import re
import socket
import subprocess
import sys
import tempfile

SOURCE, BUILD, REALPORT, FOLDER = sys.argv[1:]
AGENTS = {"da_array.bin": 2458, "da_array1.bin": 39148, "slave_da_array.bin": 27103}
ADDRESSES = {"partition_table.bin": 0x08000000, "bootloader.bin": 0x08030000,
             "gnss_demo.bin": 0x08013000, "gnss_config.bin": 0x083FF000}


def fail(text):
    raise SystemExit("FAIL: " + text)


def recipe():
    with open(os.path.join(SOURCE, "README.md"), encoding="utf-8") as document:
        lines = re.findall(r"^    script/run (--agents AGENTS .*)$", document.read(), re.MULTILINE)
    if len(lines) != 1:
        fail(f"the README has one recipe: {lines}")
    return lines[0].split()


def make_agents():
    """Always the same bytes in the same place: the second run builds nothing."""
    folder = os.path.join(FOLDER, "agents")
    os.makedirs(folder, exist_ok=True)
    for name, size in AGENTS.items():
        content = random.Random(name).randbytes(size)
        path = os.path.join(folder, name)
        if not os.path.exists(path) or open(path, "rb").read() != content:
            with open(path, "wb") as file:
                file.write(content)
    return folder


class Receiver:
    def __init__(self, folder):
        self.monitor = os.path.join(folder, "monitor")
        self.image = os.path.join(folder, "flash")
        self.process = subprocess.Popen(
            [os.path.join(BUILD, "bin", "testmode-receiver"), "--full-speed",
             "--monitor", self.monitor, "--flash-image", self.image],
            stdout=subprocess.PIPE, text=True)
        self.port = self.process.stdout.readline().strip()

    def programs(self):
        """What the dialogue says of the programs that were loaded."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.connect(self.monitor)
            lines = connection.makefile("rw", encoding="utf-8", newline="\n")
            lines.readline()  # the greeting
            lines.write('{"jsonrpc":"2.0","id":1,"method":"receiver.dialogue"}\n')
            lines.flush()
            dialogue = json.loads(lines.readline())["result"]["lines"]
        return [line for line in dialogue if "program of" in line]

    def end(self):
        self.process.terminate()
        self.process.wait(30)

    def flash(self):
        self.end()
        with open(self.image, "rb") as saved:
            return saved.read()


def run(words, port, log):
    environment = {k: v for k, v in os.environ.items() if "DISPLAY" not in k}
    environment.update(LD_PRELOAD=REALPORT, REAL_PORT=port, REAL_PORT_LOG=log,
                       XDG_STATE_HOME=os.path.dirname(log))
    return subprocess.run([os.path.join(SOURCE, "script", "run"), *words], env=environment,
                          capture_output=True, text=True, stdin=subprocess.DEVNULL)


def whole_recipe(folder, receiver):
    package = os.path.join(BUILD, "share", "headunit", "package")
    agents = make_agents()
    values = {"AGENTS": agents, "FOLDER": package, "/dev/ttyUSB0": receiver.port}
    words = [values.get(word, word) for word in recipe()]
    outcome = run(words, receiver.port, os.path.join(folder, "modem"))
    print(outcome.stdout, outcome.stderr)
    programs = receiver.programs()
    flash = receiver.flash()
    if outcome.returncode:
        fail(f"the recipe ends with status {outcome.returncode}")
    for name, address in ADDRESSES.items():
        with open(os.path.join(package, name), "rb") as file:
            content = file.read()
        start = address - 0x08000000
        if flash[start:start + len(content)] != content:
            fail(f"{name}: the flash differs")
    # the first bytes of what the receiver was asked to run, in the last attempt
    for name, line in zip(("da_array.bin", "da_array1.bin"), programs[-2:], strict=True):
        with open(os.path.join(agents, name), "rb") as file:
            if file.read(16).hex(" ") not in line:
                fail(f"{name} was not loaded but: {line}")


def without_agents(_, receiver):
    """The same with what the tree carries is refused."""
    words = ["--flash", "--uart", receiver.port]
    bench = os.path.join(BUILD, "bin", "testmode-bench")
    environment = dict(os.environ, LD_PRELOAD=REALPORT, REAL_PORT=receiver.port)
    outcome = subprocess.run([bench, *words], env=environment, capture_output=True, text=True)
    if outcome.returncode != 3 or "da_array.bin" not in outcome.stderr:
        fail(f"stand-ins: status {outcome.returncode}, {outcome.stderr}")


for part in (whole_recipe, without_agents):
    with tempfile.TemporaryDirectory(dir=FOLDER) as place:
        simulated = Receiver(place)
        try:
            part(place, simulated)
        finally:
            simulated.end()

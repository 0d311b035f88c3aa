#!/usr/bin/env python3
"""The bench flashes a receiver that stands alone: update.py RECEIVER BENCH EXAMPLE FOLDER.

The documents' example makes the update and compares the flash, twice on the same receiver:
nothing but the synchronisation resets it. What the receiver then saves is what it was asked for.
"""
import base64
import json
import os
import socket
import subprocess
import sys
import tempfile
import time

RECEIVER, BENCH, EXAMPLE, FOLDER = sys.argv[1:]
ENVIRONMENT = {k: v for k, v in os.environ.items() if "DISPLAY" not in k}


def call(path, method, **params):
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(path)
        lines = connection.makefile("rw", encoding="utf-8", newline="\n")
        lines.readline()  # the greeting
        lines.write(json.dumps({"jsonrpc": "2.0", "id": 1, "method": method, "params": params}))
        lines.write("\n")
        lines.flush()
        return json.loads(lines.readline())["result"]


def ended(process, asked):
    asked()
    status = process.wait(30)
    if status:
        raise SystemExit(f"{process.args[0]} ends with status {status}")


def flash_once(folder, link, receiver_socket):
    bench_socket = os.path.join(folder, "bench")
    bench = subprocess.Popen([BENCH, "--uart", link, "--monitor", bench_socket], env=ENVIRONMENT)
    while not os.path.exists(bench_socket) and bench.poll() is None:
        time.sleep(0.02)
    run = subprocess.run([sys.executable, EXAMPLE, bench_socket, receiver_socket],
                         capture_output=True, text=True, timeout=120)
    print(run.stdout, run.stderr)
    if run.returncode or run.stdout.count(", equal") != 4:
        raise SystemExit("\n".join(call(receiver_socket, "receiver.dialogue", since=0)["lines"][-40:]))
    ended(bench, bench.terminate)


with tempfile.TemporaryDirectory(dir=FOLDER) as folder:
    link, monitor, image = (os.path.join(folder, name) for name in ("line", "monitor", "flash"))
    receiver = subprocess.Popen(
        [RECEIVER, "--link", link, "--monitor", monitor, "--flash-image", image],
        stdout=subprocess.PIPE, text=True)
    receiver.stdout.readline()
    for update in (1, 2):
        flash_once(folder, link, monitor)
        state = call(monitor, "receiver.state")
        if state["resets"] != update or [i["complete"] for i in state["images"]] != [True] * 4:
            raise SystemExit(f"update {update}: {state}")
    start = base64.b64decode(call(monitor, "receiver.flash", address=0x08000000,
                                  length=0x50000)["base64"])
    ended(receiver, lambda: call(monitor, "bench.quit"))
    with open(image, "rb") as saved:
        content = saved.read()
    if len(content) != 4 * 1024 * 1024 or content[:0x50000] != start or start[0] == 0xFF:
        raise SystemExit("the saved flash is another one")

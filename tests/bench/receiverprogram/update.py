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


def ended(process):
    status = process.wait(30)
    if status:
        raise SystemExit(f"{process.args[0]} ends with status {status}")


def flash_once(folder, link, receiver_socket):
    """True when the example's checks hold."""
    bench_socket = os.path.join(folder, "bench")
    with subprocess.Popen([BENCH, "--uart", link, "--monitor", bench_socket],
                          env=ENVIRONMENT) as bench:
        try:
            while not os.path.exists(bench_socket) and bench.poll() is None:
                time.sleep(0.02)
            run = subprocess.run([sys.executable, EXAMPLE, bench_socket, receiver_socket],
                                 capture_output=True, text=True, timeout=200)
            print(run.stdout, run.stderr, flush=True)
        finally:
            bench.terminate()
        good = run.returncode == 0 and run.stdout.count(", equal") == 4
        if good:
            ended(bench)
    return good


def flash(folder, link, receiver_socket):
    """A machine that is busy elsewhere may keep host or receiver waiting beyond the dialogue's
    milliseconds: such an update fails, as it should, and the next one begins anew."""
    for _ in range(3):
        if flash_once(folder, link, receiver_socket):
            return
        print("\n".join(call(receiver_socket, "receiver.dialogue", since=0)["lines"][-20:]))
        call(receiver_socket, "receiver.set", powered=False)
        call(receiver_socket, "receiver.set", powered=True)
    raise SystemExit("three updates have failed")


def two_updates(folder, receiver):
    link, monitor = os.path.join(folder, "line"), os.path.join(folder, "monitor")
    receiver.stdout.readline()
    for _ in range(2):
        before = call(monitor, "receiver.state")["resets"]
        flash(folder, link, monitor)
        state = call(monitor, "receiver.state")
        if state["resets"] <= before or [i["complete"] for i in state["images"]] != [True] * 4:
            raise SystemExit(f"after an update: {state}")
    start = call(monitor, "receiver.flash", address=0x08000000, length=0x50000)["base64"]
    call(monitor, "bench.quit")
    ended(receiver)
    return base64.b64decode(start)


with tempfile.TemporaryDirectory(dir=FOLDER) as place:
    image = os.path.join(place, "image")
    words = [RECEIVER, "--link", os.path.join(place, "line"),
             "--monitor", os.path.join(place, "monitor"), "--flash-image", image]
    with subprocess.Popen(words, stdout=subprocess.PIPE, text=True) as process:
        try:
            content = two_updates(place, process)
        finally:
            process.terminate()
    with open(image, "rb") as saved:
        kept = saved.read()
    if len(kept) != 4 * 1024 * 1024 or kept[:0x50000] != content or content[0] == 0xFF:
        raise SystemExit("the saved flash is another one")

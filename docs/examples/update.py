#!/usr/bin/env python3
"""Opens every page of the test mode, then flashes the package into the receiver.

Usage: update.py SOCKET [RECEIVER]

SOCKET is that of a bench, started with: testmode-bench --monitor SOCKET. If its --uart leads to
a receiver that stands alone, RECEIVER is that one's: testmode-receiver --monitor RECEIVER.
"""
import base64
import json
import socket
import sys

PAGES = {  # button of the menu: page that it opens
    "key_usb_test": "apple_dev_test",
    "key_usb_tid": "SetupUsbForm",
    "key_gps_test": "gps_test",
    "key_ncm_test": "apple_dev_test",
    "key_tools": "SystemToolsWidget",
    "key_mic_test": "mic_test",
    "key_gps_update": "Gpsupdate",
}
IMAGES = {  # file of the package: where the receiver keeps it
    "partition_table.bin": 0x08000000,
    "bootloader.bin": 0x08030000,
    "gnss_demo.bin": 0x08013000,
    "gnss_config.bin": 0x083FF000,
}


class Bench:
    """One connection: a JSON object a line, a call and its answer at a time."""

    def __init__(self, path):
        connection = socket.socket(socket.AF_UNIX)
        connection.connect(path)
        self.lines = connection.makefile("rw", encoding="utf-8", newline="\n")
        self.hello = json.loads(self.lines.readline())["params"]

    def __call__(self, method, **params):
        request = {"jsonrpc": "2.0", "id": 1, "method": method, "params": params}
        self.lines.write(json.dumps(request) + "\n")
        self.lines.flush()
        answer = json.loads(self.lines.readline())
        if "error" in answer:
            raise SystemExit(f"{method} {params}: {answer['error']['message']}")
        return answer["result"]

    def wait(self, widget, name, value, seconds=5):
        self("ui.wait", object=widget, property=name, value=value, timeout_ms=seconds * 1000)


def open_every_page(bench):
    for button, page in PAGES.items():
        bench("ui.click", object=button)
        bench.wait(page, "visible", True)
        bench("window.home")
        bench.wait("testEntryWidget", "visible", True)
        print(f"{page}: opened and left")


def update(bench, receiver):
    bench("ui.click", object="key_gps_update")
    bench("ui.click", object="pushButton_2")  # take the package
    bench("ui.click", object="pushButton_3")  # start
    receiver("receiver.wait", phase="stage-2-writing", timeout_ms=60000)
    bench.wait("pushButton_3", "enabled", True, seconds=120)
    result = bench("ui.state", object="textBrowser")["text"].splitlines()[-1]
    print(result)
    if "succed" not in result:
        raise SystemExit("the receiver was not flashed")


def compare(bench, receiver):
    for name, address in IMAGES.items():
        file = bench("unit.file.read", path=f"/media/update/{name}")["base64"]
        size = len(base64.b64decode(file))
        flash = receiver("receiver.flash", address=address, length=size)["base64"]
        if file != flash:
            raise SystemExit(f"{name}: the flash differs")
        print(f"{name}: {size} bytes, equal")
    anomalies = receiver("receiver.state")["anomalies"]
    if anomalies:
        raise SystemExit("\n".join(["the receiver found:"] + anomalies))


bench = Bench(sys.argv[1])
receiver = Bench(sys.argv[2]) if len(sys.argv) > 2 else bench
open_every_page(bench)
update(bench, receiver)
compare(bench, receiver)

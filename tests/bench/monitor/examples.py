#!/usr/bin/env python3
"""Runs the documents' examples on a real bench: examples.py BENCH CTL DOCS FOLDER.

Every call of the document gives the answer that stands beneath it ("…" stands for
anything), and what the document says of calls, errors, events, paths, steps and phases is
what the bench's own schema says. Then the example script drives a whole update.
"""
import json
import os
import re
import subprocess
import sys
import tempfile
import time

BENCH, CTL, DOCS, FOLDER = sys.argv[1:]
DOCUMENT = open(os.path.join(DOCS, "monitor.md"), encoding="utf-8").read()
INTEGERS = (-(2**31), 2**31 - 1)
failures = []


def check(holds, text):
    if not holds:
        failures.append(text)
        print("FAIL:", text)


class RunningBench:
    """A bench with a socket in a folder of its own, ended with bench.quit."""

    def __init__(self, *options):
        self.folder = tempfile.TemporaryDirectory(dir=FOLDER)
        self.socket = os.path.join(self.folder.name, "monitor")
        words = [BENCH, "--monitor", self.socket, "--full-speed", *options]
        environment = {k: v for k, v in os.environ.items() if "DISPLAY" not in k}
        self.said = tempfile.TemporaryFile("w+", encoding="utf-8")
        self.process = subprocess.Popen(words, env=environment, stderr=self.said)

    def __enter__(self):
        while not os.path.exists(self.socket) and self.process.poll() is None:
            time.sleep(0.02)
        return self

    def __exit__(self, *exception):
        if self.process.poll() is None and self.ctl("bench.quit").returncode:
            self.process.terminate()
        status = self.process.wait(30)
        self.said.seek(0)
        check(status == 0, f"the bench ends with status {status}: {self.said.read()}")
        self.said.close()
        self.folder.cleanup()

    def ctl(self, words):
        environment = dict(os.environ, TESTMODE_MONITOR=self.socket)
        environment["PATH"] = os.path.dirname(CTL) + os.pathsep + os.environ["PATH"]
        return subprocess.run(f"testmode-ctl {words}", shell=True, env=environment,
                              capture_output=True, text=True, timeout=60)

    def call(self, words):
        run = self.ctl(words)
        check(run.returncode == 0, f"{words}: {run.stderr}")
        return json.loads(run.stdout or "{}")


def fits(pattern, text):
    return re.fullmatch(".*".join(map(re.escape, pattern.split("…"))), text, re.DOTALL)


def run_examples(bench):
    """Runs the calls in their order; returns them."""
    calls = []
    for block in re.findall(r"^```console\n(.*?)^```", DOCUMENT, re.DOTALL | re.MULTILINE):
        for call, answer in re.findall(r"^\$ testmode-ctl (.*)\n(.*)\n", block, re.MULTILINE):
            calls.append(call)
            if call == "bench.quit":
                continue  # the last thing of all
            run = bench.ctl(call)
            check(fits(answer, run.stdout.strip()), f"{call}: {run.stdout}{run.stderr}")
            if call == "window.destroy":
                bench.call("window.home")
    return calls


def type_of(parameter):
    words = parameter["type"]
    low, high = parameter.get("minimum", INTEGERS[0]), parameter.get("maximum", INTEGERS[1])
    if (low, high) != INTEGERS:
        words += f" from {low}" + (f" to {high}" if high != INTEGERS[1] else "")
    return words + (", optional" if parameter["optional"] else "")


def compare_with_schema(schema, calls):
    for method in schema["methods"]:
        lines = [f"### {method['name']}", "", method["description"] + "."]
        for parameter in method["parameters"]:
            start = [""] if parameter is method["parameters"][0] else []
            lines += start + [f"- `{parameter['name']}` ({type_of(parameter)}): "
                              f"{parameter['description']}"]
        check("\n".join(lines) + "\n\n" in DOCUMENT, f"the document has: {lines}")
        example = f"{method['name']} {method['example']}".strip()
        check(example in calls, f"the document shows: {example}")
    headings = re.findall(r"^### (\w+\.[\w.]+)$", DOCUMENT, re.MULTILINE)
    check(sorted(headings) == sorted(m["name"] for m in schema["methods"]), "no other calls")

    rows = [f"| `{e['class']}` | {e['code']} | {e['meaning']} |" for e in schema["errors"]]
    rows += [f"| `{e['name']}` | {e['description']} |" for e in schema["events"]]
    rows += [f"| `{p['path']}` | {p['type']} | {p['description']} |" for p in schema["paths"]]
    for row in rows:
        check(row in DOCUMENT, f"the document has the row: {row}")
    for word in schema["faults"] + schema["steps"] + schema["phases"]:
        check(f"`{word}`" in DOCUMENT, f"the document names `{word}`")


def every_method_is_dispatched(bench, schema):
    for method in schema["methods"]:
        run = bench.ctl(f"{method['name']} no_such_argument=1")
        check(run.returncode == 1 and "Argument: " in run.stderr, f"{method['name']}: {run.stderr}")


def run_update_script():
    with RunningBench() as bench:
        script = os.path.join(DOCS, "examples", "update.py")
        run = subprocess.run([sys.executable, script, bench.socket], capture_output=True,
                             text=True, timeout=120)
        print(run.stdout, run.stderr)
        check(run.returncode == 0, "the example script succeeds")
        check(run.stdout.count(", equal") == 4, "four images are equal")


def run_with_unit_file():
    block = DOCUMENT[DOCUMENT.index("## The unit's state"):]
    document = json.loads(re.search(r"```json\n(.*?)```", block, re.DOTALL).group(1))
    file = os.path.join(FOLDER, "unit.json")
    with open(file, "w", encoding="utf-8") as stream:
        json.dump(document, stream)
    with RunningBench("--unit", file) as bench:
        whole = bench.call("unit.get")["value"]
        check(whole["usb"]["0"]["disk"] is True, "the disk of the file is there")
        check(whole["gnss"]["satellites"][0]["signal"] == 38, "and the satellite")
        check(whole["receiver"]["faults"][0]["probability"] == 0.001, "and the fault")
        check(whole["receiver"]["seed"] == 7, "with its seed")
        # The whole document, loaded by another bench, is the same there.
        with open(file, "w", encoding="utf-8") as stream:
            json.dump(whole, stream)
    with RunningBench("--unit", file) as bench:
        check(bench.call("unit.get path=receiver")["value"] == whole["receiver"], "it comes back")

    for text, message in (('{"gnss": {"kind": 1}}', "gnss.kind: the unit has no such key"),
                          ('{"usb": {"0": {"disk": 1}}}', "usb.0.disk: wanted is true or false"),
                          ('{"receiver": {"faults": [{"kind": "melt"}]}}', "receiver.faults.0: ")):
        with open(file, "w", encoding="utf-8") as stream:
            stream.write(text)
        run = subprocess.run([BENCH, "--monitor", os.path.join(FOLDER, "m"), "--unit", file],
                             capture_output=True, text=True, timeout=60)
        check(run.returncode == 3 and message in run.stderr, f"{text}: {run.stderr}")


with RunningBench() as running:
    every_method_is_dispatched(running, running.call("bench.schema"))
    compare_with_schema(running.call("bench.schema"), run_examples(running))
run_update_script()
run_with_unit_file()
sys.exit(1 if failures else 0)

"""The project's own tests, run in the machine."""
import collections
import json
import re
import shlex
import subprocess

from . import children
from .steps import BRIEF, expect

# What an emulator of programs alone cannot run: rates of 921600 baud, exclusive terminals, start of
# programs, private roots.
NATIVE = ["test_cmdline", "test_ctl", "test_pluginmodule", "test_privateroot",
          "test_receiver_dialogue", "test_receiver_line", "test_receivermethods",
          "test_serial_thread", "test_serialdevice"]

# Further builds of the project: they run where the compiler does.
ON_PC = ["agent_configurations", "platform_sdk"]

AT_ONCE = 3  # many wait for the dialogue's own pauses

# The emulated processor is slower than the tests' time-outs think.
PATIENCE = 5
FUNCTION_MILLISECONDS = 900_000

Test = collections.namedtuple("Test", "name command environment folder timeout alone fast")


def known(tree):
    """What ctest knows of the armhf build."""
    listed = subprocess.run(["ctest", "--test-dir", tree / "build/armhf", "--show-only=json-v1"],
                            capture_output=True, check=True).stdout
    tests = []
    for test in json.loads(listed)["tests"]:
        values = {entry["name"]: entry["value"] for entry in test["properties"]}
        tests.append(Test(test["name"], test.get("command", []), values.get("ENVIRONMENT", []),
                          values["WORKING_DIRECTORY"], int(values.get("TIMEOUT", 120)),
                          values.get("RUN_SERIAL", False), "fast" in values.get("LABELS", [])))
    return tests


def chosen(tree):
    """The tests for the machine, those that must be alone at the end. What is no program of the
    build looks at the checkout, which is the PC's."""
    listed = subprocess.run(["ninja", "-C", tree / "build/armhf", "-t", "targets", "all"],
                            capture_output=True, text=True, check=True).stdout
    programs = {line.split(":")[0] for line in listed.splitlines()}
    tests = [test for test in known(tree)
             if (test.fast or test.name in NATIVE) and test.name in programs]
    return sorted(tests, key=lambda test: test.alone)


def run_in(machine, chosen, steps):
    """Adds one line a test to the list of `steps`; outputs go to the results. The tests' times are a
    PC's: one that fails runs once more, alone, and its line says so."""
    outputs = machine.results / "outputs"
    outputs.mkdir(exist_ok=True)
    commands = {test.name: test.command for test in known(machine.tree)}  # now that they are built
    waiting = collections.deque(test._replace(command=commands[test.name]) for test in chosen)
    running, again = {}, set()
    while waiting or running:
        while waiting and len(running) < (1 if waiting[0].alone else AT_ONCE):
            if running and any(test.alone for test in running.values()):
                break
            test = waiting.popleft()
            running[_start(machine, test)] = test
        for job in machine.ended():
            test = running.pop(job)
            said = job.said()
            (outputs / f"{test.name}.txt").write_text(said, encoding="utf-8")
            if job.status != 0 and test.name not in again:
                again.add(test.name)
                (outputs / f"{test.name}-first.txt").write_text(said, encoding="utf-8")
                waiting.append(test._replace(alone=True))
                continue
            attempt = "second attempt: " if test.name in again else ""
            steps.add(job.status == 0, job.seconds, test.name, attempt + _summary(job, said))


def _start(machine, test):
    command = shlex.join(["env", *test.environment,
                          f"QTEST_FUNCTION_TIMEOUT={FUNCTION_MILLISECONDS}", *test.command])
    return machine.start(f"cd {shlex.quote(test.folder)} && exec {command}",
                         test.timeout * PATIENCE)


def _summary(job, said):
    if job.status == 124:
        return "not done in time"
    totals = [line for line in said.splitlines() if line.startswith("Totals:")]
    failures = [line for line in said.splitlines() if line.startswith("FAIL!")]
    return "; ".join(failures[:3] + totals[-1:]) or said.strip()[-200:]


def load_plugin(machine):
    """What platform_sdk has built for a unit is loaded where it can be."""
    folder = machine.tree / "build/armhf/tests/build/platform_sdk"
    return machine.run([folder / "stubs/load", folder / "build/lib/libtestmode.so"], BRIEF).strip()


class OnPC:
    """The tests that build with the toolchain of the machine, beside what is done in it."""

    def __init__(self, tree, log):
        self.log = log
        with open(log, "wb") as output:
            self.process = children.start(
                ["nice", "-n", "15", "ctest", "--test-dir", tree / "build/armhf",
                 "-R", f"^({'|'.join(ON_PC)})$", "--no-tests=error", "--output-on-failure"],
                stdout=output, stderr=subprocess.STDOUT)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        children.end(self.process)

    def finish(self, steps):
        """Adds one line a test to the list of `steps`."""
        self.process.wait()
        said = self.log.read_text(encoding="utf-8", errors="replace")
        for name in ON_PC:
            found = re.search(rf" {name} \.+[* ]+(\w[\w ]*?) +([0-9.]+) sec", said)
            expect(found, f"{name} did not run: {said[-300:]}")
            passed = found[1] == "Passed"
            steps.add(passed, float(found[2]), name,
                      "on this PC, with the cross compiler" if passed else f"see {self.log}")

"""The project's own tests, run in the machine."""
import collections
import json
import shlex
import subprocess

from . import build
from .steps import expect

# What an emulator of programs alone cannot run: rates of 921600 baud, exclusive terminals, start of
# programs, private roots.
NATIVE = ["test_cmdline", "test_ctl", "test_pluginmodule", "test_privateroot",
          "test_receiver_dialogue", "test_receiver_line", "test_receivermethods",
          "test_serial_thread", "test_serialdevice"]

# Further builds of the project: they run where the compiler does.
ON_PC = ["agent_configurations", "platform_sdk"]

AT_ONCE = 3  # many wait for the dialogue's own pauses
PATIENCE = 3  # the emulated processor is slower than the tests' time-outs think

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
    """The tests for the machine, those that must be alone at the end."""
    tests = [test for test in known(tree) if test.fast or test.name in NATIVE]
    return sorted(tests, key=lambda test: test.alone)


def prepare(tree, folder, tests):
    build.build(tree, folder, "armhf", *(test.name for test in tests))


def run_in(machine, tests, run):
    """Adds one line a test to the list of `run`; outputs go to the results."""
    outputs = machine.results / "tests"
    outputs.mkdir(exist_ok=True)
    commands = {test.name: test.command for test in known(machine.tree)}  # now that they are built
    waiting = collections.deque(test._replace(command=commands[test.name]) for test in tests)
    running = {}
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
            run.add(job.status == 0, job.seconds, test.name, _summary(job, said))


def _start(machine, test):
    command = shlex.join(["env", *test.environment, *test.command])
    return machine.start(f"cd {shlex.quote(test.folder)} && exec {command}",
                         test.timeout * PATIENCE)


def _summary(job, said):
    if job.status == 124:
        return "not done in time"
    totals = [line for line in said.splitlines() if line.startswith("Totals:")]
    failures = [line for line in said.splitlines() if line.startswith("FAIL!")]
    return "; ".join(failures[:3] + totals[-1:]) or said.strip()[-200:]


def run_here(tree, name):
    """A test that builds with the toolchain of the machine."""
    done = subprocess.run(["ctest", "--test-dir", tree / "build/armhf", "-R", f"^{name}$",
                           "--output-on-failure", "--no-tests=error"],
                          capture_output=True, text=True, check=False)
    expect(done.returncode == 0, done.stdout[-600:])
    return "on this PC, with the cross compiler"

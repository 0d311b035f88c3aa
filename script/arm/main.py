"""A 32-bit ARM unit in an emulator: its own kernel, UART, USB adapter and physical memory.

Installs what it needs, builds plug-in and bench for ARM, boots the machine, checks there what a PC
cannot show, and brings logs and pictures back to build/arm/results. What takes long to make is
kept in build/arm. docs/arm-unit.md tells more.
"""
import argparse
import os
import pathlib
import shutil
import signal
import sys

sys.dont_write_bytecode = True
TREE = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path[0] = str(TREE / "script")

from arm import build, checks, children, console, disk, roots, selftest, steps  # noqa: E402

FOLDER = TREE / "build/arm"
RESULTS = FOLDER / "results"


def arguments():
    parser = argparse.ArgumentParser(prog="arm-unit", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    modes = parser.add_mutually_exclusive_group()
    modes.add_argument("--short", action="store_true", help="one update and one tour")
    modes.add_argument("--build", action="store_true", help="make the sysroot and build, no more")
    modes.add_argument("--shell", action="store_true", help="a prompt in the machine")
    modes.add_argument("--vnc", action="store_true",
                       help="the bench's window in the machine, for a VNC client on this PC")
    modes.add_argument("--self-test", action="store_true",
                       help="tries --shell and --vnc, and that an interrupted run leaves nothing")
    return parser.parse_args()


# What runs in the machine: all of it, and what an update and a tour need.
PROGRAMS = ["bench"]
FEW_PROGRAMS = ["testmode-bench", "testmode", "headunit_package"]


def install(packages):
    """An installation that is broken off would leave packages half configured: it is waited for."""
    # Who is not root is asked for a password on this terminal.
    setup = children.start([TREE / "script/setup", *packages], start_new_session=os.geteuid() == 0)
    try:
        status = setup.wait()
    except SystemExit:
        setup.wait()
        raise
    finally:
        children.end(setup)
    steps.expect(status == 0, f"cannot install {', '.join(packages)} (script/setup: {status})")


def prepare(run, programs):
    """What the machine is made of, and what runs in it."""
    with run.preparing("packages of this PC", 900):
        install(build.TOOLS)
    FOLDER.mkdir(parents=True, exist_ok=True)
    with roots.making(FOLDER) as (sysroot, root):
        with run.preparing("receiver for this PC", 900):
            build.build(TREE, FOLDER, "dev", "testmode-receiver")
        with run.preparing("sysroot", 600):
            sysroot.finish()
        with run.preparing("configuration for the machine", 600):
            build.configure(TREE, FOLDER, "armhf")
        with build.Build(TREE, FOLDER, "armhf", *programs) as building:
            with run.preparing("root file system and disk", 900):
                made = root.finish()
                files = disk.Disk(FOLDER, root.folder, TREE / "script/arm/guest/init")
                if made or not files.is_current():
                    files.make()
            with run.preparing("bench for the machine", 1800):
                building.finish()
    return files


def stop(*_):
    sys.exit("arm-unit: told to end")


def main():
    options = arguments()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)
    run = steps.Steps()
    files = prepare(run, FEW_PROGRAMS if options.short else PROGRAMS)
    if options.build:
        return 0
    shutil.rmtree(RESULTS, ignore_errors=True)
    RESULTS.mkdir()
    unit = checks.Unit(TREE, RESULTS, files, run)
    if options.shell:
        return console.attach(unit)
    if options.vnc:
        return console.show(unit)
    if options.self_test:
        selftest.whole(unit)
    elif options.short:
        unit.short()
    else:
        unit.whole()
    return run.finish(RESULTS / "list.txt")


if __name__ == "__main__":
    try:
        sys.exit(main())
    except steps.Failed as failure:
        sys.exit(f"arm-unit: {failure}")

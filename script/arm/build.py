"""What runs in the machine, and the receiver that runs beside it on this PC."""
import os
import subprocess

from . import children

# On this PC, beside what the project needs anyway.
TOOLS = ["g++-arm-linux-gnueabihf", "mmdebstrap", "e2fsprogs", "cpio", "kmod", "qemu-system-arm"]


def configure(tree, folder, preset):
    """Unless it is; the build itself sees what else has changed."""
    made = tree / "build" / preset / "build.ninja"
    presets = tree / "CMakePresets.json"
    if made.exists() and made.stat().st_mtime > presets.stat().st_mtime:
        return
    children.run(["cmake", "--preset", preset], folder / f"configure-{preset}.log", cwd=tree)


class Build:
    """Targets of a configured preset, being built; the compiler's output goes to a log."""

    def __init__(self, tree, folder, preset, *targets, niceness=0):
        self.log = folder / f"build-{preset}.log"
        self.words = ["nice", "-n", niceness, "cmake", "--build", "--preset", preset,
                      "--parallel", os.cpu_count(), "--target", *targets]
        with open(self.log, "wb") as output:
            self.process = children.start(self.words, cwd=tree, stdout=output,
                                          stderr=subprocess.STDOUT)

    def finish(self):
        children.finish(self.process, self.words[3:], self.log)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        children.end(self.process)


def build(tree, folder, preset, *targets):
    configure(tree, folder, preset)
    with Build(tree, folder, preset, *targets) as building:
        building.finish()

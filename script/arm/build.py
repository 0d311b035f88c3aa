"""What runs in the machine, and the receiver that runs beside it on this PC."""
import os

from . import children

# On this PC, beside what the project needs anyway.
TOOLS = ["g++-arm-linux-gnueabihf", "mmdebstrap", "e2fsprogs", "cpio", "kmod", "qemu-system-arm"]


def build(tree, folder, preset, *targets):
    """Builds targets of a preset; the compiler's output goes to logs."""
    children.run(["cmake", "--preset", preset], folder / f"configure-{preset}.log", cwd=tree)
    children.run(["cmake", "--build", "--preset", preset, "--parallel", os.cpu_count(),
                  "--target", *targets], folder / f"build-{preset}.log", cwd=tree)

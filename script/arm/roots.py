"""The sysroot that is built against and the root file system that is booted.

Both are extracted from Debian's packages without running any of them, and kept in the build folder
until their list of packages changes.
"""
import contextlib
import os
import re
import shutil
import subprocess

from . import children

SUITE = "bookworm"

# What the project is compiled and linked against.
SYSROOT = ["libc6-dev", "libqt5serialport5-dev", "libstdc++-12-dev", "linux-libc-dev", "qtbase5-dev"]

# What runs in the machine.
MACHINE = [
    "linux-image-armmp", "bash", "busybox-static", "coreutils", "grep", "kmod", "libc-bin", "mount",
    "procps", "sed", "setserial", "util-linux",
    "libqt5network5", "libqt5serialport5", "libqt5sql5-sqlite", "libqt5test5", "libqt5widgets5",
    "fonts-dejavu-core", "fonts-dejavu-extra", "fonts-wqy-microhei",
    "bubblewrap",  # the bench's private root
    "binutils",  # test_pluginmodule reads symbols
    "python3-minimal", "socat", "gpiod",  # the checks of the adapter and its lines
]


def mirror():
    """Where this machine's own apt fetches the suite's main component."""
    listed = subprocess.run(
        ["apt-get", "indextargets", "--format", "$(REPO_URI) $(CODENAME) $(COMPONENT)",
         "Created-By: Packages"], capture_output=True, text=True, check=True).stdout
    for line in listed.splitlines():
        words = line.split()
        if words[1:] == [SUITE, "main"]:
            return words[0]
    raise SystemExit(f"arm-unit: apt knows no '{SUITE} main'; try 'apt-get update', or add it to "
                     "its sources")


def apt_options():
    """What apt needs to be told to reach the mirror from here."""
    settings = subprocess.run(["apt-config", "dump", "--no-empty", "--format", '%f "%v";%n'],
                              capture_output=True, text=True, check=True).stdout
    wanted = re.compile("acquire::(https?::proxy|check-valid-until|check-date) ", re.IGNORECASE)
    return [f"--aptopt={line}" for line in settings.splitlines() if wanted.match(line)]


class Root:
    """One folder of extracted packages."""

    def __init__(self, folder, packages, complete):
        self.folder = folder
        self.packages = packages
        self.complete = complete  # adds what no package brings
        self.mark = folder.parent / f"{folder.name}.packages"
        self.log = folder.parent / f"{folder.name}.log"
        self.process = None

    @property
    def wanted(self):
        return f"{SUITE} {' '.join(sorted(self.packages))}\n"

    def is_current(self):
        return self.mark.exists() and self.mark.read_text(encoding="utf-8") == self.wanted

    def start(self):
        """Begins to make it, unless it is there."""
        if self.is_current():
            return
        self.mark.unlink(missing_ok=True)
        shutil.rmtree(self.folder, ignore_errors=True)
        # A user who may not chroot extracts all the same.
        mode = "root" if os.geteuid() == 0 else "chrootless"
        words = ["mmdebstrap", "--quiet", f"--mode={mode}", "--arch=armhf", "--variant=extract",
                 *apt_options(), f"--include={','.join(self.packages)}", SUITE, self.folder,
                 f"deb {mirror()} {SUITE} main"]
        with open(self.log, "wb") as output:
            self.process = children.start(words, stdout=output, stderr=subprocess.STDOUT)

    def finish(self):
        """Waits until it is whole; tells whether it was made anew."""
        if self.process is None:
            return False
        children.finish(self.process, ["mmdebstrap"], self.log)
        self.complete(self.folder)
        self.mark.write_text(self.wanted, encoding="utf-8")
        return True

    def abandon(self):
        if self.process is not None:
            children.end(self.process)


def complete_sysroot(folder):
    # The build runs Qt's tools, so they are this machine's own.
    tools = folder / "usr/lib/qt5/bin"
    for name in ("moc", "uic", "rcc"):
        (tools / name).unlink(missing_ok=True)
        (tools / name).symlink_to(f"/usr/lib/qt5/bin/{name}")


def complete_machine(folder):
    # What the packages' own installation would have made.
    (folder / "bin/sh").unlink(missing_ok=True)
    (folder / "bin/sh").symlink_to("bash")
    for name in ("media", "srv", "home", "results", "var/lock", "etc"):
        (folder / name).mkdir(parents=True, exist_ok=True)
    for name, text in (("passwd", "root:x:0:0:root:/root:/bin/bash\n"
                                  "nobody:x:65534:65534:nobody:/nonexistent:/bin/false\n"),
                       ("group", "root:x:0:\nnogroup:x:65534:\n"),
                       ("hosts", "127.0.0.1 localhost\n")):
        (folder / "etc" / name).write_text(text, encoding="utf-8")
    version = kernel_version(folder)
    subprocess.run(["/sbin/depmod", "-b", folder, version], check=True)


def kernel_version(folder):
    kernels = sorted((folder / "boot").glob("vmlinuz-*-armmp"))
    if not kernels:
        raise SystemExit(f"arm-unit: no kernel in {folder}/boot")
    return kernels[-1].name.removeprefix("vmlinuz-")


@contextlib.contextmanager
def making(folder):
    """Both roots, being made beside one another."""
    roots = (Root(folder / "sysroot", SYSROOT, complete_sysroot),
             Root(folder / "machine", MACHINE, complete_machine))
    try:
        for root in roots:
            root.start()
        yield roots
    finally:
        for root in roots:
            root.abandon()

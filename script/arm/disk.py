"""What the machine boots from: kernel, initial RAM file system and disk."""
import shutil
import subprocess

from . import children, roots

# Until the disk is mounted, in the order of loading.
BOOT_MODULES = [
    "virtio_mmio", "virtio_blk", "crc16", "mbcache", "jbd2", "crc32c_generic", "ext4",
    "netfs", "fscache", "9pnet", "9pnet_virtio", "9p", "virtio_console",
]


class Disk:
    """The files that make the machine, kept until the root file system or these parts change."""

    def __init__(self, folder, root, init):
        self.root = root
        self.init = init
        self.kernel = folder / "vmlinuz"
        self.ramdisk = folder / "initramfs.cpio"
        self.image = folder / "disk.img"
        self.log = folder / "disk.log"
        self.staging = folder / "initramfs"

    def is_current(self):
        whole = all(path.exists() for path in (self.kernel, self.ramdisk, self.image))
        return whole and self.ramdisk.stat().st_mtime >= max(
            self.init.stat().st_mtime, self.image.stat().st_mtime)

    def make(self):
        version = roots.kernel_version(self.root)
        shutil.copyfile(self.root / f"boot/vmlinuz-{version}", self.kernel)
        self.image.unlink(missing_ok=True)
        children.run(["/sbin/mke2fs", "-q", "-t", "ext4", "-O", "^has_journal", "-E",
                      "root_owner=0:0", "-d", self.root, self.image, "1G"], self.log)
        self._make_ramdisk(version)

    def _make_ramdisk(self, version):
        shutil.rmtree(self.staging, ignore_errors=True)
        for name in ("bin", "dev", "proc", "sys", "root", "modules"):
            (self.staging / name).mkdir(parents=True)
        shutil.copy(self.root / "bin/busybox", self.staging / "bin")
        shutil.copy(self.init, self.staging / "init")
        (self.staging / "init").chmod(0o755)
        modules = self.root / "lib/modules" / version / "kernel"
        for number, name in enumerate(BOOT_MODULES):
            found = [path for path in modules.rglob("*.ko")
                     if path.stem.replace("-", "_") == name.replace("-", "_")]
            if found:  # else it is built in
                shutil.copy(found[0], self.staging / f"modules/{number:02}-{name}.ko")
        names = "\n".join(str(path.relative_to(self.staging))
                          for path in sorted(self.staging.rglob("*")))
        packed = subprocess.run(
            ["cpio", "--quiet", "-o", "-H", "newc", "--owner=+0:+0"],
            input=names.encode(), cwd=self.staging, capture_output=True, check=True).stdout
        self.ramdisk.write_bytes(packed)

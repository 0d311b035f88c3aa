"""testmode-bench --doctor: each line red once, on a machine that lacks just that."""
import os
import shutil
import subprocess

import pytest

LINES = ["bubblewrap", "namespaces", "fonts", "display", "lock folders", "serial", "versions"]


class Report:
    """What the doctor said: the lines' words by what was looked at, and which are red."""

    def __init__(self, run):
        self.status = run.returncode
        self.lines = {line[4:17].strip(): line[18:] for line in run.stdout.splitlines()}
        self.red = [line[4:17].strip() for line in run.stdout.splitlines() if line[:3] == "NO "]
        assert self.lines.keys() == set(LINES), run.stdout + run.stderr


@pytest.fixture
def doctor(testmode_setup):
    """Examines the machine, as `before` and `environment` change it."""
    def examine(*before, **environment):
        kept = {name: value for name, value in os.environ.items()
                if "DISPLAY" not in name and name != "QT_QPA_PLATFORM"}
        return Report(subprocess.run(
            [*before, testmode_setup.program, "--doctor"], env={**kept, **environment},
            capture_output=True, text=True, timeout=120, check=False))
    return examine


def test_this_machine_is_well(doctor):
    report = doctor()
    assert (report.red, report.status) == ([], 0)


def test_without_bubblewrap(doctor, tmp_path):
    report = doctor(PATH=str(tmp_path))
    assert report.status == 6
    assert report.lines["bubblewrap"] == "bwrap is not in PATH; install the package bubblewrap"
    assert set(report.red) == {"bubblewrap", "namespaces", "versions"}


def test_without_namespaces(doctor):
    report = doctor("unshare", "--user", "--map-root-user", "sh", "-ec", """
        for kind in user mnt; do echo 0 >/proc/sys/user/max_${kind}_namespaces; done
        exec "$@"
        """, "sh")
    assert (report.red, report.status) == (["namespaces"], 6)
    assert "; allow user namespaces ('sysctl -w " in report.lines["namespaces"]


def test_without_chinese_fonts(doctor, tmp_path):
    (tmp_path / "fonts.conf").write_text("<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir>"
                                         f"<cachedir>{tmp_path}</cachedir></fontconfig>")
    report = doctor(FONTCONFIG_FILE=str(tmp_path / "fonts.conf"))
    assert (report.red, report.status) == (["fonts"], 6)
    assert report.lines["fonts"].endswith("; install the package fonts-wqy-microhei")


def test_with_a_display_that_is_not_there(doctor):
    report = doctor(DISPLAY="no-such-host:77")
    assert (report.red, report.status) == (["display"], 6)
    assert report.lines["display"].startswith("cannot be opened; see to DISPLAY")


def in_a_root(*words):
    return ["bwrap", "--bind", "/", "/", "--dev-bind", "/dev", "/dev", "--proc", "/proc", *words,
            "--"]


def test_without_lock_folders(doctor):
    report = doctor(*in_a_root("--tmpfs", "/run", "--tmpfs", "/var"))
    assert report.status == 6
    assert "lock folders" in report.red
    assert report.lines["lock folders"].endswith("; make /run/lock, readable for all")


def test_with_an_adapter_of_somebody_elses(doctor, tmp_path):
    adapter = tmp_path / "adapter"
    adapter.touch()
    report = doctor(*in_a_root("--dev", "/dev", "--ro-bind", str(adapter), "/dev/ttyUSB0"))
    assert report.status == 6
    assert report.lines["serial"] == (
        "/dev/ttyUSB0 may not be read and written; join its group (often dialout)")


def test_with_an_old_bubblewrap(doctor, tmp_path):
    real = shutil.which("bwrap")
    fake = tmp_path / "bwrap"
    fake.write_text("#!/bin/sh\n[ $1 != --version ] || { echo bubblewrap 0.4.1; exit; }\n"
                    f'exec {real} "$@"\n')
    fake.chmod(0o755)
    report = doctor(PATH=f"{tmp_path}:{os.environ['PATH']}")
    assert (report.red, report.status) == (["versions"], 6)
    assert "bubblewrap 0.4.1; wanted are Qt 5.15 and" in report.lines["versions"]

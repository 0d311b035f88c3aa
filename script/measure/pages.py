"""What the pages cost the GUI thread, beside bare forms of the same shape."""
import json
import re
import shutil
import subprocess

from .rows import Row, against, typical_time

PAGES = {"key_ncm_test": "Apple device", "key_usb_tid": "USB PHY", "key_gps_test": "GNSS status",
         "key_gps_update": "GNSS update", "key_tools": "tools", "key_mic_test": "microphone"}


def started(build, tool, what, module, times):
    """benchmark_pages in a private root, under a tool."""
    words = [f"{build}/bin/benchmark_root", *tool, f"{build}/bin/benchmark_pages", "--what", what,
             "--times", str(times)]
    if module:
        words += ["--module", f"{build}/lib/{module}"]
    return subprocess.run(words, capture_output=True, check=True, timeout=1800)


def measure(build, what, module=None, times=1):
    return json.loads(started(build, (), what, module, times).stdout)


def instructions(build, module):
    """Of one more status record, as valgrind's model of a processor counts them."""
    if shutil.which("valgrind") is None:
        raise RuntimeError("valgrind is not installed; install the package valgrind")
    times = 50
    tool = ("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null")
    counts = []
    for number in (times, 2 * times):
        said = started(build, tool, "status", module, number).stderr.decode(errors="replace")
        counts.append(int(re.search(r"^==\d+== Collected : (\d+)", said, re.MULTILINE)[1]))
    return (counts[1] - counts[0]) / times


def menu_row(build, quick):
    ours, floor = [], []
    for _ in range(3 if quick else 15):
        floor.append(measure(build, "menu", "libbenchmark_empty.so")["menu"] / 1000)
        ours.append(measure(build, "menu", "libtestmode.so")["menu"] / 1000)
    return against("plug-in loaded to menu painted, against an empty plug-in", ours, floor, quick,
                   most=1.3, quick_most=4)


def page_rows(build, quick):
    runs, again = (3, 5) if quick else (9, 20)
    ours, floor = [], []
    for _ in range(runs):
        floor.append(measure(build, "pages", times=again)["pages"])
        ours.append(measure(build, "pages", "libtestmode.so", again)["pages"])

    rows = []
    for key, name in PAGES.items():
        first = [[run[key][0] / 1000 for run in taken] for taken in (ours, floor)]
        later = [time / 1000 for run in ours for time in run[key][1:]]
        rows.append(against(f"{name} page opened first, against its bare form", *first, quick,
                            most=1.5, quick_most=10))
        rows.append(Row(f"{name} page opened again", typical_time(later, quick), "ms", most=5,
                        absolute=True))
    return rows


def status_rows(build, quick):
    runs, times = (1, 20) if quick else (7, 100)
    ours, floor = [], []
    for _ in range(runs):
        for taken, module in ((floor, None), (ours, "libtestmode.so")):
            records = measure(build, "status", module, times)["status"]
            taken += [record / 1000 for record in records[1:]]
    rows = [against("status record of 30 satellites, against bare labels and list", ours, floor,
                    quick, most=2, quick_most=6)]
    if not quick:
        mine, least = (instructions(build, module) for module in ("libtestmode.so", None))
        rows.append(Row("the same in instructions", mine / least, "", most=2,
                        remark=f"{mine / 1e6:.2f} and {least / 1e6:.2f} million"))
    return rows


def memory_row(build, quick):
    times = 60 if quick else 1000
    resident = measure(build, "memory", "libtestmode.so", times)["memory"]
    return Row(f"memory over {times} openings of every page", (resident[-1] - resident[49]) / 1024,
               "MiB", most=2, remark="since the 50th")


def rows(build, quick):
    return [menu_row(build, quick), *page_rows(build, quick), *status_rows(build, quick),
            memory_row(build, quick)]

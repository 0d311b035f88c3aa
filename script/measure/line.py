"""What the line is used for: updates by the plug-in's worker and transport beside a bare host."""
import json
import os
import subprocess

from .rows import Row, median, typical_rate, typical_time

BAUD = 921600
PACKET = 4096
AT_ONCE = 20

ATTEMPTS = 5  # a machine that stands still for 5 ms in the sync fails an update


def run(build, *words):
    """Runs updates; the rounds as benchmark_updates reports them."""
    done = subprocess.run([os.path.join(build, "bin/benchmark_updates"), *map(str, words)],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True,
                          timeout=900)
    return [json.loads(line) for line in done.stdout.splitlines()]


def updates(build, host="plugin", receivers=1, app=PACKET, rounds=1):
    """Runs whole updates."""
    for _ in range(ATTEMPTS):
        measured = run(build, "--host", host, "--receivers", receivers, "--app-bytes", app,
                       "--rounds", rounds)
        if all(one["whole"] for one in measured):
            return measured
    raise RuntimeError(f"{ATTEMPTS} times an update of {receivers} with {app} bytes by "
                       f"'{host}' was not whole")


def rate(station):
    """Bytes a second while images were written."""
    return station["image_bytes"] * 1e6 / station["image_microseconds"]


def cores(station):
    """Share of a core that the threads of one update took."""
    used = station["worker_nanoseconds"] + station["transport_nanoseconds"]
    return used / 1e6 / station["milliseconds"]


def without_images(station):
    return station["milliseconds"] - station["image_microseconds"] / 1000


def alternately(build, app, times):
    """Updates of plug-in and bare host, turn by turn, so that both meet the same machine."""
    ours, floor = [], []
    for _ in range(times):
        floor += updates(build, "raw", app=app)
        ours += updates(build, "plugin", app=app)
    return ours, floor


def single_rows(build, quick):
    app = (32 if quick else 5 * 64) * PACKET
    ours, floor = alternately(build, app, 2 if quick else 3)
    our_stations = [one["stations"][0] for one in ours]
    floor_stations = [one["stations"][0] for one in floor]
    our_rate = typical_rate([rate(station) for station in our_stations], quick)
    floor_rate = typical_rate([rate(station) for station in floor_stations], quick)
    pauses = [pause / 1000 for one in ours for pause in one["pauses_microseconds"]]
    turns = [turn / 1000 for one in ours for turn in one["turnarounds_microseconds"]]
    fixed = median([station["fixed_milliseconds"] for station in floor_stations])
    rest = typical_time([without_images(station) for station in our_stations], quick)
    floor_rest = typical_time([without_images(station) for station in floor_stations], quick)
    share = 100 * typical_time([cores(station) for station in our_stations], quick)
    floor_share = 100 * typical_time([cores(station) for station in floor_stations], quick)
    return [
        Row("images: rate against a bare host's", our_rate / floor_rate, "", least=0.99,
            quick_least=0.5, remark=f"{our_rate / 1000:.2f} and {floor_rate / 1000:.2f} kB/s"),
        Row("images: share of the line", 100 * our_rate * 10 / BAUD, "%", least=89.5,
            absolute=True, remark=f"bare host {100 * floor_rate * 10 / BAUD:.2f} %"),
        Row("pause between packets, median", median(pauses), "ms", 3.0, 3.2, absolute=True,
            remark=f"{len(pauses)} pauses; with the polls of the reply {median(turns):.2f} ms"),
        Row("pause between packets, shortest", min(pauses), "ms", least=2.0, absolute=True),
        Row("processor of the update's threads", share, "%", most=2, absolute=True,
            remark=f"bare host {floor_share:.2f} %"),
        Row("update without its images, against its fixed waits", rest / fixed, "", most=1.10,
            quick_most=4, remark=f"{rest:.0f} and {fixed:.0f} ms; bare host {floor_rest:.0f} ms"),
    ]


def twenty_rows(build, quick):
    app = (16 if quick else 64) * PACKET
    alone = rate(updates(build, app=app)[0]["stations"][0])
    stations = updates(build, receivers=AT_ONCE, app=app)[0]["stations"]
    slowest = min(rate(station) for station in stations) / alone
    together = sum(cores(station) for station in stations)
    return [
        Row("twenty receivers at once: slowest against one alone", slowest, "", least=0.95,
            quick_least=0.1),
        Row("twenty receivers at once: cores in all", together, "", most=0.5, absolute=True),
    ]


def scale_row(build, quick):
    small = 16 * PACKET if quick else 0xFB000
    # The application's own time: the other images do not grow.
    rounds = 2 if quick else 1
    times = [typical_time([one["stations"][0]["each_image_microseconds"][2]
                           for one in updates(build, app=size, rounds=rounds)], quick)
             for size in (small, 4 * small)]
    return Row("four times the image: time against four times", times[1] / times[0] / 4, "",
               0.99, 1.01, 0.4, 2.5, remark=f"up to {4 * small / 1024:.0f} KiB")


def memory_row(build, quick):
    rounds, settled = (6, 1) if quick else (50, 3)
    measured = run(build, "--receivers", AT_ONCE, "--rounds", rounds, "--app-bytes", PACKET,
                   "--full-speed")
    resident = [one["resident_kibibytes"] for one in measured]
    good = sum(station["succeeded"] for one in measured for station in one["stations"])
    return Row(f"memory over {rounds * AT_ONCE} updates", (resident[-1] - resident[settled - 1]) / 1024,
               "MiB", most=2, quick_most=8,
               remark=f"since update {settled * AT_ONCE}; {good} succeeded")


def rows(build, quick):
    return [*single_rows(build, quick), *twenty_rows(build, quick), scale_row(build, quick),
            memory_row(build, quick)]

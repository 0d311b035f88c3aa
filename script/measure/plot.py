"""The table as a picture: how far each row is from its limit."""
import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # noqa: E402

matplotlib.rcParams["svg.hashsalt"] = "benchmark"  # the same numbers make the same file
matplotlib.rcParams["svg.fonttype"] = "none"  # texts stay texts


def share_of_limit(row, quick):
    """1 is the limit itself, less is better."""
    least, most = row.limits(quick)
    if (least, most) == (None, None):
        return 0.0  # not judged
    if most is not None:
        return row.value / most if most else float(row.value > 0)
    return least / row.value if row.value else 2.0


def draw(rows, quick, path):
    names = [row.name for row in rows][::-1]
    shares = [min(share_of_limit(row, quick), 2.0) for row in rows][::-1]
    colours = ["#2a7f62" if row.reached(quick) else "#b3312c" for row in rows][::-1]
    figure, axes = pyplot.subplots(figsize=(10, 0.38 * len(rows) + 1.2))
    axes.barh(names, shares, color=colours)
    axes.axvline(1, color="#222222", linewidth=1.2)
    for place, (share, row) in enumerate(zip(shares, rows[::-1])):
        axes.text(share + 0.01, place, f"{row.value:.3g} {row.unit}", va="center", fontsize=9)
    axes.set_xlim(0, max(1.25, max(shares) + 0.2))
    axes.set_xlabel("share of the limit (the line); less is better")
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})

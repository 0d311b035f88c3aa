"""One row of the table: what was measured, what it is held against, and whether it was reached."""
import dataclasses
import statistics


@dataclasses.dataclass
class Row:
    """`value` must lie within `least` and `most`; the quick form asks for less, or for nothing."""

    name: str
    value: float
    unit: str
    least: float | None = None
    most: float | None = None
    quick_least: float | None = None
    quick_most: float | None = None
    remark: str = ""
    absolute: bool = False  # a figure of the machine: says nothing on one that others use

    def limits(self, quick):
        if not quick:
            return self.least, self.most
        if self.absolute:
            return None, None
        return (self.least if self.quick_least is None else self.quick_least,
                self.most if self.quick_most is None else self.quick_most)

    def reached(self, quick):
        least, most = self.limits(quick)
        return (least is None or self.value >= least) and (most is None or self.value <= most)

    def verdict(self, quick):
        if self.limits(quick) == (None, None):
            return "told"
        return "reached" if self.reached(quick) else "MISSED"

    def wanted(self, quick):
        least, most = self.limits(quick)
        if least is None:
            return "-" if most is None else f"at most {most:g}"
        return f"at least {least:g}" if most is None else f"{least:g} to {most:g}"


def median(values):
    return statistics.median(values)


def typical_time(times, quick):
    """The median; where few are taken, on a machine that others use, the shortest."""
    return min(times) if quick else median(times)


def typical_rate(rates, quick):
    return max(rates) if quick else median(rates)


def against(name, ours, floor, quick, **limits):
    """Our milliseconds against the floor's."""
    mine, least = typical_time(ours, quick), typical_time(floor, quick)
    return Row(name, mine / least, "", remark=f"{mine:.2f} and {least:.2f} ms", **limits)


def table(rows, quick):
    """The rows as text, one a line."""
    lines = [("measure", "value", "wanted", "", "remark")]
    for row in rows:
        lines.append((row.name, f"{row.value:.3f} {row.unit}".strip(), row.wanted(quick),
                      row.verdict(quick), row.remark))
    widths = [max(len(line[i]) for line in lines) for i in range(4)]
    return "\n".join("  ".join(map(str.ljust, line, widths + [0])).rstrip() for line in lines)

"""What the kernel knows of the lines that a receiver's reset hangs on; guest/reset-lines tells it."""

BITS = {"dtr": 1, "rts": 2}

# An update holds its reset for 100 ms; the machine may stand still meanwhile.
SHORTEST, LONGEST = 95, 3000


def held(told, bus, reset):
    """Milliseconds of the last time that `reset` was held as an update does; 0: never."""
    since, found, before = None, 0, True  # what stands at the start is nobody's reset
    for time, asserted in states(told, bus, reset):
        if asserted and not before:
            since = time
        elif before and not asserted and since is not None:
            milliseconds = (time - since) / 1000
            if SHORTEST <= milliseconds <= LONGEST:
                found = milliseconds
        before = asserted
    return found


def states(told, bus, reset):
    """Times in microseconds, and whether the line holds the receiver in reset from then on."""
    name = reset.lstrip("!")
    for row in told.splitlines():
        kind, time, *rest = row.split()
        if kind == "usb" and name in BITS and int(rest[0]) == bus:
            level = bool(int(rest[1]) & BITS[name])
        elif kind == "gpio" and name not in BITS:
            level = rest == ["1"]
        else:
            continue
        yield int(time), level != reset.startswith("!")

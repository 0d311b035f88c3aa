"""The matrix as a drawing."""
from xml.sax.saxutils import escape

FONT = "DejaVu Sans, Verdana, sans-serif"
CELL_WIDTH, CELL_HEIGHT, GAP = 28, 22, 2
LEFT, TOP, BOTTOM, RIGHT = 175, 150, 70, 60
INK, PAPER, NOTHING = "#24292f", "#ffffff", "#f3f4f6"
# In the order in which a cell is filled from the left.
COLOURS = {
    "recovered": ("#5aa469", "recovered"),
    "failed": ("#e9c46a", "failed cleanly"),
    "endless": ("#7b5ea7", "endless as it is defined"),
    "wrong-flash": ("#d1495b", "success and another flash"),
    "WRONG": ("#000000", "wrong"),
    "untouched": ("#c9ced6", "the fault found no occasion"),
}


def rectangle(x, y, width, height, colour):
    return f'<rect x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height:.1f}" fill="{colour}"/>'


def text(x, y, words, more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" {more}>{escape(words)}</text>'


def cell(x, y, counts):
    """Filled from the left by the shares of the outcomes; what there is is at least two wide."""
    total = sum(counts.values())
    if total == 0:
        return [rectangle(x, y, CELL_WIDTH - GAP, CELL_HEIGHT - GAP, NOTHING)]
    shares = {outcome: max(2.0, (CELL_WIDTH - GAP) * counts[outcome] / total)
              for outcome in COLOURS if counts.get(outcome)}
    scale = (CELL_WIDTH - GAP) / sum(shares.values())
    parts = []
    for outcome, width in shares.items():
        parts.append(rectangle(x, y, width * scale, CELL_HEIGHT - GAP, COLOURS[outcome][0]))
        x += width * scale
    return parts


def legend(y, outcomes):
    parts, x = [], 24
    for outcome, (colour, words) in COLOURS.items():
        if outcome in outcomes:
            parts += [rectangle(x, y, 14, 14, colour), text(x + 20, y + 12, words)]
            x += 36 + 6.2 * len(words)
    parts += [rectangle(x, y, 14, 14, NOTHING), text(x + 20, y + 12, "not possible")]
    return parts


def drawing_of(matrix, title):
    width = LEFT + len(matrix.phases) * CELL_WIDTH + RIGHT
    height = TOP + len(matrix.kinds) * CELL_HEIGHT + BOTTOM
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}"'
             f' font-family="{FONT}" font-size="12" fill="{INK}">',
             f'<rect width="{width}" height="{height}" fill="{PAPER}"/>',
             text(12, 24, title, 'font-size="14" font-weight="bold"')]
    for column, phase in enumerate(matrix.phases):
        x, y = LEFT + (column + 0.6) * CELL_WIDTH, TOP - 8
        parts.append(text(x, y, phase, f'transform="rotate(-55 {x:.1f} {y})"'))
    for row, kind in enumerate(matrix.kinds):
        y = TOP + row * CELL_HEIGHT
        parts.append(text(LEFT - 8, y + 14, kind, 'text-anchor="end"'))
        for column, phase in enumerate(matrix.phases):
            parts += cell(LEFT + column * CELL_WIDTH, y, matrix.counts(kind, phase))
    outcomes = {outcome for counts in matrix.cells.values() for outcome in counts}
    parts += legend(height - BOTTOM + 24, outcomes)
    return "\n".join(parts + ["</svg>"]) + "\n"

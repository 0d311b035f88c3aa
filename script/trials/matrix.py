"""What became of the trials, by kind of fault and exchange."""
import collections

# Of several in a cell all are shown, in this order.
SIGNS = {"WRONG": "!", "wrong-flash": "w", "endless": "e", "failed": "f", "recovered": "r",
         "untouched": "-"}

Trial = collections.namedtuple("Trial", "name kind phase outcome reason line milliseconds faults")


class Matrix:
    def __init__(self, trials):
        self.cells = collections.defaultdict(collections.Counter)
        for trial in trials:
            self.cells[trial.kind, trial.phase][trial.outcome] += 1
        self.kinds = in_order(trials, "kind")
        self.phases = in_order(trials, "phase")

    def counts(self, kind, phase):
        return self.cells.get((kind, phase), {})

    def sign(self, kind, phase):
        counts = self.counts(kind, phase)
        return "".join(sign for outcome, sign in SIGNS.items() if counts.get(outcome)) or "."

    def text(self):
        lines = ["Rows: kinds of faults. Columns: the exchange that they strike in. r recovered, f failed",
                 "cleanly, e endless as it is defined, w success and another flash, - found no occasion,",
                 "! wrong, . not possible there; several where the trials of a cell differ.", ""]
        lines += [f"  {number:2} {phase}" for number, phase in enumerate(self.phases, 1)]
        head = max(len(kind) for kind in self.kinds)
        cell = 2 + max(len(self.sign(kind, phase)) for kind in self.kinds for phase in self.phases)
        lines += ["", " " * head + "".join(f"{number:>{cell}}"
                                           for number in range(1, len(self.phases) + 1))]
        lines += [f"{kind:{head}}" + "".join(f"{self.sign(kind, phase):>{cell}}"
                                             for phase in self.phases) for kind in self.kinds]
        return "\n".join(lines)

    def commands(self, words):
        """Each cell with its counts and the command that repeats it."""
        lines = []
        for kind in self.kinds:
            for phase in self.phases:
                counts = self.counts(kind, phase)
                if counts:
                    lines.append(f"{kind} / {phase}: " + ", ".join(
                        f"{counts[outcome]} {outcome}" for outcome in SIGNS if counts[outcome]))
                    lines.append(f"    script/campaign {words} --kind '{kind}' --phase {phase}")
        return "\n".join(lines) + "\n"


def in_order(trials, attribute):
    """The values in the order of their first trial, the enumerated ones first."""
    first = {}
    for trial in trials:
        place = (trial.name[0] == "r", int(trial.name[1:]))
        value = getattr(trial, attribute)
        first[value] = min(first.get(value, place), place)
    return sorted(first, key=first.get)

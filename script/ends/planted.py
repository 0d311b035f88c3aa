"""Trials whose verdict is known, so that the judge can be judged."""
import concurrent.futures
import signal
import time

from . import lateness
from .trial import NOT_FINISHED, TORN, LongTrial, run

# Seconds until the host must have given up a packet that nobody answers.
UNTIL_GIVEN_UP = 20.0


class Healthy(LongTrial):
    """Told to end while it writes the first image, and finishes it."""

    def choose(self, dice):
        super().choose(dice)
        self.sizes["bootloader.bin"] = 30000

    def judge(self):
        return super(LongTrial, self).judge()


class ReceiverStandsStill(LongTrial):
    """As on a machine that gives it no processor, until the host has given up."""

    trace = ()

    def tell(self):
        super().tell()
        self.receiver.send_signal(signal.SIGSTOP)
        deadline = time.monotonic() + UNTIL_GIVEN_UP
        while not lateness.packet_failed(self.trace) and time.monotonic() < deadline:
            time.sleep(0.01)
            self.read_words()
        self.receiver.send_signal(signal.SIGCONT)


class AnswerIsLost(LongTrial):
    """Answered in time, and the host has nothing of it."""

    def choose(self, dice):
        super().choose(dice)
        self.faults = [{"kind": "drop", "direction": "to-host", "step": "packet", "image": 1,
                        "packet": 20, "index": 1}]


def verdicts(build, slack):
    """Prints each; returns whether all were as they must be. They mostly wait: side by side."""
    known = {Healthy: "good", ReceiverStandsStill: "late", AnswerIsLost: "wrong"}
    with concurrent.futures.ThreadPoolExecutor(len(known)) as pool:
        outcomes = list(pool.map(lambda trial: run(trial, build, 1, slack), known))
    good = True
    for (trial, expected), (story, wrong, excuse) in zip(known.items(), outcomes):
        verdict = "late" if excuse else "wrong" if wrong else "good"
        as_expected = verdict == expected and {TORN, NOT_FINISHED}.issuperset(wrong)
        good = good and as_expected
        print(f"{'ok   ' if as_expected else 'WRONG'} {trial.__name__}: judged {verdict}, "
              f"to be judged {expected}: {story}" + "".join(f"; {text}" for text in wrong), flush=True)
    return good

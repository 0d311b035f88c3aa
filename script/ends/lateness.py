"""Whether an update failed because the machine stood still under it.

The host waits 300 polls of a millisecond for each of the two bytes that answer a packet. A
receiver that gets no processor for so long answers too late, and the update fails as it has to.
Two witnesses tell that from a fault: the host's trace, each line with its time, says how long the
read waited that brought nothing, and the receiver's dialogue says that it took the packet whole
and answered it well, but only when that read was over.
"""
import re

# 300 polls, less what the first loses that begins late in its millisecond.
LONGEST_READ = 0.295
# The times of both witnesses are whole milliseconds, and threads are not woken at once.
GRAIN = 0.005

FAILED = "hdl_wirte_packet fail"
RESPONSE = re.compile(r"hdl_wirte_packet, response=|DA Download CMD, Check Range success")
ANSWER = re.compile(r"\d+ (\d+) ms receiver -> host \d+ baud "
                    r"(download: (command|range) good|packet: (packet (received|written)|refused .*)) \[")


class Read:
    def __init__(self, began, over):
        self.over = over
        self.waited = over - began


def reads_of(trace):
    """The host's reads of what answers a download and its packets, up to the packet that failed."""
    reads, before = [], 0.0
    for when, text in trace:
        if RESPONSE.match(text):
            reads.append(Read(before, when))
        if text == FAILED:
            break
        if "ReadData" not in text:  # what a read itself says when it is over
            before = when
    return reads


def answers_of(dialogue):
    """When the receiver sent each of those answers, in seconds of its own clock."""
    found = (ANSWER.match(line) for line in dialogue)
    return [int(answer[1]) / 1000 for answer in found if answer]


def packet_failed(trace):
    return any(text == FAILED for _, text in trace)


def of_answer(trace, dialogue):
    """What came too late, in words; None where the witnesses do not say so.

    `trace` holds pairs of seconds and text, `dialogue` the receiver's lines.
    """
    reads, answers = reads_of(trace), answers_of(dialogue)
    if not packet_failed(trace) or len(answers) != len(reads):
        return None
    # The host's clock less the receiver's: no read is over before its answer was sent.
    ahead = min(read.over - sent for read, sent in zip(reads[:-2], answers))
    for read, sent in list(zip(reads, answers))[-2:]:
        if read.waited >= LONGEST_READ and sent + ahead > read.over - GRAIN:
            began = read.over - read.waited
            return f"the receiver was late, its answer took {sent + ahead - began:.3f} s"
    return None

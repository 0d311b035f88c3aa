"""The calls of a bench, or of a receiver that stands alone."""
import json
import socket
import time


class Monitor:
    def __init__(self, path):
        deadline = time.monotonic() + 30
        while True:
            self.socket = socket.socket(socket.AF_UNIX)
            try:
                self.socket.connect(path)
                break
            except OSError:
                self.socket.close()
                if time.monotonic() > deadline:
                    raise
                time.sleep(0.02)
        self.lines = self.socket.makefile("rw", encoding="utf-8", newline="\n")
        self.lines.readline()  # the greeting
        self.number = 0

    def __call__(self, method, **parameters):
        self.number += 1
        call = {"jsonrpc": "2.0", "id": self.number, "method": method, "params": parameters}
        self.lines.write(json.dumps(call) + "\n")
        self.lines.flush()
        answer = json.loads(self.lines.readline())
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']['message']}")
        return answer["result"]

    def dialogue(self):
        """Every line that the receiver has kept."""
        lines, since, more = [], 0, True
        while more:
            answer = self("receiver.dialogue", since=since)
            lines += answer["lines"]
            since, more = answer["next"], answer["more"]
        return lines

    def close(self):
        self.lines.close()
        self.socket.close()

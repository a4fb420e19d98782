"""Programs under test, started and ended, with what they print."""

import os
import queue
import signal
import subprocess
import sys
import threading

DEADLINE_S = 60


def end_with_cleanup_when_terminated():
    """Without it a SIGTERM would end Python at once, and leave what it has started."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))


class Failure(Exception):
    """A test has failed; the text says how."""


class Program:
    """A started program whose lines are read as they come. It ends with the "with" that it is used in."""

    def __init__(self, path, *arguments, runner=None):
        self.name = os.path.basename(path)
        self.lines = []
        self.unread = queue.Queue()
        command = [path, *arguments] if runner is None else [runner, path, *arguments]
        # What Wine starts besides the program must not hold our own output.
        self.process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.unread.put(line.rstrip())
        self.unread.put(None)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()

    def _next(self):
        try:
            line = self.unread.get(timeout=DEADLINE_S)
        except queue.Empty:
            line = None
        if line is not None:
            self.lines.append(line)
        return line

    def await_line(self, text):
        """The first line from here on that holds text."""
        while (line := self._next()) is not None:
            if text in line:
                return line
        raise Failure(f'{self.name} has not printed "{text}", but:\n  ' + "\n  ".join(self.lines))

    def await_end(self):
        """The exit code, once everything has been read."""
        while self._next() is not None:
            pass
        return self.process.wait(DEADLINE_S)

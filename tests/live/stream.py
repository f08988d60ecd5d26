"""The monitor under test and the stream that it writes.

Every line is kept with the time it came at. A reader never asks for "the next line" but waits for a
record that means something, counted from a mark that it set before it acted.
"""

import contextlib
import json
import signal
import subprocess
import threading
import time

from built import built
from waiting import STEP_BOUND

PROGRAM = built("main", "call-monitor")


class Line:
    """One line of the stream: its bytes, the record in it and the monotonic time of its arrival."""

    def __init__(self, raw, arrived):
        self.raw = raw
        self.arrived = arrived
        self.record = json.loads(raw)


def isHealth(record):
    """Says whether a record is the one that ends every cycle."""
    return record.get("type") == "health"


def isObservation(record):
    """Says whether a record is about a call; only those carry a source."""
    return record.get("source") == "native"


def isClient(record):
    """Says whether a record tells of the meeting client in front."""
    return record.get("type") == "client"


def isClientScan(record):
    """Says whether a record tells how far the look at the application in front came."""
    return record.get("type") == "client-scan"


# The reading thread ends as soon as the monitor has.
_JOIN_BOUND = 5.0


class Stream:
    """A running monitor. `forward`, if given, takes each raw line as soon as it comes.

    An exception out of `forward`, or a line that is not JSON, comes out of the next wait.
    """

    def __init__(self, processes, environment, program=PROGRAM, name="call-monitor", forward=None):
        self._processes = processes
        self._name = name
        self._forward = forward
        self._changed = threading.Condition()
        self._lines = []
        self._failure = None
        self._ended = False
        self.process = processes.start(name, [program], environment, stdout=subprocess.PIPE)
        self._thread = threading.Thread(target=self._read, daemon=True)
        self._thread.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    @property
    def lines(self):
        """All lines so far."""
        with self._changed:
            return list(self._lines)

    def records(self, since=0):
        """The records of all lines from the mark on."""
        return [line.record for line in self.lines[since:]]

    def observations(self, since=0):
        """The records about calls from the mark on."""
        return [record for record in self.records(since) if isObservation(record)]

    def mark(self):
        """A mark: what comes from now on stands behind it."""
        return len(self.lines)

    def waitFor(self, description, predicate, since=0, bound=STEP_BOUND):
        """Gives the first record behind the mark that satisfies `predicate`.

        A record that does not come within `bound` seconds, or that cannot come any more because the
        stream has ended, is a TimeoutError that names `description` and shows what came instead.
        """
        deadline = time.monotonic() + bound
        position = since
        with self._changed:
            while True:
                for line in self._lines[position:]:
                    if predicate(line.record):
                        return line.record
                position = max(since, len(self._lines))
                if self._failure is not None:
                    raise self._failure
                left = deadline - time.monotonic()
                if self._ended or left <= 0:
                    tail = "\n".join(str(line.record) for line in self._lines[since:][-8:])
                    why = "the stream ended" if self._ended else f"not seen within {bound:.0f} s"
                    raise TimeoutError(f"{why}: {description}; the last records:\n{tail}\n"
                                       f"{self._processes.logOf(self._name)[-2000:]}")
                self._changed.wait(min(left, 1.0))

    def waitForCycles(self, count, since=None, bound=None):
        """Waits until `count` cycles have ended behind the mark (from now on without one).

        The first of them may have begun before the mark, so two are needed to have seen one whole.
        """
        since = self.mark() if since is None else since
        self.waitFor(f"{count} cycles end", lambda _: len(
            [line for line in self._lines[since:] if isHealth(line.record)]) >= count, since,
            # A cycle starts each second; the slowest takes no more than about two.
            STEP_BOUND + 2 * count if bound is None else bound)

    def stop(self, number=signal.SIGTERM):
        """Ends the monitor and gives its exit status, negative for the signal that ended it."""
        with contextlib.suppress(ProcessLookupError):
            self.process.send_signal(number)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self.process.wait(STEP_BOUND)
        self._processes.stop(self._name)
        # A signal that came between two steps of a wait can leave the lock of the lines taken; the
        # reading thread then never ends, and whoever was told to end must end all the same.
        self._thread.join(_JOIN_BOUND)
        if not self._thread.is_alive():
            self.process.stdout.close()
        return self.process.returncode

    def _read(self):
        failure = None
        try:
            for raw in self.process.stdout:
                line = Line(raw, time.monotonic())
                with self._changed:
                    self._lines.append(line)
                    self._changed.notify_all()
                if self._forward is not None:
                    self._forward(raw)
        except Exception as error:  # pylint: disable=broad-except
            failure = error
        with self._changed:
            self._failure = failure
            self._ended = True
            self._changed.notify_all()

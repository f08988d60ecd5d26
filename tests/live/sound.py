"""What is heard on a private desktop, and programs that capture and play there."""

import contextlib
import json
import subprocess
import threading

from built import built
from waiting import waitUntil

_READER_BOUND = 5.0


class Heard:
    """The desktop's answers to who captures and plays, some of them in every second.

    An answer is "absent" or the list of (bundle identifier, captures, plays) in alphabetical order.
    """

    def __init__(self, desktop, name="heard", environment=None):
        self._desktop = desktop
        self._name = name
        self.lines = []
        command = ["env", *(f"{key}={value}" for key, value in (environment or {}).items()),
                   built("tests", "heard")]
        process = desktop.start(name, command, stdout=subprocess.PIPE)
        self._output = process.stdout
        self.pid = process.pid
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._desktop.processes.stop(self._name)
        self._reader.join(_READER_BOUND)
        with contextlib.suppress(OSError):
            self._output.close()

    def answers(self, mark=0):
        """Gives the answers since a mark, which is a count of lines."""
        return [_answer(line) for line in self.lines[mark:]]

    def waitFor(self, description, expected):
        """Waits until the latest answer is the expected one."""
        try:
            waitUntil(description, lambda: self.answers()[-1:] == [expected])
        except TimeoutError as error:
            raise TimeoutError(f"{error}; the last answers were {self.answers()[-3:]}") from None

    def waitForAnswers(self, count):
        """Waits for so many answers from now on, and gives them."""
        mark = len(self.lines)
        waitUntil(f"{count} answers come", lambda: len(self.lines) >= mark + count)
        return self.answers(mark)

    def _read(self):
        with contextlib.suppress(ValueError, OSError):
            for line in self._output:
                self.lines.append(json.loads(line))


class SoundClient:
    """A program with one stream through PulseAudio's interface, which does as it is told."""

    def __init__(self, desktop, name, *arguments):
        self._desktop = desktop
        self._name = name
        self.process = desktop.start(name, [built("tests", "sound_client"), *arguments],
                                     stdin=subprocess.PIPE)
        self._words = 0
        self._waitForWord()

    def order(self, text):
        """Gives an order and waits until it is carried out."""
        self.process.stdin.write(f"{text}\n".encode())
        self.process.stdin.flush()
        self._waitForWord()

    def close(self):
        """Ends the program."""
        self._desktop.processes.stop(self._name)
        with contextlib.suppress(OSError):
            self.process.stdin.close()

    def _waitForWord(self):
        self._words += 1

        def said():
            self._desktop.processes.mustRun(self._name)
            return len(self._desktop.processes.logOf(self._name).splitlines()) >= self._words

        waitUntil(f"{self._name} has done as it was told", said)


def _answer(line):
    if line["heard"] == "absent":
        return "absent"
    return sorted((each["bundle"], each["input"], each["output"]) for each in line["heard"])

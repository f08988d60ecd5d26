"""Watches calls being joined and left for an hour, and what that leaves behind in the monitor.

On a private desktop with sound, one round after another joins a call, or two at once, and ends it
in another way. The stream must tell of each join and each end within a bound, of no end before we
made it and of no call that we did not join. Once a minute one line says how things stand; the last
line is the verdict, and the status is 0 exactly when it is good.

The monitor's memory, descriptors and connections must not grow: the median of the last quarter of
the minutes may exceed that of the second quarter by 5 % of memory, and by nothing else.
"""

import argparse
import os
import signal
import statistics
import string
import sys
import time

from browser import Browser
from connections import connectionsOf
from meeting_pages import MEET_HOST, OTHER_HOST, MeetingPages
from private_desktop import PrivateDesktop
from processes import runTidily
from stream import Stream, isHealth, isObservation

_PARTS = ("display", "session bus", "accessibility bus", "window manager", "sound")
_OTHER_ADDRESS = f"https://{OTHER_HOST}/"
# Seconds within which the stream tells of what we did. A join takes about two cycles; a browser may
# keep a closed page's sound running for ten seconds more, and only silence says that it is over.
_JOIN_BOUND = 15.0
_END_BOUND = 40.0
# How much more memory the last quarter may show than the second.
_MEMORY_GROWTH = 1.05
_FEWEST_SAMPLES = 4
_PAGE_KIB = os.sysconf("SC_PAGE_SIZE") // 1024


class Call:
    """A call of ours: its page, what the stream calls it, and when we joined and ended it."""

    def __init__(self, number):
        letters = string.ascii_lowercase
        middle = "".join(letters[number // 26 ** i % 26] for i in range(4))
        meeting = f"soa-{middle}-kin"
        self.address = f"https://{MEET_HOST}/{meeting}"
        self.key = f"meet:{meeting}"
        self.tab = None
        self.began = 0  # the mark in the stream
        self.ended = None  # the monotonic time


class Soak:
    """The desktop, what happens on it and what was found."""

    def __init__(self, desktop, pages, stream, say):
        self._desktop = desktop
        self._pages = pages
        self._stream = stream
        self._say = say
        self._calls = []
        self._samples = []
        self._failures = []
        self._began = time.monotonic()
        self._browser = Browser(desktop, pages, _OTHER_ADDRESS)
        self._rounds = (("notice", self._notice), ("tab closed", self._closeTab),
                        ("window closed", self._closeTab), ("other site", self._navigate),
                        ("browser killed", self._kill), ("microphone only", self._closeTab),
                        ("two calls", self._endTwo))

    def run(self, minutes, period):
        """Plays rounds of `period` seconds for that many minutes and gives the failures."""
        end = self._began + 60 * minutes
        number = 0
        while time.monotonic() < end:
            begun = time.monotonic()
            self._round(*self._rounds[number % len(self._rounds)], begun + period / 2)
            self._until(min(end, begun + period))
            number += 1
        self._until(end)
        self._judgeStory()
        self._judgeSamples()
        return self._failures

    def _round(self, name, finish, halfTime):
        self._say(f"  {name}")
        calls = [self._join(name == "window closed", name != "microphone only")]
        if name == "two calls":
            calls.append(self._join(True, True))
        self._until(halfTime)
        before = len(self._failures)
        finish(*calls)
        if len(self._failures) > before:
            self._restart()  # so that the next round does not inherit what went wrong in this one

    def _join(self, inWindow, plays):
        call = Call(len(self._calls))
        self._calls.append(call)
        call.began = self._stream.mark()
        call.tab = (self._browser.openWindow if inWindow else self._browser.openTab)(call.address)
        call.tab.waitUntilLoaded()
        call.tab.evaluate("show('call')")
        self._expect("join", call, "joined", call.began, _JOIN_BOUND)
        call.tab.evaluate("openMicrophone()" + (".then(play)" if plays else ""))
        return call

    def _notice(self, call):
        call.tab.evaluate("closeMicrophone(); pause()")
        self._end(call, lambda: call.tab.evaluate("show('left')"))
        self._browser.closeTab(call.tab)

    def _closeTab(self, call):
        self._end(call, lambda: self._browser.closeTab(call.tab))

    def _navigate(self, call):
        self._end(call, lambda: call.tab.navigate(_OTHER_ADDRESS))
        self._browser.closeTab(call.tab)

    def _kill(self, call):
        self._end(call, lambda: os.kill(self._browser.pid, signal.SIGKILL))
        self._restart()

    def _endTwo(self, first, second):
        self._notice(first)
        self._closeTab(second)

    def _end(self, call, action):
        mark = self._stream.mark()
        call.ended = time.monotonic()
        action()
        self._expect("end", call, "left", mark, _END_BOUND)

    def _expect(self, what, call, state, mark, bound):
        try:
            self._stream.waitFor(
                f"{what} of {call.key}", lambda record: isObservation(record) and
                record["callKey"] == call.key and record["state"] == state, mark, bound)
        except TimeoutError as error:
            self._failures.append(f"missed {what} of {call.key}: {error}")
            self._say(f"  {self._failures[-1].splitlines()[0]}")

    def _restart(self):
        for call in self._calls:
            # Whatever still goes on in the browser ends with it.
            call.ended = call.ended or time.monotonic()
        self._browser.close()
        self._browser = Browser(self._desktop, self._pages, _OTHER_ADDRESS)

    def _until(self, moment):
        """Lets time pass, with one line for each minute of it."""
        while True:
            minute = len(self._samples) + 1
            due = self._began + 60 * minute
            if moment < due:
                time.sleep(max(0.0, moment - time.monotonic()))
                return
            time.sleep(max(0.0, due - time.monotonic()))
            self._sample(minute)

    def _sample(self, minute):
        pid = self._stream.process.pid
        with open(f"/proc/{pid}/statm", encoding="ascii") as file:
            memory = int(file.read().split()[1]) * _PAGE_KIB
        sample = {"memory": memory, "descriptors": len(os.listdir(f"/proc/{pid}/fd")),
                  **connectionsOf(self._desktop, pid)}
        self._samples.append(sample)
        figures = ", ".join(f"{name} {value}" for name, value in sample.items())
        ended = sum(call.ended is not None for call in self._calls)
        self._say(f"minute {minute}: {len(self._calls)} calls joined, {ended} ended, "
                  f"{len(self._failures)} failures; KiB of {figures}")

    def _judgeStory(self):
        """Holds the whole stream against all that we did."""
        told = {}
        for line in self._stream.lines:
            if isObservation(line.record):
                told.setdefault(line.record["callKey"], []).append(line)
            elif isHealth(line.record) and not line.record["trusted"]:
                self._failures.append("a cycle was not trusted")
        ours = {call.key: call for call in self._calls}
        for key in told.keys() - ours.keys():
            self._failures.append(f"{key} is no call of ours")
        for key, call in ours.items():
            self._judgeCall(call, told.get(key, []))

    def _judgeCall(self, call, lines):
        records = [line.record for line in lines]
        states = [record["state"] for record in records]
        if len({record["sessionId"] for record in records}) > 1:
            self._failures.append(f"{call.key} has more than one session")
        if [record["sequence"] for record in records] != list(range(1, len(records) + 1)):
            self._failures.append(f"{call.key} is told with gaps")
        if states[:1] != ["joined"]:
            self._failures.append(f"{call.key} does not begin joined")
        if "left" in states[:-1] or (call.ended is not None and states[-1:] != ["left"]):
            self._failures.append(f"{call.key} does not end left, once")
        if any(line.record["state"] == "left" and
               (call.ended is None or line.arrived < call.ended) for line in lines):
            self._failures.append(f"{call.key} ends before we ended it")

    def _judgeSamples(self):
        quarter = len(self._samples) // 4
        if len(self._samples) < _FEWEST_SAMPLES:
            self._say("too short a time to see growth")
            return
        for name in self._samples[0]:
            values = [sample[name] for sample in self._samples]
            earlier = statistics.median(values[quarter:2 * quarter])
            later = statistics.median(values[-quarter:])
            self._say(f"{name}: {earlier:g} in the second quarter, {later:g} in the last")
            if later > earlier * (_MEMORY_GROWTH if name == "memory" else 1):
                self._failures.append(f"{name} grew from {earlier:g} to {later:g}")


def _say(line):
    print(line, flush=True)


def main(arguments):
    """Soaks as the arguments say and gives the exit status."""
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--minutes", type=float, default=60)
    parser.add_argument("--period", type=float, default=120, help="seconds of a round")
    parser.add_argument("--busy", type=int, default=0, metavar="N",
                        help="so many processes that take all the processor time they get")
    options = parser.parse_args(arguments)
    with PrivateDesktop(parts=_PARTS) as desktop, MeetingPages(desktop.directory) as pages, \
            Stream(desktop.processes, desktop.environment) as stream:
        for number in range(options.busy):
            desktop.start(f"busy-{number}", ["sh", "-c", "while :; do :; done"])
        failures = Soak(desktop, pages, stream, _say).run(options.minutes, options.period)
    for failure in failures:
        _say(f"failure: {failure}")
    _say(f"verdict: {len(failures)} failures" if failures else "verdict: good")
    return 1 if failures else 0


if __name__ == "__main__":
    runTidily("soak-", lambda _: main(sys.argv[1:]))

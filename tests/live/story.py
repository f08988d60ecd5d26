"""The story of one call, played on a private desktop and told by the monitor.

`./run` plays it where there is no desktop to watch. Standard output carries the monitor's stream
and nothing else; standard error says, one line a step, what was done and what the stream showed.
The status is 0 when the stream showed the whole story, 1 when a step was not seen (standard error
names it), and that of the signal when a signal or a vanished reader ended it early.
"""

import os
import signal
import sys
import time

from browser import Browser
from meeting_pages import MEET_HOST, MeetingPages
from private_desktop import PrivateDesktop
from processes import adoptOrphans
from stream import PROGRAM, Stream, isHealth, isObservation

MEETING = "abc-defg-hij"
CALL_KEY = f"meet:{MEETING}"
CALL_ADDRESS = f"https://{MEET_HOST}/{MEETING}"
LANDING_ADDRESS = f"https://{MEET_HOST}/landing"

# The whole story ends within this many seconds, seen or not.
_WHOLE_BOUND = 80
# One step is usually seen within two cycles, which is two seconds.
_STEP_BOUND = 20.0
_ENDING_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class Ended(Exception):
    """The story must end early, as if by the signal `number`."""

    def __init__(self, number):
        super().__init__(f"ended by {signal.Signals(number).name}")
        self.number = number


class ReaderGone(Exception):
    """Nobody takes the stream any more."""


class Story:
    """What one telling of the story needs: the tab it happens in and the stream that tells it."""

    def __init__(self, tab, stream, deadline):
        self._tab = tab
        self._stream = stream
        self._deadline = deadline

    def play(self):
        """Plays the whole call; a TimeoutError names the first step that was not seen."""
        self._quiet("the landing page is open")
        self._tab.navigate(CALL_ADDRESS)
        self._quiet("the lobby is open")
        self._seen("joined the call", "show('call')", "joined", mediaActive=True)
        self._seen("turned the camera off", "turn('camera', false)", "joined", mediaActive=False)
        self._seen("turned the camera on", "turn('camera', true)", "joined", mediaActive=True)
        self._seen("turned the microphone off", "turn('microphone', false)", "joined",
                   mediaActive=False)
        self._seen("turned the microphone on", "turn('microphone', true)", "joined",
                   mediaActive=True)
        self._seen("left the call", "show('left')", "left", mediaActive=False)
        self._quiet("the notice stays open")

    def _seen(self, step, action, state, mediaActive):
        mark = self._stream.mark()
        self._tab.evaluate(action)
        self._stream.waitFor(
            f"{step}: {state}, media {'active' if mediaActive else 'not active'}",
            lambda record: isObservation(record) and record["callKey"] == CALL_KEY and
            record["state"] == state and record["mediaActive"] == mediaActive,
            mark, self._bound())
        say(f"{step}; the stream says {state}, media {'active' if mediaActive else 'not active'}")

    def _quiet(self, step):
        mark = self._stream.mark()
        self._stream.waitForCycles(2, mark, self._bound())
        told = self._stream.observations(mark)
        if told:
            raise AssertionError(f"{step}: expected no call in the stream, saw {told[0]}")
        say(f"{step}; the stream tells of no call")

    def _bound(self):
        return max(0.0, min(_STEP_BOUND, self._deadline - time.monotonic()))


def say(line):
    """Tells the person at the terminal one step; nobody there is no reason to stop."""
    try:
        os.write(2, f"run: {line}\n".encode())
    except OSError:
        pass


def forward(raw):
    """Hands one line of the stream on at once."""
    try:
        while raw:
            raw = raw[os.write(1, raw):]
    except BrokenPipeError as error:
        raise ReaderGone from error


def tell(program):
    """Brings the desktop up, plays the story and takes everything down again."""
    deadline = time.monotonic() + _WHOLE_BOUND
    desktop = PrivateDesktop()
    try:
        with desktop, MeetingPages(desktop.directory) as pages:
            say("a private desktop is up")
            with Stream(desktop.processes, desktop.environment, program, forward=forward) as stream:
                stream.waitFor("the monitor may read the desktop",
                               lambda record: isHealth(record) and record["trusted"],
                               bound=_STEP_BOUND)
                say("call-monitor is running and may read the desktop")
                browser = Browser(desktop, pages, LANDING_ADDRESS)
                say("a browser is open")
                Story(browser.tab, stream, deadline).play()
    finally:
        # A signal may have come while the desktop was being taken down: none can any more.
        _ignoreSignals()
        desktop.close()


def _ignoreSignals():
    for number in (*_ENDING_SIGNALS, signal.SIGALRM):
        signal.signal(number, signal.SIG_IGN)


def _endEarly(number, _):
    _ignoreSignals()
    if number == signal.SIGALRM:
        raise TimeoutError("the whole story took too long")
    raise Ended(number)


def main(arguments):
    """Plays the story with the program in `arguments`, or with the one this repository builds."""
    program = arguments[0] if arguments else PROGRAM
    for number in (*_ENDING_SIGNALS, signal.SIGALRM):
        signal.signal(number, _endEarly)
    signal.alarm(_WHOLE_BOUND)
    adoptOrphans()
    try:
        tell(program)
    except Ended as ended:
        say(str(ended))
        _endBySignal(ended.number)
    except ReaderGone:
        say("the reader of the stream went away")
        _endBySignal(signal.SIGPIPE)
    except Exception as error:  # pylint: disable=broad-except
        say(f"failed: {error}")
        return 1
    say("the stream showed the whole call")
    return 0


def _endBySignal(number):
    signal.signal(number, signal.SIG_DFL)
    os.kill(os.getpid(), number)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

"""A sound server that dies, hangs or comes again during a call."""

import signal

from heard_case import OTHER_ADDRESS, SoundCase
from stream import isHealth

# Seconds from one cycle's end to the next that a loaded machine may take for cycles that are not
# held up: 1 s is the period, 1.2 s the time in which a cycle looks at programs.
_LONGEST_PERIOD = 3.0


class LostSound:
    """What holds for whichever server: to lose it says nothing of a call.

    Each test has a browser of its own: one whose sound server died may never record again.
    """

    def setUp(self):
        self.browser = self.startBrowser(OTHER_ADDRESS)
        self.stream = self.startMonitor()
        self.waitUntilTrusted(self.stream)

    def test_a_call_goes_on_while_the_sound_server_is_killed_and_started_again(self):
        tab, session = self.openCall()
        mark = self.stream.mark()
        self.killSound()
        try:
            self.assertSessionGoesOn(self.stream, session, mark)
        finally:
            mark = self.stream.mark()
            self.desktop.startSound(self.server)
        self.assertSessionGoesOn(self.stream, session, mark)
        self.waitForState(self.stream, "joined", mark, sessionId=session)
        # It was heard before the loss, which is enough for its end to be told afterwards.
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.assertEndsOnceGone(session, mark)
        self.assertOneSession(self.stream.observations())

    def test_a_closed_call_stays_unknown_while_no_sound_server_says_that_it_is_silent(self):
        tab, session = self.openCall()
        self.killSound()
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        try:
            self.assertStaysUnknown(session, mark)
        finally:
            mark = self.stream.mark()
            self.desktop.startSound(self.server)
        # The browser was heard in this call and lives: the new server's silence is its own.
        self.assertEndsOnceGone(session, mark)

    def test_a_hung_sound_server_neither_delays_a_cycle_nor_ends_a_call(self):
        tab, session = self.openCall()
        self.desktop.signalSound(signal.SIGSTOP, self.server)
        try:
            mark = self.stream.mark()
            self.assertSessionGoesOn(self.stream, session, mark)
            self.waitForState(self.stream, "joined", mark, sessionId=session)
            mark = self.stream.mark()
            self.browser.closeTab(tab)
            self.assertStaysUnknown(session, mark)
            ends = [line.arrived for line in self.stream.lines if isHealth(line.record)]
        finally:
            mark = self.stream.mark()
            self.desktop.signalSound(signal.SIGCONT, self.server)
        self.assertLess(max(later - earlier for earlier, later in zip(ends, ends[1:])),
                        _LONGEST_PERIOD)
        self.assertEndsOnceGone(session, mark)

    def killSound(self):
        """Ends the sound server without a word of farewell."""
        self.desktop.signalSound(signal.SIGKILL, self.server)
        self.desktop.stopSound(self.server)


class PipeWireLost(LostSound, SoundCase):
    """PipeWire dies, hangs and comes again."""

    server = "pipewire"


class PulseAudioLost(LostSound, SoundCase):
    """PulseAudio dies, hangs and comes again."""

    server = "pulseaudio"

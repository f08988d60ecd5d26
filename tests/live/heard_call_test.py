"""Calls in a browser that the monitor hears: silence tells a closed page from one out of sight."""

from accessibility_tree import windowsOf
from heard_case import OTHER_ADDRESS, HeardCase
from waiting import waitUntil

# What a call's page does while nothing of it ends, each in a call that was heard before.
_QUIET = ("muteMicrophone(true)", "pause()", "closeMicrophone()")
# Cycles, of a second each, that a call may be silent without an end.
_SILENT_CYCLES = 30


class HeardCalls:
    """What holds whichever sound server is heard."""

    def test_a_heard_call_whose_tab_is_closed_is_unknown_and_then_left(self):
        tab, session = self.openCall()
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.assertEndsOnceGone(session, mark)
        self.assertOneSession(self.stream.observations())

    def test_a_heard_call_whose_window_is_closed_is_unknown_and_then_left(self):
        before = set(windowsOf(self.desktop, self.browser.pid))
        _, session = self.openCall(window=True)
        window, = set(windowsOf(self.desktop, self.browser.pid)) - before
        self.desktop.bringToFront(window)
        mark = self.stream.mark()
        self.desktop.query("xdotool", "key", "alt+F4")
        waitUntil("the window has gone",
                  lambda: set(windowsOf(self.desktop, self.browser.pid)) == before)
        self.assertEndsOnceGone(session, mark)

    def test_a_heard_call_whose_page_goes_to_another_site_is_unknown_and_then_left(self):
        tab, session = self.openCall()
        mark = self.stream.mark()
        tab.navigate(OTHER_ADDRESS)
        self.assertEndsOnceGone(session, mark)

    def test_a_heard_call_goes_on_in_its_session_after_its_page_was_loaded_again(self):
        tab, session = self.openCall()
        mark = self.stream.mark()
        tab.reload()
        # The lobby of the same meeting stands in its place, so that nothing says it is over.
        self.assertStaysUnknown(session, mark)
        mark = self.stream.mark()
        self.assertEqual(self.join(self.stream, tab)["sessionId"], session)
        self.assertOneSession(self.stream.observations())

    def test_a_closed_call_that_was_never_heard_stays_unknown(self):
        # The browser itself was heard, and is known to be silent before the call begins.
        self.home.evaluate("play()")
        self.waitForStreams("speaker")
        self.stream.waitForCycles(2)
        self.home.reload()
        self.waitForStreams()
        self.stream.waitForCycles(2)
        tab, session = self.openCall(heard=False)
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.assertStaysUnknown(session, mark)

    def test_a_closed_call_is_not_left_before_another_tab_of_the_browser_falls_silent(self):
        self.home.evaluate("play()")
        self.addCleanup(self.home.reload)
        tab, session = self.openCall()
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.waitForStreams("speaker")
        self.assertStaysUnknown(session, mark)
        mark = self.stream.mark()
        self.home.reload()
        self.assertEndsOnceGone(session, mark)


    def test_a_quiet_call_in_the_background_is_unknown_until_it_is_shown_again(self):
        tab, session = self.openCall()
        tab.evaluate("muteMicrophone(true)")
        mark = self.stream.mark()
        other = self.openTab(OTHER_ADDRESS)
        self.assertStaysUnknown(session, mark, cycles=8)
        mark = self.stream.mark()
        self.browser.closeTab(other)
        self.waitForState(self.stream, "joined", mark, sessionId=session)
        self.assertOneSession(self.stream.observations())


class CallsHeardThroughPipeWire(HeardCalls, HeardCase):
    """On a desktop whose sound goes through PipeWire."""

    server = "pipewire"

    def test_a_closed_call_is_not_left_before_another_tab_of_the_browser_stops_recording(self):
        self.home.evaluate("openMicrophone()")
        self.addCleanup(self.home.evaluate, "closeMicrophone()")
        tab, session = self.openCall()
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.assertStaysUnknown(session, mark)
        # The browser may keep a speaker open for as long as it records.
        self.assertIn("microphone", self.directions())
        mark = self.stream.mark()
        self.home.evaluate("closeMicrophone()")
        self.assertEndsOnceGone(session, mark)

    def test_a_call_that_mutes_pauses_or_is_silent_for_long_goes_on(self):
        tab, _ = self.openCall()
        for action in _QUIET:
            with self.subTest(action=action):
                mark = self.stream.mark()
                tab.evaluate(action)
                self.assertStatesSince(self.stream, mark, "joined", cycles=2)
        self.waitForStreams()
        mark = self.stream.mark()
        self.assertStatesSince(self.stream, mark, "joined", _SILENT_CYCLES)
        self.assertOneSession(self.stream.observations())


class CallsHeardThroughPulseAudio(HeardCalls, HeardCase):
    """On a desktop where PulseAudio alone serves sound."""

    server = "pulseaudio"

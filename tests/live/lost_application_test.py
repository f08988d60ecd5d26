"""A browser that hangs for a moment, is killed, or crashes and is started again."""

import os
import signal

from live_case import DesktopCase
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS, LANDING_ADDRESS
from stream import isHealth

# Whole cycles of about a second for which a browser hangs.
_HUNG_CYCLES = 3
# Seconds from one cycle's end to the next that a loaded machine may take: 1 s is the period, 1.2 s
# the time in which a cycle looks at programs.
_LONGEST_PERIOD = 3.0


class ABrowserThatFails(DesktopCase):
    """Each test has a browser of its own, because it ends it."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop())

    def setUp(self):
        self.browser = self.startBrowser(CALL_ADDRESS)
        self.stream = self.startMonitor()
        self.session = self.join(self.stream, self.browser.tab)["sessionId"]

    def test_a_browser_that_hangs_for_a_moment_delays_no_cycle_and_keeps_its_call(self):
        mark = self.stream.mark()
        os.kill(self.browser.pid, signal.SIGSTOP)
        try:
            self.stream.waitForCycles(_HUNG_CYCLES + 1, mark)
            ends = [line.arrived for line in self.stream.lines[mark:] if isHealth(line.record)]
            states = [record["state"] for record in self.stream.observations(mark)]
        finally:
            mark = self.stream.mark()
            os.kill(self.browser.pid, signal.SIGCONT)
        self.assertLess(max(later - earlier for earlier, later in zip(ends, ends[1:])),
                        _LONGEST_PERIOD)
        # Only the first cycle may have read the page before the browser stopped.
        self.assertLessEqual(set(states[1:]), {"unknown"})
        self.assertGreaterEqual(states.count("unknown"), _HUNG_CYCLES)
        self.waitForState(self.stream, "joined", mark, sessionId=self.session)
        self.assertOneSession(self.stream.observations())

    def test_the_call_of_a_killed_browser_is_left_in_the_next_cycle(self):
        mark = self.kill()
        self.stream.waitForCycles(4, mark)
        states = [record["state"] for record in self.stream.observations(mark)]
        # A cycle may have been at work on the browser when it was killed.
        self.assertIn(states, (["left"], ["joined", "left"], ["unknown", "left"]))
        self.assertOneSession(self.stream.observations())

    def test_a_killed_browser_that_starts_again_at_its_call_tells_of_another_session(self):
        mark = self.kill()
        self.waitForState(self.stream, "left", mark, sessionId=self.session)
        again = self.startBrowser(CALL_ADDRESS)  # with the profile of the one before it
        joined = self.join(self.stream, again.tab)
        self.assertNotEqual(joined["sessionId"], self.session)
        self.assertEqual(joined["sequence"], 1)

    def test_a_closed_call_that_was_never_heard_is_left_when_its_browser_quits(self):
        other = self.browser.openTab(LANDING_ADDRESS)
        other.waitUntilLoaded()
        mark = self.stream.mark()
        self.browser.closeTab(self.browser.tab)
        self.waitForState(self.stream, "unknown", mark, sessionId=self.session)
        settled = self.stream.mark()
        self.assertStatesSince(self.stream, settled, "unknown")
        other.disconnect()
        mark = self.stream.mark()
        self.browser.close()
        self.waitForState(self.stream, "left", mark, sessionId=self.session)
        self.assertOneSession(self.stream.observations())

    def kill(self):
        """Kills the browser as a crash does and gives the mark from before that."""
        mark = self.stream.mark()
        os.kill(self.browser.pid, signal.SIGKILL)
        self.browser.process.wait()
        self.browser.close()  # what it left behind
        return mark

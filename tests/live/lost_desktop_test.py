"""A desktop that cannot be read for a while: what is not known is never told as an end."""

import os
import signal

from accessibility_tree import windowsOf
from live_case import DesktopCase
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS, LANDING_ADDRESS
from stream import isHealth
from waiting import waitUntil


class ACallOnAFailingDesktop(DesktopCase):
    """Each test has a desktop and a browser of its own, because it breaks or ends them."""

    def setUp(self):
        self.desktop = self.enterContext(PrivateDesktop())
        self.browser = self.startBrowser(CALL_ADDRESS)
        self.stream = self.startMonitor()
        self.join(self.stream, self.browser.tab)

    def test_a_hung_browser_is_unknown_and_its_call_goes_on_afterwards(self):
        mark = self.stream.mark()
        os.kill(self.browser.pid, signal.SIGSTOP)
        try:
            self.waitForState(self.stream, "unknown", mark)
            settled = self.stream.mark()
            self.assertStatesSince(self.stream, settled, "unknown")
        finally:
            mark = self.stream.mark()
            os.kill(self.browser.pid, signal.SIGCONT)
        self.waitForState(self.stream, "joined", mark)
        self.assertOneSession(self.stream.observations())

    def test_cycles_that_wait_for_a_hung_browser_still_start_a_second_apart(self):
        os.kill(self.browser.pid, signal.SIGSTOP)
        try:
            self.stream.waitForCycles(2)
            mark = self.stream.mark()
            self.stream.waitForCycles(6, mark)
        finally:
            os.kill(self.browser.pid, signal.SIGCONT)
        times = [record["observedAt"] / 1000 for record in self.stream.records(mark)
                 if isHealth(record)]
        # A loaded machine may stretch the period; nothing may shorten it.
        self.assertGreater((times[-1] - times[0]) / (len(times) - 1), 0.95)

    def test_the_end_of_the_browser_ends_the_call(self):
        self.browser.close()
        self.waitForState(self.stream, "left")
        self.stream.waitForCycles(3)
        observations = self.stream.observations()
        self.assertOneSession(observations)
        self.assertEqual([record["state"] for record in observations].count("left"), 1)
        self.assertEqual(observations[-1]["state"], "left")

    def test_a_browser_that_is_started_again_is_read_and_its_call_is_another_session(self):
        windows = set(windowsOf(self.desktop, self.browser.pid))
        self.browser.close()
        left = self.waitForState(self.stream, "left")
        again = self.startBrowser(CALL_ADDRESS, "browser-again")
        # The window server gives out the numbers of the closed windows again.
        self.assertTrue(windows & set(windowsOf(self.desktop, again.pid)), "a number came again")
        joined = self.join(self.stream, again.tab)
        self.assertNotEqual(joined["sessionId"], left["sessionId"])
        self.assertEqual(joined["sequence"], 1)

    def test_a_closed_tab_that_was_never_heard_is_unknown(self):
        self.browser.openTab(LANDING_ADDRESS)
        mark = self.stream.mark()
        self.browser.closeTab(self.browser.tab)
        self.waitForState(self.stream, "unknown", mark)
        settled = self.stream.mark()
        self.assertStatesSince(self.stream, settled, "unknown", cycles=4)

    def test_a_page_that_another_one_replaced_is_unknown(self):
        mark = self.stream.mark()
        self.browser.tab.navigate(LANDING_ADDRESS)
        self.waitForState(self.stream, "unknown", mark)
        settled = self.stream.mark()
        self.assertStatesSince(self.stream, settled, "unknown", cycles=4)

    def test_an_accessibility_bus_that_starts_anew_leaves_the_call_unknown(self):
        mark = self.stream.mark()
        # The session bus starts another one as soon as somebody asks for it.
        self.desktop.processes.stop("accessibility-bus")
        self.waitForState(self.stream, "unknown", mark)
        settled = self.stream.mark()
        # The browser runs on but cannot be read on a bus that it does not know.
        self.assertStatesSince(self.stream, settled, "unknown", cycles=4)
        self.waitUntilTrusted(self.stream, True, settled)
        self.assertOneSession(self.stream.observations())

    def test_a_hung_accessibility_bus_is_not_trusted_and_the_call_goes_on_afterwards(self):
        bus = self.desktop.accessibilityBusPid()
        mark = self.stream.mark()
        os.kill(bus, signal.SIGSTOP)
        try:
            self.waitUntilTrusted(self.stream, False, mark)
            settled = self.stream.mark()
            self.assertStatesSince(self.stream, settled, "unknown")
        finally:
            mark = self.stream.mark()
            os.kill(bus, signal.SIGCONT)
        self.waitUntilTrusted(self.stream, True, mark)
        self.waitForState(self.stream, "joined", mark)
        self.assertOneSession(self.stream.observations())

    def test_a_lost_session_bus_is_not_trusted_and_its_call_is_unknown(self):
        mark = self.stream.mark()
        self.desktop.processes.stop("session-bus")
        self.waitUntilTrusted(self.stream, False, mark)
        settled = self.stream.mark()
        self.assertStatesSince(self.stream, settled, "unknown")
        self.assertOneSession(self.stream.observations())


class ACallWithoutAListOfWindows(DesktopCase):
    """A session whose windows are not the window server's: the registry alone tells of programs."""

    def test_a_new_accessibility_bus_leaves_the_call_of_a_living_browser_unknown(self):
        self.desktop = self.enterContext(PrivateDesktop())
        browser = self.startBrowser(CALL_ADDRESS)
        # Only now, so that it is the monitor's session and not the browser's.
        self.desktop.environment["XDG_SESSION_TYPE"] = "wayland"
        stream = self.startMonitor()
        self.join(stream, browser.tab)
        mark = stream.mark()
        self.desktop.processes.stop("accessibility-bus")
        self.waitForState(stream, "unknown", mark)
        settled = stream.mark()
        self.assertStatesSince(stream, settled, "unknown", cycles=4)
        self.waitUntilTrusted(stream, True, settled)
        mark = stream.mark()
        browser.close()
        self.waitForState(stream, "left", mark)
        self.assertOneSession(stream.observations())
        self.assertEqual([record["state"] for record in stream.observations()].count("left"), 1)


class ACallWithoutServicesToStart(DesktopCase):
    """A desktop whose session bus starts nothing by itself: what is lost stays lost."""

    def test_a_lost_accessibility_bus_is_not_trusted_and_its_call_is_unknown(self):
        self.desktop = self.enterContext(PrivateDesktop(activation=False))
        browser = self.startBrowser(CALL_ADDRESS)
        stream = self.startMonitor()
        self.join(stream, browser.tab)
        mark = stream.mark()
        self.desktop.processes.stop("accessibility-bus")
        self.waitUntilTrusted(stream, False, mark)
        settled = stream.mark()
        self.assertStatesSince(stream, settled, "unknown")
        mark = stream.mark()
        self.desktop.startAccessibilityBus()
        self.waitUntilTrusted(stream, True, mark)
        settled = stream.mark()
        self.assertStatesSince(stream, settled, "unknown")
        self.assertOneSession(stream.observations())


class ADesktopThatIsNotReadableYet(DesktopCase):
    """The monitor finds what comes later and opens what is closed."""

    def test_the_monitor_makes_the_desktop_readable_for_browsers_that_start_later(self):
        self.desktop = self.enterContext(PrivateDesktop(readable=False))
        self.assertFalse(self.desktop.isReadable())
        stream = self.startMonitor()
        waitUntil("the monitor makes the desktop readable", self.desktop.isReadable)
        self.join(stream, self.startBrowser(CALL_ADDRESS).tab)

    def test_a_browser_that_cannot_be_read_tells_of_no_call(self):
        self.desktop = self.enterContext(PrivateDesktop(readable=False))
        self.assertFalse(self.desktop.isReadable())
        browser = self.startBrowser(CALL_ADDRESS)
        stream = self.startMonitor()
        self.waitUntilTrusted(stream)
        browser.tab.evaluate("show('call')")
        stream.waitForCycles(4)
        self.assertEqual(stream.observations(), [])
        self.assertEqual({record["trusted"] for record in stream.records() if isHealth(record)},
                         {True})

    def test_buses_that_appear_later_are_found_and_opened(self):
        self.desktop = self.enterContext(PrivateDesktop(parts=("display",)))
        stream = self.startMonitor()
        self.waitUntilTrusted(stream, False)
        mark = stream.mark()
        self.desktop.startSessionBus()
        self.desktop.startAccessibilityBus()
        self.desktop.startWindowManager()
        self.waitUntilTrusted(stream, True, mark)
        waitUntil("the monitor makes the desktop readable", self.desktop.isReadable)
        self.join(stream, self.startBrowser(CALL_ADDRESS).tab)

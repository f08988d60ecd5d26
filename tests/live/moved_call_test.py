"""Calls in several windows and browsers, in windows of their own, and windows put away."""

from accessibility_tree import windowsOf
from live_case import CallCase, DesktopCase
from meeting_pages import MEET_HOST, OTHER_HOST
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS, CALL_KEY
from waiting import waitUntil

_OTHER_KEY = "meet:xyz-abcd-efg"
_OTHER_CALL_ADDRESS = f"https://{MEET_HOST}/xyz-abcd-efg"
_OTHER_ADDRESS = f"https://{OTHER_HOST}/"
# Where the first tab is, from a window's upper left corner.
_FIRST_TAB = (100, 20)


class WindowsOfOneBrowser(CallCase):
    """A call in one of several windows of a browser; `tab` is in the first."""

    def setUp(self):
        super().setUp()
        self.first, = windowsOf(self.desktop, self.browser.pid)
        self.joined = self.join(self.stream, self.tab)

    def openWindow(self, url):
        """Opens a window with one tab, which ends with the test; gives (tab, number)."""
        before = set(windowsOf(self.desktop, self.browser.pid))
        tab = self.browser.openWindow(url)
        self.addCleanup(self.browser.closeTab, tab)
        number, = waitUntil("the window has a number", lambda: set(
            windowsOf(self.desktop, self.browser.pid)) - before)
        return tab, number

    def test_the_same_meeting_in_a_second_window_is_one_call(self):
        tab, _ = self.openWindow(CALL_ADDRESS)
        mark = self.stream.mark()
        tab.evaluate("show('call')")
        self.assertStatesSince(self.stream, mark, "joined", cycles=4)
        self.assertOneSession(self.stream.observations())
        # Its own page ends it; the other window then shows a meeting that somebody else is in.
        mark = self.stream.mark()
        tab.evaluate("show('lobby')")
        self.tab.evaluate("show('left')")
        self.waitForState(self.stream, "left", mark, sessionId=self.joined["sessionId"])
        self.assertTellsOfNoCall(self.stream.mark())

    def test_two_meetings_in_two_windows_are_two_calls(self):
        tab, number = self.openWindow(_OTHER_CALL_ADDRESS)
        other = self.join(self.stream, tab, _OTHER_KEY)
        self.assertNotEqual(other["sessionId"], self.joined["sessionId"])
        self.assertEqual((self.joined["screenWindowId"], other["screenWindowId"]),
                         (self.first, number))
        mark = self.stream.mark()
        tab.evaluate("show('left')")
        self.waitForState(self.stream, "left", mark, sessionId=other["sessionId"])
        mark = self.stream.mark()
        self.assertStatesSince(self.stream, mark, "joined")
        self.assertOneSession(self.observationsOf(CALL_KEY))

    def test_a_call_whose_tab_is_dragged_into_a_window_of_its_own_goes_on_there(self):
        tab, number = self.openWindow(_OTHER_CALL_ADDRESS)
        self.desktop.bringToFront(number)
        session = self.join(self.stream, tab, _OTHER_KEY)["sessionId"]
        before = set(windowsOf(self.desktop, self.browser.pid))
        home = self.browser.openTab(_OTHER_ADDRESS)
        self.addCleanup(self.browser.closeTab, home)
        mark = self.stream.mark()
        self.waitForState(self.stream, "unknown", mark, sessionId=session)
        mark = self.stream.mark()
        self.dragFirstTabOut(number)
        moved, = waitUntil("the tab has a window of its own", lambda: set(
            windowsOf(self.desktop, self.browser.pid)) - before)
        self.waitForState(self.stream, "joined", mark, screenWindowId=moved, sessionId=session)
        self.assertSessionGoesOn(self.stream, session)

    def test_a_call_opened_in_another_window_and_closed_in_its_own_goes_on_there(self):
        tab, _ = self.openWindow(_OTHER_CALL_ADDRESS)
        session = self.join(self.stream, tab, _OTHER_KEY)["sessionId"]
        again, number = self.openWindow(_OTHER_CALL_ADDRESS)
        again.evaluate("show('call')")
        self.stream.waitForCycles(2)
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.waitForState(self.stream, "joined", mark, sessionId=session, screenWindowId=number)
        self.assertSessionGoesOn(self.stream, session)
        self.assertOneSession(self.observationsOf(_OTHER_KEY))

    def test_a_closed_tab_whose_meeting_is_joined_in_another_view_ends_and_that_is_a_call(self):
        tab, number = self.openWindow(_OTHER_CALL_ADDRESS)
        session = self.join(self.stream, tab, _OTHER_KEY)["sessionId"]
        # The window of the closed tab stays with this one.
        self.desktop.bringToFront(number)
        home = self.browser.openTab(_OTHER_ADDRESS)
        self.addCleanup(self.browser.closeTab, home)
        again, other = self.openWindow(_OTHER_CALL_ADDRESS)
        again.evaluate("show('call')")
        self.stream.waitForCycles(2)
        mark = self.stream.mark()
        self.browser.closeTab(tab)
        self.waitForState(self.stream, "left", mark, sessionId=session)
        joined = self.waitForState(self.stream, "joined", mark, callKey=_OTHER_KEY,
                                   screenWindowId=other)
        self.assertNotEqual(joined["sessionId"], session)
        self.assertEqual(joined["sequence"], 1)

    def dragFirstTabOut(self, window):
        """Drags the first tab of a window with several down and off its strip of tabs."""
        place = dict(line.split("=") for line in self.desktop.query(
            "xdotool", "getwindowgeometry", "--shell", str(window)).split())
        x, y = int(place["X"]) + _FIRST_TAB[0], int(place["Y"]) + _FIRST_TAB[1]
        self.desktop.query("xdotool", "mousemove", str(x), str(y), "mousedown", "1")
        for step in range(1, 13):
            self.desktop.query("xdotool", "mousemove", str(x + 10 * step), str(y + 25 * step))
        self.desktop.query("xdotool", "mouseup", "1")

    def observationsOf(self, key):
        """The records of the calls of one meeting."""
        return [record for record in self.stream.observations() if record["callKey"] == key]

    def test_a_minimised_window_ends_no_call_and_its_call_is_the_same_once_it_is_back(self):
        mark = self.stream.mark()
        self.desktop.query("xdotool", "windowminimize", str(self.first))
        waitUntil("the window is minimised", lambda: "Iconic" in self.desktop.query(
            "xprop", "-id", str(self.first), "WM_STATE"))
        self.assertSessionGoesOn(self.stream, self.joined["sessionId"], mark, cycles=4)
        self.desktop.bringToFront(self.first)
        self.stream.waitForCycles(1)
        mark = self.stream.mark()
        self.waitForState(self.stream, "joined", mark, sessionId=self.joined["sessionId"])
        settled = self.stream.mark()
        self.assertStatesSince(self.stream, settled, "joined")
        self.assertOneSession(self.stream.observations())


class SeveralBrowsers(DesktopCase):
    """Browsers with profiles of their own, and windows of web applications."""

    def setUp(self):
        self.desktop = self.enterContext(PrivateDesktop())

    def test_calls_of_two_browsers_are_two_calls_and_one_s_end_leaves_the_other(self):
        first = self.startBrowser(CALL_ADDRESS, "first")
        second = self.startBrowser(_OTHER_CALL_ADDRESS, "second")
        # A browser stops drawing, and describing, a window that another one covers in whole.
        window, = windowsOf(self.desktop, second.pid)
        self.desktop.query("xdotool", "windowsize", str(window), "800", "600",
                           "windowmove", str(window), "700", "350")
        stream = self.startMonitor()
        one = self.join(stream, first.tab)["sessionId"]
        other = self.join(stream, second.tab, _OTHER_KEY)["sessionId"]
        self.assertNotEqual(one, other)
        for cycle in range(1, 3):
            mark = stream.mark()
            stream.waitForCycles(2, mark)
            told = [record["sessionId"] for record in stream.observations(mark)]
            self.assertLessEqual({one, other}, set(told), f"cycle {cycle}")
        mark = stream.mark()
        second.close()
        self.waitForState(stream, "left", mark, sessionId=other)
        settled = stream.mark()
        self.assertStatesSince(stream, settled, "joined")
        self.assertEqual({record["sessionId"] for record in stream.observations(settled)}, {one})

    def test_a_call_in_the_window_of_a_web_application_is_told_as_one_of_its_browser(self):
        app = self.startBrowser(CALL_ADDRESS, app=True)
        stream = self.startMonitor()
        self.waitUntilTrusted(stream)
        record = self.join(stream, app.tab)
        self.assertEqual(record["applicationBundleId"], "com.google.Chrome")
        self.assertEqual([record["screenWindowId"]],
                         list(windowsOf(self.desktop, app.pid)))
        mark = stream.mark()
        app.tab.evaluate("show('left')")
        self.waitForState(stream, "left", mark, sessionId=record["sessionId"])

"""What the live tests have in common: a desktop, a browser on it, and a monitor for each test."""

import tempfile
import unittest

from accessibility_tree import AccessibilityTree
from browser import Browser
from meeting_pages import MeetingPages
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS, CALL_KEY, LANDING_ADDRESS
from stream import Stream, isHealth, isObservation
from waiting import waitUntil


class MonitorCase(unittest.TestCase):
    """Monitors for the tests of a class, each of which brings its own `desktop` up."""

    def startMonitor(self):
        """Starts the monitor and gives its stream; it ends with the test."""
        return self.enterContext(Stream(self.desktop.processes, self.desktop.environment))

    def waitUntilTrusted(self, stream, trusted=True, since=0):
        """Waits for a cycle that may, or may not, read the desktop."""
        stream.waitFor(f"a cycle says trusted {trusted}",
                       lambda record: isHealth(record) and record["trusted"] is trusted, since)

    def waitForState(self, stream, state, since=0, **fields):
        """Waits for a record of a call in that state whose further fields are as given."""
        return stream.waitFor(
            f"a record says {state} {fields or ''}",
            lambda record: isObservation(record) and record["state"] == state and
            all(record.get(name) == value for name, value in fields.items()), since)

    def assertOneSession(self, observations):
        """Asserts that the records are those of one call, from its first on and without a gap."""
        self.assertEqual({record["sessionId"] for record in observations},
                         {observations[0]["sessionId"]})
        self.assertEqual([record["sequence"] for record in observations],
                         list(range(1, len(observations) + 1)))

    def assertSessionGoesOn(self, stream, session, since=0, cycles=3):
        """Asserts that nothing since the mark, nor some whole cycles from now on, ends a call."""
        stream.waitForCycles(cycles, stream.mark())
        told = [record for record in stream.observations(since) if record["sessionId"] == session]
        self.assertTrue(told, "no record tells of the call")
        self.assertNotIn("left", {record["state"] for record in told})

    def assertStatesSince(self, stream, mark, state, cycles=3):
        """Asserts that some whole cycles from now on tell of the call in that one state."""
        stream.waitForCycles(cycles, stream.mark())
        told = stream.observations(mark)
        self.assertTrue(told, "no record tells of the call")
        self.assertEqual({record["state"] for record in told}, {state})


class DesktopCase(MonitorCase):
    """The meeting pages, and a browser that shows them."""

    @classmethod
    def setUpClass(cls):
        directory = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.pages = cls.enterClassContext(MeetingPages(directory))

    def startBrowser(self, url, name="browser", app=False):
        """Starts a browser, with a profile of that name, and gives it; it ends with the test."""
        browser = Browser(self.desktop, self.pages, url, name, app)
        self.addCleanup(browser.close)
        return browser

    def join(self, stream, tab, key=CALL_KEY):
        """Joins the call in the page and gives the first record that says so."""
        mark = stream.mark()
        tab.evaluate("show('call')")
        return self.waitForState(stream, "joined", mark, callKey=key)


class BrowserCase(DesktopCase):
    """One desktop with one browser, at a landing page in its one tab, for all tests of a class."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop())
        cls.browser = Browser(cls.desktop, cls.pages, LANDING_ADDRESS)
        cls.tab = cls.browser.tab


class CallCase(BrowserCase):
    """Each test finds a monitor of its own (`stream`) that can read the desktop, and a tab (`tab`)
    that stands in the lobby of the call.
    """

    def setUp(self):
        self.tab.navigate(CALL_ADDRESS)
        self.stream = self.startMonitor()
        self.waitUntilTrusted(self.stream)
        self.tree = AccessibilityTree(self.desktop)

    def frame(self):
        """The one window of the browser in the accessibility tree."""
        frames = self.tree.frames(self.browser.pid)
        self.assertEqual(len(frames), 1)
        return frames[0]

    def waitForText(self, text):
        """Waits until a text stands in the browser's accessibility tree."""
        waitUntil(f"the tree holds {text!r}", lambda: text in self.tree.texts(self.frame()))

    def assertTellsOfNoCall(self, since=0):
        """Asserts that whole cycles from now on tell of no call, and none since the mark did."""
        self.stream.waitForCycles(3, self.stream.mark())
        self.assertEqual(self.stream.observations(since), [])

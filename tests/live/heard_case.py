"""A desktop with sound and a browser whose first tab stays, for calls in further tabs of it."""

from browser import Browser
from live_case import DesktopCase
from meeting_pages import OTHER_HOST
from private_desktop import PrivateDesktop
from running_sound import runningStreams
from story import CALL_ADDRESS
from waiting import waitUntil

OTHER_ADDRESS = f"https://{OTHER_HOST}/"
# Cycles that may tell of an absence in silence until the second that counts ends the call: that one
# itself is "left", and one may have been at work when the sound stopped.
_UNKNOWN_IN_SILENCE = 2
# Records of a joined call, of which all but the first come from whole cycles: in those the monitor
# hears what the server has told. On a busy machine a stream that was let go takes a moment to run.
_HEARD_RECORDS = 4
_PARTS = ("display", "session bus", "accessibility bus", "window manager")
_SOUND_PART = {"pipewire": "sound", "pulseaudio": "pulse sound"}


class SoundCase(DesktopCase):
    """One desktop for all tests of a class, which names the sound `server`.

    Each test has a `browser` and a monitor (`stream`) that can read the desktop.
    """

    server = "pipewire"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop(
            parts=(*_PARTS, _SOUND_PART[cls.server])))

    def openCall(self, heard=True, window=False):
        """Joins a call in a tab of its own, or a window, and gives (tab, session).

        A heard call uses microphone and speaker, and the monitor has had the time to hear it.
        """
        tab = self.browser.openWindow(CALL_ADDRESS) if window else self.openTab(CALL_ADDRESS)
        self.addCleanup(self.browser.closeTab, tab)
        session = self.join(self.stream, tab)["sessionId"]
        if heard:
            tab.evaluate("openMicrophone().then(play)")
            self.waitForStreams("microphone", "speaker")
            mark = self.stream.mark()
            waitUntil("the call was joined while its sound ran", lambda: [
                record["state"] for record in self.stream.observations(mark)
                if record["sessionId"] == session].count("joined") >= _HEARD_RECORDS)
        return tab, session

    def openTab(self, url):
        """Opens a tab that ends with the test and waits until its page stands."""
        tab = self.browser.openTab(url)
        self.addCleanup(self.browser.closeTab, tab)
        tab.waitUntilLoaded()
        return tab

    def waitForStreams(self, *directions):
        """Waits until the browser uses exactly that of microphone and speaker."""
        waitUntil(f"the browser uses {directions or 'no sound'}",
                  lambda: self.directions() == set(directions))

    def directions(self):
        """Gives which of microphone and speaker the browser uses; nothing while nobody answers."""
        running = runningStreams(self.desktop, self.browser.pid)
        return None if running is None else set(running)

    def assertEndsOnceGone(self, session, since):
        """Asserts that a call is unknown, and left once, soon after the sound has stopped."""
        self.waitForStreams()
        silent = self.stream.mark()
        try:
            self.waitForState(self.stream, "left", since, sessionId=session)
        except TimeoutError as error:
            running = runningStreams(self.desktop, self.browser.pid)
            raise TimeoutError(f"{error}\nthe browser uses {running or 'no sound'}") from None
        self.stream.waitForCycles(1)
        states = [record["state"] for record in self.stream.observations(since)
                  if record["sessionId"] == session]
        while states[0] == "joined":  # cycles that had begun before the page went
            states.pop(0)
        self.assertEqual(states[-1], "left")
        self.assertEqual(set(states[:-1]), {"unknown"})
        inSilence = [record["state"] for record in self.stream.observations(silent)
                     if record["sessionId"] == session]
        self.assertLessEqual(inSilence.count("unknown"), _UNKNOWN_IN_SILENCE)

    def assertStaysUnknown(self, session, since, cycles=4):
        """Asserts that a call becomes unknown and is so in each of some whole cycles."""
        self.waitForState(self.stream, "unknown", since, sessionId=session)
        settled = self.stream.mark()
        self.assertStatesSince(self.stream, settled, "unknown", cycles)
        self.assertNotIn("left", {record["state"] for record in self.stream.observations(since)})


class HeardCase(SoundCase):
    """One browser for all tests, silent before each, whose one tab (`home`) holds no meeting."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.browser = Browser(cls.desktop, cls.pages, OTHER_ADDRESS)
        cls.home = cls.browser.tab

    def setUp(self):
        self.waitForStreams()
        self.stream = self.startMonitor()
        self.waitUntilTrusted(self.stream)

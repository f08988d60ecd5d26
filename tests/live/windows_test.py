"""The windows that this desktop gives for an application, read by a tool of the test's own."""

import json

from accessibility_tree import windowsOf
from built import built
from call_client import CallClient
from live_case import DesktopCase, MonitorCase
from private_desktop import PrivateDesktop
from story import LANDING_ADDRESS
from waiting import waitUntil

_TOOL = built("tests", "windows")
_SUCCESS = 0
_CANNOT_COMPLETE = -25204
# More than any process has: the kernel's own limit.
_NO_PROCESS = 2 ** 22 + 1
_TITLE = "Weekly call"


class Windows:
    """The tool's answers for one process, some of them in every second."""

    def __init__(self, desktop, pid, name="windows"):
        self._desktop = desktop
        self._name = name
        desktop.processes.start(name, [_TOOL, str(pid)], desktop.environment)
        self._begin = len(desktop.processes.logOf(name))

    def close(self):
        """Ends the tool; does nothing if it has ended."""
        self._desktop.processes.stop(self._name)

    def answers(self):
        """Gives the answers so far."""
        self._desktop.processes.mustRun(self._name)
        whole = self._desktop.processes.logOf(self._name)[self._begin:].rpartition("\n")[0]
        return [json.loads(line) for line in whole.splitlines()]

    def next(self, count=3):
        """Waits for some answers from now on, the last of them about the desktop as it is now."""
        before = len(self.answers())
        return waitUntil("answers come", lambda: len(self.answers()) >= before + count and
                         self.answers())[before:]


class TheOwnersOfWindows(MonitorCase):
    """A window that does not say, in a way that means anything here, whose it is."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop())

    def setUp(self):
        self.client = CallClient(self.desktop, "callbox")
        self.addCleanup(self.client.close)
        self.client.show(_TITLE, ("button", "Mute"))
        self.window = self.client.windowNumber(_TITLE)

    def setPid(self, window, pid):
        self.desktop.query("xprop", "-id", str(window), "-f", "_NET_WM_PID", "32c",
                           "-set", "_NET_WM_PID", str(pid))

    def lastAnswer(self):
        """Gives what a tool that knows nothing of earlier answers says."""
        windows = Windows(self.desktop, self.client.pid)
        try:
            return windows.next()[-1]
        finally:
            windows.close()

    def assertWindows(self, code, titles):
        answer = self.lastAnswer()
        self.assertEqual((answer["trusted"], answer["running"]), (True, True))
        self.assertEqual((answer["code"], answer["titles"]), (code, titles))

    def test_a_window_of_the_application_is_given(self):
        self.assertWindows(_SUCCESS, [_TITLE])

    def test_a_window_that_may_be_the_applications_leaves_its_windows_unread(self):
        manager = self.desktop.processes.pid("window-manager")
        for name, pid in (("no process", _NO_PROCESS), ("a program without a tree", manager)):
            with self.subTest(name):
                self.setPid(self.window, pid)
                self.assertWindows(_CANNOT_COMPLETE, [])
        with self.subTest("nobody"):
            self.desktop.query("xprop", "-id", str(self.window), "-remove", "_NET_WM_PID")
            self.assertWindows(_CANNOT_COMPLETE, [])
        with self.subTest("a process of another machine"):
            self.setPid(self.window, self.client.pid)
            self.desktop.query("xprop", "-id", str(self.window), "-f", "WM_CLIENT_MACHINE", "8s",
                               "-set", "WM_CLIENT_MACHINE", "elsewhere")
            self.assertWindows(_CANNOT_COMPLETE, [])

    def test_an_application_without_windows_has_none_whatever_stands_beside_it(self):
        other = CallClient(self.desktop, "other")
        self.addCleanup(other.close)
        other.show("Another window", ("button", "Mute"))
        self.setPid(other.windowNumber("Another window"), _NO_PROCESS)
        self.client.destroy(_TITLE)
        self.assertWindows(_SUCCESS, [])


class ManyWindows(DesktopCase):
    """A browser that a person has kept open for long."""

    def test_thirty_new_windows_are_given_all_together(self):
        self.desktop = self.enterContext(PrivateDesktop())
        browser = self.startBrowser(LANDING_ADDRESS)
        browser.openWindows([f"data:text/html,<title>Window {number}</title>"
                             for number in range(30)])
        waitUntil("the window manager has the windows under their last titles", lambda: len([
            name for name in windowsOf(self.desktop, browser.pid).values()
            if name.startswith("Window ")]) == 30)
        windows = Windows(self.desktop, browser.pid)
        self.addCleanup(windows.close)
        # A machine that is busy enough makes any browser late, and late is not read.
        waitUntil("the windows are read", lambda: _SUCCESS in [
            answer["code"] for answer in windows.answers()])
        titles = sorted(windowsOf(self.desktop, browser.pid).values())
        for answer in windows.next(8) + windows.answers():
            if answer["code"] == _SUCCESS:
                # A title is read after the list, and may be late when the list was not.
                self.assertEqual(len(answer["titles"]), len(titles))
                self.assertLessEqual(set(answer["titles"]), {*titles, ""})

"""A real browser that captures and plays, as real sound servers tell of it."""

import tempfile
import unittest

from browser import Browser
from meeting_pages import MeetingPages
from private_desktop import PrivateDesktop
from sound import Heard
from story import LANDING_ADDRESS
from waiting import waitUntil

# Enough answers for whatever could still change to have changed.
_SETTLED = 8


class BrowserSound:
    """A browser's sound, which all belongs to one of its helpers."""

    part = "sound"

    @classmethod
    def setUpClass(cls):
        directory = cls.enterClassContext(tempfile.TemporaryDirectory())
        pages = cls.enterClassContext(MeetingPages(directory))
        cls.desktop = cls.enterClassContext(PrivateDesktop(parts=(
            "display", "session bus", "accessibility bus", "window manager", cls.part)))
        cls.browser = Browser(cls.desktop, pages, LANDING_ADDRESS, flags=(
            "--use-fake-ui-for-media-stream", "--autoplay-policy=no-user-gesture-required"))
        cls.addClassCleanup(cls.browser.close)

    def capture(self):
        """Lets the page use the microphone."""
        tab = self.browser.tab
        tab.evaluate("navigator.mediaDevices.getUserMedia({audio: true}).then("
                     "stream => { window.captured = stream; },"
                     "error => { window.captured = String(error); }); 0")
        waitUntil("the page has an answer", lambda: tab.evaluate("window.captured !== undefined"))
        self.assertEqual(tab.evaluate("String(window.captured)"), "[object MediaStream]")

    def test_a_page_that_captures_and_plays_is_its_browsers_input_and_output(self):
        tab = self.browser.tab
        with Heard(self.desktop) as heard:
            heard.waitFor("nobody is heard", [])
            self.capture()
            heard.waitFor("it captures", [("com.google.Chrome", True, False)])
            tab.evaluate("window.context = new AudioContext();"
                         "window.tone = new OscillatorNode(context);"
                         "tone.connect(context.destination); tone.start(); 0")
            heard.waitFor("it captures and plays", [("com.google.Chrome", True, True)])
            tab.evaluate("captured.getTracks().forEach(track => track.stop()); 0")
            heard.waitFor("it plays", [("com.google.Chrome", False, True)])
            tab.evaluate("context.close(); 0")
            heard.waitFor("it is silent", [("com.google.Chrome", False, False)])
            self.assertEqual(heard.waitForAnswers(_SETTLED),
                             [[("com.google.Chrome", False, False)]] * _SETTLED)


class BrowserOnPipeWire(BrowserSound, unittest.TestCase):
    """The browser's sound goes through PipeWire's service for PulseAudio's clients."""


class BrowserOnPulseAudio(BrowserSound, unittest.TestCase):
    """The browser's sound goes to PulseAudio."""

    part = "pulse sound"

"""Applications that are in no table: what makes one a client of calls, and what does not."""

from call_client import CallClient
from live_case import MonitorCase
from private_desktop import PrivateDesktop
from stream import isClient

_PROGRAM = "callbox"
_TITLE = "Weekly call"
_CONTROLS = [("button", "Mute"), ("button", "Stop video"), ("button", "Hang up")]
_BOTH = ("microphone", "speaker")


class GenericCase(MonitorCase):
    """A desktop with sound for all tests of a class, and for each test a monitor."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop(
            parts=("display", "session bus", "accessibility bus", "window manager", "sound")))

    def setUp(self):
        self.stream = self.startMonitor()
        self.waitUntilTrusted(self.stream)

    def startClient(self, program=_PROGRAM, desktopFile=None):
        """Gives a client without windows and sound, which ends with the test."""
        client = CallClient(self.desktop, program, desktopFile)
        self.addCleanup(client.close)
        return client

    def join(self, client):
        """Shows call controls over a microphone and a speaker that run; gives the first record."""
        mark = self.stream.mark()
        client.sound(*_BOTH)
        client.show(_TITLE, *_CONTROLS)
        return self.waitForState(self.stream, "joined", mark)

    def assertNoCall(self, client, *sound, since=0):
        """Asserts that whole cycles tell of no call while the client makes that sound, and no more.

        None since the mark may have done so either.
        """
        running = sorted(sound)
        self.assertEqual(client.soundRunning(), running)
        self.stream.waitForCycles(4)
        self.assertEqual(client.soundRunning(), running)
        self.assertEqual(self.stream.observations(since), [])


class AnyApplication(GenericCase):
    """What an application must show and sound like to be taken for a client in a call."""

    def test_controls_over_a_running_microphone_and_speaker_open_a_call(self):
        client = self.startClient()
        record = self.join(client)
        expected = {"version": 1, "source": "native", "provider": "application",
                    "callKey": f"application:native-{record['sessionId']}", "state": "joined",
                    "sequence": 1, "title": _TITLE, "mediaActive": True,
                    "applicationBundleId": _PROGRAM,
                    "screenWindowId": client.windowNumber(_TITLE)}
        self.assertEqual({name: record.get(name) for name in expected}, expected)
        client.bringToFront(_TITLE)
        self.assertStatesSince(self.stream, self.stream.mark(), "joined")
        self.assertOneSession(self.stream.observations())
        # In front, it is no client that has a name.
        self.assertEqual([each for each in self.stream.records() if isClient(each)], [])

    def test_less_than_controls_with_both_directions_opens_no_call(self):
        client = self.startClient()
        leave, mute = ("button", "Hang up"), ("button", "Mute")
        cases = {
            "a player with a microphone check": (_BOTH, [("button", "Play"), mute]),
            "a call window without a way out": (_BOTH, [mute, ("button", "Stop video")]),
            "a way out without a microphone control": (_BOTH, [leave, ("button", "Stop video")]),
            "a control that cannot be pressed": (_BOTH, [("disabled button", "Hang up"), mute]),
            "controls that are only text": (_BOTH, [("label", "Hang up"), ("label", "Mute")]),
            "a microphone alone": (("microphone",), _CONTROLS),
            "a speaker alone": (("speaker",), _CONTROLS),
            "silence": ((), _CONTROLS),
            "a sound recorder": (("microphone",), [("button", "Record"), ("button", "Stop")]),
            "a mixer with a level meter that plays a test sound":
                (("meter", "speaker"), _CONTROLS),
            "a level meter beside a recorder": (("meter", "microphone"), _CONTROLS),
        }
        for name, (sound, parts) in cases.items():
            with self.subTest(name):
                # Silent while the window changes, so that no two rows are ever mixed.
                client.sound()
                client.show(_TITLE, *parts)
                client.sound(*sound)
                self.assertNoCall(client, *sound)
        self.join(client)

    def test_a_screen_reader_that_speaks_over_a_call_window_of_another_opens_no_call(self):
        reader = self.startClient("screen-reader")
        reader.show("Screen Reader Preferences", ("check box", "Speak"), ("button", "Close"))
        reader.sound("speaker")
        client = self.startClient()
        client.show(_TITLE, *_CONTROLS)
        client.bringToFront(_TITLE)
        self.assertNoCall(reader, "speaker")
        # The two together make no call either: each has one direction.
        client.sound("microphone")
        self.assertNoCall(client, "microphone")
        record = self.join(client)
        self.assertEqual(record["applicationBundleId"], _PROGRAM)

    def test_an_application_without_a_window_opens_no_call(self):
        client = self.startClient("call-daemon")
        client.sound(*_BOTH)
        self.assertNoCall(client, *_BOTH)
        client.show(_TITLE, *_CONTROLS)
        self.waitForState(self.stream, "joined")

    def test_an_application_of_the_monitors_own_makers_opens_no_call(self):
        own = [("ai.corvana.desktop", None), ("ai.corvana.desktop.helper", None),
               ("own-by-launcher", "ai.corvana.desktop.desktop")]
        for program, desktopFile in own:
            with self.subTest(program=program, desktopFile=desktopFile):
                client = self.startClient(program, desktopFile)
                client.show(_TITLE, *_CONTROLS)
                client.sound(*_BOTH)
                self.assertNoCall(client, *_BOTH)
                client.close()
        # One whose name merely ends so is another's.
        foreign = self.startClient("org.example.ai.corvana.desktop")
        record = self.join(foreign)
        self.assertEqual(record["applicationBundleId"], "org.example.ai.corvana.desktop")


class TheCourseOfAnyApplicationsCall(GenericCase):
    """What happens to the call of such an application."""

    def test_a_closed_window_ends_the_call_once_the_sound_has_stopped(self):
        client = self.startClient()
        self.join(client)
        mark = self.stream.mark()
        client.destroy(_TITLE)
        self.waitForState(self.stream, "unknown", mark)
        self.assertStatesSince(self.stream, self.stream.mark(), "unknown", cycles=4)
        self.assertEqual(client.soundRunning(), sorted(_BOTH))
        for sound in (("speaker",), ("microphone",)):
            with self.subTest(sound=sound):
                client.sound(*sound)
                self.stream.waitForCycles(1)
                self.assertStatesSince(self.stream, self.stream.mark(), "unknown", cycles=3)
        mark = self.stream.mark()
        client.sound()
        self.waitForState(self.stream, "left", mark)
        mark = self.stream.mark()
        self.assertNoCall(client, since=mark)
        self.assertOneSession(self.stream.observations())

    def test_silence_alone_ends_nothing_and_the_call_goes_on_with_the_sound(self):
        client = self.startClient()
        self.join(client)
        for sound in ((), ("speaker",), ("microphone",)):
            with self.subTest(sound=sound):
                mark = self.stream.mark()
                client.sound(*sound)
                self.waitForState(self.stream, "unknown", mark)
                self.assertStatesSince(self.stream, self.stream.mark(), "unknown", cycles=3)
                self.assertEqual(client.soundRunning(), sorted(sound))
                mark = self.stream.mark()
                client.sound(*_BOTH)
                self.waitForState(self.stream, "joined", mark)
        self.assertOneSession(self.stream.observations())

    def test_a_notice_ends_the_call_but_not_one_that_speaks_of_a_host(self):
        client = self.startClient()
        self.join(client)
        mark = self.stream.mark()
        client.show(_TITLE, ("heading", "The host has ended this meeting."))
        self.waitForState(self.stream, "unknown", mark)
        self.assertStatesSince(self.stream, self.stream.mark(), "unknown")
        mark = self.stream.mark()
        client.show(_TITLE, ("heading", "The call has ended."))
        self.waitForState(self.stream, "left", mark)
        mark = self.stream.mark()
        self.assertNoCall(client, *_BOTH, since=mark)

    def test_an_application_that_quits_ends_its_call(self):
        client = self.startClient()
        self.join(client)
        mark = self.stream.mark()
        client.quit()
        self.waitForState(self.stream, "left", mark)
        self.stream.waitForCycles(2)
        self.assertOneSession(self.stream.observations())

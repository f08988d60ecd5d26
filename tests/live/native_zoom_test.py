"""A call in a native client that has a name in the tables, as the stream tells of it."""

import re

from call_client import CallClient
from live_case import MonitorCase
from private_desktop import PrivateDesktop
from stream import isClient, isClientScan

_BUNDLE = "us.zoom.xos"
_HOME = "Zoom Workplace"
_MEETING = "Zoom Meeting"
_UUID = "[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"

_HOME_PARTS = [("button", "Home"), ("button", "New Meeting"), ("button", "Join"),
               ("button", "Schedule"), ("label", "Audio"), ("label", "Video")]
_CONTROLS = [("button", "Mute"), ("button", "Stop Video"), ("button", "Leave")]
_PREVIEW = [("button", "Audio"), ("button", "Video"), ("button", "Start"),
            ("check box", "Always show this preview when joining")]
_TILE = ("tile", "QA Person, Computer audio unmuted, Video on")
# How the connection is told to have gone, as a text of its own.
_RECONNECTING = ("label", "Reconnecting...")


class NativeCase(MonitorCase):
    """A desktop for all tests of a class, and for each test a client with its home window."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop())

    def setUp(self):
        self.client = CallClient(self.desktop, "zoom")
        self.addCleanup(self.client.close)
        self.client.show(_HOME, *_HOME_PARTS, window="home")
        self.stream = self.startMonitor()
        self.waitUntilTrusted(self.stream)

    def meeting(self, *parts, title=_MEETING):
        """Shows the meeting window, the same one as before where there is one."""
        self.client.show(title, *parts)

    def join(self):
        """Shows a meeting with its controls and gives the first record that says joined."""
        mark = self.stream.mark()
        self.meeting(*_CONTROLS)
        return self.waitForState(self.stream, "joined", mark)

    def statesSince(self, mark):
        """Gives the states of the call's records since the mark without repetitions."""
        states = [record["state"] for record in self.stream.observations(mark)]
        return [state for at, state in enumerate(states) if at == 0 or states[at - 1] != state]

    def assertNoCall(self, since=0):
        """Asserts that whole cycles from now on tell of no call, and none since the mark did."""
        self.stream.waitForCycles(3, self.stream.mark())
        self.assertEqual(self.stream.observations(since), [])


class TheCourseOfANativeCall(NativeCase):
    """What opens a call in a native client, what leaves it in doubt and what ends it."""

    def test_the_controls_of_a_meeting_window_open_a_call_that_its_first_record_names(self):
        record = self.join()
        self.assertRegex(record["callKey"], rf"\Azoom:native-{_UUID}\Z")
        expected = {"version": 1, "source": "native", "provider": "zoom", "state": "joined",
                    "sequence": 1, "title": _MEETING, "mediaActive": True,
                    "callKey": f"zoom:native-{record['sessionId']}",
                    "applicationBundleId": _BUNDLE,
                    "screenWindowId": self.client.windowNumber(_MEETING)}
        self.assertEqual({name: record.get(name) for name in expected}, expected)
        self.stream.waitForCycles(3)
        self.assertOneSession(self.stream.observations())

    def test_windows_that_show_no_call_open_none(self):
        cases = {
            "the home window alone": None,
            "a preview": (_MEETING, _PREVIEW),
            "a preview that can be joined":
                (_MEETING, [("button", "Mute"), ("button", "Stop Video"), ("button", "Join")]),
            "a waiting room":
                (_MEETING, [("label", "Please wait, the meeting host will let you in soon."),
                            ("button", "Leave")]),
            "a meeting without toolbar and tiles": (_MEETING, [("label", "QA Person")]),
            "a meeting that still connects": (_MEETING, [("label", "Connecting…"), _TILE]),
            "a tile in a window of another title": ("Zoom Meeting  40 minutes", [_TILE]),
            "the text of a tile on a label": (_MEETING, [("label", _TILE[1])]),
            "a tile that tells nothing of computer audio": (_MEETING, [("tile", "QA Person")]),
            "a leave button that cannot be pressed":
                (_MEETING, [("disabled button", "Leave"), ("button", "Mute")]),
            "controls among the messages of a list": (_MEETING, [("list", _CONTROLS)]),
        }
        for name, shown in cases.items():
            with self.subTest(name):
                if shown is not None:
                    self.meeting(*shown[1], title=shown[0])
                self.assertNoCall()
        self.join()

    def test_a_tile_alone_opens_a_call_in_a_meeting_window(self):
        for title in (_MEETING, "zoom  MEETING"):
            for tile in ("QA Person, Computer audio unmuted",
                         "coordinator, Computer audio muted, Video off"):
                with self.subTest(title=title, tile=tile):
                    mark = self.stream.mark()
                    self.meeting(("tile", tile), title=title)
                    record = self.waitForState(self.stream, "joined", mark, sequence=1)
                    # What the person's own devices do, a tile does not tell.
                    self.assertFalse(record["mediaActive"])
                    self.assertStatesSince(self.stream, mark, "joined", cycles=2)
                    mark = self.stream.mark()
                    self.client.destroy(title)
                    self.waitForState(self.stream, "left", mark)

    def test_a_call_in_doubt_is_unknown_and_goes_on_as_the_same_call(self):
        self.join()
        cases = {
            "no toolbar and no tile": ([("label", "QA Person")], "unknown"),
            "a tile instead of the toolbar": ([_TILE], "joined"),
            "reconnecting": ([_RECONNECTING], "unknown"),
            "controls while reconnecting": ([_RECONNECTING, *_CONTROLS], "joined"),
            "a tile while reconnecting": ([_RECONNECTING, _TILE], "unknown"),
            "controls in the most parts that are read":
                ([*_CONTROLS, *[("label", f"Person {n}") for n in range(97)]], "joined"),
            "controls in more parts than are read":
                ([*_CONTROLS, *[("label", f"Person {n}") for n in range(98)]], "unknown"),
            "a notice that is an ordinary text": ([("label", "You left the meeting")], "unknown"),
            "an ending of another client's":
                ([("heading", "You’ve ended the meeting for everyone")], "unknown"),
            "the controls again": (_CONTROLS, "joined"),
        }
        for name, (parts, state) in cases.items():
            with self.subTest(name):
                self.meeting(*parts)
                # The first cycle to end may have begun while the window was being changed.
                self.stream.waitForCycles(1)
                self.assertStatesSince(self.stream, self.stream.mark(), state, cycles=1)
        self.assertOneSession(self.stream.observations())

    def test_media_is_active_exactly_while_both_devices_can_be_turned_off(self):
        self.join()
        # Each row differs from the one before it in the expected flag.
        rows = [(("Unmute", "Stop Video"), False), (("Mute", "Stop Video"), True),
                (("Mute", "Start Video"), False), (("Mute my microphone", "Stop my video"), True),
                (("Mute", "Stop Video", "Join Audio"), False)]
        for labels, expected in rows:
            with self.subTest(labels=labels):
                mark = self.stream.mark()
                self.meeting(*[("button", label) for label in labels], ("button", "Leave"))
                self.waitForState(self.stream, "joined", mark, mediaActive=expected)
        self.assertOneSession(self.stream.observations())

    def test_a_closed_meeting_window_ends_the_call_in_the_second_cycle(self):
        self.join()
        mark = self.stream.mark()
        self.client.destroy(_MEETING)
        self.waitForState(self.stream, "left", mark)
        told = [record["state"] for record in self.stream.observations(mark)]
        self.assertEqual(told[told.index("unknown"):], ["unknown", "left"])
        mark = self.stream.mark()
        self.assertNoCall(mark)
        self.assertOneSession(self.stream.observations())

    def test_a_meeting_window_that_is_only_hidden_ends_nothing(self):
        self.join()
        mark = self.stream.mark()
        self.client.hide(_MEETING)
        self.waitForState(self.stream, "unknown", mark)
        self.assertStatesSince(self.stream, self.stream.mark(), "unknown", cycles=4)
        mark = self.stream.mark()
        self.meeting(*_CONTROLS)
        self.waitForState(self.stream, "joined", mark)
        self.assertOneSession(self.stream.observations())

    def test_a_notice_ends_the_call_at_once_while_its_window_stays(self):
        notices = [("heading", "The host has ended this meeting."),
                   ("notification", "This meeting has been ended by host"),
                   ("heading", "You left the meeting")]
        for notice in notices:
            with self.subTest(notice=notice):
                mark = self.stream.mark()
                self.join()
                self.meeting(notice, ("button", "OK"))
                self.waitForState(self.stream, "left", mark)
                # A cycle that met the window in the middle of its change is the only other word.
                told = [record["state"] for record in self.stream.observations(mark)]
                self.assertLessEqual(told.count("unknown"), 1)
                self.assertIn(self.statesSince(mark),
                              (["joined", "left"], ["joined", "unknown", "left"]))
                self.assertOneSession(self.stream.observations(mark))
                mark = self.stream.mark()
                self.assertNoCall(mark)

    def test_a_client_that_quits_ends_its_call(self):
        self.join()
        mark = self.stream.mark()
        self.client.quit()
        record = self.waitForState(self.stream, "left", mark)
        # The name that the call was opened with outlives the process; a window number does not.
        self.assertEqual(record.get("applicationBundleId"), _BUNDLE)
        self.assertNotIn("screenWindowId", record)
        self.assertOneSession(self.stream.observations())

    def test_the_next_meeting_in_the_same_client_is_another_call(self):
        first = self.join()
        self.client.destroy(_MEETING)
        self.waitForState(self.stream, "left")
        mark = self.stream.mark()
        again = self.join()
        self.assertNotEqual(again["sessionId"], first["sessionId"])
        self.assertNotEqual(again["callKey"], first["callKey"])
        self.stream.waitForCycles(2)
        self.assertOneSession(self.stream.observations(mark))


class TheNativeClientInFront(NativeCase):
    """What is told of a native client that is in front."""

    def waitForClient(self, since=0, **fields):
        """Waits for a client record whose fields are as given."""
        return self.stream.waitFor(
            f"a client record with {fields}",
            lambda record: isClient(record) and
            all(record[name] == value for name, value in fields.items()), since)

    def test_a_preview_in_front_is_a_lobby_under_one_key_of_its_own(self):
        self.meeting(*_PREVIEW)
        self.client.bringToFront(_MEETING)
        record = self.waitForClient(lobby=True)
        expected = {"provider": "zoom", "state": "active", "mediaActive": False,
                    "pid": self.client.pid, "applicationBundleId": _BUNDLE}
        self.assertEqual({name: record.get(name) for name in expected}, expected)
        self.assertRegex(record["key"], rf"\Azoom:lobby-{_UUID}\Z")
        mark = self.stream.mark()
        # Another key would be told at once.
        self.stream.waitForCycles(4, mark)
        self.assertEqual([each for each in self.stream.records(mark) if isClient(each)], [])
        self.assertEqual(self.stream.observations(), [])

    def test_which_windows_are_a_lobby(self):
        buttons = lambda *labels: [("button", label) for label in labels]
        # Each row differs from the one before it in the expected flag.
        rows = [
            (_PREVIEW, True),
            (buttons("Audio", "Video", "Start"), False),
            (buttons("Audio", "Video", "Join"), True),
            (buttons("Audio", "Video", "End"), False),
            (buttons("Mute", "Stop Video", "Join Meeting (Enter)"), True),
            (buttons("Mute", "Stop Video", "Join", "Leave"), False),
            (buttons("Unmute", "Start Video", "Join now"), True),
            ([("label", "Audio"), ("label", "Video"), ("button", "Join")], False),
        ]
        self.meeting(*_PREVIEW)
        self.client.bringToFront(_MEETING)
        for parts, expected in rows:
            with self.subTest(parts=parts):
                mark = self.stream.mark()
                self.meeting(*parts)
                self.stream.waitFor(
                    f"a scan with lobby {expected}", lambda record: isClientScan(record) and
                    record["stage"] == "complete" and record["lobby"] is expected, mark)
                # A client that is still told as before, under the same key, is not told again.
                key = rf"zoom:lobby-{_UUID}" if expected else f"zoom:pid-{self.client.pid}"
                self.stream.waitFor(
                    f"a client record with lobby {expected}", lambda record: isClient(record) and
                    record["lobby"] is expected and re.fullmatch(key, record["key"]))

    def test_a_meeting_in_front_has_media_as_its_controls_say(self):
        self.join()
        self.client.bringToFront(_MEETING)
        key = f"zoom:pid-{self.client.pid}"
        record = self.waitForClient(key=key, mediaActive=True)
        self.assertEqual((record["lobby"], record["provider"]), (False, "zoom"))
        mark = self.stream.mark()
        self.meeting(("button", "Unmute"), ("button", "Stop Video"), ("button", "Leave"))
        self.waitForClient(mark, key=key, mediaActive=False, lobby=False)

    def test_the_home_window_in_front_is_a_client_without_lobby_and_media(self):
        self.client.bringToFront(_HOME)
        record = self.waitForClient()
        expected = {"provider": "zoom", "key": f"zoom:pid-{self.client.pid}", "lobby": False,
                    "mediaActive": False, "applicationBundleId": _BUNDLE}
        self.assertEqual({name: record.get(name) for name in expected}, expected)
        scan = self.stream.waitFor("a scan of the home window", lambda each: isClientScan(each) and
                                   each["stage"] == "complete")
        self.assertEqual((scan["provider"], scan["join"], scan["audio"]), ("zoom", True, False))
        self.assertNoCall()

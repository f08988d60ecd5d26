"""The look at the one application in front, as the stream tells of it."""

import json
import os
import signal

from accessibility_tree import AccessibilityTree, windowsOf
from live_case import CallCase
from story import CALL_ADDRESS, CALL_KEY, LANDING_ADDRESS
from stream import Stream, isClient, isClientScan, isHealth, isObservation
from text_editor import TextEditor
from waiting import waitUntil

_CLIENT_KEYS = {"type", "version", "provider", "key", "state", "mediaActive", "lobby", "pid",
                "observedAt", "applicationBundleId"}
_BARE_SCAN_KEYS = {"type", "version", "stage", "observedAt"}
_FULL_SCAN_KEYS = _BARE_SCAN_KEYS | {
    "provider", "nodes", "failedNodes", "failedAttributes", "failedControlHints", "deadline",
    "truncated", "audio", "video", "join", "start", "previewOption", "lobby"}

# The stages of a look that the browser did not answer in time, as happens on a busy machine.
_FAILED_READINGS = {"no-focused-window", "incomplete"}
# How often a look at an unchanged desktop is repeated because readings failed.
_ATTEMPTS = 5

# Milliseconds within which a record may not follow a like one.
_SCAN_GAP = 1000
_SCAN_REPEAT = 30_000
_CLIENT_REPEAT = 60_000
# A record carries the wall-clock time at which it was built; the gate takes the time of another
# clock, a little later. The process may be made to wait in between.
_CLOCK_SLACK = 50


class LookCase(CallCase):
    """A browser with a tab that stands in the lobby, and no monitor yet.

    What a test brings to the front before it starts its monitor is what the first record is about.
    """

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # A browser puts its pages into the accessibility tree only once somebody asks for them.
        with Stream(cls.desktop.processes, cls.desktop.environment) as stream:
            stream.waitFor("the monitor reads the page", isClient)

    def setUp(self):
        self.tree = AccessibilityTree(self.desktop)
        self.show(CALL_ADDRESS, "Join now")
        self.bringBrowserToFront()

    def show(self, address, text):
        """Loads a page and waits until the accessibility tree has it with a text that it shows."""
        self.tab.navigate(address)
        waitUntil(f"the tree has the page {address} and no other",
                  lambda: self.tree.addresses(self.frame()) == [address])
        self.waitForText(text)

    def bringBrowserToFront(self):
        windows = windowsOf(self.desktop, self.browser.pid)
        self.assertEqual(len(windows), 1)
        self.desktop.bringToFront(*windows)

    def startEditor(self):
        """Gives a text editor in front, which ends with the test."""
        editor = TextEditor(self.desktop)
        self.addCleanup(editor.close)
        self.desktop.bringToFront(editor.window)
        return editor

    def startMonitor(self):
        """Gives the stream of a monitor; all of it is checked against the gates in the end."""
        stream = super().startMonitor()
        self.addCleanup(lambda: self.assertGates(stream.records()))
        return stream

    def waitForClient(self, stream, since=0, **fields):
        return stream.waitFor(
            f"a client record with {fields}",
            lambda record: isClient(record) and
            all(record[name] == value for name, value in fields.items()), since)

    def waitForStage(self, stream, stage, since=0):
        return stream.waitFor(
            f"a scan of the client says {stage}",
            lambda record: isClientScan(record) and record["stage"] == stage, since)

    def clients(self, stream, since=0):
        return [record for record in stream.records(since) if isClient(record)]

    def scans(self, stream, since=0):
        return [record for record in stream.records(since) if isClientScan(record)]

    def assertNothingFurther(self, stream, cycles=5):
        """Asserts that some whole cycles from now on tell nothing of clients and their scans.

        No client is told at all. Cycles in which a reading failed say so, and so does the next one
        that succeeds; then as many further cycles are waited for.
        """
        mark = stream.mark()
        for _ in range(_ATTEMPTS):
            settled = stream.mark()
            stream.waitForCycles(cycles + 1, settled)
            self.assertEqual(self.clients(stream, mark), [])
            told = self.scans(stream, settled)
            before = self.scans(stream)[:-len(told) or None][-1:]
            if not any(record["stage"] in _FAILED_READINGS for record in before + told):
                self.assertEqual(told, [])
                return
        self.fail(f"readings failed in each of {_ATTEMPTS} attempts: {self.scans(stream, mark)}")

    def assertGates(self, records):
        """Asserts what holds of every stream, whatever happens on the desktop."""
        last = None
        for record in filter(isClientScan, records):
            if last is not None:
                gap = record["observedAt"] - last["observedAt"]
                unchanged = _signature(record) == _signature(last)
                least = _SCAN_REPEAT if unchanged else _SCAN_GAP
                self.assertGreaterEqual(gap, least - _CLOCK_SLACK, (last, record))
            last = record
        told = {}
        for record in filter(isClient, records):
            last = told.get(record["key"])
            flags = record["mediaActive"], record["lobby"]
            if last is not None and flags == (last["mediaActive"], last["lobby"]):
                self.assertGreaterEqual(record["observedAt"] - last["observedAt"],
                                        _CLIENT_REPEAT - _CLOCK_SLACK, (last, record))
            told[record["key"]] = record


class TheClientInFront(LookCase):
    """What is told of the application in front, and when it is not told."""

    def test_a_lobby_in_front_is_a_client_that_waits_without_media(self):
        stream = self.startMonitor()
        record = self.waitForClient(stream)
        expected = {"type": "client", "version": 1, "provider": "meet", "key": CALL_KEY,
                    "state": "active", "mediaActive": False, "lobby": True,
                    "pid": self.browser.pid, "applicationBundleId": "com.google.Chrome"}
        self.assertEqual({name: record.get(name) for name in expected}, expected)
        self.assertEqual(set(record), _CLIENT_KEYS)
        for name in ("version", "pid"):
            self.assertIs(type(record[name]), int)
        # Devices that are on mean no media as long as nobody has joined.
        self.assertIn("Turn off microphone (ctrl + d)", self.tree.texts(self.frame()))
        self.assertNothingFurther(stream, cycles=3)

    def test_a_call_in_front_has_media_exactly_while_both_devices_can_be_turned_off(self):
        stream = self.startMonitor()
        self.waitForClient(stream, lobby=True)
        mark = stream.mark()
        self.tab.evaluate("show('call')")
        record = self.waitForClient(stream, mark, lobby=False, mediaActive=True)
        self.assertEqual((record["key"], record["pid"]), (CALL_KEY, self.browser.pid))
        # Each row differs from the one before it in the expected flag.
        rows = [("true", "false", False), ("true", "true", True), ("false", "true", False),
                ("true", "true", True), ("false", "false", False), ("true", "true", True)]
        for microphone, camera, expected in rows:
            with self.subTest(microphone=microphone, camera=camera):
                mark = stream.mark()
                self.tab.evaluate(f"turn('microphone', {microphone}); turn('camera', {camera})")
                self.waitForState(stream, "joined", mark, mediaActive=expected)
                self.waitForClient(stream, mark, mediaActive=expected)
                stream.waitForCycles(2)
                self.assertToldAtOnce(stream, mark, expected)

    def assertToldAtOnce(self, stream, mark, expected):
        """Asserts that one client record since the mark tells the flag, and without delay.

        It is due in the cycle that first tells the flag of the call. On a busy machine the reading
        of that cycle may fail, so two further ones may pass.
        """
        records = stream.records(mark)
        call = next(i for i, record in enumerate(records)
                    if isObservation(record) and record["mediaActive"] is expected)
        client = next(i for i, record in enumerate(records) if isClient(record))
        self.assertLessEqual(len(list(filter(isHealth, records[call:client]))), 2)
        self.assertEqual([(record["mediaActive"], record["lobby"])
                          for record in filter(isClient, records)], [(expected, False)])

    def test_a_text_editor_in_front_is_no_client(self):
        editor = self.startEditor()
        stream = self.startMonitor()
        record = self.waitForStage(stream, "no-front-provider")
        self.assertEqual(set(record), _BARE_SCAN_KEYS)
        self.assertEqual(record["version"], 1)
        self.assertNothingFurther(stream, cycles=3)
        self.assertEqual(self.scans(stream), [record])
        self.assertEqual(self.clients(stream), [])
        self.assertEqual(self.desktop.activeWindow(), editor.window)

    def test_a_browser_with_an_ordinary_page_in_front_is_no_client_whatever_the_page_shows(self):
        # The same page under the address of no meeting host.
        address = f"https://127.0.0.1:{self.pages.port}/"
        self.show(address, "New meeting")
        stream = self.startMonitor()
        record = self.waitForStage(stream, "no-provider-surface")
        self.assertEqual(set(record), _BARE_SCAN_KEYS)
        for screen, text in (("landing", "New meeting"), ("lobby", "Join now"),
                             ("call", "Leave call")):
            with self.subTest(screen=screen):
                self.tab.evaluate(f"show('{screen}')")
                self.waitForText(text)
                self.assertEqual(self.tree.addresses(self.frame()), [address])
                self.assertNothingFurther(stream, cycles=2)
        self.assertEqual({each["stage"] for each in self.scans(stream)} - _FAILED_READINGS,
                         {"no-provider-surface"})
        self.assertEqual(self.clients(stream), [])

    def test_a_landing_page_in_front_is_a_client_without_lobby_or_media(self):
        self.show(LANDING_ADDRESS, "New meeting")
        stream = self.startMonitor()
        record = self.waitForClient(stream)
        expected = {"provider": "meet", "key": "meet:meet.google.com", "state": "active",
                    "mediaActive": False, "lobby": False, "pid": self.browser.pid}
        self.assertEqual({name: record[name] for name in expected}, expected)
        stream.waitForCycles(3)
        self.assertEqual(stream.observations(), [])
        self.assertEqual(self.clients(stream), [record])

    def test_a_browser_in_the_background_is_no_client_while_its_call_goes_on(self):
        stream = self.startMonitor()
        self.tab.evaluate("show('call')")
        self.waitForClient(stream, mediaActive=True)
        self.startEditor()
        self.waitForStage(stream, "no-front-provider")
        mark = stream.mark()
        # In front, this change would be told at once.
        self.tab.evaluate("turn('camera', false)")
        self.waitForState(stream, "joined", mark, mediaActive=False)
        self.assertStatesSince(stream, mark, "joined", cycles=5)
        self.assertEqual(self.clients(stream, mark) + self.scans(stream, mark), [])
        self.assertOneSession(stream.observations())
        mark = stream.mark()
        self.bringBrowserToFront()
        record = self.waitForClient(stream, mark)
        self.assertEqual((record["mediaActive"], record["lobby"]), (False, False))


class TheGatesOfTheLook(LookCase):
    """How often the same is told, and in what order."""

    def test_the_scan_of_a_client_comes_before_the_client(self):
        stream = self.startMonitor()
        self.waitForClient(stream, lobby=True)
        self.tab.evaluate("show('call')")
        self.waitForClient(stream, lobby=False)
        cycle, both = [], 0
        for record in stream.records():
            cycle.append(record)
            if not isHealth(record):
                continue
            kinds = [each["type"] for each in cycle if isClient(each) or isClientScan(each)]
            self.assertIn(kinds, ([], ["client"], ["client-scan"], ["client-scan", "client"]))
            both += len(kinds) == 2
            cycle = []
        self.assertGreaterEqual(both, 1)
        first = next(record for record in stream.records() if isClientScan(record))
        self.assertEqual((first["stage"], first["provider"]), ("complete", "meet"))

    def test_a_complete_scan_tells_what_it_saw(self):
        stream = self.startMonitor()
        record = self.waitForStage(stream, "complete")
        self.assertEqual(set(record), _FULL_SCAN_KEYS)
        expected = {"provider": "meet", "audio": True, "video": True, "join": True,
                    "start": False, "previewOption": False, "lobby": True, "deadline": False,
                    "truncated": False}
        self.assertEqual({name: record[name] for name in expected}, expected)

    def test_an_unchanged_client_and_its_scan_are_told_once_and_a_change_at_once(self):
        stream = self.startMonitor()
        self.waitForClient(stream, lobby=True)
        self.waitForStage(stream, "complete")
        self.assertNothingFurther(stream)
        self.assertEqual(len(self.clients(stream)), 1)
        mark = stream.mark()
        self.tab.evaluate("show('call')")
        self.waitForClient(stream, mark, lobby=False, mediaActive=True)
        scan = stream.waitFor("a scan shows the call", lambda record: isClientScan(record) and
                              record["stage"] == "complete" and not record["lobby"], mark)
        self.assertEqual((scan["audio"], scan["video"], scan["join"]), (True, True, False))
        # A scan may have met the page in the middle of its change; the next may be kept back.
        stream.waitForCycles(4)
        self.assertNothingFurther(stream)

    def test_an_unchanged_stage_is_told_once_and_a_change_at_once(self):
        self.startEditor()
        stream = self.startMonitor()
        self.waitForStage(stream, "no-front-provider")
        self.assertNothingFurther(stream)
        mark = stream.mark()
        self.bringBrowserToFront()
        self.waitForStage(stream, "complete", mark)

    def test_a_scan_within_a_second_of_the_last_is_kept_back_even_if_it_differs(self):
        stream = self.startMonitor()
        self.waitForClient(stream)
        for _ in range(4):
            # A cycle that waits for a hung browser tells of it late, and the next one early.
            mark = stream.mark()
            os.kill(self.browser.pid, signal.SIGSTOP)
            try:
                self.waitForStage(stream, "no-focused-window", mark)
            finally:
                mark = stream.mark()
                os.kill(self.browser.pid, signal.SIGCONT)
            self.waitForStage(stream, "complete", mark)
        stages = [record["stage"] for record in self.scans(stream)]
        self.assertGreaterEqual(stages.count("no-focused-window"), 4, stages)
        self.assertGates(stream.records())


def _signature(record):
    """What makes a scan differ from the last; not the time, nor how many elements it visited."""
    return json.dumps({name: value for name, value in record.items()
                       if name not in ("observedAt", "nodes", "failedNodes")}, sort_keys=True)

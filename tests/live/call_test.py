"""One call in a real browser, as the stream tells of it."""

import re
import time

from accessibility_tree import windowsOf
from live_case import CallCase
from story import CALL_KEY
from stream import isHealth, isObservation
from waiting import waitUntil

_UUID = re.compile(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\Z")


class TheRecordOfACall(CallCase):
    """What a record says and in what form."""

    def test_the_first_record_of_a_call_names_it_in_full(self):
        self.join(self.stream, self.tab)
        first = self.stream.observations()[0]
        title = self.tree.name(self.frame())
        self.assertIn("abc-defg-hij", title)
        expected = {"version": 1, "source": "native", "provider": "meet", "callKey": CALL_KEY,
                    "state": "joined", "sequence": 1, "title": title, "mediaActive": True,
                    "applicationBundleId": "com.google.Chrome"}
        self.assertEqual({name: first.get(name) for name in expected}, expected)
        self.assertRegex(first["sessionId"], _UUID)
        self.assertEqual(set(first), {*expected, "sessionId", "observedAt", "screenWindowId"})

    def test_the_window_number_is_the_number_of_the_x11_window(self):
        record = self.join(self.stream, self.tab)
        windows = windowsOf(self.desktop, self.browser.pid)
        self.assertEqual(len(windows), 1)
        self.assertIs(type(record["screenWindowId"]), int)
        self.assertEqual([record["screenWindowId"]], list(windows))
        self.assertEqual([record["title"]], list(windows.values()))

    def test_records_carry_the_time_in_milliseconds(self):
        before = time.time() * 1000
        record = self.join(self.stream, self.tab)
        self.assertLessEqual(before, record["observedAt"])
        self.assertLessEqual(record["observedAt"], time.time() * 1000)

    def test_a_call_keeps_its_session_and_counts_its_records_without_gaps(self):
        self.join(self.stream, self.tab)
        self.stream.waitForCycles(4)
        self.assertOneSession(self.stream.observations())

    def test_every_cycle_tells_of_the_call_once_and_ends_in_one_health_record(self):
        mark = self.stream.mark()
        self.join(self.stream, self.tab)
        self.stream.waitForCycles(4)
        records = [record for record in self.stream.records(mark)
                   if isHealth(record) or isObservation(record)]
        first = next(i for i, record in enumerate(records) if isObservation(record))
        last = max(i for i, record in enumerate(records) if isHealth(record))
        kinds = ["health" if isHealth(record) else "call" for record in records[first:last + 1]]
        self.assertEqual(kinds, ["call", "health"] * (len(kinds) // 2))
        self.assertEqual({record["trusted"] for record in records if isHealth(record)}, {True})

    def test_every_line_is_compact_json_of_version_1_with_escaped_slashes(self):
        self.join(self.stream, self.tab)
        mark = self.stream.mark()
        self.tab.evaluate("document.title = 'Meet / abc-defg-hij'")
        self.stream.waitFor("the title has a slash",
                            lambda record: "/" in record.get("title", ""), mark)
        self.tab.evaluate("show('left')")
        self.waitForState(self.stream, "left", mark)
        for line in self.stream.lines:
            text = line.raw.decode("utf-8")
            self.assertTrue(text.endswith("\n"))
            self.assertNotRegex(re.sub(r'"(\\.|[^"\\])*"', '""', text[:-1]), r"\s")
            self.assertNotRegex(text, r"(?<!\\)/")
            self.assertIs(type(line.record), dict)
            self.assertIs(type(line.record["version"]), int)
            self.assertEqual(line.record["version"], 1)
        self.assertTrue(any(b"\\/" in line.raw for line in self.stream.lines))


class TheCourseOfACall(CallCase):
    """What opens a call, what changes it and what ends it."""

    def test_a_landing_page_opens_no_call(self):
        self.tab.evaluate("show('landing')")
        self.waitForText("New meeting")
        self.assertTellsOfNoCall()

    def test_a_lobby_opens_no_call_whatever_its_devices_do(self):
        self.waitForText("Join now")
        self.assertTellsOfNoCall()
        self.tab.evaluate("turn('microphone', false); turn('camera', false)")
        self.waitForText("Turn on microphone (ctrl + d)")
        self.assertTellsOfNoCall()

    def test_media_is_active_exactly_while_both_devices_can_be_turned_off(self):
        self.join(self.stream, self.tab)
        # Each row differs from the one before it in the expected flag, so that none can be
        # answered by a record of the row before.
        rows = [("true", "true", True), ("true", "false", False), ("true", "true", True),
                ("false", "true", False), ("true", "true", True), ("false", "false", False),
                ("true", "true", True)]
        for microphone, camera, expected in rows:
            with self.subTest(microphone=microphone, camera=camera):
                mark = self.stream.mark()
                self.tab.evaluate(f"turn('microphone', {microphone}); turn('camera', {camera})")
                self.waitForState(self.stream, "joined", mark, mediaActive=expected)
                settled = self.stream.mark()
                self.stream.waitForCycles(2, settled)
                flags = {record["mediaActive"] for record in self.stream.observations(settled)}
                self.assertEqual(flags, {expected})
        self.assertOneSession(self.stream.observations())

    def test_the_notice_ends_the_call_once_and_nothing_of_it_follows(self):
        session = self.join(self.stream, self.tab)["sessionId"]
        mark = self.stream.mark()
        self.tab.evaluate("show('left')")
        self.waitForState(self.stream, "left", mark, sessionId=session, mediaActive=False)
        self.stream.waitForCycles(3)
        observations = self.stream.observations()
        self.assertOneSession(observations)
        self.assertEqual([record["state"] for record in observations].count("left"), 1)
        self.assertEqual(observations[-1]["state"], "left")
        self.assertNotIn("screenWindowId", observations[-1])

    def test_joining_again_opens_another_session_from_1(self):
        first = self.join(self.stream, self.tab)
        self.tab.evaluate("show('left')")
        self.waitForState(self.stream, "left")
        mark = self.stream.mark()
        again = self.join(self.stream, self.tab)
        self.assertNotEqual(again["sessionId"], first["sessionId"])
        self.assertEqual(again["callKey"], first["callKey"])
        self.assertOneSession(self.stream.observations(mark))

    def test_a_change_to_a_landing_page_keeps_the_identity_of_the_call(self):
        first = self.join(self.stream, self.tab)
        for path in ("/landing", "/home", "/", "/meet/landing"):
            with self.subTest(path=path):
                address = f"https://meet.google.com{path}"
                mark = self.stream.mark()
                self.tab.evaluate(f"route('{path}', 'Google Meet at {path}')")
                waitUntil(f"the tree gives the address {address}",
                          lambda: self.tree.addresses(self.frame()) == [address])
                self.waitForState(self.stream, "joined", mark, callKey=CALL_KEY,
                                  title=self.tree.name(self.frame()))
                settled = self.stream.mark()
                self.assertStatesSince(self.stream, settled, "joined")
        self.tab.evaluate("show('left')")
        self.waitForState(self.stream, "left", sessionId=first["sessionId"])
        self.assertOneSession(self.stream.observations())

    def test_a_landing_page_with_the_controls_of_a_call_opens_no_call(self):
        self.tab.evaluate("route('/landing', 'Google Meet'); show('call')")
        self.waitForText("Leave call")
        self.assertTellsOfNoCall()

    def test_a_tab_in_the_background_is_unknown_and_its_call_goes_on_in_front(self):
        self.join(self.stream, self.tab)
        mark = self.stream.mark()
        other = self.browser.openTab("about:blank")
        try:
            self.waitForState(self.stream, "unknown", mark)
            settled = self.stream.mark()
            self.assertStatesSince(self.stream, settled, "unknown")
        finally:
            mark = self.stream.mark()
            self.browser.closeTab(other)
        self.waitForState(self.stream, "joined", mark)
        self.assertOneSession(self.stream.observations())

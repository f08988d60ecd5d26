"""What a scan of a real page finds and what it asks, read ahead and one read at a time."""

import contextlib
import os
import signal

from accessibility_tree import AccessibilityTree
from live_case import BrowserCase, DesktopCase
from page_scanner import PageScanner
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS, LANDING_ADDRESS
from waiting import waitUntil

_LAST = "The end of the page"
_MIXED = """
const items = (count, name) => Array.from(
    {length: count}, (_, i) => `<li>${name} ${i} <button>Leave call</button></li>`).join('');
const nested = depth => depth
    ? `<div role="group" aria-label="Level ${depth}">${nested(depth - 1)}<p>Text ${depth}</p></div>`
    : '<button>The deepest button</button>';
document.title = 'A mixed page';
document.body.innerHTML = `
  <h1>A mixed page</h1>
  <button>Leave call</button><button aria-pressed="true">Turn off microphone</button>
  <button aria-haspopup="menu">More actions</button>
  <div role="alert">Reconnecting...</div>
  <ul aria-label="Kept list">${items(30, 'Item')}</ul>
  <div role="group" aria-label="Meeting chat"><p>Chat words</p><button>Chat button</button>
    <input aria-label="Chat input" value="chat value"></div>
  <input aria-label="Your name" value="A value">
  <textarea aria-label="Notes">Several words</textarea>
  <input type="password" aria-label="Secret" value="secret">
  <select aria-label="Choice"><option>One</option><option>Two</option></select>
  <table aria-label="Kept table"><tr><th>Heading</th><th>Another</th></tr>
    <tr><td>Cell <button>Cell button</button></td><td>Further</td></tr></table>
  <div aria-hidden="true"><button>Hidden button</button></div>
  <div style="display:none"><button>Undisplayed button</button></div>
  ${nested(25)}
  <div role="group" aria-label="Wide">${Array.from({length: 130},
      (_, i) => `<button>Wide ${i}</button>`).join('')}</div>
  <iframe title="A frame" srcdoc="<p>Inside the frame</p><button>Frame button</button>"></iframe>
  <p>The end of the page</p>`;
true
"""
_EXCLUDED = ("Kept list", "Meeting chat", "Kept table", "Your name", "Notes", "Secret")
_CANNOT_COMPLETE = "AXRole:-25204"


class PageScanCase(BrowserCase):
    """A browser whose page and whose scanner each test has for itself."""

    def setUp(self):
        self.scanner = self.enterContext(PageScanner(self.desktop, self.browser.pid))
        self.tree = AccessibilityTree(self.desktop)

    def waitForPage(self, text):
        """Waits until a text of the page stands in the tree, with all its elements behind it."""
        self.scanner.ask("search")  # opens the tree of the page
        counted = [None]

        def settled():
            texts = [text for frame in self.tree.frames(self.browser.pid)
                     for text in self.tree.texts(frame)]
            before, counted[0] = counted[0], texts
            return text in texts and texts == before

        waitUntil(f"the tree holds {text!r} and stands still", settled)
        self.scanner.ask("search")  # finds the page as it stands now

    def showCall(self):
        """Shows the screen of a call."""
        self.tab.navigate(CALL_ADDRESS)
        self.tab.evaluate("show('call')")
        self.waitForPage("Leave call")

    def showMixed(self):
        """Shows a page with a little of everything."""
        self.tab.navigate(LANDING_ADDRESS)
        self.tab.evaluate(_MIXED)
        self.waitForPage(_LAST)

    def scans(self):
        """Gives the answer to "pages" for the page that was shown."""
        pages = self.scanner.ask("pages")["pages"]
        self.assertEqual(len(pages), 1)
        return pages[0]

    def assertSameBothWays(self, page):
        """Asserts that both walks found the same in the same order, and at least something."""
        self.assertEqual(page["ahead"], page["single"])
        self.assertEqual(page["takenAhead"], page["taken"])
        self.assertGreater(page["single"]["nodes"], 5)

    def assertAskedAfterItsParent(self, page):
        """Asserts that elements are asked only after their parents' children were."""
        known = {page["root"]}
        asked = {page["root"]}
        for path, member in page["messages"]:
            if member == "GetApplicationBusAddress":
                continue
            self.assertIn(path, known, f"{member} before the parent's children")
            asked.add(path)
            if member == "GetChildren":
                known.update(child for child, parent in page["parents"].items() if parent == path)
        self.assertEqual(asked, set(page["taken"]))


class WhatAScanFinds(PageScanCase):
    """The same evidence whichever way a page is read."""

    def test_a_call_page_shows_the_same_both_ways(self):
        self.showCall()
        page = self.scans()
        self.assertSameBothWays(page)
        self.assertTrue(page["ahead"]["complete"])
        self.assertIn("Leave call", page["ahead"]["controls"])
        self.assertAskedAfterItsParent(page)

    def test_a_page_of_every_kind_shows_the_same_both_ways(self):
        self.showMixed()
        page = self.scans()
        self.assertSameBothWays(page)
        evidence = page["ahead"]
        self.assertTrue(evidence["truncated"], "one element has more than 100 children")
        self.assertEqual(evidence["controls"].count("Leave call"), 1, "those in the list are out")
        for control in ("The deepest button", "Frame button", "Wide 0", "Wide 99"):
            self.assertIn(control, evidence["controls"])
        for control in ("Hidden button", "Undisplayed button", "Chat button", "Cell button",
                        "Wide 100", "Wide 129"):
            self.assertNotIn(control, evidence["controls"])
        self.assertIn("Reconnecting...", evidence["notices"])
        self.assertEqual(evidence["failedAttributes"], [])

    def test_a_walk_that_goes_its_own_way_sees_what_it_would_have_seen(self):
        self.showMixed()
        answer = self.scanner.ask("wander")
        self.assertEqual(answer["ahead"], answer["single"])
        self.assertGreater(len(answer["single"]), 100)


class WhatAScanAsks(PageScanCase):
    """No more than a walk may ask, and not before it may."""

    def test_elements_are_asked_only_after_their_parents_children_were(self):
        self.showMixed()
        page = self.scans()
        # Of the wide element only the first 100 are walked.
        self.assertAskedAfterItsParent(page)

    def test_texts_and_children_of_excluded_elements_are_never_asked(self):
        self.showMixed()
        page = self.scans()
        asked = {}
        for path, member in page["messages"]:
            asked.setdefault(path, set()).add(member)
        for name in _EXCLUDED:
            with self.subTest(name=name):
                element = self.elementNamed(name)
                self.assertIn(element[1], asked, "the walk comes to it")
                self.assertFalse(asked[element[1]] & {"GetText", "GetChildren"})
                for below in self.tree.below(element):
                    self.assertNotIn(below[1], asked)
        self.assertTrue(list(self.tree.below(self.elementNamed("Kept list"))))
        self.assertTrue(list(self.tree.below(self.elementNamed("Meeting chat"))))

    def test_a_scan_asks_each_thing_once(self):
        self.showMixed()
        messages = [tuple(message) for message in self.scans()["messages"]]
        self.assertEqual(len(messages), len(set(messages)))

    def test_a_search_for_pages_asks_no_labels_ahead(self):
        self.showMixed()
        messages = self.scanner.ask("search")["messages"]
        count = {}
        for _, member in messages:
            count[member] = count.get(member, 0) + 1
        self.assertGreater(count["GetState"], 20)
        self.assertGreater(count["GetRole"], 20)
        self.assertNotIn("GetText", count)
        # Toggles and a few others have their role by their attributes; frames are looked at whole.
        self.assertLess(count.get("GetAll", 0), count["GetState"] / 2)

    def elementNamed(self, name):
        """The element of the page with that accessible name and something to tell."""
        found = [element for frame in self.tree.frames(self.browser.pid)
                 for element in self.tree.below(frame) if self.tree.name(element) == name]
        self.assertTrue(found, name)
        return found[0]


class ABrowserThatHangs(PageScanCase):
    """One limit a cycle, failures that say so, and no harm afterwards."""

    # Seconds: the limit of one read, and what a busy machine may add to it.
    LIMIT = 0.2
    BOUND = 0.4

    def setUp(self):
        super().setUp()
        self.showCall()
        self.whole = self.inTime()

    def inTime(self):
        """The evidence of a scan that was not cut short by a slow machine."""
        answers = []

        def whole():
            answers.append(self.scanner.ask("scan"))
            evidence = answers[-1]["evidence"]
            if evidence["complete"]:
                return evidence
            # A page that was still in the tree when it was found may have gone since.
            self.scanner.ask("search")
            return None

        try:
            return waitUntil("a scan sees the whole page", whole)
        except TimeoutError as error:
            raise TimeoutError(f"{error}; the last scan: {answers[-1]}") from error

    @contextlib.contextmanager
    def stopped(self):
        """Lets the browser run again at the end, whoever stopped it."""
        try:
            yield
        finally:
            os.kill(self.browser.pid, signal.SIGCONT)

    def assertOnlyFailures(self, evidence):
        """Asserts that the scan failed for want of answers and for nothing else."""
        self.assertFalse(evidence["complete"])
        self.assertGreater(evidence["failedNodes"], 0)
        self.assertEqual([failure for failure in evidence["failedAttributes"]
                          if not failure.endswith(":-25204")], [])
        self.assertIn(_CANNOT_COMPLETE, evidence["failedAttributes"])

    def test_a_stopped_browser_costs_a_cycle_one_limit(self):
        with self.stopped():
            os.kill(self.browser.pid, signal.SIGSTOP)
            for _ in range(3):
                answer = self.scanner.ask("scan")
                self.assertGreaterEqual(answer["seconds"], self.LIMIT - 0.01)
                self.assertLess(answer["seconds"], self.BOUND)
                self.assertEqual(answer["evidence"]["nodes"], 1)
                self.assertOnlyFailures(answer["evidence"])
        self.assertEqual(self.inTime(), self.whole)

    def test_a_browser_that_stops_before_it_was_ever_scanned_costs_one_limit_too(self):
        scanner = self.enterContext(PageScanner(self.desktop, self.browser.pid, "new-scanner"))
        # Its search is over the same connection, but as far as scans go this is the first message.
        scanner.ask("search")
        with self.stopped():
            answer = scanner.ask("scan 1")
            self.assertLess(answer["seconds"], self.BOUND)
            self.assertOnlyFailures(answer["evidence"])
        self.assertEqual(self.inTime(), self.whole)

    def test_a_browser_that_stops_in_the_middle_of_a_scan_is_not_waited_for_twice(self):
        descriptors = set()
        for number in (5, 20, 40):
            with self.subTest(number=number), self.stopped():
                answer = self.scanner.ask(f"scan {number}")
                self.assertLess(answer["seconds"], self.BOUND + 0.2)
                self.assertOnlyFailures(answer["evidence"])
                descriptors.add(answer["descriptors"])
            # The late replies of the cycle before are on their way now.
            for _ in range(3):
                self.assertEqual(self.inTime(), self.whole)
        self.assertEqual(len(descriptors), 1)

    def test_a_browser_that_ends_in_the_middle_of_a_scan_leaves_nothing_closed(self):
        browser = self.startBrowser(CALL_ADDRESS, "second-browser")
        scanner = self.enterContext(PageScanner(self.desktop, browser.pid, "second-scanner"))
        scanner.ask("search")
        waitUntil("the page can be scanned", lambda: any(
            "Join now" in self.tree.texts(frame) for frame in self.tree.frames(browser.pid)))
        scanner.ask("pages")
        answer = scanner.ask("kill 25")
        self.assertOnlyFailures(answer["evidence"])
        self.assertOnlyFailures(scanner.ask("scan")["evidence"])


class BrowsersThatComeAndGo(DesktopCase):
    """Connections go with the applications that they lead to."""

    def test_the_monitor_keeps_no_connection_to_a_browser_that_has_gone(self):
        self.desktop = self.enterContext(PrivateDesktop())
        stream = self.startMonitor()
        self.waitUntilTrusted(stream)
        stream.waitForCycles(3)
        alone = _descriptors(stream.process.pid)
        for number in range(2):
            browser = self.startBrowser(CALL_ADDRESS, f"browser-{number}")
            self.join(stream, browser.tab)
            stream.waitForCycles(2)
            self.assertGreater(_descriptors(stream.process.pid), alone)
            browser.close()
            waitUntil("the connection is closed",
                      lambda: _descriptors(stream.process.pid) <= alone)


def _descriptors(pid):
    return len(os.listdir(f"/proc/{pid}/fd"))

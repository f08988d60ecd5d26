"""What a scan of a large page costs, on a private desktop with a real browser.

    ./test                                        # builds it, among all else
    /usr/bin/python3 -B bench/large_page.py

The page has exactly 1594 accessible elements, none of which has more than 13 children but for one
with 32, so that a scan can see the whole of it:

    1     document
    8     regions, each with a heading (and its text: 16 elements) and 12 groups
    96    groups, each with 3 buttons and 6 paragraphs
    288   buttons
    1152  paragraphs and their texts
    33    one group of 32 buttons

It is five levels deep. 584 elements (37 %) are plain text, 690 (43 %) have children.
"""

import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))),
                                "tests", "live"))

from accessibility_tree import AccessibilityTree  # noqa: E402
from browser import Browser  # noqa: E402
from meeting_pages import MeetingPages  # noqa: E402
from page_scanner import BENCH, PageScanner  # noqa: E402
from private_desktop import PrivateDesktop  # noqa: E402
from processes import runTidily  # noqa: E402
from story import LANDING_ADDRESS  # noqa: E402
from waiting import waitUntil  # noqa: E402

_ELEMENTS = 1594
_LAST = "The last button"
_BUILD = """
const buttons = (count, name) => Array.from(
    {length: count}, (_, i) => `<button>${name} ${i}</button>`).join('');
const lines = (count, name) => Array.from(
    {length: count}, (_, i) => `<p>Line ${i} of ${name}, as long as lines are</p>`).join('');
const group = (r, g) => `<div role="group" aria-label="Group ${r}.${g}">` +
    buttons(3, `Button ${r}.${g}`) + lines(6, `group ${r}.${g}`) + '</div>';
const region = r => `<section aria-label="Region ${r}"><h2>Region number ${r}</h2>` +
    Array.from({length: 12}, (_, g) => group(r, g)).join('') + '</section>';
document.title = 'A large page';
document.body.innerHTML = Array.from({length: 8}, (_, r) => region(r)).join('') +
    '<div role="group" aria-label="Further">' + buttons(31, 'Further button') +
    '<button>The last button</button></div>';
true
"""
# Seconds that the whole measurement may take.
_BOUND = 300


def main(directory):
    """Runs the measurement and gives its exit status; `directory` is for its temporary files."""
    with PrivateDesktop() as desktop, MeetingPages(directory) as pages:
        browser = Browser(desktop, pages, LANDING_ADDRESS)
        browser.tab.evaluate(_BUILD)
        tree = AccessibilityTree(desktop)
        with PageScanner(desktop, browser.pid) as scanner:
            scanner.ask("search")  # opens the page's tree
            waitUntil("the page stands in the tree", lambda: any(
                _LAST in tree.texts(frame) for frame in tree.frames(browser.pid)))
        result = subprocess.run([BENCH, str(browser.pid), str(_ELEMENTS)],
                                env=desktop.environment, stdin=subprocess.DEVNULL,
                                timeout=_BOUND, check=False)
        return result.returncode


if __name__ == "__main__":
    runTidily("bench-", main)

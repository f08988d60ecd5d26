"""What watching costs: processor time a cycle, told for information and asserted nowhere."""

import os

from browser import Browser
from meeting_pages import MeetingPages
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS
from stream import Stream, isHealth

_CYCLES = 8


def report():
    """Gives one line for each state of a desktop that was measured."""
    with PrivateDesktop() as desktop, MeetingPages(desktop.directory) as pages, \
            Stream(desktop.processes, desktop.environment) as stream:
        lines = [f"without a browser: {_measured(stream)}"]
        browser = Browser(desktop, pages, CALL_ADDRESS)
        lines.append(f"a lobby in front: {_measured(stream)}")
        browser.tab.evaluate("show('call')")
        stream.waitFor("joined", lambda record: record.get("state") == "joined")
        lines.append(f"a call in front: {_measured(stream)}")
        lines.append(f"memory: {_residentMemory(stream.process.pid)}")
    return lines


def _measured(stream):
    stream.waitForCycles(2)
    mark = stream.mark()
    before = _processorSeconds(stream.process.pid)
    stream.waitForCycles(_CYCLES, mark)
    spent = _processorSeconds(stream.process.pid) - before
    cycles = len([record for record in stream.records(mark) if isHealth(record)])
    return f"{1000 * spent / cycles:.1f} ms of processor time a cycle"


def _processorSeconds(pid):
    # Nanoseconds on a processor; the clock ticks of `stat` are too coarse for this.
    with open(f"/proc/{pid}/schedstat", encoding="ascii") as file:
        return int(file.read().split()[0]) / 1e9


def _residentMemory(pid):
    with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as file:
        for line in file:
            if line.startswith("VmRSS:"):
                return line.split(":")[1].strip()
    return "not known"


if __name__ == "__main__":
    print(os.linesep.join(report()))

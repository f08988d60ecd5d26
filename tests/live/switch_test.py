"""The switch by which programs learn, when they start, whether anybody reads their trees."""

from live_case import MonitorCase
from private_desktop import PrivateDesktop
from waiting import waitUntil

# Seconds in which the monitor looks once at the switch, and as many again for a busy machine.
_LOOK_BOUND = 120


class TheSwitch(MonitorCase):
    """A desktop that switches it off while the monitor runs."""

    def test_a_switch_that_is_turned_off_is_on_again_within_a_minute_but_not_at_once(self):
        self.desktop = self.enterContext(PrivateDesktop(readable=False))
        self.assertFalse(self.desktop.isReadable())
        stream = self.startMonitor()
        self.waitUntilTrusted(stream)
        self.assertTrue(self.desktop.isReadable())
        self.desktop.makeUnreadable()
        # A look costs a connection to the session bus, so it is no part of a usual cycle.
        stream.waitForCycles(5)
        self.assertFalse(self.desktop.isReadable())
        waitUntil("the desktop is readable again", self.desktop.isReadable, _LOOK_BOUND)

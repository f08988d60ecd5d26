"""Addresses that others tell lead nowhere but to a socket of this machine."""

import os

from gi.repository import Gio, GLib

from accessibility_tree import AccessibilityTree
from live_case import MonitorCase
from page_scanner import PageScanner
from private_desktop import PrivateDesktop
from strange_application import BUTTON, StrangeProgram
from waiting import waitUntil

# Cycles in which a monitor that trusts an address would have gone there.
_CYCLES = 4


class StrangeAddresses(MonitorCase):
    """Each test has a desktop without a display, on which a named frame is a window."""

    def setUp(self):
        self.desktop = None

    def bringUp(self, *parts, **options):
        """Brings up a desktop of these parts; `self.trace` is what no command may leave on it."""
        self.desktop = self.enterContext(PrivateDesktop(parts=parts, **options))
        self.trace = os.path.join(self.desktop.directory, "trace")

    def command(self):
        """An address that runs a command: the trace would be left."""
        return f"unixexec:path=/usr/bin/touch,argv1={self.trace}"

    def test_an_application_that_tells_a_command_is_read_over_the_bus(self):
        self.bringUp("session bus", "accessibility bus")
        for kind, address in (("alone", self.command()),
                              ("after a socket", f"unix:path=/nowhere;{self.command()}")):
            with self.subTest(kind=kind):
                strange = StrangeProgram(self.desktop, "application", address, kind)
                tree = AccessibilityTree(self.desktop)
                waitUntil("the application is registered",
                          lambda: tree.frames(strange.process.pid))
                with PageScanner(self.desktop, strange.process.pid, f"scanner {kind}") as scanner:
                    asked = [member for _, member in scanner.ask("search")["messages"]]
                    page = scanner.ask("pages")["pages"][0]
                self.assertIn("GetApplicationBusAddress", asked)
                self.assertFalse(os.path.exists(self.trace), "the command was run")
                self.assertEqual(page["ahead"], page["single"])
                self.assertTrue(page["ahead"]["complete"])
                self.assertIn(BUTTON, page["ahead"]["controls"])

    def test_a_service_that_tells_a_command_leads_to_no_accessibility_bus(self):
        self.bringUp("session bus", activation=False)
        StrangeProgram(self.desktop, "bus", self.command())
        session = self.desktop.sessionBus()
        waitUntil("the service is there", lambda: session.call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "NameHasOwner", GLib.Variant("(s)", ("org.a11y.Bus",)), None, Gio.DBusCallFlags.NONE,
            5000, None).unpack()[0])
        stream = self.startMonitor()
        self.waitUntilTrusted(stream, False)
        stream.waitForCycles(_CYCLES)
        self.assertFalse(os.path.exists(self.trace), "the command was run")

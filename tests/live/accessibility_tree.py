"""The test's own reading of a desktop, apart from the monitor's.

It tells what stands in an accessibility tree and which X11 windows there are, so that an
expectation never comes out of the program under test. It never asks for what makes a browser open
its web contents: that is the monitor's doing.
"""

import re

from gi.repository import Gio, GLib

_REGISTRY = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
_ACCESSIBLE = "org.a11y.atspi.Accessible"
ROLE_FRAME = 23
ROLE_DOCUMENT_WEB = 95


class AccessibilityTree:
    """The trees of all programs of a desktop; elements are pairs (bus name, object path)."""

    def __init__(self, desktop):
        self._bus = desktop.accessibilityBus()

    def frames(self, pid):
        """Gives the named windows of a process as its accessibility tree has them."""
        return [frame for program in self._children(_REGISTRY) if self._pid(program) == pid
                for frame in self._children(program)
                if self._role(frame) == ROLE_FRAME and self.name(frame)]

    def texts(self, root):
        """Gives the names of all elements below `root`."""
        return [name for name in (self.name(element) for element in self._walk(root)) if name]

    def below(self, root):
        """Gives the elements below `root`."""
        return list(self._walk(root))[1:]

    def addresses(self, root):
        """Gives the addresses of the pages that stand below `root`."""
        return [self._address(element) for element in self._walk(root)
                if self._role(element) == ROLE_DOCUMENT_WEB]

    def name(self, element):
        """Gives the accessible name of an element; empty when it has gone."""
        try:
            return self._call(element, "org.freedesktop.DBus.Properties", "Get",
                              GLib.Variant("(ss)", (_ACCESSIBLE, "Name")))[0]
        except GLib.Error:
            return ""

    def _walk(self, root):
        yield root
        for child in self._children(root):
            yield from self._walk(child)

    def _children(self, element):
        try:
            return [child for child in self._call(element, _ACCESSIBLE, "GetChildren")[0]
                    if not child[1].endswith("/null")]
        except GLib.Error:
            return []

    def _role(self, element):
        try:
            return self._call(element, _ACCESSIBLE, "GetRole")[0]
        except GLib.Error:
            return 0

    def _address(self, element):
        try:
            return self._call(element, "org.a11y.atspi.Document", "GetAttributeValue",
                              GLib.Variant("(s)", ("URI",)))[0]
        except GLib.Error:
            return ""

    def _pid(self, element):
        try:
            return self._call(("org.freedesktop.DBus", "/org/freedesktop/DBus"),
                              "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                              GLib.Variant("(s)", (element[0],)))[0]
        except GLib.Error:
            return None

    def _call(self, element, interface, method, arguments=None):
        return self._bus.call_sync(element[0], element[1], interface, method, arguments, None,
                                   Gio.DBusCallFlags.NONE, 5000, None).unpack()


def windowsOf(desktop, pid):
    """Gives {X11 window number: window name} of the windows of a process."""
    listing = desktop.query("xprop", "-root", "-notype", "_NET_CLIENT_LIST")
    windows = {}
    for number in re.findall(r"0x[0-9a-f]+", listing):
        properties = desktop.query("xprop", "-id", number, "-notype", "_NET_WM_PID", "_NET_WM_NAME")
        owner = re.search(r"_NET_WM_PID = (\d+)", properties)
        name = re.search(r'_NET_WM_NAME = "(.*)"', properties)
        if owner and name and int(owner[1]) == pid:
            windows[int(number, 16)] = name[1]
    return windows

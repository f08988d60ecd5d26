"""Programs that tell whoever asks for an address one that is not theirs to choose.

Run as a program this is one of two things on the desktop that its environment names: with
"application", an application with a page that tells the address as its own; with "bus", the service
that leads to the accessibility bus, which tells it as that bus's. The second argument is the
address.
"""

import sys

from gi.repository import Gio, GLib

WINDOW = "A strange window"
BUTTON = "Leave call"
_PREFIX = "/org/a11y/atspi/accessible/"
_ROOT = _PREFIX + "root"
_INTERFACES = Gio.DBusNodeInfo.new_for_xml("""
<node>
  <interface name="org.a11y.atspi.Accessible">
    <property name="Name" type="s" access="read"/>
    <property name="ChildCount" type="i" access="read"/>
    <method name="GetChildren"><arg type="a(so)" direction="out"/></method>
    <method name="GetRole"><arg type="u" direction="out"/></method>
    <method name="GetState"><arg type="au" direction="out"/></method>
    <method name="GetAttributes"><arg type="a{ss}" direction="out"/></method>
  </interface>
  <interface name="org.a11y.atspi.Application">
    <property name="Id" type="i" access="readwrite"/>
    <method name="GetApplicationBusAddress"><arg type="s" direction="out"/></method>
  </interface>
  <interface name="org.a11y.Bus">
    <method name="GetAddress"><arg type="s" direction="out"/></method>
  </interface>
</node>
""")
# By the last part of the path: role, name, and the last parts of the children's paths.
_ELEMENTS = {
    "root": (75, "strange", ["frame"]),
    "frame": (23, WINDOW, ["document"]),
    "document": (95, "A strange page", ["button"]),
    "button": (43, BUTTON, []),
}
# Enabled, sensitive, showing, visible.
_STATES = (1 << 8) | (1 << 24) | (1 << 25) | (1 << 30)


class StrangeProgram:
    """A running program of one of the kinds, which tells `address`."""

    def __init__(self, desktop, kind, address, name="strange-program"):
        self.process = desktop.start(name, ["/usr/bin/python3", "-B", __file__, kind, address])


def _elementAnswers(name, bus, path):
    role, _, children = _ELEMENTS[path.removeprefix(_PREFIX)]
    if name == "GetChildren":
        return GLib.Variant("(a(so))", ([(bus.get_unique_name(), _PREFIX + child)
                                         for child in children],))
    if name == "GetRole":
        return GLib.Variant("(u)", (role,))
    if name == "GetState":
        return GLib.Variant("(au)", ([_STATES, 0],))
    return GLib.Variant("(a{ss})", ({},))


def _property(_bus, _sender, path, _interface, name):
    _, title, children = _ELEMENTS[path.removeprefix(_PREFIX)]
    values = {"Name": GLib.Variant("s", title), "ChildCount": GLib.Variant("i", len(children)),
              "Id": GLib.Variant("i", 0)}
    return values[name]


def _beApplication(session, address):
    where = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                              None, Gio.DBusCallFlags.NONE, 5000, None).unpack()[0]
    bus = Gio.DBusConnection.new_for_address_sync(
        where, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
        Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def answer(bus, _sender, path, _interface, name, _arguments, invocation):
        if name == "GetApplicationBusAddress":
            invocation.return_value(GLib.Variant("(s)", (address,)))
        else:
            invocation.return_value(_elementAnswers(name, bus, path))

    for part in _ELEMENTS:
        bus.register_object(_PREFIX + part, _INTERFACES.interfaces[0], answer, _property, None)
    bus.register_object(_ROOT, _INTERFACES.interfaces[1], answer, _property, lambda *_: True)
    bus.call("org.a11y.atspi.Registry", _ROOT, "org.a11y.atspi.Socket", "Embed",
             GLib.Variant("((so))", ((bus.get_unique_name(), _ROOT),)), None,
             Gio.DBusCallFlags.NONE, -1, None, None)
    return bus


def _beBus(session, address):
    session.register_object(
        "/org/a11y/bus", _INTERFACES.interfaces[2],
        lambda *call: call[-1].return_value(GLib.Variant("(s)", (address,))), None, None)
    Gio.bus_own_name_on_connection(session, "org.a11y.Bus", Gio.BusNameOwnerFlags.NONE, None, None)
    return session


def main():
    """Answers until the process is ended."""
    session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
    be = {"application": _beApplication, "bus": _beBus}[sys.argv[1]]
    kept = be(session, sys.argv[2])
    GLib.MainLoop().run()
    return kept is None


if __name__ == "__main__":
    sys.exit(main())

"""A private Linux desktop: display, buses, window manager, sound, in a directory of its own.

Nothing of it touches the desktop that the caller may be sitting at, and several may stand side by
side: the display number is the X server's own choice, the buses live in the directory, and the
environment of its processes is made from nothing.
"""

import contextlib
import os
import re
import shutil
import socket
import subprocess
import tempfile

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from processes import Processes  # noqa: E402
from waiting import waitUntil  # noqa: E402

_SCREEN = "1600x1000x24"
_BUS_LAUNCHERS = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")
# A session bus that lets its clients do everything and knows no service to start.
_BUS_WITHOUT_SERVICES = """\
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:runtime=yes</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
# The name of a Unix socket has room for 107 bytes; a browser adds some 65 to where a desktop is.
_LONGEST_PARENT = 40
_SHORT_PARENT = "/tmp"
# Milliseconds that a message to one of the buses may take.
_MESSAGE_TIMEOUT = 5000
# The programs of each sound server, in the order of their starts, each with the socket, relative to
# the run-time directory, by which it is reached once it is ready.
_SOUND_PROGRAMS = {
    "pipewire": (
        ("pipewire", ["pipewire"], "pipewire-0"),
        ("wireplumber", ["wireplumber"], None),
        ("pipewire-pulse", ["pipewire-pulse"], "pulse/native")),
    "pulseaudio": (
        ("pulseaudio", ["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                        "--disallow-exit", "--use-pid-file=no", "--realtime=no",
                        "--high-priority=no", "--disable-shm=yes",
                        "--load=module-native-protocol-unix"], "pulse/native"),),
}
# The speaker and the microphone of each, as modules of the server. Browsers do not count the
# monitor of a sink as a microphone, so the microphone is a source in its own right.
_SOUND_DEVICES = {
    "pipewire": (
        ("module-null-sink", "sink_name=speaker"),
        ("module-null-sink", "media.class=Audio/Source/Virtual", "sink_name=virtmic",
         "channel_map=mono")),
    "pulseaudio": (
        ("module-null-sink", "sink_name=speaker"),
        ("module-null-sink", "sink_name=silence"),
        ("module-remap-source", "master=silence.monitor", "source_name=virtmic")),
}


class PrivateDesktop:
    """A desktop for the length of a `with` block.

    `readable` sets the switch that programs look at, when they start, to learn whether anybody
    reads their accessibility trees. `activation` says whether the session bus starts services that
    somebody asks for, as it usually does. `parts` names what is brought up, so that a test can
    begin with less than a whole desktop and add the rest by `startDisplay()` and its siblings.
    A desktop is silent unless "sound" (PipeWire) or "pulse sound" (PulseAudio alone) is among them.
    """

    def __init__(self, readable=True, activation=True,
                 parts=("display", "session bus", "accessibility bus", "window manager")):
        self._readable = readable
        self._activation = activation
        self._parts = parts
        self.directory = tempfile.mkdtemp(prefix="desktop-", dir=_shortDirectory())
        self.processes = Processes(self._makeDirectory("logs"), self.directory)
        self.runtimeDirectory = self._makeDirectory("runtime")
        self.environment = self._environment()

    def __enter__(self):
        try:
            if "display" in self._parts:
                self.startDisplay()
            if "session bus" in self._parts:
                self.startSessionBus()
            if "accessibility bus" in self._parts:
                self.startAccessibilityBus()
                if self._readable:
                    self.makeReadable()
            if "window manager" in self._parts:
                self.startWindowManager()
            if "sound" in self._parts:
                self.startSound()
            if "pulse sound" in self._parts:
                self.startSound("pulseaudio")
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends every process of the desktop and removes its directory."""
        self.processes.stopAll()
        shutil.rmtree(self.directory, ignore_errors=True)

    def start(self, name, arguments, **popen):
        """Starts a program on this desktop; see `Processes.start`."""
        return self.processes.start(name, arguments, self.environment, **popen)

    def startDisplay(self):
        """Starts the X server, which picks a free display number and tells it when it is ready."""
        readEnd, writeEnd = os.pipe()
        try:
            self.start("display", ["Xvfb", "-displayfd", str(writeEnd), "-screen", "0", _SCREEN,
                                   "-nolisten", "tcp", "-noreset"], pass_fds=[writeEnd])
            os.close(writeEnd)
            writeEnd = None
            number = b""
            os.set_blocking(readEnd, False)

            def told():
                nonlocal number
                self.processes.mustRun("display")
                try:
                    number += os.read(readEnd, 16)
                except BlockingIOError:
                    pass
                return number.endswith(b"\n")

            waitUntil("the X server says which display it opened", told)
        finally:
            os.close(readEnd)
            if writeEnd is not None:
                os.close(writeEnd)
        self.environment["DISPLAY"] = f":{int(number)}"

    def startSessionBus(self):
        """Starts the session bus at the address that the environment has named from the start."""
        configuration = "--session"
        if not self._activation:
            path = os.path.join(self.directory, "session-bus.conf")
            with open(path, "w", encoding="ascii") as file:
                file.write(_BUS_WITHOUT_SERVICES)
            configuration = f"--config-file={path}"
        self.start("session-bus", [
            "dbus-daemon", configuration, "--nofork", "--nopidfile", "--nosyslog",
            f"--address={self.environment['DBUS_SESSION_BUS_ADDRESS']}"])
        waitUntil("the session bus answers", lambda: self._running("session-bus") and
                  self.sessionBus() is not None)

    def startAccessibilityBus(self):
        """Starts the accessibility bus and waits until it gives its address."""
        launcher = next((path for path in _BUS_LAUNCHERS if os.path.exists(path)), None)
        if launcher is None:
            raise FileNotFoundError("at-spi-bus-launcher is not installed")
        self.start("accessibility-bus", [launcher, "--launch-immediately"])
        waitUntil("the accessibility bus answers", lambda: self._running("accessibility-bus") and
                  self.accessibilityBus() is not None)

    def startWindowManager(self):
        """Starts the window manager and waits until it has announced itself on the root window."""
        self.start("window-manager", ["openbox", "--sm-disable"])
        waitUntil("the window manager announces itself", lambda: self._running("window-manager") and
                  "window id" in self.query("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"))

    def startSound(self, server="pipewire"):
        """Starts a sound server with a speaker and a microphone, both silent, as its defaults.

        `server` is "pipewire", with what speaks to PulseAudio's clients, or "pulseaudio".
        """
        for name, arguments, socketName in _SOUND_PROGRAMS[server]:
            if socketName is not None:
                # One that an earlier server left behind would look like the new server's.
                self._removeSocket(socketName)
            self.start(name, arguments)
            if socketName is not None:
                waitUntil(f"{name} is reached", lambda: self._running(name) and
                          self._accepts(socketName))
        waitUntil("the sound server answers", self.soundServerName)
        for module in _SOUND_DEVICES[server]:
            waitUntil(f"the sound server makes a device: {module}",
                      lambda: self.query("pactl", "load-module", *module))
        for kind, device in (("sink", "speaker"), ("source", "virtmic")):
            waitUntil(f"the {kind} is the default one", lambda: self._isDefault(kind, device))

    def stopSound(self, server="pipewire"):
        """Ends every program of a sound server; `startSound` starts it anew."""
        for name, _, _ in reversed(_SOUND_PROGRAMS[server]):
            self.processes.stop(name)

    def signalSound(self, number, server="pipewire"):
        """Sends a signal to every program of a sound server."""
        for name, _, _ in _SOUND_PROGRAMS[server]:
            os.kill(self.processes.pid(name), number)

    def soundServerName(self):
        """Gives the name by which the sound server calls itself; empty while none answers."""
        name = re.search(r"^Server Name: (.*)$", self.query("pactl", "info"), re.MULTILINE)
        return name.group(1) if name else ""

    def makeReadable(self):
        """Tells programs that start from now on that their accessibility trees are read."""
        self._status("Set", "IsEnabled", GLib.Variant("b", True))
        waitUntil("the desktop is readable", self.isReadable)

    def makeUnreadable(self):
        """Tells programs that start from now on that nobody reads their accessibility trees."""
        self._status("Set", "IsEnabled", GLib.Variant("b", False))
        waitUntil("the desktop is unreadable", lambda: not self.isReadable())

    def isReadable(self):
        """Says how the switch of `makeReadable` stands."""
        return self._status("Get", "IsEnabled")[0]

    def sessionBus(self):
        """Gives a fresh connection to the session bus, or nothing while it does not answer."""
        return _connection(self.environment["DBUS_SESSION_BUS_ADDRESS"])

    def accessibilityBus(self):
        """Gives a fresh connection to the accessibility bus; nothing while it does not answer."""
        try:
            return _connection(self._accessibilityAddress())
        except GLib.Error:
            return None

    def accessibilityBusPid(self):
        """Gives the process id of the daemon behind the accessibility bus, not of its launcher."""
        return self.accessibilityBus().call_sync(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "GetConnectionUnixProcessID", GLib.Variant("(s)", ("org.freedesktop.DBus",)), None,
            Gio.DBusCallFlags.NONE, _MESSAGE_TIMEOUT, None).unpack()[0]

    def bringToFront(self, window):
        """Makes an X11 window the active one, as a click in a taskbar does, and waits for it."""
        self.query("xdotool", "windowactivate", str(window))
        waitUntil("the window is the active one", lambda: self.activeWindow() == window)

    def activeWindow(self):
        """Gives the number of the window that the window manager calls active, or nothing."""
        number = self.query("xprop", "-root", "-notype", "_NET_ACTIVE_WINDOW").rpartition("# ")[2]
        return int(number.split(",")[0], 16) if number.strip() else None

    def query(self, *command):
        """Gives what a short program prints on this desktop; empty when it fails."""
        result = subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL,
                                capture_output=True, text=True, timeout=10, check=False)
        return result.stdout if result.returncode == 0 else ""

    def _running(self, name):
        self.processes.mustRun(name)
        return True

    def _isDefault(self, kind, device):
        if self.query("pactl", f"get-default-{kind}").strip() == device:
            return True
        self.query("pactl", f"set-default-{kind}", device)
        return False

    def _socketPath(self, socketName):
        return os.path.join(self.runtimeDirectory, socketName)

    def _removeSocket(self, socketName):
        with contextlib.suppress(FileNotFoundError):
            os.remove(self._socketPath(socketName))

    def _accepts(self, socketName):
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
            try:
                client.connect(self._socketPath(socketName))
            except OSError:
                return False
        return True

    def _accessibilityAddress(self):
        bus = self.sessionBus()
        if bus is None:
            raise GLib.Error("no session bus")
        # A call that starts the service would race the one that this desktop starts itself.
        return bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                             GLib.VariantType("(s)"), Gio.DBusCallFlags.NO_AUTO_START,
                             _MESSAGE_TIMEOUT, None).unpack()[0]

    def _status(self, verb, name, *value):
        signature = "(ssv)" if value else "(ss)"
        return self.sessionBus().call_sync(
            "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", verb,
            GLib.Variant(signature, ("org.a11y.Status", name, *value)), None,
            Gio.DBusCallFlags.NO_AUTO_START, _MESSAGE_TIMEOUT, None).unpack()

    def _makeDirectory(self, name):
        path = os.path.join(self.directory, name)
        os.mkdir(path, 0o700)
        return path

    def _environment(self):
        home = self._makeDirectory("home")
        environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin",
            "LANG": "C.UTF-8",
            "HOME": home,
            "TMPDIR": self._makeDirectory("tmp"),
            "XDG_RUNTIME_DIR": self.runtimeDirectory,
            "XDG_SESSION_TYPE": "x11",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.runtimeDirectory}/bus",
        }
        if not self._activation:
            # The switch that `makeReadable` sets is a setting, and those need a service to be kept.
            environment["GSETTINGS_BACKEND"] = "memory"
        for name in ("CONFIG", "DATA", "CACHE", "STATE"):
            environment[f"XDG_{name}_HOME"] = os.path.join(home, name.lower())
            os.mkdir(environment[f"XDG_{name}_HOME"], 0o700)
        return environment


def _shortDirectory():
    """Gives the directory for temporary files, or another if sockets in it get too long names."""
    usual = tempfile.gettempdir()
    return usual if len(usual.encode()) <= _LONGEST_PARENT else _SHORT_PARENT


def _connection(address):
    """Gives a private connection to the bus at `address`, or nothing."""
    try:
        connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
            Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        connection.set_exit_on_close(False)
        return connection
    except GLib.Error:
        return None

"""A stand-in for a native client of calls: windows with whatever parts a test wants, and sound.

Run as a program it is the client itself. It has a process of its own under a name of its own, the
windows of a usual toolkit, and sound that child processes make, as the helpers of a client do.
"""

import json
import os
import shutil
import subprocess
import sys

from accessibility_tree import AccessibilityTree, windowsOf
from running_sound import runningStreams
from waiting import waitUntil

_INTERPRETER = "/usr/bin/python3"
# What the sound of a client is made of. A meter is what a mixer shows the level of a microphone by:
# it gets some peaks a second, each at once, and never the sound itself.
_SOUND_COMMANDS = {
    "microphone": ["pacat", "--record"],
    "speaker": ["pacat", "--playback"],
    "meter": ["pacat", "--record", "--format=float32le", "--channels=1", "--rate=144",
              "--latency=4", "--property=stream.monitor=true", "--property=resample.peaks=true"],
}


class CallClient:
    """A running client on a desktop.

    `program` is the file name of its executable. `desktopFile`, where given, is the name of the
    desktop file that it says it was launched by.
    """

    def __init__(self, desktop, program, desktopFile=None):
        self._desktop = desktop
        self._name = program
        self._tree = AccessibilityTree(desktop)
        command = [_interpreterCalled(desktop, program), "-B", __file__]
        if desktopFile is not None:
            command = ["env", f"GIO_LAUNCHED_DESKTOP_FILE=/usr/share/applications/{desktopFile}",
                       "sh", "-c", 'GIO_LAUNCHED_DESKTOP_FILE_PID=$$ exec "$@"', "sh", *command]
        self.process = desktop.start(self._name, command, stdin=subprocess.PIPE)
        self.pid = self.process.pid

    def close(self):
        """Ends the client; does nothing if it has ended."""
        self._desktop.processes.stop(self._name)

    def show(self, title, *parts, window="main"):
        """Shows a window with exactly these parts and waits until the accessibility tree has it.

        A part is a pair of a kind, one of `_PARTS`, and its text, or for a "list" its parts. A
        window that is there already keeps its identity and changes its title and contents.
        """
        self._tell({"do": "show", "window": window, "title": title, "parts": parts})
        expected = {title, *_textsOf(parts)}
        waitUntil(f"the tree shows {sorted(expected)}", lambda: any(
            set(self._tree.texts(frame)) == expected for frame in self._frames()))

    def hide(self, title, window="main"):
        """Takes a window off the screen without destroying it."""
        self._tell({"do": "hide", "window": window})
        self._waitUntilAway(title)

    def destroy(self, title, window="main"):
        """Destroys a window for good."""
        self._tell({"do": "destroy", "window": window})
        self._waitUntilAway(title)

    def sound(self, *kinds):
        """Makes exactly these kinds of sound, out of `_SOUND_COMMANDS`, until told otherwise.

        Waits until the sound server runs them and no others.
        """
        self._tell({"do": "sound", "kinds": kinds})
        waitUntil(f"the sound server runs {kinds} for the client",
                  lambda: self.soundRunning() == sorted(kinds))

    def soundRunning(self):
        """Gives the kinds of sound that the sound server runs for the client now, sorted."""
        self._desktop.processes.mustRun(self._name)
        answers = waitUntil("the sound server answers", lambda: [
            each for each in (runningStreams(self._desktop, self.pid),) if each is not None])
        return answers[0]

    def quit(self):
        """Lets the client end by itself and waits for it."""
        self._tell({"do": "quit"})
        self.process.wait(30)

    def windowNumber(self, title):
        """Gives the number of the X11 window with that title."""
        return waitUntil(f"there is a window {title!r}", lambda: [
            number for number, name in windowsOf(self._desktop, self.pid).items()
            if name == title])[0]

    def bringToFront(self, title):
        """Makes the window with that title the active one."""
        self._desktop.bringToFront(self.windowNumber(title))

    def _frames(self):
        self._desktop.processes.mustRun(self._name)
        return self._tree.frames(self.pid)

    def _waitUntilAway(self, title):
        waitUntil(f"the window {title!r} is away", lambda: title not in [
            self._tree.name(frame) for frame in self._frames()])

    def _tell(self, order):
        self.process.stdin.write(json.dumps(order).encode() + b"\n")
        self.process.stdin.flush()


def _interpreterCalled(desktop, program):
    """Gives a copy of the interpreter under another name: a link would run under the old one."""
    directory = os.path.join(desktop.directory, "programs")
    os.makedirs(directory, exist_ok=True)
    path = os.path.join(directory, program)
    if not os.path.exists(path):
        shutil.copy(os.path.realpath(_INTERPRETER), path)
    return path


def _textsOf(parts):
    for kind, content in parts:
        if kind in _CONTAINERS:
            yield from _textsOf(content)
        else:
            yield content


# The kinds of parts. Those of the second kind hold parts themselves.
_PARTS = {"button", "disabled button", "check box", "label", "heading", "notification", "tile"}
_CONTAINERS = {"list"}


def _makePart(gtk, atk, kind, content):
    """Gives the widget for one part."""
    if kind == "list":
        widget = gtk.ListBox()
        for part in content:
            widget.add(_makePart(gtk, atk, *part))
        return widget
    if kind in ("button", "disabled button"):
        return gtk.Button(label=content, sensitive=kind == "button")
    if kind == "check box":
        return gtk.CheckButton(label=content)
    if kind == "tile":
        # A picture that the client draws itself; accessible by a role of the client's own.
        widget = gtk.DrawingArea(width_request=80, height_request=45)
        widget.get_accessible().set_role(atk.role_register("video render"))
        widget.get_accessible().set_name(content)
        return widget
    widget = gtk.Label(label=content)
    roles = {"heading": atk.Role.HEADING, "notification": atk.Role.NOTIFICATION}
    if kind in roles:
        widget.get_accessible().set_role(roles[kind])
    elif kind != "label":
        raise ValueError(f"there is no part {kind!r}")
    return widget


class _Client:
    """What the client process does with the orders that it is given."""

    def __init__(self, gtk, atk):
        self._gtk = gtk
        self._atk = atk
        self._windows = {}
        self._sounds = {}

    def obey(self, order):
        """Carries out one order."""
        getattr(self, f"_{order.pop('do')}")(**order)

    def _show(self, window, title, parts):
        if window not in self._windows:
            self._windows[window] = self._gtk.Window(default_width=500, default_height=300)
        shown = self._windows[window]
        shown.set_title(title)
        if shown.get_child() is not None:
            shown.get_child().destroy()
        box = self._gtk.Box(orientation=self._gtk.Orientation.VERTICAL)
        for part in parts:
            box.add(_makePart(self._gtk, self._atk, *part))
        shown.add(box)
        shown.show_all()

    def _hide(self, window):
        self._windows[window].hide()

    def _destroy(self, window):
        self._windows.pop(window).destroy()

    def _sound(self, kinds):
        for kind in set(self._sounds) - set(kinds):
            self._sounds[kind].terminate()
            self._sounds.pop(kind).wait()
        for kind in set(kinds) - set(self._sounds):
            with open("/dev/zero", "rb") as silence, open("/dev/null", "wb") as nowhere:
                self._sounds[kind] = subprocess.Popen(
                    ["setpriv", "--pdeathsig", "TERM", "--", *_SOUND_COMMANDS[kind]],
                    stdin=silence, stdout=nowhere)

    def _quit(self):
        self._sound([])
        self._gtk.main_quit()


def _run():
    """Obeys the orders on standard input until there are no more."""
    import gi  # pylint: disable=import-outside-toplevel

    gi.require_version("Gtk", "3.0")
    gi.require_version("Atk", "1.0")
    from gi.repository import Atk, GLib, Gtk  # pylint: disable=import-outside-toplevel

    client = _Client(Gtk, Atk)

    def read(channel, _):
        line = channel.readline()
        if not line:
            Gtk.main_quit()
            return False
        client.obey(json.loads(line))
        return True

    GLib.io_add_watch(sys.stdin.buffer.raw, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read)
    Gtk.main()


if __name__ == "__main__":
    sys.exit(_run())

"""A small text editor with one window: an application that has nothing to do with meetings.

Run as a program it is the editor itself. It has a process of its own, as every application does,
and the window of a usual toolkit.
"""

import sys

from accessibility_tree import windowsOf
from waiting import waitUntil

_TITLE = "Shopping list - Text Editor"
_TEXT = "Bread\nMilk\nJoin now\n"


class TextEditor:
    """A running editor on a desktop; `window` is the number of its X11 window."""

    def __init__(self, desktop, name="text-editor"):
        self._desktop = desktop
        self._name = name
        self.process = desktop.start(name, ["/usr/bin/python3", "-B", __file__])
        self.window = waitUntil("the text editor opens its window", self._openedWindow)

    def close(self):
        """Ends the editor; does nothing if it has ended."""
        self._desktop.processes.stop(self._name)

    def _openedWindow(self):
        self._desktop.processes.mustRun(self._name)
        return next(iter(windowsOf(self._desktop, self.process.pid)), None)


def edit():
    """Shows the window until the process is ended."""
    import gi  # pylint: disable=import-outside-toplevel

    gi.require_version("Gtk", "3.0")
    from gi.repository import Gtk  # pylint: disable=import-outside-toplevel

    window = Gtk.Window(title=_TITLE, default_width=600, default_height=400)
    text = Gtk.TextView()
    text.get_buffer().set_text(_TEXT)
    window.add(text)
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    sys.exit(edit())

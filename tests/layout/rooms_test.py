"""What the rooms of the sources may know of each other and of a system."""

import os
import re
import unittest

_REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
_MAIN = os.path.join(_REPOSITORY, "main")
_SEAM = "platform/platform.h"

# Which rooms a room may include: everything runs one way.
_DECISION = {
    "text": set(),
    "identity": {"text", _SEAM},
    "evidence": {"text", _SEAM},
    "tracking": {"evidence", "identity", "text", _SEAM},
    "driver": {"tracking", "evidence", "identity", "text", _SEAM},
    "fixtures": {"driver", "tracking", "evidence", "identity", "text", _SEAM},
    "doctor": {"evidence", "identity", "text", _SEAM},
    _SEAM: set(),
}
_DESKTOPS = {
    "platform/posix": set(),
    "platform/linux": {"platform/posix", "text", _SEAM},
    "platform/macos": {"platform/posix", "text", _SEAM},
    "platform/scenario": {_SEAM},
    "platform/scripted": {"platform/scenario", _SEAM},
}
_TOP = {
    "command_line.cpp": set(),
    "command_line.h": set(),
    "process_state.h": {"driver", "tracking"},
    "call-monitor.cpp": {"driver", "fixtures", _SEAM},
    "call-monitor-replay.cpp": {"driver", "platform/scenario", "platform/scripted", _SEAM},
    "call-monitor-doctor.cpp": {"doctor", _SEAM},
}

# The libraries of the text room, which nobody else of the decision code includes.
_TEXT_LIBRARIES = re.compile(r"(unicode|uriparser|nlohmann)/")
# Where there may be something of this project, beside the files at the root.
_PLACES = (".ci", ".github", "bench", "docs", "main", "packaging", "tests", "tools")
# Where a framework of macOS may be named: its desktop, the stand-ins, and what builds them.
_FRAMEWORK_PLACES = ("main/platform/macos/", "tests/macos/", "tools/macho/")
_FRAMEWORKS = re.compile(r"\b(AppKit|ApplicationServices|Cocoa|CoreAudio|CoreFoundation|"
                         r"CoreGraphics|Foundation)\b")


def _roomOf(path):
    return path if path == _SEAM else os.path.dirname(path) or path


def _sources():
    """Gives (path below main, its text)."""
    for directory, _, files in os.walk(_MAIN):
        for file in files:
            if file.endswith((".h", ".cpp", ".mm")):
                path = os.path.join(directory, file)
                with open(path, encoding="utf-8") as text:
                    yield os.path.relpath(path, _MAIN), text.read()


def _files():
    """Gives the paths of all that belongs to this project."""
    for directory, directories, files in os.walk(_REPOSITORY):
        if directory == _REPOSITORY:
            directories[:] = [name for name in directories if name in _PLACES]
        for file in files:
            path = os.path.join(directory, file)
            if os.path.isfile(path):
                yield os.path.relpath(path, _REPOSITORY)


class Rooms(unittest.TestCase):
    """What the sources under main/ include."""

    def test_includes_run_one_way(self):
        allowed = {**_DECISION, **_DESKTOPS, **_TOP}
        self.assertIn(_SEAM, dict(_sources()))
        for path, text in _sources():
            room = _roomOf(path)
            with self.subTest(path):
                self.assertIn(room, allowed)
                included = {_roomOf(name) for name in re.findall(r'(?m)^#\s*(?:include|import) "([^"]+)"', text)}
                headers = {name for name in _TOP if name.endswith(".h")}
                elsewhere = included - {room} - (headers if room in _TOP else set())
                self.assertLessEqual(elsewhere, allowed[room])

    def test_the_decision_code_includes_nothing_of_a_system(self):
        for path, text in _sources():
            room = _roomOf(path)
            if room not in _DECISION and room not in ("command_line.cpp", "process_state.h"):
                continue
            for name in re.findall(r"(?m)^#\s*(?:include|import) <([^>]+)>", text):
                with self.subTest(path, include=name):
                    if room == "text" and _TEXT_LIBRARIES.match(name):
                        continue
                    # The headers of the language itself have neither a directory nor an ending.
                    self.assertRegex(name, r"^[a-z_]+$")

    def test_only_the_desktop_of_macos_and_what_builds_it_name_its_frameworks(self):
        files = list(_files())
        self.assertIn(os.path.join("main", _SEAM), files)
        own = os.path.relpath(os.path.abspath(__file__), _REPOSITORY)
        for name in files:
            path = os.path.join(_REPOSITORY, name)
            if name.startswith(_FRAMEWORK_PLACES) or name == own:
                continue
            with self.subTest(name), open(path, encoding="utf-8", errors="replace") as text:
                self.assertIsNone(_FRAMEWORKS.search(text.read()))


if __name__ == "__main__":
    unittest.main()

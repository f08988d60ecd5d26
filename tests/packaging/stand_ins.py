"""Stand-ins for the tools of another system, which record how they were called."""

import os
import shutil
import subprocess
import tempfile
import unittest

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
_BOUND = 60
_STAND_IN = """#!/bin/bash
line=${{0##*/}}
for word in "$@"; do line+="|$word"; done
echo "$line" >>"{calls}"
{action}
"""


def textOf(*path):
    """Gives what stands in a file of the repository."""
    with open(os.path.join(REPOSITORY, *path), encoding="utf-8") as file:
        return file.read()


class StandInCase(unittest.TestCase):
    """Each test has a PATH of its own, with the tools of this system that its class names."""

    systemTools = ()

    def setUp(self):
        self.directory = self.enterContext(tempfile.TemporaryDirectory())
        self.tools = os.path.join(self.directory, "tools")
        os.mkdir(self.tools)
        for tool in self.systemTools:
            os.symlink(shutil.which(tool), os.path.join(self.tools, tool))
        self.calls = os.path.join(self.directory, "calls")

    def standIn(self, tool, action=":", path=None):
        """Makes a tool that notes how it was called, and then acts; it is put in the PATH."""
        path = path or os.path.join(self.tools, tool)
        with open(path, "w", encoding="utf-8") as file:
            file.write(_STAND_IN.format(calls=self.calls, action=action))
        os.chmod(path, 0o755)

    def runScript(self, script, *arguments):
        """Runs a script to its end."""
        return subprocess.run([script, *arguments], env={"PATH": self.tools},
                              stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=_BOUND, check=False)

    def made(self):
        """Gives the calls of the tools so far, each as its words."""
        if not os.path.exists(self.calls):
            return []
        with open(self.calls, encoding="utf-8") as file:
            return [line.split("|") for line in file.read().splitlines()]

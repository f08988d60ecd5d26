"""`./run`: on a desktop it watches that one, elsewhere it plays its story; nothing stays behind."""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from built import REPOSITORY
from private_desktop import PrivateDesktop
from processes import Processes, commandLine, descendants
from stream import isObservation
from waiting import waitUntil

# Seconds; the story itself gives up well before.
_BOUND = 120
_RUN = os.path.join(REPOSITORY, "run")
_STORY = os.path.join(REPOSITORY, "tests", "live", "story.py")
# A monitor that may read everything and tells of nothing.
_BLIND_MONITOR = """#!/bin/sh
while sleep 1; do echo '{"type":"health","version":1,"trusted":true,"observedAt":0.5}'; done
"""


class RunCommand(unittest.TestCase):
    """Each test runs the command with the build already made, and without a display of its own."""

    def setUp(self):
        self.directory = self.enterContext(tempfile.TemporaryDirectory())
        self.temporary = os.path.join(self.directory, "tmp")
        os.mkdir(self.temporary)
        self.processes = Processes(self.directory, self.directory)
        self.addCleanup(self.processes.stopAll)
        self.before = set(descendants(os.getpid()))

    def start(self, *command, **environment):
        """Starts the command; its stream is a pipe, its standard error a log."""
        environment = {"PATH": os.environ["PATH"], "HOME": self.directory,
                       "TMPDIR": self.temporary, **environment}
        return self.processes.start("run", command or [_RUN], environment, stdout=subprocess.PIPE)

    def waitForLine(self, process, text):
        """Reads the stream up to the first line that holds `text`."""
        for line in process.stdout:
            if text in line:
                return
        self.fail(f"the stream ended without {text!r}:\n{self.processes.logOf('run')}")

    def assertNothingLeft(self):
        """Asserts that no process and no file of the desktop outlived the command."""
        left = set(descendants(os.getpid())) - self.before
        self.assertEqual([commandLine(pid) for pid in left], [])
        self.assertEqual(os.listdir(self.temporary), [])

    def test_it_tells_a_whole_call_and_ends_by_itself(self):
        begun = time.monotonic()
        process = self.start()
        lines = process.stdout.read().splitlines()
        status = process.wait(_BOUND)
        told = self.processes.logOf("run")
        self.assertEqual(status, 0, told)
        self.assertLess(time.monotonic() - begun, 90.0)
        self.assertNothingLeft()

        observations = [record for record in map(json.loads, lines) if isObservation(record)]
        self.assertEqual(observations[0]["state"], "joined")
        self.assertEqual(observations[-1]["state"], "left")
        self.assertEqual({record["sessionId"] for record in observations},
                         {observations[0]["sessionId"]})
        self.assertEqual({record["mediaActive"] for record in observations}, {True, False})
        story = [line for line in told.splitlines() if line.startswith("run: ")]
        for step in ("the landing page is open", "the lobby is open", "joined the call",
                     "turned the camera off", "turned the camera on", "turned the microphone off",
                     "turned the microphone on", "left the call"):
            self.assertEqual(len([line for line in story if step in line]), 1, step)

    def test_it_leaves_nothing_behind_when_it_is_interrupted(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number.name):
                process = self.start()
                self.waitForLine(process, b'"joined"')
                process.send_signal(number)
                self.assertEqual(process.wait(_BOUND), -number)
                process.stdout.close()
                self.assertNothingLeft()
                self.processes.stop("run")

    def test_it_leaves_nothing_behind_when_its_reader_goes_away(self):
        process = self.start()
        self.waitForLine(process, b'"health"')
        process.stdout.close()
        self.assertEqual(process.wait(_BOUND), -signal.SIGPIPE)
        self.assertNothingLeft()

    def test_it_leaves_nothing_behind_when_it_is_killed(self):
        process = self.start()
        self.waitForLine(process, b'"joined"')
        process.kill()
        process.wait(_BOUND)
        process.stdout.close()
        # Nobody is there to wait for; the kernel and the ends of the connections do the work.
        waitUntil("every process has ended",
                  lambda: not set(descendants(os.getpid())) - self.before)

    def test_a_story_that_the_stream_does_not_show_fails_and_names_the_step(self):
        blind = os.path.join(self.directory, "blind-monitor")
        with open(blind, "w", encoding="ascii") as file:
            file.write(_BLIND_MONITOR)
        os.chmod(blind, 0o755)
        process = self.start(sys.executable, "-B", _STORY, blind)
        process.stdout.read()
        self.assertEqual(process.wait(_BOUND), 1)
        told = self.processes.logOf("run")
        self.assertRegex(told, "(?m)^run: failed: not seen .*joined the call")
        self.assertNotIn("the stream showed the whole call", told)
        self.assertNothingLeft()

    def test_on_a_desktop_it_watches_that_desktop_until_it_is_ended(self):
        with PrivateDesktop() as desktop:
            process = self.start(**{**desktop.environment, "PATH": os.environ["PATH"]})
            self.waitForLine(process, b'"trusted":true')
            process.terminate()
            self.assertEqual(process.wait(_BOUND), -signal.SIGTERM)
            process.stdout.close()
        self.assertNothingLeft()

    def test_its_help_names_what_it_does(self):
        result = subprocess.run([_RUN, "--help"], capture_output=True,
                                text=True, check=False, timeout=_BOUND)
        self.assertEqual(result.returncode, 0)
        self.assertTrue(result.stdout.startswith("usage: ./run"))

    def test_an_argument_that_it_does_not_know_is_refused(self):
        result = subprocess.run([_RUN, "--unknown"], capture_output=True,
                                text=True, check=False, timeout=_BOUND)
        self.assertEqual((result.returncode, result.stdout), (64, ""))
        self.assertTrue(result.stderr.startswith("usage: ./run"))

"""`call-monitor-doctor`: what it tells of a real desktop, and that it leaves that as it is."""

import os
import re
import subprocess
import tempfile
import time
import unittest

from built import REPOSITORY, built
from call_client import CallClient
from live_case import DesktopCase
from private_desktop import PrivateDesktop
from story import CALL_ADDRESS
from waiting import waitUntil

_DOCTOR = built("main", "call-monitor-doctor")
_BOUND = 60
_TITLE = "Private matters"


def _run(environment, *arguments):
    """Runs the doctor to its end."""
    return subprocess.run([_DOCTOR, *arguments], env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=_BOUND, check=False)


def _application(report, pid):
    """Gives the facts of one application, by name; empty when the report has no such process."""
    facts, inside = {}, False
    for line in report.splitlines():
        if re.match(r"  pid \d+ ", line):
            inside = line.startswith(f"  pid {pid} ")
            if inside:
                facts["name"] = line.split(maxsplit=2)[2]
        elif inside:
            name, _, value = line.strip().partition("  ")
            facts[name] = value.strip()
    return facts


class TheDoctorOnADesktop(DesktopCase):
    """A desktop with a browser, a further program and sound."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = cls.enterClassContext(PrivateDesktop())

    def report(self, *arguments):
        """Gives what the doctor prints here."""
        result = _run(self.desktop.environment, *arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def reportOf(self, pid, *arguments):
        """Gives the facts of an application once its windows could be read.

        A machine that is busy enough makes any application late, and late is not read.
        """
        return waitUntil("the windows are read", lambda: next(
            (facts for facts in [_application(self.report(*arguments), pid)]
             if facts.get("windows", "").isdigit()), None))

    def test_it_tells_of_the_browser_and_of_the_reads(self):
        browser = self.startBrowser(CALL_ADDRESS)
        facts = self.reportOf(browser.pid, "--titles")
        self.assertEqual(facts["name"], "com.google.Chrome")
        self.assertEqual((facts["regular"], facts["kind"], facts["windows"]),
                         ("yes", "browser", "1"))
        self.assertIn("Meet", facts["window 1"])
        launched = time.strptime(facts["launched"], "%Y-%m-%d %H:%M:%S UTC")
        self.assertIsNotNone(launched)
        # The list of windows, and of the one window its title and children.
        self.assertRegex(facts["reads"], r"^3, median [0-9.]+ ms, longest [0-9.]+ ms$")
        report = self.report()
        self.assertRegex(report, r"(?m)^accessibility trusted +yes$")
        self.assertRegex(report, rf"(?m)^application in front +pid {browser.pid}  "
                                 r"com.google.Chrome$")
        self.assertRegex(report, r"(?m)^windows on the screen +[1-9]")

    def test_titles_are_told_by_their_lengths_until_they_are_asked_for(self):
        client = CallClient(self.desktop, "callbox")
        self.addCleanup(client.close)
        client.show(_TITLE, ("button", "Mute"))
        facts = self.reportOf(client.pid)
        self.assertEqual(facts["window 1"], f"title of length {len(_TITLE)}")
        self.assertTrue(facts["kind"].startswith("other"), facts)
        self.assertNotIn(_TITLE, self.report())
        self.assertEqual(self.reportOf(client.pid, "--titles")["window 1"], f"title: {_TITLE}")

    def test_sound_is_known_within_the_second_that_it_waits(self):
        self.assertRegex(self.report(), r"(?m)^audio processes +not known$")
        self.addCleanup(self.desktop.stopSound)
        self.desktop.startSound()
        # A busy machine may make the sound server late.
        waitUntil("the sound is known", lambda: re.search(
            r"(?m)^audio processes +0$", self.report()))


class TheDoctorLeavesADesktopAsItIs(unittest.TestCase):
    """What the monitor switches on stays off."""

    def test_a_desktop_that_is_not_readable_stays_so(self):
        with PrivateDesktop(readable=False) as desktop:
            self.assertFalse(desktop.isReadable())
            result = _run(desktop.environment)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertRegex(result.stdout, r"(?m)^accessibility trusted +yes$")
            self.assertFalse(desktop.isReadable())


class TheDoctorWithoutADesktop(unittest.TestCase):
    """Where there is nothing to see it says so, and it ends."""

    def setUp(self):
        runtime = self.enterContext(tempfile.TemporaryDirectory())
        self.environment = {"PATH": "/usr/bin:/bin", "HOME": runtime, "XDG_RUNTIME_DIR": runtime}

    def test_everything_is_not_known(self):
        result = _run(self.environment)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for name, value in (("accessibility trusted", "no, so no window is read"),
                            ("application in front", "not known"),
                            ("windows on the screen", "not known"),
                            ("audio processes", "not known"), ("applications", "none found")):
            self.assertRegex(result.stdout, rf"(?m)^{name} +{value}$")

    def test_help_goes_to_standard_output_and_looks_at_nothing(self):
        result = _run(self.environment, "--help")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertTrue(result.stdout.startswith("usage: call-monitor-doctor"))

    def test_wrong_arguments_are_answered_with_the_usage(self):
        for arguments in (("--unknown",), ("--titles", "x"), ("",)):
            with self.subTest(arguments):
                result = _run(self.environment, *arguments)
                self.assertEqual((result.returncode, result.stdout), (64, ""))
                self.assertTrue(result.stderr.startswith("usage: call-monitor-doctor"))

    def test_a_report_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            status = subprocess.run([_DOCTOR], env=self.environment, stdin=subprocess.DEVNULL,
                                    stdout=full, timeout=_BOUND, check=False).returncode
        self.assertEqual(status, 74)

    def test_the_run_command_starts_it(self):
        run = os.path.join(REPOSITORY, "run")
        environment = {**self.environment, "PATH": os.environ["PATH"]}
        told = subprocess.run([run, "--doctor"], env=environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False)
        self.assertEqual(told.returncode, 0, told.stderr)
        self.assertRegex(told.stdout, r"(?m)^accessibility trusted +no")
        wrong = subprocess.run([run, "--doctor", "x"], env=environment, stdin=subprocess.DEVNULL,
                               capture_output=True, text=True, check=False)
        self.assertEqual((wrong.returncode, wrong.stdout), (64, ""))

"""The monitor on a machine without any desktop: it says so every second, and it ends when told."""

import os
import signal
import subprocess
import tempfile
import unittest

from processes import Processes
from stream import PROGRAM, Stream, isClientScan, isHealth


class NoDesktop(unittest.TestCase):
    """Each test runs the monitor in an environment that leads to no desktop."""

    def setUp(self):
        self.directory = self.enterContext(tempfile.TemporaryDirectory())
        self.runtime = os.path.join(self.directory, "runtime")
        os.mkdir(self.runtime, 0o700)
        self.processes = Processes(self.directory, self.directory)
        self.addCleanup(self.processes.stopAll)
        self.environment = {"PATH": "/usr/bin:/bin", "HOME": self.directory,
                            "XDG_RUNTIME_DIR": self.runtime}

    def start(self, **popen):
        """Starts the monitor with a pipe that this test reads itself."""
        return self.processes.start("call-monitor", [PROGRAM], self.environment,
                                    stdout=subprocess.PIPE, **popen)

    def test_a_health_record_says_not_trusted_every_second(self):
        environments = [
            ("nothing is set", {}),
            ("the run-time directory is not set", {"XDG_RUNTIME_DIR": None}),
            ("the display is gone", {"DISPLAY": ":4095"}),
            ("the session bus is gone",
             {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.runtime}/bus"}),
            ("the address of the session bus is no address", {"DBUS_SESSION_BUS_ADDRESS": "none"}),
        ]
        for name, changes in environments:
            with self.subTest(name):
                environment = {key: value for key, value in {**self.environment, **changes}.items()
                               if value is not None}
                with Stream(self.processes, environment) as stream:
                    stream.waitForCycles(4, 0)
                    lines = stream.lines
                    scans = [line.record for line in lines if isClientScan(line.record)]
                    self.assertEqual([record["stage"] for record in scans], ["untrusted"])
                    health = [line for line in lines if isHealth(line.record)]
                    self.assertEqual(len(scans) + len(health), len(lines))
                    records = [line.record for line in health]
                    self.assertEqual({record["trusted"] for record in records}, {False})
                    # Start to start it is one second; no cycle has anything to read here.
                    seconds = (records[3]["observedAt"] - records[0]["observedAt"]) / 1000
                    self.assertGreater(seconds, 2.5)
                    self.assertLess(seconds, 6.0)
                    arrivals = [line.arrived for line in health[:4]]
                    self.assertGreater(arrivals[3] - arrivals[0], 2.0, "the lines came in one go")
                self.assertEqual(self.processes.logOf("call-monitor"), "")

    def test_the_monitor_ends_on_sigterm(self):
        stream = Stream(self.processes, self.environment)
        stream.waitForCycles(1, 0)
        self.assertEqual(stream.stop(signal.SIGTERM), -signal.SIGTERM)

    def test_the_monitor_ends_on_sigint(self):
        stream = Stream(self.processes, self.environment)
        stream.waitForCycles(1, 0)
        self.assertEqual(stream.stop(signal.SIGINT), -signal.SIGINT)

    def test_the_monitor_ends_when_its_reader_goes_away(self):
        process = self.start()
        self.assertIn(b'"untrusted"', process.stdout.readline())
        process.stdout.close()
        self.assertEqual(process.wait(20), -signal.SIGPIPE)

    def test_the_monitor_ends_when_its_reader_goes_away_even_if_its_parent_ignored_that(self):
        self.assertEqual(signal.getsignal(signal.SIGPIPE), signal.SIG_IGN)
        process = self.start(restore_signals=False)
        self.assertIn(b'"untrusted"', process.stdout.readline())
        process.stdout.close()
        self.assertEqual(process.wait(20), -signal.SIGPIPE)

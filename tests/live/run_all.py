"""Runs the live tests: the built program against real desktops and a real browser.

Every test prints the sentence that it proves. The last line is "N passed, N failed"; a test that
did not run, for whatever reason, has failed. An argument selects the tests whose names contain it.
"""

import os
import signal
import sys
import tempfile
import time
import unittest

import cost
from processes import adoptOrphans, endDescendants
from stream import PROGRAM


class _Result(unittest.TestResult):
    """Tells of each test as it ends and counts the tests that passed."""

    def __init__(self):
        super().__init__()
        self.passed = 0
        self._begun = 0.0
        self._before = 0, 0
        self._successful = False

    def startTest(self, test):
        super().startTest(test)
        self._begun = time.monotonic()
        self._before = len(self.failures), len(self.errors)
        self._successful = False

    def addSuccess(self, test):
        super().addSuccess(test)
        self._successful = True

    def stopTest(self, test):
        super().stopTest(test)
        # Parts of a test and what cleans up after it may fail without the test itself failing.
        traces = self.failures[self._before[0]:] + self.errors[self._before[1]:]
        sound = self._successful and not traces
        self.passed += sound
        name = test.id().rpartition(".")[2].removeprefix("test_").replace("_", " ")
        print(f"{'ok  ' if sound else 'FAIL'} {name} ({time.monotonic() - self._begun:.1f} s)",
              flush=True)
        for _, trace in traces:
            print(trace, flush=True)


def _select(suite, text):
    selected = unittest.TestSuite()
    for part in suite:
        if isinstance(part, unittest.TestSuite):
            selected.addTest(_select(part, text))
        elif text in part.id():
            selected.addTest(part)
    return selected


def main(arguments):
    """Runs the tests and gives the exit status."""
    directory = os.path.dirname(os.path.abspath(__file__))
    suite = unittest.defaultTestLoader.discover(directory, pattern="*_test.py")
    if arguments:
        suite = _select(suite, arguments[0])
    count = suite.countTestCases()
    result = _Result()
    if os.access(PROGRAM, os.X_OK):
        suite.run(result)
        for test, trace in result.errors:
            if not isinstance(test, unittest.TestCase) or not hasattr(test, "_testMethodName"):
                print(f"FAIL {test}\n{trace}")  # what stands before or after the tests of a class
        if result.wasSuccessful() and not arguments:
            _tellCost()
    else:
        print(f"there is no program at {PROGRAM}")
    failed = count - result.passed
    print(f"{result.passed} passed, {failed} failed", flush=True)
    return 0 if count and not failed and result.wasSuccessful() else 1


def _tellCost():
    try:
        for line in cost.report():
            print(f"information: {line}")
    except (TimeoutError, RuntimeError, OSError) as error:
        print(f"information: the cost could not be measured: {error}")


def _interrupt(*_):
    raise KeyboardInterrupt


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, _interrupt)
    adoptOrphans()
    try:
        with tempfile.TemporaryDirectory(prefix="live-") as base:
            tempfile.tempdir = base
            try:
                sys.exit(main(sys.argv[1:]))
            finally:
                endDescendants()
    except KeyboardInterrupt:
        sys.exit(130)

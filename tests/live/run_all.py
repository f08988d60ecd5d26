"""Runs the live tests: the built program against real desktops and a real browser.

Every test prints the sentence that it proves. The last line is "N passed, N failed"; a test that
did not run, for whatever reason, has failed. An argument selects the tests whose names contain it.

Tests mostly wait, so several modules run side by side, each on desktops of its own and in a process
of its own, which tells of its tests when all of them have ended.
"""

import os
import re
import subprocess
import sys
import time
import unittest

import cost
from processes import runTidily
from stream import PROGRAM


# Modules at a time. They mostly wait: five keep two processors busy without starving a test.
_SIDE_BY_SIDE = 5
# Modules that test what takes nearly all the time it may, and so have the machine to themselves.
_ALONE = ("large_page_test",)
# Seconds between two looks at what has ended.
_POLL = 0.2
# The argument of a process that runs one module.
_MODULE = "--module"
_COUNT = re.compile(r"([0-9]+) passed, ([0-9]+) failed")


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


def _runModule(name, text):
    """Runs the tests of one module whose names contain the text; gives the exit status."""
    suite = unittest.defaultTestLoader.loadTestsFromName(name)
    if text:
        suite = _select(suite, text)
    count = suite.countTestCases()
    result = _Result()
    suite.run(result)
    for test, trace in result.errors:
        if not isinstance(test, unittest.TestCase) or not hasattr(test, "_testMethodName"):
            print(f"FAIL {test}\n{trace}")  # what stands before or after the tests of a class
    failed = count - result.passed
    print(f"{result.passed} passed, {failed} failed", flush=True)
    return 0 if not failed and result.wasSuccessful() else 1


def _modules(text):
    """Gives (module, its number of tests that were chosen), the largest first."""
    directory = os.path.dirname(os.path.abspath(__file__))
    modules = []
    for file in sorted(os.listdir(directory)):
        if file.endswith("_test.py"):
            suite = unittest.defaultTestLoader.loadTestsFromName(file.removesuffix(".py"))
            count = (_select(suite, text) if text else suite).countTestCases()
            if count:
                modules.append((file.removesuffix(".py"), count))
    return sorted(modules, key=lambda module: -module[1])


def _run(modules, text, base, atATime):
    """Runs each module in a process of its own, some at a time; gives (passed, failed).

    A module that ends without having counted its tests has failed with all of them.
    """
    waiting, running = list(modules), {}
    passed = failed = 0
    while waiting or running:
        while waiting and len(running) < atATime:
            name, count = waiting.pop(0)
            log = os.path.join(base, f"{name}.log")
            with open(log, "wb") as output:
                process = subprocess.Popen(
                    ["setpriv", "--pdeathsig", "TERM", "--",
                     sys.executable, "-B", __file__, _MODULE, name, text],
                    env={**os.environ, "TMPDIR": base},
                    stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)
            running[process.pid] = (process, name, count, log)
        time.sleep(_POLL)
        for pid, (process, name, count, log) in list(running.items()):
            if process.poll() is None:
                continue
            del running[pid]
            with open(log, encoding="utf-8", errors="replace") as output:
                lines = output.read().splitlines()
            counted = _COUNT.fullmatch(lines[-1]) if lines else None
            sound = int(counted[1]) if counted else 0
            # What failed outside of every test fails the module all the same.
            broken = max(count - sound, int(process.returncode != 0))
            print(f"--- {name}", *(lines[:-1] if counted else lines), sep="\n", flush=True)
            passed += sound
            failed += broken
    return passed, failed


def main(arguments, base):
    """Runs the tests and gives the exit status."""
    if not os.access(PROGRAM, os.X_OK):
        print(f"there is no program at {PROGRAM}\n0 passed, 1 failed")
        return 1
    if arguments[:1] == [_MODULE]:
        return _runModule(arguments[1], arguments[2])
    text = arguments[0] if arguments else ""
    modules = _modules(text)
    passed = failed = 0
    for alone, atATime in ((False, _SIDE_BY_SIDE), (True, 1)):
        chosen = [module for module in modules if (module[0] in _ALONE) == alone]
        sound, broken = _run(chosen, text, base, atATime)
        passed += sound
        failed += broken
    if not failed and not text:
        _tellCost()
    print(f"{passed} passed, {failed} failed", flush=True)
    return 0 if passed and not failed else 1


def _tellCost():
    try:
        for line in cost.report():
            print(f"information: {line}")
    except (TimeoutError, RuntimeError, OSError) as error:
        print(f"information: the cost could not be measured: {error}")


if __name__ == "__main__":
    runTidily("live-", lambda base: main(sys.argv[1:], base))

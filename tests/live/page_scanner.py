"""The programs that look at real pages for tests and measurements: `scan_page` and `scan_bench`."""

import json
import subprocess

from built import built

SCANNER = built("tests", "scan_page")
BENCH = built("bench", "scan_bench")


class PageScanner:
    """A running `scan_page` for the pages of one process."""

    def __init__(self, desktop, pid, name="page-scanner"):
        self._desktop = desktop
        self._name = name
        self._process = desktop.start(name, [SCANNER, str(pid)], stdin=subprocess.PIPE,
                                      stdout=subprocess.PIPE, text=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._desktop.processes.stop(self._name)
        self._process.stdout.close()

    def ask(self, command):
        """Gives the answer to one command; see the program's source."""
        self._process.stdin.write(command + "\n")
        self._process.stdin.flush()
        answer = json.loads(self._process.stdout.readline())
        if "error" in answer:
            raise RuntimeError(f"{command}: {answer['error']}")
        return answer

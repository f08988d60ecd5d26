"""Child processes that are certain to end.

A desktop is a dozen processes, some of which start others and let go of them. Whoever starts a
desktop here must be able to promise that nothing of it is left, however the work ends:

 - each process that we start leads a session of its own and is recorded by its process id;
 - a process that it lets go of comes back to us as a child, because we are its nearest "subreaper";
 - if we die without a chance to clean up, the kernel asks what we started to end, and each of those
   ends what it started itself.
"""

import contextlib
import ctypes
import os
import signal
import subprocess
import sys
import tempfile
import time

_PR_SET_CHILD_SUBREAPER = 36
# A process that was asked to end is killed after this many seconds.
_GRACE = 3.0


def adoptOrphans():
    """Makes this process the parent of every descendant whose own parent ends."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "cannot become a subreaper")


# The process ids of what `Processes` started and has not waited for yet.
_unwaited = set()


def _processTable(zombies=False):
    """Gives {pid: (parent's pid, session id, start time)} of all living processes or zombies."""
    table = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        with contextlib.suppress(OSError):
            with open(f"/proc/{entry}/stat", encoding="utf-8", errors="replace") as stat:
                # The name, in parentheses, may itself hold blanks and parentheses.
                fields = stat.read().rpartition(")")[2].split()
            if (fields[0] in ("Z", "X")) == zombies:
                table[int(entry)] = (int(fields[1]), int(fields[3]), int(fields[19]))
    return table


def descendants(pid):
    """Gives {pid: start time} of every living process below `pid`.

    A process id alone may be used again; with its start time it means one process for ever.
    """
    table = _processTable()
    found = {}
    parents = [pid]
    while parents:
        parent = parents.pop()
        for child, (itsParent, _, startTime) in table.items():
            if itsParent == parent and child not in found:
                found[child] = startTime
                parents.append(child)
    return found


def commandLine(pid):
    """Gives the command line of a process for a message; empty when it has gone."""
    try:
        with open(f"/proc/{pid}/cmdline", "rb") as file:
            return file.read().replace(b"\0", b" ").decode(errors="replace").strip()
    except OSError:
        return ""


def _environment(pid):
    """Gives the raw environment that a process was started with; empty when it has gone."""
    try:
        with open(f"/proc/{pid}/environ", "rb") as file:
            return file.read()
    except OSError:
        return b""


def _session(session):
    """Gives {pid: start time} of every living process of a session but the one that leads it."""
    return {pid: startTime for pid, (_, itsSession, startTime) in _processTable().items()
            if itsSession == session and pid != session}


class Processes:
    """The processes of one desktop, ended together in the reverse of the order of their starts."""

    def __init__(self, logDirectory, marker):
        """`marker` is a text that only these processes have in their environments."""
        self._logDirectory = logDirectory
        self._marker = marker.encode()
        self._started = {}  # name -> Popen, in the order of the starts

    def start(self, name, arguments, environment, **popen):
        """Starts a process under a name that is not in use and gives its Popen.

        Its output goes to a log file unless `popen` says otherwise. Only the main thread may call
        this: the kernel ends the process when the thread that started it ends.
        """
        if name in self._started:
            raise ValueError(f"{name} is running already")
        with open(self._logPath(name), "ab") as log:
            popen.setdefault("stdout", log)
            popen.setdefault("stderr", log)
            popen.setdefault("stdin", subprocess.DEVNULL)
            process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "TERM", "--", *arguments],
                env=environment, start_new_session=True, **popen)
        _unwaited.add(process.pid)
        self._started[name] = process
        return process

    def running(self, name):
        """Says whether the process of that name was started and has not ended."""
        return name in self._started and self._started[name].poll() is None

    def pid(self, name):
        """Gives the process id of a process that was started under that name."""
        return self._started[name].pid

    def mustRun(self, name):
        """Raises an error that carries the end of its log if the process has ended."""
        if not self.running(name):
            status = self._started[name].returncode if name in self._started else "not started"
            raise RuntimeError(f"{name} ended (status {status}): {self.logOf(name)[-2000:]}")

    def logOf(self, name):
        """Gives what the process has written to its log so far."""
        try:
            with open(self._logPath(name), encoding="utf-8", errors="replace") as log:
                return log.read()
        except FileNotFoundError:
            return ""

    def stop(self, name):
        """Ends one process and everything below it; does nothing if it was not started."""
        process = self._started.get(name)
        if process is None:
            return
        family = {**descendants(process.pid), **_session(process.pid)}
        # The process itself is in neither once it has been waited for: its number may be another's.
        if process.poll() is None:
            process.terminate()
            process.send_signal(signal.SIGCONT)  # a stopped process ends only once it goes on
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(_GRACE)
            process.kill()
            process.wait()
        _unwaited.discard(process.pid)
        _endEach(family)
        # Forgotten only now, so that whoever interrupts this can call it again.
        del self._started[name]

    def stopAll(self):
        """Ends everything, the last started first. Safe to call again."""
        for name in reversed(list(self._started)):
            self.stop(name)
        _endEach({pid: startTime for pid, startTime in descendants(os.getpid()).items()
                  if self._marker in _environment(pid)})
        _reapOrphans()

    def _logPath(self, name):
        return os.path.join(self._logDirectory, f"{name}.log")


def endDescendants():
    """Ends every process below this one: for a program that itself ends now."""
    _endEach(descendants(os.getpid()))
    _reapOrphans()


def _interrupt(*_):
    raise KeyboardInterrupt


def runTidily(prefix, main):
    """Runs `main(directory)` and ends this program with the status that it gives.

    Neither a process nor a file is left: the directory, whose name begins with the prefix, holds
    all temporary files. SIGTERM ends the program as an interruption does, with status 130.
    """
    signal.signal(signal.SIGTERM, _interrupt)
    adoptOrphans()
    try:
        with tempfile.TemporaryDirectory(prefix=prefix) as directory:
            tempfile.tempdir = directory
            try:
                sys.exit(main(directory))
            finally:
                endDescendants()
    except KeyboardInterrupt:
        sys.exit(130)


def _reapOrphans():
    """Takes the exit status of what came back to us and has ended, so that no entry of it stays."""
    for pid, (parent, _, _) in _processTable(zombies=True).items():
        if parent == os.getpid() and pid not in _unwaited:
            with contextlib.suppress(ChildProcessError):
                os.waitpid(pid, os.WNOHANG)


def _endEach(family):
    """Kills those of {pid: start time} that still live."""
    deadline = time.monotonic() + _GRACE
    while True:
        table = _processTable()
        living = [pid for pid, startTime in family.items()
                  if pid in table and table[pid][2] == startTime]
        for pid in living:
            with contextlib.suppress(ProcessLookupError, PermissionError):
                os.kill(pid, signal.SIGKILL)
        if not living or time.monotonic() >= deadline:
            return
        time.sleep(0.02)

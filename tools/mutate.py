#!/usr/bin/python3
"""Breaks the program on purpose, in one small way at a time, and tells what the tests do not notice.

Everything in main/ is mutated, main/platform only where `--only` names it, with the test programs
that know it: comparisons flipped, constants changed, statements swapped or dropped, conditions fixed
or dropped, negations taken away, patterns and phrases edited.
The choice is the same for the same sources, count and seed. All work happens in a copy of the
sources in a directory of its own; the work tree is only read.

The copy is named by what it holds. A run that was interrupted goes on where it stopped as long as
neither program nor tests have changed; `--report` tells what is known so far.
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import queue
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

from mutants import chosenMutants

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPIED = ["CMakeLists.txt", "main", "tests", "bench"]
# Random worlds by the hundred thousand add no judgement and much waiting in an unoptimised build.
FLAGS = "-O0 -w -DTRACKER_WORLDS=2000"
MEMORY_LIMIT = 4 << 30  # bytes; a loop that a mutant made endless must not take the machine along
# The judge that is no test program: the program's own built-in checks.
SELF_TEST = "self-test"
VERDICT = "Native call identity, browser evidence and lifecycle checks passed\n"


def copiedSources(base):
    """A directory, named by its content, that holds a copy of the sources under `pristine`."""
    base.mkdir(parents=True, exist_ok=True)
    copy = pathlib.Path(tempfile.mkdtemp(dir=base))
    # What no build and no judge reads: the tests that are no C++, and the pages that they show.
    skipped = shutil.ignore_patterns("__pycache__", "*.py", "pages", ".*")
    for name in COPIED:
        source = ROOT / name
        if source.is_dir():
            shutil.copytree(source, copy / name, ignore=skipped)
        else:
            shutil.copy2(source, copy / name)
    digest = hashlib.sha256()
    for path in sorted(p for p in copy.rglob("*") if p.is_file()):
        digest.update(str(path.relative_to(copy)).encode() + b"\0" + path.read_bytes() + b"\0")
    directory = base / digest.hexdigest()[:12]
    directory.mkdir(exist_ok=True)
    if (directory / "pristine").exists():
        shutil.rmtree(copy)
    else:
        copy.rename(directory / "pristine")
    return directory


def run(command, seconds):
    """Status and output of a command with a time limit; the status is None when that passed."""

    def limited():
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    process = subprocess.Popen(
        command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        start_new_session=True, preexec_fn=limited,
    )
    try:
        output, _ = process.communicate(timeout=seconds)
        return process.returncode, output.decode(errors="replace")
    except subprocess.TimeoutExpired:
        return None, ""
    finally:
        # What a broken program started must not outlive it; the session is this command's own.
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Workshop:
    """One copy of the sources with a build of its own."""

    def __init__(self, directory, number, arguments):
        self.tree = directory / f"tree-{number}"
        self.build = directory / f"build-{number}"
        self.targets = arguments.targets.split(",")
        self.parallel = max(1, (os.cpu_count() or 1) // arguments.jobs)
        self.seconds = {target: 600.0 for target in self.targets}
        self.pristine = directory / "pristine"

    def prepare(self):
        """Builds and tests the program as it is; what is broken before cannot judge anything."""
        if not self.tree.exists():
            shutil.copytree(self.pristine, self.tree)
        for path in sorted((self.pristine / "main").rglob("*")):  # undo an interrupted mutant
            own = self.tree / path.relative_to(self.pristine)
            if path.is_file() and own.read_bytes() != path.read_bytes():
                own.write_bytes(path.read_bytes())
        status, output = run(
            ["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build, "-DCMAKE_BUILD_TYPE=Debug",
             f"-DCMAKE_CXX_FLAGS={FLAGS}", "-DCMAKE_CXX_FLAGS_DEBUG=",
             # A program that ends while its tests are listed has compiled all the same.
             "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"], 600)
        if status != 0:
            sys.exit(f"mutate: the sources cannot be configured\n{output[-3000:]}")
        status, output = self.compiled(7200)
        if status != 0:
            sys.exit(f"mutate: the sources do not build\n{output[-3000:]}")
        for target in self.targets:
            start = time.monotonic()
            status, output = self.tested(target)
            if status != 0:
                sys.exit(f"mutate: {target} fails without any mutant\n{output[-3000:]}")
            self.seconds[target] = 20 + 5 * (time.monotonic() - start)

    def compiled(self, seconds):
        built = ["call-monitor" if target == SELF_TEST else target for target in self.targets]
        return run(["cmake", "--build", self.build, "-j", str(self.parallel), "--target"] + built,
                   seconds)

    def tested(self, target):
        if target == SELF_TEST:
            status, output = run([self.build / "main" / "call-monitor", "--self-test"],
                                 self.seconds[target])
            return (1 if status == 0 and output != VERDICT else status), output
        program = next((self.build / "tests").rglob(target))
        return run([program, "--gtest_fail_fast", "--gtest_brief=1"], self.seconds[target])

    def judged(self, mutant):
        """What became of one mutant, and what noticed it."""
        path = self.tree / mutant.file
        original = path.read_text()
        path.write_text(mutant.applied(original))
        try:
            status, output = self.compiled(1800)
            if status != 0:
                error = re.search(r"error: (.*)", output)
                return "did not compile", error.group(1)[:100] if error else ""
            for target in self.targets:
                status, output = self.tested(target)
                if status is None:
                    return "killed", f"{target} did not end"
                if status != 0:
                    failed = re.search(r"\[  FAILED  \] (\S+)", output)
                    return "killed", failed.group(1) if failed else f"{target} ended with {status}"
            return "survived", ""
        finally:
            path.write_text(original)


def knownResults(path):
    results = {}
    if path.exists():
        for line in path.read_text().splitlines():
            try:
                entry = json.loads(line)
                results[entry["key"]] = entry
            except (ValueError, KeyError):
                pass  # a line that was being written when the run was interrupted
    return results


def report(directory, chosen, results):
    """Prints what is known of the chosen mutants; says whether none survived or is still open."""
    counts = collections.Counter()
    survivors = []
    for mutant in chosen:
        outcome = results.get(mutant.key(), {}).get("outcome", "not run")
        counts[outcome] += 1
        if outcome == "survived":
            survivors.append(mutant)
    for mutant in survivors:
        text = (directory / "pristine" / mutant.file).read_text()
        print("survived: " + mutant.described(text))
    files = len({mutant.file for mutant in chosen})
    print(f"{len(chosen)} mutants in {files} files: {counts['killed']} killed, "
          f"{counts['survived']} survived, {counts['did not compile']} did not compile, "
          f"{counts['not run']} not run")
    return not survivors and counts["not run"] == 0


def judgeAll(directory, pending, results, arguments):
    """Judges mutants in as many workshops as there are jobs, and writes down each result at once."""
    workshops = queue.Queue()
    for number in range(arguments.jobs):
        workshop = Workshop(directory, number, arguments)
        workshop.prepare()
        workshops.put(workshop)
    lock = threading.Lock()
    stopped = threading.Event()
    for number in (signal.SIGINT, signal.SIGTERM):  # the mutants in hand are judged to their end
        signal.signal(number, lambda *_: stopped.set())

    def judge(mutants):
        workshop = workshops.get()
        for mutant in mutants:
            if stopped.is_set():
                break
            start = time.monotonic()
            outcome, noticedBy = workshop.judged(mutant)
            entry = {"key": mutant.key(), "outcome": outcome, "by": noticedBy}
            with lock, open(directory / "results.jsonl", "a", encoding="utf-8") as file:
                file.write(json.dumps(entry) + "\n")
                results[mutant.key()] = entry
                text = (directory / "pristine" / mutant.file).read_text()
                first = mutant.described(text).splitlines()[0]
                print(f"{outcome}: {first} ({time.monotonic() - start:.0f} s) {noticedBy}",
                      flush=True)

    # Neighbours stay together: the mutants of one file share their build.
    size = -(-len(pending) // arguments.jobs)
    shares = [pending[i : i + size] for i in range(0, len(pending), size)]
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        running = [pool.submit(judge, share) for share in shares]
        for share in running:
            share.result()
    if stopped.is_set():
        print("mutate: stopped; the same command goes on from here", file=sys.stderr)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--list", action="store_true", help="print the mutants and run none")
    parser.add_argument("--report", action="store_true", help="print what is known and run none")
    parser.add_argument("--only", metavar="FILE", help="only files whose path holds this text")
    parser.add_argument("--count", type=int, default=400, help="how many mutants (400)")
    parser.add_argument("--seed", type=int, default=1, help="which ones (1)")
    parser.add_argument("--jobs", type=int, default=1, help="how many builds side by side (1)")
    parser.add_argument("--targets", default="unit_tests,process_tests",
                        help="the test programs that judge (unit_tests,process_tests); "
                             f"{SELF_TEST} is the program's own checks")
    parser.add_argument("--directory", type=pathlib.Path,
                        default=pathlib.Path(tempfile.gettempdir()) / "call-monitor-mutation",
                        help="where the copies are kept")
    arguments = parser.parse_args()
    if any(arguments.directory.resolve().is_relative_to(ROOT / name) for name in COPIED):
        parser.error("--directory: a copy within what is copied would have no end")

    if arguments.list:
        chosen = chosenMutants(ROOT, arguments.count, arguments.seed, arguments.only)
        for mutant in chosen:
            print(mutant.described((ROOT / mutant.file).read_text()))
        print(f"{len(chosen)} mutants in {len({mutant.file for mutant in chosen})} files")
        return 0

    directory = copiedSources(arguments.directory)
    chosen = chosenMutants(directory / "pristine", arguments.count, arguments.seed, arguments.only)
    results = knownResults(directory / "results.jsonl")
    pending = [mutant for mutant in chosen if mutant.key() not in results]
    if pending and not arguments.report:
        judgeAll(directory, pending, results, arguments)
    return 0 if report(directory, chosen, results) else 1


if __name__ == "__main__":
    sys.exit(main())

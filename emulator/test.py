#!/usr/bin/env python3
"""Runs the checks on the emulated device, four at a time. Called by test.sh, which has made the image.

test.py [--list] [--jobs N] [GROUP|NAME]...
"""

import argparse
import os
import subprocess
import sys
import time

import check_calibration
import check_pages
import check_screen
import check_service
import check_wizard
from checks import ALL, READY
from common import PATIENCE_VARIABLE, patience, run_main
from machine import KINDS, RUNS, die_with_parent, hold_image

JOBS = 4
LONGEST = 300  # seconds for one check; whatever it waits for has a limit of its own
MODULES = (check_pages, check_wizard, check_calibration, check_screen, check_service)


def chosen_checks(words):
    """The checks of the groups and names given; all when none is."""
    names = {check.name for check in ALL}
    groups = {str(check.group) for check in ALL}
    for word in words:
        if word not in names and word not in groups:
            raise ValueError(f"'{word}' is neither a group nor a check (see --list)")
    wanted = [check for check in ALL if check.name in words
              or (not check.apart and (not words or str(check.group) in words))]
    makers = [check for check in ALL if check.first and check not in wanted]
    return makers + wanted if any(not (check.first or check.own) for check in wanted) else wanted


class Run:
    """A check that runs in a process of its own."""

    def __init__(self, check):
        self.check = check
        self.folder = RUNS / check.name
        self.folder.mkdir(parents=True, exist_ok=True)
        self.log = self.folder / "check.log"
        self.start = time.monotonic()
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen([sys.executable, __file__, "--one", check.name],
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                            preexec_fn=die_with_parent)

    def finished(self):
        """True when it has ended; over the limit it is ended."""
        if self.process.poll() is not None:
            return True
        if time.monotonic() - self.start > (LONGEST + self.check.seconds) * patience():
            self.process.kill()
            self.process.wait()
            self.log.write_text("it took too long\n")
        return self.process.poll() is not None

    def report(self):
        """Prints how it went; True when it succeeded."""
        seconds = time.monotonic() - self.start
        good = self.process.returncode == 0
        print(f"{'ok  ' if good else 'FAIL'} {self.check.group} {self.check.name} ({seconds:.0f} s)",
              flush=True)
        if not good:
            print("     " + self.log.read_text(errors="replace").strip().replace("\n", "\n     "))
            picture = self.folder / "failure.png"
            if picture.exists():
                print(f"     picture: {picture}, journal: {picture.with_suffix('.log')}")
        return good


def run_all(checks, jobs):
    """Runs the checks, those that others need before them; returns (passed, failed)."""
    waiting = sorted(checks, key=lambda check: (not check.first, not check.own, -check.seconds))
    running, results = [], []
    while waiting or running:
        for run in [run for run in running if run.finished()]:
            running.remove(run)
            results.append(run.report())
        can_start = [check for check in waiting
                     if check.first or check.own or not any(run.check.first for run in running)]
        if can_start and len(running) < jobs:
            waiting.remove(can_start[0])
            running.append(Run(can_start[0]))
        else:
            time.sleep(0.05)
    return results.count(True), results.count(False)


class Arguments(argparse.ArgumentParser):
    """Wrong usage is one line and exit code 2."""

    def error(self, message):
        print(f"{self.prog}: {message}", file=sys.stderr)
        sys.exit(2)


def main(arguments):
    parser = Arguments(prog="test.sh")
    parser.add_argument("--one", help=argparse.SUPPRESS)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--jobs", type=int, default=JOBS)
    parser.add_argument("words", nargs="*")
    options = parser.parse_args(arguments)
    if options.jobs < 1:
        parser.error(f"--jobs {options.jobs} is no number of devices")
    if options.one:
        next(check for check in ALL if check.name == options.one).run()
        return 0
    try:
        checks = chosen_checks(options.words)
    except ValueError as error:
        parser.error(str(error))
    if options.list:
        for check in sorted(checks if options.words else ALL, key=lambda check: check.group):
            print(f"{check.group} {check.name}: {check.run.__doc__.splitlines()[0]}")
        return 0
    # As many devices at a time as share a processor are each so much slower.
    shared = max(1, min(options.jobs, len(checks)) / len(os.sched_getaffinity(0)))
    os.environ[PATIENCE_VARIABLE] = str(patience() * shared)
    hold_image()
    KINDS.mkdir(parents=True, exist_ok=True)
    (KINDS / f"{READY}.state").unlink(missing_ok=True)
    for check in checks:
        for name in ("failure.png", "failure.log"):
            (RUNS / check.name / name).unlink(missing_ok=True)
    passed, failed = run_all(checks, options.jobs)
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    run_main(main)

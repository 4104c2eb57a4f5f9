#!/usr/bin/env python3
"""Power cuts at random moments. Called by powercuts.sh, which has made the image."""

import argparse
import random
import subprocess
import sys
import time
from collections import Counter

from check_calibration import FILE, LARGEST_ERROR, NOTE, begin, largest_error
from checks import WIDE_PANEL, expect, running
from common import patience, replace_file, run_main, wait_for
from machine import KINDS, RUNS, die_with_parent, hold_image
from panel import FIRST_PAGE_LIMIT, GLANCE, Panel, device_settings
from places import PLACES, WIDE

JOBS = 2
# What is cut, in turn: the calibration is cut while it is stored and while it is accepted.
KINDS_OF_CUT = ("save", "store", "accept")
# Seconds, times patience, after the touch within which the device stores; the cut comes at a random
# moment of them.
SPANS = {"save": 2.5, "store": 1.5, "accept": 1.2}
BESIDE = 40  # pixels by which a calibration that nobody accepts is wrong


def state_name(fs, kind):
    """The device just before what is cut."""
    return f"cut-{fs}-{kind}"


def factory_file(fs):
    """Keeps the calibration that the device has when it is new."""
    return KINDS / f"cut-{fs}.pointercal"


def touch_first_four(panel, offset):
    """All crosses but the last."""
    for number in range(1, 5):
        panel.wait_page(f"cross {number}", 15)
        time.sleep(GLANCE * patience())
        x, y = PLACES[WIDE][f"cross {number}"]
        panel.tap(x + offset, y + offset, 0.15)
    panel.wait_page("cross 5", 15)


def prepare(fs):
    """Makes the states in which the cuts begin."""
    panel = Panel(f"cut-{fs}", WIDE_PANEL, fs=fs)
    with running(panel):
        panel.boot()
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        panel.agent.check("sync")
        replace_file(factory_file(fs), panel.agent.read(FILE))
        panel.remember(state_name(fs, "ready"))
        for kind in KINDS_OF_CUT:
            panel.wake(state_name(fs, "ready"))
            panel.wait_page("preview")
            if kind == "save":
                panel.touch("configure", "mode")
                panel.touch("change")
                for page in ("addresses", "name servers", "summary"):
                    panel.touch("next", page)
            else:
                begin(panel)
                offset = BESIDE if kind == "store" else 0
                touch_first_four(panel, offset)
                if kind == "accept":
                    panel.touch("cross 5", "verdict", 15)
                    # In force, and on the disk, before anybody accepts.
                    wait_for("the note of the calibration",
                             lambda: panel.agent.run(f"test -e {NOTE}").status == 0, 5)
            panel.agent.check("sync")
            panel.remember(state_name(fs, kind))
        # remember() takes the disk along; what is woken later has one of its own on top of it.


def act(panel, kind):
    """The touch that makes the device store something."""
    time.sleep(GLANCE * patience())
    if kind == "save":
        panel.tap(*PLACES[WIDE]["next"])
    elif kind == "store":
        x, y = PLACES[WIDE]["cross 5"]
        panel.tap(x + BESIDE, y + BESIDE, 0.15)
    else:
        panel.tap(*PLACES[WIDE]["accept"])


def cut(fs, number, seed):
    """One cut, and the look at what is left of the device; prints what was found."""
    kind = KINDS_OF_CUT[number % len(KINDS_OF_CUT)]
    moment = random.Random(f"{seed}-{number}").uniform(0, SPANS[kind] * patience())
    panel = Panel(f"cut-{fs}-{number % 64}", WIDE_PANEL, fs=fs)
    with running(panel):
        panel.wake(state_name(fs, kind))
        settings, before = panel.agent.read("/etc/settings.ini"), panel.agent.read(FILE)
        factory = factory_file(fs).read_bytes()
        act(panel, kind)
        time.sleep(moment)
        panel.kill()
        panel.start(fresh=False)
        panel.wait_agent()
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        now = panel.agent.read("/etc/settings.ini")
        saved = now != settings
        if saved:
            expect(kind == "save", "the settings have changed")
            expect(now == settings.replace(b"eth0.mode=static", b"eth0.mode=dhcp"),
                   f"the settings are neither old nor new: {now!r}")
            expect(device_settings(panel)["network/eth0.mode"] == "dhcp", "no mode in the settings")
        stored = panel.agent.read(FILE)
        # What waits to be accepted was in force before the cut; what nobody accepts goes.
        accepted = kind == "accept" and stored == before
        expect(accepted or stored == factory, f"{FILE} is neither old nor new: {stored!r}")
        error = largest_error(panel)
        expect(error <= LARGEST_ERROR, f"a calibration in force that misses by {error:.0f} pixels")
        expect(panel.agent.run(f"test -e {NOTE}").status == 1, f"{NOTE} is left")
        wrong = panel.agent.run("dmesg | grep -E '(EXT4|F2FS)-fs.*(error|corrupt)'").output
        expect(not wrong, f"the file system says: {wrong!r}")
        left = panel.agent.check("ls -a /etc | grep -E '^(pointercal|settings)' | "
                                 "grep -vxE 'pointercal|settings.ini'; true").split()
        panel.touch("configure", "mode")
        result = "new" if saved or accepted else "old"
        print(f"{kind} {moment:.2f} s: {result}{' left: ' + ' '.join(left) if left else ''}")


def run_all(options):
    """Makes the cuts, so many at a time; returns the number that went wrong."""
    started = time.monotonic()
    waiting = list(range(options.count))
    active = {}
    found = Counter()
    failed = 0
    while waiting or active:
        for process, number in list(active.items()):
            if process.poll() is None:
                continue
            output = process.stdout.read().strip()
            del active[process]
            words = output.splitlines()[-1].split() if output else ["?"]
            if process.returncode == 0:
                found[f"{words[0]} {words[3]}"] += 1
                found["files left"] += "left:" in words
            else:
                failed += 1
            print(f"{'ok  ' if process.returncode == 0 else 'FAIL'} {number}: {output}", flush=True)
        if waiting and len(active) < options.jobs:
            number = waiting.pop(0)
            command = [sys.executable, __file__, "--fs", options.fs, "--seed", str(options.seed),
                       "--one", str(number), "1"]
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT, text=True,
                                       preexec_fn=die_with_parent)
            active[process] = number
        else:
            time.sleep(0.1)
    minutes = (time.monotonic() - started) / 60
    print(f"{options.count} cuts on {options.fs} in {minutes:.0f} min: "
          + ", ".join(f"{name} {value}" for name, value in sorted(found.items())))
    print(f"{options.count - failed} passed, {failed} failed")
    return failed


def main(arguments):
    parser = argparse.ArgumentParser(prog="powercuts.sh")
    parser.add_argument("--fs", default="ext4")
    parser.add_argument("--jobs", type=int, default=JOBS)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--one", type=int)
    parser.add_argument("count", type=int)
    options = parser.parse_args(arguments)
    if options.one is not None:
        cut(options.fs, options.one, options.seed)
        return 0
    hold_image()
    RUNS.mkdir(parents=True, exist_ok=True)
    prepare(options.fs)
    return 1 if run_all(options) else 0


if __name__ == "__main__":
    run_main(main)

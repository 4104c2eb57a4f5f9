#!/usr/bin/env python3
"""The lean program against the ordinary one on the emulated device. Called by figures.sh --lean,
which has made both images.

In one device both programs run in turn: from exec to the first frame, with everything in the page
cache and with nothing there; once more with addresses that do not change, because the emulator
translates a program anew for each address it is loaded to, which no processor does; then each image
is booted in turn, from the start of init on. All that once more with a clock that counts
instructions, when asked for: those figures do not depend on what this machine does besides.
"""

import statistics
from contextlib import contextmanager

from checks import WIDE_PANEL, running
from common import run_main
from figures import UNIT, monotonic_property
from machine import IMAGE
from panel import FIRST_PAGE_LIMIT, Panel

OTHER = "/run/other"
PROGRAM = "usr/bin/operator-panel"
WATCH = "/usr/lib/emulator/framewatch"
FIRMWARE = "/usr/lib/arm-linux-gnueabihf/operator-panel-simulator"
EMPTY_CACHE = "sync; echo 3 >/proc/sys/vm/drop_caches;"
READ_GOAL = 4.5 # MB of the lean program
INIT_GOAL = 2000 # ms from the start of init to its first frame
GOALS = {"warm": 0.45, "cold": 0.35, "PSS": 0.55, "boot": 1 / 3}


def start(panel, program, before=""):
    """One start of a program: (milliseconds to the first frame, of the processor, kB of memory)."""
    text = panel.agent.check(f"{before} LD_LIBRARY_PATH={FIRMWARE} {WATCH} {program} "
                             "-platform linuxfb 2>/dev/null", limit=90)
    return tuple(float(word) for word in text.split())


def line(what, unit, ordinary, lean, goal=None):
    """Prints medians and their ratio."""
    ordinary, lean = statistics.median(ordinary), statistics.median(lean)
    text = f"  {what:<28} ordinary {ordinary:8.1f} {unit:<3} lean {lean:8.1f} {unit:<3} "
    print(text + f"ratio {lean / ordinary:.2f}" + (f" (goal {goal:.2f})" if goal else ""), flush=True)


@contextmanager
def device_with(disk, counted=False):
    """A device whose own panel is stopped and whose second disk is mounted on OTHER."""
    panel = Panel("compare", WIDE_PANEL, lean=False, counted=counted)
    panel.second_disk = disk
    with running(panel):
        panel.boot()
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        panel.systemctl(f"stop {UNIT}")
        panel.agent.check(f"mkdir -p {OTHER} && mount -o ro,noload /dev/vdb {OTHER}")
        yield panel


def compare_starts(pairs, counted):
    """Starts of both programs in turn, in one device whose second disk is the lean image."""
    with device_with(IMAGE / "root.lean-ext4", counted) as panel:
        programs = {"ordinary": f"/{PROGRAM}", "lean": f"{OTHER}/{PROGRAM}"}
        for random in (2, 0):
            panel.agent.check(f"echo {random} >/proc/sys/kernel/randomize_va_space")
            print(f"Exec to the first frame, medians of {pairs} pairs on the emulated device, "
                  f"{'random' if random else 'the same'} addresses:", flush=True)
            report_starts(measure_starts(panel, programs, pairs))
        start(panel, programs["lean"], EMPTY_CACHE)
        read, size = panel.agent.check(f"fincore -nbo RES,SIZE {programs['lean']}").split()
        print(f"  read of the lean program until its first frame, cold: {int(read) / 1e6:.1f} of "
              f"{int(size) / 1e6:.1f} MB (goal {READ_GOAL:.1f} MB)")


def measure_starts(panel, programs, pairs):
    """{(program, "cold" or "warm"): what start() returned}"""
    results = {(name, state): [] for name in programs for state in ("cold", "warm")}
    for _ in range(pairs):
        for name, program in programs.items():
            results[name, "cold"].append(start(panel, program, EMPTY_CACHE))
            results[name, "warm"].append(start(panel, program))
    return results


def report_starts(results):
    """Prints what measure_starts() returned."""
    for state in ("warm", "cold"):
        for index, what in enumerate(("time", "processor")):
            line(f"{what}, {state}", "ms",
                 *([one[index] for one in results[name, state]] for name in ("ordinary", "lean")),
                 goal=GOALS[state])
    line("PSS", "MB", *([one[2] / 1024 for one in results[name, "warm"]]
                        for name in ("ordinary", "lean")), goal=GOALS["PSS"])


def boot_phases(lean, counted=False):
    """Milliseconds of one boot from the start of init, by the device's own clock."""
    panel = Panel("compare", WIDE_PANEL, lean=lean, counted=counted)
    with running(panel):
        panel.boot()
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        init = int(panel.agent.check("systemctl show -p UserspaceTimestampMonotonic --value")) / 1e6
        unit, executed, frame = (
            monotonic_property(panel, name) - init for name in
            ("InactiveExitTimestampMonotonic", "ExecMainStartTimestampMonotonic",
             "ActiveEnterTimestampMonotonic"))
    return {"init to the unit": unit * 1e3, "unit to exec": (executed - unit) * 1e3,
            "exec to the first frame": (frame - executed) * 1e3, "init to the first frame": frame * 1e3}


def compare_boots(boots, counted):
    """Both images booted in turn."""
    results = {False: [], True: []}
    for _ in range(boots):
        for lean, phases in results.items():
            phases.append(boot_phases(lean, counted))
    print(f"From the start of init, medians of {boots} boots of each image:")
    for name in results[False][0]:
        line(name, "ms", *([phases[name] for phases in results[lean]] for lean in (False, True)),
             goal=GOALS["boot"] if name == "init to the first frame" else None)
    print(f"  the lean program's goal is {INIT_GOAL} ms from init to the first frame")


def main(arguments):
    pairs, boots = int(arguments[0]), int(arguments[1])
    for counted in (False, True) if "counted" in arguments else (False,):
        if counted:
            print("The same with a clock that counts instructions, 500 million in a second:")
        compare_starts(pairs, counted)
        compare_boots(boots, counted)
    return 0


if __name__ == "__main__":
    run_main(main)

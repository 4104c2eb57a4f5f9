#!/usr/bin/env python3
"""Figures of the panel on the emulated device. Called by figures.sh, which has made the image."""

import re
import statistics
import subprocess
import time

from checks import WIDE_PANEL, running
from common import BUILD, PROJECT, run_main, wait_for
from panel import FIRST_PAGE_LIMIT, Panel

UNIT = "operator-panel.service"
IDLE_SECONDS = 20
LOOK_OFTEN = 0.01


def monotonic_property(panel, name):
    """A property of the unit in seconds since the kernel has started."""
    text = panel.agent.check(f"systemctl show {UNIT} -p {name} --value")
    return int(text) / 1e6


def first_frame(panel):
    """Waits for a lit screen of the panel's size; returns the moment."""
    def lit():
        picture = panel.picture()
        return (picture.width, picture.height) == panel.kind.size and picture.at(5, 5) != (0, 0, 0)
    wait_for("the first frame", lit, FIRST_PAGE_LIMIT, look=LOOK_OFTEN)
    return time.monotonic()


def start_up(panel):
    """Seconds of one start, by phases, from power-on."""
    power_on = time.monotonic()
    panel.start()
    frame = first_frame(panel) - power_on
    panel.wait_agent()
    # The kernel's clock begins a little after power-on: it is asked what it says now.
    uptime = float(panel.agent.check("cat /proc/uptime").split()[0])
    offset = time.monotonic() - power_on - uptime
    systemd = panel.agent.check("systemctl show -p UserspaceTimestampMonotonic --value")
    init = offset + int(systemd) / 1e6
    unit = offset + monotonic_property(panel, "InactiveExitTimestampMonotonic")
    executed = offset + monotonic_property(panel, "ExecMainStartTimestampMonotonic")
    return {"power-on to the kernel's end": init, "init to the unit's start": unit - init,
            "unit's start to exec": max(0, executed - unit), "exec to the first frame": frame - executed,
            "power-on to the first frame": frame, "unit's start to the first frame": frame - unit}


def restart(panel):
    """Seconds from the unit's start to the first frame with everything in the page cache."""
    panel.systemctl(f"stop {UNIT}")
    panel.agent.check("dd if=/dev/zero of=/dev/fb0 bs=4k 2>/dev/null; true")
    panel.qmp.command("query-status")
    before = time.monotonic()
    panel.agent.check(f"systemctl --no-block start {UNIT}")
    return first_frame(panel) - before


def memory(panel):
    """PSS of the program in MB."""
    text = panel.agent.check(f"cat /proc/{panel.pid()}/smaps_rollup")
    return int(re.search(r"^Pss: *(\d+) kB", text, re.M).group(1)) / 1024


def idle_load(panel):
    """CPU in per cent of the emulated processor and wake-ups per second, on the preview page."""
    process = panel.pid()
    script = (f"cat /proc/{process}/stat; cat /proc/{process}/task/*/status | "
              f"grep ^voluntary_ctxt_switches; cat /proc/uptime")

    def sample():
        stat, *switches, uptime = panel.agent.check(script).splitlines()
        fields = stat.rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12]),
                sum(int(line.split()[-1]) for line in switches), float(uptime.split()[0]))
    first = sample()
    time.sleep(IDLE_SECONDS)
    last = sample()
    seconds = last[2] - first[2]
    return (last[0] - first[0]) / seconds, (last[1] - first[1]) / seconds


def package_sizes():
    """Lines on what an integrator installs: the packages, and what they pull in."""
    lines = []
    for package in sorted((PROJECT / "build/packages").glob("operator-panel*_armhf.deb")):
        if "dbgsym" in package.name:
            continue
        installed = subprocess.run(["dpkg-deb", "--field", str(package), "Installed-Size"],
                                   capture_output=True, text=True, check=True).stdout.strip()
        lines.append(f"{package.name}: {package.stat().st_size / 1024:.0f} kB, installed {installed} kB")
    return lines + pulled_in()


def pulled_in():
    """Size of all that the panel depends on, from the packages that the image was made of."""
    package = next((PROJECT / "build/packages").glob("operator-panel_*_armhf.deb"))
    archives = PROJECT / "build/downloads/armhf"
    fields = {}
    for line in (BUILD / "tree.packages").read_text().splitlines():
        name, version, architecture = line.split()
        archive = archives / f"{name}_{version.replace(':', '%3a')}_{architecture}.deb"
        text = subprocess.run(["dpkg-deb", "--field", str(archive)], capture_output=True, text=True,
                              check=True).stdout
        fields[name] = dict(re.findall(r"^([A-Za-z-]+): (.*)$", text, re.M), archive=archive)

    def needs(text):
        return [re.split(r"[ (:|]", word.strip())[0] for word in text.split(",") if word.strip()]

    own = subprocess.run(["dpkg-deb", "--field", str(package), "Depends"], capture_output=True,
                         text=True, check=True).stdout
    found, waiting = set(), needs(own)
    while waiting:
        name = waiting.pop()
        if name in fields and name not in found:
            found.add(name)
            for field in ("Depends", "Pre-Depends"):
                waiting += needs(fields[name].get(field, ""))
    size = sum(fields[name]["archive"].stat().st_size for name in found) / 1e6
    installed = sum(int(fields[name].get("Installed-Size", 0)) for name in found) / 1024
    largest = sorted(found, key=lambda name: -int(fields[name].get("Installed-Size", 0)))[:6]
    return [f"pulled in: {len(found)} packages, {size:.0f} MB to download, {installed:.0f} MB "
            "installed; the largest: " + ", ".join(f"{name} {int(fields[name]['Installed-Size']) / 1024:.0f} MB"
                                        for name in largest)]


def main(arguments):
    runs = int(arguments[0])
    phases, warm = [], []
    for number in range(runs):
        panel = Panel("figures", WIDE_PANEL)
        with running(panel):
            phases.append(start_up(panel))
            panel.wait_page("preview", FIRST_PAGE_LIMIT)
            warm.append(restart(panel))
            panel.wait_page("preview", 30)
            if number == runs - 1:
                pss = memory(panel)
                load, wakes = idle_load(panel)
    print(f"Medians of {runs} starts, in seconds on the emulated device:")
    for name in phases[0]:
        print(f"  {name}: {statistics.median(phase[name] for phase in phases):.2f}")
    print(f"  unit's start to the first frame, once more (warm): {statistics.median(warm):.2f}")
    print(f"PSS {pss:.1f} MB; idle on the preview page: {load:.1f} % of the processor, "
          f"{wakes:.1f} wake-ups per second")
    for line in package_sizes():
        print(line)
    return 0


if __name__ == "__main__":
    run_main(main)

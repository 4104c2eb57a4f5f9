"""Groups 6 and 7: what hangs, what is slow, what is not there, and the end of the program."""

import time

from checks import (check, expect, expect_equal, new_settings, ready_panel, restart_unit)
from common import LOOK, PROJECT, Failure, is_lean, patience, wait_for

DROP_IN = "/run/systemd/system/operator-panel.service.d/limit.conf"
SLOW_START = "/etc/systemd/system/operator-panel.service.d/slow.conf"
SHORT_LIMIT = 4  # seconds: a watchdog that bites sooner, for what waits for a multiple of it
STOP_LIMIT = 3
HOUR = 3600
RIGHTS = PROJECT / "packaging/tests/compare-rights.sh"
GPU_DRIVER = "/sys/bus/virtio/drivers/virtio_gpu"
WATCHDOG_SLACK = 2


def shorten_watchdog(panel, page="preview"):
    """Starts the panel with a shorter limit, up to a page; returns its process."""
    panel.agent.check(f"mkdir -p {DROP_IN.rsplit('/', 1)[0]} && "
                      f"printf '[Service]\\nWatchdogSec={SHORT_LIMIT}\\n' >{DROP_IN}")
    panel.systemctl("daemon-reload")
    panel.systemctl("restart operator-panel.service", 60)
    panel.wait_page(page, 30)
    return panel.pid()


def watchdog_limit(panel):
    """Limit of the unit's watchdog in seconds."""
    text = panel.agent.check("systemctl show operator-panel.service -p WatchdogUSec --value").strip()
    expect(text.endswith("s") and text[:-1].isdigit(), f"the watchdog's limit is '{text}'")
    return int(text[:-1])


@check(6, 35)
def firmware_hangs():
    """A call of the firmware library that hangs: the watchdog starts the program anew."""
    with ready_panel("firmware_hangs") as panel:
        limit = watchdog_limit(panel)
        before = panel.pid()
        panel.control("plc delay 60000")
        wait_for("a call hangs", lambda: sleeps(panel, before), 5)
        since = time.monotonic()
        # The call that hangs has read this; those of the program's next start are as they were.
        panel.control("plc delay 0")
        panel.wait_page("start page", limit + 10)
        seconds = time.monotonic() - since
        panel.wait_page("preview", 20)
        expect(panel.pid() != before, "the program is the same")
        expect_equal(panel.unit("NRestarts")[0], "1", "restarts")
        print(f"frame back after {seconds:.1f} s, limit {limit} s")
        expect(seconds <= limit + WATCHDOG_SLACK * patience(), f"frame back after {seconds:.1f} s")


def sleeps(panel, process):
    """True when the process is in a call that waits for time to pass, as the event loop never is."""
    return "nanosleep" in panel.agent.check(f"cat /proc/{process}/wchan")


@check(6, 45)
def slow_syscfg():
    """A configuration tool that takes three times the watchdog's limit is left alone."""
    with ready_panel("slow_syscfg") as panel:
        process = shorten_watchdog(panel)
        panel.control(f"syscfg hang {3 * SHORT_LIMIT}")
        panel.touch("configure", "mode")
        panel.touch("change")
        for page in ("addresses", "name servers", "summary"):
            panel.touch("next", page)
        since = time.monotonic()
        panel.touch("next", "restart", 3 * SHORT_LIMIT + 15)
        expect(time.monotonic() - since >= 3 * SHORT_LIMIT, "the tool was not waited for")
        expect_equal(panel.pid(), process, "process")
        expect_equal(panel.unit("NRestarts")[0], "0", "restarts")


def plc_never_answers(name, seconds):
    """A PLC without a link for so long: the program stays the same, on its start page."""
    with ready_panel(name) as panel:
        panel.control("plc no-link")
        process = shorten_watchdog(panel, "start page")
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            expect_equal(panel.pid(), process, "process")
            expect(panel.picture().is_page("start page"), "the start page has gone")
            time.sleep(min(5, seconds / 5))
        expect_equal(panel.unit("NRestarts")[0], "0", "restarts")
        panel.control("plc link")
        panel.wait_page("preview")


@check(6, 30)
def plc_without_answer():
    """No link to the runtime, for three times the watchdog's limit."""
    plc_never_answers("plc_without_answer", 3 * SHORT_LIMIT)


@check(6, HOUR, apart=True)
def plc_without_answer_for_an_hour():
    """The same for an hour; only when it is named."""
    plc_never_answers("plc_without_answer_for_an_hour", HOUR)


def stop_seconds(panel):
    """Seconds that systemctl stop takes, by the device's own clock; the end must be a proper one."""
    text = panel.agent.check("a=$(date +%s%N); systemctl stop operator-panel.service; "
                             "b=$(date +%s%N); echo $(((b - a) / 1000000))", limit=30)
    result, code = panel.unit("Result", "ExecMainStatus")
    expect_equal((result, code), ("success", "0"), "end of the program")
    return int(text) / 1000


@check(6, 35)
def rights():
    """What syscfg, mount and reboot may do is the same from the unit as from a root shell."""
    with ready_panel("rights") as panel:
        process = panel.pid()
        panel.agent.write("/root/compare-rights.sh", RIGHTS.read_bytes())
        result = panel.agent.run("sh /root/compare-rights.sh", limit=60)
        text = result.output.decode(errors="replace").strip()
        print(text.splitlines()[-1] if text else "nothing said")
        expect_equal(result.status, 0, f"status of the comparison, which says: {text}")
        expect_equal(panel.pid(), process, "process")


@check(6, 50)
def stops_in_time():
    """systemctl stop takes less than 3 s in the wizard, under a box and in a calibration."""
    with ready_panel("stops_in_time") as panel:
        seconds = {}
        panel.touch("configure", "mode")
        seconds["wizard"] = stop_seconds(panel)
        new_settings(panel, "\n[options]\nconfig_passwd=1234\nconfig_protection_enabled=1\n")
        panel.systemctl("start operator-panel.service", 60)
        panel.wait_page("preview", 30)
        panel.touch("configure", "pad")
        panel.touch("1")
        panel.touch("ok", "error box")
        seconds["box"] = stop_seconds(panel)
        panel.systemctl("start operator-panel.service", 60)
        panel.wait_page("preview", 30)
        panel.control("calibration-request")
        panel.wait_page("cross 1", 20)
        seconds["calibration"] = stop_seconds(panel)
        print(", ".join(f"{name} {value:.2f} s" for name, value in seconds.items()))
        for name, value in seconds.items():
            expect(value <= STOP_LIMIT * patience(), f"stopping took {value:.1f} s in the {name}")


def ordered_before(panel, unit):
    """The units that a unit's start waits for, and those that their starts wait for; of what the
    device never starts nobody waits for anything."""
    script = ("systemctl list-units --all --plain --no-legend --full | while read -r name rest; do "
              "echo $name $(systemctl show -p After -p InactiveExitTimestampMonotonic -- \"$name\"); "
              "done")
    after = {}
    for line in panel.agent.check(script, limit=120).splitlines():
        words = line.replace("After=", "").split()
        if "InactiveExitTimestampMonotonic=0" not in words:
            after[words[0]] = words[1:]
    expect(any("network" in name for name in after), "the device has no network to wait for")
    found, waiting = set(), [unit]
    while waiting:
        for name in after.get(waiting.pop(), []):
            if name in after and name not in found:
                found.add(name)
                waiting.append(name)
    return found


def moment(panel, unit, name):
    """Microseconds from the start of the kernel to what a unit's property of this name tells; 0: never."""
    return int(panel.agent.check(f"systemctl show {unit} -p {name}TimestampMonotonic --value"))


@check(7, 60)
def start_waits_for_little():
    """The panel's start waits neither for the network nor for udev to settle, the lean one for nothing."""
    unneeded = ("network", "settle", "ifup", "dhcp", "connman")
    with ready_panel("start_waits_for_little") as panel:
        before = ordered_before(panel, "operator-panel.service")
        if is_lean():
            unneeded += ("sysinit.target", "basic.target", "udev", "tmpfiles")
            expect(moment(panel, "operator-panel.service", "ActiveEnter")
                   < moment(panel, "systemd-udevd.service", "InactiveExit"),
                   "the rest of the boot has begun before the first frame")
        expect(before, "the panel's start waits for nothing at all")
        wrong = sorted(name for name in before if any(word in name for word in unneeded))
        expect(not wrong, f"the panel's start waits for {', '.join(wrong)}")


@check(7, 60)
def hanging_start():
    """A panel that hangs at its start holds up nothing else of the boot, and is there in the end."""
    with ready_panel("hanging_start") as panel:
        panel.agent.check(f"mkdir -p {SLOW_START.rsplit('/', 1)[0]} && printf '[Service]\\nExecStartPre="
                          f"sh -c \"until test -e /run/go-on; do sleep 0.2; done\"\\n' >{SLOW_START}; sync")
        before = panel.boot_id()
        panel.agent.run("systemctl --no-block reboot")
        panel.wait_reboot(before)
        wait_for("the network", lambda: moment(panel, "emulator-network.service", "ExecMainExit"), 30)
        expect_equal(panel.unit("ActiveState")[0], "activating", "state of the panel's unit")
        panel.agent.check("touch /run/go-on")
        panel.wait_page("preview", 60)


@check(7, 35)
def without_screen():
    """No framebuffer: exit code 1, the unit says so; started as soon as there is one."""
    with ready_panel("without_screen") as panel:
        preview = panel.wait_still()
        panel.systemctl("stop operator-panel.service")
        device = panel.agent.check(f"cd {GPU_DRIVER} && echo virtio*").strip()
        panel.agent.check(f"echo {device} >{GPU_DRIVER}/unbind")
        expect_equal(panel.agent.run("test -e /dev/fb0").status, 1, "status of a test for /dev/fb0")
        panel.agent.run("systemctl start operator-panel.service", limit=60)
        wait_for("the program ends", lambda: panel.unit("ActiveState")[0] == "failed", 30)
        expect_equal(panel.unit("ExecMainStatus")[0], "1", "exit code")
        status = panel.agent.run("systemctl status --no-pager operator-panel.service").output.decode()
        expect("No display" in status, f"the status says nothing of a display: {status}")
        panel.agent.check(f"echo {device} >{GPU_DRIVER}/bind")
        panel.wait_page("preview", 60)
        panel.wait_picture(preview)


@check(7, 35)
def without_input():
    """Neither touchscreen nor keyboard at the start: the panel takes them when they appear."""
    with ready_panel("without_input") as panel:
        preview = panel.wait_still()
        panel.plug_keyboard(False)
        panel.plug_touchscreen(False)
        wait_for("no input device", lambda: panel.agent.run(
            "ls /dev/input/touchscreen /dev/input/keyboard* 2>/dev/null").output == b"", 10)
        restart_unit(panel)
        process = panel.pid()
        panel.plug_touchscreen(True)
        wait_for("the touchscreen", lambda: panel.agent.run("test -e /dev/input/touchscreen").status
                 == 0, 10)
        panel.touch_until("configure", "mode", tries=5)
        panel.touch("cancel", "preview")
        panel.plug_keyboard(True)
        wait_for("the keyboard", lambda: panel.agent.run("ls /dev/input/keyboard*").status == 0, 10)
        time.sleep(LOOK)
        for _ in range(5):
            panel.press_key("ret")
            try:
                panel.wait_page("mode", 3)
                break
            except Failure:
                continue
        panel.wait_page("mode")
        panel.touch("cancel", "preview")
        panel.wait_picture(preview)
        expect_equal(panel.pid(), process, "process")

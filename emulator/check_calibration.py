"""Group 4: calibration of the touchscreen, from a wrong one, on a root that is read-only, cut off."""

import time

from checks import READY, WIDE_PANEL, check, expect, expect_equal, ready_panel, running
from common import patience, wait_for
from panel import FIRST_PAGE_LIMIT, GLANCE, Panel
from places import PLACES, WIDE

FILE = "/etc/pointercal"
NOTE = "/etc/pointercal.unaccepted"
# Takes what the controller reports for pixels.
WRONG = b"65536 0 0 0 65536 0 65536\n"
LARGEST_ERROR = 4  # pixels, of a good calibration
PRESS = 0.15  # seconds on a cross
START_LIMIT = 15  # the page comes within a tick and counts down from 5
VERDICT_LIMIT = 15


def largest_error(panel):
    """Pixels by which the calibration in the file misses a finger, at worst."""
    numbers = [float(word) for word in panel.agent.read("/simulator/touch.conf").split()]
    width, height, *axes = numbers
    a, b, c, d, e, f, scale = (int(word) for word in panel.agent.read(FILE).split())
    worst = 0
    for x in (0, (width - 1) / 2, width - 1):
        for y in (0, (height - 1) / 2, height - 1):
            raw_x, raw_y = (round(axes[i] * x + axes[i + 1] * y + axes[i + 2]) for i in (0, 3))
            worst = max(worst, abs((a * raw_x + b * raw_y + c) / scale - x),
                        abs((d * raw_x + e * raw_y + f) / scale - y))
    return worst


def expect_touch_is_right(panel):
    """The file is a good calibration, and a touch goes where the finger is."""
    error = largest_error(panel)
    expect(error <= LARGEST_ERROR, f"the calibration misses by {error:.0f} pixels")
    panel.touch_until("configure", "mode")
    panel.touch("cancel", "preview")


def begin(panel):
    """Asks for a calibration and waits for its first cross."""
    panel.control("calibration-request")
    panel.wait_page("calibration", 5)
    panel.wait_page("cross 1", START_LIMIT)


def touch_crosses(panel, offset=0):
    """Touches the five crosses, all as far beside as told, up to the verdict."""
    for number in range(1, 6):
        panel.wait_page(f"cross {number}", VERDICT_LIMIT)
        time.sleep(GLANCE * patience())
        x, y = PLACES[WIDE][f"cross {number}"]
        panel.tap(x + offset, y + offset, PRESS)
    panel.wait_page("verdict", VERDICT_LIMIT)


def accept(panel):
    """Accepts the calibration and leaves its page."""
    panel.touch_until("accept", "calibration after")
    panel.touch("exit calibration", "preview")
    expect_equal(panel.agent.run("test -e /tmp/.system/TouchCalibration").status, 1,
                 "status of a test for the request")


def start_with(panel, calibration):
    """Starts the panel anew with this calibration."""
    panel.systemctl("stop operator-panel.service")
    panel.agent.write(FILE, calibration)
    panel.systemctl("start operator-panel.service", 60)
    panel.wait_page("preview", 30)


@check(4, 75)
def calibration_from_a_wrong_one():
    """Five crosses, accept; right at once and after a restart of the device."""
    with ready_panel("calibration_from_a_wrong_one") as panel:
        start_with(panel, WRONG)
        preview = panel.wait_still()
        panel.touch("configure")
        panel.watch_still(preview, 1)
        begin(panel)
        touch_crosses(panel)
        accept(panel)
        panel.wait_picture(preview)
        expect_touch_is_right(panel)
        stored = panel.agent.read(FILE)
        before = panel.boot_id()
        panel.agent.run("systemctl reboot")
        panel.wait_reboot(before)
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        panel.wait_booted()
        expect_equal(panel.agent.read(FILE), stored, FILE)
        expect_touch_is_right(panel)


@check(4, 45)
def calibration_expires():
    """Nobody accepts: the calibration before comes back, and the next run begins by itself."""
    with ready_panel("calibration_expires") as panel:
        good = panel.agent.read(FILE)
        begin(panel)
        touch_crosses(panel, offset=40)
        expect(panel.agent.read(FILE) != good, "the new calibration is not in force")
        wait_for("the calibration before", lambda: panel.agent.read(FILE) == good, 20)
        panel.wait_page("cross 1", 30)
        expect_equal(panel.agent.read(FILE), good, FILE)
        expect_equal(panel.agent.run(f"test -e {NOTE}").status, 1, f"status of a test for {NOTE}")


@check(4, 40)
def calibration_on_read_only_root():
    """The panel makes the root writable for as long as it stores, with the real mount."""
    with ready_panel("calibration_on_read_only_root") as panel:
        start_with(panel, WRONG)
        panel.agent.check("mount -o remount,ro /")
        begin(panel)
        touch_crosses(panel)
        accept(panel)
        options = panel.agent.check("findmnt -n -o OPTIONS /").strip().split(",")
        expect("ro" in options, f"the root is left writable: {options}")
        expect_touch_is_right(panel)


@check(4, 55)
def power_cut_before_accept():
    """The device is cut off while a new calibration waits to be accepted: the one before is right."""
    panel = Panel("power_cut_before_accept", WIDE_PANEL)
    with running(panel):
        panel.wake(READY)
        panel.wait_page("preview")
        good = panel.agent.read(FILE)
        begin(panel)
        touch_crosses(panel, offset=40)
        expect(panel.agent.read(FILE) != good, "the new calibration is not in force")
        panel.kill()
        panel.start(fresh=False)
        panel.wait_agent()
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        # The panel may be there before its touchscreen, with which it is taken back.
        wait_for(f"{FILE} is as it was", lambda: panel.agent.read(FILE) == good, 20)
        panel.wait_booted()
        expect_touch_is_right(panel)

"""Group 5: the screen's way to the visualisation of the PLC runtime and back, ten times."""

import time

from checks import check, expect, ready_panel
from common import Failure, patience, wait_for
from picture import Picture

TOUCHSCREEN = "/dev/input/touchscreen"
STATE = "/simulator/firmware.state"
# Both replace the file in one step, as the firmware library's own state changes.
SET_STATE = f"sed 's/^state=.*/state=%d/' {STATE} >{STATE}.new && mv {STATE}.new {STATE}"
RUNNING, STOPPED = 1, 2
TICK = 0.5  # seconds
BEFORE_TICK = 400  # ms after a tick: just before the next
BACK = 1.0  # seconds until the panel's page is complete again
ROUNDS = 10


def visualisation(size, seed):
    """What the stand-in of the visualisation paints (emulator/guest/visualisation.cpp)."""
    width, height = size
    rows = []
    for y in range(height):
        green = 255 * y // height
        rows.append(b"".join(bytes((255 * x // width, green, seed)) for x in range(width)))
    return Picture(width, height, b"".join(rows))


def is_heard(panel, device, act):
    """True when what the operator does reaches another reader of an input device: one that the panel
    has grabbed tells nobody else."""
    panel.agent.check(f"(timeout 5 cat {device} >/tmp/heard 2>/dev/null) & sleep 0.5")
    act()
    try:
        wait_for("events", lambda: panel.agent.run("test -s /tmp/heard").status == 0, 1.5)
    except Failure:
        return False
    return True


def start_plc(panel, seed, before_tick):
    """Starts the PLC, whose visualisation paints at that moment, or just before the panel sees it."""
    start = SET_STATE % RUNNING
    paint = f"/usr/lib/emulator/visualisation /dev/fb0 {seed}"
    if before_tick:
        script = start.replace("'", "'\\''")
        panel.agent.check(f"{paint} --before-next-read {STATE} {BEFORE_TICK} '{script}'")
    else:
        panel.agent.check(f"{start} && {paint}")


@check(5, 60)
def screen_hand_over():
    """Not one pixel of the visualisation is touched while the PLC runs; then the page is back."""
    with ready_panel("screen_hand_over") as panel:
        preview = panel.wait_still()
        panel.tap(400, 100) # tslib takes the touchscreen for its own when it reads it first
        expect(not is_heard(panel, TOUCHSCREEN, lambda: panel.tap(400, 100)),
               "the touchscreen is not grabbed while the panel is on the screen")
        slowest = 0
        for number in range(ROUNDS):
            seed = 16 * number + 8
            painted = visualisation(panel.kind.size, seed)
            start_plc(panel, seed, before_tick=number % 2 == 1)
            # The kernel brings what was written to the screen a moment later.
            panel.wait_picture(painted, TICK)
            # Longer than two ticks, of which the first sees the PLC running.
            panel.watch_still(painted, 2.5 * TICK)
            wait_for("the panel knows that the PLC runs",
                     lambda: panel.unit("StatusText")[0].startswith("PLC running"), 5)
            if number == 0:
                expect(is_heard(panel, TOUCHSCREEN, lambda: panel.touch("configure")),
                       "the touchscreen is grabbed while the PLC runs")
                expect(is_heard(panel, "/dev/input/keyboard*", lambda: panel.press_key("ret")),
                       "the keyboard is grabbed while the PLC runs")
                panel.watch_still(painted, 2 * TICK)
            panel.agent.check(SET_STATE % STOPPED)
            since = time.monotonic()
            panel.wait_picture(preview)
            slowest = max(slowest, time.monotonic() - since)
        expect(slowest <= BACK * patience(), f"the page was back after {slowest:.1f} s")
        print(f"back after {slowest:.2f} s at the latest")
        panel.touch("configure", "mode")
        panel.touch("cancel", "preview")
        panel.press_key("ret", "mode")
        try:
            panel.touch("cancel", "preview")
        except Failure as failure:
            raise Failure(f"after the keyboard: {failure}") from None

"""Groups 2 and 3: the wizard by touch alone and by keyboard alone, keyboards that come and go."""

import time

from checks import (MULTI_TOUCH_PANEL, booted_panel, check, expect, expect_equal, new_settings,
                    ready_panel, restart_unit)
from common import LOOK, patience, wait_for
from panel import FIRST_PAGE_LIMIT, PAGE_LIMIT, device_settings

# Where the mode page says "Static" or "DHCP", and the number pad its text.
MODE_FIELD = (240, 175, 350, 26)
PAD_FIELD = (90, 58, 620, 40)
ADDRESS_LENGTH = 15
BLINK = 2  # seconds: a cursor that blinks is seen and not seen


def expect_saved(panel, before, mode_page):
    """After the restart: another boot, the new settings in the file and on the mode page."""
    panel.wait_reboot(before)
    panel.wait_page("preview", FIRST_PAGE_LIMIT)
    panel.wait_booted()
    expect_equal(device_settings(panel)["network/eth0.mode"], "dhcp", "mode in the file")
    shown = panel.touch("configure", "mode")
    expect(shown.region(*MODE_FIELD) == mode_page.region(*MODE_FIELD), "the page shows another mode")


@check(2, 75)
def wizard_by_touch():
    """Static to DHCP, SAVE, count-down, the real reboot, the new settings shown."""
    with ready_panel("wizard_by_touch") as panel:
        boot = panel.boot_id()
        static = panel.touch("configure", "mode")
        panel.touch("change")
        dhcp = wait_for("another mode on the page",
                        lambda: changed(panel, static.region(*MODE_FIELD)), 5)
        for page in ("addresses", "name servers", "summary"):
            panel.touch("next", page)
        seen = [panel.touch("next", "restart", 30)]
        expect_equal(device_settings(panel)["network/eth0.mode"], "dhcp", "mode in the file")
        # Ten figures, from 10 to 1; at 0 the device restarts.
        count_down(panel, seen)
        expect(len(seen) >= 9, f"{len(seen)} figures of the count-down seen")
        expect_saved(panel, boot, dhcp)


def changed(panel, region):
    """The picture, when its mode field has become another."""
    picture = panel.picture()
    return picture if picture.region(*MODE_FIELD) != region else None


def count_down(panel, seen):
    """Collects the pictures of the count-down until it is over."""
    def over():
        picture = panel.picture()
        if not picture.is_page("restart"):
            return True
        if picture != seen[-1]:
            seen.append(picture)
        return False
    wait_for("the end of the count-down", over, 20)


@check(2, 65)
def wizard_by_keyboard():
    """The same without a finger; the restart at once, by the button."""
    with ready_panel("wizard_by_keyboard") as panel:
        boot = panel.boot_id()
        panel.plug_touchscreen(False)
        static = panel.press_key("ret", "mode")
        panel.press_key("tab")
        panel.press_key("ret")
        dhcp = wait_for("another mode on the page",
                        lambda: changed(panel, static.region(*MODE_FIELD)), 5)
        panel.press_key("tab")
        panel.press_key("tab")
        for page in ("addresses", "name servers", "summary"):
            panel.press_key("ret", page)
        panel.press_key("ret", "restart", 30)
        panel.press_key("ret")
        expect_saved(panel, boot, dhcp)


@check(2, 20)
def password():
    """A wrong password, then the right one, on the screen's own keyboard."""
    with ready_panel("password") as panel:
        preview = panel.wait_still()
        new_settings(panel, "\n[options]\nconfig_passwd=1234\nconfig_protection_enabled=1\n")
        panel.touch("configure", "pad")
        empty = field_looks(panel)
        panel.touch("1")
        panel.touch("ok", "error box")
        panel.touch("box ok", "pad")
        expect(field_looks(panel) & empty, "the field is not empty again")
        for digit in "1234":
            panel.touch(digit)
        panel.touch("ok", "mode")
        panel.touch("cancel", "preview")
        panel.wait_picture(preview)


@check(2, 50, own=True)
def multi_touch():
    """Another touchscreen, Qt's own driver: the wizard by touch, a calibration request deleted."""
    with booted_panel("multi_touch", MULTI_TOUCH_PANEL) as panel:
        preview = panel.wait_still()
        panel.touch("configure", "mode")
        panel.touch("next", "addresses")
        panel.touch("edit 1", "pad")
        panel.touch("pad cancel", "addresses")
        panel.touch("cancel", "preview")
        panel.wait_picture(preview)
        panel.control("calibration-request")
        wait_for("the request is gone",
                 lambda: panel.agent.run("test -e /tmp/.system/TouchCalibration").status == 1, 5)
        panel.watch_still(preview, 1)


def keyboards(panel):
    """Names of the links to keyboards."""
    return panel.agent.check("cd /dev/input; ls -d keyboard* 2>/dev/null; true").split()


@check(3, 25)
def keyboard_comes_and_goes():
    """A keyboard that is unplugged does nothing; plugged in again it works; twice."""
    with ready_panel("keyboard_comes_and_goes") as panel:
        preview = panel.wait_still()
        for _ in range(2):
            expect_equal(len(keyboards(panel)), 1, "keyboards")
            panel.plug_keyboard(False)
            wait_for("the link goes", lambda: not keyboards(panel), 5)
            panel.press_key("ret")
            panel.watch_still(preview, 1)
            panel.plug_keyboard(True)
            wait_for("the link comes", lambda: keyboards(panel), 5)
            # Until the panel has opened it, nobody hears the key.
            wait_for("the panel reads the keyboard", lambda: reads_keyboard(panel), 5)
            panel.press_key("ret", "mode")
            panel.touch("cancel", "preview")
            panel.wait_picture(preview)


def reads_keyboard(panel):
    """True when the panel has the keyboard open."""
    return panel.agent.run("device=$(readlink -f /dev/input/keyboard*) && "
                           f"ls -l /proc/{panel.pid()}/fd | grep -q \"$device\\$\"").status == 0


@check(3, 80)
def german_keyboard():
    """With kbd_mapping=DE the keyboard types what the key map says: here a 7 on the key A."""
    with ready_panel("german_keyboard") as panel:
        key_map = bytearray(panel.agent.read("/etc/kbd/de.qmap"))
        map_key(key_map, key=30, character="7")
        panel.agent.write("/etc/kbd/de.qmap", bytes(key_map))

        def typed(act):
            """What the field looks like empty, and after what was done; the pad is left again."""
            panel.touch("configure", "mode")
            panel.touch("next", "addresses")
            panel.touch("edit 1", "pad")
            full = field_looks(panel)
            for _ in range(ADDRESS_LENGTH):
                panel.key("backspace")
            wait_for("an empty field", lambda: not field_looks(panel) & full, PAGE_LIMIT)
            empty = field_looks(panel)
            act()
            after = field_looks(panel) - empty
            panel.touch("pad cancel", "addresses")
            panel.touch("cancel", "preview")
            return after
        expect(not typed(lambda: panel.press_key("a")), "the letter A has typed something")
        seven = typed(lambda: panel.touch("7"))
        expect(seven, "the 7 on the screen has typed nothing")
        new_settings(panel, "\n[input]\nkbd_mapping=DE\n")
        restart_unit(panel)
        looks = typed(lambda: panel.press_key("a"))
        expect(looks & seven, f"the key map is not used: {len(looks)} looks, none of {len(seven)}")


def field_looks(panel):
    """All that the pad's field looks like for a while: with and without its blinking cursor."""
    end = time.monotonic() + BLINK * patience()
    looks = set()
    while time.monotonic() < end:
        looks.add(panel.picture().region(*PAD_FIELD))
        time.sleep(LOOK)
    return looks


def map_key(key_map, key, character):
    """Changes what a key without modifiers types in a key map of Qt's evdev driver: a header of 16
    bytes, then 12 for each: key (2), character (2), Qt's key (4), modifiers, flags, special (2)."""
    for offset in range(16, 16 + 12 * int.from_bytes(key_map[8:12], "big"), 12):
        if int.from_bytes(key_map[offset:offset + 2], "big") == key and key_map[offset + 8] == 0:
            key_map[offset + 2:offset + 4] = ord(character).to_bytes(2, "big")
            key_map[offset + 4:offset + 8] = ord(character).to_bytes(4, "big")
            return
    expect(False, f"the key map has no key {key}")

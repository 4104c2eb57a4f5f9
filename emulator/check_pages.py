"""Group 1: power-on to the first page; start page, link, preview. Idle pages, pages behind pages."""

import struct
import zlib

from checks import (READY, SMALL_PANEL, WIDE_PANEL, check, expect, expect_equal, ready_panel,
                    restart_unit, running)
from common import wait_for
from panel import FIRST_PAGE_LIMIT, GLANCE, Panel

IDLE = 5  # seconds in which an idle page is one picture


def power_on(panel):
    """From power-on to the preview page; the first thing painted is the whole start page."""
    panel.start()

    def painted():
        picture = panel.picture()
        expect((picture.width, picture.height) in (panel.kind.size, (640, 480)),
               f"the screen is {picture.width}x{picture.height}")
        # The kernel hands a frame on to the screen in pieces, from the top.
        lit = ((picture.width, picture.height) == panel.kind.size
               and picture.at(5, picture.height - 5) != (0, 0, 0))
        return picture if lit else None
    first = wait_for("the first frame", painted, FIRST_PAGE_LIMIT, look=0.02)
    if not first.is_page("start page"):
        # Half of it may be on the screen; nothing else may be there before the other half comes.
        whole = panel.wait_page("start page", 1)
        expect(first.is_part_of(whole), f"the first frame shows {first.page()}")
    panel.wait_page("preview", FIRST_PAGE_LIMIT)
    panel.wait_agent()
    panel.wait_booted()


@check(1, 35, first=True)
def power_on_800x480():
    """The device that most checks go on with."""
    panel = Panel("power_on_800x480", WIDE_PANEL)
    with running(panel):
        power_on(panel)
        panel.watch_still(panel.wait_still(), IDLE)
        panel.remember(READY)


@check(1, 45, own=True)
def power_on_480x272():
    """A small screen: a page behind the wizard is as it was."""
    panel = Panel("power_on_480x272", SMALL_PANEL)
    with running(panel):
        power_on(panel)
        preview = panel.wait_still()
        panel.watch_still(preview, IDLE)
        mode = panel.touch("configure", "mode")
        expect(panel.kind.size == (mode.width, mode.height), "the wizard is on another screen")
        panel.touch("cancel", "preview")
        panel.wait_picture(preview)


@check(1, 20)
def runtime_link():
    """Without a link to the runtime the start page stays; with it the preview page comes."""
    with ready_panel("runtime_link") as panel:
        preview = panel.wait_still()
        panel.systemctl("stop operator-panel.service")
        panel.control("plc no-link")
        panel.systemctl("start operator-panel.service", 60)
        panel.wait_page("start page", 30)
        # The first tick comes 5 s after the start, and finds nothing.
        wait_for("a tick that asks for the link",
                 lambda: panel.unit("StatusText")[0] != "" and panel.agent.check("cat /proc/uptime"),
                 20)
        panel.wait_page("start page")
        panel.control("plc link")
        panel.wait_page("preview")
        panel.wait_picture(preview)


@check(1, 20)
def idle_pages():
    """Every page of the wizard is one picture for 5 s, and back comes what was there before."""
    with ready_panel("idle_pages") as panel:
        before = {"preview": panel.wait_still()}
        panel.touch("configure", "mode")
        order = ["mode", "addresses", "name servers", "nothing to save"]
        for index, name in enumerate(order):
            before[name] = panel.wait_still(seconds=GLANCE)
            panel.watch_still(before[name], IDLE if name in ("mode", order[-1]) else 1)
            if index + 1 < len(order):
                panel.touch("next", order[index + 1])
        for name in reversed(order[:-1]):
            panel.touch("back", name)
        panel.wait_picture(before["mode"])
        panel.touch("cancel", "preview")
        panel.wait_picture(before["preview"])


@check(1, 30)
def german_pages():
    """With LANG=de_DE.UTF-8 the pages are in German; the panel's own picture of them is a PNG."""
    with ready_panel("german_pages") as panel:
        english = panel.wait_still()
        panel.agent.check("echo LANG=de_DE.UTF-8 >>/etc/default/operator-panel")
        restart_unit(panel)
        expect(panel.wait_still() != english, "the preview page is still in English")
        panel.agent.check("touch /tmp/makeScreenshot; while test -e /tmp/makeScreenshot; do sleep 0.1; done",
                          limit=20)
        picture = panel.agent.read("/tmp/screenshot.png")
        expect_equal(picture[:8], b"\x89PNG\r\n\x1a\n", "the picture's signature")
        expect_equal(struct.unpack(">II", picture[16:24]), panel.kind.size, "the picture's size")
        begin = picture.index(b"IDAT")
        length = struct.unpack(">I", picture[begin - 4:begin])[0]
        zlib.decompressobj().decompress(picture[begin + 4:begin + 4 + length])

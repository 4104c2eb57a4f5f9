"""What the checks on the emulated device have in common, and the list of them all."""

from collections import namedtuple
from contextlib import contextmanager

from common import Failure, is_lean
from machine import Kind
from panel import FIRST_PAGE_LIMIT, Panel

WIDE_PANEL = Kind("800x480", "single")
SMALL_PANEL = Kind("480x272", "single")
MULTI_TOUCH_PANEL = Kind("800x480", "multi")
# The state in which most checks begin: WIDE_PANEL on its preview page.
READY = "ready-lean" if is_lean() else "ready"

Check = namedtuple("Check", "group name seconds first own apart run")
ALL = []


def check(group, seconds, first=False, own=False, apart=False):
    """Registers a function as a check of the group; seconds: how long it takes, roughly; first: the
    others need what it leaves, but for those with a device of their own; apart: it is run only when
    it is named."""
    def register(function):
        ALL.append(Check(group, function.__name__, seconds, first, own, apart, function))
        return function
    return register


def expect(condition, text):
    """Fails with the text when the condition does not hold."""
    if not condition:
        raise Failure(text)


def expect_equal(have, want, what):
    """Fails when two values differ, and says both."""
    expect(have == want, f"{what}: {have!r} instead of {want!r}")


@contextmanager
def running(panel):
    """Leaves nothing running; of a failure it leaves a picture and the journal."""
    try:
        yield panel
    except BaseException:
        try:
            panel.save_png(panel.folder / "failure.png")
            (panel.folder / "failure.log").write_text(panel.journal())
        except (Failure, AttributeError):
            pass # it is off, or hangs
        raise
    finally:
        panel.kill()


@contextmanager
def ready_panel(name):
    """A panel on its preview page, as READY was left."""
    panel = Panel(name, WIDE_PANEL)
    with running(panel):
        panel.wake(READY)
        panel.wait_page("preview")
        yield panel


@contextmanager
def booted_panel(name, kind, **options):
    """A new device that has been switched on and shows its preview page."""
    panel = Panel(name, kind)
    with running(panel):
        panel.boot(**options)
        panel.wait_page("preview", FIRST_PAGE_LIMIT)
        panel.wait_booted()
        yield panel


def restart_unit(panel):
    """The panel's program anew, for what it reads at its start; returns the preview page."""
    panel.systemctl("restart operator-panel.service", 60)
    return panel.wait_page("preview", 30)


def new_settings(panel, text):
    """Adds lines to the device's settings."""
    old = (panel.agent.read("/etc/settings.ini") or b"").decode()
    panel.agent.write("/etc/settings.ini", (old + text).encode())

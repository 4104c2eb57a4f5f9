"""The emulated device with the panel on it, as an operator and a technician use it."""

import time
from pathlib import Path

from common import Failure, patience, wait_for
from machine import ASK_LIMIT, DRIVER, KEYBOARD, KINDS, Machine
from places import PLACES

PAGE_LIMIT = 10  # seconds
FIRST_PAGE_LIMIT = 90
# The panel drops a touch that comes sooner on a page that has come up under the finger.
GLANCE = 0.35
UNIT = "operator-panel.service"


class Panel(Machine):
    """A machine whose pages are known. Places and pages have the names of places.py."""

    # ---- power -----------------------------------------------------------------------------------

    def boot(self, **options):
        """Switches a device with a new disk on and waits for its agent."""
        self.start(**options)
        self.wait_agent()

    def remember(self, name):
        """Freezes the device, so that wake() of this name goes on from here; it is off after it."""
        disk = KINDS / f"{name}.disk"
        state = KINDS / f"{name}.state"
        state.unlink(missing_ok=True)
        self.save(state)
        Path(self.folder / "disk").replace(disk)

    def wake(self, name):
        """Goes on from where remember() of this name has frozen a device of the same kind."""
        self.start(backing=KINDS / f"{name}.disk", incoming=KINDS / f"{name}.state")
        self.agent.check("true")

    def wait_booted(self):
        """Returns when all services of the device have been started and its input devices are there."""
        self.agent.check("until systemctl -q is-active multi-user.target; do sleep 0.1; done", limit=60)
        self.agent.check("until ls /dev/input/keyboard* >/dev/null 2>&1; do sleep 0.1; done", limit=60)
        if self.kind.touch != "none":
            self.agent.check("until test -e /dev/input/touchscreen; do sleep 0.1; done", limit=60)
            time.sleep(GLANCE)

    def boot_id(self, **options):
        """What is another one after each start of the device."""
        return self.agent.check("cat /proc/sys/kernel/random/boot_id", **options).strip()

    def wait_reboot(self, before, limit=120):
        """Returns when the device runs anew: its boot id is not the one before."""
        def again():
            try:
                self.wait_agent()
                return self.boot_id(limit=ASK_LIMIT) != before
            except Failure:
                return False
        wait_for("the device has started again", again, limit, look=0.5)

    # ---- what the screen shows -------------------------------------------------------------------

    def wait_page(self, name, limit=PAGE_LIMIT):
        """Waits for a page and returns its picture."""
        last = []

        def shown():
            last[:] = [self.picture()]
            return last[0] if last[0].is_page(name) else None
        try:
            return wait_for(name, shown, limit)
        except Failure:
            raise Failure(f"no page '{name}' within {limit * patience():.0f} s; the screen shows "
                          f"{last[0].page()}") from None

    def wait_picture(self, picture, limit=PAGE_LIMIT):
        """Waits until the screen shows exactly this picture."""
        last = []

        def shown():
            last[:] = [self.picture()]
            return last[0] == picture
        try:
            wait_for("the same picture", shown, limit)
        except Failure:
            raise Failure(f"not the same picture within {limit * patience():.0f} s; it differs in "
                          f"{last[0].differs_at(picture)}") from None

    def wait_still(self, seconds=0.5, limit=PAGE_LIMIT):
        """Waits until the screen has not changed for a while, and returns the picture."""
        end = time.monotonic() + limit * patience()
        picture, since = self.picture(), time.monotonic()
        while time.monotonic() - since < seconds:
            if time.monotonic() > end:
                raise Failure(f"the screen is not still within {limit * patience():.0f} s")
            time.sleep(0.05)
            now = self.picture()
            if now != picture:
                picture, since = now, time.monotonic()
        return picture

    def watch_still(self, picture, seconds):
        """Fails when anything but this picture is shown within so many seconds."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            now = self.picture()
            if now != picture:
                raise Failure(f"the screen has changed in {now.differs_at(picture)}")
            time.sleep(0.05)

    # ---- the operator ----------------------------------------------------------------------------

    def touch(self, place, page=None, limit=PAGE_LIMIT):
        """Touches a place, like one who has had a glance at the page, and waits for the next page."""
        time.sleep(GLANCE * patience())
        self.tap(*PLACES[self.kind.size][place])
        return self.wait_page(page, limit) if page else None

    def touch_until(self, place, page, tries=3):
        """Touches a place until the page is there: for one on which a touch may come too soon."""
        for _ in range(tries - 1):
            try:
                return self.touch(place, page, 3)
            except Failure:
                pass
        return self.touch(place, page)

    def press_key(self, name, page=None, limit=PAGE_LIMIT):
        """Presses a key of the keyboard and waits for the next page."""
        self.key(*name.split("+"))
        time.sleep(GLANCE / 2)
        return self.wait_page(page, limit) if page else None

    # ---- the world around the panel --------------------------------------------------------------

    def control(self, command):
        """Runs a command of panelctl on the device."""
        return self.agent.check(f"panelctl --root / {command}")

    def systemctl(self, command, limit=30):
        """Runs systemctl on the device."""
        return self.agent.check(f"systemctl {command}", limit=limit)

    def unit(self, *names):
        """Properties of the panel's unit, in the order of names."""
        text = self.agent.check(f"systemctl show {UNIT} " + " ".join(f"-p {name}" for name in names))
        values = dict(line.split("=", 1) for line in text.splitlines() if "=" in line)
        return [values.get(name, "") for name in names]

    def pid(self):
        """The panel's process; 0 when it does not run."""
        return int(self.unit("MainPID")[0])

    def plug_keyboard(self, plugged):
        """Gives the keyboard to its driver or takes it away."""
        self.agent.check(f"echo {KEYBOARD} >{DRIVER}/{'bind' if plugged else 'unbind'}")

    def plug_touchscreen(self, plugged):
        """The touchscreen is there or is gone."""
        self.systemctl(f"{'start' if plugged else 'stop'} emulator-touchscreen.service")

    def journal(self):
        """What the panel and systemd have said about it since the device was started."""
        return self.agent.check(f"journalctl --no-pager -b -u {UNIT}")


def device_settings(panel):
    """Groups and keys of /etc/settings.ini, as text."""
    values = {}
    group = ""
    for line in (panel.agent.read("/etc/settings.ini") or b"").decode().splitlines():
        if line.startswith("["):
            group = line.strip("[]")
        elif "=" in line:
            key, value = line.split("=", 1)
            values[f"{group}/{key}"] = value
    return values

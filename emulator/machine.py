"""An emulated device: one process of the emulator with its disk, screen, fingers and keys.

What belongs to the kind of a device (screen, touchscreen) is made once and kept; every run has a
folder of its own below build/emulator/run, in which the disk holds only what differs from the image.
"""

import ctypes
import fcntl
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass, field
from pathlib import Path

from agent import Agent, AgentAway
from common import BUILD, PROJECT, Failure, is_lean, patience, replace_file, wait_for
from picture import Picture
from qmp import Qmp

IMAGE = BUILD / "image"
KINDS = BUILD / "kinds"
RUNS = BUILD / "run"

MEMORY = 512  # MiB
CONNECT_LIMIT = 10  # seconds, for the emulator to open its sockets
BOOT_LIMIT = 60
ASK_LIMIT = 2  # seconds; what is asked while the device goes down is lost, and asked again
TAP = 0.1  # seconds
TABLET_RANGE = 32767
KERNEL_WORDS = ("console=ttyAMA0 quiet loglevel=3 vt.global_cursor_default=0 consoleblank=0 "
                "net.ifnames=0 systemd.show_status=0 systemd.log_color=0 rw")
# Every instruction takes 2 ns of the device's time, as on a processor of 500 million in a second that
# never waits for its memory; what the emulator itself takes, and what else runs here, counts for
# nothing. Only a disk takes as long as it takes.
COUNTED = ("-icount", "shift=1,sleep=on")
PR_SET_PDEATHSIG = 1
HELD = []  # the file whose lock keeps the image
# The kernel's driver of the keyboard, and its name for it: the third from the end of the board's
# slots, which are given out in the order of the command line.
DRIVER = "/sys/bus/virtio/drivers/virtio_input"
KEYBOARD = "virtio4"


@dataclass(frozen=True)
class Kind:
    """What a device is: WxH of its screen, its touchscreen, and what "panelctl init" is told."""

    screen: str = "800x480"
    touch: str = "single"
    options: tuple = ()

    @property
    def name(self):
        """A name for files."""
        words = [self.screen, self.touch, *self.options]
        return "-".join(word.strip("-").replace("/", "_") for word in words)

    @property
    def size(self):
        """Width and height of the screen in pixels."""
        width, height = self.screen.split("x")
        return int(width), int(height)


def die_with_parent():
    """In the child of a fork: whatever ends this program ends the child."""
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def hold_image():
    """Keeps the image as it is for as long as this program runs."""
    if not HELD:
        HELD.append(open(IMAGE / "in-use", "w", encoding="ascii"))
        try:
            fcntl.flock(HELD[0], fcntl.LOCK_SH | fcntl.LOCK_NB)
        except OSError:
            raise Failure("the image of the emulated device is being made") from None


def run_tool(*command):
    """Runs a program of this machine to its end; Failure with its own words when it fails."""
    try:
        result = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, check=False, preexec_fn=die_with_parent)
    except OSError as error:
        raise Failure(f"{command[0]}: {error.strerror}") from None
    if result.returncode != 0:
        text = result.stdout.decode(errors="replace").strip() or f"status {result.returncode}"
        raise Failure(f"{Path(command[0]).name}: {text.splitlines()[-1]}")


def newer(path, *sources):
    """True when path is there and none of sources has changed since."""
    return path.exists() and all(path.stat().st_mtime >= source.stat().st_mtime
                                 for source in sources)


def base_command(kind):
    """The board; what is the same at each start of it."""
    width, height = kind.size
    return ["qemu-system-arm", "-M", "virt", "-cpu", "cortex-a15", "-smp", "1", "-m", str(MEMORY),
            "-nodefaults", "-global", "virtio-mmio.force-legacy=false",
            "-device", f"virtio-gpu-device,xres={width},yres={height}",
            "-device", "virtio-keyboard-device", "-device", "virtio-tablet-device"]


def make_device_tree(kind, target):
    """The board's device tree with the properties that a panel has."""
    new = Path(f"{target}.new")
    board = base_command(kind)
    board[board.index("virt")] = f"virt,dumpdtb={new}"
    run_tool(*board)
    for node, name, value in (("/qrd-specific", "qrd_touch_type", kind.touch),
                              ("/display@di0", "qrd_dpi_x_resolution", "96"),
                              ("/display@di0", "qrd_dpi_y_resolution", "96")):
        run_tool("fdtput", "-cp", str(new), node)
        if kind.touch != "none" or node != "/qrd-specific":
            run_tool("fdtput", "-t", "s", str(new), node, name, value)
    new.replace(target)


def make_files(kind, target):
    """The archive of the files that a simulated device of this kind has, less its device nodes."""
    folder = Path(f"{target}.device")
    shutil.rmtree(folder, ignore_errors=True)
    panelctl = PROJECT / "build/debug/simulator/panelctl"
    run_tool(str(panelctl), "init", str(folder), "--screen", kind.screen, "--touch", kind.touch,
             *kind.options)
    for name in ("dev", "proc", "sys", "tmp", "sbin", "bin/mount", "usr/lib/fonts"):
        path = folder / name
        if path.is_dir():
            shutil.rmtree(path)
        else:
            path.unlink()
    (folder / "bin").rename(folder / "usr" / "bin")
    if kind.touch != "none":
        arguments = f"KIND={kind.touch}\nSCREEN={kind.screen}\n"
        (folder / "simulator/touchscreen.arguments").write_text(arguments)
    if kind.touch == "single":
        # A real input device, not the pipe of a simulated one.
        (folder / "etc/ts.conf").write_text("module_raw input grab_events=1\nmodule linear\n")
    run_tool("python3", str(PROJECT / "emulator/initrd.py"), "files", str(folder), f"{target}.cpio",
             "device")
    shutil.rmtree(folder)
    base = (IMAGE / "initrd.base").read_bytes()
    replace_file(target, base + Path(f"{target}.cpio").read_bytes())
    Path(f"{target}.cpio").unlink()


def make_kind(kind):
    """Makes what is the same for all devices of a kind; returns (device tree, initial RAM disk)."""
    KINDS.mkdir(parents=True, exist_ok=True)
    tree = KINDS / f"{kind.name}.dtb"
    initrd = KINDS / f"{kind.name}.initrd"
    source = Path(__file__)
    with open(KINDS / "lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not newer(tree, source):
            make_device_tree(kind, tree)
        if not newer(initrd, source, IMAGE / "initrd.base",
                     PROJECT / "build/debug/simulator/panelctl"):
            make_files(kind, initrd)
    return tree, initrd


@dataclass
class Machine:
    """A device in the folder build/emulator/run/NAME, which start() makes anew unless told."""

    name: str
    kind: Kind = field(default_factory=Kind)
    fs: str = "ext4"
    view: tuple = ("-display", "none")
    words: str = ""  # further words of the kernel's command line
    lean: bool = field(default_factory=is_lean)  # the lean package is installed
    second_disk: Path = None  # a file that is /dev/vdb, read only
    counted: bool = False  # its clock counts instructions: see COUNTED
    process: subprocess.Popen = None
    qmp: Qmp = None
    agent: Agent = None
    position: tuple = (0, 0)

    @property
    def folder(self):
        return RUNS / self.name

    @property
    def image(self):
        """Name of the image that its disk begins with."""
        return f"lean-{self.fs}" if self.lean else self.fs

    # ---- power -----------------------------------------------------------------------------------

    def start(self, fresh=True, backing=None, incoming=None, serial="file:serial.log"):
        """Switches the device on. fresh: with the image's disk, or with that of the file backing.
        incoming: goes on where the machine was that wrote this file."""
        hold_image()
        tree, initrd = make_kind(self.kind)
        self.folder.mkdir(parents=True, exist_ok=True)
        disk = self.folder / "disk"
        if fresh:
            disk.unlink(missing_ok=True)
            image = backing or IMAGE / f"root.{self.image}"
            form = "qcow2" if backing else "raw"
            run_tool("qemu-img", "create", "-q", "-f", "qcow2", "-F", form, "-b", str(image),
                     str(disk))
        words = f"{KERNEL_WORDS} panel.fs={self.fs} {self.words}".strip()
        command = base_command(self.kind)
        if self.second_disk: # in front of the first: the kernel counts from behind
            command += ["-drive", f"if=none,id=other,format=raw,readonly=on,file={self.second_disk}",
                        "-device", "virtio-blk-device,drive=other"]
        command += [
            "-kernel", str(IMAGE / "vmlinuz"), "-initrd", str(initrd), "-dtb", str(tree),
            "-append", words, "-serial", serial,
            "-drive", "if=none,id=disk,format=qcow2,file=disk,cache=writeback",
            "-device", "virtio-blk-device,drive=disk",
            "-netdev", "hubport,id=net,hubid=0",
            "-device", "virtio-net-device,netdev=net,mac=02:fc:00:00:00:01",
            "-chardev", "socket,id=agent,path=agent,server=on,wait=off",
            "-device", "virtio-serial-device", "-device", "virtserialport,chardev=agent",
            "-chardev", "socket,id=qmp,path=qmp,server=on,wait=off", "-mon", "chardev=qmp,mode=control",
            *self.view, *(COUNTED if self.counted else ())]
        if incoming:
            command += ["-incoming", f"exec:cat '{incoming}'"]
        for name in ("qmp", "agent", "serial.log"):
            (self.folder / name).unlink(missing_ok=True)
        with open(self.folder / "emulator.log", "wb") as log:
            on_terminal = serial == "mon:stdio"
            self.process = subprocess.Popen(command, cwd=self.folder,
                                            stdin=None if on_terminal else subprocess.DEVNULL,
                                            stdout=None if on_terminal else log, stderr=log,
                                            preexec_fn=die_with_parent)
        try:
            self.qmp = wait_for("the emulator answers", self._connect, CONNECT_LIMIT)
            self.agent = Agent(self.folder / "agent")
            if incoming:
                wait_for("the saved machine is there",
                         lambda: self.qmp.command("query-status")["status"] != "inmigrate",
                         CONNECT_LIMIT * 3)
                self.qmp.command("cont")
        except Failure:
            self.kill()
            raise

    def _connect(self):
        if self.process.poll() is not None:
            log = (self.folder / "emulator.log").read_text(errors="replace").strip()
            raise Failure(f"the emulator does not start: {log.splitlines()[-1] if log else ''}")
        try:
            return Qmp(self.folder / "qmp")
        except OSError:
            return None

    def kill(self):
        """Cuts the power."""
        if self.process is not None:
            self.process.kill()
            self.process.wait()
            self.process = None
        for connection in (self.qmp, self.agent):
            if connection is not None:
                connection.close()
        self.qmp = self.agent = None

    def save(self, target):
        """Freezes the machine into a file (for start's incoming) and ends the emulator. The disk
        must not be written any more by anybody: it belongs to what is in the file."""
        self.qmp.command("stop")
        self.qmp.command("migrate", uri=f"exec:cat >'{target}.new'")
        wait_for("the machine is saved",
                 lambda: self.qmp.command("query-migrate").get("status") == "completed", 60)
        self.qmp.command("quit")
        self.process.wait()
        Path(f"{target}.new").replace(target)
        self.kill()

    def wait_agent(self, limit=BOOT_LIMIT):
        """Returns when the device runs commands."""
        end = time.monotonic() + limit * patience()
        while True:
            try:
                return self.agent.check("true", limit=ASK_LIMIT)
            except AgentAway:
                if time.monotonic() > end or self.process.poll() is not None:
                    raise
                self.reconnect_agent()

    def reconnect_agent(self):
        """After a restart of the device, which forgets half a request."""
        self.agent.close()
        self.agent = Agent(self.folder / "agent")

    # ---- screen ----------------------------------------------------------------------------------

    def picture(self):
        """What the screen shows."""
        self.qmp.command("screendump", filename="screen.ppm")
        return Picture.read(self.folder / "screen.ppm")

    def save_png(self, path):
        """Saves what the screen shows as a PNG image."""
        self.qmp.command("screendump", filename=str(Path(path).absolute()), format="png")

    # ---- fingers and keys ------------------------------------------------------------------------

    def _axes(self, x, y):
        width, height = self.kind.size
        return [{"type": "abs",
                 "data": {"axis": axis, "value": round(value * TABLET_RANGE / (size - 1))}}
                for axis, value, size in (("x", x, width), ("y", y, height))]

    def _send(self, events):
        self.qmp.command("input-send-event", events=events)

    def press(self, x, y):
        """A finger goes down at a pixel."""
        self._send(self._axes(x, y))
        self._send([{"type": "btn", "data": {"button": "left", "down": True}}])

    def move(self, x, y):
        """The finger that is down moves."""
        self._send(self._axes(x, y))

    def release(self):
        self._send([{"type": "btn", "data": {"button": "left", "down": False}}])

    def tap(self, x, y, seconds=TAP):
        """Presses at a pixel, holds for as long as a finger does, releases."""
        self.press(x, y)
        time.sleep(seconds)
        self.release()

    def key(self, *names):
        """Presses keys together and releases them; names as the emulator has them ("ret")."""
        for down in (True, False):
            for name in names if down else reversed(names):
                self._send([{"type": "key", "data": {"down": down, "key":
                                                     {"type": "qcode", "data": name}}}])

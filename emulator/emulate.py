#!/usr/bin/env python3
"""Runs the emulated panel in the foreground. Called by emulate.sh, which has made the image and has
checked the options."""

import argparse
import fcntl
import json
import os
import signal
import sys
import termios

from common import Failure, replace_file, run_main
from machine import IMAGE, Kind, Machine

NAME = "panel"
VNC_PORTS = 99


def view_options(view):
    """What the emulator is told to show the screen."""
    if view == "window":
        # GTK's window would give the screen the size that it has itself before the device is up.
        return ("-display", "sdl,show-cursor=on")
    if view == "vnc":
        return ("-display", "none", "-vnc", f"127.0.0.1:0,to={VNC_PORTS}")
    return ("-display", "none")


def describe_view(machine, view):
    """Where the screen can be seen."""
    if view == "window":
        return "the window that has opened; the mouse is a finger, the keyboard is the panel's"
    if view == "vnc":
        port = machine.qmp.command("query-vnc")["service"]
        return (f"a VNC viewer at localhost:{port}; the mouse is a finger\n"
                f"               (from elsewhere: ssh -L {port}:localhost:{port} here)")
    return "pictures only"


def print_help(machine, view):
    """How to drive the device."""
    print(f"""
Look at it:    {describe_view(machine, view)}
Touch, type:   emulator/panelctl touch 49 440; emulator/panelctl keyboard type '<Return>'
PLC:           emulator/panelctl plc stop; emulator/panelctl plc start
Picture:       emulator/panelctl picture FILE.png   (all commands: --help)
""", flush=True)


def same_device(folder, description):
    """True when the folder's disk is that of a device made as described."""
    try:
        return (folder / "disk").exists() and (folder / "made").read_text() == description
    except FileNotFoundError:
        return False


def run(options):
    """Runs the device until it is switched off."""
    machine = Machine(NAME, view=view_options(options.view))
    machine.folder.mkdir(parents=True, exist_ok=True)
    with open(machine.folder / "lock", "w", encoding="ascii") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            raise Failure("the emulated panel runs already") from None
        made = machine.folder / "made"
        before = json.loads(made.read_text()) if made.exists() else {}
        screen = options.screen or before.get("screen", "800x480")
        touch = options.touch or before.get("touch", "single")
        description = json.dumps({"screen": screen, "touch": touch,
                                  "image": (IMAGE / f"{machine.image}.stamp").read_text()})
        machine.kind = Kind(screen, touch)
        machine.words = "panel.shell" if options.shell else ""
        fresh = options.fresh or not same_device(machine.folder, description)
        if fresh:
            made.unlink(missing_ok=True)
        print(f"==> Starting {'a new' if fresh else 'the'} emulated panel ({screen}, touch: {touch})",
              flush=True)
        machine.start(fresh=fresh, serial="mon:stdio" if options.shell else "file:serial.log")
        replace_file(made, description.encode())
        machine.agent.close()
        print_help(machine, options.view)
        # Pictures are taken by others.
        machine.qmp.close()
        try:
            return machine.process.wait()
        finally:
            machine.kill()


def main(arguments):
    parser = argparse.ArgumentParser(prog="emulate.sh")
    parser.add_argument("--view", required=True)
    parser.add_argument("--screen")
    parser.add_argument("--touch")
    parser.add_argument("--shell", action="store_true")
    parser.add_argument("--fresh", action="store_true")
    options = parser.parse_args(arguments)
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda got, frame: sys.exit(128 + got))
    terminal = termios.tcgetattr(0) if os.isatty(0) else None
    try:
        return 0 if run(options) == 0 else 1
    finally:
        if terminal is not None:
            termios.tcsetattr(0, termios.TCSADRAIN, terminal)


if __name__ == "__main__":
    run_main(main)

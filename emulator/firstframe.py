#!/usr/bin/env python3
"""Prints the functions that the lean program runs until its first frame, in their order. Called by
firstframe.sh, which has made the image and the program.

The emulator says which code it translates, and it translates what is run alone; the linker's map says
to which function that code belongs.
"""

import bisect
import re
import shutil
import subprocess

from common import BUILD, Failure, PROJECT, run_main
from compare import EMPTY_CACHE, OTHER, device_with, start
from machine import run_tool

PROGRAM = PROJECT / "build" / "lean-armhf" / "operator-panel"
WORK = BUILD / "firstframe"
LEAST = 1000 # functions; fewer are no start
DISK_SIZE = 64 * 1024 * 1024 # bytes
# Starts of a panel that show the first frame in different ways, by their environment.
STARTS = ("LC_ALL=C", "LC_ALL=de")
SECTION = re.compile(r"^ \.text\.(?:unlikely\.|startup\.)?(\S+)\s+0x(\w+)\s+0x(\w+)", re.MULTILINE)
LOAD = re.compile(r"^ +LOAD +0x(\w+) 0x(\w+) 0x\w+ 0x(\w+) .*R E", re.MULTILINE)
BLOCK = re.compile(r"^IN:.*\n((?:0x.*\n)+)", re.MULTILINE)
INSTRUCTION = re.compile(r"^0x(\w+): +(\w{8}|\w{4}(?: \w{4})?) ", re.MULTILINE)


def functions_of(program):
    """[(address, end, name)] of the functions that have a section of their own, in order."""
    where = program.with_name(f"{program.name}.map")
    if not where.exists():
        raise Failure(f"there is no {where}: remove the program beside it, so that it is linked anew")
    text = where.read_text(encoding="utf-8", errors="replace")
    found = ((int(address, 16), int(size, 16), name) for name, address, size in SECTION.findall(text))
    return sorted((address, address + size, name) for address, size, name in found if address)


def code_of(program):
    """(address of its first byte, what a start of the program maps to run)"""
    text = subprocess.run(["arm-linux-gnueabihf-readelf", "-lW", program], check=True,
                          capture_output=True, text=True).stdout
    offset, address, size = (int(word, 16) for word in LOAD.search(text).groups())
    return address, program.read_bytes()[offset:offset + size]


def addresses_in(log, first, code):
    """Where the blocks of the emulator's log begin that are blocks of this code: the device runs
    other programs, too, which may lie at the same addresses."""
    for block in BLOCK.findall(log):
        instructions = INSTRUCTION.findall(block)
        begin = int(instructions[0][0], 16) - first if instructions else -1
        found = b"".join(int(word, 16).to_bytes(len(word) // 2, "little")
                         for _, words in instructions for word in words.split())
        if 0 <= begin and code[begin:begin + len(found)] == found:
            yield begin + first


def disk_with(program):
    """A file system that holds the program as it is on a device."""
    tree, disk = WORK / "tree", WORK / "disk"
    shutil.rmtree(WORK, ignore_errors=True)
    tree.mkdir(parents=True)
    run_tool("arm-linux-gnueabihf-strip", "-o", str(tree / program.name), str(program))
    with open(disk, "wb") as file:
        file.truncate(DISK_SIZE)
    run_tool("mke2fs", "-q", "-F", "-t", "ext4", "-d", str(tree), str(disk))
    return disk


def monitor(panel, text):
    panel.qmp.command("human-monitor-command", **{"command-line": text})


def translated_blocks(program):
    """Addresses of the code that the emulator translates in the starts of the program."""
    addresses, code = [], code_of(program)
    with device_with(disk_with(program)) as panel:
        for number, environment in enumerate(STARTS):
            log = WORK / f"log{number}"
            panel.agent.check(EMPTY_CACHE + " true")
            monitor(panel, f"logfile {log}")
            monitor(panel, "log in_asm")
            start(panel, f"{OTHER}/{program.name}", environment)
            monitor(panel, "log none")
            monitor(panel, "logfile /dev/null")
            text = log.read_text(encoding="utf-8", errors="replace")
            addresses += addresses_in(text, *code)
    return addresses


def main(_):
    functions = functions_of(PROGRAM)
    begins = [begin for begin, _, _ in functions]
    names = {}
    for address in translated_blocks(PROGRAM):
        index = bisect.bisect_right(begins, address) - 1
        if index >= 0 and address < functions[index][1]:
            names[functions[index][2]] = None
    if len(names) < LEAST:
        raise Failure(f"only {len(names)} functions until the first frame: see {WORK}")
    print("# The functions that run until the first frame, in their order: the linker puts them first "
          "(cmake/lean.cmake).\n# Made by emulator/firstframe.sh.")
    print("\n".join(names))
    return 0


if __name__ == "__main__":
    run_main(main)

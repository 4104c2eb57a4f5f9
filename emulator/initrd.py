#!/usr/bin/env python3
"""Writes an initial RAM disk: an uncompressed cpio archive, without root and without cpio.

initrd.py modules TREE ARCHIVE NAME...: the programs and drivers that bring up the root file system
    of the emulated device; TREE is a tree of packages, NAMEs are drivers, loaded in this order,
    each after those that it depends on.
initrd.py files FOLDER ARCHIVE PREFIX: the files below FOLDER, put below PREFIX. The kernel unpacks
    several archives one behind the other, so what differs from device to device has one of its own.
"""

import os
import stat
import sys
from pathlib import Path

from common import Failure, replace_file, run_main

ALIGNMENT = 4


class Archive:
    """Collects entries in the "newc" format, all of them root's."""

    def __init__(self):
        self.parts = []
        self.count = 0

    def add(self, name, mode, content=b""):
        """Adds a folder, link or file; name without a slash in front."""
        self.count += 1
        encoded = name.encode() + b"\0"
        fields = [self.count, mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(encoded), 0]
        header = b"070701" + b"".join(b"%08X" % field for field in fields)
        self._padded(header + encoded)
        self._padded(content)

    def add_tree(self, folder, prefix):
        """Adds everything below folder, each entry below prefix."""
        for path in sorted(Path(folder).rglob("*")):
            name = f"{prefix}/{path.relative_to(folder)}".strip("/")
            status = path.lstat()
            if stat.S_ISLNK(status.st_mode):
                self.add(name, status.st_mode, os.readlink(path).encode())
            elif stat.S_ISDIR(status.st_mode):
                self.add(name, status.st_mode)
            elif stat.S_ISREG(status.st_mode):
                self.add(name, status.st_mode, path.read_bytes())

    def write(self, path):
        """Closes the archive and puts it in the place of path, whole."""
        self.add("TRAILER!!!", 0)
        replace_file(path, b"".join(self.parts))

    def _padded(self, data):
        self.parts.append(data + b"\0" * (-len(data) % ALIGNMENT))


def plain(name):
    """A driver's name as the kernel has it: files and dependencies mix both spellings."""
    return name.replace("-", "_")


class Drivers:
    """The kernel's modules in a tree of packages."""

    def __init__(self, tree):
        folders = sorted(Path(tree, "usr/lib/modules").glob("*/kernel"))
        if not folders:
            raise Failure(f"no kernel modules in {tree}")
        self.files = {plain(path.stem): path for path in folders[-1].rglob("*.ko")}

    def dependencies(self, name):
        """Names of the modules that have to be loaded before."""
        content = self.files[name].read_bytes()
        start = content.find(b"\0depends=")
        if start < 0:
            return []
        value = content[start + len(b"\0depends="):].split(b"\0", 1)[0].decode()
        return [plain(entry) for entry in value.split(",") if entry]

    def ordered(self, names):
        """Files of names and of all they depend on, in an order in which they can be loaded."""
        order = []

        def visit(name):
            if name not in self.files:
                raise Failure(f"the kernel has no module {name}")
            if name not in order:
                for needed in self.dependencies(name):
                    visit(needed)
                order.append(name)

        for name in names:
            visit(plain(name))
        return [self.files[name] for name in order]


def write_modules(tree, archive_path, names):
    """The archive with busybox, init and the drivers."""
    archive = Archive()
    for folder in ("bin", "lib"):
        archive.add(folder, stat.S_IFDIR | 0o755)
    archive.add("bin/busybox", stat.S_IFREG | 0o755, Path(tree, "usr/bin/busybox").read_bytes())
    archive.add("bin/sh", stat.S_IFLNK | 0o777, b"busybox")
    archive.add("init", stat.S_IFREG | 0o755,
                Path(__file__).with_name("guest").joinpath("init").read_bytes())
    listed = []
    for path in Drivers(tree).ordered(names):
        listed.append(f"/lib/{plain(path.stem)}.ko")
        archive.add(listed[-1].lstrip("/"), stat.S_IFREG | 0o644, path.read_bytes())
    archive.add("modules", stat.S_IFREG | 0o644, ("\n".join(listed) + "\n").encode())
    archive.write(archive_path)


def main(arguments):
    if len(arguments) >= 4 and arguments[0] == "modules":
        write_modules(arguments[1], arguments[2], arguments[3:])
    elif len(arguments) == 4 and arguments[0] == "files":
        archive = Archive()
        archive.add(arguments[3], stat.S_IFDIR | 0o755)
        archive.add_tree(arguments[1], arguments[3])
        archive.write(arguments[2])
    else:
        print(__doc__, file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    run_main(main)

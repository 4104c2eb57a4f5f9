"""Runs commands on the emulated device, through the agent that listens on its virtual serial port."""

import random
import time
from collections import namedtuple

from common import Failure, patience
from qmp import connect

DEFAULT_LIMIT = 20  # seconds
# The agent itself keeps the limit; it has this long to say so.
GRACE = 5

Result = namedtuple("Result", "status output")


class AgentAway(Failure):
    """The agent does not answer: the device starts, ends or hangs."""


class Agent:
    """A connection to the agent. Only one is served at a time."""

    def __init__(self, path):
        try:
            self.connection = connect(path)
        except OSError as error:
            raise Failure(f"no emulated device runs here ({error.strerror})") from None
        self.buffer = b""
        self.next_id = random.randrange(1 << 60)

    def close(self):
        self.connection.close()

    def run(self, script, stdin=b"", limit=DEFAULT_LIMIT):
        """Runs a script of /bin/sh; Result(status, output of both kinds, as bytes)."""
        self.next_id += 1
        script = script.encode()
        limit *= patience()
        head = f"run {self.next_id} {int(limit * 1000)} {len(script)} {len(stdin)}\n"
        end = time.monotonic() + limit + GRACE
        try:
            self.connection.settimeout(limit + GRACE)
            self.connection.sendall(head.encode() + script + stdin)
            while True:
                words = self._line(end).split()
                output = self._bytes(int(words[3]), end)
                # Others are answers to requesters that have given up.
                if int(words[1]) == self.next_id:
                    return Result(int(words[2]), output)
        except OSError as error:
            raise AgentAway(f"no answer from the device: {error}") from None

    def check(self, script, stdin=b"", limit=DEFAULT_LIMIT):
        """Output, as text, of a script that has to succeed."""
        result = self.run(script, stdin, limit)
        output = result.output.decode(errors="replace")
        if result.status != 0:
            raise Failure(f"on the device, status {result.status}: {script}: {output.strip()}")
        return output

    def read(self, path):
        """Content of a file as bytes; None when there is none."""
        result = self.run(f"cat -- '{path}'")
        return result.output if result.status == 0 else None

    def write(self, path, content):
        """Replaces a file whole."""
        self.check(f"cat >'{path}.new' && sync -- '{path}.new' && mv '{path}.new' '{path}'",
                   content)

    def _fill(self, end):
        self.connection.settimeout(max(end - time.monotonic(), 0.001))
        received = self.connection.recv(65536)
        if not received:
            raise AgentAway("the emulator has ended")
        self.buffer += received

    def _line(self, end):
        while b"\n" not in self.buffer:
            self._fill(end)
        line, self.buffer = self.buffer.split(b"\n", 1)
        return line.decode()

    def _bytes(self, count, end):
        while len(self.buffer) < count:
            self._fill(end)
        result, self.buffer = self.buffer[:count], self.buffer[count:]
        return result

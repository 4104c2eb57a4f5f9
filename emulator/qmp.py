"""The emulator's control connection: commands and events in lines of JSON."""

import json
import os
import socket
import time
from pathlib import Path

from common import Failure, patience

ANSWER_LIMIT = 20  # seconds


def connect(path):
    """Connects to a local socket, whose path may be longer than such an address can be."""
    path = Path(path)
    folder = os.open(path.parent, os.O_PATH | os.O_DIRECTORY)
    try:
        connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        try:
            connection.connect(f"/proc/self/fd/{folder}/{path.name}")
        except OSError:
            connection.close()
            raise
        return connection
    finally:
        os.close(folder)


class Qmp:
    """One client of the emulator's control socket. Only one can be connected at a time."""

    def __init__(self, path):
        self.connection = connect(path)
        self.buffer = b""
        self.events = []
        self._line(ANSWER_LIMIT)
        self.command("qmp_capabilities")

    def close(self):
        self.connection.close()

    def command(self, name, limit=ANSWER_LIMIT, **arguments):
        """Runs a command and returns what it answers."""
        request = {"execute": name, "arguments": arguments}
        try:
            self.connection.sendall(json.dumps(request).encode() + b"\n")
        except OSError as error:
            raise Failure(f"the emulator does not take '{name}': {error}") from None
        while True:
            answer = self._line(limit)
            if "error" in answer:
                raise Failure(f"the emulator refuses '{name}': {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]
            self.events.append(answer)

    def wait_event(self, name, limit):
        """Returns the next event of this name, also one that has already come."""
        end = time.monotonic() + limit * patience()
        while True:
            for index, event in enumerate(self.events):
                if event.get("event") == name:
                    del self.events[index]
                    return event
            self.events.append(self._line((end - time.monotonic()) / patience()))

    def forget_events(self):
        """From now on only new events count."""
        self.command("query-status")
        self.events.clear()

    def _line(self, limit):
        end = time.monotonic() + limit * patience()
        while b"\n" not in self.buffer:
            self.connection.settimeout(max(end - time.monotonic(), 0.001))
            try:
                received = self.connection.recv(65536)
            except TimeoutError:
                raise Failure("the emulator does not answer") from None
            except OSError as error:
                raise Failure(f"the emulator is gone: {error}") from None
            if not received:
                raise Failure("the emulator has ended")
            self.buffer += received
        line, self.buffer = self.buffer.split(b"\n", 1)
        return json.loads(line)

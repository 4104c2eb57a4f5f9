"""What every part of the emulator's driver uses: folders, failures, waiting."""

import os
import sys
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
BUILD = PROJECT / "build" / "emulator"

# Every limit is multiplied by it: for slow machines.
PATIENCE_VARIABLE = "EMULATOR_PATIENCE"
# "1": the devices have the lean package installed. Set by the scripts' option --lean.
LEAN_VARIABLE = "EMULATOR_LEAN"
LOOK = 0.05  # seconds between two looks at a condition


class Failure(Exception):
    """Something that cannot be done; its text is one line for whoever called."""


def is_lean():
    """Whether the devices are those with the lean package."""
    return os.environ.get(LEAN_VARIABLE) == "1"


def patience():
    """The multiplier for all limits, from the environment."""
    text = os.environ.get(PATIENCE_VARIABLE, "1")
    try:
        value = float(text)
    except ValueError:
        value = 0
    if not 0 < value <= 1000:
        raise Failure(f"{PATIENCE_VARIABLE}='{text}' is no number such as 2")
    return value


def wait_for(what, condition, limit, look=LOOK):
    """Returns the first true result of condition(); Failure after limit seconds of patience."""
    end = time.monotonic() + limit * patience()
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise Failure(f"not within {limit * patience():.0f} s: {what}")
        time.sleep(look)


def replace_file(path, content):
    """Puts content in the place of path: after an interruption there is the old or the new file."""
    new = Path(f"{path}.new")
    new.write_bytes(content)
    new.replace(path)


def run_main(main):
    """Runs main(arguments) as the whole program: a failure is one line and exit code 1."""
    try:
        sys.exit(main(sys.argv[1:]))
    except Failure as failure:
        print(f"{Path(sys.argv[0]).name}: {failure}", file=sys.stderr)
        sys.exit(1)
    except KeyboardInterrupt:
        sys.exit(130)

"""Pictures of the emulated screen."""

from common import Failure
from places import COLOURS, MARKS, TOLERANCE

DARKEST = 140  # an average of the three colours below it is ink


def is_ink(red, green, blue):
    """A pixel of a text or of a dark picture."""
    return red + green + blue < 3 * DARKEST


def is_red(red, green, blue):
    """A pixel of an error's title."""
    return red > 200 and green < 60 and blue < 60


class Picture:
    """A picture: width, height and three bytes (red, green, blue) for each pixel."""

    def __init__(self, width, height, pixels):
        self.width = width
        self.height = height
        self.pixels = pixels

    @classmethod
    def read(cls, path):
        """Reads a PPM file of the binary kind, as the emulator writes it."""
        with open(path, "rb") as file:
            content = file.read()
        fields = content.split(None, 4)
        if len(fields) < 4 or fields[0] != b"P6" or fields[3] != b"255":
            raise Failure(f"{path} is no picture")
        width, height = int(fields[1]), int(fields[2])
        pixels = content[-3 * width * height:]
        if len(pixels) != 3 * width * height:
            raise Failure(f"{path} is cut off")
        return cls(width, height, pixels)

    def __eq__(self, other):
        return (self.width, self.height, self.pixels) == (other.width, other.height, other.pixels)

    def at(self, x, y):
        """(red, green, blue) of a pixel."""
        offset = 3 * (y * self.width + x)
        return tuple(self.pixels[offset:offset + 3])

    def region(self, x, y, width, height):
        """A part of the picture, as bytes."""
        rows = []
        for row in range(y, y + height):
            start = 3 * (row * self.width + x)
            rows.append(self.pixels[start:start + 3 * width])
        return b"".join(rows)

    def count(self, rectangle, wanted):
        """Number of pixels in (x, y, width, height) for which wanted(red, green, blue) is true."""
        data = self.region(*rectangle)
        return sum(1 for i in range(0, len(data), 3) if wanted(*data[i:i + 3]))

    def has(self, mark):
        """True when the mark (see places.py) is there."""
        kind = mark[0]
        if kind == "ink":
            return self.count(mark[1:5], is_ink) >= mark[5]
        if kind == "blank":
            return self.count(mark[1:5], is_ink) == 0
        if kind == "red":
            return self.count(mark[1:5], is_red) >= mark[5]
        return all(abs(have - want) <= TOLERANCE
                   for have, want in zip(self.at(*mark[1:]), COLOURS[kind]))

    def is_page(self, name):
        """True when the screen shows the page of this name in places.py, and nothing over its marks."""
        return all(self.has(mark) for mark in MARKS[self.width, self.height][name])

    def page(self):
        """Name of the page that the screen shows, for messages; "?" when it is none."""
        names = [name for name in MARKS.get((self.width, self.height), {}) if self.is_page(name)]
        return " or ".join(names) or "?"

    def differs_at(self, other):
        """The rectangle (left, top, right, bottom) that holds all differing pixels, or None."""
        left, top, right, bottom = self.width, self.height, -1, -1
        stride = 3 * self.width
        for y in range(self.height):
            mine = self.pixels[y * stride:(y + 1) * stride]
            theirs = other.pixels[y * stride:(y + 1) * stride]
            if mine == theirs:
                continue
            columns = [i // 3 for i in range(stride) if mine[i] != theirs[i]]
            left, right = min(left, columns[0]), max(right, columns[-1])
            top, bottom = min(top, y), y
        return None if right < 0 else (left, top, right, bottom)

    def is_part_of(self, whole):
        """True when every pixel is black or as it is in the other picture."""
        return self.pixels == whole.pixels or all(
            mine in (theirs, b"\0\0\0") for mine, theirs in zip(self._each(), whole._each()))

    def _each(self):
        """The pixels one by one, as three bytes each."""
        return (self.pixels[i:i + 3] for i in range(0, len(self.pixels), 3))

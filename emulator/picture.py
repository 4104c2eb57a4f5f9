"""Pictures of the emulated screen."""

from common import Failure


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

    def is_uniform(self):
        """True for a screen of one colour: black, as a rule."""
        return self.pixels == self.pixels[:3] * (self.width * self.height)

#!/usr/bin/env python3
"""Draws the demo site's logo: the mark of Aurora Daily, a sun rising over two lines of print.

    tools/draw_logo.py sites/demo/logo.png

The picture is 138 x 138 pixels on a transparent background. The banner draws a logo 46 points high, so a point has
three pixels. Uses only the standard library and writes the same file on every machine.
"""

import math
import struct
import sys
import zlib

SIZE = 138
SAMPLES = 4  # per pixel, in each direction

GOLD, TEAL, SKY, PAPER = (255, 203, 92), (61, 214, 190), (122, 166, 255), (233, 238, 249)
CENTRE_X, HORIZON = 69, 78


def arc(x, y, radius, width):
    """Whether (x, y) lies on the upper half of a ring with round ends on the horizon."""
    dx, dy = x - CENTRE_X, y - HORIZON
    if dy <= 0:
        return abs(math.hypot(dx, dy) - radius) <= width / 2
    return math.hypot(abs(dx) - radius, dy) <= width / 2


def line(x, y, left, right, middle, height):
    """Whether (x, y) lies on a horizontal line with round ends."""
    nearest = min(max(x, left + height / 2), right - height / 2)
    return math.hypot(x - nearest, y - middle) <= height / 2


def mix(first, second, share):
    return tuple(a + (b - a) * share for a, b in zip(first, second))


def colour(x, y):
    """The colour at a point of the canvas, or None where it is clear."""
    if math.hypot(x - CENTRE_X, y - HORIZON) <= 21 and y <= HORIZON + 4:
        return GOLD
    share = min(max((x - 15) / 108, 0), 1)
    if arc(x, y, 36, 10):
        return mix(TEAL, SKY, share)
    if arc(x, y, 57, 10):
        return mix(SKY, TEAL, share)
    if line(x, y, 7, 131, 98, 10) or line(x, y, 36, 102, 116, 10):
        return PAPER
    return None


def pixel(column, row):
    """The average of the pixel's samples, as red, green, blue and alpha."""
    total, covered = [0.0, 0.0, 0.0], 0
    for i in range(SAMPLES * SAMPLES):
        x = column + (i % SAMPLES + 0.5) / SAMPLES
        y = row + (i // SAMPLES + 0.5) / SAMPLES
        sample = colour(x, y)
        if sample:
            covered += 1
            total = [a + b for a, b in zip(total, sample)]
    if covered == 0:
        return (0, 0, 0, 0)
    return tuple(round(a / covered) for a in total) + (round(255 * covered / SAMPLES**2),)


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def main():
    rows = b"".join(
        b"\0" + b"".join(bytes(pixel(column, row)) for column in range(SIZE)) for row in range(SIZE))
    png = b"\x89PNG\r\n\x1a\n"
    png += chunk(b"IHDR", struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0))
    png += chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")
    with open(sys.argv[1], "wb") as file:
        file.write(png)


if __name__ == "__main__":
    main()

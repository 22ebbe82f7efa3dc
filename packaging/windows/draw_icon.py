#!/usr/bin/env python3
"""Draws quorin-gateway.ico: an arrow that passes down through a gate, in four sizes.

usage: draw_icon.py FILE
"""

import struct
import sys
import zlib

BACKGROUND = (0x1F, 0x4E, 0x79)
GATE = (0x9F, 0xC5, 0xE8)
ARROW = (0xFF, 0xFF, 0xFF)
SAMPLES = 4  # per pixel and direction
PNG_SIZE = 256  # Windows requires uncompressed images for smaller sizes on old systems


def in_rounded_square(x, y, radius=0.18):
    dx = max(radius - x, x - (1 - radius), 0)
    dy = max(radius - y, y - (1 - radius), 0)
    return dx * dx + dy * dy <= radius * radius


def colour_at(x, y):
    """The colour at a point of the unit square, y downwards; None where it is transparent."""
    if not in_rounded_square(x, y):
        return None
    in_shaft = abs(x - 0.5) <= 0.07 and 0.14 <= y <= 0.6
    in_head = 0.56 <= y <= 0.86 and abs(x - 0.5) <= (0.86 - y) * 0.8
    if in_shaft or in_head:
        return ARROW
    in_post = 0.14 <= x <= 0.26 or 0.74 <= x <= 0.86
    return GATE if in_post and 0.3 <= y <= 0.7 else BACKGROUND


def pixel(column, row, size):
    """Red, green, blue and opacity: the mean of the samples."""
    points = [(i + 0.5) / SAMPLES for i in range(SAMPLES)]
    colours = [colour_at((column + dx) / size, (row + dy) / size) for dx in points for dy in points]
    visible = [colour for colour in colours if colour]
    if not visible:
        return (0, 0, 0, 0)
    mean = (round(sum(colour[i] for colour in visible) / len(visible)) for i in range(3))
    return (*mean, round(255 * len(visible) / len(colours)))


def draw(size):
    return [[pixel(column, row, size) for column in range(size)] for row in range(size)]


def bitmap(rows):
    """A bitmap as in an icon file: double height, bottom row first, then an empty mask."""
    size = len(rows)
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    colours = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    return header + colours + bytes((size + 31) // 32 * 4 * size)


def png(rows):
    def chunk(name, content):
        return (struct.pack(">I", len(content)) + name + content
                + struct.pack(">I", zlib.crc32(name + content)))

    header = struct.pack(">IIBBBBB", len(rows), len(rows), 8, 6, 0, 0, 0)
    content = b"".join(b"\0" + b"".join(map(bytes, row)) for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(content, 9)) + chunk(b"IEND", b""))


def main(file):
    sizes = (16, 32, 48, PNG_SIZE)
    images = [(png if size == PNG_SIZE else bitmap)(draw(size)) for size in sizes]
    entries = b""
    offset = 6 + 16 * len(sizes)
    for size, image in zip(sizes, images):
        entries += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    with open(file, "wb") as icon:
        icon.write(struct.pack("<HHH", 0, 1, len(sizes)) + entries + b"".join(images))


if __name__ == "__main__":
    main(sys.argv[1])

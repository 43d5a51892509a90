#!/usr/bin/python3
"""Draws the extension's icons: an arrow up and an arrow down on a rounded tile."""

import pathlib
import struct
import zlib

TILE, UP, DOWN = (38, 50, 56), (129, 199, 132), (255, 183, 77)

# On a field of 16 by 16, y downward.
ARROW = ((4.75, 3), (7.5, 6.75), (5.75, 6.75), (5.75, 13), (3.75, 13), (3.75, 6.75), (2, 6.75))
CORNER = 3.5
SAMPLES = 4


def is_inside(x, y, polygon):
    inside = False
    for (ax, ay), (bx, by) in zip(polygon, polygon[1:] + polygon[:1]):
        if (ay > y) != (by > y) and x < ax + (bx - ax) * (y - ay) / (by - ay):
            inside = not inside
    return inside


def colour_at(x, y):
    dx = max(CORNER - x, x - (16 - CORNER), 0)
    dy = max(CORNER - y, y - (16 - CORNER), 0)
    if dx * dx + dy * dy > CORNER * CORNER:
        return None
    if is_inside(x, y, ARROW):
        return UP
    return DOWN if is_inside(16 - x, 16 - y, ARROW) else TILE


def draw(size):
    rows = b""
    for row in range(size):
        rows += b"\0"
        for column in range(size):
            seen = [colour_at((column + (i + 0.5) / SAMPLES) * 16 / size,
                              (row + (j + 0.5) / SAMPLES) * 16 / size)
                    for i in range(SAMPLES) for j in range(SAMPLES)]
            solid = [colour for colour in seen if colour]
            count = max(len(solid), 1)
            rows += bytes(round(sum(c[channel] for c in solid) / count) for channel in range(3))
            rows += bytes([round(255 * len(solid) / len(seen))])
    return rows


def chunk(kind, content):
    return (struct.pack(">I", len(content)) + kind + content
            + struct.pack(">I", zlib.crc32(kind + content)))


for side in (16, 32, 48, 128):
    path = pathlib.Path(__file__).parent / "extension" / f"icon-{side}.png"
    path.write_bytes(b"\x89PNG\r\n\x1a\n"
                     + chunk(b"IHDR", struct.pack(">2I5B", side, side, 8, 6, 0, 0, 0))
                     + chunk(b"IDAT", zlib.compress(draw(side), 9)) + chunk(b"IEND", b""))

#!/usr/bin/env python3
"""Draws the simulator's identity card portraits (102 x 126, palette PNGs).

Run from anywhere: python3 make_portrait.py writes portrait.png (dark hair) and
portrait_foreigner.png (fair hair, blue eyes) beside this script. Only flat
colours, so the files stay small enough for the module's read reply.
"""
import struct
import zlib
from pathlib import Path

WIDTH, HEIGHT = 102, 126

BASE_PALETTE = [
    (222, 235, 247),  # 0 background
    (241, 201, 165),  # 1 skin
    (40, 30, 25),     # 2 hair
    (35, 45, 70),     # 3 jacket
    (250, 250, 250),  # 4 shirt, eye white
    (60, 40, 30),     # 5 iris
    (190, 90, 90),    # 6 mouth
    (210, 165, 130),  # 7 shade: ears, nose, neck
]


def inside_ellipse(x, y, cx, cy, rx, ry):
    return ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2 <= 1.0


def colour_at(x, y):
    # Shoulders and jacket, with a shirt in a V below the neck.
    if y >= 96 and inside_ellipse(x, y, 51, 140, 50, 44):
        if abs(x - 51) <= (y - 92) * 0.45 and y <= 118:
            return 4
        return 3
    # Ears behind the face.
    if inside_ellipse(x, y, 27, 56, 5, 9) or inside_ellipse(x, y, 75, 56, 5, 9):
        return 7
    # Hair above and around the top of the face.
    if inside_ellipse(x, y, 51, 38, 27, 24) and not (y > 38 and inside_ellipse(x, y, 51, 58, 23, 30)):
        return 2
    if inside_ellipse(x, y, 51, 58, 23, 30):
        for cx in (42, 60):
            if inside_ellipse(x, y, cx, 54, 5, 3):
                return 5 if inside_ellipse(x, y, cx, 54, 2, 2.5) else 4
            if 47 <= y <= 48 and abs(x - cx) <= 5:
                return 2  # brows
        if 57 <= y <= 66 and 50 <= x <= 52:
            return 7  # nose
        if inside_ellipse(x, y, 51, 74, 7, 2):
            return 6
        return 1
    if 80 <= y <= 100 and 41 <= x <= 61:
        return 7  # neck
    return 0


def chunk(kind, data):
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))


def png(palette):
    rows = b"".join(b"\0" + bytes(colour_at(x, y) for x in range(WIDTH)) for y in range(HEIGHT))
    header = struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 3, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"PLTE", b"".join(bytes(c) for c in palette))
            + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def with_colours(changes):
    palette = list(BASE_PALETTE)
    for index, rgb in changes.items():
        palette[index] = rgb
    return palette


if __name__ == "__main__":
    folder = Path(__file__).parent
    (folder / "portrait.png").write_bytes(png(BASE_PALETTE))
    fair = with_colours({2: (214, 178, 96), 5: (60, 110, 170)})
    (folder / "portrait_foreigner.png").write_bytes(png(fair))

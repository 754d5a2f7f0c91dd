#!/usr/bin/env python3
"""Draws an actor file as large as pictures get: the picture is whole, the cost grows with the pixels,
and a texture costs little.

usage: largest_picture.py ACTOR -- KTA HDO_EXPORT
"""

import json
import pathlib
import resource
import struct
import subprocess
import sys
import tempfile

SIDE = 8192
# Of the picture of a quarter of the pixels, in processor time, which a busy machine stretches for both.
MOST_GROWTH = 8
# Of the cost of one colour, for a picture that a texture fills: it is about twice as much, and seven
# times as much where each sample of a pixel looks its place up.
MOST_FOR_A_TEXTURE = 4


def draw(kta, actor, side, *options):
    """Draws a square picture; returns the seconds of processor time that it took."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with tempfile.TemporaryDirectory(prefix="picture_") as folder:
        drawn = pathlib.Path(folder) / "drawn.png"
        subprocess.run([kta, "preview", actor, "-o", drawn, "--size", f"{side}x{side}",
                        *options], check=True, timeout=120)
        with drawn.open("rb") as picture:
            sides = struct.unpack(">8x4x4xII", picture.read(24))
            picture.seek(-8, 2)
            end = picture.read(4)
    if sides != (side, side) or end != b"IEND":
        sys.exit(f"{sides} pixels and {end} at the end, not {side} x {side} and IEND")
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def textured_square(kta, host, actor, folder):
    """The actor file of a square with a texture, which is a picture of the actor, beside it."""
    square = {"maxscene": 1,
              "materials": [{"class": "standard", "name": "Wall",
                             "maps": [{"slot": 1, "map": {"class": "bitmap", "file": "wall.png"}}]}],
              "nodes": [{"name": "Square", "material": 0,
                         "object": {"class": "mesh",
                                    "vertices": [[-1, -1, 0], [1, -1, 0], [1, 1, 0], [-1, 1, 0]],
                                    "faces": [[0, 1, 2, 0, 0], [0, 2, 3, 0, 0]],
                                    "channels": {"1": {"vertices": [[0, 0], [1, 0], [1, 1], [0, 1]],
                                                       "faces": [[0, 1, 2], [0, 2, 3]]}}}}]}
    (folder / "square.maxscene.json").write_text(json.dumps(square))
    subprocess.run([kta, "preview", actor, "-o", folder / "wall.png"], check=True, timeout=120)
    subprocess.run([host, "-q", folder / "square.maxscene.json"], check=True, timeout=120)
    return folder / "square.hdotemp1"


def compare_with_texture(kta, host, actor):
    with tempfile.TemporaryDirectory(prefix="picture_") as folder:
        square = textured_square(kta, host, actor, pathlib.Path(folder))
        plain = draw(kta, square, SIDE // 4, "--view", "top", "--no-textures")
        textured = draw(kta, square, SIDE // 4, "--view", "top")
    print(f"{plain:.2f} s of processor time for a square in one colour, {textured:.2f} s for a texture")
    if textured > MOST_FOR_A_TEXTURE * plain:
        sys.exit(f"expected at most {MOST_FOR_A_TEXTURE} times as much")


def main():
    if len(sys.argv) != 5 or sys.argv[2] != "--":
        sys.exit(__doc__)
    quarter = draw(sys.argv[3], sys.argv[1], SIDE // 2)
    whole = draw(sys.argv[3], sys.argv[1], SIDE)
    print(f"{quarter:.2f} s of processor time for a quarter of the pixels, {whole:.2f} s for all")
    compare_with_texture(sys.argv[3], sys.argv[4], sys.argv[1])
    if whole > MOST_GROWTH * quarter:
        sys.exit(f"expected at most {MOST_GROWTH} times as much")


if __name__ == "__main__":
    main()

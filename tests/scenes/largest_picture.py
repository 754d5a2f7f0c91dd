#!/usr/bin/env python3
"""Draws an actor file as large as pictures get: the picture is whole, the cost grows with the pixels.

usage: largest_picture.py ACTOR -- KTA
"""

import pathlib
import resource
import struct
import subprocess
import sys
import tempfile

SIDE = 8192
# Of the picture of a quarter of the pixels, in processor time, which a busy machine stretches for both.
MOST_GROWTH = 8


def draw(kta, actor, side):
    """Draws a square picture; returns the seconds of processor time that it took."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    with tempfile.TemporaryDirectory(prefix="picture_") as folder:
        drawn = pathlib.Path(folder) / "drawn.png"
        subprocess.run([kta, "preview", actor, "-o", drawn, "--size", f"{side}x{side}"],
                       check=True, timeout=120)
        with drawn.open("rb") as picture:
            sides = struct.unpack(">8x4x4xII", picture.read(24))
            picture.seek(-8, 2)
            end = picture.read(4)
    if sides != (side, side) or end != b"IEND":
        sys.exit(f"{sides} pixels and {end} at the end, not {side} x {side} and IEND")
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    if len(sys.argv) != 4 or sys.argv[2] != "--":
        sys.exit(__doc__)
    quarter = draw(sys.argv[3], sys.argv[1], SIDE // 2)
    whole = draw(sys.argv[3], sys.argv[1], SIDE)
    print(f"{quarter:.2f} s of processor time for a quarter of the pixels, {whole:.2f} s for all")
    if whole > MOST_GROWTH * quarter:
        sys.exit(f"expected at most {MOST_GROWTH} times as much")


if __name__ == "__main__":
    main()

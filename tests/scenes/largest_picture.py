#!/usr/bin/env python3
"""Draws an actor file as large as pictures get, within the time that is promised.

usage: largest_picture.py ACTOR -- KTA
"""

import pathlib
import resource
import struct
import subprocess
import sys
import tempfile

SIDE = 8192
PROCESSOR_SECONDS = 10  # that two processors have in 5 seconds


def main():
    if len(sys.argv) != 4 or sys.argv[2] != "--":
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory(prefix="picture_") as folder:
        drawn = pathlib.Path(folder) / "drawn.png"
        subprocess.run([sys.argv[3], "preview", sys.argv[1], "-o", drawn, "--size", f"{SIDE}x{SIDE}"],
                       check=True, timeout=120)
        with drawn.open("rb") as picture:
            sides = struct.unpack(">8x4x4xII", picture.read(24))
        if sides != (SIDE, SIDE):
            sys.exit(f"{sides} pixels were drawn, not {SIDE} x {SIDE}")
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    taken = usage.ru_utime + usage.ru_stime
    print(f"{taken:.2f} s of processor time")
    if taken > PROCESSOR_SECONDS:
        sys.exit(f"expected at most {PROCESSOR_SECONDS}")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Draws an actor file and compares the picture with a kept one, byte for byte.

usage: picture.py ACTOR PICTURE -- PROGRAM...
PROGRAM... is kta, with an emulator before it where one is needed.
"""

import pathlib
import subprocess
import sys
import tempfile


def main():
    if len(sys.argv) < 5 or sys.argv[3] != "--":
        sys.exit(__doc__)
    actor, picture, program = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[4:]
    with tempfile.TemporaryDirectory(prefix="picture_") as folder:
        drawn = pathlib.Path(folder) / "drawn.png"
        subprocess.run(program + ["preview", actor, "-o", "drawn.png"], cwd=folder, check=True,
                       timeout=120)
        if drawn.read_bytes() != picture.read_bytes():
            sys.exit(f"{picture.name} is another picture than `kta preview` draws")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Converts the expected files of golden scenes to GLB and compares each with a kept one, byte for
byte, so that they are the same in every build and on every system.

usage: glb.py [--update] EXPECTED CASE... -- PROGRAM...
EXPECTED/CASE.actor.kta and .motion.kta become EXPECTED/CASE.glb. PROGRAM... is kta, with an emulator
before it where one is needed. --update replaces the kept files; look at them in a viewer.
"""

import pathlib
import subprocess
import sys
import tempfile


def main():
    arguments = sys.argv[1:]
    update = arguments[:1] == ["--update"]
    arguments = arguments[update:]
    if "--" not in arguments[2:-1]:
        sys.exit(__doc__)
    end = arguments.index("--")
    expected, cases, program = pathlib.Path(arguments[0]).resolve(), arguments[1:end], arguments[end + 1:]
    different = []
    with tempfile.TemporaryDirectory(prefix="glb_") as folder:
        made = pathlib.Path(folder) / "made.glb"
        for case in cases:
            subprocess.run(program + ["glb", expected / f"{case}.actor.kta",
                                      expected / f"{case}.motion.kta", "-o", "made.glb"],
                           cwd=folder, check=True, timeout=120)
            kept = expected / f"{case}.glb"
            if update:
                kept.write_bytes(made.read_bytes())
            elif made.read_bytes() != kept.read_bytes():
                different.append(kept.name)
    if different:
        sys.exit(f"`kta glb` makes other files than {', '.join(different)}")


if __name__ == "__main__":
    main()

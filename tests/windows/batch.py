#!/usr/bin/env python3
"""A batch of three scenes by hdo-export.exe, each in a process of its own: what becomes of each, what
stands there in the end, and that a second batch leaves it as it is.

usage: batch.py --program HDO_EXPORT --scene SCENE --expected FOLDER -- EMULATOR
SCENE is the example figure, FOLDER has the files of its export.
"""

import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: found {found!r}, expected {expected!r}")
    print(f"{what}: good")


def batch(arguments, folder):
    """The exit status, and of each scene its status in the report."""
    # Wine takes names that are not ASCII from programs in a locale that has them.
    done = subprocess.run(
        [*arguments.emulator, arguments.program, "-j", "2", "--json", "--batch", "scenes"],
        cwd=folder, env=os.environ | {"LC_ALL": "C.UTF-8"}, stdin=subprocess.DEVNULL,
        capture_output=True, timeout=200, check=False)
    try:
        report = json.loads(done.stdout)
    except ValueError:
        sys.exit(f"no report: {done.stdout!r} {done.stderr!r}")
    expect("the exit status stands in the report", report["status"], done.returncode)
    return done.returncode, report["exports"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    for name in ("--scene", "--expected"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    parser.add_argument("emulator", nargs="*")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="batch_") as name:
        folder = pathlib.Path(name)
        scenes = folder / "scenes"
        (scenes / "Süd & Co").mkdir(parents=True)
        shutil.copy(arguments.scene, scenes / "figure.maxscene.json")
        shutil.copy(arguments.scene, scenes / "Süd & Co" / "Läufer 1.maxscene.json")
        (scenes / "broken.maxscene.json").write_text('{"maxscene": 1, "nodes": [')

        status, exports = batch(arguments, folder)
        expect("one that fails gives 1", status, 1)
        expect("each has its status", [export["status"] for export in exports],
               ["exported", "failed", "exported"])
        expect("with Windows' separators", exports[0]["name"],
               "scenes\\Süd & Co\\Läufer 1.maxscene.json")
        expect("the broken scene is told as one", exports[1]["error"].startswith(
            "exit status 2: "), True)
        for place in (scenes / "figure", scenes / "Süd & Co" / "Läufer 1"):
            for part, kind in (("temp1", "actor"), ("temp2", "motion")):
                expect(f"{place.name}.hdo{part} has the bytes of every system",
                       pathlib.Path(f"{place}.hdo{part}").read_bytes(),
                       (arguments.expected / f"figure.{kind}.kta").read_bytes())
        made = sorted(str(file.relative_to(folder)) for file in folder.rglob("*"))
        expect("the failed one has no file", [file for file in made if "broken.hdo" in file], [])
        expect("nothing half-made stays", len(made), 4 + 1 + 2 * 6)

        status, exports = batch(arguments, folder)
        expect("what did not change is left as it is", [export["status"] for export in exports],
               ["unchanged", "failed", "unchanged"])


if __name__ == "__main__":
    main()

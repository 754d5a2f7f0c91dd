#!/usr/bin/env python3
"""Checks that no include of src/ runs upwards: core < format < scene < export < plugin, resources.

src_floors.py SRC   exit status 1 with one line for each fault, or when there is nothing to check
"""
import pathlib
import re
import sys
import tempfile

FLOORS = {"core": 0, "format": 1, "scene": 2, "export": 3, "plugin": 4, "resources": 4}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def faults(src):
    files = [path for path in sorted(src.rglob("*")) if path.suffix in (".h", ".cpp", ".rc")]
    found = []
    seen = set()
    for path in files:
        name = path.relative_to(src).as_posix()
        folder = name.split("/")[0]
        if folder not in FLOORS:
            found.append(f"{name}: is on no floor")
            continue
        seen.add(folder)
        for target in INCLUDE.findall(path.read_text(encoding="utf-8")):
            floor = target.split("/")[0] if "/" in target else folder
            if floor not in FLOORS:
                found.append(f"{name}: includes {target}, which is on no floor")
            elif FLOORS[floor] > FLOORS[folder]:
                found.append(f"{name}: includes {target}, which is above it")
    found += [f"{folder}/: no files" for folder in sorted(FLOORS.keys() - seen)]
    return found


def self_check():
    with tempfile.TemporaryDirectory() as directory:
        src = pathlib.Path(directory)
        if len(faults(src)) != len(FLOORS):
            sys.exit("self-check: an empty tree passes")
        for folder in FLOORS:
            (src / folder).mkdir()
            (src / folder / "a.h").write_text(f'#include "{folder}/b.h"\n#include "core/a.h"\n')
        if faults(src):
            sys.exit("self-check: includes within a floor and downwards are faults")
        (src / "scene" / "b.cpp").write_text('#include "export/a.h"\n')
        if faults(src) != ["scene/b.cpp: includes export/a.h, which is above it"]:
            sys.exit("self-check: an include upwards is no fault")


if __name__ == "__main__":
    self_check()
    for line in (lines := faults(pathlib.Path(sys.argv[1]))):
        print(line)
    sys.exit(1 if lines else 0)

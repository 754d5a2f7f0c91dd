#!/usr/bin/env python3
"""Exports the cases of cases.json and compares files and log with the expected ones, byte for byte.

usage: golden.py [--update] [--case NAME] PROGRAM...
PROGRAM... is hdo-export, with an emulator before it where one is needed. --update replaces the
expected files, after showing what changes; look at that before you commit it.
"""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
EXPECTED = HERE / "expected"


def export(program, case, directory):
    """Runs one case; returns its files by suffix."""
    config = directory / "config"
    config.mkdir()
    if "settings" in case:
        (config / "KTAExp2.cfg").write_bytes(bytes.fromhex(case["settings"]))
    command = program + case.get("arguments", []) + [
        "-q", "--keep-partial", "--config-dir", str(config), "-o", "out.hdo", str(HERE / case["scene"])]
    run = subprocess.run(command, cwd=directory, capture_output=True, timeout=300)
    if run.returncode != case.get("status", 0):
        sys.exit(f"{case['name']}: exit {run.returncode}\n{run.stderr.decode(errors='replace')}")
    files = {".actor.kta": "out.hdotemp1", ".motion.kta": "out.hdotemp2",
             ".log": "out.hdo.log", ".cfg": "config/KTAExp2.cfg"}
    result = {suffix: (directory / name).read_bytes() for suffix, name in files.items()}
    # Text mode ends lines as the platform does; the text is the same.
    result[".log"] = result[".log"].replace(b"\r\n", b"\n")
    return result


def first_difference(old, new):
    at = next((i for i, (a, b) in enumerate(zip(old, new)) if a != b), min(len(old), len(new)))
    return (f"{len(old)} bytes expected, {len(new)} written, first difference at offset {at}: "
            f"expected {old[at:at + 16].hex(' ') or 'the end'}, "
            f"found {new[at:at + 16].hex(' ') or 'the end'}")


def check(case, files, update):
    good = True
    for suffix, bytes_ in files.items():
        path = EXPECTED / (case["name"] + suffix)
        expected = path.read_bytes() if path.exists() else None
        if expected == bytes_:
            continue
        what = "is new" if expected is None else first_difference(expected, bytes_)
        print(f"{path.name}: {what}")
        if update:
            path.write_bytes(bytes_)
        else:
            good = False
    return good


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--case")
    parser.add_argument("program", nargs="+")
    arguments = parser.parse_args()
    cases = json.loads((HERE / "cases.json").read_text())
    if arguments.case:
        cases = [case for case in cases if case["name"] == arguments.case]
    if not cases:
        sys.exit("no such case")
    program = [str(pathlib.Path(word).resolve()) if "/" in word else word
               for word in arguments.program]
    EXPECTED.mkdir(exist_ok=True)
    failed = 0
    for case in cases:
        with tempfile.TemporaryDirectory() as directory:
            files = export(program, case, pathlib.Path(directory))
        failed += not check(case, files, arguments.update)
    print(f"{len(cases) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

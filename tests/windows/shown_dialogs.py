#!/usr/bin/env python3
"""Runs hdo-export with a person in front of it, and without a display.

usage: shown_dialogs.py --program HDO_EXPORT --press PRESS_BUTTON --scene SCENE -- EMULATOR
"""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

ABOUT = "About Max to Halden exporter"
OPTIONS = "Max to Halden Exporter"
WRITTEN = {"out.hdo", "out.hdo.glb", "out.hdotemp1", "out.hdotemp2", "out.hdo.log"}

NO_DISPLAY = {"HDO_NO_DISPLAY": "1"}


class Runner:
    def __init__(self, arguments):
        self.start = arguments.emulator + [arguments.program]
        self.press = arguments.emulator + [arguments.press]
        self.scene = arguments.scene
        self.boot = arguments.emulator + ["wineboot", "--init"]

    def run(self, words, press=None, environment=None):
        """Returns exit status, standard error and the names of the files written."""
        with tempfile.TemporaryDirectory() as directory:
            (pathlib.Path(directory) / "config").mkdir()
            command = self.start + ["-q", "--config-dir", "config"] + words
            program = subprocess.Popen(command, cwd=directory, stdin=subprocess.DEVNULL,
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                       env={**os.environ, **(environment or {})})
            try:
                if press is not None:
                    self.press_button(*press)
                error = program.communicate(timeout=60)[1]
            finally:
                program.kill()
            # The exporter keeps the log of a cancelled dialog open, and with it a private directory.
            names = {path.name for path in pathlib.Path(directory).rglob("*")
                     if path.is_file() and ".hdo-" not in str(path)}
            return program.returncode, error, names

    def press_button(self, title, number):
        person = subprocess.run(self.press + [title, str(number)], capture_output=True, text=True,
                                timeout=150)
        if person.returncode != 0:
            sys.exit(f"{title}: {person.stdout.strip()}")

    def export(self):
        return ["-o", "out.hdo", self.scene]


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: found {found!r}, expected {expected!r}")
    print(f"{what}: good")


def person_answers(runner):
    expect("--about", runner.run(["--about"], (ABOUT, 1)), (0, "", set()))
    show = ["--show-dialog"] + runner.export()
    expect("--show-dialog and Export", runner.run(show, (OPTIONS, 3)),
           (0, "", WRITTEN | {"KTAExp2.cfg"}))
    status, error, names = runner.run(show, (OPTIONS, 2))
    expect("--show-dialog and Cancel", (status, error.count("\n"), names), (0, 1, set()))


def nobody_can_see(runner):
    # Wine tells of a new home on standard error.
    subprocess.run(runner.boot, env={**os.environ, **NO_DISPLAY}, capture_output=True, timeout=100)
    for words in (["--about"], ["--show-dialog"] + runner.export(), runner.export()):
        status, error, names = runner.run(words, environment=NO_DISPLAY)
        expect(f"without a display: {words[0]}: {error.strip()}",
               (status, error.count("\n"), "display" in error, names), (2, 1, True, set()))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("--program", "--press", "--scene"):
        parser.add_argument(name, required=True)
    parser.add_argument("emulator", nargs="+")
    runner = Runner(parser.parse_args())
    person_answers(runner)
    nobody_can_see(runner)
    return 0


if __name__ == "__main__":
    sys.exit(main())

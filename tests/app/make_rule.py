#!/usr/bin/env python3
"""Exports by a rule of a Makefile, as a build does.

usage: make_rule.py HDO_EXPORT SCENE
"""

import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from checks import expect

MAKEFILE = """%.hdo: %.maxscene.json
\t@echo exporting $<
\t@"$(HDO_EXPORT)" -q -o $@ $<
"""
MADE = ("figure.hdo", "figure.hdo.glb", "figure.hdo.log", "figure.hdotemp1", "figure.hdotemp2")


class Build:
    def __init__(self, directory, program, scene):
        self.directory = directory
        self.program = program
        self.scene = directory / "figure.maxscene.json"
        directory.mkdir()
        (directory / "Makefile").write_text(MAKEFILE)
        shutil.copyfile(scene, self.scene)

    def make(self):
        """Whether make exported, and its exit status."""
        run = subprocess.run(["make", "figure.hdo", f"HDO_EXPORT={self.program}"],
                             cwd=self.directory, capture_output=True, text=True, timeout=60)
        return "exporting figure.maxscene.json" in run.stdout, run.returncode

    def age(self, *names):
        """Makes files an hour old, so that what is made now is younger on any file system."""
        for name in names:
            past = (self.directory / name).stat().st_mtime - 3600
            os.utime(self.directory / name, (past, past))

    def files(self):
        return {name: (self.directory / name).read_bytes() for name in MADE}

    def manifest(self):
        return json.loads((self.directory / "figure.hdo").read_text())


def check_manifest(build):
    expected = []
    for kind, name in (("actor", "figure.hdotemp1"), ("motion", "figure.hdotemp2")):
        data = (build.directory / name).read_bytes()
        expected.append({"name": name, "kind": kind, "bytes": len(data),
                         "sha256": hashlib.sha256(data).hexdigest()})
    expect("the manifest tells both files", build.manifest()["files"], expected)


def main():
    program, scene = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:])
    with tempfile.TemporaryDirectory() as root:
        build = Build(pathlib.Path(root) / "one", program, scene)
        build.age("figure.maxscene.json")
        expect("the first make exports", build.make(), (True, 0))
        check_manifest(build)
        first = build.files()
        expect("the second does nothing", build.make(), (False, 0))

        build.age(*MADE)
        os.utime(build.scene)
        expect("a younger scene is exported again", build.make(), (True, 0))
        expect("to the same bytes", build.files(), first)

        elsewhere = Build(pathlib.Path(root) / "two", program, scene)
        expect("another directory's make exports", elsewhere.make(), (True, 0))
        expect("the same manifest", elsewhere.files()["figure.hdo"], first["figure.hdo"])

        build.age(*MADE)
        build.scene.write_text("{}")
        expect("a scene that fails is tried", build.make(), (True, 2))
        expect("and tried again", build.make(), (True, 2))
        expect("the former files stay", build.files(), first)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Runs exports with presets and sidecar files: what docs/presets.md shows, and what counts more.

usage: presets.py HDO_EXPORT SCENE DOCS
"""

import json
import pathlib
import re
import struct
import subprocess
import sys
import tempfile

from checks import expect, expect_in

# By the table of docs/options.md: the record of a settings file.
RECORD = "<6B2xfi2B2xi"
DEFAULTS = (0, 0, 1, 0, 1, 1, 0.075, 4, 0, 0, 2)


class Folder:
    def __init__(self, program, path, scene):
        self.program = program
        self.path = path
        (path / "robot.maxscene.json").write_bytes(scene)

    def write(self, name, content):
        if isinstance(content, bytes):
            (self.path / name).write_bytes(content)
        else:
            (self.path / name).write_text(content if isinstance(content, str)
                                          else json.dumps(content))

    def run(self, *arguments, status=0):
        run = subprocess.run([self.program, *arguments], cwd=self.path, capture_output=True,
                             text=True, timeout=60)
        if run.returncode != status:
            sys.exit(f"{arguments}: exit status {run.returncode}, expected {status}: {run.stderr}")
        return run

    def export(self, *arguments):
        """The run's JSON."""
        return json.loads(self.run("--json", "robot.maxscene.json", *arguments).stdout)

    def files(self):
        return [(self.path / ("robot.hdo" + end)).read_bytes() for end in ("temp1", "temp2")]


def settings(**changes):
    names = ("collision", "hidden", "meshes", "non_renderable", "morphers", "optimize",
             "threshold", "most", "motions", "sample", "rate")
    values = dict(zip(names, DEFAULTS), **changes)
    return struct.pack(RECORD, *(values[name] for name in names))


def shown_preset(page):
    block = re.search(r"```json work\.json\n(.*?)```", page, re.S)
    if block is None:
        sys.exit("docs/presets.md shows no preset")
    return json.loads(block.group(1))


def check_shown_preset(folder, page):
    """The page's preset exports, and what was used is told; saved, it reads back to itself."""
    preset = shown_preset(page)
    folder.write("work.json", preset)
    told = folder.export("--preset", "work.json", "--receipt", "receipt.json")
    values = told["optionOrigins"]["values"]
    expect("options told", set(values), set(preset))
    for name, value in preset.items():
        as_given = str(value) if name in ("start", "end") else value
        expect(name, values[name], {"value": as_given, "from": "preset"})
    receipt = json.loads((folder.path / "receipt.json").read_text())
    expect("the receipt's origins", receipt["optionOrigins"], told["optionOrigins"])
    folder.run("--preset", "work.json", "--save-preset", "again.json")
    again = json.loads((folder.path / "again.json").read_text())
    expect("the preset saved again", again, {**preset, "start": str(preset["start"])})
    folder.run("--preset", "again.json", "--save-preset", "third.json")
    expect("saved twice", (folder.path / "third.json").read_bytes(),
           (folder.path / "again.json").read_bytes())


def check_shown_refusals(folder, page):
    """The lines that the page shows, each from a file that deserves it."""
    files = ['{"sampel-rate": 3}', '{"weight-threshold": 2}', '{\n"sample-rate": 3\n']
    lines = re.findall(r"^(hdo-export: work\.json: .*)$", page, re.M)
    expect("refusals shown", len(lines), len(files))
    for text, line in zip(files, lines):
        folder.write("work.json", text)
        run = folder.run("robot.maxscene.json", "--preset", "work.json", status=2)
        expect(text, run.stderr, line + "\n")


def check_refused_values(folder):
    """Each value that does not fit says what would."""
    for text, line in (('{"select": []}', "/select: an empty list, expected a text, or a list of at least one"),
                       ('{"select": [1]}', "expected a text"),
                       ('{"select": {}}', "expected a text"),
                       ('{"animation": []}', "expected a text or a number"),
                       ('{"unit": null}', "expected a text"),
                       ('{"unit": "em"}', "expected mm, cm, m, in or ft"),
                       ('{"strict": 1}', "expected true or false"),
                       ('{"sample-rate": "3"}', "expected a number"),
                       ('[]', "expected an object of options")):
        folder.write("work.json", text)
        run = folder.run("robot.maxscene.json", "--preset", "work.json", status=2)
        expect(f"{text}: lines", len(run.stderr.splitlines()), 1)
        expect_in(text, run.stderr, line)
        expect_in(text, run.stderr, "expected")


def check_order(folder):
    """Each place counts more than the one before it."""
    expect("the default", folder.export("--sample-animation")["options"]["sample-rate"], 2)
    (folder.path / "config").mkdir()
    folder.write("config/KTAExp2.cfg", settings(sample=1, rate=3, morphers=0))
    options = ["--config-dir", "config"]
    check_rate(folder, options, "saved settings", 3)
    folder.write("work.json", {"sample-animation": True, "sample-rate": 4})
    options += ["--preset", "work.json"]
    told = check_rate(folder, options, "preset", 4)
    expect("what the preset leaves", told["values"]["morphers"],
           {"value": False, "from": "saved settings"})
    folder.write("robot.hdo.json", {"sample-rate": 5})
    told = check_rate(folder, options, "sidecar", 5)
    expect("the sidecar's name", told["sidecar"], "robot.hdo.json")
    check_rate(folder, options + ["--sample-rate", "6"], "command line", 6)
    check_rate(folder, options + ["--no-sidecar"], "preset", 4)
    summary = folder.run("robot.maxscene.json", "--preset", "work.json").stdout.splitlines()
    expect("the summary's files of options",
           [line for line in summary if re.match("(preset|sidecar): ", line)],
           ["preset: work.json", "sidecar: robot.hdo.json"])
    (folder.path / "robot.hdo.json").unlink()


def check_rate(folder, options, origin, rate):
    told = folder.export(*options)
    expect(f"the sample rate of the {origin}", told["optionOrigins"]["values"]["sample-rate"],
           {"value": rate, "from": origin})
    expect("the option in force", told["options"]["sample-rate"], rate)
    return told["optionOrigins"]


def check_settings_file(folder):
    """A settings file gives the bytes that its choices on the command line give, and what has no
    control applies too."""
    folder.write("artist.cfg", settings(sample=1, rate=5, hidden=1, morphers=0))
    folder.export("--preset", "artist.cfg")
    by_file = folder.files()
    folder.export("--sample-animation", "--sample-rate", "5", "--export-hidden", "--no-morphers")
    expect("the same bytes", folder.files() == by_file, True)
    folder.run("--preset", "artist.cfg", "--save-preset", "saved.cfg")
    expect("the settings saved", (folder.path / "saved.cfg").read_bytes(),
           (folder.path / "artist.cfg").read_bytes())

    chunks = folder.export()["files"]
    kinds = {kind for file in chunks for kind in file.get("chunks", {})}
    folder.write("bare.cfg", settings(meshes=0))
    chunks = folder.export("--preset", "bare.cfg")["files"]
    bare = {kind for file in chunks for kind in file.get("chunks", {})}
    expect("kinds of chunks that byte 2 leaves out", "mesh" in kinds and "mesh" not in bare, True)


def check_places(folder):
    """Nothing but a preset is written where the scene's own options stand."""
    run = folder.run("robot.maxscene.json", "--receipt", "robot.hdo.json", status=2)
    expect("a receipt in the sidecar's place", "where the scene's own options stand" in run.stderr,
           True)
    folder.run("--up", "z", "--select", "Torso", "--save-preset", "robot.hdo.json")
    told = folder.export()
    expect("the saved sidecar", told["optionOrigins"]["values"]["select"],
           {"value": "Torso", "from": "sidecar"})
    (folder.path / "robot.hdo.json").unlink()


def main():
    program, scene, docs = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    page = (docs / "presets.md").read_text()
    with tempfile.TemporaryDirectory() as root:
        folder = Folder(program, pathlib.Path(root), scene.read_bytes())
        check_shown_preset(folder, page)
        check_shown_refusals(folder, page)
        check_refused_values(folder)
        check_order(folder)
        check_settings_file(folder)
        check_places(folder)
    print("presets, settings files and sidecar files: as docs/presets.md says")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Compares dry runs with the runs that they tell of: files, sizes, messages, losses, exit statuses.

usage: dry_run.py HDO_EXPORT SCENE
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from checks import expect

NOBODY = 65534
EVERY_FILE = ["-o", "out.hdo", "--save-preset", "saved.json", "--save-scene", "saved.maxscene.json",
              "--receipt", "receipt.json", "--report", "report.html", "--no-times", "--log",
              "log.txt", "--config-dir", "config"]


def standing(folder):
    """Everything below the folder, itself included, with what a write would change."""
    found = {}
    for path in [folder, *sorted(folder.rglob("*"))]:
        state = path.stat()
        content = path.read_bytes() if path.is_file() else None
        found[str(path)] = (content, state.st_mtime_ns, state.st_ctime_ns, state.st_ino)
    return found


class Folder:
    def __init__(self, program, root):
        self.program = program
        self.path = root / "work"
        self.path.mkdir()
        self.temporary = root / "temporary"
        self.temporary.mkdir()
        self.temporary.chmod(0o777)

    def run(self, *arguments, user=None):
        return subprocess.run([self.program, *arguments], cwd=self.path, capture_output=True,
                              text=True, timeout=60, user=user,
                              env={**os.environ, "TMPDIR": str(self.temporary)})

    def dry_run(self, *arguments, user=None):
        """The run and its JSON, after a proof that it left nothing behind."""
        before = standing(self.path)
        run = self.run("--dry-run", "--json", *arguments, user=user)
        expect(f"{arguments}: what stands in the folder", standing(self.path) == before, True)
        expect(f"{arguments}: what is left of the dry run", list(self.temporary.iterdir()), [])
        return run, json.loads(run.stdout)


def check_against_run(folder, scene, *arguments):
    """The dry run's JSON, which agrees with the run in all that both say."""
    former = {path: path.stat().st_size for path in folder.path.rglob("*") if path.is_file()}
    dry, told = folder.dry_run(scene, *arguments)
    earlier = set(standing(folder.path))
    for path in former:
        os.utime(path, (1, 1))
    run = folder.run("--json", scene, *arguments)
    did = json.loads(run.stdout)
    expect(f"{arguments}: exit status", dry.returncode, run.returncode)
    expect(f"{arguments}: lines on standard error", dry.stderr, run.stderr)
    for member in ("status", "error", "messages", "warnings", "files", "nodes", "notExported",
                   "preview", "options", "optionOrigins", "issues"):
        expect(f"{arguments}: {member}", told.get(member), did.get(member))
    written = {path: path.stat().st_size for path in folder.path.rglob("*")
               if path.is_file() and path.stat().st_mtime > 1000}
    expect(f"{arguments}: files with their sizes",
           {pathlib.Path(file["path"]): file["bytes"] for file in told["wouldWrite"]}, written)
    expect(f"{arguments}: sizes of what is replaced",
           {pathlib.Path(file["path"]): file["replaces"] for file in told["wouldWrite"]},
           {path: former.get(path) for path in written})
    expect("folders are not touched by a dry run", earlier - set(standing(folder.path)), set())
    return told


def check_files(folder):
    # A scene that is looked at afresh, since its time is set back.
    told = check_against_run(folder, "scene.maxscene.json", *EVERY_FILE)
    expect("files of the first run", len(told["wouldWrite"]), 10)
    losses = json.loads((folder.path / "receipt.json").read_text())["losses"]
    expect("the losses", told["losses"], losses)
    told = check_against_run(folder, "scene.maxscene.json", *EVERY_FILE, "--sample-animation")
    expect("files of the second run", len(told["wouldWrite"]), 10)
    told = check_against_run(folder, "scene.maxscene.json")
    expect("the losses without a receipt", told["losses"], losses)
    text = folder.run("--dry-run", "scene.maxscene.json").stdout.splitlines()
    for file in told["wouldWrite"]:
        line = f"would write {file['path']}: {file['bytes']} bytes"
        expect(line, any(shown.startswith(line) for shown in text), True)
    expect("lines of losses", sum(line.startswith("loss: ") for line in text), len(losses))
    expect("the last line", text[-1], "dry run: nothing was written")


def check_statuses(folder):
    """Runs that fail, each in its own way."""
    for status, *arguments in [(4, "--strict", "--max-error", "5"),
                               (0, "--cancel-dialog"),
                               (5, "--cancel-after", "2"),
                               (5, "--cancel-after", "2", "--keep-partial"),
                               (2, "--select", "nobody"),
                               (2, "--sample-rate", "3"),
                               (3, "--plugin", "none.so"),
                               (1, "-o", "none/out.hdo"),
                               (2, "-o", "."),
                               (2, "--receipt", "none/receipt.json", "--save-scene", "none/s.json")]:
        told = check_against_run(folder, "scene.maxscene.json", *arguments)
        expect(f"exit status of {arguments}", told["status"], status)
    (folder.path / "full.hdo.glb").mkdir()
    told = check_against_run(folder, "scene.maxscene.json", "-o", "full.hdo")
    expect("exit status where a directory stands in a file's place", told["status"], 4)


def check_read_only(folder):
    """A folder that cannot be written: told as by the run, with its status."""
    user = NOBODY if os.geteuid() == 0 else None
    arguments = ["scene.maxscene.json", "-o", "new.hdo"]
    folder.path.chmod(0o555)
    try:
        dry, told = folder.dry_run(*arguments, user=user)
        run = folder.run("--json", *arguments, user=user)
    finally:
        folder.path.chmod(0o755)
    expect("exit status in a read-only folder", (dry.returncode, run.returncode), (1, 1))
    expect("lines in a read-only folder", dry.stderr, run.stderr)
    expect("the reason", "nothing can be made in" in dry.stderr, True)
    expect("what would be written", told["wouldWrite"], [])


def check_refusals(folder):
    for arguments in (["--bisect", "scene.maxscene.json"],
                      ["--save-scene", "-", "scene.maxscene.json"]):
        run = folder.run("--dry-run", *arguments)
        expect(f"{arguments}: exit status", run.returncode, 2)
        expect(f"{arguments}: the reason", "--dry-run: excludes" in run.stderr, True)


def main():
    program, scene = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    with tempfile.TemporaryDirectory() as root:
        pathlib.Path(root).chmod(0o755)
        folder = Folder(program, pathlib.Path(root))
        shutil.copy(scene, folder.path / "scene.maxscene.json")
        check_files(folder)
        check_statuses(folder)
        check_read_only(folder)
        check_refusals(folder)
    print("dry runs: files, sizes, messages, losses and exit statuses as the runs'")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Batches of models: all animations of each, the textures inside of them, and what a batch would
write.

usage: batch_models.py HDO_EXPORT
"""

import json
import os
import pathlib
import shutil
import sys
import tempfile

from batch import OBJ, Room, node
from checks import expect, expect_in
from import_models import animated
from import_textures import BLUE, GREEN, RED, gltf

ENDINGS = [".hdo", ".hdo.glb", ".hdo.log", ".hdotemp1", ".hdotemp2"]


def write_model(room, name, model):
    room.write(name, json.dumps(model))


def exported(room, folder="."):
    """The names of the exports that stand there, without their ending."""
    return sorted(str(file.relative_to(room.path / folder))[:-4]
                  for file in (room.path / folder).rglob("*.hdo"))


def check_animations(root, program):
    """Each animation is an export of its own: in the table, in the JSON, in what is left as it is."""
    room = Room(root, "animations", program)
    write_model(room, "in/robot.gltf", animated(["Walk", "walk", None]))
    room.write("in/still.obj", OBJ.format("still"))
    room.write("in/bad.obj", "")
    words = ["--all-animations", "--batch", "in", "-o", "out"]
    names = ["bad.obj", "robot.gltf: animation Walk", "robot.gltf: animation walk",
             "robot.gltf: animation 2", "still.obj"]
    whole, statuses = room.report(*words, status=1)
    expect("an export for each", list(statuses.items()),
           [(f"in/{name}", "failed" if "bad" in name else "exported") for name in names])
    expect("their animations", [entry.get("animation") for entry in whole["exports"]],
           [None, "Walk", "walk", "", None])
    expect("the counts", {name: count for name, count in whole["counts"].items() if count},
           {"exported": 4, "failed": 1})
    expect("named as one run names them", exported(room, "out"),
           ["robot-2", "robot-Walk", "robot-walk-2", "still"])
    expect("the error of the one that cannot be read", whole["exports"][0]["error"],
           "exit status 2: an empty file, expected a scene")
    one = Room(root, "one", program)
    shutil.copy(room.path / "in/robot.gltf", one.path)
    one.lines("-q", "--all-animations", "robot.gltf")
    for name in ("robot-2", "robot-Walk", "robot-walk-2"):
        for ending in ("temp1", "temp2"):
            expect(f"{name}.hdo{ending} is that of one run",
                   (room.path / f"out/{name}.hdo{ending}").read_bytes(),
                   (one.path / f"{name}.hdo{ending}").read_bytes())

    (room.path / "in/bad.obj").unlink()
    made = room.files()
    _, statuses = room.report(*words)
    expect("nothing changed", set(statuses.values()), {"unchanged"})
    expect("no byte changes", room.files(), made)
    (room.path / "out/robot-Walk.hdotemp2").unlink()
    _, statuses = room.report(*words)
    expect("one export is done again", list(statuses.values()),
           ["exported", "unchanged", "unchanged", "unchanged"])
    write_model(room, "in/robot.gltf", animated(["Walk", "Run"]))
    lines = [line.split(" (")[0] for line in room.lines(*words)]
    expect("other animations", lines[:3],
           ["exported    in/robot.gltf: animation Walk", "exported    in/robot.gltf: animation Run",
            "unchanged   in/still.obj"])
    expect("counted", lines[3].startswith("3 exports: 2 exported, 1 unchanged, "), True)
    expect("an index and lock of none is left", [file for file in (room.path / "out").iterdir()
                                                 if file.name.startswith(".")], [])


def check_list_of_animations(root, program):
    """--list names the exports that the batch would do, and writes nothing."""
    room = Room(root, "listed", program)
    write_model(room, "in/robot.gltf", animated(["Walk", "a\nb", None]))
    room.write("in/still.obj", OBJ.format("still"))
    room.write("in/bad.obj", "")
    words = ["--all-animations", "--batch", "in", "-o", "out"]
    before = standing(room)
    run = room.run("--list", *words)
    names = ["bad.obj", "robot.gltf: animation Walk", "robot.gltf: animation a\\x0ab",
             "robot.gltf: animation 2", "still.obj"]
    expect("a line for each", run.stdout.splitlines(), [f"{room.path}/in/{name}" for name in names])
    expect("a scene that cannot be read is told", (run.returncode, run.stderr),
           (1, "hdo-export: in/bad.obj: failed: exit status 2: an empty file, expected a scene\n"))
    told = json.loads("\n".join(room.lines("--json", "--list", *words, status=1)))
    expect("the scenes", (told["count"], told["scenes"]),
           (3, [f"{room.path}/in/{name}" for name in ("bad.obj", "robot.gltf", "still.obj")]))
    expect("scenes are counted", room.lines("--count", *words), ["3"])
    expect("nothing is written", standing(room), before)
    whole, _ = room.report(*words, status=1)
    expect("the batch does these", [
        {name: entry.get(name) for name in ("name", "scene", "output", "animation", "error")}
        for entry in whole["exports"]], [
        {name: entry.get(name) for name in ("name", "scene", "output", "animation", "error")}
        for entry in told["exports"]])
    (room.path / "in/bad.obj").unlink()
    expect("once all can be read", len(room.lines("--list", *words)), 4)


def check_places_of_animations(root, program):
    """An animation's export takes no other scene's place, and none that a scene's options name."""
    room = Room(root, "places", program)
    write_model(room, "a.gltf", animated(["b", "c"]))
    room.write("a-b.obj", OBJ.format("x"))
    whole, statuses = room.report("--all-animations", "--batch", ".", status=1)
    expect("one place, one export", statuses,
           {"a-b.obj": "exported", "a.gltf: animation b": "failed",
            "a.gltf: animation c": "exported"})
    expect_in("why", whole["exports"][1]["error"], "a-b.hdo as that of a-b.obj is, ")
    told = room.run("--list", "--all-animations", "--batch", ".")
    expect("--list tells it", (told.returncode, told.stderr),
           (1, f"hdo-export: a.gltf: animation b: failed: {whole['exports'][1]['error']}\n"))
    room.write("a.hdo.json", '{"animation": "c"}')
    whole, _ = room.report("--all-animations", "--batch", "a.gltf", status=1)
    expect("options of the scene that exclude it, once", [
        (entry["name"], entry["error"]) for entry in whole["exports"]],
        [("a.gltf", "exit status 2: --all-animations: excludes --animation of a.hdo.json "
                    "(--no-sidecar leaves it out)")])
    _, statuses = room.report("--all-animations", "--no-sidecar", "--batch", "a.gltf")
    expect("which can be left out", list(statuses.values()), 2 * ["exported"])
    expect_in("of the command line", room.refusal("--all-animations", "--animation", "b",
                                                  "--batch", "."), "excludes --animation")


def check_warnings(root, program):
    """A warning names the animation that it is of; the seconds are those of all."""
    room = Room(root, "warnings", program)
    write_model(room, "a.gltf", animated(["Walk", "Run"]))
    run = room.run("--all-animations", "--up", "z", "--json", "a.gltf")
    told = json.loads(run.stdout)
    parts = [export["seconds"] for export in told["exports"]]
    for stage in ("reading", "exporting", "checking"):
        expect(f"seconds of {stage}", round(told["seconds"][stage], 6),
               round(sum(part[stage] for part in parts), 6))
    expect("some", told["seconds"]["exporting"] > 0, True)
    for clip, export in zip(("Walk", "Run"), told["exports"]):
        for warning in export["warnings"]:
            expect_in("the warning's subject", warning["text"], f"a.gltf: animation {clip}: ")
    expect("there are warnings", all(export["warnings"] for export in told["exports"]), True)


def check_textures(root, program):
    """--textures keeps those of each scene apart, whatever is exported of it."""
    room = Room(root, "textures", program)
    for name, color in (("in/a.gltf", RED), ("in/b.gltf", GREEN), ("in/sub/a.gltf", BLUE)):
        write_model(room, name, gltf([("paint.png", color)]))
    whole, statuses = room.report("--batch", "in", "-j", "1", status=1)
    expect("beside the exports there is room for one", list(statuses.values()),
           ["exported", "failed", "exported"])
    expect_in("what to do is told", whole["exports"][1]["error"], "--textures DIR")
    room.report("--batch", "in", "-o", "out", "--textures", "made")
    for name, color in (("a", RED), ("b", GREEN), ("sub/a", BLUE)):
        expect(f"the texture of {name}", (room.path / f"made/{name}/paint.png").read_bytes(), color)
    _, statuses = room.report("--batch", "in", "-o", "out", "--textures", "made")
    expect("unchanged", set(statuses.values()), {"unchanged"})
    (room.path / "made/b/paint.png").write_bytes(RED)
    expect("a texture that somebody changed",
           room.why("in/b.gltf", "--batch", "in", "-o", "out", "--textures", "made"),
           "paint.png is not what was exported")
    expect("is made again", (room.path / "made/b/paint.png").read_bytes(), GREEN)
    for jobs in ("1", "4"):
        shared = Room(root, f"shared{jobs}", program)
        for i in range(8):
            write_model(shared, f"m{i}.gltf", gltf([("paint.png", RED)]))
        shared.lines("-q", "--batch", ".", "-j", jobs)
        expect(f"-j {jobs}: each names the texture that they share", len(
            {file.read_text().partition('"textures"')[2]
             for file in shared.path.glob("*.textures.json") if "paint.png" in file.read_text()} |
            {file.name for file in shared.path.glob("*.textures.json")}), 9)
    write_model(room, "in/b.gltf", gltf([("paint.png", BLUE)]))
    _, statuses = room.report("--batch", "in", "-o", "out", "--textures", "made")
    expect("an edited model", statuses["in/b.gltf"], "exported")
    expect("has its new texture", (room.path / "made/b/paint.png").read_bytes(), BLUE)
    expect_in("one folder for two scenes", room.refusal(
        "--batch", "in/a.gltf", "in/sub/a.gltf", "--textures", "made"),
        "textures of in/a.gltf and in/sub/a.gltf would go to one directory")


def standing(room):
    return {str(path): (path.stat().st_mtime_ns, path.stat().st_ctime_ns)
            for path in [room.path, *room.path.rglob("*")]}


def check_dry_run(root, program):
    """What a batch would do, and nothing done."""
    room = Room(root, "dry", program)
    write_model(room, "in/a.gltf", animated(["Walk", "Run"]))
    room.write("in/deep/b.maxscene.json", node("b"))
    room.write("in/c.obj", "")
    words = ["--batch", "in", "-o", "out", "--all-animations"]
    before = standing(room)
    whole, statuses = room.report("--dry-run", *words, status=1)
    expect("nothing is written", standing(room), before)
    expect("it is a dry run", whole["dryRun"], True)
    told = {file["path"]: file["bytes"] for entry in whole["exports"]
            for file in entry["wouldWrite"]}
    lines = room.lines("--dry-run", *words, status=1)
    expect("the last line", lines[-1], "dry run: nothing was written")
    expect("what would be exported", [line.split(" (")[0] for line in lines if line[0] in "tf"],
           ["to export   in/a.gltf: animation Walk", "to export   in/a.gltf: animation Run",
            "failed      in/c.obj", "to export   in/deep/b.maxscene.json"])
    expect("a line for each file", {line for line in lines if line.startswith("would ")},
           {f"would write {path}: {size} bytes" for path, size in told.items()})
    expect_in("the counts", lines[-2], "4 exports: 3 to export, 1 failed, ")
    room.report(*words, status=1)
    made = {str(path): path.stat().st_size for path in (room.path / "out").rglob("*")
            if path.is_file() and not path.name.endswith("index.json")}
    expect("the batch writes these files", made, told)

    room.write("in/deep/b.maxscene.json", node("other"))
    before = standing(room)
    whole, statuses = room.report("--dry-run", *words, status=1)
    expect("nothing is written", standing(room), before)
    expect("what has not changed would be left", list(statuses.values()),
           ["unchanged", "unchanged", "failed", "exported"])
    expect("the others would be replaced",
           {pathlib.Path(file["path"]).name: file["replaces"]
            for file in whole["exports"][3]["wouldWrite"]},
           {f"b{ending}": os.path.getsize(room.path / f"out/deep/b{ending}")
            for ending in ENDINGS})


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory).resolve()
        for check in (check_animations, check_list_of_animations, check_places_of_animations, check_warnings, check_textures,
                      check_dry_run):
            check(root, program)


if __name__ == "__main__":
    main()

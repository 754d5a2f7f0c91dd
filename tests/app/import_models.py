#!/usr/bin/env python3
"""What is told of models, and how they are fitted: textures beside them, units, --list.

usage: import_models.py HDO_EXPORT KTA MODELS
"""

import base64
import json
import os
import pathlib
import struct
import sys
import tempfile

from import_textures import DATA, EXPORT, GREEN, RED, Place, gltf, same


def warnings(run):
    return [line.partition(": warning: ")[2] for line in run.stderr.splitlines()
            if ": warning: " in line]


def check_search(place):
    """Each texture stands somewhere else than the model says, or in other letters."""
    stands = {"as/it/says.png": "as/it/says.png", "Up.PNG": "up.png",
              "in\\folder\\back.png": "in/Folder/BACK.png", "C:\\else\\beside.png": "beside.png",
              "/no/such/dir/t.png": "Textures/t.png", "m.png": "maps/m.png",
              "f.png": "robot.fbm/f.png", "a%20b.png": "a b.png", "../textures/s.png": None,
              "x/y/shared.png": "../textures/shared.png", "..\\..\\deep\\d.png": "images/d.png"}
    model = place.folder / "model"
    for name in filter(None, stands.values()):
        place.write(f"model/{name}", RED)
    place.write("model/robot.gltf", gltf([(None, name) for name in stands]))
    run = place.export("model/robot.gltf")
    same("layers", place.layers("model/robot.hdotemp1"),
         [pathlib.PurePosixPath(found or "s.png").name for found in stands.values()])
    same("warnings", warnings(run),
         ["texture '../textures/s.png': not found beside the model and in its folders robot.fbm, "
          "textures, maps, images and ../textures"])
    listed = json.loads(place.export("model/robot.gltf", "--list", "--json").stdout)
    same("textures", [texture for material in listed["materials"]
                      for texture in material["textures"]],
         [{"slot": "diffuse", "name": name, "standing": "missing"} if found is None else
          {"slot": "diffuse",
           "name": name if name == found else found,
           "standing": "found", "file": str((model / found).resolve())}
          for name, found in stands.items()])
    same("inputs", sorted(set(listed["inputs"]) &
                          {str((model / found).resolve()) for found in stands.values() if found}),
         sorted(str((model / found).resolve()) for found in stands.values() if found))


def check_strange_names(place):
    """%XX that stands for no character of a name, and folders that are no UTF-8."""
    latin = os.fsdecode(b"b\xe4r")
    place.write(f"{latin}.fbm/t.png", RED)
    place.write(os.fsdecode(b"caf\xe9.png"), RED)
    names = ["t.png", "a%00.png", "%00", "caf%E9.png"]
    place.write(f"{latin}.gltf", gltf([(None, name) for name in names]))
    run = place.export(f"{latin}.gltf", "-o", "out.hdo")
    same("layers", place.layers("out.hdotemp1"), names)
    same("warnings", [line.partition(": not found")[0] for line in warnings(run)],
         ["2 textures ('%00', 'a%00.png')"])
    listed = json.loads(place.export(f"{latin}.gltf", "--list", "--json").stdout)
    same("standing", [texture["standing"] for material in listed["materials"]
                      for texture in material["textures"]],
         ["found", "missing", "missing", "found"])


def check_texture_turns_up(place):
    """A batch exports a model again when a texture that it lacked is there."""
    def why():
        whole = json.loads(place.export(".", "--json", "--batch").stdout)
        return [(entry["status"], entry.get("why")) for entry in whole["exports"]]

    place.write("here/robot.gltf", gltf([(None, "C:\\else\\wood%20a.png"), (None, "b.png")]))
    why()
    same("nothing changed", why(), [("unchanged", None)])
    for name in ["textures/wood a.png", "here/maps/wood a.png", "here/robot.fbm/wood a.png",
                 "here/wood a.png", "here/textures/b.png", "here/b.png"]:
        place.write(name, RED)
        same(name, why(), [("exported", f"{pathlib.PurePath(name).name} has changed")])
        same("and then", why(), [("unchanged", None)])
    for name in ["here/wood a.png", "here/b.png"]:
        (place.folder / name).unlink()
        same(name, why(), [("exported", f"{pathlib.PurePath(name).name} has changed")])


def first_vertex(place, *options):
    return json.loads(place.export(*options, "-q", "--save-scene", "-").stdout)["nodes"][0][
        "object"]["vertices"][1]


def check_units(place, models):
    """Metres of glTF, centimetres of FBX and Collada, and a file that does not say its unit."""
    place.write("robot.gltf", gltf([(None, RED)]))
    same("in metres", first_vertex(place, "robot.gltf")[0], 1)
    for unit, size in [("mm", 1000), ("cm", 100), ("m", 1), ("in", 39.37008), ("ft", 3.28084)]:
        same(unit, first_vertex(place, "robot.gltf", "--unit", unit)[0], size)
    same("with --scale", first_vertex(place, "robot.gltf", "--unit", "cm", "--scale", "2")[0], 200)
    run = place.export("robot.gltf", "--unit", "in", "-o", "a.hdo")
    if "unit: m, as in all files of the format, converted to in\n" not in run.stdout:
        sys.exit(run.stdout)
    if "\nunit: " in place.export("robot.gltf", "-o", "a.hdo").stdout:
        sys.exit("the summary has a new line without --unit")
    for model, metres in [("FBX/spider.fbx", 0.01), ("Collada/duck.dae", 0.01)]:
        listed = json.loads(place.export(str(models / model), "--list", "--json").stdout)
        same(model, listed["unit"], {"metres": metres, "convertedTo": None,
                                     "text": "cm, as the file says"})
        report = json.loads(place.export(str(models / model), "--unit", "m", "-o", "a.hdo",
                                         "--json").stdout)
        same(model, report["unit"], {"metres": metres, "convertedTo": 1.0,
                                     "text": "cm, as the file says, converted to m"})
        if any(warning["code"] == "unit-kept" for warning in report["warnings"]):
            sys.exit(f"{model}: told that its unit is kept")
    for silent in ["STL/Spider_ascii.stl", "OBJ/spider.obj", "3DS/cubes_with_alpha.3DS"]:
        run = place.export(str(models / silent), "--unit", "m", "-o", "b.hdo", status=2)
        same(silent, run.stderr.splitlines()[-1],
             f"hdo-export: --unit: {models / silent} does not say its unit, expected --scale in "
             "its place")
    if any(name.startswith("b.") for name in place.files()):
        sys.exit("a refused export left files")
    place.write("s.maxscene.json", {"maxscene": 1, "nodes": [{"name": "a"}]})
    place.export("s.maxscene.json", "--unit", "m", "-o", "b.hdo", status=2)


def check_list(place, models):
    """Lines and JSON of a model with a skin, a camera and a light, and of one with morph targets."""
    model = str(models / "FBX/huesitos.fbx")
    lines = place.export(model, "--list").stdout.splitlines()
    for line in ["camera\t14\tCamera", "light\t13\tomni\tLamp", "skin\t12\t9\t62\tCylinder",
                 "animation\t0\t1.56\tArmature|Action", "clip\t0\t1.56\t39\tArmature|Action",
                 "unit\t0.01\tcm, as the file says",
                 "up\ty, as the file says, turned to z"]:
        same(line, lines.count(line), 1)
    listed = json.loads(place.export(model, "--list", "--json").stdout)
    same("skins", listed["skins"], [{"node": 12, "name": "Cylinder", "bones": 9, "vertices": 62}])
    same("cameras", listed["cameras"], [{"node": 14, "name": "Camera"}])
    same("lights", listed["lights"], [{"node": 13, "name": "Lamp", "kind": "omni"}])
    same("clips", listed["animations"],
         [{"name": "Armature|Action", "seconds": 1.56, "frames": 39.0}])
    morphs = models / "glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf"
    listed = json.loads(place.export(str(morphs), "--list", "--json").stdout)
    same("morph channels", [len(morpher["channels"]) for morpher in listed["morphers"]], [2])
    same("lines", sum(line.startswith("morph\t") for line in
                      place.export(str(morphs), "--list").stdout.splitlines()), 2)
    place.write("robot.gltf", gltf([("in.png", GREEN), (None, "gone.png")]))
    lines = place.export("robot.gltf", "--list").stdout.splitlines()
    same("textures", [line for line in lines if line.startswith("texture")],
         ["texture\t0\tdiffuse\tinside\tin.png", "texture\t1\tdiffuse\tmissing\tgone.png"])


def animated(names):
    """A model of a texture inside, with animations of those names and of different length."""
    model = gltf([("in.png", GREEN)])
    for i, name in enumerate(names):
        data = struct.pack("<8f", 0, 0.5 * (i + 1), 0, 0, 0, 1 + i, 0, 0)
        first = len(model["accessors"])
        model["buffers"].append({"byteLength": len(data), "uri": DATA +
                                 base64.b64encode(data).decode()})
        model["bufferViews"].append({"buffer": i + 1, "byteLength": len(data)})
        model["accessors"] += [{"bufferView": i + 1, "componentType": 5126, "count": 2,
                                "type": "SCALAR", "min": [0], "max": [0.5 * (i + 1)]},
                               {"bufferView": i + 1, "byteOffset": 8, "componentType": 5126,
                                "count": 2, "type": "VEC3"}]
        model.setdefault("animations", []).append(
            ({} if name is None else {"name": name}) |
            {"samplers": [{"input": first, "output": first + 1}],
             "channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}}]})
    return model


def check_all_animations(place):
    """One export each, with the same bytes as an export of that animation alone."""
    names = ["Walk", "walk", "Rig|../Run", "1", "Walk-2"]
    places = ["Walk", "walk-2", "Rig_.._Run", "1", "Walk-2-2"]
    place.write("robot.gltf", animated(names))
    run = place.export("robot.gltf", "--all-animations", "--receipt", "r.json", "--json")
    same("warnings", run.stderr, "")
    files = [name.replace("robot", f"robot-{clip}") for clip in places for name in EXPORT]
    same("files", place.files(), sorted([*files, *[f"r-{clip}.json" for clip in places], "in.png",
                                         "robot.gltf"]))
    report = json.loads(run.stdout)
    same("exports", [(export["animation"], export["status"],
                      [file["kind"] for file in export["files"]].count("motion"))
                     for export in report["exports"]], [(name, 0, 1) for name in names])
    # Each has a baseline of its own; a device is no name to put anything behind.
    place.export("robot.gltf", "-q", "--all-animations", "--strict", "--accept", "r.json",
                 "--receipt", "r.json", "--log", "/dev/null")
    same("devices", list(pathlib.Path("/dev").glob("null-*")), [])
    (place.folder / "one").mkdir()
    for number, clip in enumerate(places):
        chosen = names[number] if names.index(names[number]) == number else str(number)
        place.export("robot.gltf", "-q", "--animation", chosen, "-o", "one/robot.hdo")
        for end in ["temp1", "temp2"]:
            place.expect(f"robot-{clip}.hdo{end}",
                         (place.folder / f"one/robot.hdo{end}").read_bytes())


def check_failing_animation(place):
    """One that fails leaves the others; the status is 1."""
    place.write("robot.gltf", animated(["Walk", "Run", "Jump"]))
    (place.folder / "out").mkdir()
    (place.folder / "out/r-Run.hdotemp2").mkdir()
    run = place.export("robot.gltf", "--all-animations", "-o", "out/r.hdo", status=1)
    same("messages", len(run.stderr.splitlines()), 1)
    same("files", place.files(), sorted(
        ["robot.gltf", "out/in.png"] + [f"out/{name.replace('robot', f'r-{clip}')}"
                                        for clip in ["Walk", "Jump"] for name in EXPORT]))
    for options, text in [(["--animation", "1"], "--all-animations: excludes --animation"),
                          (["--save-scene", "a"], "--all-animations: excludes --save-scene")]:
        run = place.export("robot.gltf", "--all-animations", *options, status=2)
        same("refusal", run.stderr, f"hdo-export: {text}\n")
    same("--list beside it", place.export("robot.gltf", "--all-animations", "--list").stdout,
         place.export("robot.gltf", "--list").stdout)
    place.write("robot.hdo.json", b'{"animation": "Run"}')
    run = place.export("robot.gltf", "--all-animations", status=2)
    same("refusal of what the scene's options say", "robot.hdo.json" in run.stderr, True)
    place.write("still.gltf", gltf([(None, RED)]))
    run = place.export("still.gltf", "--all-animations", status=2)
    same("refusal", run.stderr, "hdo-export: --all-animations: still.gltf has no animations, "
                                "expected at least one\n")


def check_cut_header(place):
    """Which the reader would look for until its time is over."""
    place.write("cut.ply", b"ply\nformat ascii 1.0\nelement vertex 3\n")
    run = place.export("cut.ply", status=2)
    same("refusal", run.stderr,
         "hdo-export: cut.ply: cut off in its header, which has no end_header\n")


def main():
    programs = [str(pathlib.Path(program).resolve()) for program in sys.argv[1:3]]
    models = pathlib.Path(sys.argv[3])
    checks = [check_search, check_strange_names, check_texture_turns_up,
              lambda place: check_units(place, models),
              lambda place: check_list(place, models), check_all_animations,
              check_failing_animation, check_cut_header]
    for check in checks:
        with tempfile.TemporaryDirectory() as folder:
            check(Place(programs, pathlib.Path(folder).resolve()))
    print(f"{len(checks)} checks")


if __name__ == "__main__":
    main()

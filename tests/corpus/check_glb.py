#!/usr/bin/env python3
"""What `kta glb` makes of exports, by the programs that know glTF.

The expected files of the golden scenes, the example's among them, and exports of a few models,
sampled and keyframed, become GLB files. Each must pass the Khronos validator without an error or a
warning, load in three.js and in Assimp with what the file holds, and show what the exported files
do: every vertex and every node's turn, at times on and between the keys, within 0.1% of the scene's
bounding diagonal and 0.1 degrees, by a comparison that shares no code with the toolkit.

With --exports, the exports of that folder (FOLDER/*/out.hdotemp1 and 2) are looked at instead.
Exit status: 0 all passed, 1 some did not, 2 bad usage.
"""

import argparse
import json
import pathlib
import struct
import subprocess
import sys
import tempfile

MODELS = {
    "FBX/animation_with_skeleton.fbx": "skins of more than four bones",
    "FBX/huesitos.fbx": "a skeleton that moves",
    "glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf": "morph targets",
    "glTF2/BoxTextured-glTF/BoxTextured.gltf": "a texture",
    "X/anim_test.x": "position keys of all kinds",
    "ASE/MotionCaptureROM.ase": "mirrored and sheared nodes",
}
# What the comparison's own reader does not take: IK chains, weights without records, pairs of
# texture coordinates that no head counts.
NOT_COMPARED = ("meshes", "rigs", "skins")


class Failed(Exception):
    """What is wrong, in a line."""


def run(command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True,
                          stdin=subprocess.DEVNULL, timeout=300, check=False, **options)
    return done.returncode, done.stdout, done.stderr


class Case:
    def __init__(self, name, actor, motion, glb, textures, compared=True):
        self.name, self.actor, self.motion, self.glb = name, actor, motion, glb
        self.textures, self.compared = textures, compared


def document(path):
    data = path.read_bytes()
    (size,) = struct.unpack_from("<I", data, 12)
    return json.loads(data[20:20 + size])


def counts_of(gltf):
    """What a file holds, by its JSON."""
    accessors = gltf.get("accessors", [])
    meshes = gltf.get("meshes", [])
    primitives = [primitive for mesh in meshes for primitive in mesh["primitives"]]
    channels = [c for a in gltf.get("animations", []) for c in a["channels"]]
    return {
        "nodes": len(gltf.get("nodes", [])),
        "meshes": len(meshes),
        "primitives": len(primitives),
        "vertices": sum(accessors[p["attributes"]["POSITION"]]["count"] for p in primitives),
        "triangles": sum(accessors[p["indices"]]["count"] // 3 for p in primitives),
        "targets": sum(len(p.get("targets", [])) for p in primitives),
        "joints": len({j for skin in gltf.get("skins", []) for j in skin["joints"]}),
        "animations": len(gltf.get("animations", [])),
        "channels": len(channels),
        "moving": len({channel["target"]["node"] for channel in channels}),
    }


def golden_cases(folder, place):
    for actor in sorted(folder.glob("*.actor.kta")):
        name = actor.name.removesuffix(".actor.kta")
        yield Case(name, actor, folder / f"{name}.motion.kta", place / f"{name}.glb", folder,
                   not name.startswith(NOT_COMPARED))


def model_cases(hdo_export, models, place):
    for index, model in enumerate(MODELS):
        for mode in ("--sample-animation", "--no-sample-animation"):
            folder = place / f"{index}{mode}"
            folder.mkdir()
            status, _, error = run([hdo_export, "--progress", "never", "--export-hidden",
                                    "--motions-for-hidden", "--no-optimize-skin", mode,
                                    "-o", folder / "out.hdo", models / model])
            if status != 0:
                raise Failed(f"{model}: hdo-export gives {status}: {error}")
            yield Case(f"{model} {mode}", folder / "out.hdotemp1", folder / "out.hdotemp2",
                       folder / "out.glb", (models / model).parent)


def exported_cases(folder):
    for actor in sorted(folder.glob("*/out.hdotemp1")):
        yield Case(actor.parent.name, actor, actor.parent / "out.hdotemp2",
                   actor.parent / "out.glb", actor.parent)


def convert(kta, case):
    status, _, error = run([kta, "glb", case.actor, case.motion, "-o", case.glb, "--texture-dir",
                            case.textures, "--embed-textures"])
    if status != 0:
        raise Failed(f"{case.name}: kta glb gives {status}: {error}")
    first = case.glb.read_bytes()
    run([kta, "glb", case.actor, case.motion, "-o", case.glb, "--texture-dir", case.textures,
         "--embed-textures"])
    if case.glb.read_bytes() != first:
        raise Failed(f"{case.name}: kta glb gives other bytes the second time")


def lines_of(command, cases):
    status, output, error = run(command + [case.glb for case in cases])
    lines = output.splitlines()
    if status != 0 or len(lines) != len(cases):
        raise Failed(f"{command[0]} ends with {status} after {len(lines)} of {len(cases)} files: "
                     f"{(error or output).strip()}")
    return [json.loads(line) for line in lines]


def differences(who, found, expected):
    return [f"{who}: {found[key]} {key}, expected {expected[key]}"
            for key in found if found[key] != expected[key]]


def check(case, viewed, loaded, compare):
    """What is wrong with a case."""
    expected = counts_of(document(case.glb))
    wrong = [f"validator: {text}" for text in viewed["errors"] + viewed["warnings"]]
    wrong += differences("three.js", viewed["counts"], expected)
    roots = document(case.glb).get("scenes", [{}])[0].get("nodes", [])
    loaded["nodes"] -= len(roots) > 1  # Assimp's own node above them
    wrong += differences("Assimp", loaded, expected)
    figures = "not compared"
    if case.compared:
        status, output, error = run([compare, case.actor, case.motion, case.glb])
        figures = (output + error).strip()
        if status != 0:
            wrong.append(f"comparison: {figures}")
    return wrong, figures


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("hdo_export", "kta", "assimp_counts", "compare_glb", "models", "expected",
                 "script", "node_folder"):
        parser.add_argument(name, type=pathlib.Path)
    parser.add_argument("--node", default="node")
    parser.add_argument("--exports", type=pathlib.Path)
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    failed = 0
    with tempfile.TemporaryDirectory(prefix="glb_") as folder:
        place = pathlib.Path(folder)
        try:
            if arguments.exports:
                cases = list(exported_cases(arguments.exports))
            else:
                cases = [*golden_cases(arguments.expected, place),
                         *model_cases(arguments.hdo_export, arguments.models, place)]
            if not cases:
                raise Failed("no exports there")
            for case in cases:
                convert(arguments.kta, case)
            viewed = lines_of([arguments.node, arguments.script, arguments.node_folder], cases)
            loaded = lines_of([arguments.assimp_counts], cases)
        except Failed as failure:
            print(failure)
            return 1
        for case, by_viewer, by_assimp in zip(cases, viewed, loaded):
            wrong, figures = check(case, by_viewer, by_assimp, arguments.compare_glb)
            failed += bool(wrong)
            print(f"{case.name}: {'; '.join(wrong) if wrong else 'ok'} ({figures})")
    print(f"{len(cases) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

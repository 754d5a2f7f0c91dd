#!/usr/bin/env python3
"""Reads model files of Debian's assimp-testmodels with --up: which formats say what is up.

usage: up_axis.py HDO_EXPORT MODELS
"""

import json
import pathlib
import subprocess
import sys

# As docs/hdo-export.md has them: files that do not say which axis is up.
SILENT = ["STL/Spider_ascii.stl", "BLEND/box.blend", "PLY/cube.ply", "OBJ/spider.obj",
          "OFF/Cube.off", "AMF/test1.amf", "3MF/box.3mf", "X/test.x", "BVH/01_01.bvh"]
# Those of which the file, the format or its reader does, with the axis.
KNOWN = {"FBX/spider.fbx": "y, as the file says, turned to z",
         "Collada/duck.dae": "y, as the file says, turned to z",
         "glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb":
             "y, as in all files of the format, turned to z",
         "3DS/cubes_with_alpha.3DS": "z, as the format's reader knows, not turned",
         "ASE/ThreeCubesGreen.ASE": "z, as the format's reader knows, not turned",
         "DXF/wuson.dxf": "z, as the format's reader knows, not turned",
         "MD2/sydney.md2": "z, as the format's reader knows, not turned",
         "MD5/SimpleCube.md5mesh": "z, as the format's reader knows, not turned"}
# Where z is up once the axis is: the components of a vertex, with signs.
TURNS = {"x": (1, 2, 0), "z": (0, 1, 2)}


class Reader:
    def __init__(self, program, models):
        self.program = program
        self.models = models

    def read(self, model, *options):
        """The scene's text and what is said on standard error."""
        run = subprocess.run([self.program, "-q", *options, "--save-scene", "-",
                              str(self.models / model)], capture_output=True, text=True, timeout=60)
        if run.returncode != 0:
            sys.exit(f"{model} {options}: exit status {run.returncode}: {run.stderr}")
        return run.stdout, run.stderr


def vertices(text):
    return [vertex for node in json.loads(text)["nodes"]
            for vertex in node.get("object", {}).get("vertices", [])]


def check_silent(reader, model):
    plain, said = reader.read(model)
    if reader.read(model, "--up", "y") != (plain, said):
        sys.exit(f"{model}: --up y differs from the default")
    for up, places in TURNS.items():
        text, heard = reader.read(model, "--up", up)
        if heard != said:
            sys.exit(f"{model} --up {up}: {heard}")
        if text == plain:
            sys.exit(f"{model} --up {up}: nothing is turned")
        if model.startswith("STL"):
            # Below a root without a matrix; by default, y up, they are x, -z, y.
            expected = [[(x, z, -y)[i] for i in places] for x, y, z in vertices(plain)]
            if vertices(text) != expected:
                sys.exit(f"{model} --up {up}: vertices are not turned as they should be")


def check_known(reader, model, up):
    plain, _ = reader.read(model)
    for axis in "xyz":
        text, said = reader.read(model, "--up", axis)
        if text != plain:
            sys.exit(f"{model} --up {axis}: turned, expected the file's own axis")
        if f": warning: --up has no effect: the up axis is {up}\n" not in said:
            sys.exit(f"{model} --up {axis}: {said}")


def main():
    reader = Reader(str(pathlib.Path(sys.argv[1]).resolve()), pathlib.Path(sys.argv[2]))
    for model in SILENT:
        check_silent(reader, model)
    for model, up in KNOWN.items():
        check_known(reader, model, up)
    print(f"{len(SILENT)} files that --up turns, {len(KNOWN)} that it leaves")


if __name__ == "__main__":
    main()

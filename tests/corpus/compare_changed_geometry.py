#!/usr/bin/env python3
"""Shows that compare_geometry tells an actor file from its model, whatever one number is changed.

Exports a model of three triangles and two materials, and changes one number of its mesh at a time.
"""

import argparse
import json
import math
import pathlib
import struct
import subprocess
import sys
import tempfile

MODEL = """mtllib model.mtl
o plate
v 0 0 0
v 2 0 0
v 2 2 0
v 0 2 0
v 4 1 0
vt 0 0
vt 1 0
vt 1 1
vt 0 1
vt 0.5 0.25
vn 0 0 1
usemtl red
f 1/1/1 2/2/1 3/3/1
f 1/1/1 3/3/1 4/4/1
usemtl blue
f 2/2/1 5/5/1 3/3/1
"""
MATERIALS = "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n"
TIME_LIMIT = 60  # seconds a command

MESH_CHUNK = 3
CHUNK_HEADER_SIZE = 12
MESH_HEAD_SIZE = 28
SUB_MESH_SIZE = 12
VERTEX_SIZE = 28  # original vertex, position, normal; texture coordinates follow
POSITION = 4
NORMAL = 16
COORDINATES = 28


def run(command, folder):
    return subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=TIME_LIMIT, check=False, text=True)


def run_well(command, folder):
    done = run(command, folder)
    if done.returncode != 0:
        sys.exit(f"{command[0]}: exit status {done.returncode}\n{done.stdout}")
    return done.stdout


class FirstSubMesh:
    """Where the parts of an actor's first sub-mesh stand."""

    def __init__(self, chunks):
        mesh = next(chunk for chunk in chunks if chunk["id"] == MESH_CHUNK)
        self.record = mesh["offset"] + CHUNK_HEADER_SIZE + MESH_HEAD_SIZE
        self.values = mesh["subMeshes"][0]
        self.vertex_size = VERTEX_SIZE + 8 * mesh["mapChannelCount"]

    def vertex(self, number):
        return self.record + SUB_MESH_SIZE + number * self.vertex_size

    def face(self, number):
        return self.vertex(self.values["vertexCount"]) + number * 12


def changes(part):
    """(what, offset, bytes there, bytes to put there, what the line must hold) of each change."""
    vertices = part.values["vertices"]
    face = part.values["faces"][0]

    def corner(number):
        return f"mesh 0 (plate): triangle 0, corner {number}: "

    def floats(*numbers):
        return struct.pack(f"<{len(numbers)}f", *numbers)

    at = [part.vertex(number) for number in face]
    position = vertices[face[2]]["position"]
    moved = [position[0], position[1] * 1.001, position[2]]
    normal = vertices[face[1]]["normal"]
    turn = math.radians(2)
    turned = [normal[0], math.sin(turn), normal[2] * math.cos(turn)]
    u, v = vertices[face[1]]["textureCoordinates"][0]
    other = vertices[face[2]]["textureCoordinates"][0]
    material = part.values["materialNumber"]
    return [
        ("a position", at[2] + POSITION, floats(*position), floats(*moved),
         corner(2) + "the position is off by "),
        ("a normal", at[1] + NORMAL, floats(*normal), floats(*turned),
         corner(1) + "the normal is off by 2.0"),
        ("a texture coordinate", at[1] + COORDINATES, floats(u, v), floats(u - 2 ** -10, v),
         corner(1) + "channel 0: u is 0.999023, expected 1.0"),
        ("the other texture coordinate", at[2] + COORDINATES, floats(*other),
         floats(other[0], other[1] + 2 ** -10),
         corner(2) + "channel 0: v is 0.000977, expected 0.0"),
        ("a face's vertex", part.face(0) + 4, struct.pack("<I", face[1]), struct.pack("<I", 3),
         corner(1)),
        ("a face's vertex beyond the last", part.face(0) + 4, struct.pack("<I", face[1]),
         struct.pack("<I", 4), "a face has the vertex 4 of 4"),
        ("the material", part.record, bytes([material]), bytes([2]),
         'mesh 0 (plate): material 2: the name is "blue", expected "red"'),
        ("the material beyond the last", part.record, bytes([material]), bytes([3]),
         "mesh 0 (plate): the material is 3 of 3"),
    ]


def failure_of(compare, folder, actor, change):
    """What is wrong with the answer to a change; empty when it is right."""
    what, offset, there, instead, expected = change
    if actor[offset:offset + len(there)] != there or there == instead:
        return f"{what}: offset {offset} does not hold what the dump shows, or nothing changes"
    changed = actor[:offset] + instead + actor[offset + len(there):]
    (folder / "changed").write_bytes(changed)
    done = run([compare, "model.obj", "changed"], folder)
    lines = done.stdout.splitlines()
    if done.returncode != 1 or len(lines) != 1 or expected not in lines[0]:
        return (f"{what}: exit status {done.returncode}, expected 1 and a line with "
                f"'{expected}': {done.stdout}")
    return ""


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for program in ("hdo_export", "kta", "compare"):
        parser.add_argument(program, type=lambda path: str(pathlib.Path(path).resolve()))
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="changed_geometry_") as place:
        folder = pathlib.Path(place)
        (folder / "model.obj").write_text(MODEL, encoding="ascii")
        (folder / "model.mtl").write_text(MATERIALS, encoding="ascii")
        run_well([arguments.hdo_export, "--config-dir", "config", "--progress", "never", "-o",
                  "out.hdo", "model.obj"], folder)
        figures = run_well([arguments.compare, "model.obj", "out.hdotemp1"], folder)
        if not figures.startswith("1 meshes, 3 triangles, "):
            sys.exit(f"the file as it was exported: {figures}")
        dump = json.loads(run_well([arguments.kta, "dump", "--json", "out.hdotemp1"], folder))
        actor = (folder / "out.hdotemp1").read_bytes()
        failures = [failure_of(arguments.compare, folder, actor, change)
                    for change in changes(FirstSubMesh(dump["chunks"]))]
    for failure in filter(None, failures):
        print(failure)
    return 1 if any(failures) else 0


if __name__ == "__main__":
    sys.exit(main())

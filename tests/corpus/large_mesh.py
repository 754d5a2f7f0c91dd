#!/usr/bin/env python3
"""Writes a binary glTF file of one bumpy grid with normals and two UV sets.

The grid has SIZE x SIZE cells of two triangles each.
"""

import argparse
import array
import json
import math
import struct
import sys


def grid(size):
    """Positions, normals and both UV sets of the corners, and the triangles' corners."""
    positions, normals, first, second = (array.array("f") for _ in range(4))
    waves = [math.sin(i * 0.05) for i in range(size + 1)]
    slopes = [0.05 * math.cos(i * 0.05) for i in range(size + 1)]
    for row in range(size + 1):
        for column in range(size + 1):
            positions.extend((column, waves[row] + waves[column], row))
            length = math.sqrt(slopes[column] ** 2 + 1 + slopes[row] ** 2)
            normals.extend((-slopes[column] / length, 1 / length, -slopes[row] / length))
            first.extend((column / size, row / size))
            second.extend((column % 2, row % 3))
    indices = array.array("I")
    for row in range(size):
        for column in range(size):
            at = row * (size + 1) + column
            indices.extend((at, at + size + 1, at + 1, at + 1, at + size + 1, at + size + 2))
    return positions, normals, first, second, indices


def write(path, size):
    arrays = grid(size)
    if sys.byteorder == "big":
        for values in arrays:
            values.byteswap()
    corners = (size + 1) ** 2
    types = ("VEC3", "VEC3", "VEC2", "VEC2", "SCALAR")
    views, accessors, offset = [], [], 0
    for values, kind in zip(arrays, types):
        length = len(values) * values.itemsize
        views.append({"buffer": 0, "byteOffset": offset, "byteLength": length})
        accessors.append({"bufferView": len(views) - 1, "type": kind,
                          "componentType": 5125 if kind == "SCALAR" else 5126,
                          "count": len(values) if kind == "SCALAR" else corners})
        offset += length
    waves = arrays[0][1::3]
    accessors[0].update(min=[0, min(waves), 0], max=[size, max(waves), size])
    document = {
        "asset": {"version": "2.0"},
        "scene": 0,
        "scenes": [{"nodes": [0]}],
        "nodes": [{"name": "grid", "mesh": 0}],
        "meshes": [{"primitives": [{"indices": 4, "attributes": {
            "POSITION": 0, "NORMAL": 1, "TEXCOORD_0": 2, "TEXCOORD_1": 3}}]}],
        "buffers": [{"byteLength": offset}],
        "bufferViews": views,
        "accessors": accessors,
    }
    text = json.dumps(document).encode()
    text += b" " * (-len(text) % 4)
    with open(path, "wb") as out:
        out.write(struct.pack("<4sII", b"glTF", 2, 12 + 8 + len(text) + 8 + offset))
        out.write(struct.pack("<I4s", len(text), b"JSON") + text)
        out.write(struct.pack("<I4s", offset, b"BIN\0"))
        for values in arrays:
            values.tofile(out)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("size", type=int)
    parser.add_argument("file")
    arguments = parser.parse_args()
    write(arguments.file, arguments.size)


if __name__ == "__main__":
    main()

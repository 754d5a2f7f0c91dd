#!/usr/bin/env python3
"""Writes shapes.maxscene.json: meshes whose pictures tell whether they are exported rightly.

A cube with faceted sides, a smooth sphere, a cylinder with a smooth side and hard caps in another
material, a wedge, the same wedge mirrored, and one that an object offset moves and turns.
"""

import json
import math
import pathlib

SEGMENTS = 24
RINGS = 12
FACETED, SIDE, CAP = 0, 1, 2  # smoothing masks


def rounded(values):
    return [round(value, 6) + 0.0 for value in values]


def cube(size):
    corners = [[x, y, z] for z in (0, size) for y in (-size / 2, size / 2)
               for x in (-size / 2, size / 2)]
    sides = [(0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (1, 3, 7, 5), (3, 2, 6, 7), (2, 0, 4, 6)]
    faces, map_faces = [], []
    for a, b, c, d in sides:
        faces += [[a, b, c, FACETED, 0], [a, c, d, FACETED, 0]]
        map_faces += [[0, 1, 2], [0, 2, 3]]
    channel = {"vertices": [[0, 0], [1, 0], [1, 1], [0, 1]], "faces": map_faces}
    return {"class": "mesh", "vertices": corners, "faces": faces, "channels": {"1": channel}}


def sphere(radius):
    vertices = [[0, 0, 2 * radius]]
    for ring in range(1, RINGS):
        polar = math.pi * ring / RINGS
        for i in range(SEGMENTS):
            angle = 2 * math.pi * i / SEGMENTS
            vertices.append(rounded((radius * math.sin(polar) * math.cos(angle),
                                     radius * math.sin(polar) * math.sin(angle),
                                     radius + radius * math.cos(polar))))
    vertices.append([0, 0, 0])
    last = len(vertices) - 1
    faces = []
    for i in range(SEGMENTS):
        after = (i + 1) % SEGMENTS
        faces.append([0, 1 + i, 1 + after, SIDE])
        for ring in range(RINGS - 2):
            upper, lower = 1 + ring * SEGMENTS, 1 + (ring + 1) * SEGMENTS
            faces.append([upper + i, lower + i, lower + after, SIDE])
            faces.append([upper + i, lower + after, upper + after, SIDE])
        bottom = last - SEGMENTS
        faces.append([bottom + i, last, bottom + after, SIDE])
    return {"class": "mesh", "vertices": vertices, "faces": faces}


def cylinder(radius, height):
    vertices = []
    for z in (0, height):
        for i in range(SEGMENTS):
            angle = 2 * math.pi * i / SEGMENTS
            vertices.append(rounded((radius * math.cos(angle), radius * math.sin(angle), z)))
    vertices += [[0, 0, 0], [0, 0, height]]
    faces = []
    for i in range(SEGMENTS):
        after = (i + 1) % SEGMENTS
        faces.append([i, after, SEGMENTS + after, SIDE, 0])
        faces.append([i, SEGMENTS + after, SEGMENTS + i, SIDE, 0])
        faces.append([after, i, 2 * SEGMENTS, CAP, 1])
        faces.append([SEGMENTS + i, SEGMENTS + after, 2 * SEGMENTS + 1, CAP, 1])
    return {"class": "mesh", "vertices": vertices, "faces": faces}


def wedge():
    """Higher at the right, deeper at the front left."""
    vertices = [[-1, -1.5, 0], [1, -1, 0], [1, 1, 0], [-1, 1, 0],
                [-1, -1.5, 0.5], [1, -1, 2], [1, 1, 2], [-1, 1, 0.5]]
    sides = [(0, 3, 2, 1), (4, 5, 6, 7), (0, 1, 5, 4), (1, 2, 6, 5), (2, 3, 7, 6), (3, 0, 4, 7)]
    faces = []
    for a, b, c, d in sides:
        faces += [[a, b, c], [a, c, d]]
    return {"class": "mesh", "vertices": vertices, "faces": faces}


def standard(name, diffuse, **more):
    return {"class": "standard", "name": name, "diffuse": diffuse, **more}


def at(x, y, rows=((1, 0, 0), (0, 1, 0), (0, 0, 1))):
    return {"matrix": [*map(list, rows), [x, y, 0]]}


def scene():
    turned = [[0, 1, 0], [-1, 0, 0], [0, 0, 1], [0, 0, 1.5]]
    bitmap = {"slot": 1, "amount": 0.8,
              "map": {"class": "bitmap", "file": "C:\\maps\\checker.png", "uTiling": 2}}
    return {
        "maxscene": 1,
        "materials": [
            standard("Brick", [0.75, 0.25, 0.2], maps=[bitmap]),
            standard("Sea", [0.15, 0.4, 0.75], shininess=0.6, shininessStrength=0.5),
            {"class": "multi", "name": "Tin",
             "subMaterials": [standard("Tin side", [0.3, 0.65, 0.3]),
                              standard("Tin lid", [0.9, 0.8, 0.3], twoSided=True)]},
        ],
        "nodes": [
            {"name": "Cube", "material": 0, "transform": at(-5, 0), "object": cube(2)},
            {"name": "Sphere", "material": 1, "transform": at(-2, 0), "object": sphere(1.2)},
            {"name": "Cylinder", "material": 2, "transform": at(1, 0), "object": cylinder(1, 2.2)},
            {"name": "Wedge", "transform": at(-4.5, -4.5), "wireColor": [200, 200, 205],
             "object": wedge()},
            {"name": "Mirrored", "transform": at(-1, -4.5, ((-1, 0, 0), (0, 1, 0), (0, 0, 1))),
             "wireColor": [235, 150, 60], "object": wedge()},
            {"name": "Offset", "transform": at(2.5, -4.5), "wireColor": [160, 110, 200],
             "objectOffset": turned, "object": wedge()},
        ],
    }


def main():
    lines = ["{"]
    document = scene()
    for key, value in document.items():
        if key == "nodes":
            body = ",\n".join(json.dumps(node) for node in value)
            lines.append(f'"nodes": [\n{body}\n]')
        else:
            lines.append(f"{json.dumps(key)}: {json.dumps(value)},")
    lines.append("}")
    pathlib.Path(__file__).with_name("shapes.maxscene.json").write_text(
        "\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Looks at the progress bar of whole runs: it moves while a file is read and within a single mesh.

usage: progress.py HDO_EXPORT
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

SIDE = 110  # squares of a grid: 24,200 triangles
READING, EXPORTING = "Reading", "Exporting object..."


def grid():
    """Vertices and triangles."""
    vertices = [(x, (x * y) % 7 * 0.125, y) for y in range(SIDE + 1) for x in range(SIDE + 1)]
    faces = []
    for y in range(SIDE):
        for x in range(SIDE):
            a = y * (SIDE + 1) + x
            b = a + SIDE + 1
            faces += [(a, b, a + 1), (a + 1, b, b + 1)]
    return vertices, faces


def bars(program, scene, directory):
    """The bars that the run shows, as (title, percentages) in their order."""
    run = subprocess.run([program, "-q", "--progress", "always", "-o", "out.hdo", scene],
                         cwd=directory, capture_output=True, text=True, timeout=120)
    if run.returncode != 0:
        sys.exit(f"{scene}: exit status {run.returncode}: {run.stderr}")
    seen = []
    for percent, title in re.findall(r"\] +(\d+)% ([^\r\n]*)", run.stderr):
        percent, title = int(percent), title.strip()
        if not seen or percent == 0 or seen[-1][0].split()[0] != title.split()[0]:
            seen.append((title, []))
        seen[-1][1].append(percent)
    return seen


def expect_moves(what, percentages, least):
    if percentages != sorted(set(percentages)):
        sys.exit(f"{what}: the bar stands or falls: {percentages}")
    if len(percentages) < least or percentages[-1] < 90:
        sys.exit(f"{what}: found {percentages}, expected at least {least} steps to 90% or more")
    print(f"{what}: {len(percentages)} steps to {percentages[-1]}%")


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    vertices, faces = grid()
    with tempfile.TemporaryDirectory() as root:
        directory = pathlib.Path(root)
        (directory / "grid.obj").write_text(
            "o grid\n" + "".join(f"v {x} {y} {z}\n" for x, y, z in vertices) +
            "".join(f"f {a + 1} {b + 1} {c + 1}\n" for a, b, c in faces))
        (directory / "grid.maxscene.json").write_text(json.dumps({
            "maxscene": 1,
            "nodes": [{"name": "grid",
                       "object": {"class": "mesh", "vertices": vertices, "faces": faces}}]}))
        for scene in ("grid.obj", "grid.maxscene.json"):
            shown = bars(program, scene, directory)
            titles = [title for title, _ in shown]
            if titles[:2] != [f"{READING} {scene}", EXPORTING]:
                sys.exit(f"{scene}: bars {titles}, expected reading and then exporting")
            expect_moves(f"reading {scene}", shown[0][1], 8)
            expect_moves(f"the one mesh of {scene}", shown[1][1], 20)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Exports a mesh of a million triangles with two UV sets, compares and checks what comes out.

Prints how long making, exporting, comparing and checking took, what checking costs beside reading, and the most memory that the export
used.
"""

import argparse
import pathlib
import resource
import subprocess
import sys
import tempfile
import time

import large_mesh

CELLS = 708  # a side: 1,002,528 triangles
TIME_LIMIT = 300  # seconds a command


def run(command, folder):
    start = time.monotonic()
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=TIME_LIMIT, check=False)
    text = done.stdout.decode("utf-8", "replace")
    print(f"{time.monotonic() - start:.1f} s: {text.strip().splitlines()[-1] if text else ''}")
    if done.returncode != 0:
        sys.exit(f"{pathlib.Path(command[0]).name}: exit status {done.returncode}\n{text}")
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("hdo_export", type=pathlib.Path)
    parser.add_argument("compare", type=pathlib.Path)
    parser.add_argument("kta", type=pathlib.Path)
    parser.add_argument("check_time", type=pathlib.Path)
    parser.add_argument("list_meshes", type=pathlib.Path)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="large_mesh_") as folder:
        model = pathlib.Path(folder) / "grid.glb"
        large_mesh.write(model, CELLS)
        run([str(arguments.hdo_export.resolve()), "--config-dir", folder, "--progress", "never",
             str(model)], folder)
        most = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        actor = pathlib.Path(folder) / "grid.hdotemp1"
        print(f"{actor.stat().st_size} bytes, at most {most} KiB of memory")
        compared = run([str(arguments.compare.resolve()), str(model), str(actor)], folder)
        run([str(arguments.kta.resolve()), "check", "--strict", str(actor)], folder)
        run([sys.executable, str(arguments.check_time.resolve()), str(arguments.kta.resolve()),
             str(arguments.list_meshes.resolve()), str(actor)], folder)
    triangles = 2 * CELLS * CELLS
    if f" {triangles} triangles," not in compared:
        sys.exit(f"expected {triangles} triangles")


if __name__ == "__main__":
    main()

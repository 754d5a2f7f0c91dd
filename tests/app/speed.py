#!/usr/bin/env python3
"""Says how fast exports are: a report that no time makes fail. bench/report has the whole one.

usage: speed.py HDO_EXPORT LARGE_MESH.PY

Exports grids of 50,000 and 100,000 triangles in turn, beside Assimp's own program where that is
installed. Fails only where what is asked of 3ds Max grows faster than the mesh.
"""

import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

ROUNDS = 3
CELLS = (158, 224)  # twice the triangles


def run(command, folder):
    """Standard output, and the processor seconds of the program and its children."""
    with open(os.path.join(folder, "output"), "w+b") as output:
        process = subprocess.Popen(command, cwd=folder, stdout=output, stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        if status != 0:
            sys.exit(f"{' '.join(command)}: status {os.waitstatus_to_exitcode(status)}")
        output.seek(0)
        return output.read(), usage.ru_utime + usage.ru_stime


def main():
    hdo_export, large_mesh = (os.path.abspath(name) for name in sys.argv[1:])
    ours = {cells: [] for cells in CELLS}
    rivals, exporting, calls = [], [], {}
    with tempfile.TemporaryDirectory(prefix="speed_") as folder:
        for cells in CELLS:
            subprocess.run([sys.executable, large_mesh, str(cells), f"{folder}/{cells}.glb"],
                           check=True)
        for _ in range(ROUNDS):
            for cells in CELLS:
                text, seconds = run([hdo_export, "--json", "--progress", "never", "-o", "out.hdo",
                                     f"{cells}.glb"], folder)
                ours[cells].append(seconds)
                report = json.loads(text)
                calls[cells] = report["calls"]
            exporting.append(report["seconds"]["exporting"])
            if shutil.which("assimp"):
                rivals.append(run(["assimp", "export", f"{CELLS[-1]}.glb", "out.glb", "-fglb2"],
                                  folder)[1])
    triangles = 2 * CELLS[-1] ** 2
    median = statistics.median(ours[CELLS[-1]])
    print(f"{triangles:,} triangles: {median:.2f} processor seconds, of these "
          f"{statistics.median(ours[CELLS[0]]):.2f} for half as many; DoExport "
          f"{triangles / statistics.median(exporting) / 1e6:.1f} million triangles a second")
    if rivals:
        print(f"{median / statistics.median(rivals):.2f} times what `assimp export` to glb2 takes")
    small, large = (calls[cells] for cells in CELLS)
    grown = [name for name in large if large[name] > small[name] * 2 ** 1.3 + 64]
    if grown or large["renderVertices"] != 3 * triangles:
        sys.exit(f"grows faster than the mesh: {', '.join(grown)}: {small} to {large}")


if __name__ == "__main__":
    main()

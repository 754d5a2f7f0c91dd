#!/usr/bin/env python3
"""Pages, receipts and the suspect finder as Windows programs make them.

usage: pages_and_bisect.py --program HDO_EXPORT --kta KTA --scene SCENE -- EMULATOR
SCENE is the example figure.
"""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile

# Node "baked" moves by 8 in a way that keyframed tracks do not tell.
FROM, TO = ([[1, 0, 0], [0, 1, 0], [0, 0, 1], [x, 0, 0]] for x in (0, 8))
BAKED = {
    "maxscene": 1,
    "time": {"frameRate": 30, "ticksPerFrame": 160, "start": 0, "end": 1600},
    "nodes": [{"name": "other"}, {"name": "third"},
              {"name": "baked", "transform": {"samples": [{"time": 0, "matrix": FROM},
                                                          {"time": 1600, "matrix": TO}]}}],
}


def run(arguments, program, words, folder):
    done = subprocess.run([*arguments.emulator, program, *words], cwd=folder, text=True,
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=120, check=False)
    if done.returncode != 0:
        sys.exit(f"{words}: exit status {done.returncode}: {done.stderr}")


def expect(condition, what):
    if not condition:
        sys.exit(f"{what}: not so")
    print(f"{what}: good")


def main():
    parser = argparse.ArgumentParser()
    for name in ("--program", "--kta", "--scene"):
        parser.add_argument(name, required=True)
    parser.add_argument("emulator", nargs="*")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        run(arguments, arguments.program, ["-q", "--receipt", "r.json", "--report", "r.html",
                                           "-o", "f.hdo", arguments.scene], folder)
        receipt = json.loads((folder / "r.json").read_text(encoding="utf-8"))
        report = (folder / "r.html").read_text(encoding="utf-8")
        stages = {stage["name"] for stage in receipt["times"]["stages"]}
        expect({"materials", "nodes", "motion", "converter"} <= stages, "each stage has seconds")
        expect(receipt["deviation"]["worst"] < 0.1, "the export is as the scene")
        expect("Exported" in report and report.endswith("</html>\n"), "the report is a whole page")
        run(arguments, arguments.kta, ["preview", "f.hdotemp1", "f.hdotemp2", "-o", "p.html"],
            folder)
        page = (folder / "p.html").read_bytes()
        expect(page.endswith(b"</html>\n") and b"Forearm L" in page and b"\r\n" not in page,
               "the page is whole, and no line end was changed")
        (folder / "b.maxscene.json").write_text(json.dumps(BAKED))
        run(arguments, arguments.program, ["--bisect", "--max-error", "1", "--tries", "6", "-o",
                                           "least.maxscene.json", "b.maxscene.json"], folder)
        least = json.loads((folder / "least.maxscene.json").read_text())
        expect([node["name"] for node in least["nodes"]] == ["baked"], "the suspect is found")


if __name__ == "__main__":
    main()

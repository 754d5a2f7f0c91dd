#!/usr/bin/env python3
"""Compares the figures of receipts with those of the corpus comparison, and checks their form.

usage: receipts.py HDO_EXPORT COMPARE_GEOMETRY COMPARE_POSES COMPARE_SKINS MODELS SCHEMA EXAMPLE

The comparison shares no code with the host: it reads the model again and the exported files by
itself. Skins are exported with weights left out on purpose, so that there is something to find.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

FRAME_RATE = 30
DEADLINE = 120
# Percents and degrees that an export may be off; the import's own curves may take as much.
MOST = 0.1
POSES = ("glTF2/simple_skin/simple_skin.gltf", "FBX/huesitos.fbx", "ASE/anim2.ASE")
MORPHS = "glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf"
SKINS = ("glTF2/simple_skin/simple_skin.gltf", "FBX/huesitos.fbx")


def run(command):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True,
                          timeout=DEADLINE)


def export(program, model, place, *options):
    """The receipt of an export to out.hdo."""
    done = run([program, "-q", "--export-hidden", "--frame-rate", FRAME_RATE, *options,
                "--receipt", place / "receipt.json", "-o", place / "out.hdo", model])
    if done.returncode != 0:
        sys.exit(f"{model}: exit status {done.returncode}: {done.stderr}")
    return json.loads((place / "receipt.json").read_text())


def compared(program, model, place, *more):
    return run([program, model, place / "out.hdotemp1", place / "out.hdotemp2", 0, FRAME_RATE,
                *more]).stdout


def compare_poses(program, comparison, model, place, *options):
    poses = export(program, model, place, "--no-optimize-skin", *options)["deviation"]["poses"]
    text = compared(comparison, model, place)
    figures = re.search(r"times: (\S+) degrees.*?, (\S+) of the diagonal", text)
    if not figures:
        sys.exit(f"{model}: no figures in {text!r}")
    theirs = {"degrees": float(figures[1]), "percent": 100 * float(figures[2])}
    ours = {"degrees": poses["worstAngle"]["degrees"], "percent": poses["worst"]["percent"]}
    for unit, figure in ours.items():
        if max(figure, theirs[unit]) > MOST or abs(figure - theirs[unit]) > MOST:
            sys.exit(f"{model}: {figure} {unit} in the receipt, {theirs[unit]} by comparison")
    print(f"{model.name} {' '.join(options)}: receipt {ours}, comparison {theirs}")


def compare_morphs(program, comparison, model, place):
    """What packing into 16 bits rounds away is all that there is to find."""
    morphs = export(program, model, place)["deviation"]["morphs"]
    text = run([comparison, model, place / "out.hdotemp1"]).stdout
    figures = re.search(r"(\d+) corners of blend shapes, off by (\S+) of the diagonal", text)
    if not figures:
        sys.exit(f"{model}: no figures in {text!r}")
    ours, theirs = morphs["worst"]["percent"], 100 * float(figures[2])
    # A cube of 8 vertices, 12 triangles and 2 targets.
    if (morphs["compared"], int(figures[1])) != (16, 72):
        sys.exit(f"{model}: {morphs['compared']} points and {figures[1]} corners compared")
    if not 0 < theirs < MOST or abs(ours - theirs) > 0.01 * theirs:
        sys.exit(f"{model}: morphs {ours} % in the receipt, {theirs} % by comparison")
    print(f"{model.name}: morphs {ours} % in the receipt, {theirs} % by comparison")


def compare_skins(program, comparison, model, place, threshold):
    options = ["--optimize-skin", "--weight-threshold", threshold]
    receipt = export(program, model, place, *options)
    ours = receipt["deviation"]["skins"]["worst"]
    text = compared(comparison, model, place, "inf")
    figure = re.search(r"corners: (\S+) of the diagonal", text)
    if not figure:
        sys.exit(f"{model}: no figure in {text!r}")
    theirs = 100 * float(figure[1])  # of two digits
    if abs(ours["percent"] - theirs) > 0.06 * theirs or not theirs > 1:
        sys.exit(f"{model}, weights below {threshold} left out: {ours['percent']} % in the "
                 f"receipt, {theirs} % by comparison")
    codes = {loss["code"] for loss in receipt["losses"]}
    if "weights-changed" not in codes:
        sys.exit(f"{model}: changed weights are not among the losses {codes}")
    print(f"{model.name}: skins {ours['percent']} % in the receipt, {theirs} % by comparison")
    allowed = run([program, "-q", "--export-hidden", *options, "--max-error", theirs / 2, "-o",
                   place / "failed.hdo", model])
    if allowed.returncode != 4 or list(place.glob("failed*")):
        sys.exit(f"--max-error {theirs / 2}: exit status {allowed.returncode}, expected 4 and no "
                 f"files: {list(place.glob('failed*'))}")
    return receipt


def check_unit(program, schema, place):
    """The unit of a model, and what --unit made of it, stand in its receipt."""
    model = place / "metres.gltf"
    model.write_text(json.dumps({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
                                 "nodes": [{"name": "a", "translation": [1, 2, 3]}]}))
    for options, converted in (((), None), (("--unit", "cm"), 0.01)):
        receipt = export(program, model, place, *options)
        jsonschema.validate(receipt, schema)
        unit = receipt["unit"]
        if (unit["metres"], unit["convertedTo"]) != (1, converted):
            sys.exit(f"{options}: {unit}")
        if options and receipt["optionOrigins"]["values"]["unit"] != {"value": "cm",
                                                                     "from": "command line"}:
            sys.exit(f"{options}: {receipt['optionOrigins']}")
    print(f"units: {unit['text']}")


def main():
    program, geometry, poses, skins, models, schema_file, example = map(pathlib.Path, sys.argv[1:])
    schema = json.loads(schema_file.read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    with tempfile.TemporaryDirectory() as directory:
        place = pathlib.Path(directory)
        for model in POSES:
            for tracks in (["--no-sample-animation"], ["--sample-animation", "--sample-rate", "1"]):
                compare_poses(program, poses, models / model, place, *tracks)
        compare_morphs(program, geometry, models / MORPHS, place)
        receipts = [compare_skins(program, skins, models / model, place, "0.6")
                    for model in SKINS]
        check_unit(program, schema, place)
        receipts.append(export(program, example, place))
        receipts.append(export(program, example, place, "--no-times", "--max-error", "1",
                               "--accept", place / "receipt.json"))
    for receipt in receipts:
        jsonschema.validate(receipt, schema)
    if "times" in receipts[-1] or not receipts[-1]["losses"][0]["accepted"]:
        sys.exit("--no-times and --accept do not show in the receipt")
    broken = dict(receipts[-1], losses=[{"code": "x"}])
    if jsonschema.Draft202012Validator(schema).is_valid(broken):
        sys.exit("the schema takes anything")


if __name__ == "__main__":
    main()

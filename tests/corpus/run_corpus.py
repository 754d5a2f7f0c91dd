#!/usr/bin/env python3
"""Exports every model file of a folder and looks at what comes out.

A file that Assimp loads by itself must export twice with status 0 and the same bytes, and its actor
file must hold one node chunk a node, in depth-first child order, with the names and parents that
`hdo-export --list` gives, and the geometry that Assimp gives; `kta check` finds nothing wrong. Of
every clip, the poses rebuilt from sampled and from keyframed tracks must be those that Assimp
gives, and so must the vertices of skinned meshes, deformed by the file's weights. Receipts say the
same of these exports: no deviation above 0.1 % or 0.1 degrees, but for skins whose weights were left
out on purpose, which then stands among the losses. The Khronos validator finds no error and no
warning in the previews that stand beside these exports, which are what `kta glb` makes. A file that
Assimp does not load must be refused with status 2 and one line that names it, and nothing may be
written. So must one for which an import has not enough memory, but only if Assimp by itself cannot
load it either with as much memory and time. The models of WITHOUT_NODES load, but have no node to
export: they must be refused in the same way, and export with --allow-empty.

FBX, ASE, 3DS, Collada, BVH and glTF 2 files are run; with --all, every other file as well. With
--runs-only a file of at most 300,000 bytes is exported once, every other one with sampled tracks,
and its actor file dumped: for programs whose build watches how they run. Exit status: 0 all passed,
1 some failed or there was no file, 2 bad usage.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile

TIME_LIMIT = 60  # seconds a command
NAME_BYTES = 259  # the file's name fields hold a NUL too
NODE_CHUNK = 0
MESH_CHUNK = 3
WEIGHTS_CHUNK = 4
CHUNK_HEADER_SIZE = 12
DEFAULT_FRAME_RATE = 30  # of a scene description that states none
SKIN_TOLERANCE = "0.001"  # of the model's bounding diagonal
MOST_DEVIATION = 0.1  # of receipts: percents of the scene's size, and degrees
WATCHED_SIZE = 300_000  # bytes of the largest file that a build runs on that watches how it runs
MESH_INDEX_COUNT_OFFSET = 12  # in the chunk's body

FORMATS = {
    ".fbx": "FBX",
    ".ase": "ASE",
    ".3ds": "3DS",
    ".dae": "Collada",
    ".zae": "Collada",
    ".bvh": "BVH",
    ".gltf": "glTF 2",
    ".glb": "glTF 2",
}


WITHOUT_NODES = {
    "IRR/instancing.irr",
    "M3D/cube_normals.m3d",
    "M3D/cube_with_vertexcolors.m3d",
    "OpenGEX/empty_camera.ogex",
    "OpenGEX/light_issue1262.ogex",
    "glTF2/TestNoRootNode/SceneWithoutNodes.gltf",
}


class Failed(Exception):
    """What is wrong with a file's export, for the report's last column."""


class Row:
    def __init__(self, name, kind):
        self.name = name
        self.kind = kind
        self.nodes = "-"
        self.triangles = "-"
        self.geometry = "-"
        self.poses = "-"
        self.skins = "-"
        self.glbs = []  # previews of its exports
        self.receipts = []  # what deviates most, in percents and degrees
        self.exit = "-"
        self.result = ""
        self.passed = False
        self.refusal = None  # the first export, as (what ran, its folder), where its status is not 0

    def cells(self):
        return [self.name, self.kind or "other", str(self.nodes), str(self.triangles),
                self.geometry, self.poses, self.skins,
                f"{max(self.receipts):.2g}" if self.receipts else "-", str(self.exit), self.result]


def run(command, folder):
    """Runs a command in `folder`; a status below 0 is a signal."""
    try:
        return subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=TIME_LIMIT, check=False)
    except subprocess.TimeoutExpired:
        raise Failed(f"{pathlib.Path(command[0]).name} took more than {TIME_LIMIT} s") from None


def files_in(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


def kind_of(path):
    """The format that counts, or None."""
    kind = FORMATS.get(path.suffix.lower())
    return None if kind == "glTF 2" and "glTF2" not in path.parts else kind


def unescaped(text):
    """A name as `hdo-export --list` prints it, as bytes."""
    return re.sub(rb"\\(?:x([0-9a-fA-F]{2})|(\\))",
                  lambda m: b"\\" if m.group(2) else bytes([int(m.group(1), 16)]), text)


def cut(name):
    """As the file holds it and `kta dump` shows it, where it is cut in a character or not."""
    return name[:NAME_BYTES].decode("utf-8", "ignore")


def shown(text):
    return text.rstrip("\ufffd") if len(text.encode("utf-8", "replace")) >= NAME_BYTES - 4 else text


def listed_nodes(output):
    """(name, parent's name) of each node, from the lines of `hdo-export --list`."""
    nodes = []
    above = []
    for line in output.split(b"\n"):
        fields = line.split(b"\t")
        if fields[0] != b"node":
            continue
        if len(fields) != 5:
            raise Failed(f"--list prints {len(fields)} fields for a node, expected 5: {line!r}")
        depth, name = int(fields[2]), unescaped(fields[4])
        if depth > len(above):
            raise Failed(f"--list prints depth {depth} below depth {len(above) - 1}: {line!r}")
        del above[depth:]
        parent = above[-1] if above and above[-1] != b"Scene Root" else b""
        nodes.append((cut(name), cut(parent)))
        above.append(name)
    return nodes


def dumped_nodes(chunks):
    return [(shown(chunk["nodeName"]), shown(chunk["parentName"]))
            for chunk in chunks if chunk["id"] == NODE_CHUNK]


def split_ahead(nodes, chunks):
    """(nodes that stand between a mesh and its weights, as its bones; all others)."""
    count, before, ahead = 0, {}, set()
    for chunk in chunks:
        if chunk["id"] == NODE_CHUNK:
            count += 1
        elif chunk["id"] == MESH_CHUNK:
            before[chunk["nodeNumber"]] = count
        elif chunk["id"] == WEIGHTS_CHUNK:
            ahead.update(range(before[chunk["nodeNumber"]], count))
    return ([node for i, node in enumerate(nodes) if i in ahead],
            [node for i, node in enumerate(nodes) if i not in ahead])


def frame_rate(saved):
    """Of a saved scene, as an argument."""
    return str(json.loads(saved.read_bytes()).get("time", {}).get("frameRate", DEFAULT_FRAME_RATE))


def triangles_in(actor, chunks):
    data = actor.read_bytes()
    total = 0
    for chunk in chunks:
        if chunk["id"] == MESH_CHUNK:
            at = chunk["offset"] + CHUNK_HEADER_SIZE + MESH_INDEX_COUNT_OFFSET
            total += struct.unpack_from("<i", data, at)[0] // 3
    return total


class Corpus:
    def __init__(self, arguments):
        self.hdo_export = str(arguments.hdo_export.resolve())
        self.kta = str(arguments.kta.resolve())
        self.oracle = str(arguments.oracle.resolve())
        self.compare = str(arguments.compare.resolve())
        self.runs_only = arguments.runs_only
        self.compare_poses = str(arguments.compare_poses.resolve())
        self.compare_skins = str(arguments.compare_skins.resolve())
        self.models = arguments.models.resolve()
        self.node = arguments.node
        self.validator = arguments.validator
        self.node_folder = arguments.node_folder

    def check(self, path, glbs):
        row = Row(str(path.relative_to(self.models)), kind_of(path))
        try:
            with tempfile.TemporaryDirectory(prefix="corpus_") as folder:
                place = pathlib.Path(folder)
                row.result = self.check_file(path, place, row)
                if self.validator:
                    row.glbs = kept_previews(place, glbs)
            row.passed = True
        except Failed as failure:
            row.result = f"FAILED: {failure}"
        return row

    def validate(self, rows):
        """All previews in one process."""
        glbs = [str(glb) for row in rows for glb in row.glbs]
        done = subprocess.run([self.node, str(self.validator), "--validate", str(self.node_folder)],
                              input="\n".join(glbs), capture_output=True, text=True, check=False)
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        if done.returncode != 0 or [line["file"] for line in lines] != glbs:
            sys.exit(f"the validator ends with {done.returncode} after {len(lines)} of {len(glbs)} "
                     f"files: {done.stderr}")
        wrong = {line["file"]: line["errors"] + line["warnings"] for line in lines}
        for row in rows:
            for glb in row.glbs:
                if row.passed and wrong[str(glb)]:
                    row.passed = False
                    row.result = f"FAILED: {glb.name}: {wrong[str(glb)][0]}"
        print(f"{len(glbs)} previews validated")

    def loads(self, path, folder, *options):
        try:
            return run([self.oracle, *options, str(path)], folder).returncode == 0
        except Failed:
            return False

    def check_file(self, path, place, row):
        if row.name in WITHOUT_NODES:
            return self.check_without_nodes(path, place, row)
        try:
            if self.runs_only:
                self.check_runs(path, place, row)
            else:
                self.check_export(path, place, row)
            return "ok"
        except Failed as failure:
            lacks_memory = self.lacks_memory(path, place, row, failure)
            if not row.refusal or (not lacks_memory and self.loads(path, place)):
                raise
        self.check_refusal(path, *row.refusal)
        return ("refused, as Assimp itself does within the same limits" if lacks_memory
                else "refused, as it should be")

    def check_without_nodes(self, path, place, row):
        refused = self.export(path, place / "refused")
        row.exit = refused.returncode
        self.check_refusal(path, refused, place / "refused")
        if b"no node in it" not in refused.stderr:
            raise Failed(f"refused for another reason: {first_line(refused.stderr)}")
        allowed = self.export(path, place / "allowed", "--allow-empty")
        if allowed.returncode != 0:
            raise Failed(f"--allow-empty: exit status {allowed.returncode}")
        if dumped_nodes(self.dumped(place / "allowed")):
            raise Failed("--allow-empty: nodes in the actor file, expected none")
        return "refused, as it has no nodes"

    def lacks_memory(self, path, folder, row, failure):
        """Whether an export wants for memory where Assimp itself does, given as much. What Assimp
        does with more is not asked: it may take all that there is."""
        return (row.exit == 2 and "not enough memory" in str(failure)
                and not self.loads(path, folder, "--limited"))

    def export(self, path, folder, *options):
        (folder / "config").mkdir(parents=True)
        return run([self.hdo_export, "--config-dir", str(folder / "config"), "--progress", "never",
                    *options, "-o", str(folder / "out.hdo"), str(path)], folder)

    def export_or_fail(self, path, place, row, *options):
        """Returns the bytes of both files."""
        done = self.export(path, place, *options)
        row.exit = done.returncode
        if done.returncode != 0:
            row.refusal = row.refusal or (done, place)
            raise Failed(f"exit status {done.returncode}: {first_line(done.stderr)}")
        return [self.written(place, part) for part in ("temp1", "temp2")]

    def check_rules(self, folder):
        """Nothing is wrong with any of the model's exports, notes aside."""
        done = run([self.kta, "check", "--strict", str(folder)], folder)
        if done.returncode != 0:
            raise Failed(f"kta check: {(done.stdout or done.stderr).decode(errors='replace')}")

    def check_runs(self, path, folder, row):
        tracks = (["--sample-animation", "--sample-rate", "1"] if len(row.name) % 2 else
                  ["--no-sample-animation"])
        self.export_or_fail(path, folder / "first", row, "--export-hidden", "--motions-for-hidden",
                            *tracks, "--no-optimize-skin",
                            "--save-scene", str(folder / "first" / "scene.maxscene.json"))
        row.nodes = len(dumped_nodes(self.dumped(folder / "first")))

    def check_export(self, path, folder, row):
        first = self.export_or_fail(path, folder / "first", row, "--export-hidden")
        second = self.export_or_fail(path, folder / "second", row, "--export-hidden",
                                     "--receipt", str(folder / "second" / "receipt.json"))
        if first != second:
            raise Failed("a second export gives other bytes")
        self.check_receipt(folder / "second", row, True)
        listing = run([self.hdo_export, "--list", str(path)], folder)
        if listing.returncode != 0:
            raise Failed(f"--list: exit status {listing.returncode}")
        self.check_nodes(listed_nodes(listing.stdout), folder / "first", row)
        self.check_geometry(path, folder / "first", row)
        clips = sum(line.startswith(b"animation\t") for line in listing.stdout.split(b"\n"))
        self.check_poses(path, folder, clips, row)
        self.check_rules(folder)

    @staticmethod
    def written(place, part):
        try:
            return (place / f"out.hdo{part}").read_bytes()
        except OSError:
            raise Failed(f"no file out.hdo{part}") from None

    def dumped(self, place):
        """The chunks of an exported actor file, as `kta dump` shows them."""
        dump = run([self.kta, "dump", str(place / "out.hdotemp1"), "--json"], place)
        if dump.returncode != 0:
            raise Failed(f"kta dump: exit status {dump.returncode}: {first_line(dump.stderr)}")
        return json.loads(dump.stdout)["chunks"]

    def check_nodes(self, expected, place, row):
        chunks = self.dumped(place)
        found = dumped_nodes(chunks)
        row.nodes = len(found)
        row.triangles = triangles_in(place / "out.hdotemp1", chunks)
        if len(found) != len(expected):
            raise Failed(f"{len(found)} node chunks, expected {len(expected)}")
        bones, others = split_ahead(found, chunks)
        for bone in bones:
            if bone not in expected:
                raise Failed(f"bone {bone} is no node")
            expected.remove(bone)
        for index, (want, have) in enumerate(zip(expected, others)):
            if want != have:
                raise Failed(f"node {index} but for bones is {have}, expected {want}")

    def check_geometry(self, path, place, row):
        compared = run([self.compare, str(path), str(place / "out.hdotemp1")], place)
        if compared.returncode != 0:
            raise Failed(f"geometry: {first_line(compared.stdout + compared.stderr)}")
        row.geometry = first_line(compared.stdout)

    def check_poses(self, path, folder, clips, row):
        figures = [self.compare_clip(path, folder, clip, mode, row)
                   for clip in range(clips) for mode in ("sampled", "keyframed")]
        row.poses = "; ".join(figures) or "-"
        skins = [self.compare_clip_skins(path, folder, clip) for clip in range(clips)]
        row.skins = "; ".join(filter(None, skins)) or "-"

    def compare_clip(self, path, folder, clip, mode, row):
        place = folder / f"{mode}_{clip}"
        saved = place / "scene.maxscene.json"
        tracks = (["--sample-animation", "--sample-rate", "1"] if mode == "sampled"
                  else ["--no-sample-animation"])
        done = self.export(path, place, "--export-hidden", "--motions-for-hidden", *tracks,
                           "--no-optimize-skin", "--animation", str(clip),
                           "--save-scene", str(saved), "--receipt", str(place / "receipt.json"))
        if done.returncode != 0:
            raise Failed(f"clip {clip}: exit status {done.returncode}: {first_line(done.stderr)}")
        self.check_receipt(place, row, False)
        compared = run([self.compare_poses, str(path), str(place / "out.hdotemp1"),
                        str(place / "out.hdotemp2"), str(clip), frame_rate(saved)], place)
        figures = f"clip {clip}, {mode}: "
        figures += first_line(compared.stdout + compared.stderr)
        if compared.returncode != 0:
            raise Failed(f"poses: {figures}")
        return figures

    @staticmethod
    def check_receipt(place, row, drops_weights):
        receipt = json.loads((place / "receipt.json").read_text())
        deviation = receipt["deviation"]
        changed = any(loss["code"] == "weights-changed" for loss in receipt["losses"])
        figures = {"vertices": deviation["vertices"]["worst"]["percent"],
                   "poses": deviation["poses"]["worst"]["percent"],
                   "angles": deviation["poses"]["worstAngle"]["degrees"],
                   "morphs": deviation["morphs"]["worst"]["percent"]}
        if not (drops_weights and changed):
            figures["skins"] = deviation["skins"]["worst"]["percent"]
        row.receipts += figures.values()
        for what, figure in figures.items():
            if not figure <= MOST_DEVIATION:
                raise Failed(f"receipt of {place.name}: {what} deviate by {figure}")

    def compare_clip_skins(self, path, folder, clip):
        """Without optimisation as the model; with it, how far off."""
        exported = folder / f"keyframed_{clip}"
        rate = frame_rate(exported / "scene.maxscene.json")
        plain = self.skin_figures(path, exported, clip, rate, SKIN_TOLERANCE)
        if plain == "no skins":
            return None
        place = folder / f"optimized_{clip}"
        done = self.export(path, place, "--export-hidden", "--no-sample-animation",
                           "--optimize-skin", "--animation", str(clip))
        if done.returncode != 0:
            raise Failed(f"clip {clip}: exit status {done.returncode}: {first_line(done.stderr)}")
        optimized = self.skin_figures(path, place, clip, rate, "inf")
        return f"clip {clip}: {plain}; optimised: {optimized}"

    def skin_figures(self, path, place, clip, rate, tolerance):
        compared = run([self.compare_skins, str(path), str(place / "out.hdotemp1"),
                        str(place / "out.hdotemp2"), str(clip), rate, tolerance], place)
        figures = first_line(compared.stdout + compared.stderr)
        if compared.returncode != 0:
            raise Failed(f"skins: clip {clip}: {figures}")
        return figures

    @staticmethod
    def check_refusal(path, done, place):
        if done.returncode != 2:
            raise Failed(f"exit status {done.returncode}, expected 2: {first_line(done.stderr)}")
        lines = done.stderr.decode("utf-8", "replace").splitlines()
        if len(lines) != 1:
            raise Failed(f"{len(lines)} lines on standard error, expected 1")
        if not lines[0].startswith("hdo-export: ") or path.name not in lines[0]:
            raise Failed(f"the line does not name the file: {lines[0]}")
        if done.stdout:
            raise Failed("something on standard output")
        if files_in(place):
            raise Failed(f"files were written: {', '.join(files_in(place))}")


def kept_previews(place, folder):
    """Where the previews of one model's different exports stand now."""
    kept = []
    for glb in sorted(place.glob("*/out.hdo.glb")):
        if glb.parent.name != "second":
            handle, name = tempfile.mkstemp(f"_{glb.parent.name}.glb", dir=folder)
            os.close(handle)
            kept.append(glb.replace(name))
    return kept


def first_line(text):
    lines = text.decode("utf-8", "replace").splitlines()
    return lines[-1] if lines else "nothing on standard error"


def write_report(rows, report):
    head = ["file", "format", "nodes", "triangles", "geometry", "poses", "skins", "receipts",
            "exit", "result"]
    table = [head] + [row.cells() for row in rows]
    widths = [max(len(cells[i]) for cells in table) for i in range(len(head) - 1)]
    with open(report, "w", encoding="utf-8") as out:
        for cells in table:
            out.write("  ".join([cell.ljust(width) for cell, width in zip(cells, widths)]
                                + cells[-1:]) + "\n")


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("hdo_export", type=pathlib.Path)
    parser.add_argument("kta", type=pathlib.Path)
    parser.add_argument("models", type=pathlib.Path, nargs="?",
                        default=pathlib.Path("/usr/share/assimp/models"))
    parser.add_argument("report", type=pathlib.Path, nargs="?",
                        default=pathlib.Path("corpus_report.txt"))
    parser.add_argument("--oracle", type=pathlib.Path,
                        help="assimp_loads (default: beside kta)")
    parser.add_argument("--compare", type=pathlib.Path,
                        help="compare_geometry (default: beside kta)")
    parser.add_argument("--compare-poses", type=pathlib.Path,
                        help="compare_poses (default: beside kta)")
    parser.add_argument("--compare-skins", type=pathlib.Path,
                        help="compare_skins (default: beside kta)")
    parser.add_argument("--node", default="node")
    parser.add_argument("--validator", type=pathlib.Path, help="look_at_glb.mjs")
    parser.add_argument("--node-folder", type=pathlib.Path, help="where its packages are")
    parser.add_argument("--runs-only", action="store_true",
                        help="two exports and a dump a file, without any comparison")
    parser.add_argument("--all", action="store_true", help="run the files of other formats too")
    parser.add_argument("--jobs", type=int, default=len(os.sched_getaffinity(0)),
                        help="files at a time (default: a processor each)")
    arguments = parser.parse_args()
    arguments.oracle = arguments.oracle or arguments.kta.parent / "assimp_loads"
    arguments.compare = arguments.compare or arguments.kta.parent / "compare_geometry"
    arguments.compare_poses = arguments.compare_poses or arguments.kta.parent / "compare_poses"
    arguments.compare_skins = arguments.compare_skins or arguments.kta.parent / "compare_skins"
    comparisons = [arguments.compare, arguments.compare_poses, arguments.compare_skins]
    for program in [arguments.hdo_export, arguments.kta, arguments.oracle,
                    *([] if arguments.runs_only else comparisons)]:
        if not program.is_file():
            parser.error(f"{program}: no such program")
    return arguments


def tally(rows):
    passed = sum(row.passed for row in rows)
    return passed, len(rows) - passed


def main():
    arguments = parse_arguments()
    corpus = Corpus(arguments)
    paths = sorted(path for path in corpus.models.rglob("*") if path.is_file())
    counting = [path for path in paths if kind_of(path)]
    if arguments.runs_only:
        counting = [path for path in counting if path.stat().st_size <= WATCHED_SIZE]
    others = [path for path in paths if not kind_of(path)] if arguments.all else []
    with (tempfile.TemporaryDirectory(prefix="corpus_glb_") as glbs,
          concurrent.futures.ThreadPoolExecutor(max(1, arguments.jobs)) as pool):
        rows = list(pool.map(lambda path: corpus.check(path, glbs), counting + others))
        if corpus.validator:
            corpus.validate(rows)
    write_report(rows, arguments.report)
    for row in rows:
        if not row.passed:
            print(f"{row.name}: {row.result}")
    if others:
        print("other formats: %d passed, %d failed" % tally(rows[len(counting):]))
        print("the six formats: %d passed, %d failed" % tally(rows[:len(counting)]))
    print("%d passed, %d failed" % tally(rows))
    return 0 if counting and tally(rows)[1] == 0 else 1


if __name__ == "__main__":
    sys.exit(main())

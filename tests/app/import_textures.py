#!/usr/bin/env python3
"""Exports models that hold their textures themselves: which files come of them, and where.

usage: import_textures.py HDO_EXPORT KTA MODELS
"""

import base64
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import zlib


def png(red, green, blue):
    """One pixel of that colour."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data +
                struct.pack(">I", zlib.crc32(kind + data)))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(bytes([0, red, green, blue]))) + chunk(b"IEND", b""))


RED, GREEN, BLUE = png(255, 0, 0), png(0, 255, 0), png(0, 0, 255)
JPEG = b"\xff\xd8\xff\xe0 this much of it is enough to tell"
DATA = "data:application/octet-stream;base64,"


def gltf(images):
    """A triangle for each image, whose materials have it as their base colour. An image is a pair of
    its name (None: none) and its bytes, which become a data URI, or a file's name."""
    points = struct.pack("<9f", 0, 0, 0, 1, 0, 0, 0, 1, 0) + struct.pack("<6f", 0, 0, 1, 0, 0, 1)
    count = range(len(images))
    return {
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": list(count)}],
        "nodes": [{"name": f"n{i}", "mesh": i} for i in count],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0, "TEXCOORD_0": 1},
                                    "material": i}]} for i in count],
        "materials": [{"name": f"m{i}", "pbrMetallicRoughness":
                       {"baseColorTexture": {"index": i}}} for i in count],
        "textures": [{"source": i} for i in count],
        "images": [({} if name is None else {"name": name}) |
                   {"uri": what if isinstance(what, str) else
                    "data:image/png;base64," + base64.b64encode(what).decode()}
                   for name, what in images],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [1, 1, 0]},
                      {"bufferView": 0, "byteOffset": 36, "componentType": 5126, "count": 3,
                       "type": "VEC2"}],
        "bufferViews": [{"buffer": 0, "byteLength": len(points)}],
        "buffers": [{"byteLength": len(points),
                     "uri": DATA + base64.b64encode(points).decode()}]}


def glb(model):
    """The same with everything in its binary chunk."""
    body = b""

    def put(uri):
        nonlocal body
        data = base64.b64decode(uri.partition(",")[2])
        body += bytes(-len(body) % 4)
        view = {"buffer": 0, "byteOffset": len(body), "byteLength": len(data)}
        body += data
        return view

    model["bufferViews"] = [put(model["buffers"][0]["uri"])]
    for image in model["images"]:
        model["bufferViews"].append(put(image.pop("uri")))
        image |= {"bufferView": len(model["bufferViews"]) - 1, "mimeType": "image/png"}
    body += bytes(-len(body) % 4)
    model["buffers"] = [{"byteLength": len(body)}]
    text = json.dumps(model).encode()
    text += b" " * (-len(text) % 4)
    return (struct.pack("<4sIIII4s", b"glTF", 2, 28 - 8 + len(text) + 8 + len(body) , len(text), 0,
                        b"")[:12] + struct.pack("<I4s", len(text), b"JSON") + text +
            struct.pack("<I4s", len(body), b"BIN\0") + body)


class Place:
    """A directory of its own, and the programs."""

    def __init__(self, programs, folder):
        self.program, self.kta = programs
        self.folder = folder

    def write(self, name, data):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data if isinstance(data, bytes) else json.dumps(data).encode())
        return path

    def export(self, scene, *options, status=0):
        run = subprocess.run([self.program, *options, scene], cwd=self.folder, timeout=60,
                             capture_output=True, text=True, errors="surrogateescape")
        if run.returncode != status:
            sys.exit(f"{scene} {options}: status {run.returncode}, expected {status}\n{run.stderr}")
        return run

    def layers(self, actor):
        """The textures that the actor file's materials name, in order."""
        run = subprocess.run([self.kta, "dump", "--json", self.folder / actor], check=True,
                             capture_output=True, text=True)
        return [chunk["textureFileName"] for chunk in json.loads(run.stdout)["chunks"]
                if "textureFileName" in chunk]

    def files(self):
        return sorted(str(path.relative_to(self.folder)) for path in self.folder.rglob("*")
                      if path.is_file())

    def expect(self, name, data):
        if (self.folder / name).read_bytes() != data:
            sys.exit(f"{name}: not the texture's bytes")


def same(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: {found!r}, expected {expected!r}")


RECORD = "robot.hdo.textures.json"
EXPORT = ["robot.hdo", "robot.hdo.glb", "robot.hdo.log", RECORD, "robot.hdotemp1",
          "robot.hdotemp2"]


def check_names(place):
    """Names as the materials name them, made fit for any file system."""
    place.write("wood.png", BLUE)  # what the third image means
    images = [("Wood.png", RED), ("wood.png", RED), (None, "wood.png"), (None, GREEN),
              ("bark", JPEG), ("bark", BLUE), ("../../up.png", RED), ("/etc/deep.png", RED),
              ("C:\\a\\drive.png", RED), ("c:col:on?.png", RED), ("nul.png", RED),
              ("COM1.tar.png", RED), (" . ", RED), (".png", RED), ("end.png . .", RED),
              ("robot.gltf", RED), ("x" * 500 + ".png", RED), ("bär.png", RED),
              ("run.exe", GREEN), ("cut.png\x00.exe", GREEN)]
    expected = ["Wood-2.png", "Wood-2.png", "wood.png", "robot-texture-3.png", "robot-bark.jpg",
                "robot-bark.png", "up.png", "deep.png", "drive.png", "c_col_on_.png",
                "_nul.png", "_COM1.tar.png", "robot-texture-12.png", "robot-png.png", "end.png",
                "robot-robot.gltf.png", "x" * 196 + ".png", "bär.png", "robot-run.exe.png",
                "cut.png"]
    place.write("robot.gltf", gltf(images))
    place.export("robot.gltf")
    same("layers", place.layers("robot.hdotemp1"), expected)
    same("files", place.files(), sorted([*EXPORT, "robot.gltf", *set(expected)]))
    place.expect("wood.png", BLUE)
    for (_, data), name in zip(images, expected):
        if name != "wood.png":
            place.expect(name, data)


def check_glb(place):
    """The same from a GLB, whose preview shows the texture; a second run changes nothing."""
    place.write("robot.glb", glb(gltf([("paint.png", GREEN), (None, RED)])))
    run = place.export("robot.glb")
    same("files", place.files(), sorted([*EXPORT, "robot.glb", "paint.png", "robot-texture-2.png"]))
    place.expect("paint.png", GREEN)
    place.expect("robot-texture-2.png", RED)
    if (f"{place.folder}: 2 textures of the scene's file: paint.png, robot-texture-2.png\n"
            not in run.stdout):
        sys.exit(run.stdout)
    same("warnings", run.stderr, "")
    preview = (place.folder / "robot.hdo.glb").read_bytes()
    images = json.loads(preview[20:20 + struct.unpack_from("<I", preview, 12)[0]])["images"]
    same("images of the preview", images, [{"uri": "paint.png"}, {"uri": "robot-texture-2.png"}])
    before = {name: (place.folder / name).read_bytes() for name in place.files()}
    stamp = (place.folder / "paint.png").stat().st_mtime_ns
    report = json.loads(place.export("robot.glb", "--json").stdout)
    same("textures", [(pathlib.Path(file["path"]).name, file["bytes"]) for file in report["files"]
                      if file["kind"] == "texture"],
         [("paint.png", len(GREEN)), ("robot-texture-2.png", len(RED))])
    same("a second export", {name: (place.folder / name).read_bytes() for name in place.files()},
         before)
    same("time of the texture", (place.folder / "paint.png").stat().st_mtime_ns, stamp)


def check_refused(place):
    """Another file's place, and exports that fail, leave the directory as it is."""
    place.write("paint.png", BLUE)
    place.write("robot.glb", glb(gltf([("paint.png", GREEN), (None, RED)])))
    for options, reason in [((), "stands there with another content"),
                            (("-o", "robot-texture-2.png"), "the export's own files")]:
        if options:
            (place.folder / "paint.png").write_bytes(GREEN)
        run = place.export("robot.glb", *options, status=2)
        if reason not in run.stderr or len(run.stderr.splitlines()) != 1:
            sys.exit(run.stderr)
    same("files", place.files(), ["paint.png", "robot.glb"])
    place.export("robot.glb", "--cancel-after", "1", status=5)
    place.export("robot.glb", "--strict", "--frame-rate", "31", "--animation", "none", status=2)
    same("files", place.files(), ["paint.png", "robot.glb"])
    place.export("robot.glb", "--cancel-after", "1", "--keep-partial", status=5)
    place.expect("robot-texture-2.png", RED)


def check_edited(place):
    """A model that was edited takes the place of its own former textures, and of nobody else's."""
    def edit(name, color):
        place.write(name, glb(gltf([("paint.png", color)])))

    edit("robot.glb", GREEN)
    place.export("robot.glb")
    record = json.loads((place.folder / RECORD).read_text())
    same("record", (record["scene"], [texture["file"] for texture in record["textures"]]),
         ("robot.glb", ["paint.png"]))
    place.export("robot.glb")
    edit("robot.glb", BLUE)
    dry = place.export("robot.glb", "--dry-run")
    same("dry run", f"paint.png: {len(BLUE)} bytes, in the place of" in dry.stdout, True)
    place.expect("paint.png", GREEN)
    run = place.export("robot.glb")
    same("warnings", run.stderr, "")
    place.expect("paint.png", BLUE)
    # Another export of the same model, as of another of its animations.
    place.export("robot.glb", "-o", "two.hdo")
    edit("robot.glb", RED)
    for name in ("two.hdo", "robot.hdo"):
        place.export("robot.glb", "-o", name)
        place.expect("paint.png", RED)
    # Somebody works on the texture.
    place.write("paint.png", JPEG)
    edit("robot.glb", GREEN)
    run = place.export("robot.glb", status=2)
    same("refusal", "paint.png: stands there with another content" in run.stderr, True)
    place.expect("paint.png", JPEG)
    # It is somebody's own from the beginning, or another model's too.
    for own in (True, False):
        for path in place.folder.iterdir():
            path.unlink()
        if own:
            place.write("paint.png", GREEN)
        else:
            edit("other.glb", GREEN)
        edit("robot.glb", GREEN)
        for name in ["robot.glb"] if own else ["robot.glb", "other.glb"]:
            place.export(name)
            place.export(name)
        edit("robot.glb", BLUE)
        place.export("robot.glb", status=2)
        place.expect("paint.png", GREEN)
    (place.folder / "other.hdo.textures.json").write_text('{"hdoTextures": 1, "textures": [3, {}]')
    place.export("robot.glb")
    for damage in ("", "[]", '{"hdoTextures": 1}', '{"hdoTextures": 1, "textures": [3, {}]}'):
        edit("robot.glb", RED)
        (place.folder / RECORD).write_text(damage)
        place.export("robot.glb", status=2)
    # Nobody writes into these pipes.
    (place.folder / RECORD).unlink()
    for name in (RECORD, "another.hdo.textures.json"):
        os.mkfifo(place.folder / name)
    place.export("robot.glb", status=2)


def check_other_texture_meanwhile(place):
    """A file that comes to a texture's place during the export is not replaced."""
    place.write("robot.glb", glb(gltf([("paint.png", GREEN)])))
    for meanwhile, status in [(GREEN, 0), (BLUE, 2)]:
        log = place.folder / "log"
        os.mkfifo(log)
        with subprocess.Popen([place.program, "robot.glb", "--log", log, "-o", "out.hdo"],
                              cwd=place.folder, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                              text=True) as run:
            # It is made in a private directory, and then waits for the log's reader.
            until = time.monotonic() + 60
            while not any(path.parent != place.folder and path.stat().st_size == len(GREEN)
                          for path in place.folder.rglob("paint.png")):
                if time.monotonic() > until or run.poll() is not None:
                    sys.exit(f"no texture is made\n{run.communicate()[1]}")
                time.sleep(0.01)
            place.write("paint.png", meanwhile)
            log.read_bytes()
            said = run.communicate(timeout=60)[1]
        log.unlink()
        same("status", (run.returncode, said), (status, said))
        place.expect("paint.png", meanwhile)
        made = [name.replace("robot", "out") for name in EXPORT if not name.endswith(".log")]
        made = made if status == 0 else []
        same("files", place.files(), sorted(["paint.png", "robot.glb", *made]))
        for name in ("paint.png", *made):
            (place.folder / name).unlink()
    same("refusal", said.splitlines()[0],
         f"hdo-export: robot.glb: {place.folder}/paint.png: stands there with another content, "
         "expected room for a texture of the scene (--textures DIR puts them into DIR and replaces "
         "files there)")


def check_escaped_names(place):
    """A texture beside the model that it names as in a URI keeps its name and its bytes."""
    place.write("wood a.png", BLUE)
    place.write("robot.gltf", gltf([("wood a.png", RED), (None, "wood%20a.png")]))
    place.export("robot.gltf", "--textures", ".")
    same("layers", place.layers("robot.hdotemp1"), ["wood a-2.png", "wood a.png"])
    place.expect("wood a.png", BLUE)
    place.expect("wood a-2.png", RED)


def check_directory(place):
    """--textures makes its directory, replaces files there and says so."""
    place.write("robot.glb", glb(gltf([("paint.png", GREEN), (None, RED)])))
    place.export("robot.glb", "--textures", "made/here", "-o", "out.hdo")
    place.expect("made/here/paint.png", GREEN)
    same("layers", place.layers("out.hdotemp1"), ["paint.png", "robot-texture-2.png"])
    place.write("made/here/paint.png", BLUE)
    run = place.export("robot.glb", "--textures", "made/here", "-o", "out.hdo")
    same("warning", run.stderr, f"hdo-export: {place.folder}/made/here/paint.png: warning: "
                                "replaced by a texture of the scene's file\n")
    place.expect("made/here/paint.png", GREEN)
    same("files", place.files(), ["made/here/paint.png", "made/here/robot-texture-2.png",
                                  *[name.replace("robot", "out") for name in EXPORT
                                    if name != RECORD], "robot.glb"])


def check_own_directory(place):
    """--textures that names the export's own folder knows the textures of former exports."""
    words = ("--textures", ".")
    for color in (GREEN, BLUE):
        place.write("robot.glb", glb(gltf([("paint.png", color)])))
        same("warnings", place.export("robot.glb", *words).stderr, "")
        place.expect("paint.png", color)
    same("files", place.files(), sorted([*EXPORT, "robot.glb", "paint.png"]))
    place.write("paint.png", JPEG)
    same("warning", place.export("robot.glb", *words).stderr,
         f"hdo-export: {place.folder}/paint.png: warning: replaced by a texture of the scene's "
         "file\n")
    place.expect("paint.png", BLUE)


def check_no_directory(place):
    """What is named is the folder that cannot be made."""
    place.write("robot.glb", glb(gltf([("paint.png", GREEN)])))
    place.write("file", b"")
    for words in ((), ("--dry-run",)):
        run = place.export("robot.glb", "--textures", "file/deep", *words, status=1)
        same("message", run.stderr, f"hdo-export: {place.folder}/robot.hdo: the export failed: "
             f"nothing can be made in {place.folder}/file/deep (Not a directory)\n")
    same("files", place.files(), ["file", "robot.glb"])


def check_saved(place):
    """--save-scene alone takes them out with --textures, and says that it does not without."""
    place.write("robot.glb", glb(gltf([("paint.png", GREEN), (None, RED)])))
    run = place.export("robot.glb", "--save-scene", "a.maxscene.json")
    same("warning", run.stderr, "hdo-export: robot.glb: warning: textures that stand in the file "
                                "itself not taken out (2)\n")
    run = place.export("robot.glb", "--save-scene", "a.maxscene.json", "--textures", ".")
    same("warning", run.stderr, "")
    same("files", place.files(), ["a.maxscene.json", "paint.png", "robot-texture-2.png",
                                  "robot.glb"])
    place.export("a.maxscene.json", "-o", "robot.hdo")
    same("layers", place.layers("robot.hdotemp1"), ["paint.png", "robot-texture-2.png"])


def check_models(place, models):
    """Files of other programs."""
    expected = {"FBX/embedded_ascii/box.FBX": {"uv_test.png": 439176},
                "FBX/box_orphant_embedded_texture.fbx": {"GridGrey.tga": 9026},
                "Collada/duck.zae": {"duck zaeCM.png": 32891},
                "glTF/BoxTextured-glTF-Embedded/BoxTextured.gltf":
                    {"BoxTextured-Image0001.png": 22051},
                "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb":
                    {"BoxTextured-texture-1.png": 2433}}
    for model, textures in expected.items():
        out = place.folder / pathlib.Path(model).stem
        out.mkdir()
        report = json.loads(place.export(str(models / model), "--json", "-o",
                                         str(out / "out.hdo")).stdout)
        same(model, {pathlib.Path(file["path"]).name: file["bytes"] for file in report["files"]
                     if file["kind"] == "texture"}, textures)
        for name, size in textures.items():
            same(name, (out / name).stat().st_size, size)
            same(f"{model}: layers", place.layers(out / "out.hdotemp1").count(name) > 0, True)
        shutil.rmtree(out)


def main():
    programs = [str(pathlib.Path(program).resolve()) for program in sys.argv[1:3]]
    models = pathlib.Path(sys.argv[3])
    checks = [check_names, check_glb, check_refused, check_edited, check_other_texture_meanwhile,
              check_escaped_names, check_directory, check_own_directory, check_no_directory,
              check_saved]
    for check in checks:
        with tempfile.TemporaryDirectory() as folder:
            check(Place(programs, pathlib.Path(folder).resolve()))
    with tempfile.TemporaryDirectory() as folder:
        check_models(Place(programs, pathlib.Path(folder).resolve()), models)
    print(f"{len(checks) + 1} checks")


if __name__ == "__main__":
    main()

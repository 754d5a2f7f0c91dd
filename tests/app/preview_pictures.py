#!/usr/bin/env python3
"""Draws pictures of the example figure with `kta preview`: sheets, animations, at times, textured.

usage: preview_pictures.py HDO_EXPORT KTA SCENE SHAPES
SCENE is the example figure, SHAPES the actor file of shapes of which one has the texture checker.png.
"""

import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

DEADLINE = 120
ACTOR, MOTION = "figure.hdotemp1", "figure.hdotemp2"
failures = []


def expect(condition, what, shown=""):
    if not condition:
        failures.append(f"{what}\n{shown}")


class Preview:
    """Runs of `kta preview` in a directory."""

    def __init__(self, kta, directory):
        self.kta = kta
        self.directory = directory

    def run(self, *arguments, status=0, complaint="", stdin=None):
        """Runs it; it must end with the status, and its messages must hold the complaint, or be none."""
        result = subprocess.run([self.kta, "preview", *map(str, arguments)], cwd=self.directory,
                                capture_output=True, timeout=DEADLINE, stdin=stdin)
        said = result.stderr.decode()
        expect(result.returncode == status, f"{arguments}: status {result.returncode}", said)
        expect(complaint in said if complaint else not said, f"{arguments}: expected {complaint!r}",
               said)

    def picture(self, *arguments, **options):
        """The chunks of the picture that it draws, by type, and its size."""
        self.run(*arguments, "-o", "drawn.png", **options)
        return chunks_of(self.directory / "drawn.png")

    def size(self, *arguments):
        return struct.unpack(">II", self.picture(*arguments)["IHDR"][0][:8])

    def pixels(self, *arguments):
        """The filtered bytes of a still picture: equal where the pictures are."""
        return zlib.decompress(self.picture(*arguments)["IDAT"][0])


def chunks_of(path):
    file = path.read_bytes()
    expect(file[:8] == b"\x89PNG\r\n\x1a\n", f"{path.name} is no PNG file")
    chunks, at = {}, 8
    while at < len(file):
        size, kind = struct.unpack(">I4s", file[at:at + 8])
        chunks.setdefault(kind.decode(), []).append(file[at + 8:at + 8 + size])
        at += 12 + size
    return chunks


def draw_sheets(preview):
    expect(preview.size(ACTOR) == (800, 600), "a picture is 800 x 600")
    expect(preview.size(ACTOR, "--view", "front,right,back") == (800, 600),
           "three views stand on a sheet of 2 x 2, each 400 x 300")
    expect(preview.size(ACTOR, MOTION, "--sheet", "4x2", "--size", "64x80") == (256, 160),
           "a sheet of 4 x 2 pictures of 64 x 80")
    expect(preview.size(ACTOR, MOTION, "--view", "front,top", "--time", "0,1,2", "--size", "10x10")
           == (20, 30), "a column a view, a row a time")
    preview.run(ACTOR, "--view", "front,top", "--sheet", "1x1", "-o", "x.png", status=2,
                complaint="2 pictures do not fit on a sheet of 1x1")
    preview.run(ACTOR, "--sheet", "100x2", "--size", "100x100", "-o", "x.png", status=2,
                complaint="would be wider or higher than 8192 pixels")
    expect(not (preview.directory / "x.png").exists(), "what is refused is not written")


def draw_poses(preview):
    views = ("--view", "right", "--bones", "--size", "120x90")
    rest = preview.pixels(ACTOR, *views)
    expect(preview.pixels(ACTOR, MOTION, *views) == rest, "without --time the figure is at rest")
    expect(preview.pixels(ACTOR, MOTION, *views, "--time", "0") == rest, "it starts at rest")
    raised = preview.pixels(ACTOR, MOTION, *views, "--time", "1")
    expect(raised != rest, "its arm is raised at 1 s")
    expect(preview.pixels(ACTOR, MOTION, *views, "--time", "30f", "--fps", "30") == raised,
           "30 frames at 30 a second are 1 s")
    preview.run(ACTOR, MOTION, "--time", "30f", "-o", "x.png", status=2,
                complaint='"30f": the files state no frame rate, --fps has to')
    preview.run(ACTOR, "--time", "1", "-o", "x.png", status=2, complaint="--time needs a motion file")
    preview.run(ACTOR, ACTOR, "--time", "1", "-o", "x.png", status=2,
                complaint='file kind is "actor", expected "motion"')
    for wrong in (["--time", "x"], ["--view", "up"], ["--sheet", "4"], ["--fps", "0"],
                  ["--frames", "1001"], ["--morph", "Smile"], ["--texture-dir", "nowhere"]):
        preview.run(ACTOR, MOTION, *wrong, "-o", "x.png", status=2, complaint=wrong[1])
    for name, wrong in (("--time", "0,1,,2"), ("--view", "front,"), ("--view", ",top")):
        preview.run(ACTOR, MOTION, name, wrong, "-o", "x.png", status=2,
                    complaint=f'{name}: "{wrong}" has an empty element, expected none')
    preview.run(ACTOR, "--morph", "Wyde=50", "-o", "x.png", status=2,
                complaint='has no channel "Wyde"; did you mean "Wide"?')
    expect(preview.pixels(ACTOR, *views, "--morph", "Wide=100") != rest, "a morph channel's weight")


def draw_animations(preview):
    frames = preview.picture(ACTOR, MOTION, "--fps", "10", "--size", "60x40")
    expect(struct.unpack(">II", frames["acTL"][0]) == (21, 0), "2 s at 10 a second are 21 frames")
    expect(all(control[20:24] == b"\0\1\0\x0a" for control in frames["fcTL"]), "each for 1/10 s")
    preview.run(ACTOR, MOTION, "--frames", "5", "--size", "60x40", "-o", "five.apng")
    expect(len(chunks_of(preview.directory / "five.apng")["fcTL"]) == 5, "five frames")
    preview.run(ACTOR, "--size", "60x40", "-o", "turn.apng")
    expect(len(chunks_of(preview.directory / "turn.apng")["fcTL"]) == 36, "a turn without motion")
    first = (preview.directory / "turn.apng").read_bytes()
    preview.run(ACTOR, "--size", "60x40", "-o", "turn.apng")
    expect((preview.directory / "turn.apng").read_bytes() == first, "the same bytes again")
    preview.run(ACTOR, MOTION, "--view", "front,top", "-o", "x.apng", status=2,
                complaint="an animated picture has one view")


def draw_textures(preview, shapes):
    (preview.directory / "shapes.hdotemp1").write_bytes(shapes.read_bytes())
    not_found = "1 texture not found (in .): checker.png"
    preview.run("shapes.hdotemp1", "-o", "plain.png", complaint=not_found)
    plain = (preview.directory / "plain.png").read_bytes()
    preview.run("shapes.hdotemp1", "--no-textures", "-o", "plain.png")
    expect((preview.directory / "plain.png").read_bytes() == plain, "colours where none is found")
    maps = preview.directory / "maps" / "walls"
    maps.mkdir(parents=True)
    preview.run(ACTOR, "--view", "top", "--size", "32x32", "-o", maps / "Checker.PNG")
    preview.run("shapes.hdotemp1", "--texture-dir", "maps", "-o", "textured.png")
    expect((preview.directory / "textured.png").read_bytes() != plain, "the texture shows")
    (maps / "Checker.PNG").write_bytes(b"no image")
    preview.run("shapes.hdotemp1", "--texture-dir", "maps", "-o", "plain.png",
                complaint="Checker.PNG: is no PNG, JPEG, BMP or TGA image")
    expect((preview.directory / "plain.png").read_bytes() == plain, "colours where it is faulty")


def draw_standard_input(preview):
    preview.run(ACTOR, "-o", "named.png")
    with (preview.directory / ACTOR).open("rb") as actor:
        preview.run("-", "-o", "piped.png", stdin=actor)
    expect((preview.directory / "piped.png").read_bytes()
           == (preview.directory / "named.png").read_bytes(), "the same from standard input")


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    host, kta, scene, shapes = (pathlib.Path(given).resolve() for given in sys.argv[1:])
    with tempfile.TemporaryDirectory(prefix="preview_") as name:
        directory = pathlib.Path(name)
        subprocess.run([host, "-q", "-o", "figure.hdo", scene], cwd=directory, check=True,
                       timeout=DEADLINE)
        preview = Preview(kta, directory)
        draw_sheets(preview)
        draw_poses(preview)
        draw_animations(preview)
        draw_textures(preview, shapes)
        draw_standard_input(preview)
    sys.exit("\n".join(failures) or 0)


if __name__ == "__main__":
    main()

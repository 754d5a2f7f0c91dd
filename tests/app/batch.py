#!/usr/bin/env python3
"""Exports many scenes in one run, as a farm does: lists, directories, patterns, failures, limits,
unchanged scenes, two batches at once, interruptions.

usage: batch.py HDO_EXPORT CRASHING_CONVERTER_DIR SCENE
"""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from checks import expect, expect_in

DEADLINE = 60
OBJ = "mtllib {0}.mtl\no {0}\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n"
PLY = ("ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
       "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
       "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
       "0 0 0 255 0 0\n1 0 0 0 255 0\n0 1 0 0 0 255\n3 0 1 2\n")


def node(name):
    return json.dumps({"maxscene": 1, "nodes": [{"name": name}]})


class Room:
    """A directory of its own, and the program in it."""

    def __init__(self, root, name, program):
        self.path = root / name
        self.path.mkdir()
        self.program = program

    def write(self, name, text):
        file = self.path / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(os.fsencode(text))

    def start(self, *words, **more):
        return subprocess.Popen([self.program, *words], cwd=self.path, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, **more)

    def run(self, *words, stdin=None):
        return subprocess.run([self.program, *words], cwd=self.path, capture_output=True,
                              input=stdin, text=True, errors="surrogateescape",
                              timeout=DEADLINE)

    def lines(self, *words, status=0, stdin=None):
        run = self.run(*words, stdin=stdin)
        expect(f"exit status of {' '.join(words)}", run.returncode, status)
        return run.stdout.splitlines()

    def refusal(self, *words, stdin=None):
        run = self.run(*words, stdin=stdin)
        expect(f"{' '.join(words)} is refused", run.returncode, 2)
        return run.stderr

    def report(self, *words, status=0):
        """The JSON, and of each export its status by the scene's name."""
        whole = json.loads("\n".join(self.lines("--json", *words, status=status)))
        expect("the status stands in the JSON", whole["status"], status)
        return whole, {entry["name"]: entry["status"] for entry in whole["exports"]}

    def why(self, name, *words):
        """Why the scene was exported again; nothing where it was left as it was."""
        whole, _ = self.report(*words)
        return {entry["name"]: entry.get("why") for entry in whole["exports"]}[name]

    def scenes(self, *words):
        return [os.path.relpath(line, self.path) for line in self.lines("--list", *words)]

    def files(self):
        """All files but scenes, with their bytes."""
        return {str(file.relative_to(self.path)): file.read_bytes()
                for file in sorted(self.path.rglob("*"))
                if file.is_file() and ".hdo" in file.name}


def check_finding(root, program):
    room = Room(root, "finding", program)
    for name in ("b.obj", "A.ply", "deep/er/c.obj", "deep/c d.obj", "deep/ü.ply", ".hidden.obj",
                 ".dir/x.obj", "notes.doc", "old.hdo.glb", "old.hdotemp1", "other.glb",
                 "othertemp1", "x.maxscene.json"):
        room.write(name, OBJ.format("x"))
    (room.path / "deep/loop").symlink_to("..")
    (room.path / "gone.obj").symlink_to("nowhere")
    expect("a directory's scenes, in order", room.scenes("--batch", "."),
           ["A.ply", "b.obj", "deep/c d.obj", "deep/er/c.obj", "deep/ü.ply", "x.maxscene.json"])
    expect("a pattern's", room.scenes("--batch", "*.obj"), ["b.obj"])
    expect("one with any directories", room.scenes("--batch", "**/*.obj"),
           ["b.obj", "deep/c d.obj", "deep/er/c.obj"])
    expect("one with characters, links followed", room.scenes("--batch", "deep/**/[a-c]*.?bj"),
           ["deep/c d.obj", "deep/er/c.obj", "deep/loop/b.obj"])
    room.write("lists/one.txt", "# what to do\n\n  ../deep/ü.ply \r\n../b.obj\n../deep/c d.obj\n")
    expect("a list's", room.scenes("--batch", "lists/one.txt"),
           ["deep/ü.ply", "b.obj", "deep/c d.obj"])
    expect("all together, each once",
           room.scenes("--batch", "deep/er", "lists/one.txt", "*.obj", "A.ply"),
           ["deep/er/c.obj", "deep/ü.ply", "b.obj", "deep/c d.obj", "A.ply"])
    expect("their number", room.lines("--batch", ".", "--count"), ["6"])
    for words in ("--count", "--list"):
        told = json.loads("\n".join(room.lines("--json", words, "--batch", "*.obj")))
        expect(f"{words} to scripts", told["count"], 1)
        expect(f"{words} to scripts: scenes", told["scenes"], [str(room.path / "b.obj")])
    found = room.lines("--batch", "-", "--list", stdin="b.obj\n#no\ndeep/ü.ply\n")
    expect("a list on standard input", [os.path.relpath(line, room.path) for line in found],
           ["b.obj", "deep/ü.ply"])
    found = subprocess.run(["bash", "-c", '"$0" --list --batch <(echo deep/ü.ply)', program],
                           cwd=room.path, capture_output=True, text=True, timeout=DEADLINE)
    expect("a list that a pipe brings", found.stdout, f"{room.path}/deep/ü.ply\n")
    expect_in("nothing found", room.refusal("--batch", "lists/*"), "no scene matches")
    expect_in("no such file", room.refusal("--batch", "none"), "hdo-export: none: no such file")
    expect_in("an empty list", room.refusal("--batch", "-", stdin="# none\n"), "no scene in the")
    expect_in("a list that is none", room.refusal("--batch", "-", stdin="a\x01b\n"), "line 1: ")
    expect_in("-j alone", room.refusal("-j", "2", "b.obj"), "expected --batch")
    expect_in("a scene beside it", room.refusal("b.obj", "--batch", "A.ply"), "SCENE: ")
    expect_in("one receipt for all", room.refusal("--batch", ".", "--receipt", "r"), "--receipt: ")
    expect("nothing was exported", (room.path / "b.hdo").exists(), False)


def check_outputs(root, program):
    room = Room(root, "outputs", program)
    for name in ("in/a.obj", "in/sub/a.obj", "in/sub/b.obj"):
        room.write(name, OBJ.format("x"))
    room.write("lists/l.txt", "../in/a.obj\n../in/sub/b.obj\n")
    for words, made in ((["in"], ["a.hdo", "sub/a.hdo", "sub/b.hdo"]),
                        (["in/*/*.obj"], ["sub/a.hdo", "sub/b.hdo"]),
                        (["lists/l.txt"], ["a.hdo", "sub/b.hdo"]),
                        (["in/sub/b.obj"], ["b.hdo"])):
        room.lines("-q", "-o", "out", "--batch", *words)
        expect(f"{words}: directories are kept", sorted(str(file.relative_to(room.path / "out"))
               for file in (room.path / "out").rglob("*.hdo")), made)
        expect("only its files stand there",
               sum(file.is_file() for file in (room.path / "out").rglob("*")), 6 * len(made))
        shutil.rmtree(room.path / "out")
    expect("nothing stands beside the scenes", room.files(), {})
    error = room.refusal("-o", "out", "--batch", "in/a.obj", "in/sub/a.obj")
    expect_in("two exports in one place", error, "in/sub/a.obj: its export would be ")
    expect_in("both are named", error, "a.hdo as that of in/a.obj is")
    expect_in("and what to do", error, "expected the directory that holds both (--batch DIR)")
    room.write("in/a.ply", PLY)
    error = room.refusal("--batch", "in")
    expect_in("beside each other too", error, "in/a.ply: its export would")
    expect_in("and what to do", error, "--batch 'in/*.ply' -o DIR\n")
    room.lines("-q", "--batch", "in/*.ply", "-o", "ply")
    expect("which does it", (room.path / "ply/a.hdo").exists(), True)
    shutil.rmtree(room.path / "ply")
    expect("nothing was begun", room.files(), {})
    room.write("file", "")
    for option in ("--output", "--textures"):
        for directory in ("file", "file/deep/er"):
            expect(f"{option}: a file where a directory is to be",
                   room.refusal(option, directory, "--batch", "in/sub"),
                   f"hdo-export: {option}: {room.path}/file is no directory, expected one for the "
                   "files of all scenes\n")
    (room.path / "link").symlink_to("nowhere")
    for directory in ("link", "link/deep"):
        expect("a link that leads nowhere where a directory is to be",
               room.refusal("-o", directory, "--batch", "in/sub"),
               f"hdo-export: --output: {room.path}/link is no directory, expected one for the "
               "files of all scenes\n")
    room.write("in/b.hdo.glb", "glTF")
    expect_in("a scene that an export would replace",
              room.refusal("--batch", "in/b.hdo.glb", "in/sub/b.obj", "-o", "in"),
              "would replace the scene in/b.hdo.glb")


def check_statuses(root, program, crashing):
    room = Room(root, "statuses", program)
    room.write("1 good.maxscene.json", node("good"))
    room.write("2 warns.ply", PLY)
    room.write("3 bad.obj", "")
    room.write("4 crashes.maxscene.json", node("crash-me"))
    room.write("5 hangs.maxscene.json", node("hang-me"))
    room.write("6\nline.obj", OBJ.format("x"))
    words = ["--plugin-dir", crashing, "--batch", ".", "--timeout", "1.5"]
    whole, statuses = room.report(*words, status=1)
    expect("each has its status, in order", list(statuses.items()),
           [("1 good.maxscene.json", "exported"), ("2 warns.ply", "exported"),
            ("3 bad.obj", "failed"), ("4 crashes.maxscene.json", "crashed"),
            ("5 hangs.maxscene.json", "timeout"), ("6\nline.obj", "failed")])
    good, warns, bad, crashes, hangs, line = whole["exports"]
    expect("no warning", (good["warnings"], good["exitStatus"]), ([], 0))
    expect("the warnings of one scene", len(warns["warnings"]), warns["warningCount"])
    expect("one has a code", {"code", "text"} <= set((warns["warnings"] + [{"code", "text"}])[0]),
           True)
    expect("what is wrong", (bad["exitStatus"], bad["error"]),
           (2, "exit status 2: an empty file, expected a scene"))
    expect("the signal", crashes["error"], "crashed, signal 11")
    expect("the limit", hangs["error"], "took longer than the 1.5 s that --timeout allows")
    expect("the seconds", 1.5 <= hangs["seconds"] < 20, True)
    expect("a name of two lines", line["error"], "control characters in its name, expected none")
    expect("the counts", whole["counts"], {"exported": 2, "unchanged": 0, "failed": 2,
                                           "crashed": 1, "timeout": 1, "memory": 0,
                                           "interrupted": 0})
    expect("the first failure is the error", whole["error"] in whole["messages"], True)
    expect("no private directory stays", list(room.path.glob(".*")), [])

    run = room.run("--plugin-dir", crashing, "--batch", "5*", "1*", "--memory", "1", "-j", "1",
                   "--force")
    expect("a limit of memory fails", run.returncode, 1)
    expect_in("which is named", run.stderr, "hdo-export: 5 hangs.maxscene.json: memory (")
    expect_in("with its size", run.stderr, "took more than the 1 MB of memory that --memory allows")
    expect("the summary ends with the counts", run.stdout.splitlines()[-1].split(", ")[-2],
           "2 exports: 2 memory" if "2 memory" in run.stdout else "1 memory")


def check_terminal(root, program, crashing):
    """Nothing but lines in a pipe; on a terminal, and with --progress always, a bar."""
    room = Room(root, "terminal", program)
    room.write("a.obj", OBJ.format("a"))
    room.write("b.obj", "")
    run = room.run("--batch", ".", "-j", "1")
    expect("a pipe gets lines alone", [line.split(" (")[0] for line in run.stderr.splitlines()],
           ["hdo-export: a.obj: exported", "hdo-export: b.obj: failed"])
    expect("and no bar", "\r" in run.stderr, False)
    expect("the table", [line.split()[:2] for line in run.stdout.splitlines()],
           [["exported", "a.obj"], ["failed", "b.obj"], ["2", "exports:"]])
    room.write("c.maxscene.json", node("hang-me"))
    run = subprocess.run([program, "--plugin-dir", crashing, "--batch", ".", "--progress",
                          "always", "-j", "1", "--timeout", "3"], cwd=room.path,
                         capture_output=True, timeout=DEADLINE)
    expect_in("the bar counts and names what runs", run.stderr, b"\r2 of 3, 1 failed, ")
    expect_in("and what is left", run.stderr, b" s left: c.maxscene.json")
    expect("and is gone behind", run.stderr.rpartition(b"\r")[2], b"")
    (room.path / "c.maxscene.json").unlink()
    run = room.run("-q", "--batch", ".", "--force")
    expect("-q tells failures alone", (run.stdout, len(run.stderr.splitlines())), ("", 1))


def check_unchanged(root, program, crashing):
    room = Room(root, "unchanged", program)
    room.write("a.obj", OBJ.format("a"))
    room.write("b.maxscene.json", node("b"))
    _, statuses = room.report("--batch", ".")
    expect("at first", list(statuses.values()), ["exported", "exported"])
    made = room.files()
    _, statuses = room.report("--batch", ".")
    expect("nothing changed", list(statuses.values()), ["unchanged", "unchanged"])
    expect("no byte changes", room.files(), made)
    name = "a.obj"
    expect("by force", room.why(name, "--batch", ".", "--force"), "--force")
    expect("to the same bytes", room.files(), made)

    room.write("a.mtl", "newmtl a\nKd 1 0 0\n")
    expect("a material file appears", room.why(name, "--batch", "."), "a.mtl has changed")
    expect("which is exported", room.files()["a.hdotemp1"] == made["a.hdotemp1"], False)
    room.write("a.mtl", "newmtl a\nKd 0 1 0\n")
    expect("it changes", room.why(name, "--batch", "."), "a.mtl has changed")
    room.write("a.obj", OBJ.format("a") + "v 0 0 1\nf 1 2 4\n")
    expect("the scene changes", room.why(name, "--batch", "."), "a.obj has changed")
    os.utime(room.path / "a.obj")
    expect("a new time alone", room.why(name, "--batch", "."), None)
    (room.path / "a.mtl").unlink()
    expect("a file goes", room.why(name, "--batch", "."), "a.mtl has changed")

    options = ["--batch", ".", "--sample-animation"]
    expect("other options", room.why(name, *options), "the options have changed")
    expect("the same ones", room.why(name, *options, "-q", "-j", "1"), None)
    expect("another program", room.why(name, *options, "--plugin-dir", crashing),
           "the program has changed")
    room.why(name, *options)
    for made_file in ("a.hdotemp1", "a.hdo.log", "a.hdo"):
        (room.path / made_file).write_text("changed")
        expect(f"{made_file} changes", room.why(name, *options),
               f"{made_file} is not what was exported")
        (room.path / made_file).unlink()
        expect(f"{made_file} goes", room.why(name, *options),
               f"{made_file} is not what was exported")

    index = room.path / "a.hdo.index.json"
    good = index.read_text()
    for damage in ("", "{", "[]", "{}", good[:len(good) // 2], good.replace('"bytes"', '"byte"'),
                   good.replace('"hdoBatchIndex": 1', '"hdoBatchIndex": "x"')):
        index.write_text(damage)
        run = room.run(*options)
        expect("a damaged index is no failure", run.returncode, 0)
        expect_in("it is told", run.stderr, "a.hdo.index.json: the index of the former export is "
                                            "damaged, so that it is ignored\n")
        expect("and written again", index.read_text(), good)

    moved = room.path.parent / "moved"
    room.path.rename(moved)
    room.path = moved
    expect("a tree that was moved", room.why(name, *options), None)


def check_names(root, program):
    """Names that are no UTF-8, and names that look like two."""
    room = Room(root, "names", program)
    name = os.fsdecode(b"caf\xe9 %41.obj")
    room.write(name, OBJ.format(os.fsdecode(b"caf\xe9")))
    room.write(os.fsdecode(b"caf\xe9.mtl"), "newmtl a\nKd 1 0 0\n")
    run = subprocess.run([program, "--json", name], cwd=room.path, capture_output=True,
                         timeout=DEADLINE, check=True)
    told = json.loads(run.stdout)
    expect_in("such names can be had back", told["inputsEscaped"],
              str(room.path / "caf%E9.mtl"))
    expect_in("of files too", [file["pathEscaped"] for file in told["files"]],
              str(room.path / "caf%E9%20%2541.hdotemp1"))
    expect("of the preview", told["preview"]["pathEscaped"],
           str(room.path / "caf%E9%20%2541.hdo.glb"))
    for expected in ("exported", "unchanged"):
        _, statuses = room.report("--batch", ".")
        expect("one that is no UTF-8", list(statuses.values()), [expected])
    index = (room.path / os.fsdecode(b"caf\xe9 %41.hdo.index.json")).read_text()
    expect_in("its index has the bytes", index, '"fileEscaped": "caf%E9%20%2541.obj"')
    room.write(os.fsdecode(b"caf\xe9.mtl"), "newmtl a\nKd 0 1 0\n")
    _, statuses = room.report("--batch", ".")
    expect("what it refers to changes", list(statuses.values()), ["exported"])
    (room.path / os.fsdecode(b"caf\xe9 %41.hdotemp2")).unlink()
    _, statuses = room.report("--batch", ".")
    expect("a file that it made goes", list(statuses.values()), ["exported"])

    room.write("plain.obj", OBJ.format("x"))
    beside = f"{room.path}/caf%E9%20%2541"
    whole, _ = room.report("--batch", ".", "--dry-run", "--force")
    strange, plain = whole["exports"]
    expect("the bytes of its name stand in the JSON", strange["sceneEscaped"],
           "caf%E9%20%2541.obj")
    expect("and of its export", strange["outputEscaped"], f"{beside}.hdo")
    expect("and of all files", {file["pathEscaped"] for file in strange["wouldWrite"]},
           {f"{beside}{ending}" for ending in (".hdo", ".hdo.glb", ".hdo.log", ".hdotemp1",
                                               ".hdotemp2")})
    expect("a plain name stands there once", [name for entry in [plain, *plain["wouldWrite"]]
                                              for name in entry if "Escaped" in name], [])
    expect("a list's too", json.loads("\n".join(room.lines("--json", "--list", "--batch", ".")))
           ["scenesEscaped"], [f"{beside}.obj", f"{room.path}/plain.obj"])
    told = json.loads("\n".join(room.lines("--json", "--dry-run", name)))
    expect("and one scene's", (told["sceneEscaped"], told["wouldWrite"][0]["pathEscaped"]),
           ("caf%E9%20%2541.obj", f"{beside}.hdo"))
    expect("lines have the bytes themselves", [
        line.partition(": ")[0] for line in room.lines("--dry-run", "--force", "--batch", ".")
        if "plain" not in line][1], f"would write {room.path}/{name[:-4]}.hdo")

    room = Room(root, "lines", program)
    room.write("two\nlines.obj", OBJ.format("x"))
    room.write("back\\slash.obj", OBJ.format("x"))
    expect("a line for each", room.lines("--list", "--batch", "."),
           [str(room.path / "back\\slash.obj"), str(room.path / "two\\x0alines.obj")])


def check_pipes(root, program):
    """Nobody writes to the pipes that stand where files are expected."""
    room = Room(root, "pipes", program)
    for name in ("a.obj", "b.obj"):
        room.write(name, OBJ.format(name[0]))
    os.mkfifo(room.path / "a.mtl")
    room.lines("-q", "a.obj")
    os.mkfifo(room.path / "b.hdo.json")
    expect("a pipe is no sidecar", room.refusal("b.obj"),
           "hdo-export: b.hdo.json: is not a regular file, expected a file of options\n")
    os.mkfifo(room.path / "preset")
    expect("a pipe is no preset of many scenes",
           room.refusal("--preset", "preset", "--batch", "a.obj"),
           "hdo-export: preset: is not a regular file, expected a preset that each scene's export "
           "can read\n")


def check_no_temporary_directory(root, program):
    """One line names it, and the variable."""
    room = Room(root, "temporary", program)
    room.write("a.obj", OBJ.format("a"))
    (room.path / "file").write_text("")
    for place in (room.path / "none", room.path / "file"):
        for words in (["--batch", "a.obj"], ["--dry-run", "a.obj"], ["--bisect", "a.obj"]):
            run = subprocess.run([program, *words], cwd=room.path, capture_output=True, text=True,
                                 timeout=DEADLINE, env={**os.environ, "TMPDIR": str(place)},
                                 check=False)
            expect(f"{words[0]} without one", (run.returncode, len(run.stderr.splitlines())),
                   (2, 1))
            expect_in("where", run.stderr, f"hdo-export: {place}: nothing can be made there (")
            expect_in("what to do", run.stderr, ", expected TMPDIR to name a directory for ")
    expect("nothing is done", room.files(), {})


def check_determinism(root, program):
    made = []
    for words in (["-j", "1"], ["-j", "4"]):
        room = Room(root, f"same{words[1]}", program)
        for i in range(8):
            room.write(f"{i % 3}/s{i}.obj", OBJ.format(f"s{i}"))
        room.lines("-q", "--batch", ".", *words)
        made.append(room.files())
    expect("eight exports have 48 files", len(made[0]), 48)
    expect("-j 1 and -j 4 write the same", made[0], made[1])
    room = Room(root, "alone", program)
    for i in range(8):
        room.write(f"{i % 3}/s{i}.obj", OBJ.format(f"s{i}"))
        room.lines("-q", f"{i % 3}/s{i}.obj")
    expect("and so does each alone", room.files(),
           {name: data for name, data in made[0].items() if "index" not in name})


def check_array(root, program):
    room = Room(root, "array", program)
    for i in range(5):
        room.write(f"s{i}.obj", OBJ.format(f"s{i}"))
    room.write("list", "".join(f"s{i}.obj\n" for i in range(5)))
    _, statuses = room.report("--batch", "list", "--array-index", "2")
    expect("the second scene alone", statuses, {"s1.obj": "exported"})
    _, statuses = room.report("--batch", "list", "--array-index", "2", "--array-size", "3")
    expect("every third from the second", statuses, {"s1.obj": "unchanged", "s4.obj": "exported"})
    _, statuses = room.report("--batch", "list", "--array-index", "5")
    expect("the last", statuses, {"s4.obj": "unchanged"})
    expect_in("none behind it", room.refusal("--batch", "list", "--array-index", "6"),
              "--array-index: 6, expected 1 to 5, the number of scenes")
    room.refusal("--batch", "list", "--array-index", "0")


def check_surroundings(root, program):
    room = Room(root, "surroundings", program)
    room.write("a.obj", OBJ.format("a"))
    room.write("list.txt", "nowhere/deep/x.obj\n")
    failed = room.run("--batch", "list.txt")
    expect("a scene that is not there fails", failed.returncode, 1)
    expect_in("it is named", failed.stderr, "x.obj: failed")
    expect("no directory is made for it", (room.path / "nowhere").exists(), False)
    room.write("sub/list.txt", "./../a.obj\n./b.obj\n")
    room.write("sub/b.obj", OBJ.format("b"))
    _, statuses = room.report("--batch", "sub/list.txt")
    expect("names of lists have no dots", statuses,
           {"a.obj": "exported", "sub/b.obj": "exported"})
    ignoring = subprocess.run(["env", "--ignore-signal=CHLD", program, "-q", "--batch", "a.obj"],
                              cwd=room.path, timeout=DEADLINE, check=False)
    expect("where ended processes are not waited for", ignoring.returncode, 0)


def check_two_at_once(root, program, figure):
    """Two batches in one directory; and two of which one is killed."""
    names = [f"f{i}.maxscene.json" for i in range(6)]
    room = Room(root, "one", program)
    for name in names:
        shutil.copy(figure, room.path / name)
    room.lines("-q", "--batch", ".")
    expected = room.files()
    for killed in (False, True):
        room = Room(root, f"two{killed}", program)
        for name in names:
            shutil.copy(figure, room.path / name)
        runs = [room.start("--json", "--batch", ".", "-j", "2") for _ in range(2)]
        if killed:
            time.sleep(0.1)
            runs[1].kill()
        reports = [run.communicate(timeout=DEADLINE)[0] for run in runs]
        expect("the batch ends well", runs[0].returncode, 0)
        expect("its files are what one batch makes", room.files(), expected)
        if not killed:
            done = [entry["status"] for report in reports
                    for entry in json.loads(report)["exports"]]
            expect("each scene was exported once", sorted(done), 6 * ["exported"] +
                   6 * ["unchanged"])
        room.lines("-q", "--batch", ".")
        expect("and nothing else stays", sorted(os.listdir(room.path)),
               sorted(names + list(expected)))


def processes_below(pid):
    listed = subprocess.run(["ps", "-eo", "pid=,ppid="], capture_output=True, text=True)
    below = {pid}
    for _ in range(3):
        for line in listed.stdout.splitlines():
            own, parent = map(int, line.split())
            if parent in below:
                below.add(own)
    return below - {pid}


def check_interruption(root, program, crashing, figure):
    for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGKILL, -9)):
        room = Room(root, f"interrupted{int(number)}", program)
        shutil.copy(figure, room.path / "a.maxscene.json")
        for i in range(3):
            room.write(f"hangs{i}.maxscene.json", node("hang-me"))
        # As a terminal does it, the signal goes to the whole group of processes.
        run = room.start("--json", "--plugin-dir", crashing, "--batch", ".", "-j", "2",
                         start_new_session=True)
        for _ in range(1000):
            children = processes_below(run.pid)
            if (room.path / "a.hdo.index.json").exists() and len(children) >= 2:
                break
            time.sleep(0.02)
        expect(f"{number.name}: two exports run", len(children), 2)
        os.killpg(run.pid, number)
        out, _ = run.communicate(timeout=DEADLINE)
        expect("the status", run.returncode, status)
        time.sleep(0.1)
        expect("no export goes on", [pid for pid in children
                                     if pathlib.Path(f"/proc/{pid}/exe").exists()], [])
        if number != signal.SIGKILL:
            expect("the rest was interrupted",
                   [entry["status"] for entry in json.loads(out)["exports"]],
                   ["exported", "interrupted", "interrupted", "interrupted"])
            expect("nothing half-made stays", sorted(os.listdir(room.path)), sorted(
                ["a.hdo.index.json", *(f"hangs{i}.maxscene.json" for i in range(3)),
                 "a.maxscene.json", "a.hdo.log", "a.hdotemp1", "a.hdotemp2"]))


def main():
    program, crashing, figure = (str(pathlib.Path(word).resolve()) for word in sys.argv[1:])
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory)
        check_finding(root, program)
        check_outputs(root, program)
        check_statuses(root, program, crashing)
        check_terminal(root, program, crashing)
        check_unchanged(root, program, crashing)
        check_names(root, program)
        check_pipes(root, program)
        check_no_temporary_directory(root, program)
        check_determinism(root, program)
        check_array(root, program)
        check_surroundings(root, program)
        check_two_at_once(root, program, figure)
        check_interruption(root, program, crashing, figure)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Compares exports with `kta diff`: by itself, as an artist does, and called by git.

usage: diff_exports.py HDO_EXPORT KTA SCENE
SCENE is the example figure, which is exported as it is and with known changes.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

DEADLINE = 120
ACTOR, MOTION = "figure.hdotemp1", "figure.hdotemp2"
failures = []


def expect(condition, what, shown=""):
    if not condition:
        failures.append(f"{what}\n{shown}")


def run(arguments, directory, status=0, **options):
    """What the program writes to standard output; it must end with the status."""
    result = subprocess.run([str(a) for a in arguments], cwd=directory, capture_output=True,
                            text=True, timeout=DEADLINE, **options)
    expect(result.returncode == status,
           f"{arguments} ended with {result.returncode}, expected {status}",
           result.stdout + result.stderr)
    expect(not (status == 0 and result.stderr), f"{arguments} complained", result.stderr)
    return result.stdout


def export(program, scene, directory):
    """Both files of an export of the scene, by name."""
    directory.mkdir()
    (directory / "figure.maxscene.json").write_text(json.dumps(scene))
    run([program, "-q", "--export-hidden", "figure.maxscene.json"], directory)
    return directory / ACTOR, directory / MOTION


def changed(scene):
    """The scene with a node more before all others, and one change of each kind that is shown."""
    scene = json.loads(json.dumps(scene))
    nodes = {node["name"]: node for node in scene["nodes"]}
    scene["materials"][1]["diffuse"] = [0.85, 0.65, 0.75]
    nodes["Neck"]["transform"]["position"] = [28.5, 0, 0]
    nodes["Torso"]["object"]["vertices"][7] = [50, 17, -10.25]
    nodes["Torso"]["modifiers"][0]["weights"][4] = [[0, 0.75], [1, 0.25]]
    del nodes["Skull"]["modifiers"][0]["channels"][0]
    arm = nodes["Upper Arm R"]["transform"]["rotation"]["z"]["keys"]
    arm[1]["value"] += 0.0174533
    for node in scene["nodes"]:
        if "parent" in node:
            node["parent"] += 1
    for node in scene["nodes"]:
        for modifier in node.get("modifiers", []):
            if "bones" in modifier:
                modifier["bones"] = [bone + 1 for bone in modifier["bones"]]
    scene["nodes"].insert(0, {"name": "Marker", "transform": {"position": [1, 2, 3]},
                              "object": nodes["Pelvis"]["object"]})
    return scene


# ---------------------------------------------------------------- as an artist calls it

def compare_actors(kta, old, new, root):
    text = run([kta, "diff", old, new], root, status=1)
    for line in ('node: 1 added, ', '  + "Marker"', '  ~ "Neck"',
                 '  ~ "Skin"\n      diffuse: [0.85,0.65,0.5] -> [0.85,0.65,0.75], by 0.25',
                 '  - "Skull", channel "Wide"',
                 'weights of 1 of 8 vertices, most at vertex 4, bone "Spine": 0.25 -> 0.75, by 0.5',
                 ', by 0.25\n'):
        expect(line in text, f"expected {line!r}", text)
    expect("Pelvis" not in text, "a node that only has another number is told", text)
    for own in (old, new):
        expect(run([kta, "diff", own, own], root).splitlines()[-1].startswith("equal: "),
               "a file differs from itself")
    close = run([kta, "diff", "--tolerance", "0.6", old, new], root, status=1)
    expect("Neck" not in close and "diffuse" not in close and "Marker" in close,
           "the tolerance holds for numbers alone", close)


def compare_motions(kta, old, new, root):
    text = run([kta, "diff", old, new], root, status=1)
    expect('  ~ "Upper Arm R", track "r"' in text and "values of 1 of 4 keys, most at key 1" in text,
           "a key turned by a degree", text)
    result = json.loads(run([kta, "diff", "--json", old, new], root, status=1))
    keys = [field for change in result["changes"] for field in change["fields"]
            if change["kind"] == "key track" and field.get("item") == "key"
            and field["field"] == "values"]
    expect(len(keys) == 1 and abs(keys[0]["deviation"] - 1) < 1e-4 and keys[0]["at"]["key"] == 1,
           "the same as JSON", json.dumps(result, indent=1))


def refuse(kta, actor, motion, root):
    cut = root / "cut"
    cut.write_bytes(actor.read_bytes()[:-1])
    for arguments in ([actor], [actor, actor, actor], [actor, motion], [actor, root / "missing"],
                      [actor, cut], [cut, actor], ["-", "-"], ["--tolerance", "-1", actor, actor],
                      ["--tolerance", "nan", actor, actor], ["--quiet", "--json", actor, actor],
                      ["--max", "-1", actor, actor], ["--git", actor, actor]):
        result = subprocess.run([str(a) for a in [kta, "diff", *arguments]], cwd=root, text=True,
                                capture_output=True, timeout=DEADLINE, stdin=subprocess.DEVNULL)
        expect(result.returncode == 2 and result.stderr.startswith("kta: ")
               and result.stderr.count("\n") == 1, f"{arguments} is refused in a line",
               f"{result.returncode} {result.stderr}")
    with actor.open("rb") as stream:
        run([kta, "diff", "-", actor], root, stdin=stream)
    expect(run([kta, "diff", "--quiet", actor, actor], root) == "", "quiet")


# ---------------------------------------------------------------- called by git

class Repository:
    def __init__(self, path, kta):
        self.path = path
        path.mkdir()
        self.environment = {**os.environ, "HOME": str(path), "GIT_CONFIG_NOSYSTEM": "1",
                            "GIT_CONFIG_GLOBAL": os.devnull, "GIT_PAGER": "cat",
                            "GIT_AUTHOR_NAME": "A", "GIT_AUTHOR_EMAIL": "a@example.com",
                            "GIT_COMMITTER_NAME": "A", "GIT_COMMITTER_EMAIL": "a@example.com",
                            "PATH": f"{kta.parent}{os.pathsep}{os.environ['PATH']}"}
        self.git("init", "-q")

    def git(self, *arguments, status=0):
        return run(["git", *arguments], self.path, status=status, env=self.environment)

    def put(self, name, source):
        (self.path / name).parent.mkdir(exist_ok=True)
        (self.path / name).write_bytes(source if isinstance(source, bytes) else source.read_bytes())

    def commit(self, message):
        self.git("add", "-A")
        self.git("commit", "-q", "-m", message)


def repository(path, kta, old):
    """One with the old files in its first commit."""
    made = Repository(path, kta)
    made.put(".gitattributes", b"*.hdotemp1 diff=kta\n*.hdotemp2 diff=kta\n")
    for file in old:
        made.put(f"models/{file.name}", file)
    made.commit("The figure")
    return made


def compare_by_command(kta, old, new, root):
    repo = repository(root / "command", kta, old)
    repo.git("config", "diff.kta.command", "kta diff --git")
    for file in new:
        repo.put(f"models/{file.name}", file)
    text = repo.git("diff")
    for line in (f"diff --kta a/models/{ACTOR} b/models/{ACTOR}\n--- a/models/{ACTOR}\n",
                 f"+++ b/models/{MOTION}\n", '  + "Marker"', 'track "r"'):
        expect(line in text, f"git diff: expected {line!r}", text)
    repo.git("add", "-A")
    expect(repo.git("diff", "--cached") == text, "git diff --cached is another")
    repo.commit("A marker")
    expect('  + "Marker"' in repo.git("log", "-p", "-1", "--ext-diff"), "git log")

    (repo.path / f"models/{MOTION}").unlink()
    repo.put("models/again.hdotemp2", new[1])
    repo.put("models/empty.hdotemp1", b"KTA \1\1\1")
    repo.put("models/broken.hdotemp1", new[0].read_bytes()[:-1])
    repo.put("models/text.hdotemp1", b"no export\n")
    repo.git("add", "-A")
    text = repo.git("diff", "--cached", "--no-renames")
    for line in (f"--- a/models/{MOTION}\n+++ /dev/null\nmotion part: ", '  - "Upper Arm R"',
                 "--- /dev/null\n+++ b/models/again.hdotemp2\nmotion part: ", '  + "Upper Arm R"',
                 "--- /dev/null\n+++ b/models/empty.hdotemp1\nequal: 0 chunks\n",
                 "b/models/broken.hdotemp1: offset ", 'b/models/text.hdotemp1: offset 0: header: '
                 'magic is "no e"', "not compared\n"):
        expect(line in text, f"files added and removed: expected {line!r}", text)
    repo.commit("More and fewer")
    compare_renamed(repo, old, new)
    compare_unmerged(repo, old, new)


def compare_renamed(repo, old, new):
    (repo.path / f"models/{ACTOR}").rename(repo.path / "models/hero.hdotemp1")
    repo.put("models/hero.hdotemp1", old[0])
    repo.git("add", "-A")
    text = repo.git("diff", "--cached", "-M10%")
    expect(f"--- a/models/{ACTOR}\n+++ b/models/hero.hdotemp1\n" in text and '  - "Marker"' in text,
           "a renamed file", text)
    repo.git("reset", "-q", "--hard")


def compare_unmerged(repo, old, new):
    repo.git("checkout", "-q", "-b", "other", "HEAD~1")
    repo.put(f"models/{ACTOR}", new[0].read_bytes() + new[0].read_bytes()[7:])
    repo.commit("Twice")
    repo.git("checkout", "-q", "-")
    repo.put(f"models/{ACTOR}", old[0])
    repo.commit("Back")
    subprocess.run(["git", "merge", "-q", "other"], cwd=repo.path, env=repo.environment,
                   capture_output=True, timeout=DEADLINE)
    text = repo.git("diff", "--base")
    expect(f"diff --kta a/models/{ACTOR} b/models/{ACTOR}\nunmerged\n" in text, "unmerged", text)


def compare_by_dumps(kta, old, new, root):
    repo = repository(root / "textconv", kta, old)
    repo.git("config", "diff.kta.textconv", "kta dump --no-offsets")
    for file in new:
        repo.put(f"models/{file.name}", file)
    text = repo.git("diff")
    for line in ('+  nodeName            "Marker"\n', "-  diffuse             [0.85,0.65,0.5]\n",
                 "+  diffuse             [0.85,0.65,0.75]\n", f"diff --git a/models/{MOTION} "):
        expect(line in text, f"textconv: expected {line!r}", text)
    expect("/tmp" not in text and not any("Pelvis" in line for line in text.splitlines()
                                          if line[:1] in ("+", "-")), "only what changed", text)
    # A status other than 0 ends git, so faulty files ask for a wrapper.
    repo.put(f"models/{ACTOR}", new[0].read_bytes()[:-1])
    repo.git("config", "diff.kta.textconv", 'f() { kta dump --no-offsets "$1" 2>&1; true; }; f')
    text = repo.git("diff")
    expect("cut off" in text, "a faulty file by textconv", text)


def main():
    program, kta, scene_path = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    scene = json.loads(scene_path.read_text())
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name)
        old = export(program, scene, root / "old")
        new = export(program, changed(scene), root / "new")
        compare_actors(kta, old[0], new[0], root)
        compare_motions(kta, old[1], new[1], root)
        refuse(kta, *old, root)
        compare_by_command(kta, old, new, root)
        compare_by_dumps(kta, old, new, root)
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()

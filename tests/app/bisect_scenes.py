#!/usr/bin/env python3
"""Lets hdo-export search for what an export fails at.

usage: bisect_scenes.py HDO_EXPORT CRASHING_CONVERTER_DIR SCENE SKINNED_MODEL
The model's skin has weights below the exporter's threshold, so that it deviates.
"""

import copy
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

from checks import expect, expect_in


class Runner:
    def __init__(self, program, crashing, directory):
        self.program = program
        self.crashing = ["--plugin-dir", crashing]
        self.directory = directory

    def run(self, *words):
        return subprocess.run([self.program, *words], cwd=self.directory, capture_output=True,
                              text=True, timeout=120)

    def write(self, name, scene):
        (self.directory / name).write_text(json.dumps(scene))

    def bisect(self, name, *words):
        """Its result and what was said."""
        run = self.run("--bisect", "-o", "least.maxscene.json", *words, name)
        if run.returncode != 0:
            sys.exit(f"--bisect {name}: exit status {run.returncode}: {run.stderr}")
        return self.scene("least.maxscene.json"), run.stdout + run.stderr

    def scene(self, name):
        return json.loads((self.directory / name).read_text())

    def status(self, name, *words):
        return self.run("-q", *words, "-o", "out.hdo", name).returncode


def with_culprit(scene, name):
    """The scene with a helper of that name below its last node."""
    scene = copy.deepcopy(scene)
    scene["nodes"].append({"name": name, "parent": len(scene["nodes"]) - 1,
                           "userProperties": "secret = 1"})
    return scene


def check_crash(runner, figure):
    runner.write("crash.maxscene.json", with_culprit(figure, "my crash-me"))
    least, said = runner.bisect("crash.maxscene.json", *runner.crashing)
    expect("a crash's least scene is the node with that name",
           least["nodes"], [{"name": "my crash-me"}])
    expect("without materials", least.get("materials", []), [])
    expect_in("the signal is told", said, "fails in the same way: crashes, signal 11\n")
    expect_in("and how much is left", said, "what is left: 1 node; before: ")
    expect("the least scene crashes as well", runner.status("least.maxscene.json",
                                                            *runner.crashing), -signal.SIGSEGV)

    least, said = runner.bisect("crash.maxscene.json", "--scramble", *runner.crashing)
    expect("a name that the failure needs stays", least["nodes"], [{"name": "my crash-me"}])
    expect_in("which is told", said,
              "not scrambled, since the failure needs it as it is: names of nodes\n")


def overflowing():
    huge = [[1e38, 0, 0], [0, 1e38, 0], [0, 0, 1e38], [5, 6, 7]]
    nodes = [{"name": f"secret {i}", "parent": i - 1} for i in range(12)]
    nodes[0].pop("parent")
    nodes[4]["transform"] = {"matrix": huge}
    nodes[9]["transform"] = {"matrix": huge}
    nodes[7]["object"] = {"class": "mesh", "vertices": [[0, 0, 0], [1, 0, 0], [0, 1, 0]],
                          "faces": [[0, 1, 2]]}
    return {"maxscene": 1, "nodes": nodes}


def check_fault(runner):
    runner.write("fault.maxscene.json", overflowing())
    least, said = runner.bisect("fault.maxscene.json")
    expect("a fault's least scene is the two nodes whose product overflows",
           [node["name"] for node in least["nodes"]], ["secret 4", "secret 9"])
    expect_in("the message is told", said, "fails in the same way: exit status 4: scene.hdotemp1: ")
    expect("the least scene fails as well", runner.status("least.maxscene.json"), 4)
    first = (runner.directory / "least.maxscene.json").read_bytes()
    runner.bisect("fault.maxscene.json")
    expect("the search gives the same again",
           (runner.directory / "least.maxscene.json").read_bytes(), first)
    least, said = runner.bisect("fault.maxscene.json", "--scramble")
    expect("scrambled, names are others", [node["name"] for node in least["nodes"]], ["n1", "n2"])
    expect("the scrambled scene fails as well", runner.status("least.maxscene.json"), 4)
    expect("nothing is said to be left", "not scrambled" in said, False)
    _, said = runner.bisect("fault.maxscene.json", "--tries", "3")
    expect_in("a search that is cut short says so", said, "ended after 3 exports")
    expect("its scene fails all the same", runner.status("least.maxscene.json"), 4)


def check_deviation(runner, model):
    least, said = runner.bisect(model, "--max-error", "0.1")
    expect_in("the same deviation is left, and no other", said,
              "exit status 4: scene.hdo: vertices of skins are off by ")
    skins = [node for node in least["nodes"] if node.get("modifiers")]
    expect("one skin and its bones are left", (len(skins), len(least["nodes"]) <= 4), (1, True))
    expect("the least scene deviates as well",
           runner.status("least.maxscene.json", "--max-error", "0.1"), 4)


def check_bad_file(runner):
    """An export whose file breaks a rule."""
    mesh = {"class": "mesh", "vertices": [[0, 0, 0], [1, 0, 0], [0, 1, 0]], "faces": [[0, 1, 2]]}
    weights = [[[0, -0.5], [1, 1.5]], [[1, 0.5]], [[0, 0.25], [1, 0.75]]]
    runner.write("bad.maxscene.json", {"maxscene": 1, "nodes": [
        {"name": "x", "object": mesh}, {"name": "a"}, {"name": "b"},
        {"name": "s", "object": mesh,
         "modifiers": [{"class": "skin", "bones": [1, 2], "weights": weights}]}]})
    least, said = runner.bisect("bad.maxscene.json", "--no-optimize-skin")
    expect_in("the issue is told", said, "fails in the same way: exit status 4: scene.hdotemp1: ")
    expect_in("with its code", said, "[weight-range]")
    expect("one bone and one skin are left", len(least["nodes"]), 2)
    left = [weight for vertex in least["nodes"][1]["modifiers"][0]["weights"] for weight in vertex]
    expect("and one weight", len(left), 1)
    expect("out of range", 0 <= left[0][1] <= 1, False)


def check_hang(runner):
    nodes = [{"name": "a"}, {"name": "hang-me"}, {"name": "b", "parent": 1}]
    runner.write("hang.maxscene.json", {"maxscene": 1, "nodes": nodes})
    least, said = runner.bisect("hang.maxscene.json", "--try-seconds", "1", *runner.crashing)
    expect("a hang's least scene", least["nodes"], [{"name": "hang-me"}])
    expect_in("the time is told", said, "fails in the same way: does not end within 1 s")


def check_refusals(runner, figure):
    runner.write("sound.maxscene.json", figure)
    run = runner.run("--bisect", "-o", "none.maxscene.json", "sound.maxscene.json")
    expect("a sound scene is refused", run.returncode, 2)
    expect_in("since it does not fail", run.stderr, "its export does not fail and checks well")
    run = runner.run("--bisect", "-o", "none.maxscene.json", "--plugin", "missing",
                     "sound.maxscene.json")
    expect("a refused export is refused", run.returncode, 2)
    expect_in("since it is", run.stderr, "its export is refused, expected one that fails")
    expect("nothing is written", (runner.directory / "none.maxscene.json").exists(), False)
    run = runner.run("--bisect", "-o", "sound.maxscene.json", "sound.maxscene.json")
    expect("a scene is not replaced", (run.returncode, runner.scene("sound.maxscene.json")),
           (2, figure))
    expect("--scramble alone is refused",
           runner.run("--scramble", "sound.maxscene.json").returncode, 2)


def interrupted(runner, *words):
    """What a search says that Ctrl-C ends."""
    run = subprocess.Popen([runner.program, "--bisect", "-o", "cut.maxscene.json", *words,
                            "slow.maxscene.json"], cwd=runner.directory, stderr=subprocess.PIPE,
                           stdout=subprocess.PIPE, text=True)
    for line in run.stderr:
        if "stay" in line:
            break
    run.send_signal(signal.SIGINT)
    _, said = run.communicate(timeout=60)
    expect("an interrupted search ends with 130", run.returncode, 130)
    return said


def check_interrupt(runner):
    runner.write("slow.maxscene.json", overflowing())
    said = interrupted(runner)
    expect("what it found so far fails", runner.status("cut.maxscene.json"), 4)
    expect("more tries would not help", "--tries" in said, False)
    said = interrupted(runner, "--scramble")
    expect("no name is told", [node["name"] for node in runner.scene("cut.maxscene.json")["nodes"]
                               if node["name"].startswith("secret")], [])
    expect_in("that it was not tried is told", said, "interrupted: scrambled whole")


def check_loss(runner):
    """The path of a node that was lost is no part of the failure."""
    runner.write("loss.maxscene.json", {"maxscene": 1, "nodes": [
        {"name": "secret parent"}, {"name": "secret child", "parent": 0, "hidden": True}]})
    least, said = runner.bisect("loss.maxscene.json", "--strict", "--max-error", "100",
                                "--scramble")
    expect("nothing is said to be left", "not scrambled" in said, False)
    expect("one hidden node loses as much", [node["name"] for node in least["nodes"]], ["n1"])


def shape(scene):
    """What scrambling leaves of a scene."""
    return [(node.get("parent"), node.get("hidden"), len(node.get("modifiers", [])),
             [len(node.get("object", {}).get(part, [])) for part in ("vertices", "faces")])
            for node in scene["nodes"]]


def check_scramble(runner, figure):
    runner.write("figure.maxscene.json", figure)
    for name in ("a.maxscene.json", "b.maxscene.json"):
        expect("a scene is saved scrambled",
               runner.run("--save-scene", name, "--scramble", "figure.maxscene.json").returncode, 0)
    first, second = ((runner.directory / name).read_text()
                     for name in ("a.maxscene.json", "b.maxscene.json"))
    expect("the same each time", first, second)
    scrambled = json.loads(first)
    expect("its shape stays", shape(scrambled), shape(figure))
    for node in figure["nodes"]:
        if f'"{node["name"]}"' in first:
            sys.exit(f"the name {node['name']} still stands in the scrambled scene")
    for old, new in zip(figure["nodes"], scrambled["nodes"]):
        vertices = old.get("object", {}).get("vertices", [])
        if vertices and vertices == new["object"]["vertices"]:
            sys.exit(f"the vertices of {old['name']} are what they were")
    expect("it exports", runner.status("a.maxscene.json"), 0)


def main():
    program, crashing = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:3])
    figure = json.loads(pathlib.Path(sys.argv[3]).read_text())
    with tempfile.TemporaryDirectory() as root:
        # What the search writes meanwhile is looked for there.
        scratch = pathlib.Path(root) / "scratch"
        scratch.mkdir()
        os.environ["TMPDIR"] = str(scratch)
        runner = Runner(program, crashing, pathlib.Path(root))
        started = time.monotonic()
        check_crash(runner, figure)
        check_fault(runner)
        check_deviation(runner, str(pathlib.Path(sys.argv[4]).resolve()))
        check_bad_file(runner)
        check_hang(runner)
        check_refusals(runner, figure)
        check_interrupt(runner)
        check_loss(runner)
        check_scramble(runner, figure)
        expect("nothing is left behind", list(scratch.iterdir()), [])
        print(f"{time.monotonic() - started:.1f} s")


if __name__ == "__main__":
    main()

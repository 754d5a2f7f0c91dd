#!/usr/bin/env python3
"""Interrupts exports to the same names at random times, and runs many exports at once.

usage: whole_files.py HDO_EXPORT SCENE [--interruptions N] [--seed N]
Every interrupted export must leave the former files or the new ones, all whole and of one export;
exports side by side, with different options and one home, must each give what they give alone.
"""

import argparse
import collections
import os
import pathlib
import random
import signal
import subprocess
import sys
import tempfile
import time

NAMES = ("out.hdotemp1", "out.hdotemp2", "out.hdo.log", "out.hdo.glb", "out.hdo")
# Two kinds of exports, whose files differ one by one.
KINDS = (["--sample-animation"], ["--sample-animation", "--sample-rate", "1", "--export-hidden",
                                  "--motions-for-hidden"])
DEADLINE = 120


def command(program, scene, options, out="out.hdo"):
    return [program, "-q", *options, "-o", out, scene]


def files(directory, names=NAMES):
    return tuple((directory / name).read_bytes() if (directory / name).exists() else None
                 for name in names)


def alone(program, scene, options, directory):
    directory.mkdir()
    subprocess.run(command(program, scene, options), cwd=directory, check=True, timeout=DEADLINE)
    return files(directory)


def interrupted(start, directory, number, delay):
    """Runs and interrupts; the exit status. Waits for the end of all that the run has started."""
    run = subprocess.Popen(start, cwd=directory, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    time.sleep(delay)
    run.send_signal(number)
    run.communicate(timeout=DEADLINE)
    return run.returncode


def interrupt_all(program, scene, count, seed, root):
    kinds = [alone(program, scene, options, root / f"kind{i}") for i, options in enumerate(KINDS)]
    if any(a == b for a, b in zip(*kinds)):
        sys.exit("the two kinds of exports have a file in common, expected none")
    directory = root / "interrupted"
    former = alone(program, scene, KINDS[0], directory)
    spans = []
    for _ in range(5):
        started = time.monotonic()
        subprocess.run(command(program, scene, KINDS[0]), cwd=directory, check=True,
                       timeout=DEADLINE)
        spans.append(time.monotonic() - started)
    span = min(spans)
    randoms = random.Random(seed)
    seen = collections.Counter()
    ended = 0  # by the signal; a run that was done before does not count
    i = -1
    while ended < count:
        i += 1
        number = (signal.SIGTERM, signal.SIGKILL)[i % 2]
        kind = 1 - kinds.index(former)
        left = set(directory.glob(".hdo-*"))  # by SIGKILL, until the next run takes it away
        status = interrupted(command(program, scene, KINDS[kind]), directory, number,
                             randoms.uniform(0, span))
        if status not in (0, 143, -number):
            sys.exit(f"interruption {i}: exit status {status}, expected 0, 143 or {-number}")
        if number == signal.SIGTERM and set(directory.glob(".hdo-*")) - left:
            sys.exit(f"interruption {i}: SIGTERM left the private directory")
        now = files(directory)
        if now == kinds[kind] and status != 143:
            seen[f"{number.name} status {status}: new files"] += 1
        elif now == former and status != 0:
            seen[f"{number.name} status {status}: former files"] += 1
        else:
            sys.exit(f"interruption {i}, {number.name}, status {status}: neither the former files "
                     "nor the new ones")
        former = now
        ended += status != 0
    for what, times in sorted(seen.items()):
        print(f"{times:4} {what}")
    subprocess.run(command(program, scene, KINDS[0]), cwd=directory, check=True, timeout=DEADLINE)
    left = sorted(path.name for path in directory.iterdir())
    if left != sorted(NAMES):
        held = [str(path.relative_to(directory)) for path in directory.glob(".hdo-*/*")]
        sys.exit(f"after the last export there are {left} {held}, expected {sorted(NAMES)}")


def export_side_by_side(program, scene, count, root):
    options = [[], ["--no-morphers"], ["--sample-animation"], ["--export-hidden", "--no-morphers"],
               ["--saved-settings"]]
    home = {**os.environ, "HOME": str(root / "home"), "XDG_CONFIG_HOME": str(root / "home")}
    expected = [alone(program, scene, words, root / f"alone{i}")
                for i, words in enumerate(options[:4])]
    directory = root / "together"
    directory.mkdir()
    runs = []
    for i in range(count):
        # Those with saved settings change them under the eyes of the others.
        words = options[i % len(options)]
        more = ["--no-morphers", "--sample-animation"] if words == options[4] else []
        runs.append(subprocess.Popen(command(program, scene, words + more, f"x{i}.hdo"),
                                     cwd=directory, env=home))
    for i, run in enumerate(runs):
        if run.wait(timeout=DEADLINE) != 0:
            sys.exit(f"export {i} of {count} at once: exit status {run.returncode}")
        kind = i % len(options)
        now = files(directory, [name.replace("out", f"x{i}") for name in NAMES])
        now = *now[:-1], now[-1].replace(f'"x{i}.'.encode(), b'"out.')  # names stand in out.hdo
        if kind < len(expected) and now != expected[kind]:
            sys.exit(f"export {i} of {count} at once differs from the same one alone")
    if len(list(directory.iterdir())) != len(NAMES) * count:
        sys.exit("more or fewer files than the exports make")
    print(f"{count} exports at once are what each is alone")


def fill_the_disk(program, scene, root):
    """Needs no rights: what a file may hold is limited instead of the disk."""
    directory = root / "full"
    former = alone(program, scene, KINDS[0], directory)
    limited = ["sh", "-c", 'ulimit -f 4; exec "$@"', "sh"]
    for words, status in ((KINDS[1], 4), (["--save-scene", "out.hdotemp1"], 2)):
        start = command(program, scene, words)
        if status == 2:
            start = [program, *words, scene]
        run = subprocess.run(limited + start, cwd=directory, capture_output=True, text=True,
                             timeout=DEADLINE, env={**os.environ, "LC_ALL": "C"})
        if run.returncode != status or "File too large" not in run.stderr:
            sys.exit(f"{words}: exit status {run.returncode}, expected {status}: {run.stderr}")
        if files(directory) != former:
            sys.exit(f"{words}: the former files are no more")
    log = subprocess.run(command(program, scene, ["--log", "/dev/full"]), cwd=directory,
                         capture_output=True, text=True, timeout=DEADLINE)
    if log.returncode != 4 or "/dev/full: No space left on device" not in log.stderr:
        sys.exit(f"--log /dev/full: exit status {log.returncode}: {log.stderr}")
    if files(directory) != former:
        sys.exit("--log /dev/full: the former files are no more")
    print("what a file may hold is told, and former files stay")


def fill_a_real_disk(program, scene, root):
    """A small disk of its own, where the system lets the user mount one."""
    directory = root / "disk"
    directory.mkdir()
    script = """
set -e
mount -t tmpfs -o size=64k hdo-test "$1"
cd "$1"
printf former >saved.maxscene.json
head -c 1000000 /dev/zero >filler 2>/dev/null || true
if LC_ALL=C "$2" --save-scene saved.maxscene.json "$3" 2>"$4"; then status=0; else status=$?; fi
[ "$(cat saved.maxscene.json)" = former ] || { echo "the former file is no more"; exit 1; }
[ "$(ls -A | tr '\\n' ' ')" = "filler saved.maxscene.json " ] || { ls -A; exit 1; }
exit "$status"
"""
    start = ["unshare", "--map-root-user", "--mount"]
    if subprocess.run([*start, "mount", "-t", "tmpfs", "hdo-test", str(directory)],
                      capture_output=True).returncode != 0:
        print("no disk can be mounted here, so none was filled")
        return
    said = root / "said"
    run = subprocess.run([*start, "sh", "-c", script, "sh", str(directory), program, scene,
                          str(said)], capture_output=True, text=True, timeout=DEADLINE)
    words = said.read_text() if said.exists() else ""
    if run.returncode != 2 or "No space left on device" not in words:
        sys.exit(f"--save-scene on a full disk: exit status {run.returncode}, expected 2: "
                 f"{run.stdout}{run.stderr}{words}")
    print("a full disk is told, and the former file stays")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("scene", type=pathlib.Path)
    parser.add_argument("--interruptions", type=int, default=40)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    program, scene = str(arguments.program.resolve()), str(arguments.scene.resolve())
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory)
        fill_the_disk(program, scene, root)
        fill_a_real_disk(program, scene, root)
        export_side_by_side(program, scene, 40, root)
        interrupt_all(program, scene, arguments.interruptions, arguments.seed, root)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Looks at the progress bar of whole runs: it moves while a file is read and within a single mesh,
and on a terminal it tells the time that is left.

usage: progress.py HDO_EXPORT
"""

import json
import math
import os
import pathlib
import pty
import re
import signal
import subprocess
import sys
import tempfile
import time

SIDE = 110  # squares of a grid: 24,200 triangles
READING, EXPORTING = "Reading", "Exporting object..."


def grid():
    """Vertices and triangles."""
    vertices = [(x, (x * y) % 7 * 0.125, y) for y in range(SIDE + 1) for x in range(SIDE + 1)]
    faces = []
    for y in range(SIDE):
        for x in range(SIDE):
            a = y * (SIDE + 1) + x
            b = a + SIDE + 1
            faces += [(a, b, a + 1), (a + 1, b, b + 1)]
    return vertices, faces


def bars(program, scene, directory):
    """The bars that the run shows, as (title, percentages) in their order."""
    run = subprocess.run([program, "-q", "--progress", "always", "-o", "out.hdo", scene],
                         cwd=directory, capture_output=True, text=True, timeout=120)
    if run.returncode != 0:
        sys.exit(f"{scene}: exit status {run.returncode}: {run.stderr}")
    seen = []
    for percent, title in re.findall(r"\] +(\d+)% ([^\r\n]*)", run.stderr):
        percent, title = int(percent), title.strip()
        if not seen or percent == 0 or seen[-1][0].split()[0] != title.split()[0]:
            seen.append((title, []))
        seen[-1][1].append(percent)
    return seen


def expect_moves(what, percentages, least):
    if percentages != sorted(set(percentages)):
        sys.exit(f"{what}: the bar stands or falls: {percentages}")
    if len(percentages) < least or percentages[-1] < 90:
        sys.exit(f"{what}: found {percentages}, expected at least {least} steps to 90% or more")
    print(f"{what}: {len(percentages)} steps to {percentages[-1]}%")


def shown_of_a_stopped_export(program, scene, directory):
    """What a terminal shows of an export that stops for some seconds on its way, and its status."""
    process, terminal = pty.fork()
    if process == 0:
        os.chdir(directory)
        os.execve(program, [program, "-q", "-o", "slow.hdo", scene], os.environ)
    shown, has_stopped = "", False
    while True:
        try:
            shown += os.read(terminal, 1 << 12).decode()
        except OSError:  # Linux ends a terminal that nobody holds any more so
            break
        if not has_stopped and re.search(r"\] +[1-9][0-9]?% Exporting", shown):
            has_stopped = True
            os.kill(process, signal.SIGSTOP)
            time.sleep(2.5)
            os.kill(process, signal.SIGCONT)
    os.close(terminal)
    status = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
    return re.sub(r"\x1b\[[0-9;]*m", "", shown), status


def check_time_left(program, scene, directory):
    # On a busy machine an export may be through before it is stopped.
    for _ in range(6):
        plain, status = shown_of_a_stopped_export(program, scene, directory)
        told = [tuple(map(int, found)) for found in
                re.findall(r"\] +(\d+)% Exporting object\.\.\., (\d+) s, (\d+) s left", plain)]
        if status != 0 or told:
            break
    if status != 0 or not told:
        sys.exit(f"{scene}: exit status {status}, no time left in {plain!r}")
    for percent, seconds, left in told:
        if seconds < 2 or left != math.ceil(seconds * (100 - percent) / percent):
            sys.exit(f"{scene}: {left} s left at {percent}% after {seconds} s")
    print(f"{scene}: the time left is told {len(told)} times, at first {told[0][2]} s")


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    vertices, faces = grid()
    with tempfile.TemporaryDirectory() as root:
        directory = pathlib.Path(root)
        (directory / "grid.obj").write_text(
            "o grid\n" + "".join(f"v {x} {y} {z}\n" for x, y, z in vertices) +
            "".join(f"f {a + 1} {b + 1} {c + 1}\n" for a, b, c in faces))
        (directory / "grid.maxscene.json").write_text(json.dumps({
            "maxscene": 1,
            "nodes": [{"name": "grid",
                       "object": {"class": "mesh", "vertices": vertices, "faces": faces}}]}))
        for scene in ("grid.obj", "grid.maxscene.json"):
            shown = bars(program, scene, directory)
            titles = [title for title, _ in shown]
            if titles[:2] != [f"{READING} {scene}", EXPORTING]:
                sys.exit(f"{scene}: bars {titles}, expected reading and then exporting")
            expect_moves(f"reading {scene}", shown[0][1], 8)
            expect_moves(f"the one mesh of {scene}", shown[1][1], 20)
        check_time_left(program, "grid.maxscene.json", directory)


if __name__ == "__main__":
    main()

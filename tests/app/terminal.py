#!/usr/bin/env python3
"""Runs the programs on a terminal and in pipes: colours, the progress bar, what to do next.

usage: terminal.py HDO_EXPORT KTA SCENE
"""

import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile

from checks import expect

COLOR = re.compile(r"\x1b\[[0-9;]*m")


def environment(changes):
    usual = {name: value for name, value in os.environ.items()
             if name not in ("NO_COLOR", "COLUMNS")}
    return {**usual, "TERM": "xterm", **changes}


def on_terminal(directory, command, **changes):
    """What a terminal gets, and the exit status."""
    process, terminal = pty.fork()
    if process == 0:
        os.chdir(directory)
        os.execve(command[0], [str(word) for word in command], environment(changes))
    text = b""
    while True:
        try:
            piece = os.read(terminal, 1 << 16)
        except OSError:  # Linux ends a terminal that nobody holds any more so
            break
        if not piece:
            break
        text += piece
    os.close(terminal)
    status = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
    return text.decode().replace("\r\n", "\n"), status


def in_pipe(directory, command, **changes):
    return subprocess.run(command, cwd=directory, env=environment(changes), capture_output=True,
                          text=True, timeout=60)


def lines_left(text):
    """The lines that stay when the bar has gone, without colours."""
    plain = COLOR.sub("", text)
    return [line.rsplit("\r", 1)[-1] for line in plain.split("\n")]


def check_pipe(directory, command, status):
    run = in_pipe(directory, command)
    expect(f"{command}: exit status in a pipe", run.returncode, status)
    for stream in (run.stdout, run.stderr):
        for noise in ("\x1b", "\r", "next:"):
            expect(f"{command}: {noise!r} in a pipe", noise in stream, False)
    again = in_pipe(directory, [*command, "--color", "never"])
    expect(f"{command}: with --color never", (again.stdout, again.stderr),
           (run.stdout, run.stderr))
    return run


def check_terminal(directory, command, status, hint, color):
    """A terminal has the pipe's lines, colours, and a line on what to do next."""
    run = check_pipe(directory, command, status)
    text, ended = on_terminal(directory, command)
    expect(f"{command}: exit status on a terminal", ended, status)
    left = [line for line in lines_left(text) if line]
    hints = [line for line in left if line.startswith("next: ")]
    expect(f"{command}: what to do next", hints, [f"next: {hint}"] if hint else [])
    expect(f"{command}: the pipe's lines",
           sorted(line for line in left if line not in hints),
           sorted((run.stdout + run.stderr).splitlines()))
    expect(f"{command}: {color!r}", color in text, True)
    for changes, arguments in [({"NO_COLOR": "1"}, []), ({"TERM": "dumb"}, []),
                               ({}, ["--color", "never"])]:
        plain, _ = on_terminal(directory, [*command, *arguments], **changes)
        expect(f"{command} {arguments} {changes}: colours", "\x1b" in plain, False)
    empty, _ = on_terminal(directory, command, NO_COLOR="")
    expect(f"{command}: colours with an empty NO_COLOR", color in empty, True)
    always = in_pipe(directory, [*command, "--color", "always"])
    expect(f"{command}: --color always", color in always.stdout + always.stderr, True)
    expect(f"{command}: --color always but for the colours",
           (COLOR.sub("", always.stdout), COLOR.sub("", always.stderr)),
           (run.stdout, run.stderr))


def check_exports(directory, export):
    red, yellow, green = "\x1b[31m", "\x1b[33m", "\x1b[32mexported "
    scene = "figure.maxscene.json"
    for words, status, hint, color in [
            ([scene], 0, "Show the node, or export with --export-hidden. --report FILE shows every "
             "loss.", green),
            ([scene, "--export-hidden"], 0, None, green),
            ([scene, "--up", "z", "--export-hidden"], 0, "Leave --up out, or turn the model in the "
             "program that wrote the file. --report FILE shows every loss.", yellow),
            ([scene, "--strict", "--max-error", "1"], 4,
             "--report FILE shows what deviates and what is lost", red),
            ([scene, "--bogus"], 2, "hdo-export --help explains all options", red),
            (["none.fbx"], 2, None, red),
            ([scene, "--plugin", "none"], 3,
             "--plugin FILE names the plug-in, --plugin-dir DIR where its converter stands", red),
            ([scene, "-o", "none/x.hdo"], 1, None, red)]:
        check_terminal(directory, [export, *words], status, hint, color)
    for words in (["-q"], ["--json"]):
        text, _ = on_terminal(directory, [export, scene, *words])
        expect(f"{words}: a line on what to do next", "next:" in text, False)


def check_kta(directory, kta):
    pair = ["figure.hdotemp1", "figure.hdotemp2"]
    check_terminal(directory, [kta, "check", *pair], 0, None, "\x1b[32m2 files checked: 0 errors")
    whole = (directory / pair[0]).read_bytes()
    (directory / "cut.hdotemp1").write_bytes(whole[:-7])
    check_terminal(directory, [kta, "check", "cut.hdotemp1"], 1, None, "\x1b[31mcut.hdotemp1")
    text, _ = on_terminal(directory, [kta, "check", "--json", *pair])
    expect("colours in kta check --json", "\x1b" in text, False)


def check_bar(directory, export):
    """The bar names each stage and stays within a line of 80 columns."""
    text, status = on_terminal(
        directory, [export, "figure.maxscene.json", "--report", "figure.html"])
    expect("exit status", status, 0)
    shown = COLOR.sub("", text)
    for name in ("Reading figure.maxscene.json", "Exporting object...",
                 "Checking what was written", "Comparing it with the scene"):
        expect(f"the bar's stage {name}", name in shown, True)
    bars = re.findall(r"\r(\[[#.]{30}\][^\r\n]*)", shown)
    expect("bars", len(bars) > 20, True)
    expect("bars of more than 79 columns", [bar for bar in bars if len(bar) > 79], [])


def main():
    export, kta, scene = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:4])
    with tempfile.TemporaryDirectory() as root:
        directory = pathlib.Path(root)
        shutil.copy(scene, directory / "figure.maxscene.json")
        check_exports(directory, export)
        check_kta(directory, kta)
        check_bar(directory, export)
    print("terminals have colours, a bar and what to do next; pipes have none of it")


if __name__ == "__main__":
    main()

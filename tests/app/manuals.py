#!/usr/bin/env python3
"""The programs' manual pages and bash completion agree with their help, and do in man and bash what
they are for.

usage: manuals.py HDO_EXPORT KTA
"""

import os
import pathlib
import pty
import re
import signal
import subprocess
import sys
import tempfile

from checks import expect, expect_in

# Readline's part: what is typed, one word an argument, and what bash offers then, one a line.
COMPLETE = r"""
. "$1"
shift
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
spec=$(complete -p "$1")
function=${spec#*-F }
"${function%% *}" "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]}"
"""


def run(*command, **options):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True,
                          timeout=60, check=False, **options)


def output(*command, **options):
    done = run(*command, **options)
    if done.returncode != 0:
        sys.exit(f"{command}: exit status {done.returncode}\n{done.stderr}")
    return done.stdout


def options_of(text):
    """All options that a help text or a page says anything of, with both forms of a switch."""
    names = set()
    for head in re.findall(r"^ {2,7}(-[^\s,]+(?:, -[^\s,]+)*)", text, re.MULTILINE):
        for name in head.split(", "):
            names |= ({name.replace("[no-]", ""), name.replace("[no-]", "no-")}
                      if "[no-]" in name else {name})
    return names


class Program:
    def __init__(self, path, folder):
        self.path = pathlib.Path(path)
        self.name = self.path.name
        self.folder = folder
        self.script = folder / f"{self.name}.bash"
        self.script.write_text(output(self.path, "--generate", "bash-completion"))
        self.page = folder / f"{self.name}.1"
        self.page.write_text(output(self.path, "--generate", "man"))

    def commands(self):
        _, _, rest = output(self.path, "--help").partition("\nSubcommands:\n")
        return re.findall(r"^  ([a-z]+) ", rest, re.MULTILINE)

    def help(self, *command):
        return output(self.path, *command, "--help", env=os.environ | {"COLUMNS": "100"})

    def complete(self, *words):
        """What is offered for the last of these words behind the program's name."""
        return output("bash", "--norc", "-c", COMPLETE, "bash", self.script, self.name, *words,
                      cwd=self.folder).splitlines()


    def type_and_tab(self, typed):
        """What an interactive bash makes of typed text and the tab key."""
        program, terminal = pty.fork()
        if program == 0:
            os.chdir(self.folder)
            os.environ.update({"PS1": "next: ", "INPUTRC": "/dev/null", "TERM": "dumb"})
            os.execlp("bash", "bash", "--norc", "--noprofile", "-i")
        shown = b""
        try:
            # The prompt shows when readline listens; before that the terminal itself echoes.
            os.write(terminal, f". {self.script}; echo re''ady\n".encode())
            while b"ready\r\nnext: " not in shown:
                shown += os.read(terminal, 4096)
            os.write(terminal, typed.encode() + b"\t :end\n")
            shown = b""
            while b":end" not in shown:
                shown += os.read(terminal, 4096)
        finally:
            os.kill(program, signal.SIGKILL)
            os.waitpid(program, 0)
            os.close(terminal)
        return shown.decode().partition(":end")[0].strip()


# ---------------------------------------------------------------- manual pages

def check_page(program):
    environment = os.environ | {"MANWIDTH": "100", "LC_ALL": "C.UTF-8"}
    shown = run("man", "--warnings", "-l", program.page, env=environment)
    expect(f"{program.page.name} in man", (shown.returncode, shown.stderr), (0, ""))
    expect(f"{program.page.name} in mandoc",
           run("mandoc", "-Tlint", "-Wwarning", program.page).stdout, "")
    headings = re.findall(r"^[A-Z][A-Z ]+$", shown.stdout, re.MULTILINE)
    for heading in ("NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "EXAMPLES"):
        if heading not in headings:
            sys.exit(f"{program.page.name}: no section {heading}, found {headings}")
    whatis = run("lexgrog", program.page).stdout
    if f'"{program.name} - ' not in whatis:
        sys.exit(f"{program.page.name}: apropos would find {whatis!r}")
    environment = re.search("^ENVIRONMENT$(.*?)^[A-Z]", shown.stdout, re.MULTILINE | re.DOTALL)
    for variable in ("COLUMNS", "NO_COLOR", "TERM"):
        expect_in(f"{variable} in {program.page.name}", environment[1], variable)
    in_help = options_of(program.help())
    for command in program.commands():
        in_help |= options_of(program.help(command))
        if f"{program.name} {command} [OPTIONS]" not in shown.stdout:
            sys.exit(f"{program.page.name}: no command {command}")
    expect(f"options in {program.page.name}", sorted(in_help ^ options_of(shown.stdout)), [])
    return len(in_help)


# ---------------------------------------------------------------- completion

def check_options(program):
    """Each command's options are all offered, and no other."""
    for command in [()] + [(name,) for name in program.commands()]:
        expected = options_of(program.help(*command))
        if len(expected) < 2:
            sys.exit(f"{program.name} {command} --help: options {expected}")
        offered = program.complete(*command, "-")
        expect(f"options of {program.name} {command}", sorted(offered), sorted(expected))


def check_accepted(program, option, words, *rest):
    """Whether the program takes each word that is offered, and refuses another one."""
    offered = program.complete(option, "")
    expect(f"{program.name} {option}", offered, words)
    for word in words:
        complaint = run(program.path, option, word, *rest).stderr
        if option in complaint:
            sys.exit(f"{program.name} {option} {word}: {complaint}")
    if option not in run(program.path, option, "nonsense", *rest).stderr:
        sys.exit(f"{program.name} {option} nonsense is accepted")


def check_export(program):
    check_accepted(program, "--up", ["x", "y", "z"], "none.obj")
    check_accepted(program, "--progress", ["always", "auto", "never"], "none.obj")
    check_accepted(program, "--color", ["always", "auto", "never"], "none.obj")
    expect("--up=", program.complete("--up", "="), ["x", "y", "z"])
    expect("--progress=al", program.complete("--progress", "=", "al"), ["always"])
    expect("--scale", program.complete("--scale", ""), [])
    expect("--no-m", program.complete("--no-m"), ["--no-morphers", "--no-motions-for-hidden"])
    expect("scenes", sorted(program.complete("--up", "y", "")),
           ["a model.fbx", "scene.maxscene.json", "sub"])
    expect("a blank in a name", program.complete("a\\ m"), ["a model.fbx"])
    expect("directories", program.complete("--plugin-dir", ""), ["sub"])
    expect("a place for a report", sorted(program.complete("--report", "")), ["page.html", "sub"])
    expect("no log yet", sorted(program.complete("--log", "b")), ["b.hdotemp1", "b.hdotemp2"])


def check_kta(program):
    expect("commands", program.complete(""),
           ["info", "dump", "check", "diff", "preview", "glb"])
    expect("ch", program.complete("ch"), ["check"])
    expect("both kinds", sorted(program.complete("info", "b.hdotemp1", "")),
           ["b.hdotemp1", "b.hdotemp2", "sub"])
    expect("the actor", sorted(program.complete("glb", "")), ["b.hdotemp1", "sub"])
    expect("then the motion", sorted(program.complete("glb", "-o", "x.glb", "b.hdotemp1", "")),
           ["b.hdotemp2", "sub"])
    expect("a picture or a page", sorted(program.complete("preview", "-o", "")),
           ["page.html", "sub"])
    expect("several views", program.complete("preview", "--view", "front,ri"), ["front,right"])
    expect("kinds of chunks", program.complete("dump", "--chunks", "node,mo"),
           ["node,motion\\ part", "node,morph"])
    expect("the tab key", program.type_and_tab("kta pre"), "kta preview")
    expect("the tab key", program.type_and_tab("kta dump --no-o"), "kta dump --no-offsets")
    expect("check --color", program.complete("check", "--color", "a"), ["always", "auto"])
    expect("nothing else is offered", program.complete("diff", "--tolerance", ""), [])


def main():
    export, kta = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="manuals_") as scratch:
        folder = pathlib.Path(scratch)
        programs = [Program(pathlib.Path(path).resolve(), folder) for path in (export, kta)]
        for program in programs:
            print(f"{program.name}: {check_page(program)} options in help and manual page")
            check_options(program)
        (folder / "files" / "sub").mkdir(parents=True)
        for name in ("a model.fbx", "scene.maxscene.json", "notes.txt", "b.hdotemp1", "b.hdotemp2",
                     "page.html"):
            (folder / "files" / name).touch()
        for program, check in zip(programs, (check_export, check_kta)):
            program.folder = folder / "files"
            check(program)


if __name__ == "__main__":
    main()

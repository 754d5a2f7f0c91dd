#!/usr/bin/env python3
"""Runs what README.md and the pages of docs/ show, and compares what it prints with what they say.

usage: run_docs.py [--update] ROOT PROGRAMS [PAGE...]

ROOT is the project's folder, PROGRAMS the one with the built programs. Each page is one session of a
shell in a copy of what a reader's clone holds: README.md's begins in its folder, those of docs/
begin in `examples/`, with the programs on the PATH. --update writes what was printed into the pages
(lines for which "..." stands stay left out) and pictures into their places. pages.py says how
commands stand in a page.

What differs from run to run is compared so: numbers of seconds ("83 s") are all equal, and the
copy's folder is shown as /home/you/hdo-exporter.
"""

import argparse
import concurrent.futures
import difflib
import os
import pathlib
import re
import secrets
import shlex
import shutil
import subprocess
import sys
import tempfile

import hex_dumps
import pages

FOLDER = "/home/you/hdo-exporter"
SECONDS = re.compile(r"\b\d+(\.\d+)? s\b")
MOST_SECONDS = 120

# What is not run here: page, command, why.
NOT_RUN = (
    ("README.md", "./test", "builds three presets and takes minutes; CI runs it"),
    ("docs/farm.md", "sbatch --array=1-$(hdo-export --batch scenes.txt --count) --wait "
     "farm/export.sbatch scenes.txt -o out",
     "needs a cluster; tests/farm/slurm.py runs it on request"),
    ("docs/kta-reader.md", "c++ -std=c++20 program.cpp $(pkg-config --cflags --libs kta_reader)",
     "the test kta_reader_install does so with the library installed"),
    ("docs/packages.md", "cmake --install build/release --prefix ~/hdo-exporter --strip",
     "the test installed does so"),
    ("docs/packages.md", "cmake --preset windows && cmake --build --preset windows --target package",
     "the test packed_zip packs what ./test builds"),
    ("docs/packages.md", "packaging/windows_assimp", "takes long and downloads Assimp's sources"),
    ("docs/packages.md", "cmake --preset windows-models && "
     "cmake --build --preset windows-models --target package",
     "needs what packaging/windows_assimp builds; packaging/test_windows_models does so"),
    ("docs/packages.md", "packaging/test_windows_models",
     "takes long and downloads Assimp's sources"),
    ("docs/packages.md", "packaging/test_packages",
     "takes minutes and downloads a Debian"),
    ("docs/packages.md", "cmake --build --preset release --target package",
     "the test installed does so"),
    ("docs/packages.md", "sudo apt install ./build/release/hdo-export_*.deb "
     "./build/release/libkta-dev_*.deb", "changes the machine; the test installed unpacks them"),
    ("docs/windows.md",
     "cmake --preset windows && cmake --build --preset windows && ctest --preset windows",
     "./test does so"),
    ("docs/windows.md",
     "build/windows/wine.sh build/windows/bin/hdo-export.exe examples/figure.maxscene.json",
     "needs the build for Windows; its tests run there"),
    ("docs/windows.md", "python3 tests/windows/dialog_pictures.py --update --docs docs -- \\\n"
     "build/windows/wine.sh build/windows/bin/dialogs_test.exe",
     "needs the build for Windows; the test dialogs_test does so"),
)

# Pages without commands, and why.
WITHOUT_COMMANDS = {
    "docs/README.md": "the index",
    "docs/architecture.md": "about the sources",
    "docs/contributing.md": "commands that build and test the project itself",
    "docs/kta-check.md": "a table that kta check writes; the test kta_check compares it",
    "docs/kta-format.md": "tables; docs/kta-example.md shows them at work",
    "docs/options.md": "a table; docs/guide.md shows it at work, options_page_test compares it",
    "docs/performance.md": "bench/report writes it",
    "docs/warnings.md": "a table; warnings_page_test compares it",
}

# Pictures that no page's commands make, and what makes them.
OTHER_PICTURES = {
    "docs/about-box.png": "the test dialogs_test, on Windows",
    "docs/architecture.svg": "drawn by hand",
    "docs/options-dialog.png": "the test dialogs_test, on Windows",
    "docs/performance-growth.svg": "bench/report",
    "docs/performance-ratios.svg": "bench/report",
}

# ./run is itself run, but for what it installs and builds: these take the place of the machine's.
PLAYED = {
    "apt-get": "exit 1",
    "cmake": "exit 0",
    "dpkg-query": "echo install ok installed",
}


def make_clone(folder, root, programs):
    """What a reader's clone holds, with the programs that are built."""
    for part in ("docs", "examples", "tests/scenes"):
        shutil.copytree(root / part, folder / part)
    (folder / "cmake").mkdir()
    for part in ("README.md", "LICENSE", "run", "test", "cmake/packages.sh"):
        shutil.copy(root / part, folder / part)
    played = folder / ".played"
    played.mkdir()
    for name, body in PLAYED.items():
        (played / name).write_text(f"#!/bin/sh\n{body}\n")
        (played / name).chmod(0o755)
    (folder / "build/release").mkdir(parents=True)
    (folder / "build/release/bin").symlink_to(programs)


def is_not_run(page, command):
    return any((page.name, command.text) == mark[:2] for mark in NOT_RUN)


def session(page, mark):
    """The page's commands as a script, with a line that begins with `mark` behind each."""
    script = ["exec 2>&1", "status=0"]
    for step in page.steps:
        if isinstance(step, pages.ShownFile):
            script.append(f"printf %s {shlex.quote(step.content)} > {shlex.quote(step.name)}")
        elif not is_not_run(page, step):
            script.append(f"(exit $status); eval {shlex.quote(step.text)}")
            script.append(f"status=$?; printf '%s %s\\n' {mark} $status")
    return "\n".join(script)


def run_session(page, folder):
    """What each command that is run printed, as lines, and its exit status."""
    programs = folder / "build/release/bin"
    mark = "mark-" + secrets.token_hex(8)
    environment = {"HOME": str(folder.parent / "home"), "LC_ALL": "C.UTF-8", "TERM": "dumb",
                   "PATH": f"{folder / '.played'}:{programs}:{os.environ['PATH']}"}
    run = subprocess.run(
        ["timeout", str(MOST_SECONDS), "bash", "-c", session(page, mark)], env=environment,
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=False,
        cwd=folder if page.name == "README.md" else folder / "examples")
    printed = run.stdout.decode("utf-8", "backslashreplace")
    for there, shown in ((folder, FOLDER), (programs.resolve(), FOLDER + "/build/release/bin")):
        printed = printed.replace(str(there), shown)
    results = []
    for text, status in re.findall(rf"(.*?){mark} (\d+)\n", printed, re.DOTALL):
        results.append((text.splitlines(), int(status)))
    return results


def pattern_of(expected):
    """A regular expression of the lines that a page expects."""
    parts = []
    for line in expected:
        if line == pages.ANY_LINES:
            parts.append(r"(?:[^\n]*\n)*")
        else:
            parts.append(r"\d+(?:\.\d+)? s\b".join(map(re.escape, SECONDS.split(line)[::2])) + r"\n")
    return re.compile("".join(parts))


def agrees(expected, found):
    return pattern_of(expected).fullmatch("".join(line + "\n" for line in found)) is not None


def is_good(status, commands, position):
    """Whether the command there ended well, or with a status that the page shows. Of kta diff, 1 is
    an answer, which its output tells."""
    shown = position + 1 < len(commands) and "$?" in commands[position + 1].text
    differs = status == 1 and commands[position].text.startswith("kta diff ")
    return status == 0 or shown or differs


def compare(page, results):
    """Pairs of a command that differs and what it printed, and the faults, one text each."""
    differing, faults = [], []
    commands = [command for command in page.commands if not is_not_run(page, command)]
    if len(results) < len(commands):
        faults.append(f"{page.name}:{commands[len(results)].line}: "
                      f"{commands[len(results)].text}\nended the shell, or was not done in time")
    for position, (command, (found, status)) in enumerate(zip(commands, results)):
        where = f"{page.name}:{command.line}: {command.text}"
        if not is_good(status, commands, position):
            faults.append(f"{where}\nends with status {status}, which the page does not show"
                          + "".join(f"\n  {line}" for line in found))
        elif not agrees(command.expected, found):
            differing.append((command, found))
            diff = difflib.unified_diff(command.expected, found, "the page says", "printed",
                                        lineterm="")
            faults.append(where + "".join(f"\n  {line}" for line in diff))
    return differing, faults


def with_dots(expected, found):
    """`found` without the lines for which dots stand, if there are dots in one place."""
    if expected.count(pages.ANY_LINES) != 1:
        return found
    before = expected.index(pages.ANY_LINES)
    behind = len(expected) - before - 1
    if len(found) <= before + behind:
        return found
    return [*found[:before], pages.ANY_LINES, *found[len(found) - behind:]]


def update(page, differing):
    lines = page.path.read_text(encoding="utf-8").splitlines()
    for command, found in reversed(differing):
        lines[command.first:command.end] = with_dots(command.expected, found)
    page.path.write_text("\n".join(lines) + "\n", encoding="utf-8")
    print(f"{page.name}: {len(differing)} outputs updated")


def made_pictures(folder, root):
    """The pictures of docs/ that the commands made again: their path there and the new one."""
    for picture in (root / "docs").rglob("*.png"):
        for place in (folder, folder / "examples", folder / "build/example"):
            if (place / picture.name).exists():
                yield picture, place / picture.name


def check_page(page, root, programs, updates):
    """The page's faults, and the names of the pictures that it makes."""
    if not page.steps and not page.dumps:
        return [], set()
    with tempfile.TemporaryDirectory() as directory:
        folder = pathlib.Path(directory).resolve() / "clone"
        (folder.parent / "home").mkdir()
        make_clone(folder, root, programs)
        results = run_session(page, folder)
        differing, faults = compare(page, results)
        if updates and differing:
            update(page, differing)
        for dump in page.dumps:
            faults += hex_dumps.faults_of(page, dump, folder / "examples" / dump.name)
        pictures = set()
        for picture, made in made_pictures(folder, root):
            pictures.add(picture.relative_to(root).as_posix())
            if made.read_bytes() != picture.read_bytes():
                faults.append(f"{picture}: is not what {page.name} makes")
                if updates:
                    shutil.copy(made, picture)
        return faults, pictures


def check_marks(all_pages):
    """Faults of the lists above, and of pages that show nothing."""
    faults = [fault for page in all_pages for fault in page.faults]
    names = {page.name: page for page in all_pages}
    for name, text, _ in NOT_RUN:
        if name not in names or text not in [command.text for command in names[name].commands]:
            faults.append(f"{name}: has no command {text!r}, which the test says is not run")
    for page in all_pages:
        faults += [f"{page.name}:{command.line}: {command.text}: is not run, and yet shows output"
                   for command in page.commands if command.expected and is_not_run(page, command)]
        if page.commands and page.name in WITHOUT_COMMANDS:
            faults.append(f"{page.name}: has commands, which the test says it has not")
        elif not page.commands and page.name not in WITHOUT_COMMANDS:
            faults.append(f"{page.name}: no ```console block, expected one")
    faults += [f"{name}: not there, which the test says has no commands"
               for name in WITHOUT_COMMANDS if name not in names]
    return faults


def check_pictures(root, made):
    there = {path.relative_to(root).as_posix() for path in (root / "docs").rglob("*")
             if path.suffix in (".png", ".apng", ".svg", ".gif", ".jpg")}
    faults = [f"{name}: no page's commands make this picture" for name in
              sorted(there - made - set(OTHER_PICTURES))]
    return faults + [f"{name}: not there, or made by a page, and the test says otherwise" for name in
                     sorted(set(OTHER_PICTURES) - (there - made))]


def check(root, programs, updates=False, only=()):
    """All faults, and how many commands were run."""
    all_pages = pages.all_pages(root)
    faults = check_marks(all_pages)
    chosen = [page for page in all_pages if not only or page.name in only]
    commands = sum(not is_not_run(page, command) for page in chosen for command in page.commands)
    if commands == 0:
        faults.append("nothing to run: no page has a command")
    made = set()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for found, pictures in pool.map(lambda page: check_page(page, root, programs, updates),
                                        chosen):
            faults += found
            made |= pictures
    if not only:
        faults += check_pictures(root, made)
    return faults, commands


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--update", action="store_true")
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("pages", nargs="*")
    arguments = parser.parse_args()
    faults, commands = check(arguments.root.resolve(), arguments.programs.resolve(),
                             arguments.update, arguments.pages)
    for fault in faults:
        print(fault)
    print(f"{commands} commands run, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

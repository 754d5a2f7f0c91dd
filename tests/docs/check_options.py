#!/usr/bin/env python3
"""Every option that the help of hdo-export and of kta's commands names stands on a page of docs/, as
code or in a command, and the pages' texts name no option that neither program has.

usage: check_options.py ROOT HDO_EXPORT KTA
"""

import pathlib
import re
import subprocess
import sys

import pages

OPTION = re.compile(r"--(?:\[no-\])?([a-z][a-z_-]*[a-z])")
# An option's line in a help text: its names stand at the beginning.
HELP_LINE = re.compile(r"^  +(?:-\w, )?(--\S+)", re.MULTILINE)
COMMAND = re.compile(r"^  ([a-z]+) {2,}", re.MULTILINE)

# Pages with options of other programs: of CMake, the tests' scripts, ...
ABOUT_BUILDING = {"docs/contributing.md", "docs/kta-reader.md", "docs/packages.md",
                  "docs/README.md", "docs/windows.md"}
# git's, and what every switch begins with to be off.
OF_OTHERS = {"ext-diff", "no"}


def help_of(*command):
    run = subprocess.run([*command, "--help"], capture_output=True, text=True, check=True)
    return run.stdout


def options_in(text):
    """The names of the options that a help text explains."""
    return {OPTION.match(name)[1].removeprefix("no-") for name in HELP_LINE.findall(text)}


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.split("\n\n")[1])
    root, hdo_export, kta = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    explained = options_in(help_of(hdo_export))
    overview = help_of(kta)
    commands = COMMAND.findall(overview[overview.index("Subcommands:"):])
    for command in commands:
        explained |= options_in(help_of(kta, command))
    if not commands or len(explained) < 20:
        sys.exit(f"{len(commands)} commands and {len(explained)} options in the help, expected more")
    faults = []
    named = set()
    for page in pages.all_pages(root):
        here = {option for word, _ in page.words for option in OPTION.findall(word)}
        if page.name not in ABOUT_BUILDING:
            faults += [f"{page.name}: --{name} is no option of hdo-export or kta"
                       for name in sorted(here - OF_OTHERS)
                       if not {name, name.removeprefix("no-")} & explained]
        for command in page.commands:
            here.update(OPTION.findall(command.text))
        if page.name != "README.md":
            named |= here
    named |= {name.removeprefix("no-") for name in named}
    faults += [f"--{name}: no page of docs/ names it" for name in sorted(explained - named)]
    for fault in faults:
        print(fault)
    print(f"{len(explained)} options, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""The zip for Windows, unpacked into a folder whose name has blanks and a letter that is not ASCII,
exports and checks from there, with no other library than its own and those of Windows.

usage: packed_zip.py --cpack CPACK --build BUILD --source SOURCE --objdump OBJDUMP -- EMULATOR
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import zipfile

FOLDER = "Kürzel & Co"
PROGRAMS = {"hdo-export.exe", "kta.exe", "hdoexport.dle", "haldenexport.dll", "libmaxhost.dll",
            "libgcc_s_seh-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll"}
PARTS_OF_WINDOWS = {"advapi32.dll", "comctl32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll",
                    "shell32.dll", "user32.dll", "ws2_32.dll"}
LICENCES = {"hdo-exporter": "MIT", "gcc-mingw-w64-x86-64-posix-runtime": "GCC Runtime Library",
            "mingw-w64-x86-64-dev": "mingw-w64", "libz-mingw-w64-dev": "zlib",
            "libgcrypt-mingw-w64-dev": "LGPL", "libgpg-error-mingw-w64-dev": "LGPL",
            "libjs-three": "three.js"}


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, timeout=200,
                          stdin=subprocess.DEVNULL, check=False, **options)
    if done.returncode != 0:
        sys.exit(f"{command}: exit status {done.returncode}\n"
                 f"{(done.stdout + done.stderr).decode(errors='replace')}")
    return done.stdout.decode(errors="replace")


def expect(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: found {found!r}, expected {expected!r}")


def unpack(arguments, folder):
    run(arguments.cpack, "--config", arguments.build / "CPackConfig.cmake", "-B", folder)
    packed = list(folder.glob("*.zip"))
    expect("packages", [re.sub(r"\d+\.\d+\.\d+", "VERSION", path.name) for path in packed],
           ["hdo-exporter-VERSION-win64.zip"])
    with zipfile.ZipFile(packed[0]) as archive:
        archive.extractall(folder / FOLDER)
    return folder / FOLDER / packed[0].stem


def check_libraries(arguments, unpacked):
    """Whatever a program of the folder loads stands in it, or is a part of Windows."""
    found = {path.name for path in unpacked.iterdir() if path.suffix in (".exe", ".dll", ".dle")}
    expect("programs and libraries", found, PROGRAMS)
    known = PARTS_OF_WINDOWS | {name.lower() for name in found}
    for name in found:
        imports = re.findall(r"DLL Name: (\S+)", run(arguments.objdump, "-p", unpacked / name))
        missing = [library for library in imports if library.lower() not in known]
        expect(f"libraries that {name} misses", missing, [])
        for path in (arguments.build, arguments.source):
            if os.fsencode(path) in (unpacked / name).read_bytes():
                sys.exit(f"{name} holds the path {path}")


def check_texts(unpacked):
    notes = (unpacked / "INSTALL.txt").read_bytes()
    expect("lines of the notes that do not end as on Windows",
           len(re.findall(rb"(?<!\r)\n", notes)), 0)
    for words in (b"3ds Max 2012\\plugins", b"To remove", b"licences"):
        expect(f"{words} in the notes", words in notes, True)
    expect("placeholders in the notes", re.findall(rb"@\w+@", notes), [])
    longest = max(len(line) for line in notes.decode("ascii").splitlines())
    expect("lines of the notes fit a window", longest <= 80, True)
    for name, words in LICENCES.items():
        text = (unpacked / "licences" / f"{name}.txt").read_text(encoding="utf-8")
        expect(f"{words} in the licence of {name}", words in text, True)


def check_export(arguments, unpacked):
    """The bytes that an export has on every system."""
    environment = os.environ | {"WINEPATH": "", "LC_ALL": "C.UTF-8"}
    start = [*arguments.emulator]
    scene = (unpacked / "examples/figure.maxscene.json").rename(unpacked / "Läufer.maxscene.json")
    run(*start, unpacked / "hdo-export.exe", scene.name, cwd=unpacked, env=environment)
    for part, kind in (("temp1", "actor"), ("temp2", "motion")):
        expected = arguments.source / f"tests/scenes/expected/figure.{kind}.kta"
        if (unpacked / f"Läufer.hdo{part}").read_bytes() != expected.read_bytes():
            sys.exit(f"Läufer.hdo{part} differs from {expected.name}")
    checked = run(*start, unpacked / "kta.exe", "check", "Läufer.hdotemp1", "Läufer.hdotemp2",
                  cwd=unpacked, env=environment)
    expect("kta check", checked.split(":")[1].split(",")[:2], [" 0 errors", " 0 warnings"])


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("--cpack", "--build", "--source", "--objdump"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    parser.add_argument("emulator", nargs="+")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="packed_zip_") as scratch:
        unpacked = unpack(arguments, pathlib.Path(scratch))
        check_libraries(arguments, unpacked)
        check_texts(unpacked)
        check_export(arguments, unpacked)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Builds the plug-in alone with MAXSDK_DIR set to a folder in the SDK's shape, which holds the
work-alike's headers and, under the SDK's names, the import library of its module.

usage: sdk_build.py --cmake CMAKE --source DIR --toolchain FILE --objdump OBJDUMP --host IMPORT_LIB
                    --work DIR
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import zipfile

import export_table

LIBRARIES = ("core", "maxutil", "geom", "mesh", "paramblk2", "bmm", "Morpher")


def arrange(sdk, source, host_library):
    """Files keep their times, so that a build that is there already compiles what changed alone."""
    shutil.rmtree(sdk, ignore_errors=True)
    shutil.copytree(source / "host/sdk/include", sdk / "include")
    morpher = sdk / "samples/modifiers/morpher/include"
    morpher.mkdir(parents=True)
    for header in sorted((sdk / "include").glob("Morpher*.h")):
        header.rename(morpher / header.name)
    libraries = sdk / "x64/lib"
    libraries.mkdir(parents=True)
    for name in LIBRARIES:
        shutil.copy2(host_library, libraries / f"{name}.lib")


def run(command):
    """Returns exit status and everything printed."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)
    return done.returncode, done.stdout


def configure(arguments, sdk, build):
    return run([arguments.cmake, "-S", arguments.source, "-B", build, "-G", "Ninja",
                f"-DCMAKE_TOOLCHAIN_FILE={arguments.toolchain}", "-DCMAKE_BUILD_TYPE=Release",
                f"-DMAXSDK_DIR={sdk}"])


def expect(condition, what):
    if not condition:
        sys.exit(what)


def builds(arguments, sdk, build):
    status, text = configure(arguments, sdk, build)
    expect(status == 0, text)
    status, text = run([arguments.cmake, "--build", build, "--parallel", "2"])
    expect(status == 0, text)
    module = build / "bin/hdoexport.dle"
    found = export_table.read(arguments.objdump, module)
    expect(found == export_table.EXPECTED, f"export table: {found}")
    imports = subprocess.run([arguments.objdump, "-p", module], check=True, capture_output=True,
                             text=True).stdout
    expect(f"DLL Name: {arguments.host.name.removesuffix('.a')}" in imports,
           "the module imports nothing from the SDK's libraries")
    made = sorted(path.name for path in (build / "bin").iterdir() if path.suffix != ".a")
    expect(made == ["hdoexport.dle"], f"built beside the plug-in: {made}")
    status, text = run([arguments.cmake, "--build", build, "--target", "package"])
    expect(status == 0, text)
    (package,) = build.glob("hdoexport-*-3dsmax2012.zip")
    with zipfile.ZipFile(package) as archive:
        names = sorted(name.partition("/")[2] for name in archive.namelist())
    package.unlink()
    expect(names == ["INSTALL.txt", "LICENSE.txt", "hdoexport.dle"], f"packed: {names}")


def refuses(arguments, sdk, work, missing):
    """A folder that lacks one file is refused with its name."""
    (sdk / missing).rename(sdk / "away")
    build = work / "refused"
    shutil.rmtree(build, ignore_errors=True)
    status, text = configure(arguments, sdk, build)
    (sdk / "away").rename(sdk / missing)
    shutil.rmtree(build, ignore_errors=True)
    expect(status != 0 and pathlib.Path(missing).name in text, f"without {missing}: {text}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    for name in ("--cmake", "--toolchain", "--objdump"):
        parser.add_argument(name, required=True)
    for name in ("--source", "--host", "--work"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    arguments = parser.parse_args()
    sdk = arguments.work / "maxsdk"
    shutil.rmtree(arguments.work / "build/bin", ignore_errors=True)
    arrange(sdk, arguments.source, arguments.host)
    builds(arguments, sdk, arguments.work / "build")
    refuses(arguments, sdk, arguments.work, "include/max.h")
    refuses(arguments, sdk, arguments.work, "x64/lib/mesh.lib")
    refuses(arguments, sdk, arguments.work, "samples/modifiers/morpher/include/MorpherApi.h")
    return 0


if __name__ == "__main__":
    sys.exit(main())

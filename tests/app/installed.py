#!/usr/bin/env python3
"""What is installed, and the Debian packages of it, work from wherever they are laid, without the
tree that they were built in.

usage: installed.py CMAKE CPACK SOURCE BUILD SCENE
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from checks import expect, output

DEPENDED_ON = {"libassimp5", "libc6", "libgcrypt20", "libstdc++6", "zlib1g"}


def files_below(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*")
            if path.is_symlink() or not path.is_dir()}


def hiding(source):
    """The beginning of a command that sees an empty folder in the sources' place, where this user
    may arrange that."""
    command = ["unshare", "--mount", "sh", "-c",
               'mount -t tmpfs none "$0" && [ -z "$(ls "$0")" ] && exec "$@"', source]
    possible = subprocess.run([*command, "true"], capture_output=True, check=False).returncode == 0
    print("sources are hidden" if possible else "sources cannot be hidden")
    return command if possible else []


class Installation:
    """A prefix, and how its programs are run."""

    def __init__(self, prefix, hide):
        self.prefix = prefix
        self.hide = hide

    def run(self, program, *arguments, cwd):
        return output(*self.hide, self.prefix / "bin" / program, *arguments, cwd=cwd)

    def export(self, scene, folder):
        """The bytes of the export's files by name; the toolkit finds nothing wrong in them."""
        folder.mkdir()
        shutil.copy(scene, folder / "figure.maxscene.json")
        self.run("hdo-export", "-o", "figure.hdo", "figure.maxscene.json", cwd=folder)
        checked = self.run("kta", "check", "figure.hdotemp1", "figure.hdotemp2", cwd=folder)
        if not checked.startswith("2 files checked: 0 errors, 0 warnings"):
            sys.exit(f"kta check: {checked}")
        return {path.name: path.read_bytes() for path in folder.iterdir()}


def check_paths(prefix, *folders):
    """No file knows where it was made."""
    for name in files_below(prefix):
        if (prefix / name).is_symlink():
            expect(f"{name} is relative", os.readlink(prefix / name).startswith("../"), True)
            continue
        content = (prefix / name).read_bytes()
        for folder in folders:
            if os.fsencode(folder) in content:
                sys.exit(f"{name} holds the path {folder}")


def check_pages(prefix):
    for program in ("hdo-export", "kta"):
        page = output("man", "-w", "-M", prefix / "share/man", program).strip()
        expect(f"page of {program}", page, str(prefix / f"share/man/man1/{program}.1.gz"))
        completed = output("bash", "-c", f'. "$1/{program}" && complete -p {program}', "bash",
                           prefix / "share/bash-completion/completions")
        expect(f"completion of {program}", completed.split()[::3], ["complete", program])


def check_packages(folder, prefix, version):
    """Fields of the packages; they hold what is installed, and nothing else. Gives the root that
    they are unpacked into."""
    root = folder / "root"
    dependencies = {}
    for name, section in (("hdo-export", "graphics"), ("libkta-dev", "libdevel")):
        architecture = output("dpkg", "--print-architecture").strip()
        package = folder / f"{name}_{version}_{architecture}.deb"
        said = output("dpkg-deb", "-f", package, "Package", "Version", "Section", "Maintainer",
                      "Depends")
        fields = dict(line.split(": ", 1) for line in said.splitlines())
        expect("fields", [fields[field] for field in ("Package", "Version", "Section")],
               [name, version, section])
        expect("maintainer", fields["Maintainer"].startswith("Kestrel Works <"), True)
        dependencies[name] = {part.split()[0] for part in fields["Depends"].split(", ")}
        output("dpkg-deb", "-x", package, root)
        for document in ("copyright", "changelog.gz"):
            if not (root / "usr/share/doc" / name / document).is_file():
                sys.exit(f"{package.name} has no {document}")
    if not dependencies["hdo-export"] >= DEPENDED_ON:
        sys.exit(f"hdo-export depends on {dependencies['hdo-export']}, expected {DEPENDED_ON}")
    expect("what the packages hold", sorted(files_below(root / "usr") ^ files_below(prefix)), [])
    for program in (root / "usr/bin/kta", root / "usr/bin/hdo-export"):
        if ".symtab" in output("readelf", "-SW", program.resolve()):
            sys.exit(f"{program} is not stripped")
    return root


def main():
    cmake, cpack, source, build, scene = (pathlib.Path(argument) for argument in sys.argv[1:])
    version = output(build / "bin/kta", "--version").split()[-1]
    with tempfile.TemporaryDirectory(prefix="installed_") as scratch:
        folder = pathlib.Path(scratch)
        hide = hiding(source)
        copy = shutil.copy(scene, folder)
        expected = Installation(build, []).export(copy, folder / "built")

        output(cmake, "--install", build, "--prefix", folder / "first")
        prefix = (folder / "first").rename(folder / "moved prefix")
        check_paths(prefix, build, source, folder / "first")
        expect("export of what was installed",
               Installation(prefix, hide).export(copy, folder / "one"), expected)
        check_pages(prefix)

        output(cpack, "--config", build / "CPackConfig.cmake", "-B", folder / "packages",
               "-D", "CPACK_DEBIAN_COMPRESSION_TYPE=gzip")
        root = check_packages(folder / "packages", prefix, version)
        expect("export of what was packed",
               Installation(root / "usr", hide).export(copy, folder / "two"), expected)


if __name__ == "__main__":
    main()

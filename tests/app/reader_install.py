#!/usr/bin/env python3
"""Installs the reader into a new prefix, moves that, and builds the example against it in both ways.

usage: reader_install.py CMAKE BUILD COMPILER EXAMPLE ACTOR LIST_MESHES
LIST_MESHES is the example as the project built it; all three must say the same of ACTOR.
"""

import os
import pathlib
import sys
import tempfile

from checks import output

PROJECT = """cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES CXX)
find_package(kta_reader 1.0 REQUIRED)
add_executable(stranger {example})
target_link_libraries(stranger PRIVATE kta::reader)
"""


def with_pkg_config(compiler, example, prefix, folder):
    paths = [str(path.parent) for path in prefix.rglob("kta_reader.pc")]
    flags = output("pkg-config", "--cflags", "--libs", "kta_reader",
                   env=os.environ | {"PKG_CONFIG_PATH": ":".join(paths)}).split()
    program = folder / "with_pkg_config"
    output(compiler, "-std=c++20", "-Wall", "-Wextra", "-Werror", example, *flags, "-o", program)
    return program


def with_cmake(cmake, compiler, example, prefix, folder):
    source = folder / "stranger"
    source.mkdir()
    (source / "CMakeLists.txt").write_text(PROJECT.format(example=example))
    build = folder / "build"
    output(cmake, "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={prefix}",
           f"-DCMAKE_CXX_COMPILER={compiler}")
    output(cmake, "--build", build)
    return build / "stranger"


def main():
    cmake, build, compiler, example, actor, built = sys.argv[1:]
    expected = output(built, actor)
    if expected.count("\n") != 6 or "Cube: 24 vertices, 12 triangles, 1 materials\n" not in expected:
        sys.exit(f"list_meshes {actor}:\n{expected}")
    with tempfile.TemporaryDirectory(prefix="reader_install_") as scratch:
        folder = pathlib.Path(scratch)
        output(cmake, "--install", build, "--component", "kta_reader", "--prefix", folder / "first")
        prefix = (folder / "first").rename(folder / "moved")
        for program in (with_pkg_config(compiler, example, prefix, folder),
                        with_cmake(cmake, compiler, example, prefix, folder)):
            if output(program, actor) != expected:
                sys.exit(f"{program} says:\n{output(program, actor)}expected:\n{expected}")


if __name__ == "__main__":
    main()

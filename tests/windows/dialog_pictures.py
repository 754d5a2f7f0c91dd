#!/usr/bin/env python3
"""Runs the test of the dialogs' looks and compares the sizes of the pictures that it leaves with
those in docs/; none may be blank.

usage: dialog_pictures.py [--update] --docs DIRECTORY -- PROGRAM...
--update replaces the pictures in docs/; look at them before you commit them.
"""

import argparse
import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

NAMES = ("about-box", "options-dialog")


def read_bmp(path):
    """Returns width, height and the rows, top down, as bytes of R, G, B."""
    data = path.read_bytes()
    offset, = struct.unpack_from("<I", data, 10)
    width, height, _, bits = struct.unpack_from("<iiHH", data, 18)
    if data[:2] != b"BM" or bits != 24 or height <= 0:
        sys.exit(f"{path.name}: not a bottom-up BMP file of 24 bits")
    stride = (width * 3 + 3) // 4 * 4
    rows = []
    for y in reversed(range(height)):
        row = bytearray(data[offset + y * stride:offset + y * stride + width * 3])
        row[0::3], row[2::3] = row[2::3], row[0::3]
        rows.append(bytes(row))
    return width, height, rows


def png(width, height, rows):
    def chunk(kind, body):
        return (struct.pack(">I", len(body)) + kind + body +
                struct.pack(">I", zlib.crc32(kind + body)))
    return (b"\x89PNG\r\n\x1a\n" +
            chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(b"".join(b"\0" + row for row in rows), 9)) +
            chunk(b"IEND", b""))


def drawn_rows(width, rows):
    """How many rows inside the frame hold more than one colour, as rows with a control do."""
    inside = range(8, width - 8)
    return sum(len({row[x * 3:x * 3 + 3] for x in inside}) > 1 for row in rows[30:-8])


def check(name, directory, docs, update):
    width, height, rows = read_bmp(directory / f"{name}.bmp")
    drawn = drawn_rows(width, rows)
    if drawn < height // 3:
        print(f"{name}: looks blank, {drawn} of {height} rows are drawn on")
        return False
    kept = docs / f"{name}.png"
    if update:
        kept.write_bytes(png(width, height, rows))
    size = struct.unpack_from(">II", kept.read_bytes(), 16) if kept.exists() else None
    if size != (width, height):
        print(f"{name}: {width} by {height} pixels, {kept.name} in docs/ has {size}")
        return False
    return True


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--docs", type=pathlib.Path, required=True)
    parser.add_argument("program", nargs="+")
    arguments = parser.parse_args()
    program = [str(pathlib.Path(word).resolve()) if "/" in word else word
               for word in arguments.program]
    with tempfile.TemporaryDirectory() as directory:
        if subprocess.run(program, cwd=directory, timeout=200).returncode != 0:
            return 1
        results = [check(name, pathlib.Path(directory), arguments.docs, arguments.update)
                   for name in NAMES]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())

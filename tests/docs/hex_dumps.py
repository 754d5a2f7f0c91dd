"""The annotated bytes of a file in a page, against the file.

Each line has an offset in hexadecimal digits, then bytes, then behind two blanks or more what they
mean: `00000007  00 00 00 00  id: node`. `00 x 254` stands for so many bytes. Each line begins where
the one before it ends, the first at 0, the last ends with the file.
"""

import re

BYTES = re.compile(r"([0-9a-f]{2})(?: x (\d+))?")
LINE = re.compile(r"([0-9a-f]{8})  ((?:[0-9a-f]{2}(?: x \d+)? )+) +\S.*")


def faults_of(page, dump, path):
    """What is wrong with the page's bytes of the file there."""
    if not path.exists():
        return [f"{page.name}:{dump.line}: the commands before it make no file {dump.name}"]
    content = path.read_bytes()
    offset = 0
    for number, text in enumerate(dump.lines, dump.line + 1):
        where = f"{page.name}:{number}"
        if not text.strip():
            continue
        line = LINE.fullmatch(text)
        if line is None:
            return [f"{where}: no line of an offset, bytes and a meaning: {text}"]
        if int(line[1], 16) != offset:
            return [f"{where}: offset {line[1]}, expected {offset:08x}"]
        shown = b"".join(bytes([int(byte, 16)]) * int(count or 1)
                         for byte, count in BYTES.findall(line[2]))
        there = content[offset:offset + len(shown)]
        if shown != there:
            return [f"{where}: {shown.hex(' ')}, the file has {there.hex(' ')}"]
        offset += len(shown)
    if offset != len(content):
        return [f"{page.name}:{dump.line}: ends at {offset}, the file has {len(content)} bytes"]
    return []

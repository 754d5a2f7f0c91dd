#!/usr/bin/env python3
"""Follows every link of README.md and of the pages of docs/.

usage: check_links.py ROOT

A link's file must be there, and a page's heading where the link names one; README.md must lead to
docs/README.md, and that to every page of docs/. A file of the sources that a page names
(`src/format/records.h`) must be there as well.
"""

import pathlib
import re
import sys
import urllib.parse

import pages

INDEX = "docs/README.md"
SOURCE = re.compile(r"(?:bench|cmake|docs|examples|host|kta|packaging|src|tests)/[\w./-]*")


def faults_of_link(root, anchors, page, target, line):
    """What is wrong with a link, as a list of one text or none."""
    where = f"{page.name}:{line}: {target}: "
    parts = urllib.parse.urlsplit(target)
    if parts.scheme:
        return [] if parts.scheme == "https" else [where + "expected https or a relative path"]
    name, anchor = urllib.parse.unquote(parts.path), urllib.parse.unquote(parts.fragment)
    path = (page.path.parent / name).resolve() if name else page.path.resolve()
    if not path.is_relative_to(root):
        return [where + "leads out of the project"]
    if not path.exists():
        return [where + "there is no such file"]
    if anchor and anchor not in anchors.get(path.relative_to(root).as_posix(), ()):
        return [where + f"the page has no heading #{anchor}"]
    return []


def reached_from(root, all_pages, start):
    """The names of the pages to which links lead from the page `start`, itself included."""
    by_name = {page.name: page for page in all_pages}
    reached, ahead = set(), [start]
    while ahead:
        name = ahead.pop()
        if name in reached or name not in by_name:
            continue
        reached.add(name)
        folder = by_name[name].path.parent
        for target, _ in by_name[name].links:
            path = (folder / urllib.parse.urlsplit(target).path).resolve()
            if path.is_relative_to(root):
                ahead.append(path.relative_to(root).as_posix())
    return reached


def check(root):
    """All faults, and how many links there are."""
    all_pages = pages.all_pages(root)
    anchors = {page.name: page.anchors for page in all_pages}
    faults, count = [], 0
    for page in all_pages:
        for target, line in page.links + page.pictures:
            faults += faults_of_link(root, anchors, page, target, line)
            count += 1
        faults += [f"{page.name}:{line}: {word}: there is no such file" for word, line in page.words
                   if SOURCE.fullmatch(word) and not (root / word).exists()]
    from_index = reached_from(root, all_pages, INDEX)
    if INDEX not in reached_from(root, all_pages, "README.md"):
        faults.append(f"README.md: no link leads to {INDEX}")
    faults += [f"{page.name}: no link leads there from {INDEX}" for page in all_pages
               if page.name not in from_index and page.name != "README.md"]
    if count == 0:
        faults.append("no links found, expected some")
    return faults, count


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.split("\n\n")[1])
    faults, count = check(pathlib.Path(sys.argv[1]).resolve())
    for fault in faults:
        print(fault)
    print(f"{count} links, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

"""The pages of README.md and docs/: their blocks of commands, headings, links,
pictures and words in code.

Commands stand in blocks that begin with ```console: `$ ` before a command, `> ` before its further
lines, and under it what it prints, on standard output and standard error alike. A line of three dots
stands for any number of lines. A block that begins with ```json NAME, or any other word and a name,
shows a file of that name, which the commands behind it use; ```hexdump NAME shows the bytes of a
file.
"""

import dataclasses
import pathlib

from markdown_it import MarkdownIt
from mdit_py_plugins.anchors import anchors_plugin

ANY_LINES = "..."


@dataclasses.dataclass
class Command:
    text: str
    expected: list[str]
    line: int  # of the page, from 1
    first: int  # the first line of what it prints, from 0
    end: int  # behind its last one


@dataclasses.dataclass
class ShownFile:
    name: str
    content: str
    line: int


@dataclasses.dataclass
class HexDump:
    name: str
    lines: list[str]
    line: int


@dataclasses.dataclass
class Page:
    path: pathlib.Path
    name: str  # from the project's folder
    steps: list = dataclasses.field(default_factory=list)  # Command and ShownFile, as they stand
    dumps: list = dataclasses.field(default_factory=list)
    anchors: set = dataclasses.field(default_factory=set)
    links: list = dataclasses.field(default_factory=list)  # (target, line)
    pictures: list = dataclasses.field(default_factory=list)  # (target, line)
    words: list = dataclasses.field(default_factory=list)  # (what stands as code in a line, line)
    faults: list = dataclasses.field(default_factory=list)

    @property
    def commands(self):
        return [step for step in self.steps if isinstance(step, Command)]


def all_pages(root):
    """README.md and every page of docs/."""
    paths = [root / "README.md", *sorted((root / "docs").rglob("*.md"))]
    return [read_page(path, path.relative_to(root).as_posix()) for path in paths if path.exists()]


def read_page(path, name):
    page = Page(path, name)
    markdown = MarkdownIt("commonmark").enable("table").use(anchors_plugin, max_level=6)
    for token in markdown.parse(path.read_text(encoding="utf-8")):
        line = token.map[0] + 1 if token.map else 0
        if token.type == "heading_open":
            page.anchors.add(token.attrGet("id"))
        elif token.type == "code_block":
            page.faults.append(f"{name}:{line}: indented code, expected a block between ``` lines")
        elif token.type == "fence":
            read_fence(page, token, line)
        elif token.type == "inline":
            read_links(page, token.children, line)
    return page


def read_links(page, tokens, line):
    for token in tokens:
        if token.type == "link_open":
            page.links.append((token.attrGet("href"), line))
        elif token.type == "image":
            page.pictures.append((token.attrGet("src"), line))
        elif token.type == "code_inline":
            page.words.append((token.content, line))


def read_fence(page, token, line):
    words = token.info.split()
    if not words:
        page.faults.append(f"{page.name}:{line}: block without a kind, expected ```console for"
                           " commands or another word for what is shown")
    elif words[0] in ("sh", "bash", "shell") and len(words) == 1:
        page.faults.append(f"{page.name}:{line}: block of kind {words[0]}, expected ```console")
    elif words[0] == "console":
        read_commands(page, token.content.splitlines(), token.map[0] + 1)
    elif words[0] == "hexdump":
        page.dumps.append(HexDump(words[1], token.content.splitlines(), line))
    elif len(words) == 2:
        page.steps.append(ShownFile(words[1], token.content, line))


def read_commands(page, lines, first):
    """`first` is the number of the first line, from 0."""
    commands = []
    for number, line in enumerate(lines, first):
        last = commands[-1] if commands else None
        if line.startswith("$ "):
            commands.append(Command(line[2:], [], number + 1, number + 1, number + 1))
        elif last is None:
            page.faults.append(f"{page.name}:{number + 1}: output before the first command")
        elif line.startswith("> ") and not last.expected or line == ">":
            last.text += "\n" + line[2:]
            last.first = last.end = number + 1
        else:
            last.expected.append(line)
            last.end = number + 1
    if not commands:
        page.faults.append(f"{page.name}:{first}: console block without a command")
    page.steps.extend(commands)

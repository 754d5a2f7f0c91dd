#!/usr/bin/env python3
"""Plants faults into the pages of a small project and shows that run_docs.py and check_links.py find
each of them, and none in the pages as they are."""

import pathlib
import tempfile
import unittest

import check_links
import run_docs

README = """# Project
[All](docs/README.md)

```console
$ ./run
$ echo it took 12 s
it took 99 s
```
"""
INDEX = "# Index\n[A page](page.md#the-part)\n"
PAGE = """# Page
## The part

```text data.bin
ABC
```

```console
$ cat data.bin
ABC
$ false
$ echo $?
1
$ seq 9
1
...
9
$ printf '%s\\n' \\
> two
two
```

```hexdump data.bin
00000000  41 42         A and B
00000002  43 x 1 0a     C and the end of the line
```
"""


class PlantedFaults(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name).resolve()
        for folder in ("docs", "examples", "tests/scenes", "cmake", "bin"):
            (self.root / folder).mkdir(parents=True)
        for name, text in (("README.md", README), ("docs/README.md", INDEX), ("docs/page.md", PAGE),
                           ("LICENSE", ""), ("run", ""), ("test", ""), ("cmake/packages.sh", "")):
            (self.root / name).write_text(text)
        self.set_lists(not_run=(("README.md", "./run", "builds"),), pictures={})

    def set_lists(self, **lists):
        run_docs.NOT_RUN = lists.get("not_run", run_docs.NOT_RUN)
        run_docs.WITHOUT_COMMANDS = {"docs/README.md": "the index"}
        run_docs.OTHER_PICTURES = lists.get("pictures", run_docs.OTHER_PICTURES)

    def change(self, name, old, new):
        path = self.root / name
        text = path.read_text()
        self.assertEqual(text.count(old), 1)
        path.write_text(text.replace(old, new))

    def expect(self, *words):
        """One fault, with these words in it; none without words."""
        faults = run_docs.check(self.root, self.root / "bin")[0] + check_links.check(self.root)[0]
        self.assertEqual(len(faults), 1 if words else 0, faults)
        for word in words:
            self.assertIn(word, faults[0])

    def test_good_pages(self):
        self.expect()

    def test_other_output(self):
        self.change("docs/page.md", "...\n9", "...\n10")
        self.expect("docs/page.md:14: seq 9", "\n  -10", "\n  +9")

    def test_output_that_is_missing(self):
        self.change("docs/page.md", "cat data.bin\nABC", "cat data.bin")
        self.expect("docs/page.md:9", "\n  +ABC")

    def test_other_number_that_is_no_time(self):
        self.change("README.md", "it took 99 s", "it took 99 m")
        self.expect("README.md:6", "\n  -it took 99 m", "\n  +it took 12 s")

    def test_failure_that_is_not_shown(self):
        self.change("docs/page.md", "$ echo $?\n1\n", "")
        self.expect("docs/page.md:11: false", "ends with status 1")

    def test_end_of_the_shell(self):
        self.change("docs/page.md", "$ false", "$ exit 0")
        self.expect("docs/page.md:11: exit 0", "ended the shell")

    def test_command_without_an_end(self):
        self.change("docs/page.md", "$ false", "$ sleep 100")
        self.addCleanup(setattr, run_docs, "MOST_SECONDS", run_docs.MOST_SECONDS)
        run_docs.MOST_SECONDS = 1
        self.expect("docs/page.md:11: sleep 100", "was not done in time")

    def test_page_without_commands(self):
        self.change("README.md", README[README.index("```"):], "")
        self.set_lists(not_run=())
        self.expect("README.md: no ```console block")

    def test_commands_in_another_block(self):
        self.change("README.md", "```console\n$ ./run", "```sh\n./run\n```\n\n```console")
        self.set_lists(not_run=())
        self.expect("README.md:4: block of kind sh")

    def test_commands_in_indented_code(self):
        self.change("README.md", "[All]", "    ./run\n\n[All]")
        self.expect("README.md:2: indented code")

    def test_mark_of_a_command_that_is_gone(self):
        self.change("README.md", "$ ./run\n", "")
        self.expect("README.md: has no command './run'")

    def test_output_that_nothing_compares(self):
        self.change("README.md", "$ ./run\n", "$ ./run\nAll is good.\n")
        self.expect("README.md:5: ./run: is not run, and yet shows output")

    def test_page_that_the_list_forgot(self):
        self.change("docs/README.md", "# Index", "# Index\n```console\n$ true\n```\n")
        self.expect("docs/README.md: has commands")

    def test_nothing_to_run(self):
        (self.root / "README.md").write_text("[All](docs/README.md)\n")
        (self.root / "docs/page.md").write_text("## The part\n")
        self.set_lists(not_run=())
        faults, commands = run_docs.check(self.root, self.root / "bin")
        self.assertEqual(commands, 0)
        self.assertIn("nothing to run: no page has a command", faults)

    def test_other_byte(self):
        self.change("docs/page.md", "41 42 ", "41 43 ")
        self.expect("docs/page.md:24: 41 43, the file has 41 42")

    def test_bytes_that_are_left_out(self):
        self.change("docs/page.md", "00000002  43 x 1 0a     C and the end of the line\n", "")
        self.expect("ends at 2, the file has 4 bytes")

    def test_wrong_offset(self):
        self.change("docs/page.md", "00000002  43", "00000003  43")
        self.expect("docs/page.md:25: offset 00000003, expected 00000002")

    def test_old_picture(self):
        (self.root / "docs/drawn.png").write_text("old")
        self.change("docs/page.md", "$ false", "$ printf new > drawn.png\n$ false")
        self.expect("docs/drawn.png: is not what docs/page.md makes")

    def test_picture_of_nobody(self):
        (self.root / "docs/drawn.png").write_text("old")
        self.expect("docs/drawn.png: no page's commands make this picture")

    def test_dead_link(self):
        self.change("docs/README.md", "page.md#", "pages.md#")
        faults = check_links.check(self.root)[0]
        self.assertIn("docs/README.md:2: pages.md#the-part: there is no such file", faults)
        self.assertIn("docs/page.md: no link leads there from docs/README.md", faults)

    def test_dead_anchor(self):
        self.change("docs/page.md", "## The part", "## The other part")
        self.expect("docs/README.md:2", "no heading #the-part")

    def test_source_that_is_gone(self):
        self.change("README.md", "# Project", "# Project\n`src/gone.cpp`")
        self.expect("README.md:2: src/gone.cpp: there is no such file")

    def test_link_out_of_the_project(self):
        self.change("README.md", "# Project", "# Project\n[Else](../else.md)")
        self.expect("README.md:2", "leads out of the project")

    def test_index_that_is_not_linked(self):
        self.change("README.md", "[All](docs/README.md)", "[All](docs/page.md)")
        self.expect("README.md: no link leads to docs/README.md")


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""Opens a page that `kta diff --preview` writes in a browser, and uses it as a person does.

usage: overlay_page.py HDO_EXPORT KTA SCENE [SCREENSHOTS]
SCENE is the example figure, which is exported as it is and with known changes. With a folder for
SCREENSHOTS what was seen is kept there.
"""

import json
import pathlib
import subprocess
import sys
import tempfile

import browser
import diff_exports
import preview_page

failures = preview_page.failures
expect = preview_page.expect


def write_pages(kta, old, new, directory):
    for name in ("page.html", "again.html"):
        ended = subprocess.run([kta, "diff", "-q", "--tolerance", "0.001", "--preview", name, old,
                                new], cwd=directory, timeout=diff_exports.DEADLINE)
        expect(ended.returncode == 1, "the status is", ended.returncode)
    expect((directory / "page.html").read_bytes() == (directory / "again.html").read_bytes(),
           "the same files give another page")


def blend(page, value):
    page.run(f"(() => {{ const b = document.getElementById('blend'); b.value = {value};"
             " b.dispatchEvent(new Event('input', { bubbles: true })); })()")


def use_sides(page, keep):
    page.changed()
    blend(page, 0)
    page.expect_change("the first file alone by the slider")
    keep("first")
    blend(page, 1)
    page.expect_change("the second file alone by the slider")
    page.press("#first")
    expect(page.changed() == 0, "the second file alone by the button looks another")
    page.press("#second")
    page.expect_change("neither file")
    page.press("#first")
    page.press("#second")
    blend(page, 0.5)
    page.expect_change("both files")


def use_differences(page, keep):
    tabs = page.run("[...document.querySelectorAll('#tabs button')].map(tab => tab.textContent)")
    expect(tabs == ["node", "mesh", "skinning weights", "material", "morph"], "the tabs are", tabs)
    page.choose("mesh", "Torso")
    page.expect_change("a chosen mesh")
    expect("position" in page.details() and "by 0.25" in page.details(), "the mesh's details are",
           page.details())
    expect(page.run("document.getElementById('label').textContent") == "Torso", "no label")
    keep("mesh")
    page.choose("node", "Marker")
    page.expect_change("a chosen node")
    expect("added" in page.details(), "the node's details are", page.details())
    keep("node")


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    host, kta, scene = (pathlib.Path(given).resolve() for given in sys.argv[1:4])
    figure = json.loads(scene.read_text())
    with tempfile.TemporaryDirectory(prefix="page_") as name, browser.Browser() as window:
        directory = pathlib.Path(name)
        old = diff_exports.export(host, figure, directory / "old")[0]
        new = diff_exports.export(host, diff_exports.changed(figure), directory / "new")[0]
        write_pages(kta, old, new, directory)
        window.set_window(1100, 700)
        window.open(directory / "page.html",
                    "Boolean(document.body) && document.body.dataset.ready === 'true'")

        def keep(what):
            if len(sys.argv) == 5:
                window.screenshot(pathlib.Path(sys.argv[4]) / f"{what}.png")

        page = preview_page.Page(window)
        expect(page.run("document.getElementById('trouble').hidden"), "the page has trouble:",
               page.run("document.getElementById('trouble').textContent"))
        keep("start")
        use_sides(page, keep)
        use_differences(page, keep)
        expect(not window.complaints, "the browser complains:", window.complaints)
        others = [url for url in window.requests if not url.startswith(("file:", "blob:", "data:"))]
        expect(not others, "the page asks for", others)
    sys.exit("\n".join(failures + diff_exports.failures) or 0)


if __name__ == "__main__":
    main()

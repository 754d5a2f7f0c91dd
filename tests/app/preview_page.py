#!/usr/bin/env python3
"""Opens pages that `kta preview` writes in a browser, and uses them as a person does.

usage: preview_page.py HDO_EXPORT KTA SCENE [SCREENSHOTS]
SCENE is the example figure. With a folder for SCREENSHOTS what was seen is kept there.
"""

import json
import pathlib
import subprocess
import sys
import tempfile

import browser

DEADLINE = 120
TRICKY = "</script><script>document.title = 'broken into'</script><img src=x onerror=alert(1)>"
# Counts the pixels of the canvas that are not as they were at the last call.
COUNT_CHANGED = """(() => {
    const view = document.getElementById('view');
    const copy = Object.assign(document.createElement('canvas'),
                               { width: view.width, height: view.height });
    const pen = copy.getContext('2d');
    pen.drawImage(view, 0, 0);
    const pixels = new Uint32Array(pen.getImageData(0, 0, copy.width, copy.height).data.buffer);
    const before = window.pixelsBefore;
    window.pixelsBefore = pixels;
    if (!before || before.length !== pixels.length) return -1;
    let changed = 0;
    for (let i = 0; i < pixels.length; ++i) changed += pixels[i] !== before[i] ? 1 : 0;
    return changed;
})()"""
failures = []


def expect(condition, what, shown=""):
    if not condition:
        failures.append(f"{what} {shown}")


class Page:
    """An open page and what a person does to it."""

    def __init__(self, window):
        self.window = window
        self.run = window.run

    def changed(self):
        return self.run(COUNT_CHANGED)

    def press(self, selector):
        self.run(f"document.querySelector({json.dumps(selector)}).click()")

    def choose(self, tab, text):
        """Opens a tab and clicks on its first item with that text."""
        self.press("#tab-" + tab)
        found = self.run("(() => { const item = [...document.querySelectorAll('#list button')]"
                         f".find(b => b.textContent.includes({json.dumps(text)}));"
                         " if (item) item.click(); return Boolean(item); })()")
        expect(found, f"the tab {tab} has no item \"{text}\":",
               self.run("document.getElementById('list').textContent"))

    def details(self):
        return self.run("document.getElementById('details').innerText")

    def set_time(self, seconds):
        self.run(f"(() => {{ const t = document.getElementById('time'); t.value = {seconds};"
                 " t.dispatchEvent(new Event('input', { bubbles: true })); })()")

    def expect_change(self, what, least=30):
        changed = self.changed()
        expect(changed >= least, f"{what}: {changed} pixels changed, expected at least {least}")


def export(host, scene, directory):
    """Exports the figure with a spine that bends, a bone of a tricky name and two of one name, of
    which the check tells; returns the names of both files."""
    figure = json.loads(scene.read_text())
    nodes = {node["name"]: node for node in figure["nodes"]}
    nodes["Hand L"]["name"] = TRICKY
    nodes["Shin R"]["name"] = "Shin L"
    nodes["Spine"]["transform"]["rotation"] = {"class": "eulerXYZ", **{axis: {
        "class": "bezierFloat", "keys": [{"time": time, "value": value if axis == "y" else 0}
                                         for time, value in ((0, 0), (4800, 0.6), (9600, 0))]}
        for axis in "xyz"}}
    (directory / "figure.maxscene.json").write_text(json.dumps(figure))
    subprocess.run([host, "-q", "--export-hidden", "-o", "figure.hdo", "figure.maxscene.json"],
                   cwd=directory, check=True, timeout=DEADLINE)
    return "figure.hdotemp1", "figure.hdotemp2"


def write_pages(kta, files, directory):
    for name in ("page.html", "again.html"):
        subprocess.run([kta, "preview", *files, "-o", name], cwd=directory, check=True,
                       timeout=DEADLINE)
    expect((directory / "page.html").read_bytes() == (directory / "again.html").read_bytes(),
           "the same files give another page")


def play(page):
    page.changed()
    page.set_time(1)
    page.expect_change("the motion at 1 s")
    expect(page.run("document.getElementById('clock').textContent") == "1.00 / 2.00 s",
           "the clock at 1 s shows", page.run("document.getElementById('clock').textContent"))
    page.set_time(0)
    page.expect_change("back to the start")
    page.set_time(1)
    page.set_time(0)
    expect(page.changed() == 0, "the start does not look the same each time")
    page.press("#play")
    page.window.wait_for("Number(document.getElementById('time').value) > 0.2")
    page.press("#play")
    page.set_time(0)
    page.changed()


def turn(page):
    page.changed()
    page.window.drag((300, 300), (420, 330))
    page.expect_change("turning by the mouse")
    page.press("#fit")
    page.expect_change("back to all")
    page.press("#bones")
    page.expect_change("the skeleton")
    page.press("#bones")
    page.changed()


def use_lists(page, keep):
    page.press("#fit")
    page.window.click((335, 260))  # the torso, in the middle of what is seen
    expect(page.run("document.querySelector('#details h2').textContent") == "Torso",
           "a click on the model shows", page.details())
    page.choose("nodes", "Upper Arm R")
    page.expect_change("a chosen node")
    expect("Chest" in page.details(), "the node's parent is not told:", page.details())
    expect(page.run("document.getElementById('label').textContent") == "Upper Arm R",
           "the chosen node has no label")
    page.choose("materials", "Cloth")
    page.expect_change("a chosen material")
    keep("material")
    page.choose("weights", "Spine")
    page.expect_change("weights in colours")
    expect(not page.run("document.getElementById('legend').hidden"), "weights have no legend")
    keep("weights")
    page.choose("tracks", "Upper Arm R rotation")
    page.expect_change("a chosen track")
    keep("track")
    plot = page.run("(() => { const f = document.querySelector('#details canvas')"
                    ".getBoundingClientRect(); return [f.left, f.top, f.width, f.height]; })()")
    page.changed()
    page.window.click((plot[0] + 48 + (plot[2] - 56) / 2, plot[1] + plot[3] / 2))
    page.expect_change("a click on the plot")
    expect(abs(page.run("Number(document.getElementById('time').value)") - 1) < 0.05,
           "the middle of the plot is at", page.run("document.getElementById('time').value"))
    page.set_time(0)
    page.changed()
    page.choose("issues", "node-name-duplicate")
    page.expect_change("a chosen issue")
    expect("note: node-name-duplicate" in page.details() and "Remedy" in page.details(),
           "the issue's details are", page.details())
    expect(page.run("document.getElementById('label').textContent") == "Shin L",
           "the issue's node is not shown")
    keep("issue")


def slide_morph(page, keep):
    page.choose("morphs", "Tall")
    expect("Skull" in page.details(), "the morph's details are", page.details())
    page.changed()
    weigh = ("(() => { const s = document.querySelector('#details input'); s.value = %d;"
             " s.dispatchEvent(new Event('input', { bubbles: true })); })()")
    page.run(weigh % 100)
    page.expect_change("a morph at full weight")
    keep("morph")
    page.run(weigh % 0)
    page.expect_change("the morph taken back")


def filter_names(page):
    page.press("#tab-nodes")
    page.run("(() => { const f = document.getElementById('filter'); f.value = 'forearm';"
             " f.dispatchEvent(new Event('input')); })()")
    names = page.run("[...document.querySelectorAll('#list button')].map(b => b.textContent)")
    expect(len(names) == 2 and all("Forearm" in name for name in names), "the filter finds", names)


def show_tricky_name(page):
    page.choose("nodes", TRICKY)
    expect(page.run("document.title") == "figure.hdotemp1", "the title is",
           page.run("document.title"))
    expect(page.run("document.querySelector('#details h2').textContent") == TRICKY,
           "the tricky name is shown as", page.details())
    expect(page.run("document.querySelectorAll('img').length") == 0, "a name became an element")


def use_phone(page, keep):
    page.window.set_window(390, 844, phone=True)
    expect(page.run("document.documentElement.scrollWidth <= 390"), "the page is too wide")
    frames = page.run("['view', 'panel', 'timeline', 'list'].map(id => {"
                      " const f = document.getElementById(id).getBoundingClientRect();"
                      " return [id, f.width, f.height, f.bottom]; })")
    expect(all(w > 200 and h > 30 and bottom <= 845 for _, w, h, bottom in frames),
           "parts of the page are hidden:", frames)
    page.press("#fit")
    page.changed()
    page.window.touch((200, 200), (280, 230))
    page.expect_change("turning by a finger")
    page.set_time(1)
    page.expect_change("the motion on a phone")
    page.choose("materials", "Skin")
    page.expect_change("a chosen material on a phone")
    keep("phone")


def show_without_webgl(window, file):
    """The page says what is wrong, and nothing lies over the words."""
    window.call("Page.addScriptToEvaluateOnNewDocument",
                source="HTMLCanvasElement.prototype.getContext = () => null")
    window.open(file, "!document.getElementById('trouble').hidden")
    for size in ((1100, 700), (390, 780, True)):
        window.set_window(*size)
        covered = window.run("""(() => {
            const words = document.getElementById('trouble').getBoundingClientRect();
            return [...document.querySelectorAll('#stage button')].filter(button => {
                const box = button.getBoundingClientRect();
                return box.width > 0 && box.left < words.right && box.right > words.left &&
                       box.top < words.bottom && box.bottom > words.top;
            }).map(button => button.textContent);
        })()""")
        expect(covered == [], f"{size}: over what the page says stands", covered)
    expect("WebGL" in window.run("document.getElementById('trouble').textContent"),
           "the page does not say that WebGL is missing")


def main():
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    host, kta, scene = (pathlib.Path(given).resolve() for given in sys.argv[1:4])
    with tempfile.TemporaryDirectory(prefix="page_") as name, browser.Browser() as window:
        directory = pathlib.Path(name)
        write_pages(kta, export(host, scene, directory), directory)
        window.set_window(1100, 700)
        window.open(directory / "page.html", "document.body.dataset.ready === 'true'")

        def keep(what):
            if len(sys.argv) == 5:
                window.screenshot(pathlib.Path(sys.argv[4]) / f"{what}.png")

        page = Page(window)
        expect(page.run("document.getElementById('trouble').hidden"), "the page has trouble:",
               page.run("document.getElementById('trouble').textContent"))
        keep("start")
        play(page)
        turn(page)
        use_lists(page, keep)
        slide_morph(page, keep)
        filter_names(page)
        show_tricky_name(page)
        use_phone(page, keep)
        expect(not window.complaints, "the browser complains:", window.complaints)
        others = [url for url in window.requests if not url.startswith(("file:", "blob:", "data:"))]
        expect(not others and len(window.requests) >= 1, "the page asks for", others)
        show_without_webgl(window, directory / "page.html")
    sys.exit("\n".join(failures) or 0)


if __name__ == "__main__":
    main()

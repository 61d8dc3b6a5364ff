#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_demo.py SOURCE-DIR ZMX [SHOTS-DIR]: makes the demo's page of a photograph and looks at it with Chromium, from the file
system: every picture is there and is not blank, the line between original and decoded follows keys and mouse, each choice shows
another picture, and the page fits a phone, light and dark. The screenshots stay in SHOTS-DIR when it is given. Exits with 77
where there is no browser or no photograph.
"""
import collections
import operator
import pathlib
import subprocess
import sys
import tempfile

import browser

PHOTO = pathlib.Path("/usr/share/backgrounds/mate/nature/Dune.jpg")  # the smallest
LOADED = """Promise.all([...document.images].map(async i => { try { await i.decode(); } catch (e) { return [i.src, 0, 0, 0]; }
    return [i.src, i.naturalWidth, i.naturalHeight, i.getBoundingClientRect().width]; }))"""
# Where something stands on the page.
BOX = """(() => { const b = document.querySelector(%r).getBoundingClientRect();
    return [b.x + scrollX, b.y + scrollY, b.width, b.height]; })()"""
AT = "getComputedStyle(document.querySelector('.stage')).getPropertyValue('--at')"

faults = []


def expect(condition, what):
    if not condition:
        faults.append(what)
        print("FAILED:", what, flush=True)


class Look:
    """Screenshots, as samples."""

    def __init__(self, page, zmx, folder):
        self.page, self.zmx, self.folder = page, zmx, pathlib.Path(folder)

    def samples(self, name, box=None):
        """Width, height and the bytes of red, green and blue."""
        shot = self.folder / (name + ".png")
        self.page.screenshot(shot, box)
        ppm = self.folder / "shot.ppm"
        subprocess.run([self.zmx, "image", "convert", shot, ppm, "--rgb", "--no-alpha", "-q", "-f"], check=True)
        data = ppm.read_bytes()
        width, height = map(int, data.split(None, 4)[1:3])
        return width, height, data[len(data) - 3 * width * height:]

    def box(self, selector):
        return self.page.evaluate(BOX % selector)

    def of(self, name, selector):
        return self.samples(name, self.box(selector))


def is_blank(samples):
    """Whether nearly all pixels are of one colour."""
    _, _, data = samples
    pixels = collections.Counter(zip(data[::3], data[1::3], data[2::3]))
    return max(pixels.values()) > 0.9 * len(data) / 3


def changed(one, other, share=0.0):
    """Whether more than this share of the bytes is another."""
    return one[:2] != other[:2] or sum(map(operator.ne, one[2], other[2])) > share * len(one[2])


def pictures_are_there(page):
    images = page.evaluate(LOADED)
    expect(len(images) >= 6, f"six pictures or more a photograph: {len(images)}")
    for source, width, height, shown in images:
        expect(width > 0 and height > 0 and shown > 0, f"{source} is loaded and shown")
    stage = [size[1:3] for size in images[:2]]
    expect(stage == [[840, 525]] * 2, f"original and decoded have the size of half the photograph: {stage}")
    expect(images[0][3] == 840, "at full size a pixel is a pixel")


def no_region_is_blank(look):
    for selector in (".stage", ".closer .original", ".closer .decoded", ".closer .difference", ".map"):
        expect(not is_blank(look.of("region", selector)), f"{selector} is not blank")
    expect(is_blank((2, 997, bytes(3 * 2 * 997))), "a blank picture is noticed")
    charts = look.page.evaluate("[...document.querySelectorAll('.chart')].map(c => [c.querySelectorAll('polyline').length,"
                                "c.getBoundingClientRect().height, /NaN/.test(c.outerHTML)])")
    expect(len(charts) == 3, f"three charts: {charts}")
    expect(all(lines >= 1 and height > 100 and not broken for lines, height, broken in charts), f"each has curves: {charts}")


def the_line_moves(look):
    page = look.page
    page.evaluate("document.querySelector('.slider input').focus()")
    before = look.of("middle", ".stage")
    page.press("ArrowLeft", 37)
    expect(page.evaluate(AT) == "49%", f"an arrow key moves the line: {page.evaluate(AT)}")
    page.press("Home", 36)
    decoded = look.of("decoded", ".stage")
    page.press("End", 35)
    original = look.of("original", ".stage")
    expect(changed(before, decoded, 0.1) and changed(decoded, original, 0.3), "the keys change the pixels")
    x, y, width, height = page.evaluate("scrollTo(0, 0), " + BOX % ".stage")
    page.drag((x + width * 0.9, y + 40), (x + width * 0.25, y + 60))
    expect(page.evaluate(AT) == "25%", f"the mouse moves the line: {page.evaluate(AT)}")
    expect(changed(original, look.of("quarter", ".stage"), 0.1), "the mouse changes the pixels")


def each_choice_shows_its_picture(look):
    page, seen = look.page, []
    page.evaluate("document.querySelector('.slider input').focus()")
    page.press("Home", 36)
    count = page.evaluate("document.querySelectorAll('.choice input').length")
    expect(count >= 4, f"JPEG, JPEG2000 and DXT are there to choose: {count}")
    for number in range(count):
        told = page.evaluate(f"document.querySelectorAll('.choice input')[{number}].click(), document.querySelector('.told').textContent")
        pictures_are_there(page)
        seen.append(look.of("choice", ".stage"))
        expect(all(changed(seen[-1], other) for other in seen[:-1]), f"another picture: {told}")


def it_fits(look, url):
    """Nothing sticks out on a phone, and dark is dark."""
    for name, width, height, phone, dark in (("wide", 1400, 900, False, False), ("dark", 1400, 900, False, True),
                                             ("phone", 390, 844, True, False), ("phone-dark", 390, 844, True, True)):
        look.page.window(width, height, phone, dark)
        look.page.open(url)
        look.page.evaluate(LOADED)
        wide = look.page.evaluate("document.documentElement.scrollWidth")
        expect(wide <= width, f"{name}: the page is {wide} wide, the window {width}")
        shot = look.samples(name)
        expect(not is_blank(shot), f"{name} is not blank")
        corner = max(shot[2][:3])
        expect(corner < 64 if dark else corner > 192, f"{name}: the ground is {corner}")
        whole = look.page.evaluate("[document.documentElement.scrollWidth, document.documentElement.scrollHeight]")
        look.page.screenshot(look.folder / (name + "-whole.png"), (0, 0, *whole))


def only_files(page):
    asked = [e["params"]["request"]["url"] for e in page.events if e.get("method") == "Network.requestWillBeSent"]
    expect(asked and all(url.startswith(("file:", "data:")) for url in asked), f"nothing but files is asked for: {asked}")
    told = [e["params"] for e in page.events if e.get("method") in ("Runtime.exceptionThrown", "Log.entryAdded")]
    expect(not told, f"the browser has nothing to complain about: {told}")


def main(source, zmx, shots=None):
    path = browser.find()
    if not path or not PHOTO.exists():
        print("skipped: no", "photograph" if path else "Chromium")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder, "a page & more")  # a name that an address must quote
        make = pathlib.Path(source, "scripts/demopage/make.py")
        subprocess.run([sys.executable, make, "--zmx", zmx, "--out", out, "--short", PHOTO], check=True)
        if shots:
            pathlib.Path(shots).mkdir(parents=True, exist_ok=True)
        with browser.Browser(path) as page:
            look = Look(page, zmx, shots or folder)
            page.window(1400, 900)
            page.open((out / "index.html").as_uri())
            pictures_are_there(page)
            no_region_is_blank(look)
            the_line_moves(look)
            each_choice_shows_its_picture(look)
            only_files(page)
            it_fits(look, (out / "index.html").as_uri())
    print(f"{len(faults)} faults")
    return bool(faults)


sys.exit(main(*sys.argv[1:]))

#!/usr/bin/env python3
"""Makes the pictures of docs/manual anew: works the program on a virtual display through the
accessibility bus, as tests/shell/accessibility.py does, and takes pictures of its windows.

Usage: tools/manual_pictures.py PROGRAM PHOTOGRAPH PHOTOGRAPH...
Needs beside the packages of that test: imagemagick (import, convert, montage), xdotool, openbox.
"""

import os
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "shell"))
import accessibility as bus  # noqa: E402

OUT = os.path.join(ROOT, "docs", "manual", "pictures")
LARGEST = 60_000  # bytes of a picture

# Rows of the sheets: caption, item by its name, numbers typed into its window in their order.
SHEETS = {
    "effects": [
        ("Photograph", None), ("Dither, 8 Colors", "mnuEffectsDither(2)"),
        ("Histogram Equalize", "mnuEffects(17)"), ("Bevel Edge", "mnuEffects(12)"),
        ("Drop Shadow", "mnuEffectsDropShadow(2)"), ("Emboss Shape", "mnuEffects(24)"),
    ],
    "effects_painted": [
        ("Crackle", "mnuEffects(13)"), ("Gauzy, Heavy", "mnuEffectsGauzy(4)"),
        ("Motion Blur", "mnuEffects(18)", "30"), ("Scribble, Heavy", "mnuEffectsScribble(2)"),
        ("Stipple, Noisy", "mnuEffectsStipple(2)"), ("Stipple, Glass", "mnuEffectsStipple(3)"),
    ],
    "filters": [
        ("Photograph", None), ("Blur, 300% (Gaussian)", "mnuFiltersBlurAction(8)"),
        ("Unsharp Mask, Normal", "mnuFiltersUnsharpMaskAction(0)"),
        ("Negative, White", "mnuFiltersNegativeWhite"),
        ("Edge Detection", "mnuEdgeDetectionAction(3)"), ("Emboss", "mnuFilters(6)"),
    ],
    "filters_patterns": [
        ("Mosaic", "mnuFilters(11)"), ("Halftone", "mnuFilters(36)"),
        ("Noise", "mnuFilters(31)", "1500"),
        ("Oil Painting", "mnuFiltersCustomFilterOilPainting"),
        ("Charcoal", "mnuFiltersDemosCharcoal"), ("Flaky Paint", "mnuFiltersDemosFlakyPaint"),
    ],
}


def run(*command):
    subprocess.run(command, check=True, stderr=subprocess.DEVNULL)


def keys(*names):
    run("xdotool", "key", "--clearmodifiers", *names)
    time.sleep(0.4)


class Studio:
    def __init__(self, program, photographs, folder):
        self.folder = folder
        self.program = bus.Program(program)
        self.lines = list(bus.menu_lines(os.path.join(ROOT, "tests/shell/menu_tree.txt")))
        self.album = os.path.join(folder, "Pictures")
        os.mkdir(self.album)
        self.photographs = [os.path.join(self.album, os.path.basename(p).lower())
                            for p in photographs]
        for photograph, copy in zip(photographs, self.photographs):
            run("convert", photograph, "-resize", "560x", copy)

    def box(self, node):
        place = bus.Atspi.Component.get_extents(node, bus.Atspi.CoordType.SCREEN)
        return place.x, place.y, place.width, place.height

    def grab(self, name, x, y, width, height):
        path = os.path.join(self.folder, name + ".png")
        run("import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", path)
        return path

    def keep(self, name, path, colors=256):
        """As many colors as let the file stay small."""
        target = os.path.join(OUT, name + ".png")
        while True:
            run("convert", path, "-strip", "-dither", "None", "-colors", str(colors), "-define",
                "png:compression-level=9", "PNG8:" + target)
            if os.path.getsize(target) <= LARGEST or colors <= 16:
                break
            colors = colors * 3 // 4
        print(name, os.path.getsize(target), colors)

    def item(self, name):
        """Menus are built anew while the program runs, so an item is looked for each time."""
        def items(menu):
            return iter([n for n in bus.children(menu) if bus.role(n) != "separator"])

        menus = [items(self.program.bar)]
        for level, other, _, _ in self.lines:
            del menus[level + 1:]
            found = next(menus[level])
            if other == name:
                return found
            below = bus.children(found)
            menus.append(items(below[0]) if below else iter(()))
        raise KeyError(name)

    def press(self, name):
        bus.press(self.item(name))

    def open(self, which=0):
        self.press("mnuOpen")
        window = self.program.window("Open")
        bus.type_in(bus.shown(window, "text")[0], self.photographs[which])
        button = next(b for b in bus.shown(window, "button") if b.get_name() == "Open")
        bus.until(lambda: bus.has(button, bus.State.ENABLED), "a usable Open button")
        bus.press(button)
        bus.until(self.program.canvas, "the photograph")
        time.sleep(0.6)

    def close(self):
        self.press("mnuClose")
        time.sleep(0.4)
        for window in self.program.windows():
            self.program.leave(window, "No")
        bus.until(lambda: not self.program.canvas(), "an empty frame")

    def frame(self):
        return self.box(next(w for w in bus.children(self.program.root) if bus.role(w) == "frame"))

    def window(self, name, picture, border=1):
        """The window that an item opens, with its title bar."""
        self.press(name)
        window = self.program.window(name)
        time.sleep(0.6)
        x, y, width, height = self.box(window)
        path = self.grab(picture, x - border, y - 20, width + 2 * border, height + 20 + border)
        self.keep(picture, path)
        self.program.leave(window, "Cancel", "OK")

    def menu(self, name, item, picture, height):
        """A menu with the pointer on one of its items; a submenu opens."""
        self.press(name)
        time.sleep(0.5)
        for target in (name, item):
            x, y, width, tall = self.box(self.item(target))
            if target == item and bus.children(self.item(item)):
                self.press(item)
            run("xdotool", "mousemove", str(x + width // 2), str(y + tall // 2))
            time.sleep(0.8)
        left, top, wide, _ = self.frame()
        self.keep(picture, self.grab(picture, left, top, min(wide, 760), height))
        keys("Escape", "Escape", "Escape")

    def result(self, row):
        """What a command makes of the photograph, as the document shows it."""
        caption, item, *numbers = row
        self.open()
        if item:
            self.press(item)
            time.sleep(0.5)
            for window in self.program.windows():
                for box, number in zip(bus.shown(window, "text"), numbers):
                    bus.type_in(box, number)
                self.program.leave(window, "OK")
            time.sleep(2.0)
        self.press("mnuZoomType(1)")
        time.sleep(0.6)
        path = self.grab(row[0].replace(" ", "_"), *self.box(self.program.canvas()))
        small = path.replace(".png", "_small.png")
        run("convert", path, "-resize", "220x160", "-bordercolor", "white", "-border", "2",
            "-gravity", "center", "-background", "white", "-extent", "230x166", small)
        self.close()
        return ["-label", caption, small]

    def sheet(self, picture, rows):
        parts = [part for row in rows for part in self.result(row)]
        path = os.path.join(self.folder, picture + ".png")
        run("montage", *parts, "-tile", "3x", "-geometry", "+3+3", "-pointsize", "12", path)
        self.keep(picture, path)


def take(program, photographs, folder):
    studio = Studio(program, photographs, folder)
    time.sleep(1)
    studio.open()
    left, top, width, height = studio.frame()
    whole = studio.grab("frame", left, top, width, height)
    run("convert", whole, "-resize", "760x", whole)
    studio.keep("frame", whole)
    for item, picture in (("mnuOpen", "open"), ("mnuNew", "new"), ("mnuEffects(2)", "resize"),
                          ("mnuSettings(0)", "save_settings"), ("mnuMetadata(3)", "markers"),
                          ("mnuAbout", "about")):
        studio.window(item, picture)
    studio.press("mnuFlip(0)")
    time.sleep(0.5)
    studio.window("mnuClose", "ask")
    studio.menu("mnumEdit", "mnuUndo", "edit_menu", height)
    studio.menu("mnumImages", "mnuImages(2)", "image_type", 330)
    studio.press("mnuZoomWindow")
    x, y, wide, tall = studio.box(studio.program.canvas())
    run("xdotool", "mousemove", str(x + wide // 2), str(y + tall // 2))
    time.sleep(0.8)
    studio.keep("magnifier", studio.grab("magnifier", x, y, wide, tall))
    studio.press("mnuZoomWindow")
    studio.close()
    studio.open()
    studio.open(1)
    studio.press("ArrVertival")
    time.sleep(0.6)
    tiled = studio.grab("tiled", left, top, width, height)
    run("convert", tiled, "-resize", "640x", tiled)
    studio.keep("tiled", tiled)
    studio.press("mnuClose")
    time.sleep(0.5)
    studio.close()
    for picture, rows in SHEETS.items():
        studio.sheet(picture, rows)
    studio.program.process.terminate()


def main():
    program, *photographs = map(os.path.abspath, sys.argv[1:])
    bus.on_virtual_display(lambda folder: take(program, photographs, folder), manager="openbox")


if __name__ == "__main__":
    main()

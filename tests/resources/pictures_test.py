#!/usr/bin/env python3
"""The committed picture set, icon and desktop entry against what
scripts/make-pictures draws and what the program's docs promise."""

import os
import re
import shutil
import subprocess
import tempfile
import types
import unittest
import zlib

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(
    os.path.abspath(__file__))))
RESOURCES = os.path.join(ROOT, "resources")


def LoadScript():
    # The drawing script has no .py name; its code runs in a module of its
    # own.
    path = os.path.join(ROOT, "scripts", "make-pictures")
    module = types.ModuleType("make_pictures")
    module.__file__ = path
    with open(path, encoding="utf-8") as f:
        code = compile(f.read(), path, "exec")
    exec(code, module.__dict__)
    return module


mp = LoadScript()
HAVE_VIPS = shutil.which("vips") is not None


def DeclaredSizes():
    """{picture name: (width, height)} from the drawing script's tables."""
    sizes = {}
    for button in mp.BUTTON_SET:
        for state in mp.STATES:
            sizes[f"{button.number}{state}"] = (button.width, button.height)
    for picture in mp.PLAIN_SET:
        sizes[picture.name] = (picture.width, picture.height)
    return sizes


def ReadRgba(path):
    """(width, height, rows of RGBA bytes) of an 8-bit RGBA PNG that is not
    interlaced, as the renderer writes them."""
    with open(path, "rb") as source:
        data = source.read()
    pos, idat, header = 8, b"", None
    while pos < len(data):
        length = int.from_bytes(data[pos:pos + 4], "big")
        kind = data[pos + 4:pos + 8]
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            header = body
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    width, height = (int.from_bytes(header[0:4], "big"),
                     int.from_bytes(header[4:8], "big"))
    if header[8:13] != bytes([8, 6, 0, 0, 0]):
        raise ValueError(f"{path}: not 8-bit RGBA without interlace")
    raw, stride, rows = zlib.decompress(idat), width * 4, []
    previous = bytearray(stride)
    for y in range(height):
        start = y * (stride + 1)
        kind, line = raw[start], bytearray(raw[start + 1:start + 1 + stride])
        for x in range(stride):
            left = line[x - 4] if x >= 4 else 0
            up = previous[x]
            corner = previous[x - 4] if x >= 4 else 0
            if kind == 1:
                line[x] = (line[x] + left) & 255
            elif kind == 2:
                line[x] = (line[x] + up) & 255
            elif kind == 3:
                line[x] = (line[x] + (left + up) // 2) & 255
            elif kind == 4:
                guess = left + up - corner
                near = min((abs(guess - left), 0), (abs(guess - up), 1),
                           (abs(guess - corner), 2))[1]
                line[x] = (line[x] + (left, up, corner)[near]) & 255
        rows.append(line)
        previous = line
    return width, height, rows


def FaceBrightness(png):
    """Mean brightness, 0 to 255, of the button's face (the plate inside its
    edge and shadow) laid on white."""
    width, height, rows = ReadRgba(png)
    inset, total, count = 3, 0.0, 0
    for row in rows[inset:height - inset - 1]:
        for x in range(inset, width - inset):
            r, g, b, a = row[4 * x:4 * x + 4]
            grey = 0.2126 * r + 0.7152 * g + 0.0722 * b
            total += (grey * a + 255 * (255 - a)) / 255
            count += 1
    return total / count


class PictureSetTest(unittest.TestCase):

    def test_readme_lists_every_picture_with_its_size(self):
        # The README is what other developers read: its tables must name the
        # same pictures, at the same sizes, as the script draws.
        readme = os.path.join(RESOURCES, "pictures", "README.md")
        listed = {}
        row = re.compile(r"^\| (\d+|G\d+) \|.*\| (\d+) x (\d+) \|$")
        with open(readme, encoding="utf-8") as text:
            for line in text:
                match = row.match(line.strip())
                if match:
                    name, width, height = match.groups()
                    listed[name] = (int(width), int(height))
        drawn = {}
        for name, size in DeclaredSizes().items():
            drawn[name.rstrip("NOD") if name[0] != "G" else name] = size
        self.assertEqual(listed, drawn)

    def test_committed_svgs_are_what_the_script_draws(self):
        for relative, text in mp.AllSvgs().items():
            with self.subTest(relative):
                with open(os.path.join(RESOURCES, relative),
                          encoding="utf-8") as committed:
                    self.assertEqual(committed.read(), text,
                                     "stale: run scripts/make-pictures")

    def test_button_folder_holds_the_set_and_nothing_else(self):
        expected = set()
        for name in mp.PictureNames():
            expected |= {f"{name}.svg", f"{name}.png", f"{name}@2x.png"}
        present = set(os.listdir(os.path.join(RESOURCES, "pictures",
                                              "button")))
        self.assertEqual(present - expected, set(), "files nobody asks for")
        self.assertEqual(expected - present, set(), "missing files")

    def test_rasters_at_1x_and_2x(self):
        for name, (width, height) in DeclaredSizes().items():
            base = os.path.join(RESOURCES, "pictures", "button", name)
            with self.subTest(name):
                self.assertEqual(mp.PngSize(base + ".png"), (width, height))
                self.assertEqual(mp.PngSize(base + "@2x.png"),
                                 (2 * width, 2 * height))

    def test_icon_sizes(self):
        for size in mp.ICON_SIZES:
            png = os.path.join(RESOURCES, "icons", f"{size}x{size}",
                               "quillbay-picture-desk.png")
            with self.subTest(size):
                self.assertEqual(mp.PngSize(png), (size, size))

    def test_hover_is_lighter_and_pressed_darker(self):
        # The states must be told apart at a glance: the face of a button
        # under the mouse is lighter than at rest, a pressed one darker.
        folder = os.path.join(RESOURCES, "pictures", "button")
        for button in mp.BUTTON_SET:
            number = button.number
            with self.subTest(number):
                normal = FaceBrightness(
                    os.path.join(folder, f"{number}N.png"))
                hover = FaceBrightness(
                    os.path.join(folder, f"{number}O.png"))
                pressed = FaceBrightness(
                    os.path.join(folder, f"{number}D.png"))
                self.assertGreater(hover, normal)
                self.assertLess(pressed, normal - 2)


class ScriptTest(unittest.TestCase):

    def test_png_size_refuses_what_is_no_png(self):
        with tempfile.TemporaryDirectory() as work:
            for content in (b"", b"<svg/>", b"\x89PNG\r\n\x1a\n" + b"\0" * 4):
                path = os.path.join(work, "bad.png")
                with open(path, "wb") as out:
                    out.write(content)
                with self.assertRaises(ValueError):
                    mp.PngSize(path)

    @unittest.skipUnless(HAVE_VIPS, "needs the vips command (libvips-tools)")
    def test_failed_render_keeps_the_previous_picture(self):
        with tempfile.TemporaryDirectory() as work:
            good = os.path.join(work, "good.svg")
            with open(good, "w", encoding="utf-8") as out:
                out.write(mp.ButtonSvg(mp.BUTTON_SET[0], "N"))
            target = os.path.join(work, "2N.png")
            mp.Render(good, target, 2)
            self.assertEqual(mp.PngSize(target), (40, 40))
            with open(target, "rb") as rendered:
                before = rendered.read()

            broken = os.path.join(work, "broken.svg")
            with open(broken, "w", encoding="utf-8") as out:
                out.write("<svg xmlns='http://www.w3.org/2000/svg'")
            with self.assertRaises(RuntimeError):
                mp.Render(broken, target)
            with open(target, "rb") as kept:
                self.assertEqual(kept.read(), before)

    @unittest.skipUnless(HAVE_VIPS, "needs the vips command (libvips-tools)")
    def test_png_reader_agrees_with_vips(self):
        # The state check above reads pixels with the small decoder here;
        # vips's mean over all bands must come out the same.
        folder = os.path.join(RESOURCES, "pictures", "button")
        for name in ("9O.png", "26D@2x.png", "G10.png"):
            with self.subTest(name):
                path = os.path.join(folder, name)
                _, _, rows = ReadRgba(path)
                mine = sum(sum(row) for row in rows) / sum(
                    len(row) for row in rows)
                out = subprocess.run(["vips", "avg", path], check=True,
                                     capture_output=True, text=True)
                self.assertAlmostEqual(mine, float(out.stdout), places=3)

    def test_numbers_are_written_stably(self):
        # Rerunning the script must give the same files, so a number's text
        # may not depend on float noise.
        cases = {0.1 + 0.2: "0.3", 2.0: "2", -0.0001: "0", 12.3456: "12.346"}
        for value, text in cases.items():
            self.assertEqual(mp.Num(value), text)


class DesktopEntryTest(unittest.TestCase):

    def setUp(self):
        self.path = os.path.join(RESOURCES, "quillbay-picture-desk.desktop")

    def Entries(self):
        entries = {}
        with open(self.path, encoding="utf-8") as text:
            for line in text:
                key, sep, value = line.strip().partition("=")
                if sep:
                    entries[key] = value
        return entries

    def test_launches_the_program_for_photos(self):
        entries = self.Entries()
        self.assertEqual(entries["Name"], "Quillbay Picture Desk")
        self.assertEqual(entries["Exec"], "qbpd %f")
        self.assertEqual(entries["MimeType"],
                         "image/jpeg;image/png;image/tiff;image/bmp;")
        self.assertEqual(entries["Categories"], "Graphics;Photography;Viewer;")
        self.assertTrue(os.path.exists(os.path.join(
            RESOURCES, "icons", entries["Icon"] + ".svg")))

    @unittest.skipUnless(shutil.which("desktop-file-validate"),
                         "needs desktop-file-validate (desktop-file-utils)")
    def test_validates(self):
        result = subprocess.run(["desktop-file-validate", self.path],
                                capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertEqual(result.stdout.strip(), "")


if __name__ == "__main__":
    unittest.main()

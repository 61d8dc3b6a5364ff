# SPDX-License-Identifier: BSD-2-Clause
"""Picture files between zmx, netpbm, libtiff's tools and Pillow: pictures.py ZMX

BMP       every kind that ppmtobmp writes is read as bmptopnm reads it; what zmx writes bmptopnm reads as it was
bitmaps   one bit a sample from file to file: PBM, PNG, TIFF and BMP
TIFF      palettes, planes, tiles, YCbCr, floats and compressions, by libtiff's tools and by Pillow
metadata  profile, EXIF, XMP and resolution written by Pillow arrive where Pillow finds them; orientation as Pillow turns
"""

import os
import struct
import subprocess
import sys
import tempfile
import unittest

import numpy as np
from PIL import Image, ImageCms, ImageOps, PngImagePlugin, TiffImagePlugin

rng = np.random.default_rng(30)


def picture(width, height, channels=3):
    """Waves and some noise."""
    y, x, c = np.mgrid[0:height, 0:width, 0:channels]
    waves = 120 + 60 * np.sin(x * 0.11 * (c + 1)) + 50 * np.cos(y * 0.07 + c) + rng.integers(-8, 9, x.shape)
    return np.clip(waves, 0, 255).astype(np.uint8).squeeze()


class Pictures(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chdir(folder.name)
        self.addCleanup(os.chdir, "/")

    def run_well(self, *args, told=""):
        done = subprocess.run(args, capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr.split("warning: ")[-1].strip()), (0, told), args)
        return done.stdout

    def convert(self, *args, told=""):
        return self.run_well(ZMX, "image", "convert", *args, told=told)

    def peer(self, command, out):
        """A program of netpbm's or libtiff's; its chatter is its own affair."""
        with open(out, "wb") as f:
            done = subprocess.run(command, stdout=f, stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 0, (command, done.stderr))

    def pixels(self, path):
        with Image.open(path) as p:
            return np.asarray(p)

    def same(self, a, b):
        np.testing.assert_array_equal(self.pixels(a), self.pixels(b))

    def header(self, path, bytes_):
        with open(path, "rb") as f:
            return f.read(bytes_)

    # ---- BMP

    def test_bmp_of_netpbm_is_read_as_netpbm_reads_it(self):
        few = picture(37, 21) // 64 * 64
        for name, array in (("rgb", picture(37, 21)), ("few", few), ("grey", picture(37, 21, 1)), ("two", few[:, :, 0] // 129 * 255)):
            Image.fromarray(array).save(f"{name}.ppm" if array.ndim == 3 else f"{name}.pgm")
            for kind in ([], ["-os2"], ["-bpp=24"], ["-bpp=8"], ["-bpp=4"], ["-bpp=1"]):
                with self.subTest(name, kind=kind):
                    done = subprocess.run(["ppmtobmp", "-quiet", *kind, f"{name}.p{'p' if array.ndim == 3 else 'g'}m"], capture_output=True)
                    if done.returncode:
                        continue  # too many colours for so few bits
                    with open("theirs.bmp", "wb") as f:
                        f.write(done.stdout)
                    self.peer(["bmptopnm", "-quiet", "theirs.bmp"], "theirs.pnm")
                    self.convert("theirs.bmp", "ours.pnm")
                    theirs, ours = self.pixels("theirs.pnm"), self.pixels("ours.pnm")
                    theirs = theirs * 255 if theirs.dtype == bool else theirs
                    ours = ours * 255 if ours.dtype == bool else ours
                    if ours.ndim < theirs.ndim:
                        ours = np.repeat(ours[:, :, None], 3, 2)
                    if theirs.ndim < ours.ndim:
                        theirs = np.repeat(theirs[:, :, None], 3, 2)
                    np.testing.assert_array_equal(ours, theirs)

    def test_bmp_of_ours_is_read_by_netpbm_and_pillow(self):
        for width, height in ((1, 1), (2, 3), (37, 21), (64, 2000)):
            for channels in (1, 3, 4):
                with self.subTest(size=(width, height), channels=channels):
                    array = picture(width, height, channels).reshape((height, width) if channels == 1 else (height, width, channels))
                    Image.fromarray(array).save("in.png")
                    self.convert("in.png", "ours.bmp")
                    self.same("ours.bmp", "in.png")
                    if channels < 4:  # bmptopnm leaves alpha out
                        self.peer(["bmptopnm", "-quiet", "ours.bmp"], "back.pnm")
                        self.same("back.pnm", "in.png")
                    with open("ours.bmp", "rb") as f:  # through pipes, which cannot go back
                        piped = subprocess.run([ZMX, "image", "convert", "-", "-", "--to", "bmp"], stdin=f, capture_output=True)
                    self.assertEqual(piped.returncode, 0, piped.stderr)
                    with open("ours.bmp", "rb") as f:
                        self.assertEqual(piped.stdout, f.read())

    # ---- Bitmaps

    def test_bitmaps_stay_bitmaps(self):
        bits = rng.integers(0, 2, (23, 37)).astype(bool)
        Image.fromarray(bits).save("in.png", bits=1)
        for ending in ("pbm", "tif", "bmp", "pnm", "png", "pam"):
            with self.subTest(ending):
                self.convert("in.png", f"out.{ending}")
                if ending != "pam":
                    with Image.open(f"out.{ending}") as p:
                        self.assertEqual(p.mode, "1")
                        np.testing.assert_array_equal(np.asarray(p), bits)
                self.convert(f"out.{ending}", "back.pbm")
                with Image.open("back.pbm") as p:
                    np.testing.assert_array_equal(np.asarray(p), bits)
        self.assertIn("Bits/Sample: 1", self.run_well("tiffinfo", "out.tif"))
        self.assertEqual(self.header("out.png", 25)[24], 1)
        self.assertEqual(self.header("out.pnm", 2), b"P4")

    def test_sixteen_bits_stay(self):
        self.peer(["pgmnoise", "-randomseed=3", "-maxval=65535", "31", "17"], "in.pgm")
        for ending in ("png", "tif", "pam", "pgm"):
            self.convert("in.pgm", f"out.{ending}")
            self.convert(f"out.{ending}", "back.pgm")
            with open("in.pgm", "rb") as a, open("back.pgm", "rb") as b:
                self.assertEqual(a.read(), b.read(), ending)
        self.peer(["pngtopnm", "out.png"], "theirs.pgm")
        with open("in.pgm", "rb") as a, open("theirs.pgm", "rb") as b:
            self.assertEqual(a.read(), b.read())

    # ---- TIFF

    def test_tiff_of_every_compression_tile_and_plane(self):
        Image.fromarray(picture(150, 101)).save("in.ppm")
        self.convert("in.ppm", "plain.tif")
        for compression in ("none", "lzw", "lzw:2", "zip", "zip:2", "packbits"):
            for layout in ([], ["-t", "-w", "32", "-l", "48"], ["-p", "separate"], ["-p", "separate", "-t", "-w", "16", "-l", "16"], ["-r", "1"], ["-r", "5"], ["-B"], ["-L"], ["-8"]):
                with self.subTest(compression, layout=layout):
                    subprocess.run(["tiffcp", "-c", compression, *layout, "plain.tif", "theirs.tif"], check=True)
                    self.convert("theirs.tif", "back.ppm")
                    self.same("back.ppm", "in.ppm")

    def test_tiff_palettes_of_pillow(self):
        for colours in (2, 4, 16, 200):
            with Image.fromarray(picture(60, 41)).quantize(colours) as p:
                p.save("palette.tif")
                self.convert("palette.tif", "back.png")
                np.testing.assert_array_equal(self.pixels("back.png"), np.asarray(p.convert("RGB")))

    def subsampled_ycbcr(self, path):
        """A TIFF file of YCbCr, 4:2:0, put together here: four luma samples and a pair of chroma."""
        width, height = 64, 48
        units = rng.integers(16, 240, (height // 2) * (width // 2) * 6, np.uint8).tobytes()
        tags = [(256, 4, 1, width), (257, 4, 1, height), (258, 3, 3, 150), (259, 3, 1, 1), (262, 3, 1, 6), (273, 4, 1, 156),
                (277, 3, 1, 3), (278, 4, 1, height), (279, 4, 1, len(units)), (284, 3, 1, 1), (530, 3, 2, 2 | 2 << 16)]
        with open(path, "wb") as f:
            f.write(b"II*\0" + struct.pack("<IH", 8, len(tags)))
            for tag in tags:
                f.write(struct.pack("<HHII", *tag))
            f.write(struct.pack("<I", 0) + b"\0\0\0\0" + struct.pack("<3H", 8, 8, 8))
            assert f.tell() == 156
            f.write(units)

    def test_tiff_of_ycbcr(self):
        Image.fromarray(picture(64, 48)).save("in.ppm")
        self.convert("in.ppm", "plain.tif")
        self.subsampled_ycbcr("ycc.tif")
        self.convert("ycc.tif", "back.ppm")
        subprocess.run(["tiff2rgba", "-c", "none", "ycc.tif", "rgba.tif"], check=True, stderr=subprocess.DEVNULL)
        np.testing.assert_array_equal(self.pixels("back.ppm"), self.pixels("rgba.tif")[:, :, :3])
        subprocess.run(["tiffcp", "-c", "jpeg:95", "-r", "16", "plain.tif", "jpeg.tif"], check=True)
        self.convert("jpeg.tif", "back.ppm")
        np.testing.assert_array_equal(self.pixels("back.ppm"), self.pixels("jpeg.tif"))

    def test_tiff_of_floats(self):
        values = rng.random((20, 30)).astype(np.float32)
        Image.fromarray(values).save("float.tif")
        self.convert("float.tif", "back.png")
        np.testing.assert_array_equal(self.pixels("back.png"), np.floor(values.astype(np.float64) * 65535 + 0.5).astype(np.uint16))

    def test_alpha_and_inks(self):
        Image.fromarray(picture(30, 20, 4)).save("rgba.png")
        for ending in ("tif", "pam", "bmp", "png"):
            self.convert("rgba.png", f"out.{ending}")
            self.convert(f"out.{ending}", "back.png")
            self.same("back.png", "rgba.png")
        Image.fromarray(picture(30, 20, 4), "CMYK").save("inks.tif")
        self.convert("inks.tif", "back.tif")
        with Image.open("back.tif") as p:
            self.assertEqual(p.mode, "CMYK")
        self.same("back.tif", "inks.tif")
        self.convert("inks.tif", "screen.png", "--rgb")
        with Image.open("inks.tif") as p:  # Pillow's way to RGB is the same, to the rounding
            difference = np.asarray(p.convert("RGB")).astype(int) - self.pixels("screen.png")
        self.assertLessEqual(abs(difference).max(), 1)

    # ---- Metadata

    def tagged(self, path, orientation=6):
        exif = Image.Exif()
        exif[271] = "Maker"
        exif[274] = orientation
        exif[34665] = {33434: TiffImagePlugin.IFDRational(1, 125), 36867: "2026:01:02 03:04:05"}
        profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        self.profile = profile
        xmp = b"<x:xmpmeta xmlns:x='adobe:ns:meta/'/>"
        p = Image.fromarray(picture(40, 30))
        if path.endswith(".png"):
            info = PngImagePlugin.PngInfo()
            info.add_itxt("XML:com.adobe.xmp", xmp.decode())
            p.save(path, pnginfo=info, exif=exif.tobytes(), icc_profile=profile, dpi=(300, 300))
        else:
            exif[700] = xmp
            p.save(path, icc_profile=profile, dpi=(300, 300), exif=exif.tobytes())
        return xmp

    def test_metadata_arrives(self):
        for start in ("in.png", "in.tif"):
            xmp = self.tagged(start)
            for end in ("out.png", "out.tif"):
                with self.subTest(start, end=end):
                    self.convert(start, end)
                    with Image.open(end) as p:
                        self.assertEqual(p.info.get("icc_profile"), self.profile)
                        self.assertAlmostEqual(float(p.info["dpi"][0]), 300, delta=0.02)
                        exif = p.getexif()
                        self.assertEqual(exif[271], "Maker")
                        self.assertEqual(exif[274], 6)
                        self.assertEqual(float(exif.get_ifd(34665)[33434]), 1 / 125)
                        self.assertEqual(exif.get_ifd(34665)[36867].strip("\0"), "2026:01:02 03:04:05")
                        there = p.info.get("XML:com.adobe.xmp") if end.endswith("png") else p.tag_v2[700]
                        self.assertEqual(there if isinstance(there, bytes) else there.encode(), xmp)
                    self.convert(start, end, "--strip")
                    with Image.open(end) as p:
                        self.assertNotIn("icc_profile", p.info)
                        self.assertNotIn("dpi", p.info if end.endswith("png") else {})
                        self.assertEqual([t for t in p.getexif() if t in (271, 274, 34665)], [])
            self.convert(start, "out.ppm", told="a PNM or PAM file has no place for: colour profile, EXIF, XMP, resolution")
            done = subprocess.run([ZMX, "image", "convert", start, "strict.ppm", "--strict"], capture_output=True, text=True)
            self.assertEqual(done.returncode, 1)
            self.assertFalse(os.path.exists("strict.ppm"))
            self.convert(start, "strict.ppm", "--strict", "--strip")
            os.remove("strict.ppm")

    def test_pixels_are_turned_as_pillow_turns_them(self):
        for start in ("in.png", "in.tif"):
            for orientation in range(1, 9):
                with self.subTest(start, orientation=orientation):
                    self.tagged(start, orientation)
                    self.convert(start, "out.png", "--upright")
                    with Image.open(start) as p:  # of TIFF files Pillow turns them unasked
                        p.load()
                        turned = np.asarray(p if start.endswith("tif") else ImageOps.exif_transpose(p))
                    np.testing.assert_array_equal(self.pixels("out.png"), turned)
                    with Image.open("out.png") as p:
                        self.assertEqual(p.getexif().get(274, 1), 1)


if __name__ == "__main__":
    ZMX = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)

# SPDX-License-Identifier: BSD-2-Clause
"""DDS files between zmx and Pillow: texture.py ZMX

BC7      equal to Pillow byte for byte: 131,072 random blocks of all modes, and a photograph
DXT      equal to a plain decoder written here, which with its switches set the other way is equal to Pillow: the two
         differ in the repetition of bits and in the rounding of alpha, and in nothing else; transparent texels of DXT1
         are transparent black in both
encoding what zmx writes opens in Pillow, at every size and level, and looks like the picture
headers  cube maps, arrays and chains are listed; broken and short files get one line that names the file
"""

import os
import struct
import subprocess
import sys
import tempfile
import unittest

import numpy as np
from PIL import Image

PHOTO = "/usr/share/backgrounds/mate/nature/Garden.jpg"  # Debian's mate-backgrounds
rng = np.random.default_rng(20)


def zmx(*args):
    return subprocess.run([ZMX, "dds", *args], capture_output=True, text=True)


def photograph(width, height):
    """A piece of a photograph, or, without one, of a made picture."""
    if os.path.exists(PHOTO):
        return Image.open(PHOTO).convert("RGB").crop((300, 300, 300 + width, 300 + height))
    y, x = np.mgrid[0:height, 0:width]
    smooth = np.stack([x // 3, y // 3, (x + y) // 6], -1).astype(np.uint8)
    return Image.fromarray(smooth + rng.integers(0, 12, smooth.shape, np.uint8))


def header(width, height, fourcc, levels=1, caps2=0, dx10=None):
    """The header of a DDS file; dx10 is (DXGI format, misc flag, array size)."""
    words = [0x20534444, 124, 0x81007, height, width, 0, 0, levels] + 11 * [0] + [32, 4]
    out = struct.pack("<21I4s5I", *words, fourcc, 0, 0, 0, 0, 0) + struct.pack("<5I", 0x1000, caps2, 0, 0, 0)
    return out + (struct.pack("<5I", dx10[0], 3, dx10[1], dx10[2], 0) if dx10 else b"")


def random_bc7(count):
    """Random blocks, each mode in turn; random bytes alone would be mode 0 every other time."""
    blocks = rng.integers(0, 256, (count, 16), np.uint8)
    blocks[:, 0] = (blocks[:, 0].astype(int) << 1 | 1) << np.arange(count) % 8 & 255
    return blocks


def bc7_header(width, height):
    return header(width, height, b"DX10", dx10=(98, 0, 1))


def pixels(path):
    return np.asarray(Image.open(path).convert("RGBA"))


def psnr(a, b):
    error = np.mean((a.astype(float) - b.astype(float)) ** 2)
    return 10 * np.log10(255**2 / error) if error else np.inf


def content(path):
    with open(path, "rb") as f:
        return f.read()


def raster(blocks, width, height):
    """Blocks of 16 pixels as a picture whose sides are multiples of 4."""
    return blocks.reshape(height // 4, width // 4, 4, 4, 4).transpose(0, 2, 1, 3, 4).reshape(height, width, 4)


def fields(words, bits, count):
    return words[:, None] >> (np.arange(count, dtype=np.uint64) * np.uint64(bits)) & np.uint64((1 << bits) - 1)


def plain_dxt(kind, data, ours):
    """The pixels of blocks, 16 to a block, with zmx's conventions or with those of Pillow."""
    raw = np.frombuffer(data, np.uint8).reshape(-1, 8 if kind == "DXT1" else 16)
    c0, c1 = (raw[:, -8 + 2 * i].astype(int) | raw[:, -7 + 2 * i].astype(int) << 8 for i in (0, 1))
    index = fields(np.ascontiguousarray(raw[:, -4:]).view("<u4")[:, 0].astype(np.uint64), 2, 16).astype(int)

    def widened(c):
        r, g, b = c >> 11 << 3, (c >> 5 & 63) << 2, (c & 31) << 3
        return np.stack([r, g, b] if ours else [r | r >> 5, g | g >> 6, b | b >> 5], -1)

    e0, e1 = widened(c0), widened(c1)
    palette = np.full((len(raw), 4, 4), 255 if kind == "DXT1" else 0)
    palette[:, 0, :3], palette[:, 1, :3] = e0, e1
    palette[:, 2, :3], palette[:, 3, :3] = (2 * e0 + e1) // 3, (e0 + 2 * e1) // 3
    if kind == "DXT1":
        three = c0 <= c1
        palette[three, 2, :3] = (e0[three] + e1[three]) // 2
        palette[three, 3] = 0
    out = np.take_along_axis(palette, index[:, :, None], 1)
    words = np.ascontiguousarray(raw[:, :8]).view("<u8")[:, 0]
    if kind == "DXT3":
        alpha = fields(words, 4, 16).astype(int)
        out[:, :, 3] = alpha << 4 if ours else alpha * 17
    if kind == "DXT5":
        a0, a1 = raw[:, 0].astype(int), raw[:, 1].astype(int)
        table = np.zeros((len(raw), 8), int)
        eight = [a0, a1] + [((8 - k) * a0 + (k - 1) * a1 + (3 if ours else 0)) // 7 for k in range(2, 8)]
        six = [a0, a1] + [((6 - k) * a0 + (k - 1) * a1 + (2 if ours else 0)) // 5 for k in range(2, 6)] + [0, 255]
        for k in range(8):
            table[:, k] = np.where(a0 > a1, eight[k], six[k])
        out[:, :, 3] = np.take_along_axis(table, fields(words >> np.uint64(16), 3, 16).astype(int), 1)
    return out.astype(np.uint8)


class Bits:
    """A BC7 block put together from bit 0 upward."""

    def __init__(self):
        self.value = self.count = 0

    def put(self, value, bits):
        assert 0 <= value < 1 << bits
        self.value |= value << self.count
        self.count += bits

    def bytes(self):
        assert self.count == 128
        return self.value.to_bytes(16, "little")


def packed_bc7(block, mode):
    """16 RGB pixels as a block of mode 5 or 6: the corners of their box as end-points, indexes along its diagonal."""
    lo, hi = block.min(0).astype(int), block.max(0).astype(int)
    along = ((block - lo) @ (hi - lo)) / max(1, int((hi - lo) @ (hi - lo)))
    steps = 3 if mode == 5 else 15
    index = np.rint(along * steps).astype(int)
    if index[0] > steps // 2:  # the first index has one bit less
        lo, hi, index = hi, lo, steps - index
    b = Bits()
    b.put(1 << mode, mode + 1)
    if mode == 5:
        b.put(0, 2)
    for c in range(3):
        b.put(lo[c] >> 1, 7)
        b.put(hi[c] >> 1, 7)
    for _ in range(2):
        b.put(255 if mode == 5 else 127, 8 if mode == 5 else 7)
    if mode == 6:
        b.put(3, 2)
    width = 2 if mode == 5 else 4
    for i in range(16):
        b.put(int(index[i]), width - (i == 0))
    if mode == 5:
        for i in range(16):
            b.put(0, width - (i == 0))
    return b.bytes()


def packed_picture(picture):
    """An RGB picture as BC7 blocks, of modes 5 and 6 by turns."""
    height, width = picture.shape[:2]
    padded = np.pad(picture, ((0, -height % 4), (0, -width % 4), (0, 0)), "edge")
    down, across = padded.shape[0] // 4, padded.shape[1] // 4
    blocks = padded.reshape(down, 4, across, 4, 3).transpose(0, 2, 1, 3, 4).reshape(-1, 16, 3)
    return b"".join(packed_bc7(block, 5 + i % 2) for i, block in enumerate(blocks))


class Texture(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def file(self, name, data):
        with open(self.path(name), "wb") as f:
            f.write(data)
        return self.path(name)

    def run_well(self, *args, warning=""):
        done = zmx(*args)
        self.assertEqual((done.returncode, done.stderr.split("warning: ")[-1]), (0, warning))
        return done.stdout

    def decoded(self, path, *more):
        out = self.path("decoded.png")
        self.run_well("decode", path, out, *more)
        return pixels(out)

    def test_bc7_random_blocks_of_every_mode(self):
        width, height = 2048, 1024
        blocks = random_bc7(width * height // 16)
        path = self.file("random.dds", bc7_header(width, height) + blocks.tobytes())
        self.assertGreaterEqual(len(blocks), 100_000)
        np.testing.assert_array_equal(self.decoded(path), pixels(path))

    def test_bc7_photograph(self):
        width, height = 252, 130
        picture = np.asarray(photograph(width, height))
        path = self.file("photo.dds", bc7_header(width, height) + packed_picture(picture))
        ours = self.decoded(path)
        np.testing.assert_array_equal(ours, pixels(path))
        self.assertGreater(psnr(ours[:, :, :3], picture), 32)

    def test_dxt_differs_from_pillow_as_told_and_no_further(self):
        width, height = 512, 256
        for kind, size in (("DXT1", 8), ("DXT3", 16), ("DXT5", 16)):
            with self.subTest(kind):
                blocks = rng.integers(0, 256, (width * height // 16, size), np.uint8)
                blocks[::5, -8:-6] = blocks[::5, -6:-4]  # equal colours
                blocks[::7, 0] = blocks[::7, 1]  # equal alphas
                path = self.file("random.dds", header(width, height, kind.encode()) + blocks.tobytes())
                pillow, ours = pixels(path), self.decoded(path)
                np.testing.assert_array_equal(pillow, raster(plain_dxt(kind, blocks.tobytes(), False), width, height))
                np.testing.assert_array_equal(ours, raster(plain_dxt(kind, blocks.tobytes(), True), width, height))
                self.assertFalse(np.array_equal(pillow, ours))

    def test_dx10_headers_name_the_same_formats(self):
        for kind, size, dxgi in (("DXT1", 8, 71), ("DXT3", 16, 74), ("DXT5", 16, 78)):
            data = rng.integers(0, 256, 4 * size, np.uint8).tobytes()
            old = self.decoded(self.file("old.dds", header(8, 8, kind.encode()) + data))
            new = self.decoded(self.file("new.dds", header(8, 8, b"DX10", dx10=(dxgi, 0, 1)) + data))
            np.testing.assert_array_equal(old, new)

    def test_pillow_opens_what_zmx_writes(self):
        for width, height in ((64, 64), (1, 1), (5, 3), (101, 66)):
            picture = photograph(width, height)
            picture.putalpha(Image.linear_gradient("L").resize((width, height)))
            picture.save(self.path("in.png"))
            source = np.asarray(picture)
            for kind in ("dxt1", "dxt3", "dxt5"):
                with self.subTest(kind, size=(width, height)):
                    lost = "dxt1 is written without the alpha channel\n" if kind == "dxt1" else ""
                    self.run_well("encode", self.path("in.png"), self.path("out.dds"), "--format", kind, warning=lost)
                    there = pixels(self.path("out.dds"))
                    self.assertEqual(there.shape, source.shape)
                    self.assertGreater(psnr(there[:, :, :3], source[:, :, :3]), 30)
                    if kind != "dxt1":
                        self.assertGreater(psnr(there[:, :, 3], source[:, :, 3]), 28)

    def test_levels_of_a_chain(self):
        picture = photograph(101, 66)
        picture.save(self.path("in.png"))
        self.run_well("encode", self.path("in.png"), self.path("chain.dds"), "--format", "dxt5", "--mips")
        sizes = [(101, 66), (50, 33), (25, 16), (12, 8), (6, 4), (3, 2), (1, 1)]
        listing = self.run_well("info", self.path("chain.dds"))
        self.assertIn("1 layer, 7 levels", listing)
        at = 128
        data = content(self.path("chain.dds"))
        self.run_well("decode", self.path("chain.dds"), self.path("out.png"), "--mips")
        for i, (width, height) in enumerate(sizes):
            size = (width + 3) // 4 * ((height + 3) // 4) * 16
            self.assertIn(f"level {i}: {width} x {height}, {size} bytes at {at}", listing)
            level = pixels(self.path("out.png" if i == 0 else f"out.mip{i}.png"))
            alone = self.file("alone.dds", header(width, height, b"DXT5") + data[at : at + size])
            np.testing.assert_array_equal(level, self.decoded(alone))
            self.assertGreater(psnr(level[:, :, :3], np.asarray(picture.resize((width, height), Image.BOX))), 25)
            at += size
        self.assertEqual(at, len(data))
        self.assertFalse(os.path.exists(self.path("out.mip7.png")))

    def test_ycocg_comes_back_as_the_picture(self):
        picture = photograph(203, 150)
        picture.save(self.path("in.png"))
        self.run_well("encode", self.path("in.png"), self.path("y.dds"), "--format", "ycocg-dxt5")
        self.assertIn("ycocg-dxt5", self.run_well("info", self.path("y.dds")))
        data = content(self.path("y.dds"))
        self.assertEqual(data[32:40], b"ZMXTYCG2")
        source = np.asarray(picture)
        self.assertGreater(psnr(self.decoded(self.path("y.dds"))[:, :, :3], source), 35)
        # To other programs it is a DXT5 file with luma in its alpha.
        luma = (source[:, :, 0] + 2.0 * source[:, :, 1] + source[:, :, 2]) / 4
        self.assertGreater(psnr(pixels(self.path("y.dds"))[:, :, 3], luma), 40)
        # Without the mark it is plain DXT5 to zmx too.
        plain = self.file("plain.dds", data[:32] + bytes(8) + data[40:])
        self.assertEqual(self.decoded(plain)[0, 0, 2] >> 3, data[128 + 8] & 31)

    def test_cube_maps_and_arrays(self):
        faces = [bytes([i, 2, 3, 4, 5, 6, 7, 8]) for i in range(12)]
        cube = self.file("cube.dds", header(4, 4, b"DXT1", caps2=0xFE00) + b"".join(faces[:6]))
        listing = self.run_well("info", cube)
        self.assertIn("6 layers of a cube map", listing)
        for i, name in enumerate(("+x", "-x", "+y", "-y", "+z", "-z")):
            self.assertIn(f"layer {i} (face {name}) level 0: 4 x 4, 8 bytes at {128 + 8 * i}", listing)
            alone = self.file("alone.dds", header(4, 4, b"DXT1") + faces[i])
            np.testing.assert_array_equal(self.decoded(cube, "--layer", str(i)), self.decoded(alone))
        some = self.file("some.dds", header(4, 4, b"DXT1", caps2=0x200 | 0x800 | 0x8000) + faces[0] + faces[1])
        listing = self.run_well("info", some)
        self.assertIn("layer 0 (face -x)", listing)
        self.assertIn("layer 1 (face -z)", listing)
        cubes = self.file("cubes.dds", header(4, 4, b"DX10", dx10=(70, 4, 2)) + b"".join(faces))
        self.assertIn("layer 8 (cube 1 face +y) level 0: 4 x 4, 8 bytes at 212", self.run_well("info", cubes))
        array = self.file("array.dds", header(4, 4, b"DX10", dx10=(70, 0, 3)) + b"".join(faces[:3]))
        self.assertIn("layer 2 (element 2) level 0", self.run_well("info", array))

    def refused(self, data, *words):
        path = self.file("bad.dds", data)
        for args in (("info", path), ("decode", path, self.path("never.png"))):
            done = zmx(*args)
            self.assertEqual((done.returncode, done.stdout), (1, ""), words)
            self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
            for word in ("bad.dds: ",) + words:
                self.assertIn(word, done.stderr)
            self.assertFalse(os.path.exists(self.path("never.png")))

    def test_broken_files_are_told_in_one_line(self):
        good = header(8, 8, b"DXT1", levels=4) + bytes(32 + 8 + 8 + 8)
        self.run_well("info", self.file("good.dds", good))

        def spoilt(at, value):
            return good[:at] + struct.pack("<I", value) + good[at + 4 :]

        self.refused(b"", "byte 0", "not a DDS file")
        self.refused(b"DDS!" + good[4:], "byte 0", "not a DDS file")
        self.refused(good[:127], "ends at byte 127", "header of 128 bytes")
        self.refused(spoilt(4, 120), "byte 4", "header size 120")
        self.refused(spoilt(12, 0), "byte 12", "height 0")
        self.refused(spoilt(16, 32769), "byte 16", "width 32769")
        self.refused(spoilt(28, 5), "byte 28", "level count 5, not 1 to 4")
        self.refused(spoilt(76, 24), "byte 76", "pixel format size 24")
        self.refused(spoilt(80, 0x40), "byte 80", "not compressed")
        self.refused(spoilt(84, 0x32495441), "byte 84", '"ATI2"')
        self.refused(spoilt(84, 36), "byte 84", "pixel format 36")
        self.refused(spoilt(112, 0x200), "byte 112", "without faces")
        self.refused(spoilt(112, 0x200000), "byte 112", "volume")
        self.refused(good[:-1], "ends at byte 183", "level 3 of layer 0", "promises 184 bytes")
        self.refused(good[:128], "ends at byte 128", "level 0 of layer 0")
        self.refused(spoilt(112, 0xFE00), "level 0 of layer 1", "promises 464 bytes")
        new = header(4, 4, b"DX10", dx10=(98, 0, 1)) + bytes(16)
        self.refused(new[:147], "ends at byte 147", "DX10 header of 148 bytes")
        self.refused(header(4, 4, b"DX10", dx10=(95, 0, 1)) + bytes(16), "byte 128", "DXGI format 95")
        self.refused(header(4, 4, b"DX10", dx10=(98, 0, 0)) + bytes(16), "byte 140", "array size 0")
        self.refused(header(4, 4, b"DX10", dx10=(98, 0, 2049)) + bytes(16), "byte 140", "array size 2049")
        self.refused(new[:132] + struct.pack("<I", 4) + new[136:], "byte 132", "dimension 4")

    def test_wrong_uses_are_told(self):
        self.assertIn("missing.dds: No such file", zmx("info", self.path("missing.dds")).stderr)
        good = self.file("good.dds", header(4, 4, b"DXT1") + bytes(8))
        done = zmx("decode", good, self.path("never.png"), "--layer", "1")
        self.assertEqual(done.returncode, 1)
        self.assertIn("good.dds: layer 1", done.stderr)
        photograph(4, 4).save(self.path("in.png"))
        self.assertEqual(zmx("encode", self.path("in.png"), self.path("out.dds"), "--format", "bc7").returncode, 2)
        Image.new("CMYK", (4, 4)).save(self.path("inks.tif"))
        done = zmx("encode", self.path("inks.tif"), self.path("out.dds"), "--format", "dxt5")
        self.assertEqual(done.returncode, 1)
        self.assertIn("inks.tif: a texture is made of grey or RGB, not of CMYK", done.stderr)
        self.assertFalse(os.path.exists(self.path("out.dds")))

    def test_a_dxt1_hole_is_a_hole(self):
        blocks = bytes([0x1F, 0, 0, 0xF8, 0xE4, 0xE4, 0xE4, 0xE4]) + bytes([0, 0xF8, 0x1F, 0, 0xE4, 0xE4, 0xE4, 0xE4])
        path = self.file("hole.dds", header(8, 4, b"DXT1") + blocks)
        ours, theirs = self.decoded(path), pixels(path)
        np.testing.assert_array_equal(ours[:, :, 3], theirs[:, :, 3])
        with Image.open(self.path("decoded.png")) as picture:
            self.assertEqual(picture.mode, "RGBA")
        self.assertEqual(int((ours[:, :, 3] == 0).sum()), 4)
        np.testing.assert_array_equal(ours[ours[:, :, 3] == 0], 0)
        opaque = self.file("opaque.dds", header(4, 4, b"DXT1") + blocks[8:])
        self.decoded(opaque)
        with Image.open(self.path("decoded.png")) as picture:
            self.assertEqual(picture.mode, "RGB")


if __name__ == "__main__":
    ZMX = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)

#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_example.py NAME PROGRAM: runs one of examples/ in an empty folder, and opens its file with a program from elsewhere.

What that program sees is compared with the picture that the examples draw, which is stated here anew. Exit 77: the other
program, or Pillow, is not there.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

try:
    import numpy
    from PIL import Image
except ImportError:
    if sys.executable != "/usr/bin/python3" and os.path.exists("/usr/bin/python3"):
        os.execv("/usr/bin/python3", ["/usr/bin/python3"] + sys.argv)  # Debian's has them
    print("no numpy or no Pillow")
    sys.exit(77)


def drawn(width, height, channels):
    """The picture of examples/example.h."""
    y, x = numpy.mgrid[0:height, 0:width]
    planes = []
    for c in range(channels):
        dx, dy = 2 * x - width, 2 * y - height
        disc = 4 * (dx * dx + dy * dy) < width * height * (c + 1)
        along, side = (y, height) if c == 1 else (x, width)
        v = 40 + 150 * along // side + 40 * disc + 20 * (x > 3 * width // 4)
        planes.append(255 - x * 128 // width if c == 3 else v)
    return numpy.stack(planes, axis=2).squeeze()


def run(*command, **options):
    print("$", *command)
    return subprocess.run(command, check=True, timeout=60, **options)


def peer(*command, **options):
    if not shutil.which(command[0]):
        print("no", command[0])
        sys.exit(77)
    return run(*command, **options)


def pixels(path):
    return numpy.asarray(Image.open(path)).astype(int)


def psnr(a, b):
    assert a.shape == b.shape, f"{a.shape} and {b.shape}"
    error = ((a - b) ** 2).mean()
    return 99 if error == 0 else 10 * numpy.log10(255 ** 2 / error)


def alike(a, b, least):
    found = psnr(a, b)
    print(f"{found:.1f} dB, at least {least} wanted")
    assert found >= least


def djpeg(jpeg, *flags):
    with open("peer.pnm", "wb") as out:
        peer("djpeg", "-dct", "int", *flags, jpeg, stdout=out)
    return pixels("peer.pnm")


def opj(name):
    peer("opj_decompress", "-i", name, "-o", "peer.pgm", stdout=subprocess.DEVNULL)
    return pixels("peer.pgm")


def grey_jpeg(program):
    run(program, "out.jpg")
    alike(djpeg("out.jpg"), drawn(200, 120, 1), 44)


def colour_jpeg(program):
    run(program, "out.jpg")
    alike(djpeg("out.jpg"), drawn(240, 160, 3), 38)


def decode_jpeg(program):
    encoder = pathlib.Path(program).with_name("example_colour_jpeg")
    run(str(encoder), "in.jpg")
    run(program, "in.jpg", "out.ppm")
    theirs = djpeg("in.jpg", "-nosmooth")
    alike(pixels("out.ppm"), theirs, 44)
    # Damage to the middle of the scan: all but the rows of units that were hit stays as it was.
    data = bytearray(pathlib.Path("in.jpg").read_bytes())
    for at in (len(data) // 2, len(data) // 2 + 1, len(data) // 2 + 2):
        data[at] ^= 0x5A
    pathlib.Path("damaged.jpg").write_bytes(data)
    run(program, "damaged.jpg", "damaged.ppm")
    rows = (pixels("damaged.ppm") != pixels("out.ppm")).any(axis=(1, 2)).reshape(-1, 16).any(axis=1)
    print("rows of units that differ:", int(rows.sum()), "of", len(rows))
    assert 1 <= rows.sum() <= 2


def progressive_jpeg(program):
    run(program, "out.jpg")
    assert Image.open("out.jpg").info.get("progressive"), "not progressive"
    alike(djpeg("out.jpg"), drawn(208, 128, 1), 46)


def lossless16_jpeg(program):
    run(program, "out.jpg", "out.pgm")
    peer("ffmpeg", "-y", "-loglevel", "error", "-i", "out.jpg", "-pix_fmt", "gray16be", "peer.pgm")
    assert pathlib.Path("peer.pgm").read_bytes() == pathlib.Path("out.pgm").read_bytes(), "samples differ"


def j2k_codeblock(program):
    run(program, "out.j2k", "out.pgm")
    assert (pixels("out.pgm") == drawn(64, 64, 1)).all()
    assert (opj("out.j2k") == pixels("out.pgm")).all(), "samples differ"


def j2k_tile(program):
    picture, worse = drawn(128, 128, 1), 0
    for budget, least in ((400, 30), (800, 36), (1200, 40), (9999, 99)):
        run(program, str(budget), "out.j2k", "out.pgm")
        assert os.path.getsize("out.j2k") <= budget + 120, "the budget, and 120 bytes of headers"
        alike(pixels("out.pgm"), picture, least)
        alike(opj("out.j2k"), picture, least)
        assert psnr(pixels("out.pgm"), picture) > worse, "more bytes are not better"
        worse = psnr(pixels("out.pgm"), picture)


def texture(program):
    run(program, "dxt5.dds", "bc7.dds", "bc7.ppm")
    alike(pixels("dxt5.dds"), drawn(150, 90, 4), 39)
    theirs = numpy.asarray(Image.open("bc7.dds").convert("RGB")).astype(int)
    assert (theirs == pixels("bc7.ppm")).all(), "BC7 differs"
    alike(theirs, drawn(150, 90, 3), 40)


def packbits_tiff(program):
    run(program, "out.tif")
    said = peer("tiffinfo", "-D", "out.tif", capture_output=True, text=True)
    assert "PackBits" in said.stdout and not said.stderr, said.stdout + said.stderr
    y, x = numpy.mgrid[0:300, 0:400]
    rings = ((x - 200) ** 2 + (y - 150) ** 2) // 2000 % 2
    assert (numpy.asarray(Image.open("out.tif")).astype(int) == 1 - rings).all(), "pixels differ"


def threads(program):
    run(program, "out.dds")
    alike(pixels("out.dds")[:, :, :3], drawn(512, 512, 3), 39)


def allocator(program):
    run(program, "out.j2k")
    assert (opj("out.j2k") == drawn(64, 64, 1)).all(), "samples differ"


def cplusplus(program):
    run(program, "out.jpg")
    alike(djpeg("out.jpg"), drawn(160, 96, 1), 42)


def main(name, program):
    program = os.path.abspath(program)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        globals()[name](program)
        os.chdir("/")
    print(name, "is well")


main(*sys.argv[1:])

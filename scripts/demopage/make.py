#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""make.py: takes photographs through the codecs, prints what came out, and writes a page that shows it: OUT/index.html.

scripts/demo calls it; page.py makes the page, measure.py runs the commands, pixels.py compares pictures.
"""
import argparse
import pathlib
import shutil
import subprocess
import tempfile

import measure
import page
import pixels

CLOSER = 48  # pixels a side of the part that is magnified


class Picture:
    """A decoded picture on the page, and the folder that holds it."""

    def __init__(self, folder, result, place, largest):
        self.folder, self.result = folder, result
        self.where = (f"{CLOSER} x {CLOSER} pixels at ({place[0]}, {place[1]}), where the squared error is largest. "
                      f"In the whole picture no sample is further off than {largest}.")


class Photo:
    """A photograph and all that was found out about it."""

    def __init__(self, name, shape):
        self.name, self.shape = name, shape
        self.results, self.exact, self.pictures = [], [], []


def save(lab, picture, path):
    """As a PNG, by the command itself."""
    ppm = lab.folder / "page.ppm"
    picture.write(ppm)
    lab.convert(ppm, path)


def show(lab, out, photo, original, result):
    """The decoded picture, where it differs, and the worst part of it from near by."""
    folder = f"{photo.name}/{result.codec.lower()}-{result.setting}"
    (out / folder).mkdir()
    decoded = pixels.Picture.read(lab.folder / "ours.ppm")
    differences = pixels.difference(original, decoded)
    place = pixels.worst_place(differences, CLOSER)
    bright = pixels.amplified(differences)
    save(lab, decoded, out / folder / "decoded.png")
    save(lab, bright, out / folder / "difference.png")
    for part, picture in (("original", original), ("decoded", decoded), ("difference", bright)):
        save(lab, picture.crop(*place, CLOSER), out / folder / f"closer-{part}.png")
    photo.pictures.append(Picture(folder, result, place, max(differences.samples)))


def print_row(photo, r):
    theirs = "-" if r.by_peer is None else f"{r.by_peer:.2f}"
    print(f"{photo.name:10} {r.codec:18} {r.setting!s:>10} {r.coder:13} {r.size:9} {r.rate:6.2f} {r.psnr:7.2f} {theirs:>8} "
          f"{1000 * r.encode:7.0f} {1000 * r.decode:7.0f} {r.encode_memory:6.1f} {r.decode_memory:6.1f}", flush=True)


def take(lab, out, path, short):
    """One photograph through everything."""
    name = path.stem
    (out / name).mkdir()
    ppm = lab.folder / "original.ppm"
    # Half of the photograph's size: what its own encoder left behind is averaged out.
    lab.run([lab.zmx, "jpeg", "decode", "--scale", "1/2", str(path), str(ppm), "-q", "-f"])
    original = pixels.Picture.read(ppm)
    photo = Photo(name, (original.width, original.height))
    lab.convert(ppm, out / name / "original.png")
    for codec in measure.CODECS:
        for setting in codec.short if short else codec.settings:
            for result in lab.exchange(codec, ppm, setting):
                photo.results.append(result)
                print_row(photo, result)
                if result.coder == "zmx" and setting in codec.shown:
                    show(lab, out, photo, original, result)
    for result in lab.exact(ppm):
        photo.exact.append(result)
        print_row(photo, result)
    return photo


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--zmx", type=pathlib.Path, required=True, help="the command")
    parser.add_argument("--out", type=pathlib.Path, required=True, help="a folder; what was in it goes")
    parser.add_argument("--short", action="store_true", help="a few settings, measured once")
    parser.add_argument("photos", type=pathlib.Path, nargs="+", help="JPEG files")
    options = parser.parse_args()
    shutil.rmtree(options.out, ignore_errors=True)
    options.out.mkdir(parents=True)
    zmx = options.zmx.resolve()
    version = subprocess.run([zmx, "--version"], capture_output=True, text=True, check=True).stdout.strip()
    rounds = 1 if options.short else 3
    print(f"{'':29} {'setting':>10} {'by':13} {'bytes':>9} {'bits/p':>6} {'PSNR':>7} {'by peer':>8} {'ms enc':>7} {'ms dec':>7} "
          f"{'MB enc':>6} {'MB dec':>6}")
    with tempfile.TemporaryDirectory() as folder:
        lab = measure.Lab(zmx, folder, rounds)
        photos = [take(lab, options.out, path, options.short) for path in options.photos]
    page.write(options.out, photos, version, rounds)


if __name__ == "__main__":
    main()

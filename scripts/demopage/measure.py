# SPDX-License-Identifier: BSD-2-Clause
"""measure.py: takes a photograph through a codec and through its peer, and notes size, PSNR, time and memory.

Times are of whole commands, which read and write PPM; the best of the rounds counts, and the two take turns, so that what
disturbs the machine disturbs both. Memory is the most that a command held at a time.
"""
import dataclasses
import os
import pathlib
import shutil
import subprocess
import sys
import time

# Debian's ImageMagick by its own name: `convert` may be another program.
CONVERT = "convert-im6.q16"
YCOCG = "ycocg-dxt5"  # our own arrangement of the blocks of DXT5, without a peer


@dataclasses.dataclass
class Codec:
    """A kind of file. In commands, S is the setting; IN, OUT and DDS or the like are put in by run_coder()."""
    name: str  # as people write it
    suffix: str
    settings: list  # what the curve goes through
    short: list  # the same for a quick look
    label: str  # of a setting
    ours: tuple  # arguments of zmx: encode, decode
    peer: str  # the name of the other program
    theirs: tuple  # its commands: encode, decode
    shown: list  # settings whose pictures are on the page
    timed: object  # the setting whose time and memory are on the page
    decoded: str = "ppm"  # what zmx writes; PPM has no alpha channel


JPEG = Codec(
    "JPEG", "jpg", [10, 25, 50, 75, 90, 95], [10, 75], "quality {}",
    ("jpeg encode IN OUT --quality S --sampling 420 --optimize -q", "jpeg decode IN OUT -q"),
    "libjpeg-turbo", ("cjpeg -quality S -sample 2x2 -optimize -outfile OUT IN", "djpeg -pnm -outfile OUT IN"),
    [10, 25, 75], 75)
JPEG2000 = Codec(
    "JPEG2000", "jp2", [0.125, 0.25, 0.5, 1, 2], [0.125, 1], "{} bpp",
    ("j2k encode IN OUT --lossy --rate S -q", "j2k decode IN OUT -q"),
    "OpenJPEG", ("opj_compress -i IN -o OUT -I -r RATIO", "opj_decompress -i IN -o OUT"),
    [0.125, 0.5], 1)
DXT = Codec(
    "DXT", "dds", ["dxt1", "dxt5", YCOCG], ["dxt1", YCOCG], "{}",
    ("dds encode IN OUT --format S -q", "dds decode IN OUT -q"),
    "ImageMagick", (CONVERT + " IN -alpha ALPHA -define dds:compression=S -define dds:mipmaps=0 OUT", CONVERT + " IN -depth 8 OUT"),
    ["dxt1", YCOCG], "dxt1", "pam")
CODECS = [JPEG, JPEG2000, DXT]

# Without loss there is no curve: a row each.
EXACT = [("JPEG, lossless", "jpg", "jpeg encode IN OUT --lossless 1 -q", "jpeg decode IN OUT -q"),
         ("JPEG2000, lossless", "jp2", "j2k encode IN OUT -q", "j2k decode IN OUT -q"),
         ("TIFF, PackBits", "tif", "tiff encode IN OUT -q", "tiff decode IN OUT -q")]


@dataclasses.dataclass
class Result:
    """What became of a photograph. Sizes in bytes, times in seconds, memory in megabytes, PSNR in dB."""
    codec: str
    coder: str
    setting: object
    label: str
    size: int
    rate: float  # bits a pixel
    psnr: float
    encode: float
    decode: float
    encode_memory: float
    decode_memory: float
    by_peer: float = None  # PSNR of our file, decoded by the peer


class Lab:
    """Runs the commands in a folder of its own."""

    def __init__(self, zmx, folder, rounds):
        self.zmx, self.folder, self.rounds = str(zmx), pathlib.Path(folder), rounds

    def run(self, command):
        """Seconds and megabytes."""
        # A process begins with the memory of the one that starts it, so a small program does: time(1).
        note = self.folder / "memory"
        words = ["/usr/bin/time", "-o", str(note), "-f", "%M"] + command
        begin = time.monotonic()
        done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        seconds = time.monotonic() - begin
        if done.returncode:
            sys.exit(f"demo: {' '.join(command)}: exit {done.returncode}\n{done.stdout.decode(errors='replace')}")
        return seconds, int(note.read_text()) / 1024

    def best(self, commands):
        """The best time and the most memory of each command; the commands take turns."""
        seen = [[self.run(command) for command in commands] for _ in range(self.rounds)]
        return [(min(s for s, _ in runs), max(m for _, m in runs)) for runs in zip(*seen)]

    def words(self, template, source, target, setting=None, ours=True):
        numbers = {"S": str(setting), "IN": str(source), "OUT": str(target)}
        if "RATIO" in template:
            numbers["RATIO"] = f"{24 / setting:g}"  # a rate, said as the ratio to 24 bits a pixel
        if "ALPHA" in template:
            numbers["ALPHA"] = "set" if setting == "dxt5" else "off"  # without alpha it writes DXT1 whatever was asked for
        return ([self.zmx] if ours else []) + [numbers.get(word, word.replace("=S", f"={setting}")) for word in template.split()]

    def psnr(self, one, other):
        done = subprocess.run([self.zmx, "image", "compare", str(one), str(other)], capture_output=True, text=True, check=True)
        return float(done.stdout.split()[1])

    def convert(self, source, target, *options):
        self.run([self.zmx, "image", "convert", str(source), str(target), "-q", "-f", *options])

    def exchange(self, codec, photo, setting):
        """Ours and theirs at one setting; the file that we wrote is decoded by the peer too. The decoded picture stays."""
        ours, theirs = (self.folder / f"{name}.{codec.suffix}" for name in ("ours", "theirs"))
        has_peer = peer_is_there(codec) and setting != YCOCG
        coders = [(ours, "zmx", codec.ours, True)] + ([(theirs, codec.peer, codec.theirs, False)] if has_peer else [])
        encodes = self.best([self.words(both[0], photo, file, setting, own) for file, _, both, own in coders])
        decoded = [file.with_suffix("." + codec.decoded if own else ".ppm") for file, _, _, own in coders]
        decodes = self.best([self.words(both[1], file, to, setting, own) for (file, _, both, own), to in zip(coders, decoded)])
        if codec.decoded != "ppm":
            self.convert(decoded[0], ours.with_suffix(".ppm"), "--no-alpha")
        pixels = pixels_of(photo)
        for (file, coder, _, own), (encode, most), (decode, most_decoding) in zip(coders, encodes, decodes):
            size = file.stat().st_size
            result = Result(codec.name, coder, setting, codec.label.format(setting), size, 8 * size / pixels,
                            self.psnr(photo, file.with_suffix(".ppm")), encode, decode, most, most_decoding)
            if own and has_peer:
                exchanged = self.folder / "exchanged.ppm"
                self.run(self.words(codec.theirs[1], file, exchanged, setting, False))
                result.by_peer = self.psnr(photo, exchanged)
            yield result

    def exact(self, photo):
        """The codecs without loss."""
        for label, suffix, encoding, decoding in EXACT:
            file = self.folder / f"exact.{suffix}"
            (encode, most), = self.best([self.words(encoding, photo, file)])
            (decode, most_decoding), = self.best([self.words(decoding, file, self.folder / "exact.ppm")])
            size = file.stat().st_size
            yield Result(label, "zmx", "", label, size, 8 * size / pixels_of(photo), self.psnr(photo, self.folder / "exact.ppm"),
                         encode, decode, most, most_decoding)


def pixels_of(photo):
    with open(photo, "rb") as file:
        width, height = file.read(40).split()[1:3]
    return int(width) * int(height)


def peer_is_there(codec):
    return all(shutil.which(command.split()[0]) for command in codec.theirs)


def processors():
    return len(os.sched_getaffinity(0))

// files.mjs: the files that the viewer is tested with, made by the zmx command and by other programs, and what zmx decodes of them.
// SPDX-License-Identifier: BSD-2-Clause
import { execFileSync } from "node:child_process";
import { existsSync, mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";

const PHOTO = "/usr/share/backgrounds/mate/nature/Dune.jpg";
export const folder = join(process.env.ZMX_WEB_OUT, "files");
mkdirSync(folder, { recursive: true });

export const at = (name) => join(folder, name);

function run(program, ...words) {
    return execFileSync(program, words, { cwd: folder, stdio: ["ignore", "pipe", "pipe"] });
}
export const zmx = (...words) => run(process.env.ZMX_COMMAND, ...words);

/** Grey of this depth: waves and an edge, that fill only a part of the range, as a scanner's do. */
function greyMap(name, width, height, most) {
    const wide = most > 255;
    const head = Buffer.from(`P5\n${width} ${height}\n${most}\n`);
    const body = Buffer.alloc(width * height * (wide ? 2 : 1));
    for (let y = 0, to = 0; y < height; y++) {
        for (let x = 0; x < width; x++) {
            const wave = Math.sin(x / 37) * Math.cos(y / 53) + ((x >> 7) + (y >> 7)) % 2;
            const v = Math.round(most * (0.1 + 0.15 * (wave + 1)));
            to = wide ? body.writeUInt16BE(v, to) : body.writeUInt8(v, to);
        }
    }
    writeFileSync(at(name), Buffer.concat([head, body]));
}

/** Squares of 100 pixels, each of its own grey: a large picture that takes no long time to encode. */
function squares(name, size, side) {
    const row = Buffer.alloc(size);
    const rows = [];
    for (let y = 0; y < size; y++) {
        if (y % side === 0) for (let x = 0; x < size; x++) row[x] = (Math.floor(x / side) * 37 + (y / side) * 101) % 256;
        rows.push(Buffer.from(row));
    }
    writeFileSync(at(name), Buffer.concat([Buffer.from(`P5\n${size} ${size}\n255\n`), ...rows]));
}

// How each file is made. Others are named first when a file needs them.
const RECIPES = {
    "photo.ppm": () => zmx("jpeg", "decode", PHOTO, "photo.ppm", "--scale", "1/2", "--strip", "-f"),
    "photo.png": () => zmx("image", "convert", need("photo.ppm"), "photo.png"),
    "photo.bmp": () => zmx("image", "convert", need("photo.ppm"), "photo.bmp"),
    "photo.jpg": () => zmx("jpeg", "encode", need("photo.ppm"), "photo.jpg", "--progressive"),
    "lossless.jp2": () => zmx("j2k", "encode", need("photo.ppm"), "lossless.jp2"),
    "lossy.jp2": () => zmx("j2k", "encode", need("photo.ppm"), "lossy.jp2", "--lossy", "--rate", "1"),
    "tiled.j2k": () => zmx("j2k", "encode", need("photo.ppm"), "tiled.j2k", "--tile", "200,130", "--origin", "7,5"),
    "peer.jp2": () => run("opj_compress", "-i", need("photo.ppm"), "-o", "peer.jp2", "-r", "20", "-I"),
    "deep.pgm": () => greyMap("deep.pgm", 700, 500, 65535),
    "deep.jp2": () => zmx("j2k", "encode", need("deep.pgm"), "deep.jp2"),
    "deep.png": () => zmx("image", "convert", need("deep.pgm"), "deep.png"),
    "deep.tif": () => zmx("image", "convert", need("deep.pgm"), "deep.tif"),
    "scan.jpg": () => zmx("jpeg", "encode", need("deep.pgm"), "scan.jpg", "--lossless", "1"),
    "twelve.pgm": () => greyMap("twelve.pgm", 640, 480, 4095),
    "twelve.jpg": () => zmx("jpeg", "encode", need("twelve.pgm"), "twelve.jpg", "--precision", "12"),
    "brick.dds": () => zmx("dds", "encode", need("photo.ppm"), "brick.dds", "--format", "dxt1", "--mips"),
    "alpha.png": () => run("convert", need("photo.ppm"), "-resize", "400x250!", "(", "-size", "400x250", "gradient:", ")",
        "-alpha", "off", "-compose", "CopyOpacity", "-composite", "alpha.png"),
    "alpha.dds": () => zmx("dds", "encode", need("alpha.png"), "alpha.dds", "--format", "dxt5"),
    "print.tif": () => run("convert", need("photo.ppm"), "-colorspace", "CMYK", "-compress", "lzw", "print.tif"),
    "turned.jpg": () => {
        run("cjpeg", "-quality", "90", "-outfile", "turned.jpg", need("photo.ppm"));
        run("exiftool", "-q", "-overwrite_original", "-n", "-Orientation=6", "turned.jpg");
    },
    "damaged.jp2": () => {
        const bytes = readFileSync(at(need("lossless.jp2")));
        const third = Math.floor(bytes.length / 3);
        bytes.fill(0x55, third, third + 400);
        writeFileSync(at("damaged.jp2"), bytes.subarray(0, 2 * third));
    },
    "hostile.jp2": () => {
        // Says that it is 2^31 - 1 pixels wide and high, and ends there.
        const bytes = Buffer.from(readFileSync(at(need("lossless.jp2"))));
        const size = bytes.indexOf(Buffer.from([0xff, 0x51]));
        bytes.writeUInt32BE(0x7fffffff, size + 6);
        bytes.writeUInt32BE(0x7fffffff, size + 10);
        writeFileSync(at("hostile.jp2"), bytes.subarray(0, 2000));
    },
    "garbage.jpg": () => writeFileSync(at("garbage.jpg"), Buffer.from("\xff\xd8\xff\xc0 no picture at all", "latin1")),
    "notes.txt": () => writeFileSync(at("notes.txt"), "no picture\n"),
    "big.jp2": () => {
        squares("big.pgm", 10000, 100);
        zmx("j2k", "encode", "big.pgm", "big.jp2", "-q");
    },
};

/** All of them, ahead of tests that run side by side. */
export function makeAll() {
    Object.keys(RECIPES).forEach(need);
}

/** The name of a file, made when it is not there. */
export function need(name) {
    if (!existsSync(at(name))) RECIPES[name]();
    return name;
}

export const paths = (...names) => names.map((name) => at(need(name)));

const KINDS = { jp2: "j2k", j2k: "j2k", jpg: "jpeg", dds: "dds", tif: "", png: "", bmp: "", ppm: "", pgm: "" };

/** A PAM file as {width, height, channels, data}. */
function readPam(name) {
    const bytes = readFileSync(at(name));
    const end = bytes.indexOf("ENDHDR\n") + 7;
    const field = (word) => Number(new RegExp(`${word} (\\d+)`).exec(bytes.toString("latin1", 0, end))[1]);
    return { width: field("WIDTH"), height: field("HEIGHT"), channels: field("DEPTH"), data: bytes.subarray(end) };
}

/** What the command decodes, in 8 bits, upright, with inks as RGB. `options` are those of the decoder. */
export function native(name, options = []) {
    const kind = KINDS[name.slice(name.lastIndexOf(".") + 1)];
    const out = `${name}.${options.join("")}`.replace(/[^\w.]/g, "_");
    if (kind) zmx(kind, "decode", need(name), `${out}.tif`, "-f", "-q", ...options);
    zmx("image", "convert", kind ? `${out}.tif` : need(name), `${out}.pam`, "--upright", "--depth", "8", "-f", "-q");
    const plain = readPam(`${out}.pam`);
    if (plain.channels !== 4 || !name.startsWith("print")) return plain;
    zmx("image", "convert", need(name), `${out}.pam`, "--rgb", "--depth", "8", "-f", "-q");
    return readPam(`${out}.pam`);
}

// SPDX-License-Identifier: BSD-2-Clause
// files.js - a file of each kind, made by the command, and how the command decodes it.
import { madePicture, pamOf, zmx } from "./support.js";

const GREY8 = madePicture(97, 61, 1, 8), RGB8 = madePicture(101, 67, 3, 8), RGBA8 = madePicture(96, 64, 4, 8);
const GREY12 = madePicture(90, 50, 1, 12), GREY16 = madePicture(77, 55, 1, 16), RGB16 = madePicture(64, 48, 3, 16);
const CMYK8 = madePicture(80, 60, 4, 8, "cmyk"), GREYA8 = madePicture(60, 40, 2, 8);

const make = (picture, words, ending) => zmx(words, pamOf(picture), [".pam", ending]);
const jpeg = (picture, ...words) => make(picture, ["jpeg", "encode", "IN", "OUT", ...words], ".jpg");
const j2k = (picture, ending, ...words) => make(picture, ["j2k", "encode", "IN", "OUT", ...words], ending);
const dds = (picture, ...words) => make(picture, ["dds", "encode", "IN", "OUT", ...words], ".dds");
const image = (picture, ending) => make(picture, ["image", "convert", "IN", "OUT"], ending);

const JPEG = ["jpeg", "decode", "IN", "OUT"], J2K = ["j2k", "decode", "IN", "OUT"], DDS = ["dds", "decode", "IN", "OUT"];
const IMAGE = ["image", "convert", "IN", "OUT"], TIFF = ["tiff", "decode", "IN", "OUT"];

/** Name, kind, ending, bytes, the command that decodes it, and the picture it was made of where nothing is lost. */
export const files = [
  ["baseline JPEG", "jpeg", ".jpg", jpeg(RGB8, "--quality", "90"), JPEG],
  ["grey JPEG", "jpeg", ".jpg", jpeg(GREY8), JPEG],
  ["progressive JPEG", "jpeg", ".jpg", jpeg(RGB8, "--progressive", "--sampling", "422"), JPEG],
  ["JPEG with restarts", "jpeg", ".jpg", jpeg(RGB8, "--restart", "3", "--sampling", "444"), JPEG],
  ["12-bit JPEG", "jpeg", ".jpg", jpeg(GREY12, "--precision", "12"), JPEG],
  ["lossless JPEG", "jpeg", ".jpg", jpeg(GREY16, "--lossless", "1"), JPEG, GREY16],
  ["lossless JPEG of colours", "jpeg", ".jpg", jpeg(RGB8, "--lossless", "4"), JPEG, RGB8],
  ["CMYK JPEG", "jpeg", ".jpg", jpeg(CMYK8, "--ycck"), JPEG],
  ["JP2", "jpeg2000", ".jp2", j2k(RGB8, ".jp2"), J2K, RGB8],
  ["codestream", "jpeg2000", ".j2k", j2k(RGB8, ".j2k", "--tile", "40,30", "--order", "RPCL"), J2K, RGB8],
  ["layers", "jpeg2000", ".jp2", j2k(RGB8, ".jp2", "--lossy", "--rate", "0.5,2,8"), J2K],
  ["16-bit JP2", "jpeg2000", ".jp2", j2k(GREY16, ".jp2", "--levels", "3"), J2K, GREY16],
  ["signed JP2", "jpeg2000", ".jp2", j2k(GREY12, ".jp2", "--signed"), J2K, GREY12],
  ["JP2 with alpha", "jpeg2000", ".jp2", j2k(RGBA8, ".jp2"), J2K, RGBA8],
  ["DXT1", "dds", ".dds", dds(RGB8, "--format", "dxt1", "--mips"), DDS],
  ["DXT3", "dds", ".dds", dds(RGBA8, "--format", "dxt3"), DDS],
  ["DXT5", "dds", ".dds", dds(RGBA8, "--format", "dxt5"), DDS],
  ["YCoCg DXT5", "dds", ".dds", dds(RGB8, "--format", "ycocg-dxt5"), DDS],
  ["Deflate TIFF", "tiff", ".tif", image(RGB16, ".tif"), IMAGE, RGB16],
  ["CMYK TIFF", "tiff", ".tif", image(CMYK8, ".tif"), IMAGE, CMYK8],
  ["PackBits TIFF", "tiff", ".tif", make(RGB8, ["tiff", "encode", "IN", "OUT"], ".tif"), TIFF, RGB8],
  ["split TIFF", "tiff", ".tif", make(GREY16, ["tiff", "encode", "IN", "OUT", "--split16"], ".tif"), TIFF, GREY16],
  ["PNG", "png", ".png", image(RGBA8, ".png"), IMAGE, RGBA8],
  ["16-bit PNG", "png", ".png", image(RGB16, ".png"), IMAGE, RGB16],
  ["PNG of grey and alpha", "png", ".png", image(GREYA8, ".png"), IMAGE, GREYA8],
  ["BMP", "bmp", ".bmp", image(RGB8, ".bmp"), IMAGE, RGB8],
  ["PPM", "pnm", ".ppm", image(RGB8, ".ppm"), IMAGE, RGB8],
  ["16-bit PGM", "pnm", ".pgm", image(GREY16, ".pgm"), IMAGE, GREY16],
  ["PAM", "pnm", ".pam", new Uint8Array(pamOf(RGBA8)), IMAGE, RGBA8],
].map(([name, kind, ending, bytes, command, original]) => ({ name, kind, ending, bytes, command, original }));

/** A file by its name. */
export const fileNamed = (name) => files.find((file) => file.name === name);
export const pictures = { GREY8, RGB8, RGBA8, GREY12, GREY16, RGB16, CMYK8, GREYA8 };

// SPDX-License-Identifier: BSD-2-Clause
// support.js - pictures made by a rule, the command, and its PAM files. The environment tells where things are:
// ZMX_COMMAND, the command; ZMX_NPM, the folder of the package.
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

export const packageFolder = process.env.ZMX_NPM;
export const { load, ZmxError } = await import(pathToFileURL(join(packageFolder, "index.js")));

const folder = mkdtempSync(join(tmpdir(), "zmx-web-"));
process.on("exit", () => rmSync(folder, { recursive: true, force: true }));
let files = 0;

/** A file that is there until the end. */
export function fileOf(bytes, ending) {
  const name = join(folder, `${(files += 1)}${ending}`);
  writeFileSync(name, bytes);
  return name;
}

/** What the command makes of bytes: words, with IN and OUT for the names of the files. */
export function zmx(words, bytes, [from, to]) {
  const input = fileOf(bytes, from);
  const output = join(folder, `${(files += 1)}${to}`);
  const names = { IN: input, OUT: output };
  execFileSync(process.env.ZMX_COMMAND, words.map((word) => names[word] ?? word), { stdio: ["ignore", "pipe", "pipe"] });
  return new Uint8Array(readFileSync(output));
}

/** What the command prints. */
export function printed(words, bytes, ending) {
  const input = fileOf(bytes, ending);
  return execFileSync(process.env.ZMX_COMMAND, words.map((word) => (word === "IN" ? input : word)), { encoding: "utf8" })
    .replaceAll(`${input}: `, "");
}

/** Smooth shades, edges, and noise from a fixed seed: what codecs meet in pictures. */
export function madePicture(width, height, channels, bits, colour) {
  const data = new (bits > 8 ? Uint16Array : Uint8Array)(width * height * channels);
  const most = 2 ** bits - 1;
  let seed = 12345;
  for (let y = 0, i = 0; y < height; y += 1)
    for (let x = 0; x < width; x += 1)
      for (let c = 0; c < channels; c += 1, i += 1) {
        seed = (Math.imul(seed, 1664525) + 1013904223) >>> 0;
        const shade = (x / width) * 0.5 + (y / height) * 0.3 + ((x >> 4) + (y >> 4) + c) % 2 * 0.15;
        data[i] = Math.round(most * Math.min(1, shade + (seed / 2 ** 32) * 0.05));
      }
  return { width, height, channels, bits, data, ...(colour && { colour }) };
}

const KINDS = { grey: "GRAYSCALE", greya: "GRAYSCALE_ALPHA", rgb: "RGB", rgba: "RGB_ALPHA", cmyk: "CMYK" };
const COLOURS = Object.fromEntries(Object.entries(KINDS).map(([colour, kind]) => [kind, colour]));

/** PAM: words come with their high byte first. */
export function pamOf({ width, height, channels, bits, data, colour }) {
  const kind = KINDS[colour ?? ["grey", "greya", "rgb", "rgba"][channels - 1]];
  const head = `P7\nWIDTH ${width}\nHEIGHT ${height}\nDEPTH ${channels}\nMAXVAL ${2 ** bits - 1}\nTUPLTYPE ${kind}\nENDHDR\n`;
  const body = bits > 8 ? Buffer.from(data.buffer, data.byteOffset, data.byteLength) : Buffer.from(data);
  return Buffer.concat([Buffer.from(head), bits > 8 ? Buffer.from(body).swap16() : body]);
}

export function pictureOf(pam) {
  const text = Buffer.from(pam.buffer, pam.byteOffset, pam.byteLength);
  const end = text.indexOf("ENDHDR\n") + 7;
  const words = Object.fromEntries(text.subarray(0, end).toString("latin1").split("\n").map((line) => line.split(" ")));
  const bits = Math.log2(Number(words.MAXVAL) + 1);
  const body = Buffer.from(text.subarray(end));
  const data = bits > 8 ? new Uint16Array(body.swap16().buffer, body.byteOffset, body.length / 2) : new Uint8Array(body);
  return { width: Number(words.WIDTH), height: Number(words.HEIGHT), channels: Number(words.DEPTH), bits,
    colour: COLOURS[words.TUPLTYPE] ?? words.TUPLTYPE, data: data.slice() };
}

/** The samples and what they mean, without what else a decoder says. */
export function plain({ width, height, channels, bits, colour, data }) {
  return { width, height, channels, bits, colour, data };
}

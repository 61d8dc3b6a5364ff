// SPDX-License-Identifier: BSD-2-Clause
// bench.js PHOTO.ppm ROUNDS: the package beside npm's builds of OpenJPEG and libjpeg-turbo, by turns in one process. A round has
// each of them once, in changing order; medians of the rounds are printed, and the peer's time over ours.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

const require = createRequire(import.meta.url);
const { load } = await import(pathToFileURL(join(process.env.ZMX_NPM, "index.js")));
const [, , photo, rounds] = process.argv;

const zmx = await load(), slow = await load({ simd: false });
const quiet = { print: () => {}, printErr: () => {} };
const openjpeg = await require("@cornerstonejs/codec-openjpeg/wasmjs")(quiet);
const turbo = await require("@cornerstonejs/codec-libjpeg-turbo-8bit/wasmjs")(quiet);

const picture = zmx.decode(readFileSync(photo));
const { width, height, data } = picture;
const frame = { width, height, bitsPerSample: 8, componentCount: 3, isSigned: false };

// The peers keep an encoder and a decoder, as their users do. Each gives bytes that are the caller's own, as ours does.
function coder(module, decoderName, encoderName) {
  const decoder = new module[decoderName](), encoder = new module[encoderName]();
  return {
    decode(bytes) {
      decoder.getEncodedBuffer(bytes.length).set(bytes);
      decoder.decode();
      return decoder.getDecodedBuffer().slice();
    },
    encode(set) {
      encoder.getDecodedBuffer(frame).set(data);
      set(encoder);
      encoder.encode();
      return encoder.getEncodedBuffer().slice();
    },
  };
}
const jp = coder(openjpeg, "J2KDecoder", "J2KEncoder"), tj = coder(turbo, "JPEGDecoder", "JPEGEncoder");

// At a tenth of the samples the peer makes files of the same size as ours.
const lossless = (encoder) => encoder.setQuality(true, 0);
const lossy = (encoder) => {
  encoder.setQuality(false, 0);
  encoder.setCompressionRatio(0, 10);
};
const baseline = (encoder) => {
  encoder.setQuality(85);
  encoder.setProgressive(false);
  encoder.setSubSampling(2); // 4:2:0
};
const files = {
  lossless: zmx.encode(picture, { format: "jpeg2000" }).bytes,
  lossy: zmx.encode(picture, { format: "jpeg2000", ratio: 10 }).bytes,
  baseline: zmx.encode(picture, { format: "jpeg", quality: 85 }).bytes,
};

const rows = [
  ["decode JPEG2000, lossless", (z) => z.decode(files.lossless).data, () => jp.decode(files.lossless)],
  ["decode JPEG2000, 1:10", (z) => z.decode(files.lossy).data, () => jp.decode(files.lossy)],
  ["encode JPEG2000, lossless", (z) => z.encode(picture, { format: "jpeg2000" }).bytes, () => jp.encode(lossless)],
  ["encode JPEG2000, 1:10", (z) => z.encode(picture, { format: "jpeg2000", ratio: 10 }).bytes, () => jp.encode(lossy)],
  ["decode JPEG", (z) => z.decode(files.baseline).data, () => tj.decode(files.baseline)],
  ["encode JPEG", (z) => z.encode(picture, { format: "jpeg", quality: 85 }).bytes, () => tj.encode(baseline)],
  ["encode JPEG, fast", (z) => z.encode(picture, { format: "jpeg", quality: 85, fast: true }).bytes, () => tj.encode(baseline)],
];

const median = (times) => [...times].sort((a, b) => a - b)[times.length >> 1];
// The processor's time, so that a machine that does something else as well tells the same.
function timed(call) {
  const begin = process.cpuUsage();
  call();
  const { user, system } = process.cpuUsage(begin);
  return (user + system) / 1000;
}

const text = (n, digits) => n.toFixed(digits).padStart(9);
console.log(`${width} x ${height}, ${rounds} rounds, milliseconds of processor time; above 1: we are ahead`);
console.log(`${"".padEnd(28)}${["ours", "no simd", "peer", "ratio", "bytes", "peer's"].map((word) => word.padStart(10)).join("")}`);
for (const [name, ours, peer] of rows) {
  const calls = [() => ours(zmx), () => ours(slow), peer], times = [[], [], []];
  const sizes = calls.map((call) => call().length); // and what is compiled late is compiled now
  calls.forEach((call) => call());
  for (let round = 0; round < Number(rounds); round += 1)
    for (let i = 0; i < calls.length; i += 1) {
      const turn = (i + round) % calls.length;
      times[turn].push(timed(calls[turn]));
    }
  const [mine, plain, theirs] = times.map(median);
  console.log(`${name.padEnd(28)} ${[text(mine, 1), text(plain, 1), text(theirs, 1), text(theirs / mine, 2)].join(" ")}`
    + ` ${String(sizes[0]).padStart(9)} ${String(sizes[2]).padStart(9)}`);
}

// SPDX-License-Identifier: BSD-2-Clause
// in_browser.js - the program of the guide "In the browser". It uses nothing that only browsers or only node have.
//! [load]
import { load, ZmxError } from "zmxjpx";

const zmx = await load(); // one module, for as many pictures as there are
//! [load]

function expect(fact, what) {
  if (!fact) throw new Error(what);
}

// A picture to begin with, as a canvas gives it: 8 bits of red, green, blue and alpha.
const canvas = { width: 640, height: 480, data: new Uint8ClampedArray(640 * 480 * 4) };
for (let i = 0; i < canvas.data.length; i += 4) {
  const x = (i / 4) % 640, y = Math.floor(i / 4 / 640);
  canvas.data.set([(x * 255) / 639, (y * 255) / 479, ((x >> 3) + (y >> 3)) % 2 ? 200 : 0, 255], i);
}

//! [codecs]
const { bytes: file } = zmx.encode(canvas, { format: "jpeg2000" }); // lossless, as long as nothing else is asked for
const picture = zmx.decode(file);
const shown = new Uint8ClampedArray(picture.data.buffer); // what ImageData takes, where there are four channels of 8 bits

const { bytes: small } = zmx.encode(picture, { format: "jpeg2000", rate: [0.5, 2] }); // two layers, by bits a pixel
//! [codecs]
expect(shown.every((sample, i) => sample === canvas.data[i]), "lossless");
expect(small.length < 1.02 * (640 * 480 * 2) / 8, "2 bits a pixel");

//! [info]
const info = zmx.info(file);
const lines = [`${info.width} x ${info.height}, ${info.components.length} components of ${info.components[0].bits} bits`,
  `can be halved ${info.levels} times`, info.text];
//! [info]
expect(lines[0] === "640 x 480, 4 components of 8 bits" && info.levels === 5, "info");

//! [parts]
const image = zmx.open(file); // the bytes stay in the module, for window after window
const thumbnail = image.decode({ reduce: 3 }); // an eighth of each side
const part = image.decode({ window: { x: 200, y: 100, width: 64, height: 48 } });
const red = image.decode({ component: 0 });
image.close();
//! [parts]
expect(thumbnail.width === 80 && thumbnail.height === 60 && part.width === 64 && red.channels === 1, "parts");
expect(part.data[0] === canvas.data[4 * (640 * 100 + 200)], "the corner of the part");

//! [depth]
const scan = { width: 512, height: 512, bits: 12, data: new Uint16Array(512 * 512).map((_, i) => i % 4096) };
const lossless = zmx.encode(scan, { format: "jpeg", lossless: true }).bytes;
const { data, bits } = zmx.decode(lossless); // words, of which the lowest 12 bits are used

const [low, high] = [1000, 3000]; // the window of values that is spread from black to white
const grey = Uint8ClampedArray.from(data, (value) => ((value - low) * 255) / (high - low));
//! [depth]
expect(bits === 12 && data.every((value, i) => value === scan.data[i]) && grey[2000] === 128, "12 bits");

//! [damage]
const { bytes: photo } = zmx.encode({ ...part, channels: 4, colour: "cmyk" }, { format: "jpeg", quality: 90 });
const partly = zmx.decode(photo.subarray(0, photo.length * 0.6));
if (partly.damaged) lines.push(...partly.warnings); // what cannot be decoded is grey
try {
  zmx.decode(photo.subarray(0, 30));
} catch (error) {
  if (!(error instanceof ZmxError)) throw error;
  lines.push(error.message); // one line that says what and where
}
//! [damage]
expect(partly.damaged && lines.length > 4, "damage is told");

//! [transcode]
const turned = zmx.transcode(photo, { rotate: 90, progressive: true }).bytes; // no coefficient changes
//! [transcode]
expect(zmx.info(turned).width === 48 && zmx.info(turned).progressive, "turned");

//! [memory]
const before = zmx.memory; // of the largest picture so far
zmx.reset(); // another instance of the module: open images are closed
//! [memory]
expect(zmx.memory < before, "memory is given back");

//! [raw]
const { malloc, free, functions, HEAPU8, HEAP16, HEAP32, sizeOf } = zmx.raw;
const [from, to, size] = [malloc(8), malloc(16), malloc(sizeOf("ZmxiSize"))];
HEAPU8.set([0, 1, 64, 127, 128, 129, 192, 255], from);
HEAP32.set([8, 1], size / 4); // structures go by pointer
const status = functions.zmxiSub128_JPEG_8u16s_C1R(from, 8, to, 16, size);
const centred = [...HEAP16.subarray(to / 2, to / 2 + 8)];
[from, to, size].forEach(free);
//! [raw]
expect(status === 0 && centred.join() === "-128,-127,-64,-1,0,1,64,127", "raw");

console.log(lines.join("\n"));

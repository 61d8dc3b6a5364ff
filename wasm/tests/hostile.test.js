// SPDX-License-Identifier: BSD-2-Clause
// hostile.test.js - damaged, cut and forged files, pictures too large, and memory: errors, and the next call works.
import assert from "node:assert/strict";
import { test } from "node:test";

import { fileNamed, files, pictures } from "./files.js";
import { load, madePicture, ZmxError } from "./support.js";

const web = await load();

/** Decodes what may be anything; only our own errors may come of it. */
function tried(bytes, options) {
  for (const call of [() => web.decode(bytes, options), () => web.info(bytes)])
    try {
      call();
    } catch (error) {
      assert.ok(error instanceof ZmxError, `${error.stack}`);
      assert.ok(error.message.length > 0);
      assert.doesNotMatch(error.message, /started anew/, "no file may lead to a trap");
    }
}

test("a cut JPEG or JPEG2000 file gives what there is, with warnings", () => {
  for (const name of ["baseline JPEG", "progressive JPEG", "lossless JPEG", "JP2", "layers"]) {
    const { bytes } = fileNamed(name);
    const cut = bytes.subarray(0, Math.floor(bytes.length * 0.7));
    const picture = web.decode(cut);
    assert.equal(picture.damaged, true, name);
    assert.ok(picture.warnings.length > 0, name);
    assert.equal(picture.data.length, picture.width * picture.height * picture.channels, name);
    for (const options of [{ strict: true }, { damage: false }])
      assert.throws(() => web.decode(cut, options), { name: "ZmxError", message: picture.warnings[0] }, name);
  }
});

test("each file at each length is an error or a picture", () => {
  for (const { bytes } of files) {
    const step = Math.max(1, Math.floor(bytes.length / 25));
    for (let length = 0; length < bytes.length; length += step) tried(bytes.subarray(0, length), { maxPixels: 2 ** 20 });
  }
});

test("bytes that were changed at random are an error or a picture", () => {
  let seed = 1;
  const random = (below) => {
    seed = (Math.imul(seed, 1103515245) + 12345) >>> 0;
    return (seed >>> 8) % below;
  };
  for (const { bytes } of files)
    for (let round = 0; round < 12; round += 1) {
      const forged = bytes.slice();
      const reach = round < 8 ? Math.min(forged.length, 200) : forged.length; // mostly in the headers
      for (let i = 0; i <= round % 4; i += 1) forged[random(reach)] = random(256);
      tried(forged, { maxPixels: 2 ** 20 });
    }
  // The module is as sound as it was.
  assert.deepEqual(web.decode(fileNamed("JP2").bytes).data, pictures.RGB8.data);
});

test("what is no file, no option and no picture is refused by name", () => {
  const { bytes } = fileNamed("JP2");
  const refused = (call, message) => assert.throws(call, (error) => error instanceof ZmxError && message.test(error.message));
  refused(() => web.decode(new Uint8Array(0)), /no kind/);
  refused(() => web.decode(new TextEncoder().encode("hello, world")), /no kind/);
  refused(() => web.decode("photo.jpg"), /bytes/);
  refused(() => web.decode(bytes, { windw: 1 }), /no such option: windw/);
  refused(() => web.decode(bytes, { reduce: 1.5 }), /reduce/);
  refused(() => web.decode(bytes, { window: { x: 90, y: 0, width: 50, height: 9 } }), /window|picture/);
  refused(() => web.decode(fileNamed("PNG").bytes, { window: { x: 90, y: 0, width: 50, height: 9 } }), /window/);
  refused(() => web.decode(fileNamed("PNG").bytes, { reduce: 1 }), /reduce/);
  refused(() => web.decode(fileNamed("baseline JPEG").bytes, { component: 3 }), /component/);
  refused(() => web.encode(pictures.RGB8, { format: "jpeg", levels: 3 }), /no such option: levels/);
  refused(() => web.encode(pictures.RGB8, { format: "webp" }), /webp/);
  refused(() => web.encode(pictures.RGB8, { format: "jpeg", quality: 101 }), /quality/);
  refused(() => web.encode(pictures.RGBA8, { format: "jpeg" }), /alpha/);
  refused(() => web.encode({ ...pictures.RGB8, height: 66 }, { format: "png" }), /data/);
  refused(() => web.encode({ ...pictures.GREY12, bits: 10 }, { format: "png" }), /above 1023/);
  refused(() => web.encode({ ...pictures.RGB8, colour: "cmyk" }, { format: "tiff" }), /colour/);
  refused(() => web.transcode(bytes), /./);
});

test("a picture too large is an error, not a crash", () => {
  const { bytes } = fileNamed("JP2");
  assert.throws(() => web.decode(bytes, { maxPixels: 1000 }), ZmxError);
  // A file that promises 60000 by 60000 pixels: more than the memory of a module.
  const png = web.encode(madePicture(8, 8, 3, 8), { format: "pnm" }).bytes;
  const huge = new Uint8Array([...new TextEncoder().encode("P6\n60000 60000\n255\n"), ...png]);
  assert.throws(() => web.decode(huge), { name: "ZmxError", message: /pixels|60000/ });
  assert.throws(() => web.decode(huge, { maxPixels: 2 ** 40 }), { name: "ZmxError", message: /^(?!.*anew)/ });
  const jpeg = fileNamed("baseline JPEG").bytes.slice();
  const frame = jpeg.findIndex((byte, i) => byte === 0xff && jpeg[i + 1] === 0xc0);
  jpeg.set([0xff, 0xff, 0xff, 0xff], frame + 5); // 65535 by 65535: 12 GiB of samples
  assert.throws(() => web.decode(jpeg, { maxPixels: 2 ** 40 }), { name: "ZmxError", message: /memory/ });
  assert.deepEqual(web.decode(bytes).data, pictures.RGB8.data);
});

test("memory is given back after each picture", async () => {
  const zmx = await load();
  const inputs = files.map(({ bytes }) => bytes);
  const encode = () => zmx.encode(pictures.RGB16, { format: "jpeg2000" });
  for (const bytes of inputs) zmx.decode(bytes);
  encode();
  const settled = zmx.memory;
  for (let i = 0; i < 200; i += 1) {
    zmx.decode(inputs[i % inputs.length]);
    if (i % 20 === 0) encode();
    if (i % 10 === 0) assert.throws(() => zmx.decode(inputs[0].subarray(0, 40)), ZmxError);
  }
  assert.equal(zmx.memory, settled);
  // What one large picture took is given back by another instance.
  zmx.encode(madePicture(2500, 2500, 3, 8), { format: "bmp" });
  assert.ok(zmx.memory > settled);
  zmx.reset();
  assert.ok(zmx.memory <= settled);
  assert.deepEqual(zmx.decode(fileNamed("JP2").bytes).data, pictures.RGB8.data);
});

test("an open image decodes again and again, until it is closed", () => {
  const { bytes } = fileNamed("codestream");
  const image = web.open(bytes);
  assert.deepEqual([image.info.width, image.info.height], [101, 67]);
  const window = { x: 10, y: 10, width: 20, height: 20 };
  const first = image.decode({ window });
  for (let i = 0; i < 5; i += 1) assert.deepEqual(image.decode({ window }), first);
  assert.deepEqual(first, web.decode(bytes, { window }));
  image.close();
  image.close();
  assert.throws(() => image.decode(), /closed/);
  const lost = web.open(bytes);
  web.reset();
  assert.throws(() => lost.decode(), /closed/);
  lost.close();
  assert.throws(() => web.open(bytes.subarray(0, 30)), ZmxError);
  assert.equal(web.decode(bytes).width, 101);
});

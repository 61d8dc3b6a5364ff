// SPDX-License-Identifier: BSD-2-Clause
// index.js - zmxjpx in WebAssembly, for browsers, workers and node: index.d.ts says what there is.
//
// Nothing happens when this file is imported; load() reads or fetches the WebAssembly, unless it is handed over. Files and
// pictures are copied into the memory of the module and out of it, so that what callers get is their own.
import { Instance } from "./instance.js";
import { compile, isSimdKnown } from "./module.js";
import { optionLines } from "./options.js";
import { makeRaw } from "./raw.js";
import { ZmxError } from "./error.js";

export { ZmxError };

/** A view on the bytes of whatever holds bytes. */
function bytesOf(value, what) {
  if (ArrayBuffer.isView(value)) return new Uint8Array(value.buffer, value.byteOffset, value.byteLength);
  if (Object.prototype.toString.call(value) === "[object ArrayBuffer]") return new Uint8Array(value);
  throw new ZmxError(`${what}: an ArrayBuffer or a view on one, not ${typeof value}`);
}

/** How many channels as many samples make. */
function channelsOf({ width, height, data }) {
  const channels = data.length / (width * height);
  if (!Number.isInteger(channels)) throw new ZmxError(`data: ${data.length} samples are no picture of ${width} by ${height}`);
  return channels;
}

const METADATA = ["icc", "exif", "xmp"];
const UNITS = ["none", "inch", "centimetre", "metre"];

class OpenImage {
  #owner;
  #place;

  constructor(owner, bytes) {
    this.#owner = owner;
    this.#place = owner.keep(bytes);
    try {
      this.info = owner.info(this.#place);
    } catch (error) {
      this.close();
      throw error;
    }
  }

  decode(options = {}) {
    if (!this.#place) throw new ZmxError("the image is closed");
    return this.#owner.decode(this.#place, options);
  }

  close() {
    if (this.#place) this.#owner.drop(this.#place);
    this.#place = null;
  }
}

class Zmx {
  #instance;

  constructor(instance, simd) {
    this.#instance = instance;
    this.simd = simd;
    this.raw = makeRaw(instance);
    this.version = this.raw.version();
  }

  get memory() {
    return this.#instance.heap.length;
  }

  reset() {
    this.#instance.renew();
  }

  info(bytes) {
    return this.#instance.info(bytesOf(bytes, "bytes"));
  }

  decode(bytes, options = {}) {
    return this.#instance.decode(bytesOf(bytes, "bytes"), options);
  }

  open(bytes) {
    return new OpenImage(this.#instance, bytesOf(bytes, "bytes"));
  }

  transcode(bytes, options = {}) {
    const { crop, ...others } = options;
    const part = crop && [crop.x, crop.y, crop.width, crop.height];
    return this.#instance.file("zmx_web_transcode", bytesOf(bytes, "bytes"), optionLines({ ...others, crop: part }));
  }

  encode(picture, options) {
    const { width, height, data, colour, orientation, resolution } = picture;
    if (!options || !options.format) throw new ZmxError("format: which kind of file?");
    const samples = bytesOf(data, "data");
    const { lossless, ...others } = options;
    const shape = {
      width, height, colour, orientation,
      channels: picture.channels ?? channelsOf(picture),
      bits: picture.bits ?? 8 * data.BYTES_PER_ELEMENT,
      resolution: resolution && [resolution.x, resolution.y, UNITS.indexOf(resolution.unit)],
    };
    if (shape.bits > 8 !== (data.BYTES_PER_ELEMENT === 2)) throw new ZmxError("data: bytes hold up to 8 bits, words 9 to 16");
    for (const name of METADATA) shape[name] = picture[name] && bytesOf(picture[name], name);
    return this.#instance.file("zmx_web_encode", samples, { ...optionLines({ ...others, lossless }), ...optionLines(shape) });
  }
}

/** Loads the module; see index.d.ts. */
export async function load({ wasm, simd } = {}) {
  const vectors = simd ?? isSimdKnown();
  const module = await compile(wasm, vectors);
  return new Zmx(await Instance.make(module), vectors);
}

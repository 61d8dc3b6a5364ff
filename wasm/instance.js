// SPDX-License-Identifier: BSD-2-Clause
// instance.js - a running module: its memory, what goes in and what comes out.
//
// The memory grows with the largest picture and never shrinks: renew() begins with another instance, and so does a call
// that ended in a trap, after which nothing in the memory can be trusted.
import { ZmxError } from "./error.js";
import { optionLines } from "./options.js";

const NO_MEMORY = "there is not enough memory";

/** What the C library of the module may ask of its surroundings. There are no files; what it prints is let go. */
function surroundings(module, memory) {
  const imports = {};
  for (const { module: from, name } of WebAssembly.Module.imports(module)) {
    imports[from] ??= {};
    imports[from][name] = () => {
      throw new WebAssembly.RuntimeError(`${name} is not there`);
    };
  }
  // The second half of a 64-bit answer; setjmp() gives one.
  let half = 0;
  const known = {
    setTempRet0: (value) => {
      half = value;
    },
    getTempRet0: () => half,
    emscripten_notify_memory_growth: () => memory.changed(),
    fd_write: (_file, vectors, count, written) => {
      const words = new Uint32Array(memory.buffer(), vectors >>> 0, 2 * count);
      const total = words.reduce((sum, word, i) => sum + (i % 2 ? word : 0), 0);
      new Uint32Array(memory.buffer(), written >>> 0, 1)[0] = total;
      return 0;
    },
    // No variables of an environment.
    environ_sizes_get: (count, size) => {
      for (const at of [count, size]) new Uint32Array(memory.buffer(), at >>> 0, 1)[0] = 0;
      return 0;
    },
    environ_get: () => 0,
    fd_close: () => 0,
    fd_seek: () => 29, // it is a pipe
  };
  for (const names of Object.values(imports))
    for (const name of Object.keys(names)) if (known[name]) names[name] = known[name];
  return imports;
}

export class Instance {
  #module;
  #exports;
  #heap;
  #kept = new Set(); // places of open images

  constructor(module) {
    this.#module = module;
  }

  static async make(module) {
    const instance = new Instance(module);
    instance.#begin(await WebAssembly.instantiate(module, instance.#imports()));
    return instance;
  }

  #imports() {
    return surroundings(this.#module, {
      buffer: () => this.#exports.memory.buffer,
      changed: () => {
        this.#heap = null;
      },
    });
  }

  #begin(made) {
    this.#exports = made.exports;
    this.#heap = null;
    this.#exports._initialize();
  }

  /** Another instance in place of this one; what was in its memory is gone. */
  renew() {
    for (const place of this.#kept) place.gone = true;
    this.#kept.clear();
    this.#begin(new WebAssembly.Instance(this.#module, this.#imports()));
  }

  get exports() {
    return this.#exports;
  }

  get heap() {
    if (!this.#heap || this.#heap.buffer !== this.#exports.memory.buffer)
      this.#heap = new Uint8Array(this.#exports.memory.buffer);
    return this.#heap;
  }

  /** Bytes in the memory, until drop(). */
  keep(bytes) {
    const at = this.#put(bytes);
    const place = { at, size: bytes.length, gone: false };
    this.#kept.add(place);
    return place;
  }

  drop(place) {
    if (this.#kept.delete(place)) this.#exports.free(place.at);
  }

  #put(bytes) {
    const at = this.#exports.malloc(bytes.length || 1) >>> 0;
    if (at === 0) throw new ZmxError(NO_MEMORY);
    this.heap.set(bytes, at);
    return at;
  }

  /** Calls with bytes, or with a place that keep() gave, and with options; `take` reads the answer while it is there. */
  #call(name, input, lines, take) {
    const pointers = [];
    const put = (bytes) => {
      pointers.push(this.#put(bytes));
      return [pointers.at(-1), bytes.length];
    };
    try {
      if (input.gone) throw new ZmxError("the image was closed by reset()");
      const place = this.#kept.has(input) ? [input.at, input.size] : put(input);
      const values = [...place];
      if (lines) {
        const text = Object.entries(lines).map(([key, value]) =>
          `${key}=${value instanceof Uint8Array ? put(value).join(",") : value}\n`);
        values.push(...put(new TextEncoder().encode(text.join(""))));
      }
      const answer = this.#answer(this.#exports[name](...values));
      if (answer.failed) throw new ZmxError(answer.text);
      return take(answer);
    } catch (error) {
      if (!(error instanceof WebAssembly.RuntimeError) && !(error instanceof RangeError)) throw error;
      // A trap leaves the memory as it was in the middle of something.
      this.renew();
      pointers.length = 0;
      throw new ZmxError(`the module had to be started anew: ${error.message}`, { cause: error });
    } finally {
      for (const pointer of pointers) this.#exports.free(pointer);
      this.#exports.zmx_web_release();
    }
  }

  #answer(at) {
    const words = new Uint32Array(this.#exports.memory.buffer, at >>> 0, 11);
    const view = (i) => this.heap.subarray(words[i], words[i] + words[i + 1]);
    const text = new TextDecoder().decode(view(1));
    return { failed: words[0] !== 0, text, samples: view(3), icc: view(5), exif: view(7), xmp: view(9) };
  }

  info(input) {
    return this.#call("zmx_web_info", input, null, ({ text }) => JSON.parse(text));
  }

  decode(input, { window, ...options }) {
    const part = window && [window.x, window.y, window.width, window.height];
    return this.#call("zmx_web_decode", input, optionLines({ ...options, window: part }), (answer) => {
      const picture = JSON.parse(answer.text);
      const bytes = answer.samples.slice();
      picture.data = picture.bits > 8 ? new Uint16Array(bytes.buffer) : bytes;
      for (const name of ["icc", "exif", "xmp"]) if (answer[name].length > 0) picture[name] = answer[name].slice();
      return picture;
    });
  }

  /** The file that a call makes. */
  file(name, input, lines) {
    return this.#call(name, input, lines, ({ text, samples }) => ({ bytes: samples.slice(), ...JSON.parse(text) }));
  }
}

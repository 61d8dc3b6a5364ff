// SPDX-License-Identifier: BSD-2-Clause
// raw.js - the functions of the library by their names in C, on the memory of the module.
import { functions, structures } from "./rawnames.js";

const VIEWS = {
  HEAP8: Int8Array, HEAPU8: Uint8Array, HEAP16: Int16Array, HEAPU16: Uint16Array, HEAP32: Int32Array, HEAPU32: Uint32Array,
  HEAPF32: Float32Array, HEAPF64: Float64Array,
};

/** The text at a pointer, up to its 0. */
function textAt(heap, at) {
  return new TextDecoder().decode(heap.subarray(at, heap.indexOf(0, at)));
}

export function makeRaw(instance) {
  const raw = {
    malloc: (bytes) => instance.exports.malloc(bytes) >>> 0,
    free: (pointer) => instance.exports.free(pointer),
    sizeOf: (structure) => instance.exports.zmx_web_size(structures.indexOf(structure)),
    functions: {},
  };
  // By way of the instance, for reset() makes another one.
  for (const name of functions) raw.functions[name] = (...values) => instance.exports[name](...values);
  for (const [name, View] of Object.entries(VIEWS))
    Object.defineProperty(raw, name, { enumerable: true, get: () => new View(instance.exports.memory.buffer) });
  Object.freeze(raw.functions);
  // The record of the version ends with pointers to texts (zmxj/types.h).
  Object.defineProperty(raw, "version", {
    value: () => {
      const words = new Uint32Array(instance.exports.memory.buffer, raw.functions.zmxjGetLibVersion() >>> 0, 2);
      return `${words[0]}.${words[1]}`;
    },
  });
  return raw;
}

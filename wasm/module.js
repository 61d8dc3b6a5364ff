// SPDX-License-Identifier: BSD-2-Clause
// module.js - the WebAssembly, from wherever it comes.
import { ZmxError } from "./error.js";

// A function that makes a vector: (func (result v128) i32.const 0 i8x16.splat). Engines that do not know it refuse it.
const VECTOR = [0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 8, 1, 6, 0, 65, 0, 253, 15, 11];

export function isSimdKnown() {
  return WebAssembly.validate(new Uint8Array(VECTOR));
}

const isNode = () => typeof process === "object" && Boolean(process.versions?.node);

/** Where the file of a build is: beside this one. Asked for only when the caller has not said it. */
function besideThis(simd) {
  return new URL(simd ? "./zmx-simd.wasm" : "./zmx.wasm", import.meta.url);
}

async function fetched(place) {
  const url = place instanceof URL ? place : new URL(place, globalThis.location?.href ?? import.meta.url);
  // Not as a stream: that would want a server that knows the type of the file.
  if (isNode() && url.protocol === "file:") {
    const { readFile } = await import("node:fs/promises");
    return readFile(url);
  }
  const answer = await fetch(url);
  if (!answer.ok) throw new ZmxError(`${url}: ${answer.status} ${answer.statusText}`);
  return answer.arrayBuffer();
}

/** The module of what a caller gives, or of the file beside this one. */
export async function compile(wasm, simd) {
  if (wasm instanceof WebAssembly.Module) return wasm;
  const given = wasm ?? besideThis(simd);
  const bytes = typeof given === "string" || given instanceof URL ? await fetched(given) : given;
  try {
    return await WebAssembly.compile(bytes);
  } catch (error) {
    throw new ZmxError(`the WebAssembly cannot be used here: ${error.message}`, { cause: error });
  }
}

// SPDX-License-Identifier: BSD-2-Clause
// options.js - choices as the module reads them: by name, each a number, a word or a list of numbers.
import { ZmxError } from "./error.js";

function textOf(name, value) {
  if (typeof value === "boolean") return value ? "1" : "0";
  if (typeof value === "number") return String(value);
  if (typeof value === "string" && !/[\n=]/.test(value)) return value;
  if (Array.isArray(value) && value.every((item) => typeof item === "number")) return value.join(",");
  throw new ZmxError(`${name}: neither a number nor a word: ${Object.prototype.toString.call(value)}`);
}

/** What is set of some choices, as texts; bytes stay as they are, for they go into the module's memory. */
export function optionLines(options) {
  const lines = {};
  for (const [name, value] of Object.entries(options)) {
    if (/[\n=]/.test(name)) throw new ZmxError(`no such option: ${name}`);
    if (value === undefined || value === null) continue;
    lines[name] = value instanceof Uint8Array ? value : textOf(name, value);
  }
  return lines;
}

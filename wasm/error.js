// SPDX-License-Identifier: BSD-2-Clause

/** What is wrong with a file, a picture or a choice, in the words of the codec. */
export class ZmxError extends Error {
  get name() {
    return "ZmxError";
  }
}

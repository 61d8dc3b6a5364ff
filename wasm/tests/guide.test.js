// SPDX-License-Identifier: BSD-2-Clause
// guide.test.js - the program of the guide "In the browser" does what the guide says.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { cpSync, mkdirSync, mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";

test("the program of the guide runs", () => {
  const folder = mkdtempSync(join(tmpdir(), "zmx-guide-"));
  try {
    mkdirSync(join(folder, "node_modules"));
    cpSync(process.env.ZMX_NPM, join(folder, "node_modules/zmxjpx"), { recursive: true });
    cpSync(join(process.env.ZMX_SOURCE, "examples/in_browser.js"), join(folder, "in_browser.mjs"));
    const said = execFileSync(process.execPath, ["in_browser.mjs"], { cwd: folder, encoding: "utf8" });
    assert.match(said, /^640 x 480, 4 components of 8 bits\ncan be halved 5 times\n/);
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});

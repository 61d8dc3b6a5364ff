// SPDX-License-Identifier: BSD-2-Clause
// package.test.js - the package as others get it: installed from its file, in workers, from bytes, and its raw functions.
import assert from "node:assert/strict";
import { execFileSync, spawnSync } from "node:child_process";
import { mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { Worker } from "node:worker_threads";
import { brotliCompressSync } from "node:zlib";

import { fileNamed, pictures } from "./files.js";
import { fileOf, load, packageFolder, ZmxError } from "./support.js";

const wasmOf = (simd) => readFileSync(join(packageFolder, simd ? "zmx-simd.wasm" : "zmx.wasm"));

test("all functions of the library are there by name, and work on the module's memory", async () => {
  const include = join(process.env.ZMX_SOURCE, "include");
  const headers = ["zmxj.h", ...readdirSync(join(include, "zmxj")).map((name) => join("zmxj", name))];
  const text = headers.map((name) => readFileSync(join(include, name), "utf8")).join("\n");
  const names = text.matchAll(/^ZMXJ_API [\w* ]+?\b(zmx\w+)\(/gm);
  const declared = [...new Set([...names].map((match) => match[1]))].sort();
  assert.equal(declared.length, 235);
  for (const simd of [false, true]) {
    const { raw, version } = await load({ simd });
    assert.deepEqual(Object.keys(raw.functions).sort(), declared);
    assert.equal(version, "6.1");
    assert.deepEqual(["ZmxiSize", "ZmxiRect", "ZmxiPoint"].map(raw.sizeOf), [8, 16, 8]);
    // Every one of them tests its pointers ahead of all else, but those that have none, and answers.
    const { functions: f, malloc, free } = raw;
    const from = malloc(4 * 8 * 3), to = malloc(16), size = malloc(raw.sizeOf("ZmxiSize"));
    raw.HEAPU8.set([...Array(64).keys()].map((i) => 3 * i), from);
    raw.HEAP32.set([4, 1], size / 4);
    assert.equal(f.zmxiSub128_JPEG_8u16s_C1R(from, 8, to, 8, size), 0);
    assert.deepEqual([...raw.HEAP16.subarray(to / 2, to / 2 + 4)], [-128, -125, -122, -119]);
    assert.equal(f.zmxiSub128_JPEG_8u16s_C1R(0, 8, to, 8, size), -8);
    for (const pointer of [from, to, size]) free(pointer);
  }
});

test("the module comes from bytes, a compiled module, a path, or a server", async () => {
  const { bytes } = fileNamed("JP2");
  const file = wasmOf(true);
  const server = createServer((_request, answer) => answer.end(file)).listen(0, "127.0.0.1");
  await new Promise((resolve) => server.once("listening", resolve));
  const url = `http://127.0.0.1:${server.address().port}/zmx.wasm`;
  const path = new URL(`file://${join(packageFolder, "zmx.wasm")}`);
  for (const wasm of [file, new Uint8Array(file).buffer, new WebAssembly.Module(file), url, path, path.href])
    assert.deepEqual((await load({ wasm })).decode(bytes).data, pictures.RGB8.data);
  server.close();
  await assert.rejects(load({ wasm: new Uint8Array(20) }), ZmxError);
});

test("nothing is read or fetched where the caller gives the module", async () => {
  // As in one file that a page puts into a worker: there import.meta.url leads nowhere.
  const text = readFileSync(join(packageFolder, "module.js"), "utf8");
  assert.equal(text.match(/import\.meta\.url/g).length, 2);
  const real = globalThis.fetch;
  globalThis.fetch = () => assert.fail("fetched");
  try {
    await load({ wasm: wasmOf(false) });
  } finally {
    globalThis.fetch = real;
  }
});

test("workers decode at the same time", async () => {
  const code = `
    import { parentPort, workerData } from "node:worker_threads";
    const { load } = await import(workerData.index);
    const zmx = await load({ wasm: workerData.module });
    const picture = zmx.decode(workerData.bytes);
    parentPort.postMessage(picture, [picture.data.buffer]);`;
  const script = new URL(`file://${fileOf(code, ".mjs")}`);
  const index = `file://${join(packageFolder, "index.js")}`;
  const module = new WebAssembly.Module(wasmOf(true));
  const pictureFrom = (bytes) => new Promise((resolve, reject) => {
    const worker = new Worker(script, { workerData: { index, module, bytes } });
    worker.once("message", resolve);
    worker.once("error", reject);
  });
  const [one, two] = await Promise.all(["JP2", "16-bit JP2"].map((name) => pictureFrom(fileNamed(name).bytes)));
  assert.deepEqual(one.data, pictures.RGB8.data);
  assert.deepEqual(two.data, pictures.GREY16.data);
});

test("both modules are below 400 KB by brotli", (t) => {
  for (const simd of [false, true]) {
    const size = brotliCompressSync(wasmOf(simd)).length;
    t.diagnostic(`${simd ? "vectors" : "plain"}: ${wasmOf(simd).length} bytes, ${size} by brotli`);
    assert.ok(size < 400_000);
  }
});

const tarball = process.env.ZMX_TARBALL;
test("the file of the package installs into an empty folder and works there", { skip: !tarball && "npm is not there" }, () => {
  const folder = mkdtempSync(join(tmpdir(), "zmx-npm-"));
  try {
    writeFileSync(join(folder, "package.json"), "{}");
    // No network: a package without dependencies needs none.
    execFileSync("npm", ["install", "--offline", "--no-audit", "--no-fund", "--silent", tarball], { cwd: folder });
    writeFileSync(join(folder, "photo.jpg"), fileNamed("baseline JPEG").bytes);
    const program = `import { load } from "zmxjpx"; import { readFileSync } from "node:fs";
      const zmx = await load(); const { width, height } = zmx.decode(readFileSync("photo.jpg")); console.log(width, height);`;
    const said = execFileSync(process.execPath, ["--input-type=module", "-e", program], { cwd: folder, encoding: "utf8" });
    assert.equal(said, "101 67\n");
    const listed = readdirSync(join(folder, "node_modules/zmxjpx"));
    for (const name of ["LICENSE", "README.md", "THIRD-PARTY.txt", "index.d.ts"]) assert.ok(listed.includes(name), name);
    assert.ok(!listed.includes("tests"));
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});

const compiler = process.env.ZMX_TSC;
test("the types fit what programs do", { skip: !compiler && "the compiler of TypeScript cannot be installed" }, () => {
  const folder = mkdtempSync(join(tmpdir(), "zmx-types-"));
  const words = ["--noEmit", "--strict", "--target", "es2022", "--module", "nodenext", "--lib", "es2022,dom"];
  const checked = (name) => spawnSync(process.execPath, [compiler, ...words, name], { cwd: folder, encoding: "utf8" });
  try {
    mkdirSync(join(folder, "node_modules"));
    execFileSync("cp", ["-r", packageFolder, join(folder, "node_modules/zmxjpx")]);
    writeFileSync(join(folder, "package.json"), '{"type": "module"}');
    const source = readFileSync(join(process.env.ZMX_SOURCE, "wasm/tests/types.ts"), "utf8");
    writeFileSync(join(folder, "types.ts"), source);
    const good = checked("types.ts");
    assert.equal(good.status, 0, good.stdout);
    // Each line that must not compile, without the mark that expects it.
    writeFileSync(join(folder, "wrong.ts"), source.replaceAll(/\/\/ @ts-expect-error.*/g, ""));
    const wrong = checked("wrong.ts");
    assert.equal(wrong.stdout.match(/error TS/g)?.length, source.match(/@ts-expect-error/g).length, wrong.stdout);
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});

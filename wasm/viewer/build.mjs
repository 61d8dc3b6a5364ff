#!/usr/bin/env node
// build.mjs PACKAGE OUT: makes the viewer, one page that stands alone, of the modules here and of the npm package in the folder
// PACKAGE: the scripts, the style and both builds of the codecs stand in the page. So it works from any server and from a folder, and
// its policy can forbid all connections: by hash it allows one script, and the workers that this script starts.
// SPDX-License-Identifier: BSD-2-Clause
import { createHash } from "node:crypto";
import { mkdir, readFile, writeFile } from "node:fs/promises";
import { dirname, join, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { bundle } from "./bundle.mjs";

const here = dirname(fileURLToPath(import.meta.url));

function hash(text) {
    return `'sha256-${createHash("sha256").update(text).digest("base64")}'`;
}

/** What stands in a script element must not end it. */
function within(text) {
    if (/<\/script|<!--/i.test(text)) throw new Error("a script holds what would end it in a page");
    return text;
}

function policyFor(script, style) {
    return [
        "default-src 'none'",
        "connect-src 'none'",
        `script-src ${hash(script)} 'wasm-unsafe-eval'`,
        "worker-src blob:",
        "img-src blob: data:",
        `style-src ${hash(style)}`,
        "form-action 'none'",
        "base-uri 'none'",
    ].join("; ");
}

async function main(folder, out) {
    const read = (name, form) => readFile(join(here, name), form);
    const folderOf = (name) => join(resolve(folder), name);
    const [page, style, main, worker] = await Promise.all([
        read("index.html", "utf8"),
        read("style.css", "utf8"),
        bundle(join(here, "src/main.js")),
        bundle(join(here, "src/worker.js"), { zmxjpx: folderOf("index.js") }),
    ]);
    const { version } = JSON.parse(await readFile(folderOf("package.json"), "utf8"));
    const binary = async (id, name) => {
        const bytes = await readFile(folderOf(name));
        return `<script type="application/wasm" id="${id}">${bytes.toString("base64")}</script>`;
    };
    const data = [
        `<script type="text/plain" id="worker">${within(worker)}</script>`,
        await binary("wasm-simd", "zmx-simd.wasm"),
        await binary("wasm-plain", "zmx.wasm"),
    ].join("\n");
    const fields = { policy: policyFor(within(main), style), style, data, script: main, version: ` (version ${version})` };
    const text = page.replace(/\{\{(\w+)\}\}/g, (_, name) => fields[name]);
    await mkdir(dirname(resolve(out)), { recursive: true });
    await writeFile(out, text);
    console.log(`${out}: ${(text.length / 1e6).toFixed(2)} MB`);
}

if (process.argv.length !== 4) {
    console.error("build.mjs PACKAGE OUT");
    process.exit(2);
}
await main(process.argv[2], process.argv[3]);

#!/usr/bin/env node
// serve.mjs PAGE PORT: serves one page, and nothing else, to this machine alone. Port 0 is any that is free. It is one way to look at the
// viewer: opening the file does as well, and so does any web server.
// SPDX-License-Identifier: BSD-2-Clause
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import { resolve } from "node:path";

const [path, port] = process.argv.slice(2);
const page = await readFile(path);

const server = createServer((request, response) => {
    const known = request.url === "/" && (request.method === "GET" || request.method === "HEAD");
    response.writeHead(known ? 200 : 404, {
        "content-type": known ? "text/html; charset=utf-8" : "text/plain",
        "cache-control": "no-cache",
        "x-content-type-options": "nosniff",
        "referrer-policy": "no-referrer",
    });
    response.end(known ? page : "There is nothing but /\n");
});
server.on("error", (error) => {
    console.error(`serve: ${error.message}`);
    process.exit(1);
});
server.listen(Number(port), "127.0.0.1", () => {
    console.log(`The viewer is at http://127.0.0.1:${server.address().port}/ (and in ${resolve(path)}); Ctrl+C ends it`);
});

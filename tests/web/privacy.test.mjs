// privacy.test.mjs: nothing leaves the machine. The page asks for nothing while it works, and where somebody makes it ask, the
// browser refuses by the page's policy; the server hears of neither.
// SPDX-License-Identifier: BSD-2-Clause
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { readFileSync } from "node:fs";
import { createServer } from "node:http";
import { after, before, test } from "node:test";
import { paths } from "./files.mjs";
import { launch, Visit } from "./support.mjs";

let browser, server, address;
const heard = [];

before(async () => {
    browser = await launch();
    server = createServer((request, response) => {
        heard.push(request.url);
        response.setHeader("content-type", "text/html; charset=utf-8");
        response.setHeader("access-control-allow-origin", "*");
        response.end(request.url === "/" ? readFileSync(process.env.ZMX_VIEWER) : "heard");
    });
    await new Promise((done) => server.listen(0, "127.0.0.1", done));
    address = `http://127.0.0.1:${server.address().port}/`;
});
after(async () => {
    await browser.close();
    server.closeAllConnections();
    server.close();
});

test("from a server: the page is all that is asked for, whatever is done with it", async () => {
    const visit = await Visit.begin(browser, { url: address });
    await visit.drop(...paths("lossy.jp2", "scan.jpg", "brick.dds", "damaged.jp2", "garbage.jpg"));
    for (const name of ["lossy.jp2", "scan.jpg", "brick.dds", "damaged.jp2", "garbage.jpg"]) await visit.show(name);
    await visit.show("scan.jpg");
    const saved = visit.page.waitForEvent("download");
    await visit.page.keyboard.press("s");
    await (await saved).path();
    assert.deepEqual(heard, ["/"]);
    assert.deepEqual(visit.requests.filter((url) => !url.startsWith("blob:") && !url.startsWith("data:")), [address]);
    await visit.end();
});

// What somebody might try, once code of theirs ran in the page. Each gives whether it was refused.
const ATTEMPTS = {
    fetch: (url) => fetch(url).then(() => false, () => true),
    beacon: (url) => new Promise((done) => {
        document.addEventListener("securitypolicyviolation", () => done(true), { once: true });
        navigator.sendBeacon(url, "x");
    }),
    image: (url) => new Promise((done) => {
        const image = new Image();
        [image.onload, image.onerror] = [() => done(false), () => done(true)];
        image.src = url;
    }),
    socket: (url) => new Promise((done) => {
        try {
            const socket = new WebSocket(url.replace("http", "ws"));
            [socket.onopen, socket.onerror] = [() => done(false), () => done(true)];
        } catch {
            done(true);
        }
    }),
    script: (url) => new Promise((done) => {
        const script = document.createElement("script");
        [script.onload, script.onerror] = [() => done(false), () => done(true)];
        script.src = url;
        document.head.append(script);
    }),
    frame: (url) => new Promise((done) => {
        document.addEventListener("securitypolicyviolation", () => done(true), { once: true });
        const frame = document.createElement("iframe");
        frame.src = url;
        document.body.append(frame);
    }),
    form: (url) => new Promise((done) => {
        document.addEventListener("securitypolicyviolation", () => done(true), { once: true });
        const form = Object.assign(document.createElement("form"), { action: url, method: "post" });
        document.body.append(form);
        form.submit();
    }),
    worker: (url) => new Promise((done) => {
        const text = `fetch(${JSON.stringify(url)}).then(() => postMessage(false), () => postMessage(true))`;
        const worker = new Worker(URL.createObjectURL(new Blob([text])));
        worker.onmessage = ({ data }) => done(data);
    }),
    inline: () => new Promise((done) => {
        document.addEventListener("securitypolicyviolation", () => done(true), { once: true });
        const script = document.createElement("script");
        script.textContent = "window.ran = true";
        document.head.append(script);
        if (window.ran) done(false);
    }),
};

test("what is made to connect is refused", async (t) => {
    for (const from of ["server", "folder"]) {
        const visit = await Visit.begin(browser, from === "server" ? { url: address } : {});
        heard.length = 0;
        for (const [name, attempt] of Object.entries(ATTEMPTS)) {
            await t.test(`${name}, from a ${from}`, async () => {
                assert.equal(await visit.page.evaluate(attempt, `${address}secret-${name}`), true);
            });
        }
        assert.deepEqual(heard.filter((url) => url.includes("secret")), []);
        assert.ok(visit.errors.length > 0 && visit.errors.every((text) => /Content Security Policy|violates/i.test(text)), visit.errors.join("\n"));
        await visit.context.close();
    }
});

test("the same attempts do connect from a page without the policy", async () => {
    const context = await browser.newContext();
    const plain = await context.newPage();
    await plain.goto(`${address}plain`);
    assert.equal(await plain.evaluate(ATTEMPTS.fetch, `${address}open`), false);
    assert.ok(heard.includes("/open"));
    await context.close();
});

test("the demo serves the page to this machine, and nothing else", async () => {
    const serve = new URL("../../wasm/viewer/serve.mjs", import.meta.url).pathname;
    const child = spawn(process.execPath, [serve, process.env.ZMX_VIEWER, "0"], { stdio: ["ignore", "pipe", "inherit"] });
    const line = await new Promise((done) => child.stdout.once("data", (data) => done(String(data))));
    const place = /http:\/\/127\.0\.0\.1:\d+\//.exec(line)[0];
    const visit = await Visit.begin(browser, { url: place });
    await visit.choose(...paths("brick.dds"));
    assert.equal(await visit.settled("brick.dds"), "ready");
    assert.equal((await fetch(`${place}other`)).status, 404);
    await visit.end();
    child.kill();
});

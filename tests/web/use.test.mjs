// use.test.mjs: the page in the hands of people: with keys alone, with a screen reader, on a phone, in the dark; and what it
// saves and converts.
// SPDX-License-Identifier: BSD-2-Clause
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdirSync, readFileSync } from "node:fs";
import { createServer } from "node:http";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { at, folder, need, paths, zmx } from "./files.mjs";
import { axe, launch, Visit } from "./support.mjs";

const SET = ["lossless.jp2", "twelve.jpg", "alpha.dds", "print.tif", "damaged.jp2", "garbage.jpg"];
let browser;

before(async () => (browser = await launch()));
after(() => browser.close());

/** What axe finds, as lines. */
async function faults(visit) {
    await visit.page.evaluate(axe);
    const { violations, passes } = await visit.page.evaluate(() => window.axe.run(document, { resultTypes: ["violations", "passes"] }));
    assert.ok(passes.length > 15, "axe has looked at the page");
    return violations.map((v) => `${v.id}: ${v.help}: ${v.nodes.map((n) => n.target.join(" ")).join(", ")}`);
}

for (const colorScheme of ["light", "dark"]) {
    for (const [device, size] of [["screen", {}], ["phone", { viewport: { width: 390, height: 844 }, deviceScaleFactor: 2, isMobile: true, hasTouch: true }]]) {
        test(`${colorScheme}, on a ${device}: accessible, nothing sticks out, and worth looking at`, async () => {
            const visit = await Visit.begin(browser, { colorScheme, ...size });
            const look = async (what) => {
                await visit.shot(`${what}-${colorScheme}-${device}`);
                assert.deepEqual(await faults(visit), [], what);
                const [wide, room] = await visit.page.evaluate(() => [document.documentElement.scrollWidth, innerWidth]);
                assert.ok(wide <= room, `${what}: ${wide} in ${room}`);
            };
            await look("welcome");
            await visit.choose(...paths(...SET));
            assert.equal(await visit.settled("lossless.jp2"), "ready");
            await visit.page.waitForFunction(() => [...document.querySelectorAll(".item")].slice(0, 3).every((i) => !i.matches(".waiting")));
            await look("picture");
            if (device === "phone") await visit.page.click("#details");
            await visit.page.evaluate(() => (document.querySelector("#headers").closest("details").open = true));
            await look("details");
            if (device === "phone") return visit.end(); // the rest is the same there
            await visit.show("garbage.jpg");
            await look("error");
            await visit.show("alpha.dds");
            await look("alpha");
            await visit.page.click("[data-do=convert]");
            await visit.page.getByRole("radio", { name: "JPEG", exact: true }).check({ force: true });
            await look("convert");
            await visit.page.click("#convert [data-close]");
            await visit.page.click("[data-do=help]");
            await look("help");
            await visit.end();
        });
    }
}

test("with keys alone", async () => {
    const visit = await Visit.begin(browser);
    const focus = () => visit.page.evaluate(() => {
        const here = document.activeElement;
        const seen = (e) => e && getComputedStyle(e).outlineStyle !== "none" && parseFloat(getComputedStyle(e).outlineWidth) >= 2;
        const shown = seen(here) || seen(here.nextElementSibling) || seen(here.querySelector("[aria-selected=true]"));
        return { name: here.id || here.dataset.do || here.dataset.open || here.name || here.tagName, shown };
    });
    await visit.page.keyboard.press("Tab");
    assert.deepEqual(await focus(), { name: "help", shown: true });
    await visit.choose(...paths(...SET));
    await visit.settled("lossless.jp2");
    assert.equal((await focus()).name, "strip");
    await visit.page.keyboard.press("ArrowDown");
    assert.equal(await visit.settled("twelve.jpg"), "ready");
    assert.match(await visit.page.textContent("#said"), /twelve\.jpg, JPEG.*640 by 480/);
    await visit.page.keyboard.press("ArrowUp");
    await visit.settled("lossless.jp2");

    // Each stop of Tab is seen, and the way ends where it began.
    const stops = [];
    for (let i = 0; i < 40; i++) {
        await visit.page.keyboard.press("Tab");
        const stop = await focus();
        if (stop.name === "BODY") continue; // beyond the last, the browser's own controls
        assert.ok(stop.shown, `${stop.name} shows that it has the focus`);
        if (stops.includes(stop.name) && stop.name === "strip") break;
        stops.push(stop.name);
    }
    for (const name of ["view", "tool", "scale", "window", "level", "auto", "channel", "open", "save", "convert", "details"]) {
        assert.ok(stops.includes(name), `${name} is reached: ${stops}`);
    }

    await visit.page.keyboard.press("1");
    await visit.until(({ scale }) => scale === 1, "100 %");
    await visit.page.keyboard.press("+");
    await visit.until(({ scale }) => scale === 1.5, "closer");
    await visit.page.focus("#view");
    const { left } = await visit.where();
    await visit.page.keyboard.press("ArrowRight");
    await visit.until((where) => where.left === left - 60, "to the right");
    // The pixel in the middle is read out.
    await visit.page.waitForFunction(() => /^Pixel \d+, \d+: Red \d+ {2}Green \d+ {2}Blue \d+/.test(document.querySelector("#said").textContent));
    await visit.page.keyboard.press("c");
    assert.equal(await visit.page.textContent("#said"), "Showing Red");
    await visit.page.keyboard.press("?");
    assert.ok(await visit.page.locator("#help").isVisible());
    await visit.page.keyboard.press("Escape");
    assert.ok(await visit.page.locator("#help").isHidden());
    assert.deepEqual(await focus(), { name: "view", shown: true });
    await visit.end();
});

test("two fingers pinch, one finger moves", async () => {
    const visit = await Visit.begin(browser, { viewport: { width: 390, height: 844 }, isMobile: true, hasTouch: true });
    await visit.choose(...paths("lossless.jp2"));
    await visit.settled("lossless.jp2");
    const session = await visit.context.newCDPSession(visit.page);
    const touch = (type, ...points) => session.send("Input.dispatchTouchEvent", { type, touchPoints: points.map(([x, y], id) => ({ x, y, id })) });
    const before = await visit.where();
    await touch("touchStart", [150, 350], [250, 350]);
    for (let i = 1; i <= 5; i++) await touch("touchMove", [150 - 10 * i, 350], [250 + 10 * i, 350]);
    await touch("touchEnd");
    const after = await visit.until(({ scale }) => scale > 1.9 * before.scale, "twice as far apart");
    assert.ok(Math.abs(after.scale / before.scale - 2) < 0.1, `${before.scale}, then ${after.scale}`);
    await touch("touchStart", [200, 350]);
    for (let i = 1; i <= 4; i++) await touch("touchMove", [200 - 10 * i, 350]);
    await touch("touchEnd");
    await visit.until(({ left }) => left === after.left - 40, "one finger moves");
    await visit.end();
});

test("a picture of 16 bits is saved as a PNG of 16 bits", async () => {
    const visit = await Visit.begin(browser);
    await visit.choose(...paths("deep.jp2"));
    await visit.settled("deep.jp2");
    const download = visit.page.waitForEvent("download");
    await visit.page.click("[data-do=save]");
    const saved = await download;
    assert.equal(saved.suggestedFilename(), "deep.png");
    await visit.page.waitForFunction(() => /^Saved as PNG/.test(document.querySelector("#note").textContent));
    assert.ok(await visit.page.locator("#note").isVisible(), "it is told to those who see");
    await saved.saveAs(at("saved.png"));
    assert.match(zmx("image", "compare", "saved.png", need("deep.pgm")).toString(), /^(inf|PSNR.*inf)/im);
    const [depth, colour] = readFileSync(at("saved.png")).subarray(24, 26);
    assert.deepEqual([depth, colour], [16, 0], "16 bits of grey");
    await visit.end();
});

/** A folder with another in it, as it falls on the page. */
function nested() {
    const root = join(folder, "album");
    mkdirSync(join(root, "inner"), { recursive: true });
    for (const name of ["lossless.jp2", "print.tif", "garbage.jpg", "notes.txt"]) copyFileSync(at(need(name)), join(root, name));
    for (const name of ["twelve.jpg", "lossless.jp2"]) copyFileSync(at(need(name)), join(root, "inner", name));
    return root;
}

for (const [choice, ending, decode] of [["PNG", ".png", null], ["JPEG", ".jpg", "jpeg"], ["JPEG 2000", ".jp2", "j2k"]]) {
    test(`a folder becomes ${choice} in a zip file, and what fails is told`, async () => {
        const visit = await Visit.begin(browser);
        await visit.drop(nested());
        await visit.page.waitForFunction(() => document.querySelectorAll(".item").length === 5); // without the notes
        await visit.page.keyboard.press("e");
        await visit.page.getByRole("radio", { name: choice, exact: true }).check({ force: true });
        const download = visit.page.waitForEvent("download");
        await visit.page.click("#convert-zip");
        await (await download).saveAs(at("converted.zip"));
        await visit.page.waitForFunction(() => document.querySelector("#convert-report .sum"));
        const report = await visit.page.innerText("#convert-report");
        assert.match(report, /^4 pictures converted, 1 failed/);
        assert.match(report, /album\/garbage\.jpg \S+/);
        await visit.end();

        execFileSync("python3", ["-c", "import sys, zipfile\nwith zipfile.ZipFile(sys.argv[1]) as z:\n    assert z.testzip() is None\n    z.extractall(sys.argv[2])",
            at("converted.zip"), at("converted")]);
        const result = join("converted", "album", "lossless") + ending;
        if (decode) zmx(decode, "decode", result, "back.ppm", "-f", "-q");
        else zmx("image", "convert", result, "back.ppm", "-f", "-q");
        const told = zmx("image", "compare", "back.ppm", need("photo.ppm")).toString();
        const psnr = Number(/(\d+\.\d+|inf)/.exec(told)[1].replace("inf", "Infinity"));
        assert.ok(ending === ".jpg" ? psnr > 33 : psnr === Infinity, told);
        for (const name of ["print", "inner/twelve", "inner/lossless"]) {
            const path = join("converted", "album", name) + ending;
            if (decode) zmx(decode, "decode", path, "back.tif", "-f", "-q");
            else zmx("image", "convert", path, "back.tif", "-f", "-q");
        }
    });
}

test("where the browser can write to a folder, results go there", async () => {
    // The folder that a visitor would choose is the private one of the page.
    const visit = await Visit.begin(browser);
    await visit.context.addInitScript(() => (window.showDirectoryPicker = () => navigator.storage.getDirectory()));
    const server = createServer((_, response) => response.setHeader("content-type", "text/html").end(readFileSync(process.env.ZMX_VIEWER)));
    await new Promise((done) => server.listen(0, "127.0.0.1", done));
    await visit.page.goto(`http://127.0.0.1:${server.address().port}/`);
    await visit.drop(nested());
    await visit.page.waitForFunction(() => document.querySelectorAll(".item").length === 5);
    await visit.page.keyboard.press("e");
    await visit.page.click("#convert-folder");
    await visit.page.waitForFunction(() => document.querySelector("#convert-report .sum"));
    const found = await visit.page.evaluate(async () => {
        const album = await (await navigator.storage.getDirectory()).getDirectoryHandle("album");
        const inner = await album.getDirectoryHandle("inner");
        const file = await (await inner.getFileHandle("twelve.png")).getFile();
        return new Uint8Array(await file.slice(0, 4).arrayBuffer()).join();
    });
    assert.equal(found, "137,80,78,71");
    await visit.end();
    server.closeAllConnections();
    server.close();
});

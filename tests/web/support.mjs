// support.mjs: Chromium without a window, and what a visitor does in the viewer: drop files, choose one, look at pixels.
// SPDX-License-Identifier: BSD-2-Clause
import assert from "node:assert/strict";
import { mkdirSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { folder, zmx } from "./files.mjs";

const require = createRequire(join(process.env.ZMX_WEB_MODULES, "here.js"));
const { chromium } = require("playwright-core");
export const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

export const PATIENCE = Number(process.env.ZMX_PATIENCE ?? 180_000); // milliseconds for anything, on a machine that has other work
export const page = pathToFileURL(process.env.ZMX_VIEWER).href;
const shots = join(process.env.ZMX_WEB_OUT, "screenshots");
mkdirSync(shots, { recursive: true });

export async function launch() {
    return chromium.launch({
        executablePath: process.env.CHROMIUM,
        args: ["--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--force-color-profile=srgb"],
        timeout: PATIENCE,
    });
}

/** A page with the viewer. Whatever goes wrong in it, and whatever it asks for, is kept. */
export class Visit {
    static async begin(browser, { url = page, ...options } = {}) {
        const visit = new Visit();
        visit.context = await browser.newContext({ viewport: { width: 1280, height: 800 }, reducedMotion: "reduce", ...options });
        visit.context.setDefaultTimeout(PATIENCE);
        visit.page = await visit.context.newPage();
        visit.errors = [];
        visit.requests = [];
        visit.page.on("pageerror", (error) => visit.errors.push(error.stack));
        visit.page.on("console", (message) => message.type() === "error" && visit.errors.push(message.text()));
        visit.page.on("request", (request) => visit.requests.push(request.url()));
        await visit.page.goto(url);
        return visit;
    }

    async end() {
        await this.context.close();
        assert.deepEqual(this.errors, [], "the page has nothing to complain about");
    }

    /** As from a file manager: files and folders fall on the page. */
    async drop(...files) {
        const session = await this.context.newCDPSession(this.page);
        const data = { items: [], files, dragOperationsMask: 1 };
        for (const type of ["dragEnter", "dragOver", "drop"]) await session.send("Input.dispatchDragEvent", { type, x: 400, y: 300, data });
        await session.detach();
    }

    async choose(...files) {
        await this.page.setInputFiles("#files", files);
    }

    /** Until a picture of this name is drawn, or told to be none; says which. */
    async settled(name) {
        const state = await this.page.waitForFunction((wanted) => {
            const view = document.querySelector("#view");
            const is = view.dataset.state === "ready" || view.dataset.state === "failed";
            return is && (!wanted || document.querySelector("#title").textContent === wanted) && view.dataset.state;
        }, name);
        return state.jsonValue();
    }

    async show(name) {
        await this.page.locator(".item", { hasText: name }).first().click();
        return this.settled(name);
    }

    /** Where the picture is on the canvas, at which scale, and how many pixels were decoded for it. */
    async where() {
        const data = await this.page.evaluate(() => ({ ...document.querySelector("#view").dataset }));
        return { left: Number(data.left), top: Number(data.top), scale: Number(data.scale), decoded: Number(data.decoded) };
    }

    /** RGBA of a box of the canvas. */
    async pixels(x, y, width, height) {
        const text = await this.page.evaluate(([left, top, across, down]) => {
            const { data } = document.querySelector("#view").getContext("2d").getImageData(left, top, across, down);
            let letters = "";
            for (let i = 0; i < data.length; i += 0x8000) letters += String.fromCharCode(...data.subarray(i, i + 0x8000));
            return btoa(letters);
        }, [x, y, width, height]);
        return Buffer.from(text, "base64");
    }

    /** Until a condition on where() holds. */
    async until(test, what) {
        const end = Date.now() + PATIENCE;
        for (;;) {
            const where = await this.where();
            if (test(where)) return where;
            assert.ok(Date.now() < end, `${what}: ${JSON.stringify(where)}`);
            await this.page.evaluate(() => new Promise(requestAnimationFrame));
        }
    }

    /** At 100 % with all its values, so that a pixel of the canvas is one of the picture. */
    async exact(name) {
        await this.page.keyboard.press("1");
        await this.page.keyboard.press("r");
        await this.until(({ scale }) => scale === 1, "100 %");
        await this.page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
        await this.settled(name);
    }

    /** A picture of the page, kept; it must not be of one colour. */
    async shot(name) {
        const path = join(shots, `${name}.png`);
        await this.page.screenshot({ path });
        zmx("image", "convert", path, `${name}.shot.ppm`, "--rgb", "--no-alpha", "-q", "-f");
        const samples = readFileSync(join(folder, `${name}.shot.ppm`));
        const counts = new Map();
        for (let i = samples.length % 3; i < samples.length; i += 3) {
            const colour = samples.readUIntBE(i, 3);
            counts.set(colour, (counts.get(colour) ?? 0) + 1);
        }
        const share = [...counts.values()].reduce((a, b) => Math.max(a, b)) / (samples.length / 3);
        assert.ok(share < 0.985 && counts.size > 40, `${name} is not blank: ${counts.size} colours, one has ${share}`);
    }
}

/** How many samples of RGB differ between the canvas and what the command decoded; alpha is not compared. */
export function differing(rgba, picture, map = (p, c) => picture.data[p * picture.channels + (picture.channels < 3 ? 0 : c)]) {
    let count = 0;
    for (let p = 0; p < picture.width * picture.height; p++) {
        for (let c = 0; c < 3; c++) count += rgba[4 * p + c] !== map(p, c) ? 1 : 0;
    }
    return count;
}

// modules.test.mjs: the viewer's modules that need no page: jobs, tiles, turns, halves and names.
// SPDX-License-Identifier: BSD-2-Clause
import assert from "node:assert/strict";
import { test } from "node:test";
import { nameFor } from "../../wasm/viewer/src/convert.js";
import { Frame, Turn } from "../../wasm/viewer/src/geometry.js";
import { isPicture } from "../../wasm/viewer/src/intake.js";
import { Cancelled, Pool } from "../../wasm/viewer/src/pool.js";
import { Pyramid } from "../../wasm/viewer/src/pyramid.js";
import { halve, layoutOf, levelTable, statistics } from "../../wasm/viewer/src/samples.js";
import { topLevel } from "../../wasm/viewer/src/sources.js";
import { crc32 } from "../../wasm/viewer/src/zip.js";

/** Workers that keep what they are given, and answer when they are told to. */
function workers() {
    const all = [];
    const start = () => {
        const worker = { jobs: [], ended: false, postMessage: (job) => worker.jobs.push(job), terminate: () => (worker.ended = true) };
        worker.answer = (data) => worker.onmessage({ data: { id: worker.jobs.at(-1).id, ...data } });
        all.push(worker);
        return worker;
    };
    return { all, start };
}

test("what is looked at is done ahead of thumbnails, and those ahead of conversions", async () => {
    const { all, start } = workers();
    const pool = new Pool(start, 1);
    for (const kind of ["look", "convert", "look", "tile", "pixel"]) pool.run({ kind, key: kind });
    const done = [];
    while (done.length < 5) {
        done.push(all[0].jobs.at(-1).kind);
        all[0].answer({ result: 1 });
    }
    assert.deepEqual(done, ["look", "pixel", "tile", "look", "convert"]);
});

test("the first worker is kept free of conversions", () => {
    const { all, start } = workers();
    const pool = new Pool(start, 2);
    for (let i = 0; i < 4; i++) pool.run({ kind: "convert" });
    assert.equal(all.length, 1);
    pool.run({ kind: "tile" });
    assert.deepEqual(all.map((worker) => worker.jobs.map((job) => job.kind)), [["convert"], ["tile"]]);
});

test("what nobody waits for is not done; a worker at something heavy is ended, and replaced", async () => {
    const { all, start } = workers();
    const pool = new Pool(start, 1);
    const jobs = ["a", "b", "c"].map((key) => pool.run({ kind: "tile", key, heavy: key === "a" }));
    const gone = (key) => assert.rejects(jobs["abc".indexOf(key)], Cancelled);
    pool.cancel((job) => job.key === "b");
    pool.cancel((job) => job.key === "a"); // it is being done, and the worker is not to be ended
    assert.equal(all[0].ended, false);
    pool.cancel((job) => job.key === "a", true);
    assert.equal(all[0].ended, true);
    await Promise.all([gone("a"), gone("b")]);
    assert.equal(all[1].jobs[0].key, "c");
    all[1].answer({ error: "no", fatal: true });
    await assert.rejects(jobs[2], /^Error: no$/);
    assert.equal(all[1].ended, true);
    const next = pool.run({ kind: "tile" });
    all[2].answer({ result: 7 });
    assert.equal(await next, 7);
});

test("tiles that leave the sight are given up, those that stay are not asked for again", () => {
    const asked = [];
    const stopped = [];
    const ask = ({ level, x, y }) => {
        const key = Pyramid.key(level, x, y);
        asked.push(key);
        return { answer: new Promise(() => {}), stop: () => stopped.push(key) };
    };
    const pyramid = new Pyramid({ width: 10000, height: 10000, top: 5, room: 1e8, ask, changed() {} });
    const box = (left) => ({ left, top: 0, right: left + 1024, bottom: 512 });
    pyramid.need(box(0), 1);
    assert.deepEqual(asked.sort(), ["0/0/0", "0/1/0", "5/0/0"]);
    pyramid.need(box(512), 1);
    assert.deepEqual(asked.slice(3), ["0/2/0"]);
    assert.deepEqual(stopped, ["0/0/0"]);
    assert.deepEqual([1, 0.5, 0.36, 0.34, 0.01].map((scale) => pyramid.levelFor(scale)), [0, 1, 1, 2, 5]);
    assert.equal(pyramid.within({ left: 0, top: 0, right: 10000, bottom: 10000 }, 0).length, 400);
});

test("a picture without sizes of its own is not halved without end", () => {
    assert.equal(topLevel({ format: "jpeg2000", width: 1e5, height: 1e5, levels: 0 }), 3);
    assert.equal(topLevel({ format: "jpeg2000", width: 1e5, height: 1e5, levels: 10 }), 8);
    assert.equal(topLevel({ format: "png", width: 2048, height: 10, levels: 0 }), 2);
});

test("all eight orientations, there and back", () => {
    // Where the first pixel of the file and the one right of it are seen, in a picture of 3 by 2 (EXIF 2.3, 4.6.4).
    const seen = ["00 10", "20 10", "21 11", "01 11", "00 01", "10 11", "12 11", "02 01"];
    seen.forEach((wanted, i) => {
        const turn = new Turn(i + 1, 3, 2);
        const place = (x, y) => turn.seen(x + 0.5, y + 0.5).map((v) => v - 0.5).join("");
        assert.equal(`${place(0, 0)} ${place(1, 0)}`, wanted, `orientation ${i + 1}`);
        assert.deepEqual(turn.stored(...turn.seen(1.25, 0.75)), [1.25, 0.75]);
        assert.deepEqual([turn.width, turn.height], i < 4 ? [3, 2] : [2, 3]);
    });
});

test("zooming leaves what is under the pointer, and the picture stays in sight", () => {
    const canvas = { width: 800, height: 600 };
    const frame = new Frame(4000, 3000);
    frame.fit(canvas);
    assert.equal(frame.scale, 0.2);
    frame.zoomAt(canvas, 1, 100, 100);
    assert.ok(Math.abs(frame.at(canvas, 100, 100)[0] - 500) <= 1);
    frame.x = 1e9;
    frame.clamp(canvas);
    assert.equal(frame.x, 4000);
});

test("halves are means, at odd edges too", () => {
    const data = Uint8Array.of(1, 3, 9, 5, 7, 100, 255, 255, 200);
    const half = halve({ width: 3, height: 3, channels: 1, data });
    assert.deepEqual([half.width, half.height, [...half.data]], [2, 2, [4, 55, 255, 200]]);
});

test("levels: the full range is that of the command, windows are clipped", () => {
    const full = levelTable(12, 0, 4095);
    for (const v of [0, 8, 9, 2047, 4095]) assert.equal(full[v], Math.floor((v * 255 + 2047.5) / 4095));
    const narrow = levelTable(16, 1000, 3000, true);
    assert.deepEqual([narrow[999], narrow[2000], narrow[3001]], [255, 127, 0]);
    const { low, high, histogram } = statistics({ bits: 16, channels: 2, colour: "greya", data: Uint16Array.of(500, 65535, 700, 0) });
    assert.deepEqual([low, high, histogram[1] + histogram[2]], [500, 700, 2], "alpha is not counted");
});

test("names of channels and of files", () => {
    assert.deepEqual(layoutOf("cmyka", 5).names, ["Cyan", "Magenta", "Yellow", "Black", "Alpha"]);
    assert.deepEqual(layoutOf("other", 2), { base: "other", alpha: -1, names: ["Channel 1", "Channel 2"] });
    const taken = new Set();
    const names = ["a/scan.tif", "a/scan.JP2", "a/SCAN.png", "b/.hidden", "v1.2/scan"].map((path) => nameFor(path, ".png", taken));
    assert.deepEqual(names, ["a/scan.png", "a/scan (2).png", "a/SCAN (3).png", "b/.hidden.png", "v1.2/scan.png"]);
    assert.deepEqual(["x.JP2", "x.txt", ".x.png", "jpg"].map(isPicture), [true, false, false, false]);
    assert.equal(crc32(new TextEncoder().encode("123456789")), 0xcbf43926);
});

// pictures.test.mjs: each kind of file is shown as the zmx command decodes it, sample for sample.
// SPDX-License-Identifier: BSD-2-Clause
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { native, paths } from "./files.mjs";
import { differing, launch, Visit } from "./support.mjs";

const KINDS = ["lossless.jp2", "lossy.jp2", "tiled.j2k", "peer.jp2", "deep.jp2", "scan.jpg", "twelve.jpg", "photo.jpg", "turned.jpg",
    "brick.dds", "print.tif", "deep.tif", "deep.png", "photo.png", "photo.bmp", "photo.ppm"];
let browser, visit;

before(async () => {
    browser = await launch();
    visit = await Visit.begin(browser, { viewport: { width: 1280, height: 1000 } });
    await visit.drop(...paths(...KINDS, "alpha.dds"));
});
after(async () => {
    await visit.end();
    await browser.close();
});

for (const name of KINDS) {
    test(`${name} has the pixels that zmx decodes`, async () => {
        assert.equal(await visit.show(name), "ready");
        const wanted = native(name);
        const seen = await visit.page.locator("#facts").textContent();
        await visit.exact(name);
        const { left, top } = await visit.where();
        assert.ok(left >= 0 && top >= 0, "the whole picture is in sight");
        const rgba = await visit.pixels(left, top, wanted.width, wanted.height);
        assert.equal(differing(rgba, wanted), 0);
        const stored = name === "turned.jpg" ? `${wanted.height} × ${wanted.width}` : `${wanted.width} × ${wanted.height}`;
        assert.ok(seen.includes(stored), `the size is told: ${seen}`);
    });
}

test("channels and alpha are shown one by one", async () => {
    await visit.show("alpha.dds");
    const wanted = native("alpha.dds");
    assert.equal(wanted.channels, 4);
    await visit.exact("alpha.dds");
    const { left, top } = await visit.where();
    const looks = [];
    for (const [channel, name] of [[3, "Alpha"], [0, "Red"]]) {
        await visit.page.getByRole("radio", { name }).check({ force: true });
        await visit.settled("alpha.dds");
        const frames = () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
        await visit.page.evaluate(frames);
        const rgba = await visit.pixels(left, top, wanted.width, wanted.height);
        assert.equal(differing(rgba, wanted, (p) => wanted.data[4 * p + channel]), 0, name);
        looks.push(rgba);
    }
    assert.notDeepEqual(looks[0], looks[1]);
});

test("values under the pointer are those of the file", async () => {
    await visit.show("twelve.jpg");
    await visit.exact("twelve.jpg");
    const { left, top } = await visit.where();
    const stage = await visit.page.locator("#view").boundingBox();
    await visit.page.mouse.move(stage.x + left + 100.5, stage.y + top + 50.5);
    await visit.page.waitForFunction(() => /Grey \d/.test(document.querySelector("#values").textContent));
    const said = await visit.page.locator("#readout").textContent();
    // 12 bits as they are in the file, where the canvas has 8.
    const shown = (await visit.pixels(left + 100, top + 50, 1, 1))[0];
    const value = Number(/Grey (\d+)/.exec(said)[1]);
    assert.match(said, /^100, 50/);
    assert.ok(value > 255 && Math.floor((value * 255 + 2047.5) / 4095) === shown, `${said} is shown as ${shown}`);
});

test("window and level by numbers, by dragging and by themselves", async () => {
    await visit.show("deep.jp2");
    await visit.exact("deep.jp2");
    const { left, top } = await visit.where();
    const value = () => visit.pixels(left + 20, top + 20, 1, 1).then((rgba) => rgba[0]);
    const settle = () => visit.page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
    const full = await value();
    await visit.page.fill("#window", "20000");
    await visit.page.fill("#level", "15000");
    await settle();
    const sample = native("deep.jp2").data[20 * 700 + 20];
    const narrow = await value();
    // The sample in 8 bits tells its value to within 129; the window is 3.3 times as steep.
    assert.ok(Math.abs(narrow - ((sample * 257 - 5000) * 255) / 20000) < 5, `${full}, then ${narrow}`);
    await visit.page.click("#auto");
    await settle();
    const automatic = await visit.page.inputValue("#window");
    assert.ok(Number(automatic) < 40000, `the range of the picture: ${automatic}`);
    await visit.page.click("#tool");
    const stage = await visit.page.locator("#view").boundingBox();
    await visit.page.mouse.move(stage.x + 300, stage.y + 300);
    await visit.page.mouse.down();
    await visit.page.mouse.move(stage.x + 350, stage.y + 300, { steps: 4 });
    await visit.page.mouse.up();
    await visit.page.click("#tool");
    assert.ok(Number(await visit.page.inputValue("#window")) > Number(automatic), "to the right is wider");
});

test("nothing else is asked for than the page itself", () => {
    assert.deepEqual(visit.requests.filter((url) => !url.startsWith("blob:")), [visit.page.url()]);
});

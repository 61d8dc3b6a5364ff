// trouble.test.mjs: damage is told and marked, a hostile file is an error of its own, and the others go on.
// SPDX-License-Identifier: BSD-2-Clause
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { paths } from "./files.mjs";
import { launch, Visit } from "./support.mjs";

let browser, visit;

before(async () => {
    browser = await launch();
    visit = await Visit.begin(browser);
    await visit.choose(...paths("damaged.jp2", "hostile.jp2", "garbage.jpg", "notes.txt", "lossy.jp2"));
});
after(async () => {
    await visit.end();
    await browser.close();
});

const trouble = () => visit.page.locator("#trouble").innerText();

test("a damaged file is shown as far as it goes, with a message and a mark", async () => {
    assert.equal(await visit.show("damaged.jp2"), "ready");
    assert.match(await trouble(), /^Damaged\s+\S+/);
    assert.equal(await visit.page.locator(".item", { hasText: "damaged.jp2" }).locator(".mark").innerText(), "damaged");
    // The frame of dashes around what is damaged: its red is found along the upper edge of the picture.
    const { left, top } = await visit.where();
    const rgba = await visit.pixels(Math.max(0, left), Math.max(0, top), 300, 3);
    let red = 0;
    for (let i = 0; i < rgba.length; i += 4) red += rgba[i] === 0xd0 && rgba[i + 1] === 0x20 && rgba[i + 2] === 0x20 ? 1 : 0;
    assert.ok(red > 100, `${red} pixels of the mark`);
    await visit.shot("damaged");
});

for (const name of ["hostile.jp2", "garbage.jpg", "notes.txt"]) {
    test(`${name} is an error, in the words of the codec`, async () => {
        assert.equal(await visit.show(name), "failed");
        const text = await trouble();
        assert.match(text, /^Cannot be opened\s+\S.{8,}/);
        assert.ok(!/undefined|\[object|TypeError|RangeError/.test(text), text);
        assert.ok(await visit.page.locator("[data-do=save]").isDisabled());
    });
}

test("errors do not stop the others", async () => {
    assert.equal(await visit.show("lossy.jp2"), "ready");
    assert.ok(await visit.page.locator("#trouble").isHidden());
    await visit.page.keyboard.press("PageUp");
    assert.equal(await visit.settled("notes.txt"), "failed");
    await visit.page.keyboard.press("Delete");
    assert.equal(await visit.settled("lossy.jp2"), "ready");
    assert.equal(await visit.page.locator(".item").count(), 4);
});

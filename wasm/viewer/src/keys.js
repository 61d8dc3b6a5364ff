// keys.js: the keys that work wherever one is on the page, the buttons that do the same, and the list of them in the help.
// SPDX-License-Identifier: BSD-2-Clause
import { $, make } from "./page.js";

// Each action: its keys, and what the help says. Arrow keys belong to what has the focus: thumbnails or picture.
export const KEYS = [
    ["open", ["o"], "Open files"],
    ["previous", ["PageUp", "["], "Previous picture"],
    ["next", ["PageDown", "]"], "Next picture"],
    ["in", ["+", "="], "Zoom in"],
    ["out", ["-"], "Zoom out"],
    ["fit", ["0"], "Fit into the window"],
    ["full", ["1"], "100 %: a pixel is a pixel"],
    ["auto", ["a"], "Levels that fit the picture"],
    ["range", ["r"], "Levels of the full range"],
    ["tool", ["l"], "Dragging changes levels, or moves"],
    ["channel", ["c"], "Next channel"],
    ["details", ["i"], "Details"],
    ["save", ["s"], "Save as PNG"],
    ["convert", ["e"], "Convert all"],
    ["remove", ["Delete"], "Take off the list"],
    ["help", ["?"], "This help"],
];

const OTHERS = [
    [["←", "→", "↑", "↓"], "In the list: another picture. On the picture: move; with Shift, a pixel at a time"],
    [["Tab"], "To the next control"],
    [["Esc"], "Close a window"],
];

function writes(target) {
    return target.matches?.("input:not([type=radio]):not([type=checkbox]), select, textarea");
}

export function listen(actions) {
    addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.metaKey || event.altKey || $("dialog[open]") || writes(event.target)) return;
        const found = KEYS.find(([, keys]) => keys.includes(event.key));
        if (!found) return;
        event.preventDefault();
        actions[found[0]]();
    });
    document.querySelectorAll("[data-do]").forEach((button) => button.addEventListener("click", () => actions[button.dataset.do]()));
    document.querySelectorAll("dialog").forEach((dialog) => {
        // A click beside a dialog closes it; the dialog itself is its ground, all else lies upon it.
        dialog.addEventListener("click", (event) => event.target === dialog && dialog.close());
        dialog.querySelectorAll("[data-close]").forEach((button) => button.addEventListener("click", () => dialog.close()));
    });
    const row = ([keys, text]) => make("li", {}, make("span", {}, ...keys.map((key) => make("kbd", {}, key))), text);
    $("#keys").replaceChildren(...KEYS.map(([, keys, text]) => row([keys, text])), ...OTHERS.map(row));
}

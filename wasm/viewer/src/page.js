// page.js: small helpers for the elements of the page, and the line that is read out.
// SPDX-License-Identifier: BSD-2-Clause

export const $ = (selector) => document.querySelector(selector);

/** An element with attributes, properties that begin with a dot, and children. */
export function make(name, attributes = {}, ...children) {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
        if (value === false || value === undefined || value === null) continue;
        if (key.startsWith("on")) element.addEventListener(key.slice(2), value);
        else if (key.startsWith(".")) element[key.slice(1)] = value;
        else element.setAttribute(key, value === true ? "" : value);
    }
    element.append(...children.filter((child) => child !== null && child !== undefined));
    return element;
}

/** Screen readers say this when they have finished what they are saying. */
export function announce(text) {
    $("#said").textContent = text;
}

let fading;

/** Says it to those who see, too: for a while, below the picture. */
export function notify(text) {
    announce(text);
    const note = $("#note");
    note.textContent = text;
    note.hidden = false;
    clearTimeout(fading);
    fading = setTimeout(() => (note.hidden = true), 6000);
}

export function size(bytes) {
    const units = ["bytes", "KB", "MB", "GB"];
    let unit = 0;
    while (bytes >= 1000 && unit < 3) [bytes, unit] = [bytes / 1000, unit + 1];
    return `${unit && bytes < 100 ? bytes.toFixed(1) : Math.round(bytes)} ${units[unit]}`;
}

export function plural(count, one, many = one + "s") {
    return `${count} ${count === 1 ? one : many}`;
}

/** Hands a file to the visitor, as a download that comes from nowhere but this page. */
export function saveAs(blob, name) {
    const link = make("a", { href: URL.createObjectURL(blob), download: name });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}

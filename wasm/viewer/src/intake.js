// intake.js: files and folders that are dropped, chosen or pasted.
// SPDX-License-Identifier: BSD-2-Clause
import { $ } from "./page.js";

// What is taken out of a folder. A file that is given by itself is tried whatever its name.
const ENDINGS = new Set(
    "jpg jpeg jpe jfif jp2 j2k j2c jpc jpf jpx jph dds tif tiff png bmp dib pbm pgm ppm pnm pam pgx".split(" "),
);

export function isPicture(name) {
    return !name.startsWith(".") && ENDINGS.has(name.slice(name.lastIndexOf(".") + 1).toLowerCase());
}

function readAll(reader) {
    return new Promise((resolve, reject) => reader.readEntries(resolve, reject));
}

/** All files below an entry of the file system, with their paths. */
async function walk(entry, path, found) {
    if (entry.isFile) {
        const file = await new Promise((resolve, reject) => entry.file(resolve, reject));
        if (!path || isPicture(file.name)) found.files.push({ file, path: path + file.name });
        else found.others++;
        return;
    }
    const reader = entry.createReader();
    // A folder tells of a hundred entries at a time, and ends with none.
    for (let entries = await readAll(reader); entries.length; entries = await readAll(reader)) {
        for (const inner of entries.sort((a, b) => a.name.localeCompare(b.name, undefined, { numeric: true }))) {
            await walk(inner, `${path}${entry.name}/`, found);
        }
    }
}

async function dropped(transfer) {
    const found = { files: [], others: 0 };
    // Entries must be asked for before anything is waited for: the list is empty afterwards.
    const items = [...transfer.items].filter((item) => item.kind === "file");
    const entries = items.map((item) => item.webkitGetAsEntry?.() ?? item.getAsFile());
    for (const entry of entries) {
        if (entry instanceof File) found.files.push({ file: entry, path: entry.name });
        else if (entry) await walk(entry, "", found);
    }
    return found;
}

function chosen(files) {
    const found = { files: [], others: 0 };
    for (const file of files) {
        const path = file.webkitRelativePath || file.name;
        if (!file.webkitRelativePath || isPicture(file.name)) found.files.push({ file, path });
        else found.others++;
    }
    return found;
}

/** Calls `take` with {files: [{file, path}], others}, whichever way they come. */
export function listen(take) {
    for (const input of [$("#files"), $("#folder")]) {
        input.addEventListener("change", () => {
            take(chosen(input.files));
            input.value = ""; // the same files can be chosen again
        });
    }
    document.querySelectorAll("[data-open]").forEach((button) => {
        button.addEventListener("click", () => $(button.dataset.open).click());
    });
    let depth = 0; // each element that the pointer enters tells of it
    const mark = (change) => {
        depth = Math.max(0, depth + change);
        document.body.classList.toggle("dropping", depth > 0);
    };
    addEventListener("dragenter", (event) => event.preventDefault() ?? mark(1));
    addEventListener("dragleave", () => mark(-1));
    addEventListener("dragover", (event) => event.preventDefault());
    addEventListener("drop", async (event) => {
        event.preventDefault();
        mark(-depth);
        take(await dropped(event.dataTransfer));
    });
    addEventListener("paste", (event) => {
        if (event.clipboardData?.files.length) take(chosen(event.clipboardData.files));
    });
}

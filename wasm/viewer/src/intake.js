// intake.js: files and folders that are dropped, chosen or pasted.
// SPDX-License-Identifier: BSD-2-Clause
import { $ } from "./page.js";

// What is taken out of a folder. A file that is given by itself is tried whatever its name.
const ENDINGS = new Set(
    "jpg jpeg jpe jfif jp2 j2k j2c jpc jpf jpx jph dds tif tiff png bmp dib pbm pgm ppm pnm pam pgx".split(" "),
);

export function isPicture(name) {
    return ENDINGS.has(/^[^.].*\.([^.]+)$/.exec(name)?.[1].toLowerCase());
}

/** What a folder holds: [name, what it is], in the order that people expect. */
async function within(folder) {
    const inner = [];
    if (folder.values) {
        for await (const handle of folder.values()) inner.push(handle);
    } else {
        const reader = folder.createReader();
        const read = () => new Promise((resolve, reject) => reader.readEntries(resolve, reject));
        // A folder tells of a hundred entries at a time, and ends with none.
        for (let some = await read(); some.length; some = await read()) inner.push(...some);
    }
    return inner.sort((a, b) => a.name.localeCompare(b.name, undefined, { numeric: true }));
}

function fileOf(entry) {
    return entry.getFile ? entry.getFile() : new Promise((resolve, reject) => entry.file(resolve, reject));
}

/** All pictures below a folder, with their paths. */
async function walk(folder, path, found) {
    for (const inner of await within(folder)) {
        if (inner.isDirectory || inner.kind === "directory") await walk(inner, `${path}${inner.name}/`, found);
        else if (isPicture(inner.name)) found.files.push({ file: await fileOf(inner), path: path + inner.name });
        else found.others++;
    }
}

async function dropped(transfer) {
    const found = { files: [], others: 0 };
    // All must be asked for before anything is waited for: the list is empty afterwards. Folders are read by their handles where
    // there are any, since entries cannot be read by a page that came from a folder itself.
    const items = [...transfer.items].filter((item) => item.kind === "file").map((item) => ({
        file: item.getAsFile(), entry: item.webkitGetAsEntry?.(), handle: item.getAsFileSystemHandle?.().catch(() => null),
    }));
    for (const { file, entry, handle } of items) {
        if (entry?.isDirectory) await walk((await handle) ?? entry, `${entry.name}/`, found);
        else if (file) found.files.push({ file, path: file.name });
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

// about.js: what the headers say, and what is wrong with a file.
// SPDX-License-Identifier: BSD-2-Clause
import { $, make, plural, size } from "./page.js";

const NAMES = {
    jpeg: "JPEG", jpeg2000: "JPEG 2000", dds: "DDS texture", tiff: "TIFF", png: "PNG", bmp: "BMP", pnm: "Netpbm", pgx: "PGX",
};

export function formatName(info) {
    const name = NAMES[info.format] ?? info.format;
    return info.mode ? `${name}, ${info.mode}` : name;
}

export function depthText({ kind, info }) {
    const channels = plural(kind.channels, "channel");
    const depths = [...new Set(info.components.map((c) => c.bits))].join(", ");
    return `${channels} of ${depths || kind.bits} bits${kind.signed ? ", signed" : ""}`;
}

function rows(item) {
    const { info } = item.look;
    const million = (info.width * info.height) / 1e6;
    const unit = { inch: "an inch", centimetre: "a centimetre", metre: "a metre" }[info.resolution?.unit];
    const beside = [["ICC profile", info.icc], ["EXIF", info.exif], ["XMP", info.xmp]].filter(([, bytes]) => bytes > 0);
    return [
        ["Format", formatName(info)],
        ["Size", `${info.width} × ${info.height}` + (million >= 0.1 ? ` (${million.toFixed(1)} MP)` : "")],
        ["Samples", depthText(item.look)],
        ["Colours", [info.colour, info.alpha && "alpha", info.lossless && "lossless"].filter(Boolean).join(", ")],
        info.tiles && ["Tiles", `${info.tiles.across} × ${info.tiles.down} of ${info.tiles.width} × ${info.tiles.height}`],
        info.levels > 0 && ["Sizes", `${info.levels + 1}, halved each time`],
        info.layers > 1 && [info.format === "dds" ? "Pictures" : "Layers", String(info.layers)],
        unit && ["Resolution", `${info.resolution.x} × ${info.resolution.y} pixels ${unit}`],
        beside.length && ["Beside it", beside.map(([name, bytes]) => `${name} ${size(bytes)}`).join(", ")],
        ["File", size(item.file.size)],
    ].filter(Boolean);
}

/** Fills the panel. */
export function describe(item) {
    $("#facts").replaceChildren(...rows(item).flatMap(([name, text]) => [make("dt", {}, name), make("dd", {}, text)]));
    $("#headers").textContent = item.look.info.text;
    $("#headers").closest("details").hidden = !item.look.info.text;
}

/** The line above the picture: what cannot be opened, or only in part. */
export function trouble(text = "", grave = false) {
    const note = $("#trouble");
    note.hidden = !text;
    note.classList.toggle("grave", grave);
    $("#trouble-kind").textContent = grave ? "Cannot be opened" : "Damaged";
    $("#trouble-text").textContent = text;
}

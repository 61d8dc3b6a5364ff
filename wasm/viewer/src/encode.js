// encode.js: pictures into files of another kind. Each loss is told in a warning.
// SPDX-License-Identifier: BSD-2-Clause
import { layoutOf, levelTable, maximum, statistics, withoutInks } from "./samples.js";
import { crc32 } from "./zip.js";

export const ENDINGS = { png: ".png", jpeg: ".jpg", jpeg2000: ".jp2" };

function without(picture, lost, make) {
    const { channels, data } = picture;
    const kept = channels - 1;
    const result = { ...picture, channels: kept, colour: picture.colour.slice(0, -1) };
    result.data = new data.constructor((data.length / channels) * kept);
    for (let from = 0, to = 0; from < data.length; from += channels) {
        for (let c = 0; c < kept; c++) result.data[to++] = make(data[from + c], data[from + kept]);
    }
    lost.push("alpha is gone: the picture lies on white");
    return result;
}

/** JPEG has no alpha. */
function onWhite(picture, lost) {
    if (layoutOf(picture.colour, picture.channels).alpha < 0) return picture;
    const most = maximum(picture.bits);
    return without(picture, lost, (sample, alpha) => Math.floor((sample * alpha + most * (most - alpha) + (most >> 1)) / most));
}

/** Eight bits a sample, which every program reads. Grey is stretched, as on the screen. */
function toBytes(picture, lost) {
    if (picture.bits <= 8) return picture;
    const stretch = picture.colour.startsWith("grey");
    const { low, high } = stretch ? statistics(picture) : { low: 0, high: maximum(picture.bits) };
    const table = levelTable(picture.bits, low, high);
    lost.push(`8 of ${picture.bits} bits are kept` + (stretch ? `, from ${low} (black) to ${high} (white)` : ""));
    return { ...picture, bits: 8, data: Uint8Array.from(picture.data, (v) => table[v]) };
}

function encoded(zmx, picture, options, lost) {
    const { bytes, warnings } = zmx.encode(picture, options);
    const all = [...(picture.damaged ? picture.warnings : []), ...lost, ...warnings];
    return { bytes, crc: crc32(bytes), warnings: all };
}

/** PNG keeps all bits of grey and colours; inks become colours. */
export function toPng(zmx, picture) {
    const lost = picture.colour.startsWith("cmyk") ? ["CMYK became RGB, without a profile"] : [];
    return encoded(zmx, withoutInks(picture), { format: "png" }, lost);
}

/** `format`, and for JPEG `quality`, for JPEG2000 `ratio` (0: without loss). */
export function convert(zmx, picture, { format, quality, ratio }) {
    if (format === "png") return toPng(zmx, picture);
    const lost = [];
    if (format === "jpeg2000") {
        return encoded(zmx, picture, ratio > 0 ? { format, ratio } : { format, lossless: true }, lost);
    }
    if (picture.colour.startsWith("cmyk")) lost.push("CMYK became RGB, without a profile");
    return encoded(zmx, toBytes(onWhite(withoutInks(picture), lost), lost), { format, quality, optimize: true }, lost);
}

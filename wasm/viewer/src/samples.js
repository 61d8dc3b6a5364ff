// samples.js: pictures as the codecs give them (rows of interleaved samples): parts of them, halves, and pixels for the screen.
// The page and its workers both use it.
// SPDX-License-Identifier: BSD-2-Clause

/** How the channels of a picture are meant: the name without alpha, where alpha stands, and a name for each channel. */
export function layoutOf(colour, channels) {
    const alpha = colour.endsWith("a") ? channels - 1 : -1;
    const base = alpha < 0 ? colour : colour.slice(0, -1);
    const known = { grey: ["Grey"], rgb: ["Red", "Green", "Blue"], cmyk: ["Cyan", "Magenta", "Yellow", "Black"] }[base];
    const names = [];
    for (let c = 0; c < channels; c++) names.push(c === alpha ? "Alpha" : (known?.[c] ?? `Channel ${c + 1}`));
    return { base, alpha, names };
}

function like(picture, width, height) {
    const Samples = picture.data.constructor;
    return { ...picture, width, height, data: new Samples(width * height * picture.channels) };
}

/** A part of a picture, as a picture of its own. */
export function crop(picture, x, y, width, height) {
    const part = like(picture, width, height);
    const { channels, data } = picture;
    for (let row = 0; row < height; row++) {
        const from = ((y + row) * picture.width + x) * channels;
        part.data.set(data.subarray(from, from + width * channels), row * width * channels);
    }
    return part;
}

/** Copies a picture into another of the same kind. */
export function paste(into, picture, x, y) {
    const width = Math.min(picture.width, into.width - x);
    const rows = Math.min(picture.height, into.height - y);
    for (let row = 0; row < rows; row++) {
        const from = row * picture.width * picture.channels;
        into.data.set(picture.data.subarray(from, from + width * picture.channels), ((y + row) * into.width + x) * into.channels);
    }
}

export function blank(picture, width, height) {
    return like(picture, width, height);
}

/** Half as wide and half as high: each sample is the mean of two by two, or of those that are there. */
export function halve(picture) {
    const { width, height, channels, data } = picture;
    const half = like(picture, Math.ceil(width / 2), Math.ceil(height / 2));
    let at = 0;
    for (let y = 0; y < half.height; y++) {
        const upper = 2 * y * width * channels;
        // At an odd edge the last row and column stand for the ones that are missing.
        const lower = 2 * y + 1 < height ? upper + width * channels : upper;
        for (let x = 0; x < half.width; x++) {
            const left = 2 * x * channels;
            const right = 2 * x + 1 < width ? left + channels : left;
            for (let c = 0; c < channels; c++) {
                const sum = data[upper + left + c] + data[upper + right + c] + data[lower + left + c] + data[lower + right + c];
                half.data[at++] = (sum + 2) >> 2;
            }
        }
    }
    return half;
}

export function maximum(bits) {
    return 2 ** bits - 1;
}

/** CMYK as red, green and blue at its own depth: what the inks absorb, without a profile. Alpha stays. */
export function inksToRgb(picture) {
    const { channels, data, bits } = picture;
    const most = maximum(bits);
    const alpha = channels === 5;
    const rgb = { ...picture, channels: alpha ? 4 : 3, colour: alpha ? "rgba" : "rgb", icc: undefined };
    rgb.data = new data.constructor(picture.width * picture.height * rgb.channels);
    for (let from = 0, to = 0; from < data.length; from += channels) {
        for (let c = 0; c < 3; c++) {
            rgb.data[to++] = Math.floor(((most - data[from + c]) * (most - data[from + 3]) + (most >> 1)) / most);
        }
        if (alpha) rgb.data[to++] = data[from + 4];
    }
    return rgb;
}

/** Makes RGB of CMYK, and leaves all else as it is. */
export function withoutInks(picture) {
    return picture.colour.startsWith("cmyk") ? inksToRgb(picture) : picture;
}

/** A byte for each sample value: black up to `low`, white from `high` on. With the whole range it is what the command does. */
export function levelTable(bits, low, high, invert = false) {
    const table = new Uint8ClampedArray(2 ** bits);
    const span = Math.max(high - low, 1e-6);
    for (let v = 0; v < table.length; v++) {
        const shade = Math.min(255, Math.max(0, Math.floor(((v - low) * 255 + span / 2) / span)));
        table[v] = invert ? 255 - shade : shade;
    }
    return table;
}

/** Draws the samples as RGBA. `look` has the table of levels and the channel that is shown alone, or -1 for colours. */
export function toRgba(given, look, rgba = new Uint8ClampedArray(given.width * given.height * 4)) {
    const one = look.channel >= 0 && look.channel < given.channels;
    const picture = one ? given : withoutInks(given);
    const { channels, data } = picture;
    const { base, alpha } = layoutOf(picture.colour, channels);
    const colours = channels - (alpha < 0 ? 0 : 1);
    const grey = one || base === "grey" || colours < 3;
    const first = one ? look.channel : 0;
    // Levels are not for alpha, which is drawn as it is.
    const plain = levelTable(picture.bits, 0, maximum(picture.bits));
    const table = one && first === alpha ? plain : look.table;
    for (let from = 0, to = 0; from < data.length; from += channels, to += 4) {
        rgba[to] = table[data[from + first]];
        rgba[to + 1] = grey ? rgba[to] : table[data[from + 1]];
        rgba[to + 2] = grey ? rgba[to] : table[data[from + 2]];
        rgba[to + 3] = one || alpha < 0 ? 255 : plain[data[from + alpha]];
    }
    return rgba;
}

/** How often values occur, in 256 steps of the whole range, and the range that all but a few samples fill. */
export function statistics(picture) {
    const { channels, data, bits } = picture;
    const { alpha } = layoutOf(picture.colour, channels);
    const counts = new Uint32Array(2 ** bits);
    for (let i = 0; i < data.length; i++) {
        if (i % channels !== alpha) counts[data[i]]++;
    }
    const total = counts.reduce((sum, n) => sum + n, 0);
    const reach = (share) => {
        let seen = 0;
        return counts.findIndex((n) => (seen += n) > total * share);
    };
    const histogram = new Array(256).fill(0);
    counts.forEach((n, v) => (histogram[Math.floor((v * 256) / counts.length)] += n));
    const low = Math.max(0, reach(0.002));
    const high = reach(0.998);
    return { histogram, low, high: high > low ? high : low + 1 };
}

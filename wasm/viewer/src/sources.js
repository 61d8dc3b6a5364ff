// sources.js: where the workers take the tiles of a picture from. A JPEG2000 file decodes windows at the size that is wanted; all
// other pictures are decoded once, and halved as often as asked.
// SPDX-License-Identifier: BSD-2-Clause
import { blank, crop, halve, paste } from "./samples.js";

export const TILE = 512; // pixels of a tile on each side, at the size of its level
const THUMB = 384; // a thumbnail is at most so wide and high
const SPARE = 3; // levels that a window is halved beyond those of its file: 4096 pixels a side at the most are decoded for a tile

/** How many times a picture is halved until it fits into a square of `side`. */
export function levelsFor(info, side = TILE) {
    let levels = 0;
    while (Math.max(info.width, info.height) > side * 2 ** levels) levels++;
    return levels;
}

/** Whether parts of the file can be decoded without the whole. */
export function hasWindows(info) {
    return info.format === "jpeg2000";
}

/** The smallest size that a view asks tiles of. */
export function topLevel(info) {
    return hasWindows(info) ? Math.min(levelsFor(info), info.levels + SPARE) : levelsFor(info);
}

function repeat(times, picture) {
    for (let i = 0; i < times; i++) picture = halve(picture);
    return picture;
}

class Windows {
    constructor(zmx, bytes) {
        this.image = zmx.open(bytes);
        this.info = this.image.info;
    }
    tile(level, x, y) {
        const side = TILE * 2 ** level;
        const window = { x: x * side, y: y * side, width: side, height: side };
        window.width = Math.min(side, this.info.width - window.x);
        window.height = Math.min(side, this.info.height - window.y);
        const reduce = Math.min(level, this.info.levels);
        const picture = this.image.decode({ window, reduce });
        const decoded = picture.width * picture.height;
        return { ...repeat(level - reduce, picture), decoded };
    }
    pixel(x, y) {
        return this.image.decode({ window: { x, y, width: 1, height: 1 } });
    }
    close() {
        this.image.close();
    }
}

class Whole {
    constructor(zmx, bytes, info) {
        this.info = info;
        this.sizes = [zmx.decode(bytes)];
        this.decoded = this.sizes[0].width * this.sizes[0].height;
    }
    tile(level, x, y) {
        while (this.sizes.length <= level) this.sizes.push(halve(this.sizes.at(-1)));
        const picture = this.sizes[level];
        const [left, top] = [x * TILE, y * TILE];
        const part = crop(picture, left, top, Math.min(TILE, picture.width - left), Math.min(TILE, picture.height - top));
        const decoded = this.decoded; // the first tile has the work of all
        this.decoded = 0;
        return { ...part, decoded };
    }
    pixel(x, y) {
        return crop(this.sizes[0], x, y, 1, 1);
    }
    close() {
        this.sizes = [];
    }
}

export function openSource(zmx, bytes, info) {
    return hasWindows(info) ? new Windows(zmx, bytes) : new Whole(zmx, bytes, info);
}

/** The whole picture, small: a reduced decoding, halved further. */
export function thumbnail(zmx, bytes, info) {
    const level = levelsFor(info, THUMB);
    if (!hasWindows(info) || level <= info.levels + SPARE) {
        const reduce = Math.min(level, info.levels);
        return repeat(level - reduce, zmx.decode(bytes, reduce ? { reduce } : {}));
    }
    // A huge picture with few levels of its own: tile by tile, so that no more than a window is in memory.
    const source = new Windows(zmx, bytes);
    try {
        const top = topLevel(info);
        let small = null;
        for (let y = 0; y * TILE * 2 ** top < info.height; y++) {
            for (let x = 0; x * TILE * 2 ** top < info.width; x++) {
                const part = repeat(level - top, source.tile(top, x, y));
                const side = TILE / 2 ** (level - top);
                small ??= blank(part, Math.ceil(info.width / 2 ** level), Math.ceil(info.height / 2 ** level));
                paste(small, part, x * side, y * side);
                if (part.damaged) Object.assign(small, { damaged: true, warnings: part.warnings });
            }
        }
        return small;
    } finally {
        source.close();
    }
}

// pyramid.js: the tiles of the picture that is being looked at: which ones a view needs, which are being decoded, and which are kept.
// A tile of level n shows 2^n times as many pixels of the picture on each side as it has.
// SPDX-License-Identifier: BSD-2-Clause
import { TILE } from "./sources.js";
import { toRgba } from "./samples.js";
import { Cancelled } from "./pool.js";

export class Pyramid {
    /** `ask` decodes a tile; `changed` is called when one has come; `room` is how many bytes of tiles are kept. */
    constructor({ width, height, top, seeThrough, room, ask, changed }) {
        Object.assign(this, { width, height, top, seeThrough, room, ask, changed });
        this.tiles = new Map(); // in the order of their last use
        this.waiting = new Map();
        this.bytes = 0;
        this.decoded = 0; // pixels that codecs have made for this picture
        this.error = "";
        this.look = null;
        this.version = 0;
    }

    static key(level, x, y) {
        return `${level}/${x}/${y}`;
    }

    /** All tiles are drawn anew with these levels and channels, as they are needed. */
    setLook(look) {
        this.look = look;
        this.version++;
    }

    /** The level whose pixels come nearest to those of the screen. */
    levelFor(scale) {
        const level = Math.floor(Math.log2(1 / scale) + 0.5);
        return Math.min(this.top, Math.max(0, level));
    }

    /** The tiles of a level that touch a box of the picture, those nearest to its middle first. */
    within(box, level) {
        const side = TILE * 2 ** level;
        const last = { x: Math.ceil(this.width / side) - 1, y: Math.ceil(this.height / side) - 1 };
        const list = [];
        for (let y = Math.max(0, Math.floor(box.top / side)); y <= Math.min(last.y, Math.floor((box.bottom - 1e-6) / side)); y++) {
            for (let x = Math.max(0, Math.floor(box.left / side)); x <= Math.min(last.x, Math.floor((box.right - 1e-6) / side)); x++) {
                const away = Math.hypot((x + 0.5) * side - (box.left + box.right) / 2, (y + 0.5) * side - (box.top + box.bottom) / 2);
                list.push({ level, x, y, away });
            }
        }
        return list.sort((a, b) => a.away - b.away);
    }

    /** Asks for what a view needs and gives up what it does not; says which tiles those are. */
    need(box, scale) {
        const level = this.levelFor(scale);
        const wanted = this.within(box, level);
        const keys = new Set(wanted.map((t) => Pyramid.key(t.level, t.x, t.y)));
        keys.add(Pyramid.key(this.top, 0, 0)); // something to show at once, wherever one goes
        for (const [key, stop] of this.waiting) {
            if (!keys.has(key)) stop();
        }
        if (level < this.top && wanted.length) this.request({ level: this.top, x: 0, y: 0 });
        wanted.forEach((tile, order) => this.request(tile, order));
        this.trim(keys);
        return wanted;
    }

    request({ level, x, y }, order = 0) {
        const key = Pyramid.key(level, x, y);
        if (this.tiles.has(key) || this.waiting.has(key) || this.error) return;
        const job = this.ask({ level, x, y, order });
        this.waiting.set(key, job.stop);
        job.answer.then(
            (picture) => this.keep(key, picture),
            (error) => {
                if (!(error instanceof Cancelled)) this.error = error.message;
            },
        ).finally(() => {
            this.waiting.delete(key);
            this.changed();
        });
    }

    keep(key, picture) {
        const canvas = document.createElement("canvas");
        [canvas.width, canvas.height] = [picture.width, picture.height];
        const size = picture.data.byteLength + 4 * picture.width * picture.height;
        this.tiles.set(key, { picture, canvas, size, version: -1 });
        this.bytes += size;
        this.decoded += picture.decoded;
    }

    trim(keys) {
        for (const [key, tile] of this.tiles) {
            if (this.bytes <= this.room) return;
            if (keys.has(key)) continue;
            this.tiles.delete(key);
            this.bytes -= tile.size;
            tile.canvas.width = 0; // gives its memory back now
        }
    }

    /** A tile as it is kept, drawn with the present look; undefined when it is not there. */
    get(level, x, y) {
        const key = Pyramid.key(level, x, y);
        const tile = this.tiles.get(key);
        if (!tile) return undefined;
        this.tiles.delete(key);
        this.tiles.set(key, tile);
        if (tile.version !== this.version) {
            const { width, height } = tile.picture;
            tile.canvas.getContext("2d").putImageData(new ImageData(toRgba(tile.picture, this.look), width, height), 0, 0);
            tile.version = this.version;
        }
        return tile;
    }

    /** The image for a tile and the part of it: its own, or what a coarser one shows of it. */
    best({ level, x, y }) {
        for (let up = 0; level + up <= this.top; up++) {
            const share = 2 ** up;
            const tile = this.get(level + up, Math.floor(x / share), Math.floor(y / share));
            if (!tile) continue;
            if (!up) return { tile, part: { x: 0, y: 0, width: tile.picture.width, height: tile.picture.height }, own: true };
            const side = TILE / share;
            const part = { x: (x % share) * side, y: (y % share) * side };
            part.width = Math.min(side, tile.picture.width - part.x);
            part.height = Math.min(side, tile.picture.height - part.y);
            return part.width > 0 && part.height > 0 ? { tile, part, own: false } : null;
        }
        return null;
    }

    /** The samples of a pixel, when its tile of full size is here. */
    samples(x, y) {
        const tile = this.tiles.get(Pyramid.key(0, Math.floor(x / TILE), Math.floor(y / TILE)));
        if (!tile) return null;
        const { width, channels, data } = tile.picture;
        const at = ((y % TILE) * width + (x % TILE)) * channels;
        return Array.from(data.subarray(at, at + channels));
    }

    close() {
        for (const stop of this.waiting.values()) stop();
        for (const tile of this.tiles.values()) tile.canvas.width = 0;
        this.tiles.clear();
        this.bytes = 0;
    }
}

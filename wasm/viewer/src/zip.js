// zip.js: a zip file of files that are compressed already: they are stored as they are (APPNOTE 6.3, without ZIP64).
// SPDX-License-Identifier: BSD-2-Clause

const LIMIT = 0xffffffff;
const UTF8_NAMES = 0x0800;

const table = Uint32Array.from({ length: 256 }, (_, n) => {
    for (let bit = 0; bit < 8; bit++) n = n & 1 ? (n >>> 1) ^ 0xedb88320 : n >>> 1;
    return n;
});

export function crc32(bytes) {
    let crc = LIMIT;
    for (let i = 0; i < bytes.length; i++) crc = table[(crc ^ bytes[i]) & 255] ^ (crc >>> 8);
    return (crc ^ LIMIT) >>> 0;
}

/** Numbers of 2 and 4 bytes, low byte first: fields(4, a, 2, b). */
function fields(...pairs) {
    const bytes = [];
    for (let i = 0; i < pairs.length; i += 2) {
        for (let n = 0; n < pairs[i]; n++) bytes.push(Math.floor(pairs[i + 1] / 256 ** n) & 255);
    }
    return Uint8Array.from(bytes);
}

/** Date and time as MS-DOS counts them: from 1980, in steps of two seconds. */
function dosTime(date) {
    const time = (date.getHours() << 11) | (date.getMinutes() << 5) | (date.getSeconds() >> 1);
    const day = (Math.max(0, date.getFullYear() - 1980) << 9) | ((date.getMonth() + 1) << 5) | date.getDate();
    return [time, day];
}

/** Collects files as blobs, which the browser may keep on disk, and gives the whole. */
export class Zip {
    constructor(date = new Date()) {
        this.when = dosTime(date);
        this.parts = [];
        this.directory = [];
        this.length = 0;
    }
    add(name, blob, crc) {
        const path = new TextEncoder().encode(name);
        const [time, day] = this.when;
        const sizes = [4, crc, 4, blob.size, 4, blob.size];
        const shared = fields(2, 20, 2, UTF8_NAMES, 2, 0, 2, time, 2, day, ...sizes, 2, path.length);
        if (this.length + blob.size > LIMIT - 1e6 || this.directory.length >= 65000) {
            throw new Error("more than a zip file holds: save to a folder, or convert fewer pictures at once");
        }
        const head = new Blob([fields(4, 0x04034b50), shared, fields(2, 0), path]);
        this.directory.push(new Blob([fields(4, 0x02014b50, 2, 20), shared, fields(2, 0, 2, 0, 2, 0, 2, 0, 4, 0, 4, this.length), path]));
        this.parts.push(head, blob);
        this.length += head.size + blob.size;
    }
    finish() {
        const directory = new Blob(this.directory);
        const count = this.directory.length;
        const end = fields(4, 0x06054b50, 2, 0, 2, 0, 2, count, 2, count, 4, directory.size, 4, this.length, 2, 0);
        return new Blob([...this.parts, directory, end], { type: "application/zip" });
    }
}

// worker.js: decodes and encodes, a job a message. It keeps the picture that tiles are asked of, and nothing else.
// SPDX-License-Identifier: BSD-2-Clause
import { load } from "zmxjpx";
import { convert, toPng } from "./encode.js";
import { levelTable, maximum, statistics, toRgba } from "./samples.js";
import { openSource, thumbnail } from "./sources.js";

const ROOM = 96 * 2 ** 20; // bytes of WebAssembly memory that are kept between jobs
let zmx = null;
let current = null; // the picture that is being looked at: its key and its source

function drop() {
    current?.source.close();
    current = null;
}

/** WebAssembly memory never shrinks: after a large picture a new instance takes its place. */
function giveBack() {
    if (zmx.memory <= ROOM) return;
    drop();
    zmx.reset();
}

async function bytesOf(file) {
    return new Uint8Array(await file.arrayBuffer());
}

async function sourceOf(job) {
    if (current?.key !== job.key) {
        drop();
        const bytes = await bytesOf(job.file);
        current = { key: job.key, source: openSource(zmx, bytes, job.info) };
        // A whole picture is in our memory now, and the module's can go; windows are decoded from the module's.
        if (!current.source.image && zmx.memory > ROOM) zmx.reset();
    }
    return current.source;
}

const jobs = {
    async look({ file }) {
        const bytes = await bytesOf(file);
        const info = zmx.info(bytes);
        const small = thumbnail(zmx, bytes, info);
        const range = statistics(small);
        const most = maximum(small.bits);
        // Grey of more than 8 bits seldom fills its range: it is stretched. Colours are shown as they are.
        const stretch = small.bits > 8 && small.colour.startsWith("grey");
        const start = stretch ? { low: range.low, high: range.high } : { low: 0, high: most };
        const rgba = toRgba(small, { table: levelTable(small.bits, start.low, start.high), channel: -1 });
        const { width, height, channels, bits, colour, signed, orientation, damaged, warnings } = small;
        giveBack();
        const kind = { channels, bits, colour, signed, orientation };
        return [{ info, range, start, thumb: { width, height, rgba }, kind, damaged, warnings }, [rgba.buffer]];
    },
    async tile(job) {
        const source = await sourceOf(job);
        const { width, height, channels, bits, colour, data, damaged, warnings, decoded } = source.tile(job.level, job.x, job.y);
        return [{ width, height, channels, bits, colour, data, damaged, warnings, decoded }, [data.buffer]];
    },
    async pixel(job) {
        const source = await sourceOf(job);
        return [Array.from(source.pixel(job.x, job.y).data), []];
    },
    async save({ file }) {
        const result = toPng(zmx, zmx.decode(await bytesOf(file)));
        giveBack();
        return [result, [result.bytes.buffer]];
    },
    async convert({ file, options }) {
        const result = convert(zmx, zmx.decode(await bytesOf(file)), options);
        giveBack();
        return [result, [result.bytes.buffer]];
    },
};

let begun;
const started = new Promise((resolve) => (begun = resolve));
let line = started; // one job at a time, in the order of the messages
onmessage = ({ data: job }) => {
    if (job.kind === "start") begun(load({ wasm: job.module, simd: job.simd }));
    else line = line.catch(() => null).then(() => answer(job));
};

async function answer(job) {
    try {
        zmx = await started;
        const [result, transfer] = await jobs[job.kind](job);
        postMessage({ id: job.id, result }, transfer);
    } catch (error) {
        // After a trap the codecs began anew, without the picture that was open.
        if (error.cause) drop();
        // What a codec says is said of the file. After all else nobody should go on with this worker.
        const fatal = error.name !== "ZmxError" && error.name !== "NotReadableError" && error.name !== "NotFoundError";
        const message = error instanceof RangeError ? "the picture is too large for the memory of this browser" : error.message;
        postMessage({ id: job.id, error: message, fatal });
    }
}

// convert.js: all files of the list into PNG, JPEG or JPEG2000; into a zip file, or into a folder where the browser can write to one.
// SPDX-License-Identifier: BSD-2-Clause
import { $, announce, make, plural, saveAs, size } from "./page.js";
import { Cancelled } from "./pool.js";
import { ENDINGS } from "./encode.js";
import { Zip } from "./zip.js";

/** A name in the result: the path with another ending, and a number when there is one already. */
export function nameFor(path, ending, taken) {
    const dot = path.lastIndexOf(".");
    const stem = dot > path.lastIndexOf("/") + 1 ? path.slice(0, dot) : path;
    let name = stem + ending;
    for (let n = 2; taken.has(name.toLowerCase()); n++) name = `${stem} (${n})${ending}`;
    taken.add(name.toLowerCase());
    return name;
}

/** Where results go: a zip file that is handed over at the end. */
function zipSink() {
    const zip = new Zip();
    return {
        add: (name, { bytes, crc }) => zip.add(name, new Blob([bytes]), crc),
        rest: "nothing is handed over",
        finish() {
            const blob = zip.finish();
            saveAs(blob, "converted.zip");
            return `converted.zip, ${size(blob.size)}`;
        },
    };
}

/** A folder that the visitor chooses. */
async function folderSink() {
    const root = await window.showDirectoryPicker({ mode: "readwrite" });
    return {
        async add(name, { bytes }) {
            const path = name.split("/");
            let folder = root;
            for (const part of path.slice(0, -1)) folder = await folder.getDirectoryHandle(part, { create: true });
            const file = await (await folder.getFileHandle(path.at(-1), { create: true })).createWritable();
            await file.write(bytes);
            await file.close();
        },
        rest: "what was written stays",
        finish: () => `saved in ${root.name || "the folder"}`,
    };
}

export class Conversion {
    /** `items` gives the files, `pool` does the work. */
    constructor({ items, pool }) {
        Object.assign(this, { items, pool });
        this.dialog = $("#convert");
        $("#convert-form").addEventListener("change", () => this.choices());
        $("#convert-quality").addEventListener("input", () => this.choices());
        $("#convert-zip").addEventListener("click", () => this.start(zipSink));
        $("#convert-folder").addEventListener("click", () => this.start(folderSink));
        $("#convert-stop").addEventListener("click", () => this.stop());
        this.dialog.addEventListener("close", () => this.stop());
        $("#convert-folder").hidden = !window.showDirectoryPicker;
    }

    open() {
        this.choices();
        $("#convert-report").replaceChildren();
        $("#convert-count").textContent = plural(this.items().length, "picture");
        this.dialog.showModal();
    }

    get options() {
        const format = $("#convert-form").elements.format.value;
        return { format, quality: $("#convert-quality").valueAsNumber, ratio: Number($("#convert-ratio").value) };
    }

    choices() {
        const { format, quality } = this.options;
        $("#convert-jpeg").hidden = format !== "jpeg";
        $("#convert-jpeg2000").hidden = format !== "jpeg2000";
        $("#convert-quality-text").textContent = quality;
    }

    busy(is) {
        $("#convert-form").inert = is;
        $("#convert-progress").hidden = !is;
        $("#convert-stop").hidden = !is;
        $("#convert-zip").disabled = $("#convert-folder").disabled = is;
    }

    stop() {
        this.pool.cancel((job) => job.kind === "convert", true);
        this.stopped = true;
    }

    note(item, text, failed) {
        $("#convert-report").append(make("li", { class: failed ? "failed" : "" }, make("b", {}, item.path), ` ${text}`));
    }

    async start(sinkOf) {
        let sink;
        try {
            sink = await sinkOf();
        } catch {
            return; // no folder was chosen
        }
        const items = [...this.items()];
        this.stopped = false;
        this.busy(true);
        $("#convert-report").replaceChildren();
        const done = await this.all(items, sink).catch((error) => ({ ended: error.message }));
        this.busy(false);
        const failed = done.bad ? `, ${done.bad} failed` : "";
        const text = done.ended ?? `${plural(done.good, "picture")} converted${failed}: ${done.where}`;
        $("#convert-report").prepend(make("li", { class: "sum" }, text));
        announce(text);
    }

    /** A few at a time; a file that fails is told, and the others go on. */
    async all(items, sink) {
        const { options } = this;
        const taken = new Set();
        const names = items.map((item) => nameFor(item.path, ENDINGS[options.format], taken));
        const bar = $("#convert-progress");
        [bar.max, bar.value] = [items.length, 0];
        let next = 0;
        let [good, bad] = [0, 0];
        const one = async () => {
            while (next < items.length && !this.stopped) {
                const at = next++;
                try {
                    const result = await this.pool.run({ kind: "convert", file: items[at].file, options, heavy: true });
                    await sink.add(names[at], result);
                    if (result.warnings.length) this.note(items[at], result.warnings.join("; "), false);
                    good++;
                } catch (error) {
                    if (error instanceof Cancelled) return;
                    this.note(items[at], error.message, true);
                    bad++;
                }
                bar.value++;
            }
        };
        await Promise.all([one(), one(), one()]);
        if (this.stopped) return { ended: `Stopped: ${plural(good, "picture")} converted, ${sink.rest}` };
        return { good, bad, where: good ? await sink.finish() : "nothing to hand over" };
    }
}

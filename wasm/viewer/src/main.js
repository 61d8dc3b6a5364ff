// main.js: the page. It keeps the list of files, shows the chosen one, and connects controls, canvas and workers.
// SPDX-License-Identifier: BSD-2-Clause
import { describe, formatName, trouble } from "./about.js";
import { Channels } from "./channels.js";
import { Conversion } from "./convert.js";
import * as gestures from "./gestures.js";
import * as intake from "./intake.js";
import * as keys from "./keys.js";
import { Levels } from "./levels.js";
import { $, announce, notify, plural, saveAs } from "./page.js";
import { Cancelled, Pool } from "./pool.js";
import { Pyramid } from "./pyramid.js";
import { Readout } from "./readout.js";
import { hasWindows, topLevel } from "./sources.js";
import { layoutOf, levelTable } from "./samples.js";
import { Strip } from "./strip.js";
import { View } from "./view.js";
import { workerStart } from "./start.js";

const phone = matchMedia("(max-width: 760px)");
const ROOM = (navigator.deviceMemory ?? 8) <= 4 || phone.matches ? 64e6 : 192e6; // bytes of tiles
let keysGiven = 0;
let shown = null; // the item in the view
let tool = "pan";

const pool = new Pool(workerStart(), Math.min(4, Math.max(2, navigator.hardwareConcurrency || 2)));
const view = new View($("#view"), drawn);
const levels = new Levels(relook);
const channels = new Channels(relook);
const readout = new Readout(async (pixel) => (shown ? pool.run({ kind: "pixel", ...place(shown), x: pixel.sx, y: pixel.sy }) : null));
const strip = new Strip({ choose: open, seen: look });
const conversion = new Conversion({ items: () => strip.items, pool });

/** What a worker must know to decode parts of a picture. A picture without windows stays with the worker that decoded it. */
function place(item) {
    const windows = hasWindows(item.look.info);
    return { file: item.file, key: item.key, info: item.look.info, heavy: !windows, pin: windows ? undefined : 0 };
}

function take({ files, others }) {
    for (const { file, path } of files) {
        strip.add({ key: ++keysGiven, file, path, name: path.slice(path.lastIndexOf("/") + 1), look: null, error: "" });
    }
    document.body.classList.toggle("empty", strip.items.length === 0);
    $("#count").textContent = plural(strip.items.length, "picture");
    if (others) notify(files.length ? `${plural(files.length, "file")} added, ${others} passed over` : "No picture among these files");
    else if (files.length) announce(`${plural(files.length, "file")} added`);
    if (!strip.chosen && strip.items.length) strip.select(strip.items[0], true);
    refresh();
}

/** Headers and thumbnail of a file, once. */
function look(item) {
    item.looking ??= pool.run({ kind: "look", file: item.file, key: item.key }).then(
        (result) => { item.look = result; },
        (error) => { item.error = error.message; },
    ).then(() => {
        strip.update(item);
        if (item === strip.chosen) display(item);
    });
    return item.looking;
}

/** An item was chosen. */
function open(item) {
    if (shown && shown !== item) leave();
    shown = null;
    $("#title").textContent = item.name;
    document.title = `${item.name} – zmxjpx viewer`;
    mark("loading");
    if (item.look || item.error) return display(item);
    view.clear();
    trouble();
    document.body.classList.remove("failed");
    const looked = look(item);
    pool.hurry((job) => job.kind === "look" && job.key === item.key); // ahead of the other thumbnails
    return looked;
}

/** Nobody waits any more for what belongs to the picture that was shown. */
function leave() {
    shown.levels = levels.state;
    shown.channel = channels.chosen;
    const { key } = shown;
    view.clear();
    pool.cancel((job) => job.key === key, true);
}

function display(item) {
    trouble(item.error || (item.look.damaged ? item.look.warnings.join("; ") : ""), Boolean(item.error));
    document.body.classList.toggle("failed", Boolean(item.error));
    refresh();
    if (item.error) {
        view.clear();
        readout.open(null);
        mark("failed");
        announce(`${item.name} cannot be opened: ${item.error}`);
        return;
    }
    shown = item;
    const { info, kind } = item.look;
    levels.open(item.look, item.levels);
    channels.open(kind, item.channel);
    readout.open(kind);
    describe(item);
    view.show(pyramidOf(item), kind.orientation, item.thumb);
    relook();
    const what = `${item.name}, ${formatName(info)}, ${info.width} by ${info.height} pixels`;
    view.canvas.setAttribute("aria-label", `${what}. Arrow keys move, plus and minus zoom.`);
    announce(what + (item.look.damaged ? ". Damaged" : ""));
}

function pyramidOf(item) {
    const { info, kind } = item.look;
    return new Pyramid({
        seeThrough: layoutOf(kind.colour, kind.channels).alpha >= 0,
        width: info.width, height: info.height, top: topLevel(info), room: ROOM,
        changed: () => view.draw(),
        ask({ level, x, y, order }) {
            const job = { kind: "tile", ...place(item), level, x, y, order };
            const mine = (other) => ["kind", "key", "level", "x", "y"].every((field) => other[field] === job[field]);
            return { answer: pool.run(job), stop: () => pool.cancel(mine) };
        },
    });
}

/** Levels or channels have changed. */
function relook() {
    if (!shown) return;
    const { low, high, invert } = levels.state;
    view.pyramid?.setLook({ table: levelTable(shown.look.kind.bits, low, high, invert), channel: channels.chosen });
    view.draw();
}

function mark(state) {
    view.canvas.dataset.state = state;
    $("#stage").setAttribute("aria-busy", String(state === "loading"));
}

/** After each frame: the scale, where the picture is (for whoever looks from outside), and how much has been decoded. */
function drawn({ frame, whole, damaged, error, place: box }) {
    if (!shown) return;
    const item = shown;
    $("#scale").textContent = `${Math.round(frame.scale * 1000) / 10} %`;
    if (error && !item.error) {
        item.error = error;
        strip.update(item);
        display(item);
        return;
    }
    if (damaged && !item.look.damaged) {
        item.look.damaged = true;
        strip.update(item);
        trouble(item.look.warnings.join("; ") || "Parts of the picture could not be decoded.");
    }
    Object.assign(view.canvas.dataset, { left: box.left, top: box.top, scale: frame.scale, decoded: view.pyramid.decoded });
    const { info } = item.look;
    const [done, all] = [view.pyramid.decoded / 1e6, (info.width * info.height) / 1e6];
    // Of a small picture all of its sizes together are soon more than the picture itself, and nobody minds.
    $("#decoded").textContent = hasWindows(info) && all >= 4 ? `${done.toFixed(1)} of ${all.toFixed(1)} MP decoded so far` : "";
    mark(whole ? "ready" : "loading");
}

/** What can be done now. */
function refresh() {
    const some = Boolean(strip.chosen?.look && !strip.chosen.error);
    document.querySelectorAll("[data-needs=picture]").forEach((button) => (button.disabled = !some));
    document.querySelectorAll("[data-needs=files]").forEach((button) => (button.disabled = !strip.items.length));
}

async function save() {
    const item = shown;
    if (!item) return;
    notify("Saving as PNG");
    try {
        const { bytes, warnings } = await pool.run({ kind: "save", file: item.file });
        saveAs(new Blob([bytes], { type: "image/png" }), item.name.replace(/\.[^.]*$/, "") + ".png");
        notify(["Saved as PNG", ...warnings].join(". "));
    } catch (error) {
        if (!(error instanceof Cancelled)) notify(`Not saved: ${error.message}`);
    }
}

function remove() {
    const item = strip.chosen;
    if (!item) return;
    if (shown) leave();
    shown = null;
    strip.remove(item);
    take({ files: [], others: 0 });
    announce(`${item.name} taken off the list`);
    if (strip.items.length) return;
    strip.list.removeAttribute("aria-activedescendant");
    $("#title").textContent = "";
    trouble();
    readout.open(null);
}

function setTool(name) {
    tool = name;
    $("#tool").setAttribute("aria-pressed", String(tool === "levels"));
    view.canvas.classList.toggle("levelling", tool === "levels");
}

function togglePanel() {
    const open = document.body.classList.toggle("panel");
    $("#details").setAttribute("aria-expanded", String(open));
}

let pointed = null; // the place that the mouse points at; null: the middle, for those who use keys
function hover(at) {
    pointed = at;
    view.cross = false;
    readout.at(at && shown ? view.pixelAt(...at) : null, view.pyramid);
}

/** Reads the pixel in the middle, which arrow keys move. */
let spoken;
function keyed() {
    view.cross = true;
    clearTimeout(spoken);
    spoken = setTimeout(async () => {
        if (!shown) return;
        await readout.at(view.pixelAt(view.canvas.width / 2, view.canvas.height / 2), view.pyramid);
        if (readout.text) announce(readout.text);
    }, 250);
}

const actions = {
    open: () => $("#files").click(),
    folder: () => $("#folder").click(),
    save, remove,
    convert: () => strip.items.length && conversion.open(),
    details: togglePanel,
    help: () => $("#help").showModal(),
    fit: () => view.fit(),
    full: () => view.zoomTo(1),
    in: () => view.zoomBy(1.5),
    out: () => view.zoomBy(1 / 1.5),
    next: () => strip.step(1),
    previous: () => strip.step(-1),
    auto: () => shown && levels.auto(),
    range: () => shown && levels.full(),
    channel() {
        channels.cycle();
        announce(`Showing ${channels.name}`);
    },
    tool() {
        setTool(tool === "pan" ? "levels" : "pan");
        announce(tool === "levels" ? "Dragging changes window and level" : "Dragging moves the picture");
    },
};

intake.listen(take);
keys.listen(actions);
gestures.listen(view, { tool: () => tool, levels: (dx, dy) => shown && levels.drag(dx, dy), hover, keyed });
if (!phone.matches) togglePanel();
refresh();

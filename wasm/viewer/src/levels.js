// levels.js: which values are black and which are white. Window is the width of the range, level its middle, as radiologists say.
// SPDX-License-Identifier: BSD-2-Clause
import { $ } from "./page.js";
import { maximum } from "./samples.js";

export class Levels {
    /** `changed` is called when the range is another. */
    constructor(changed) {
        this.changed = changed;
        this.range = null;
        this.window = $("#window");
        this.level = $("#level");
        for (const input of [this.window, this.level]) input.addEventListener("input", () => this.typed());
        $("#auto").addEventListener("click", () => this.auto());
        $("#full").addEventListener("click", () => this.full());
        $("#invert").addEventListener("change", () => this.changed());
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.paint());
    }

    /** The levels of another picture. */
    open(look, kept) {
        this.bits = look.kind.bits;
        this.most = maximum(this.bits);
        this.offset = look.kind.signed ? 2 ** (this.bits - 1) : 0; // samples come with this added
        this.statistics = look.range;
        this.set(kept?.low ?? look.start.low, kept?.high ?? look.start.high);
        $("#invert").checked = Boolean(kept?.invert);
    }

    get state() {
        return { low: this.low, high: this.high, invert: $("#invert").checked };
    }

    set(low, high) {
        this.low = low;
        this.high = Math.max(high, low + 1);
        const text = (v) => String(Math.round(v * 10) / 10);
        // What is being typed in is left alone.
        if (document.activeElement !== this.window) this.window.value = text(this.high - this.low);
        if (document.activeElement !== this.level) this.level.value = text((this.low + this.high) / 2 - this.offset);
        this.paint();
    }

    around(middle, width) {
        width = Math.min(2 * this.most, Math.max(1, width));
        middle = Math.min(this.most, Math.max(0, middle));
        this.set(middle - width / 2, middle + width / 2);
        this.changed();
    }

    typed() {
        const [width, middle] = [this.window.valueAsNumber, this.level.valueAsNumber];
        if (Number.isFinite(width) && Number.isFinite(middle) && width > 0) this.around(middle + this.offset, width);
    }

    /** To the right is a wider window, up is a brighter picture. */
    drag(dx, dy) {
        const step = (this.most + 1) / 512;
        this.around((this.low + this.high) / 2 + dy * step, this.high - this.low + dx * step);
    }

    auto() {
        this.set(this.statistics.low, this.statistics.high);
        this.changed();
    }

    full() {
        this.set(0, this.most);
        this.changed();
    }

    /** How often each value occurs, and a line from black to white across it. */
    paint() {
        if (!this.statistics) return;
        const canvas = $("#histogram");
        const context = canvas.getContext("2d");
        const { width, height } = canvas;
        const style = getComputedStyle(canvas);
        const { histogram } = this.statistics;
        // One value alone, such as a black border, shall not make all others flat.
        const tallest = [...histogram].sort((a, b) => b - a)[3] || Math.max(...histogram) || 1;
        context.clearRect(0, 0, width, height);
        context.fillStyle = style.getPropertyValue("--bars");
        histogram.forEach((count, i) => {
            const tall = Math.min(1, Math.sqrt(count / tallest)) * (height - 4);
            context.fillRect((i * width) / 256, height - tall, width / 256, tall);
        });
        const at = (v) => (v / this.most) * width;
        context.strokeStyle = style.getPropertyValue("--line");
        context.lineWidth = 2;
        context.beginPath();
        context.moveTo(0, height - 1);
        context.lineTo(at(this.low), height - 1);
        context.lineTo(at(this.high), 1);
        context.lineTo(width, 1);
        context.stroke();
    }
}

// readout.js: the values of the pixel under the pointer, as the file has them, whatever the levels and the zoom.
// SPDX-License-Identifier: BSD-2-Clause
import { $ } from "./page.js";
import { layoutOf } from "./samples.js";

export class Readout {
    /** `ask` decodes one pixel. */
    constructor(ask) {
        this.ask = ask;
        this.open(null);
    }

    open(kind) {
        this.kind = kind;
        this.names = kind ? layoutOf(kind.colour, kind.channels).names : [];
        this.next = null;
        this.show(null);
    }

    /** The newest place waits while one is being decoded; those in between are forgotten. */
    async at(pixel, pyramid) {
        const here = pyramid && pixel && pyramid.samples(pixel.sx, pixel.sy);
        if (!pixel || here) {
            this.next = null;
            return this.show(pixel, here);
        }
        this.next = { pixel, kind: this.kind };
        this.show(pixel, this.values);
        if (this.asking) return undefined;
        this.asking = true;
        while (this.next) {
            const { pixel: wanted, kind } = this.next;
            this.next = null;
            const values = await this.ask(wanted).catch(() => null);
            if (kind === this.kind && !this.next) this.show(wanted, values);
        }
        this.asking = false;
        return undefined;
    }

    show(pixel, values = null) {
        this.values = values;
        const place = pixel ? `${pixel.x}, ${pixel.y}` : "";
        $("#place").textContent = place;
        const offset = this.kind?.signed ? 2 ** (this.kind.bits - 1) : 0;
        const text = pixel && values ? values.slice(0, 6).map((v, i) => `${this.names[i] ?? ""} ${v - offset}`.trim()).join("  ") : "";
        $("#values").textContent = text;
        $("#readout").hidden = !pixel;
        this.text = place && text ? `Pixel ${place}: ${text}` : "";
    }
}

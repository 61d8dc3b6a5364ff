// channels.js: all colours together, or one channel by itself, as radio buttons.
// SPDX-License-Identifier: BSD-2-Clause
import { $, make } from "./page.js";
import { layoutOf } from "./samples.js";

const MANY = 16; // of more channels the first are offered; nobody wants a thousand buttons

export class Channels {
    constructor(changed) {
        this.changed = changed;
        this.chosen = -1;
        this.names = [];
    }

    open(kind, chosen = -1) {
        this.names = layoutOf(kind.colour, kind.channels).names;
        this.chosen = chosen;
        const choice = (name, value) => make("label", {},
            make("input", { type: "radio", name: "channel", value, ".checked": value === this.chosen, onchange: () => this.choose(value) }),
            make("span", {}, name));
        const single = this.names.slice(0, MANY).map((name, i) => choice(name, i));
        $("#channels").replaceChildren(choice("All", -1), ...single);
        $("#channels").closest("section").hidden = this.names.length < 2;
    }

    choose(value) {
        this.chosen = value;
        $("#channels").querySelectorAll("input").forEach((input) => (input.checked = Number(input.value) === value));
        this.changed();
    }

    /** From all to the first, and from the last to all again. */
    cycle() {
        if (this.names.length > 1) this.choose(this.chosen + 1 < Math.min(this.names.length, MANY) ? this.chosen + 1 : -1);
    }

    get name() {
        return this.chosen < 0 ? "all channels" : this.names[this.chosen];
    }
}

// strip.js: the thumbnails, a list box: one of them is chosen, arrows move, and those that come into sight are decoded.
// SPDX-License-Identifier: BSD-2-Clause
import { Turn } from "./geometry.js";
import { $, make } from "./page.js";

export class Strip {
    /** `choose` is called with an item, `seen` when a thumbnail is wanted. */
    constructor({ choose, seen }) {
        this.list = $("#strip");
        this.items = [];
        this.chosen = null;
        this.choose = choose;
        this.watch = new IntersectionObserver((entries) => {
            for (const entry of entries) {
                if (entry.isIntersecting) seen(this.items.find((item) => item.element === entry.target));
            }
        }, { root: this.list, rootMargin: "300px" });
        this.list.addEventListener("keydown", (event) => this.key(event));
    }

    add(item) {
        item.image = make("canvas", { width: 1, height: 1, "aria-hidden": "true" });
        item.label = make("span", { class: "name" }, item.name);
        item.mark = make("span", { class: "mark" });
        item.element = make("div", {
            role: "option", id: `item${item.key}`, "aria-selected": "false", class: "item waiting", title: item.path,
            onclick: () => this.select(item),
        }, make("span", { class: "thumb" }, item.image, item.mark), item.label);
        this.items.push(item);
        this.list.append(item.element);
        this.watch.observe(item.element);
    }

    /** What is known of a file by now. */
    update(item) {
        const { element, mark, look, error } = item;
        element.classList.toggle("waiting", !look && !error);
        element.classList.toggle("failed", Boolean(error));
        element.classList.toggle("damaged", Boolean(look?.damaged));
        mark.textContent = error ? "cannot be opened" : look?.damaged ? "damaged" : "";
        if (look) {
            const { width, height, rgba } = look.thumb;
            item.thumb = make("canvas", { width, height });
            item.thumb.getContext("2d").putImageData(new ImageData(rgba, width, height), 0, 0);
            const turn = new Turn(look.kind.orientation, width, height);
            [item.image.width, item.image.height] = [turn.width, turn.height];
            const all = { left: 0, top: 0, right: turn.width, bottom: turn.height };
            turn.draw(item.image.getContext("2d"), item.thumb, { x: 0, y: 0, width, height }, all);
        }
    }

    select(item, focus = false) {
        this.chosen?.element.setAttribute("aria-selected", "false");
        this.chosen = item;
        item.element.setAttribute("aria-selected", "true");
        this.list.setAttribute("aria-activedescendant", item.element.id);
        item.element.scrollIntoView({ block: "nearest", inline: "nearest" });
        if (focus) this.list.focus();
        this.choose(item);
    }

    step(by) {
        if (!this.items.length) return;
        const at = this.items.indexOf(this.chosen) + by;
        const item = this.items[Math.min(this.items.length - 1, Math.max(0, at))];
        if (item !== this.chosen) this.select(item);
    }

    remove(item) {
        const at = this.items.indexOf(item);
        this.watch.unobserve(item.element);
        item.element.remove();
        this.items.splice(at, 1);
        if (this.chosen !== item) return;
        this.chosen = null;
        if (this.items.length) this.select(this.items[Math.min(at, this.items.length - 1)]);
    }

    key(event) {
        const steps = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1, Home: -1e9, End: 1e9 };
        if (event.ctrlKey || event.metaKey || event.altKey || !(event.key in steps)) return;
        event.preventDefault();
        event.stopPropagation();
        this.step(steps[event.key]);
    }
}

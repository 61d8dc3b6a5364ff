// gestures.js: one finger or the mouse pans or changes levels, two fingers pinch, the wheel zooms, keys do all of it.
// SPDX-License-Identifier: BSD-2-Clause

const STEP = 60; // pixels of a page that an arrow key pans

/** `tool()` tells whether dragging pans ("pan") or changes levels ("levels"); `levels(dx, dy)` does the latter. */
export function listen(view, { tool, levels, hover, keyed }) {
    const { canvas } = view;
    const fingers = new Map();
    const ratio = () => canvas.width / Math.max(1, canvas.clientWidth);
    const place = (event) => {
        const box = canvas.getBoundingClientRect();
        return [(event.clientX - box.left) * ratio(), (event.clientY - box.top) * ratio()];
    };

    function pinch(before, after) {
        const between = ([[ax, ay], [bx, by]]) => ({ x: (ax + bx) / 2, y: (ay + by) / 2, far: Math.hypot(ax - bx, ay - by) });
        const [from, to] = [between(before), between(after)];
        view.panBy(to.x - from.x, to.y - from.y, false);
        if (from.far > 0) view.zoomBy(to.far / from.far, to.x, to.y, false);
    }

    canvas.addEventListener("pointerdown", (event) => {
        canvas.setPointerCapture(event.pointerId);
        fingers.set(event.pointerId, place(event));
        canvas.classList.add("held");
    });
    canvas.addEventListener("pointermove", (event) => {
        const now = place(event);
        hover(now);
        if (!fingers.has(event.pointerId)) return;
        const before = [...fingers.values()];
        const [x, y] = fingers.get(event.pointerId);
        fingers.set(event.pointerId, now);
        if (before.length === 2) pinch(before, [...fingers.values()]);
        // The middle of the mouse pans whatever the tool; Shift is the other tool.
        else if ((tool() === "levels") !== event.shiftKey && !(event.buttons & 4)) levels((now[0] - x) / ratio(), (now[1] - y) / ratio());
        else view.panBy(now[0] - x, now[1] - y, false);
    });
    const release = (event) => {
        fingers.delete(event.pointerId);
        canvas.classList.toggle("held", fingers.size > 0);
    };
    canvas.addEventListener("pointerup", release);
    canvas.addEventListener("pointercancel", release);
    canvas.addEventListener("pointerleave", () => fingers.size || hover(null));
    canvas.addEventListener("dblclick", (event) => view.zoomBy(event.shiftKey ? 0.5 : 2, ...place(event)));
    canvas.addEventListener("wheel", (event) => {
        event.preventDefault();
        const lines = event.deltaMode === 1 ? 30 : 1;
        // A pinch on a touchpad comes as a wheel with Ctrl, in small steps.
        const speed = event.ctrlKey ? 0.01 : 0.002;
        view.zoomBy(Math.exp(-event.deltaY * lines * speed), ...place(event));
    }, { passive: false });

    canvas.addEventListener("keydown", (event) => {
        const way = { ArrowLeft: [1, 0], ArrowRight: [-1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1] }[event.key];
        if (!way || event.ctrlKey || event.metaKey || event.altKey) return;
        event.preventDefault();
        // With Shift a pixel at a time, so that each one's values can be read.
        const far = event.shiftKey ? Math.max(1, view.frame?.scale ?? 1) : STEP * ratio();
        keyed();
        view.panBy(way[0] * far, way[1] * far, !event.shiftKey);
    });
}

// view.js: the canvas. It draws what is there at every frame, asks for what is missing, and moves smoothly to where it is sent.
// SPDX-License-Identifier: BSD-2-Clause
import { Frame, Turn } from "./geometry.js";
import { TILE } from "./sources.js";

const CALM = matchMedia("(prefers-reduced-motion: reduce)");
const GLIDE = 90; // milliseconds in which two thirds of a way are done

export class View {
    /** `told` hears of every change: the scale, whether all is drawn, and how much of it is damaged. */
    constructor(canvas, told) {
        this.canvas = canvas;
        this.context = canvas.getContext("2d");
        this.told = told;
        this.pyramid = this.frame = this.goal = this.turn = null;
        this.fitted = true; // follows the size of the window until somebody zooms
        this.cross = false; // marks the middle, for those who point with keys
        new ResizeObserver(() => this.resize()).observe(canvas);
    }

    show(pyramid, orientation, thumb) {
        this.pyramid?.close();
        this.pyramid = pyramid;
        this.thumb = thumb;
        this.turn = new Turn(orientation, pyramid.width, pyramid.height);
        this.frame = new Frame(this.turn.width, this.turn.height);
        this.goal = null;
        this.resize();
        this.fit(false);
    }

    clear() {
        this.pyramid?.close();
        this.pyramid = null;
        this.draw();
    }

    resize() {
        const ratio = window.devicePixelRatio || 1;
        const { canvas } = this;
        const [width, height] = [Math.round(canvas.clientWidth * ratio), Math.round(canvas.clientHeight * ratio)];
        if (canvas.width !== width || canvas.height !== height) {
            [canvas.width, canvas.height] = [Math.max(1, width), Math.max(1, height)];
        }
        if (this.fitted && this.frame) this.fit(false);
        else this.draw();
    }

    fit(smooth = true) {
        this.move((frame) => frame.fit(this.canvas), smooth);
        this.fitted = true;
    }

    zoomTo(scale, px = this.canvas.width / 2, py = this.canvas.height / 2, smooth = true) {
        this.move((frame) => frame.zoomAt(this.canvas, scale, px, py), smooth);
    }

    zoomBy(factor, px, py, smooth = true) {
        if (this.frame) this.zoomTo((this.goal ?? this.frame).scale * factor, px, py, smooth);
    }

    panBy(dx, dy, smooth = true) {
        this.move((frame) => {
            frame.x -= dx / frame.scale;
            frame.y -= dy / frame.scale;
            frame.clamp(this.canvas);
        }, smooth);
    }

    /** Changes the frame at once, or glides to what it is changed to. */
    move(change, smooth) {
        if (!this.frame) return;
        this.fitted = false;
        const goal = Object.assign(new Frame(0, 0), this.goal ?? this.frame);
        change(goal);
        if (smooth && !CALM.matches) {
            this.goal = goal;
            this.last = performance.now();
        } else {
            Object.assign(this.frame, goal);
            this.goal = null;
        }
        this.draw();
    }

    /** Draws at the next frame of the screen, however often it is asked before. */
    draw() {
        this.asked ??= requestAnimationFrame((now) => {
            this.asked = undefined;
            this.glide(now);
            this.paint();
        });
    }

    glide(now) {
        if (!this.goal) return;
        const { frame, goal } = this;
        const share = 1 - Math.exp(-Math.max(1, now - this.last) / GLIDE);
        this.last = now;
        // What stands still while the scale changes is a point; both are moved so that it does.
        const from = 1 / frame.scale;
        frame.scale *= (goal.scale / frame.scale) ** share;
        const to = 1 / goal.scale;
        const way = Math.abs(from - to) < 1e-12 * to ? share : (from - 1 / frame.scale) / (from - to);
        frame.x += (goal.x - frame.x) * way;
        frame.y += (goal.y - frame.y) * way;
        const away = Math.hypot(goal.x - frame.x, goal.y - frame.y) * goal.scale;
        if (away < 0.3 && Math.abs(Math.log(goal.scale / frame.scale)) < 1e-3) {
            Object.assign(frame, goal);
            this.goal = null;
        } else {
            this.draw();
        }
    }

    /** The box of the file's rows that is to be seen. */
    visible() {
        const { canvas, frame, turn } = this;
        const [x0, y0] = frame.at(canvas, 0, 0);
        const [x1, y1] = frame.at(canvas, canvas.width, canvas.height);
        const inside = (v, most) => Math.min(most, Math.max(0, v));
        return Turn.box(
            turn.stored(inside(x0, turn.width), inside(y0, turn.height)),
            turn.stored(inside(x1, turn.width), inside(y1, turn.height)),
        );
    }

    /** Where a box of the file's rows is on the canvas. Edges are whole pixels, or the seams of tiles would show. */
    onCanvas(left, top, right, bottom) {
        const { frame, turn, canvas } = this;
        const [x, y] = frame.origin(canvas);
        const place = ([px, py]) => [Math.round(x + px * frame.scale), Math.round(y + py * frame.scale)];
        return Turn.box(place(turn.seen(left, top)), place(turn.seen(right, bottom)));
    }

    paint() {
        const { context, canvas, pyramid, frame } = this;
        context.clearRect(0, 0, canvas.width, canvas.height);
        if (!pyramid) return;
        const all = this.onCanvas(0, 0, pyramid.width, pyramid.height);
        const wanted = pyramid.need(this.visible(), frame.scale);
        let whole = !this.goal;
        let damaged = false;
        context.save();
        context.beginPath();
        context.rect(all.left, all.top, all.right - all.left, all.bottom - all.top);
        context.clip();
        if (pyramid.seeThrough) this.paintGround(all);
        for (const place of wanted) {
            const best = pyramid.best(place);
            whole &&= Boolean(best?.own);
            this.paintTile(place, best, all);
            if (best?.tile.picture.damaged) damaged = true;
        }
        context.restore();
        if (this.cross) this.paintCross();
        this.told({ frame, whole: whole || Boolean(pyramid.error), damaged, error: pyramid.error, place: all });
    }

    /** What is transparent lies on a chequer. */
    paintGround({ left, top, right, bottom }) {
        const { context } = this;
        const side = 12 * Math.round(window.devicePixelRatio || 1);
        if (!this.ground || this.ground.side !== side) {
            const tile = document.createElement("canvas");
            tile.width = tile.height = 2 * side;
            const ink = tile.getContext("2d");
            for (const [colour, x, y] of [["#fff", 0, 0], ["#fff", side, side], ["#d4d4d4", side, 0], ["#d4d4d4", 0, side]]) {
                ink.fillStyle = colour;
                ink.fillRect(x, y, side, side);
            }
            this.ground = { side, pattern: context.createPattern(tile, "repeat") };
        }
        context.fillStyle = this.ground.pattern;
        context.fillRect(left, top, right - left, bottom - top);
    }

    paintTile({ level, x, y }, best, all) {
        const { context, pyramid } = this;
        const side = TILE * 2 ** level;
        const [right, bottom] = [Math.min(pyramid.width, (x + 1) * side), Math.min(pyramid.height, (y + 1) * side)];
        const box = this.onCanvas(x * side, y * side, right, bottom);
        if (best) {
            const enlarged = (box.right - box.left) / (this.turn.a ? best.part.width : best.part.height);
            context.imageSmoothingEnabled = !(enlarged >= 2 || enlarged === 1);
            context.imageSmoothingQuality = "medium";
            this.turn.draw(context, best.tile.canvas, best.part, box);
        } else if (this.thumb) {
            // Nothing has come yet: the thumbnail, of which each tile shows its part.
            const [across, down] = [this.thumb.width / pyramid.width, this.thumb.height / pyramid.height];
            context.imageSmoothingEnabled = true;
            const part = { x: x * side * across, y: y * side * down };
            part.width = (right - x * side) * across;
            part.height = (bottom - y * side) * down;
            this.turn.draw(context, this.thumb, part, box);
        }
        if (best?.tile.picture.damaged) this.paintDamage(box);
    }

    /** A frame of dashes around each tile that could not be decoded in full. */
    paintDamage({ left, top, right, bottom }) {
        const { context } = this;
        const width = Math.max(2, Math.round(2 * (window.devicePixelRatio || 1)));
        context.lineWidth = width;
        for (const [colour, dashes] of [["#fff", []], ["#d02020", [4 * width, 3 * width]]]) {
            context.strokeStyle = colour;
            context.setLineDash(dashes);
            context.strokeRect(left + width / 2, top + width / 2, right - left - width, bottom - top - width);
        }
        context.setLineDash([]);
    }

    paintCross() {
        const { context, canvas } = this;
        const [x, y] = [Math.floor(canvas.width / 2) + 0.5, Math.floor(canvas.height / 2) + 0.5];
        for (const [colour, width] of [["#000", 3], ["#fff", 1]]) {
            context.strokeStyle = colour;
            context.lineWidth = width;
            context.beginPath();
            for (const [dx, dy] of [[1, 0], [-1, 0], [0, 1], [0, -1]]) {
                context.moveTo(x + 4 * dx, y + 4 * dy);
                context.lineTo(x + 12 * dx, y + 12 * dy);
            }
            context.stroke();
        }
    }

    /** The pixel of the file at a place of the canvas, or null beside the picture. */
    pixelAt(px, py) {
        if (!this.pyramid) return null;
        const [x, y] = this.frame.at(this.canvas, px, py).map(Math.floor);
        if (x < 0 || y < 0 || x >= this.turn.width || y >= this.turn.height) return null;
        const [sx, sy] = this.turn.stored(x + 0.5, y + 0.5).map(Math.floor);
        return { x, y, sx, sy };
    }
}

// geometry.js: from the rows of a file to the way the picture is seen (the orientation of EXIF), and from there to the screen.
// SPDX-License-Identifier: BSD-2-Clause

// For each orientation the canvas's a, b, c, d: x' = a x + c y, y' = b x + d y, moved so that all is at 0 and above.
const TURNS = [, [1, 0, 0, 1], [-1, 0, 0, 1], [-1, 0, 0, -1], [1, 0, 0, -1], [0, 1, 1, 0], [0, 1, -1, 0], [0, -1, -1, 0], [0, -1, 1, 0]];

export class Turn {
    constructor(orientation, width, height) {
        [this.a, this.b, this.c, this.d] = TURNS[orientation] ?? TURNS[1];
        const across = this.a === 0;
        this.width = across ? height : width;
        this.height = across ? width : height;
        this.e = this.a + this.c < 0 ? this.width : 0;
        this.f = this.b + this.d < 0 ? this.height : 0;
    }

    /** A place in the rows of the file as a place of the picture that is seen. */
    seen(x, y) {
        return [this.a * x + this.c * y + this.e, this.b * x + this.d * y + this.f];
    }

    stored(x, y) {
        const [p, q] = [x - this.e, y - this.f];
        return [this.a * p + this.b * q, this.c * p + this.d * q]; // turns are undone by their transposition
    }

    /** A rectangle with its corners in order. */
    static box([x0, y0], [x1, y1]) {
        return { left: Math.min(x0, x1), top: Math.min(y0, y1), right: Math.max(x0, x1), bottom: Math.max(y0, y1) };
    }

    /** Draws a part of an image into a box of the canvas, turned. */
    draw(context, image, part, box) {
        const [width, height] = [box.right - box.left, box.bottom - box.top];
        const left = box.left + (this.a + this.c < 0 ? width : 0);
        const top = box.top + (this.b + this.d < 0 ? height : 0);
        const across = this.a === 0;
        context.setTransform(this.a, this.b, this.c, this.d, left, top);
        context.drawImage(image, part.x, part.y, part.width, part.height, 0, 0, across ? height : width, across ? width : height);
        context.setTransform(1, 0, 0, 1, 0, 0);
    }
}

/** What part of the picture is seen: `x`, `y` is what stands in the middle of the canvas, `scale` is screen pixels a pixel. */
export class Frame {
    constructor(width, height) {
        Object.assign(this, { width, height, x: 0, y: 0, scale: 1 });
    }

    /** Where the picture's corner is; whole pixels, so that at 100 % each pixel is one of the screen. */
    origin(canvas) {
        return [Math.round(canvas.width / 2 - this.x * this.scale), Math.round(canvas.height / 2 - this.y * this.scale)];
    }

    fitScale(canvas) {
        return Math.min(canvas.width / this.width, canvas.height / this.height, 1);
    }

    limits(canvas) {
        return [Math.min(this.fitScale(canvas), 1) / 2, 64];
    }

    /** At most so far that the middle of the canvas still shows picture. */
    clamp(canvas) {
        const [least, most] = this.limits(canvas);
        this.scale = Math.min(most, Math.max(least, this.scale));
        const hold = (at, size, room) => (size * this.scale <= room ? size / 2 : Math.min(size, Math.max(0, at)));
        this.x = hold(this.x, this.width, canvas.width);
        this.y = hold(this.y, this.height, canvas.height);
    }

    fit(canvas) {
        Object.assign(this, { x: this.width / 2, y: this.height / 2, scale: this.fitScale(canvas) });
    }

    /** Zooms so that what is at this place of the canvas stays there. */
    zoomAt(canvas, scale, px, py) {
        const [least, most] = this.limits(canvas);
        scale = Math.min(most, Math.max(least, scale));
        const keep = 1 / this.scale - 1 / scale;
        this.x += (px - canvas.width / 2) * keep;
        this.y += (py - canvas.height / 2) * keep;
        this.scale = scale;
        this.clamp(canvas);
    }

    /** A place of the canvas as a place of the picture. */
    at(canvas, px, py) {
        const [left, top] = this.origin(canvas);
        return [(px - left) / this.scale, (py - top) / this.scale];
    }
}

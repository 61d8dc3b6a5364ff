# SPDX-License-Identifier: BSD-2-Clause
"""chart.py: rate-distortion curves as SVG that stands in the page. Colours come from the page's style, by class."""
import html
import math

WIDTH, HEIGHT = 480, 348
LEFT, RIGHT, TOP, BOTTOM = 46, 12, 12, 94  # margins; the legend stands below


def ticks(low, high, wanted):
    """Round numbers from low to high, about as many as wanted."""
    power = 10 ** math.floor(math.log10(max(high - low, 1e-9) / wanted))
    step = next(step for step in (power, 2 * power, 5 * power, 10 * power) if (high - low) / step < 1.5 * wanted)
    return [n * step for n in range(math.ceil(low / step - 1e-9), math.floor(high / step + 1e-9) + 1)]


class Scale:
    """From values to places."""

    def __init__(self, values, begin, end, logarithmic=False):
        self.of = math.log2 if logarithmic else float
        low, high = min(map(self.of, values)), max(map(self.of, values))
        room = 0.06 * (high - low or 1)
        self.low, self.high, self.begin, self.end = low - room, high + room, begin, end

    def __call__(self, value):
        return self.begin + (self.of(value) - self.low) / (self.high - self.low) * (self.end - self.begin)


def axes(across, up, x_ticks):
    """The grid with its numbers, and what the axes mean."""
    bottom, right = HEIGHT - BOTTOM, WIDTH - RIGHT
    for value in x_ticks:
        x = across(value)
        yield f'<line class="grid" x1="{x:.1f}" y1="{TOP}" x2="{x:.1f}" y2="{bottom}"/>'
        yield f'<text class="number" x="{x:.1f}" y="{bottom + 15}" text-anchor="middle">{value:g}</text>'
    for value in ticks(up.low, up.high, 6):
        y = up(value)
        yield f'<line class="grid" x1="{LEFT}" y1="{y:.1f}" x2="{right}" y2="{y:.1f}"/>'
        yield f'<text class="number" x="{LEFT - 6}" y="{y + 4:.1f}" text-anchor="end">{value:g}</text>'
    yield f'<text x="{(LEFT + right) / 2}" y="{bottom + 32}" text-anchor="middle">bits a pixel</text>'
    yield f'<text transform="translate(12 {(TOP + bottom) / 2}) rotate(-90)" text-anchor="middle">PSNR, dB</text>'


def curve(number, name, points, across, up):
    """A line through the points, a mark on each with its numbers for who points at it, and its name in the legend."""
    places = [(across(rate), up(psnr), label, rate, psnr) for rate, psnr, label in points]
    way = " ".join(f"{x:.1f},{y:.1f}" for x, y, *_ in places)
    yield f'<g class="curve c{number}"><polyline points="{way}"/>'
    for x, y, label, rate, psnr in places:
        told = html.escape(f"{name}, {label}: {rate:.2f} bits a pixel, {psnr:.2f} dB")
        # Marks of different shapes: colour alone does not tell the curves apart.
        mark = (f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4">', f'<rect x="{x - 3.5:.1f}" y="{y - 3.5:.1f}" width="7" height="7">',
                f'<path d="M{x:.1f} {y - 5:.1f}l5 9h-10z">', f'<path d="M{x:.1f} {y - 6:.1f}l6 6l-6 6l-6-6z">')[number]
        yield mark + f"<title>{told}</title></{mark[1:mark.index(' ')]}>"
    x, y = LEFT + 210 * (number % 2), HEIGHT - 38 + 22 * (number // 2)
    yield f'<line x1="{x}" y1="{y}" x2="{x + 18}" y2="{y}"/>'
    yield f'<text x="{x + 23}" y="{y + 4}">{html.escape(name)}</text></g>'


def chart(title, curves):
    """SVG of up to four curves, the first of them on top, each a name and a list of (bits a pixel, PSNR, label)."""
    rates = [rate for _, points in curves for rate, _, _ in points]
    up = Scale([psnr for _, points in curves for _, psnr, _ in points], HEIGHT - BOTTOM, TOP)
    across = Scale(rates, LEFT, WIDTH - RIGHT, logarithmic=True)
    x_ticks = [2.0 ** n for n in range(math.ceil(across.low), math.floor(across.high) + 1)]
    parts = [f'<svg class="chart" viewBox="0 0 {WIDTH} {HEIGHT}" role="img" aria-label="{html.escape(title)}">']
    parts += axes(across, up, x_ticks)
    for number, (name, points) in reversed(list(enumerate(curves))):
        parts += curve(number, name, points, across, up)
    return "\n".join(parts) + "\n</svg>"

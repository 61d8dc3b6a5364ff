# SPDX-License-Identifier: BSD-2-Clause
"""benchtable: the table in Markdown and the chart in SVG that scripts/bench writes."""
import dataclasses
import html
import math
import platform
import re


@dataclasses.dataclass
class Figure:
    """A median in seconds, its spread, and the most memory in megabytes."""
    seconds: float
    spread: float
    memory: float

    def text(self):
        for unit, scale in (("s", 1), ("ms", 1e3), ("µs", 1e6), ("ns", 1e9)):
            if self.seconds * scale >= 1 or unit == "ns":
                return f"{self.seconds * scale:.3g} {unit} ±{100 * self.spread / self.seconds:.0f} %"
        raise AssertionError("not reached")


@dataclasses.dataclass
class Line:
    group: str
    name: str
    peer: str
    goal: float
    level: str  # at which the goal is
    ours: dict  # level: Figure
    theirs: Figure

    def ratio(self, level):
        return self.theirs.seconds / self.ours[level].seconds

    def at(self):
        """The level of the goal, or the best one that there is."""
        return self.level if self.level in self.ours else list(self.ours)[-1]

    def misses(self):
        # As it is printed: 0.80 is not short of 0.8.
        return round(self.ratio(self.at()), 2) < round(self.goal, 2)

    def title(self):
        return f"{self.group}: {self.name}, beside {self.peer}: {self.ratio(self.at()):.2f}, goal {self.goal:.2f} at {self.at()}"

    def markdown(self, levels):
        cells = [self.group, self.name, self.peer, self.theirs.text(), self.ours[self.at()].text()]
        cells += [f"**{self.ratio(level):.2f}**" if level == self.at() else f"{self.ratio(level):.2f}" for level in levels]
        cells += [f"{self.goal:.2f}", "missed" if self.misses() else "met", f"{self.theirs.memory:.1f}",
                  f"{self.ours[self.at()].memory:.1f}"]
        return "| " + " | ".join(cells) + " |"


def head(levels):
    cells = ["Kind", "Work", "Peer", "Peer takes", "Ours takes"] + levels + ["Goal", "", "Peer MB", "Ours MB"]
    return "| " + " | ".join(cells) + " |\n|---|---|---|" + "---:|" * (len(levels) + 3) + "---|---:|---:|"


def processor():
    try:
        with open("/proc/cpuinfo", encoding="ascii", errors="replace") as file:
            return re.search(r"model name\s*: (.*)", file.read()).group(1)
    except (OSError, AttributeError):
        return platform.machine()


def write(folder, lines, levels, rounds):
    missed = [line for line in lines if line.misses()]
    text = f"""# All comparisons in one run

`scripts/bench` wrote this page: {rounds} rounds by turns on {processor()}. Each number under a level of x86-64 is the peer's time over
ours with the library of that level: above 1 ours is faster. The bold one is at the level of the goal, and the time of ours is of that
level. ± is half the distance of the quartiles. Times are processor time, pinned to one processor; of two threads, the clock's. Rows
that count samples give the time of one. Memory is the most that the whole process had. How each peer is measured stands at the head
of the script; what was learned, in [performance.md](performance.md).

![Ratios by row and level](bench.svg)

{head(levels)}
""" + "".join(line.markdown(levels) + "\n" for line in lines)
    text += f"\n{len(missed)} of {len(lines)} rows miss their goal{':' if missed else '.'}\n\n"
    text += "".join(f"- {line.title()}\n" for line in missed)
    (folder / "bench.md").write_text(text.rstrip("\n") + "\n", encoding="utf-8")
    (folder / "bench.svg").write_text(chart(lines, levels), encoding="utf-8")


# Colours that stand out on white and on black; the text takes the page's.
COLOURS = {"baseline": "#8a8f98", "v2": "#4aa3a2", "v3": "#3b82d6", "v4": "#9a6bd1"}
LEFT, RIGHT, WIDTH, BAR, LEAST, MOST = 470, 960, 1010, 7, 1 / 8, 64


def place(ratio):
    """Where a ratio stands, by its logarithm."""
    share = math.log(min(max(ratio, LEAST), MOST) / LEAST) / math.log(MOST / LEAST)
    return LEFT + share * (RIGHT - LEFT)


def chart(lines, levels):
    high = len(levels) * BAR + 8
    end = 60 + high * len(lines)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {end + 20}" font-family="sans-serif" font-size="11">',
           "<title>Speed beside peers, by level of x86-64</title>",
           "<style>text { fill: #222 } .page { fill: #fff } .grid { stroke: #8886 } .one { stroke: #222 } .goal { stroke: #d0342c }"
           " @media (prefers-color-scheme: dark) { text { fill: #ddd } .page { fill: #161616 } .one { stroke: #ddd }"
           " .goal { stroke: #ff7a70 } }</style>", f'<rect class="page" width="{WIDTH}" height="{end + 20}"/>',
           '<text x="8" y="18">The peer\'s time over ours: right of 1 ours is faster. The upright stroke is the goal.</text>']
    for i, level in enumerate(levels):
        out.append(f'<rect x="{LEFT + 90 * i}" y="26" width="12" height="9" fill="{COLOURS[level]}"/>'
                   f'<text x="{LEFT + 90 * i + 17}" y="35">{level}</text>')
    for ratio in (0.125, 0.25, 0.5, 1, 2, 4, 8, 16, 32, 64):
        x = place(ratio)
        out.append(f'<line class="{"one" if ratio == 1 else "grid"}" x1="{x:.1f}" y1="54" x2="{x:.1f}" y2="{end}"/>'
                   f'<text x="{x:.1f}" y="50" text-anchor="middle">{ratio:g}</text>')
    for i, line in enumerate(lines):
        top = 58 + i * high
        label = html.escape(f"{line.group}: {line.name} ({line.peer})")
        out.append(f'<text x="{LEFT - 8}" y="{top + high / 2:.1f}" text-anchor="end">{label}</text>')
        for j, level in enumerate(levels):
            x, width = place(LEAST), place(line.ratio(level)) - place(LEAST)
            out.append(f'<rect x="{x:.1f}" y="{top + j * BAR}" width="{width:.1f}" height="{BAR - 1}" fill="{COLOURS[level]}"/>')
        x = place(line.goal)
        out.append(f'<line class="goal" stroke-width="2" x1="{x:.1f}" y1="{top - 2}" x2="{x:.1f}" y2="{top + high - 6}"/>'
                   f'<text x="{RIGHT + 6}" y="{top + high / 2:.1f}">{line.ratio(line.at()):.2f}</text>')
    return "\n".join(out) + "\n</svg>\n"

# SPDX-License-Identifier: BSD-2-Clause
"""How much of each buffer a function of the library may touch.

A rule looks at a parameter and answers None, or the accessor of Arguments (src/raw/call.h) and its last argument in
C++, in which w and h are the size of the region. Most of it follows from the names; what only the text of the headers
says is in the tables below.
"""
from __future__ import annotations

import re

from headers import Parameter, Prototype

# Lengths that are those of an array, unless they are given.
LENGTHS = {"nSrcLen": "pSrc", "srcLen": "pSrc", "dstLen": "pDst", "dstLenBytes": "pDst", "nTerms": "pTermLen"}
# Elements of tables and lists.
TABLES = {"pQuantFwdTable": 64, "pQuantInvTable": 64, "pQuantRawTable": 64, "pStatistics": 257, "pDcStatistics": 257,
          "pAcStatistics": 257, "pListBits": 16}
# Of the kernels of wavelets, by filter: elements ahead of the first one at phase 0 and otherwise, and how many more
# than the band or the plane has are read in all (wavelet53.h, wavelet97.h).
RANGES = {("B53", "pSrc"): (2, 1, 3), ("B53", "pSrcLow"): (0, 1, 1), ("B53", "pSrcHigh"): (1, 1, 2),
          ("D97", "pSrc"): (4, 3, 7), ("D97", "pSrcLow"): (1, 2, 3), ("D97", "pSrcHigh"): (2, 2, 4)}
# Units of pixels: across, down, and how many blocks planes 0 and 3 have.
UNITS = {"444": (8, 8, 1), "422": (16, 8, 2), "411": (16, 16, 4)}


class Extents:
    """The rules, for one function."""

    def __init__(self, f: Prototype) -> None:
        self.f = f
        self.places: list[str] = []  # C names of the parameters that Python has
        self.notes: dict[str, str] = {}  # what Python has to know of an array besides
        self.by_name = {p.name: p for p in self.f.parameters}
        layout = re.search(r"_([CP]\d)?([CP]\d)I?R?$", self.f.name)
        self.source_layout, self.layout = (layout[1] or layout[2], layout[2]) if layout else ("", "")
        self.unit = next((u for u in UNITS if "_MCU_" in self.f.name and u in self.f.name), None)
        self.packed = re.search("(?:BGR|RGB)5[56]5", self.f.name) is not None
        self.wavelet = re.search(r"WT(Fwd|Inv)(Row|Col|)_(B53|D97)", self.f.name)
        self.pairs = "YCbCr422ToRGB_" in self.f.name

    def place(self, name: str) -> int:
        return self.places.index(name)

    def channels(self, name: str) -> int:
        """Elements of a pixel of an interleaved buffer; packed pixels are one element."""
        p = self.by_name[name]
        if "Texture" in self.f.name:
            return 3 if "FromYCoCg" in self.f.name else 4
        if p.planes or (self.packed and p.type == "Zmx16u"):
            return 1
        layout = self.source_layout if name.startswith("pSrc") else self.layout
        return int(layout[1]) if layout.startswith("C") and len(layout) == 2 and not self.wavelet else 1

    def extent(self, p: Parameter) -> tuple[str, str]:
        """How much of a buffer a call may touch: the accessor of Arguments, and its last argument in C++."""
        for rule in (self.tables, self.streams, self.wavelets, self.units, self.textures, self.transforms, self.rows,
                     self.resampling, self.regions):
            found = rule(p)
            if found:
                return found
        raise SystemExit(f"generate.py: {self.f.name}: nothing is known of the size of {p.name}")

    def tables(self, p: Parameter) -> tuple[str, str] | None:
        i = self.place(p.name)
        if p.name in TABLES:
            return "block", str(TABLES[p.name])
        if p.name == "pListVals":
            return "block", "256" if not p.const else f"a.symbols({self.place('pListBits')})"
        if p.name == "pTermLen":
            return "line", (f"const std::vector<int> termLen = a.copied({i});\n    "
                            f"a.demandSegments({i}, termLen, nTerms, a.count({self.place('pSrc')}));")
        if p.name == "pBuffer":
            form = re.sub("WT(Fwd|Inv)", "WTGetBufSize", self.f.name)
            return "scratch", f"scratchBytes({form}, tileRect, sizeof({self.f.parameters[0].type}))"
        return None

    def streams(self, p: Parameter) -> tuple[str, str] | None:
        """Entropy-coded data, coefficients and code blocks."""
        codes = "Huffman" in self.f.name
        length = next((n for n, of in LENGTHS.items() if n in self.by_name and of == p.name), None)
        if "UnpackBits" in self.f.name and p.name == "pSrc":
            return "line", f"auto* const src = a.padded({self.place('pSrc')}, srcLen);"
        if p.type == "Zmx8u" and (length or p.name == "pDst" and "pDstLen" in self.by_name):
            return "block", length or "dstLen"
        if p.type == "Zmx8u" and ("Direct" in self.f.name or "DecodeCodeBlock" in self.f.name):
            return "block", f"a.count({self.place(p.name)})"
        if "CodeBlock" in self.f.name or "CBProgrAttach" in self.f.name:
            return "plane", "{h, w}"
        if codes and p.planes:
            return "blocks", ", ".join(f"nPlanes > {n} ? nWidth : -1" for n in range(p.planes))
        if codes:
            return "block", "1" if "HuffmanOne" in self.f.name or "StatisticsOne" in self.f.name else "64"
        return None

    def wavelets(self, p: Parameter) -> tuple[str, str] | None:
        if "WT" not in self.f.name:
            return None
        if "ColLift" in self.f.name:
            return "plane", "{1, width}"
        if "GetBufSize" in self.f.name:
            return None
        _, direction, filtering = self.wavelet.groups()
        if not direction:
            low = "(w + 1) / 2", "(h + 1) / 2", "w / 2", "h / 2"
            bands = [(low[1], low[0]), (low[3], low[0]), (low[1], low[2]), (low[3], low[2])]
            return ("planes", ", ".join(f"Extent{{{r}, {c}}}" for r, c in bands)) if p.planes else ("plane", "{h, w}")
        if not p.const:
            twice = self.wavelet[1] == "Inv"
            return "plane", {"Row": "{h, 2 * w}", "Col": "{2 * h, w}"}[direction] if twice else "{h, w}"
        even, odd, more = RANGES[filtering, p.name]
        self.notes[p.name] = (f"The array begins with the {'samples' if direction == 'Row' else 'rows'} ahead of it: "
                              f"{even} at phase 0, else {odd}.")
        times = "2 * " if p.name == "pSrc" else ""
        ahead = f"phase == 0 ? {even} : {odd}"
        if direction == "Row":
            return "plane", f"{{h, {times}w + {more}, 0, {ahead}}}"
        return "plane", f"{{{times}h + {more}, w, {ahead}, 0}}"

    def units(self, p: Parameter) -> tuple[str, str] | None:
        if not self.unit:
            return None
        across, down, blocks = UNITS[self.unit]
        if p.planes:
            return "blocks", ", ".join(str(64 * (blocks if n % 3 == 0 else 1)) for n in range(p.planes))
        return "plane", f"{{{down}, {across * self.channels(p.name)}}}"

    def textures(self, p: Parameter) -> tuple[str, str] | None:
        if "Texture" not in self.f.name:
            return None
        if p.name == ("pSrc" if "Decode" in self.f.name else "pDst"):
            return "block", f"(w + 3) / 4 * ((h + 3) / 4) * {8 if 'DXT1' in self.f.name else 16}"
        return "plane", f"{{h, {self.channels(p.name)} * w}}"

    def transforms(self, p: Parameter) -> tuple[str, str] | None:
        """DCT and HD Photo."""
        if "PCT" in self.f.name:
            sides = re.search(r"PCT(?:Fwd|Inv)(\d+)x(\d+)_", self.f.name)
            return "plane", f"{{{sides[2]}, {sides[1]}}}" if sides else "{h, w}"
        if "8x8" not in self.f.name:
            return None
        if p.name[1].lower() + p.name[2:] + "Step" in self.by_name:
            side = re.search("To([24])x", self.f.name)
            return "plane", f"{{{side[1]}, {side[1]}}}" if side else "{8, 8}"
        return "block", "64"

    def rows(self, p: Parameter) -> tuple[str, str] | None:
        """Functions on single rows."""
        if "Pred" in self.f.name:
            return "block", "nWidth"
        if "SplitRow" in self.f.name or "JoinRow" in self.f.name:
            if p.planes:
                return "planes", "Extent{1, len}, Extent{1, len}"
            return "plane", "{1, len}"
        if "SampleUpRow" in self.f.name:
            if not p.const:
                return "plane", "{1, srcWidth == 1 ? 4 : INT64_C(2) * srcWidth}"
            self.notes[p.name] = "For a width of 1 the array has 3 samples, of which the middle one is it."
            return "plane", "{1, srcWidth == 1 ? 3 : srcWidth, 0, srcWidth == 1 ? 1 : 0}"
        if "SampleDownRow" in self.f.name:
            pairs = "{1, INT64_C(1) * srcWidth + srcWidth % 2}"
            return "plane", pairs if p.const else "{1, (INT64_C(1) + srcWidth) / 2}"
        return None

    def resampling(self, p: Parameter) -> tuple[str, str] | None:
        if "Sample" not in self.f.name or not p.const:
            return None
        both = "H2V2" in self.f.name
        if "SampleUp" in self.f.name:
            self.notes[p.name] = f"The array begins with the {'row and the ' if both else ''}sample ahead of it."
            return "plane", "{h / 2 + 2, w / 2 + 2, 1, 1}" if both else "{h, w / 2 + 2, 0, 1}"
        return "plane", "{2 * h, 2 * w}" if both else "{h, 2 * w}"

    def regions(self, p: Parameter) -> tuple[str, str] | None:
        """Whole planes of w x h pixels."""
        if not any(q.type == "ZmxiSize" for q in self.f.parameters):
            return None
        if self.pairs:
            return "plane", f"{{h, (w + 1) / 2 * {4 if p.const else 6}}}"
        if p.planes:
            return "planes", ", ".join(["Extent{h, w}"] * p.planes)
        channels = self.channels(p.name)
        return "plane", "{h, w}" if channels == 1 else f"{{h, {channels} * w}}"

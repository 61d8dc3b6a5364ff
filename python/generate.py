#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""generate.py INCLUDE-DIR RAW.CPP RAW.PYI: the binding of zmxjpx.raw, made of the public headers.

Each exported function becomes one of C++ that takes its arguments from Python one by one (src/raw/call.h), asks for as
much memory as the library may touch, calls, and returns what comes out. What a prototype says by types and by names
that all functions share is in `Binding`; what only the text of the headers says, how far kernels reach and how large
tables are, is in extents.py. An unknown parameter is an error there, not a guess.
"""
from __future__ import annotations

import re
import sys
import textwrap
from dataclasses import dataclass, field
from pathlib import Path

from extents import LENGTHS, Extents
from headers import Parameter, Prototype, prototypes

STATES = {"ZmxiDecodeHuffmanSpec": "DecodeHuffmanSpec", "ZmxiEncodeHuffmanSpec": "EncodeHuffmanSpec",
          "ZmxiDecodeHuffmanState": "DecodeHuffmanState", "ZmxiEncodeHuffmanState": "EncodeHuffmanState",
          "ZmxiDecodeCBProgrState": "DecodeCBProgrState", "ZmxiEncodeState_JPEG2K": "EncodeState_JPEG2K"}
DTYPES = {"Zmx8u": "uint8", "Zmx16s": "int16", "Zmx16u": "uint16", "Zmx32s": "int32", "Zmx32u": "uint32",
          "Zmx32f": "float32", "int": "int32"}
# Pointers to one number that only comes out, and those that go in as well.
OUT = {"pSize", "pBitPlane", "pnPasses", "pLen", "pRate", "pDist", "pSfBits", "pnTermPasses", "pIsNotFinish",
       "pErrorBitPlane"}
IN_OUT = {"pSrcCurrPos", "pDstCurrPos", "pMarker", "pLastDC", "pPrefetchedBits", "pNumValidPrefetchedBits",
          "pSrcBitsLen", "pDstBitsLen", "pDstPos", "pSrcPos"}
COUNTS = ("nWidth", "width", "len", "srcWidth", "nPlanes")  # of elements or arrays, likewise
IMAGES = ("pDst", "pSrcDst", "pDstLow", "pSrc")


@dataclass
class Binding(Extents):
    """The C++ and the Python sides of one function, built up parameter by parameter."""

    f: Prototype
    optional: list[str] = field(default_factory=list)
    hints: dict[str, str] = field(default_factory=dict)
    sizes: list[str] = field(default_factory=list)  # numbers, ahead of the buffers that they bound
    buffers: list[str] = field(default_factory=list)
    arguments: list[str] = field(default_factory=list)
    after: list[str] = field(default_factory=list)
    results: list[tuple[str, str]] = field(default_factory=list)  # C++ expression and Python type

    def __post_init__(self) -> None:
        Extents.__init__(self, self.f)
        self.stateful = any(p.type in STATES for p in self.f.parameters)
        for p in self.f.parameters:
            if self.is_given(p):
                self.places.append(p.name)
                if self.is_optional(p):
                    self.optional.append(p.name)
        self.places.sort(key=lambda name: name in self.optional)
        for p in self.f.parameters:
            self.bind(p)

    # -- what Python passes

    def is_given(self, p: Parameter) -> bool:
        """Steps come from the strides; what only comes out is returned."""
        return not (p.name.endswith("Step") or (p.name in OUT and p.depth) or p.depth == 2)

    def is_optional(self, p: Parameter) -> bool:
        if p.name in ("pBuffer", "reserved", "pDstLen", *LENGTHS, *COUNTS):
            return True
        return p.type in ("ZmxiSize", "ZmxiRect") and any(q.name in IMAGES for q in self.f.parameters)

    def measure(self, name: str) -> str:
        p = self.by_name[name]
        return f"a.measure({self.place(name)}{', true' if p.planes else ''})"

    # -- one parameter

    def bind(self, p: Parameter) -> None:
        """Finds the kind of a parameter, in the order from the most special names to the types."""
        if p.name == "pDstLen":  # capacity in, bytes out
            self.number(p, f"a.length({self.place('pDstLen')}, a.count({self.place('pDst')}))", "dstLen")
            self.arguments.append("&dstLen")
            self.results.append(("dstLen", "int"))
        elif p.name in OUT and p.depth:
            kind = "double" if p.type == "double" else "int"
            out = p.python + "Out"
            self.buffers.append(f"{kind} {out} = {'-1' if p.name == 'pErrorBitPlane' else '0'};")
            self.arguments.append("&" + out)
            self.results.append((out, "float" if kind == "double" else "int"))
        elif p.name in IN_OUT:
            self.hints[p.name] = self.array(p)
            self.buffers.append(f"auto {p.python} = a.cell<{p.type}>({self.place(p.name)});")
            self.arguments.append(f"{p.python}.pointer()")
            self.after.append(f"{p.python}.store();")
        elif p.type in STATES:
            self.state(p)
        elif p.name.endswith("Step"):
            self.step(p)
        elif p.type == "ZmxiSize":
            self.size(p)
        elif p.type == "ZmxiRect":
            self.rect(p)
        elif not p.depth and not p.planes:
            self.scalar(p)
        else:
            self.buffer(p)

    def number(self, p: Parameter, value: str, name: str | None = None, const: str = "") -> None:
        self.hints[p.name] = "int"
        self.sizes.append(f"{const}{p.type} {name or p.name} = {value};")

    def scalar(self, p: Parameter) -> None:
        i, const = self.place(p.name), "const "
        if p.name in LENGTHS:
            self.number(p, f"a.length({i}, a.count({self.place(LENGTHS[p.name])}))", None, const)
        elif p.name in COUNTS:
            buffers = [q for q in self.f.parameters if (q.planes or q.depth) and q.name in self.places]
            first = next((q for q in buffers if q.planes), buffers[0])
            of = f"{self.measure(first.name)}.columns"
            if p.name == "nPlanes":
                of = f"a.listed({self.place(first.name)})"
            self.number(p, f"a.number({i}, {of})", None, const)
        elif p.name == "reserved":
            self.number(p, f"a.number({i}, 0)", None, const)
        else:
            self.number(p, f"a.{'word' if p.type == 'Zmx32u' else 'number'}({i})", None, const)
        self.arguments.append(p.name)

    def size(self, p: Parameter) -> None:
        i = self.place(p.name)
        value = f"a.size({i})"
        if p.name in self.optional:
            image = next(n for n in IMAGES if n in self.by_name)
            if image == "pDst" and ("FromRGBA" in self.f.name or "FromYCoCg" in self.f.name):
                image = "pSrc"  # the blocks have no shape
            across, down = self.channels(image), 1
            if self.wavelet and self.wavelet[1] == "Inv":
                across, down = (2, 1) if self.wavelet[2] == "Row" else (1, 2)
            value = f"a.size({i}, {self.measure(image)}, {across}, {down})"
        self.hints[p.name] = "tuple[int, int]"
        self.sizes.append(f"const ZmxiSize {p.name} = {value};")
        if p.name != "srcRoiSize" or self.wavelet:
            self.sizes.append(f"[[maybe_unused]] const std::int64_t w = {p.name}.width, h = {p.name}.height;")
        self.arguments.append(p.name)

    def rect(self, p: Parameter) -> None:
        image = next((n for n in ("pSrcDst", "pDst", "pSrc") if n in self.by_name and not self.by_name[n].planes), None)
        i = self.place(p.name)
        self.hints[p.name] = "tuple[int, int, int, int]"
        self.sizes.append(f"const ZmxiRect tileRect = a.rect({i}, {self.measure(image) if image else 'Measure()'});")
        if image:
            self.sizes.append("[[maybe_unused]] const std::int64_t w = tileRect.width, h = tileRect.height;")
        self.arguments.append("&tileRect")

    def step(self, p: Parameter) -> None:
        name = "p" + p.name[0].upper() + p.name[1:-4]
        buffer = next(q for q in (name, name + "MCU") if q in self.by_name)
        if p.planes:
            self.after_buffers(f"const auto {p.name} = a.steps<{p.planes}>({self.place(buffer)});")
            self.arguments.append(f"{p.name}.data()")
        elif p.type == "Zmx32u":
            self.arguments.append(f"a.forwardStep({self.place(buffer)})")
        else:
            common = "commonStep" if self.by_name[buffer].planes else "step"
            self.arguments.append(f"a.{common}({self.place(buffer)})")

    def after_buffers(self, line: str) -> None:
        self.buffers.append("~" + line)  # sorted behind the others

    def state(self, p: Parameter) -> None:
        if p.depth == 2:  # InitAlloc; the names of the functions differ in the operation alone
            self.buffers.append(f"{p.type}* allocated = nullptr;")
            self.arguments.append("&allocated")
            self.results.append((f"made {p.type}", STATES[p.type]))
            return
        i, built = self.place(p.name), str("Huffman" in p.type and "SpecInit" not in self.f.name
                                           and "StateInit" not in self.f.name).lower()
        if p.planes:
            self.hints[p.name] = f"Optional[Sequence[Optional[{STATES[p.type]}]]]"
            self.buffers.append(f"const auto {p.python} = a.states<{p.element}, {p.planes}>({i}, nPlanes);")
            self.arguments.append(f"a.isNull({i}) ? nullptr : {p.python}.data()")
            return
        self.hints[p.name] = f"Optional[{STATES[p.type]}]"
        if self.f.name.split("_")[0].endswith("Free"):
            return
        self.buffers.append(f"auto* const {p.python} = a.state<{p.element}>({i}, {built});")
        self.arguments.append(f"pointerTo({p.python})")
        if re.search(r"Init_", self.f.name):
            self.after.append(f"if ({p.python}) {p.python}->ready = status == zmxStsNoErr;")
        if "size" in self.by_name and "pSize" not in self.by_name:
            self.buffers.append(f"a.demand(!{p.python} || {p.python}->holds(size), {i}, "
                                '"made for smaller code blocks");')
            if "pDst" in self.by_name:
                self.after.append(f"if ({p.python}) keepSamples(a, {self.place('pDst')}, *{p.python}, status);")

    # -- buffers

    def array(self, p: Parameter) -> str:
        one = f"Optional[NDArray[np.{DTYPES[p.type]}]]"
        return f"Optional[Sequence[{one}]]" if p.planes else one

    def buffer(self, p: Parameter) -> None:
        self.hints[p.name] = self.array(p)
        i, kind, extent = self.place(p.name), *self.extent(p)
        if kind == "line":  # code that makes `name`
            self.buffers.append(extent)
        elif p.planes:
            cpp = {"planes": "Extent", "blocks": "std::int64_t"}[kind]
            self.buffers.append(f"const auto {p.python} = a.{kind}<{p.element}, {p.planes}>({i}, "
                                f"std::array<{cpp}, {p.planes}>{{{extent}}});")
        else:
            self.buffers.append(f"auto* const {p.python} = a.{kind}<{p.element}>({i}, {extent});")
        self.arguments.append(f"a.isNull({i}) ? nullptr : {p.python}.data()" if p.planes else p.python + (
            ".data()" if p.name == "pTermLen" else ""))

    # -- what is written

    def guards(self) -> list[str]:
        """Tests that no size tells."""
        name, place = self.f.name, self.place
        if "Huffman8x8_Direct" in name and "Decode" in name:
            bits = place("pNumValidPrefetchedBits")
            return ["if (marker.value() <= 0 && srcBitsLen.value() >= 0)",
                    f"    a.demandMarker({place('pSrc')}, srcBitsLen.value() / 8);",
                    f'a.demand(numValidPrefetchedBits.value() <= 32, {bits}, "more than 32");']
        if "Huffman8x8_Direct" in name:  # 514 bytes of a block, and what is cleared behind them
            return [f"a.demand(a.isNull({place('pDst')}) || a.count({place('pDst')}) - dstBitsLen.value() / 8 >= 516, "
                    f"{place('pDst')}, \"less than the 516 bytes that a block may take\");"]
        if "InvCol_B53" in name:  # low row -1 is found by the step of the high band
            low, high = place("pSrcLow"), place("pSrcHigh")
            return [f"a.demand(phase == 0 || a.step({low}) == a.step({high}), {low}, "
                    '"at a phase other than 0 both bands are to have the same step");']
        if "SplitRow" in name or "JoinRow" in name:  # the two pointers are not tested
            p = next(q for q in self.f.parameters if q.planes)
            return [f"for (const auto* const plane : {p.python}) a.demand(plane || a.isNull({place(p.name)}), "
                    f"{place(p.name)}, \"None among the planes\");"]
        return []

    def body(self) -> list[str]:
        name = self.f.name
        if name.split("_")[0].endswith("Free"):
            return [f"return a.release<{self.f.parameters[0].type}>(0, {name});"]
        late = [line[1:] for line in self.buffers if line.startswith("~")]
        lines = self.sizes + [line for line in self.buffers if not line.startswith("~")] + late + self.guards()
        alone = str(not self.stateful).lower()
        lines.append(f"const ZmxStatus status = a.run({alone}, [&] {{ return {name}({', '.join(self.arguments)}); }});")
        lines += self.after
        if self.results and self.results[0][0].startswith("made "):
            limits = ", size" if "size" in self.by_name else ""
            return lines + [f"return a.made(allocated, {name.replace('InitAlloc', 'Free')}, status{limits});"]
        return lines + [f"return a.done({', '.join(['status'] + [r[0] for r in self.results])});"]

    def signature(self) -> str:
        given = [self.by_name[n].python if n != "pDstLen" else "dstLen" for n in self.places]
        required = len(given) - len(self.optional)
        optional = ["*"] + [f"{name}=..." for name in given[required:]] if self.optional else []
        return ", ".join(given[:required] + optional)

    def returned(self) -> str:
        kinds = [kind for _, kind in self.results]
        return "None" if not kinds else kinds[0] if len(kinds) == 1 else f"tuple[{', '.join(kinds)}]"


def documented(b: Binding, all_comments: dict[str, str]) -> str:
    """The docstring: what the header says of what Python passes, and of the statuses."""
    comment = b.f.comment.strip()
    summary = re.split(r"\\copydetails|\n\s*\n", comment)[0]
    while (copied := re.search(r"\\copydetails (\w+)", comment)) is not None:
        source = all_comments[copied[1]].strip()
        comment = comment.replace(copied[0], source.partition("\n\n")[2] or source)
    paragraphs = [" ".join(summary.split())]
    texts = dict(re.findall(r"\\param (\w+)\s+(.*?)(?=\n\s*\\|\Z)", comment, re.S))
    lines = []
    for name in b.places:
        p = b.by_name[name]
        kind = ("" if not (p.depth or p.planes) or p.type in STATES or p.type not in DTYPES else
                f"{f'{p.planes} arrays of ' if p.planes else ''}{DTYPES[p.type]}: ")
        text = " ".join(texts.get(name, "").split())
        shown = "dstLen" if name == "pDstLen" else p.python
        line = f"{shown}: {kind}{text} {b.notes.get(name, '')}".rstrip()
        lines.append(textwrap.fill(line, 100, subsequent_indent="    "))
    if lines:
        paragraphs.append("\n".join(lines))
    status = re.search(r"\\return\s+(.*)", comment, re.S)
    if status:
        paragraphs.append(textwrap.fill("Status: " + " ".join(status[1].split()), 100))
    return re.sub(r"\\[a-z]+ ", "", "\n\n".join(paragraphs))


HEAD = """// Made of the public headers by python/generate.py.
#include "python/src/raw/call.h"

namespace binding::raw {
namespace {

"""


def source(bindings: list[Binding], comments: dict[str, str]) -> str:
    """The C++ of all functions."""
    text = HEAD
    for b in bindings:
        text += f"py::object {b.f.name}_(Arguments& a) {{\n    " + "\n    ".join(b.body()) + "\n}\n\n"
    text += "} // namespace\n\nconst std::vector<Function>& functions() {\n"
    text += "    static const std::vector<Function> all = {\n"
    for b in bindings:
        names = ", ".join(f'"{"dstLen" if n == "pDstLen" else b.by_name[n].python}"' for n in b.places)
        doc = f"{b.f.name}({b.signature()})\n--\n\n{documented(b, comments)}"
        text += (f'        {{"{b.f.name}", R"doc({doc})doc", {{{names}}}, {len(b.places) - len(b.optional)}, '
                 f"{b.f.name}_}},\n")
    return text + "    };\n    return all;\n}\n\n} // namespace binding::raw\n"


def stub(bindings: list[Binding], comments: dict[str, str]) -> str:
    """The types of all functions, raw.pyi."""
    text = ("# Made of the public headers by python/generate.py.\nfrom collections.abc import Sequence\n"
            "from typing import Any, Optional\n\nimport numpy as np\nfrom numpy.typing import NDArray\n\n"
            "from ._status import StatusError as StatusError, StatusWarning as StatusWarning\n\n")
    for name in STATES.values():
        init = {"DecodeCBProgrState": "    def __init__(self, size: tuple[int, int]) -> None: ...\n",
                "EncodeState_JPEG2K": ""}.get(name, "    def __init__(self) -> None: ...\n")
        text += (f"class {name}:\n{init}    @property\n    def ready(self) -> bool: ...\n    @property\n"
                 "    def released(self) -> bool: ...\n\n")
    text += "def zmxjGetLibVersion() -> dict[str, Any]: ...\n"
    for b in bindings:
        shown = [("dstLen" if n == "pDstLen" else b.by_name[n].python, n) for n in b.places]
        parts = [f"{shown_name}: {b.hints[n]}" for shown_name, n in shown if n not in b.optional]
        optional = [f"{shown_name}: {b.hints[n]} = ..." for shown_name, n in shown if n in b.optional]
        summary = documented(b, comments).partition("\n")[0].replace("\\", "")
        text += (f"def {b.f.name}({', '.join(parts + (['*'] + optional if optional else []))}) -> {b.returned()}:\n"
                 f'    """{summary}"""\n')
    return text


def main() -> None:
    include, cpp, pyi = map(Path, sys.argv[1:])
    found = prototypes(include)
    comments = {f.name: f.comment for f in found}
    bindings = [Binding(f) for f in found]
    for path, text in ((cpp, source(bindings, comments)), (pyi, stub(bindings, comments))):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


if __name__ == "__main__":
    main()

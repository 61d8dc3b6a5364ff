#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_statuses.py SOURCE-DIR LIBRARY: calls each function with what its comment calls a wrong argument.

The \\return of a comment lists the tests of arguments in their order: `STATUS when REASON; STATUS when REASON; ...`. Each reason
is understood here and made true, alone and together with every other one; the library must answer with the status that
stands first. Statuses of the data (a stream that ends, a code that is none) stand behind those of the arguments, and are not
looked at.
"""
import ctypes
import itertools
import pathlib
import re
import sys

DATA = {"zmxStsOutOfBufErr", "zmxStsDCTRangeErr", "zmxStsHuffTableErr", "zmxStsErr", "zmxStsUnderRunErr", "zmxStsRangeErr",
        "zmxStsCBDamagedErr", "zmxStsDivByZero", "zmxStsMemAllocErr", "zmxStsCBNotAttachedErr", "zmxStsBadPassNumberErr"}
SCALARS = {"Zmx8u": ctypes.c_uint8, "Zmx16s": ctypes.c_int16, "Zmx16u": ctypes.c_uint16, "Zmx32s": ctypes.c_int32,
           "Zmx32u": ctypes.c_uint32, "Zmx32f": ctypes.c_float, "int": ctypes.c_int, "double": ctypes.c_double}
# What a sound call has: small regions, in buffers that are large enough for all that could be read around them.
DEFAULTS = {"width": 8, "nWidth": 8, "srcWidth": 8, "P": 8, "Pt": 0, "predictor": 1, "Ss": 1, "Se": 63, "Al": 0, "nPlanes": 1,
            "nSrcLen": 64, "srcLen": 64, "dstLenBytes": 4096, "dstLen": 64, "qualityFactor": 50, "len": 8, "subband": 0,
            "nBitPlanes": 4, "magnBits": 31, "mqTermType": 0, "reserved": 0, "codeStyle": 0, "cbStyle": 0, "nPasses": 1,
            "nTerms": 1, "termNum": 0, "passNum": 0, "bFlushState": 0, "phase": 0}
ROOM = 1 << 16


class Size(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int)]


class Rect(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int)]


class Function:
    def __init__(self, name, parameters, returns):
        self.name, self.returns = name, returns
        self.parameters = []  # (type, name, count of an array or 0)
        for text in parameters:
            match = re.fullmatch(r"(.*?)(\w+)(?:\[(\d)\])?", text.strip(), re.S)
            self.parameters.append((re.sub(r"\s+", " ", match.group(1)).strip(), match.group(2), int(match.group(3) or 0)))


def read_headers(source):
    """The functions, with the \\return of the function whose details they copy."""
    comments, found = {}, []
    for header in sorted(source.glob("include/zmxj/*.h")):
        for match in re.finditer(r"/\*\*((?:(?!\*/).)*)\*/\s*ZMXJ_API [^;(]*?(\w+)\(([^;]*)\);", header.read_text(), re.S):
            text = re.sub(r"\s*\n \* ?", " ", match.group(1)).strip()
            comments[match.group(2)] = text
            found.append((match.group(2), match.group(3)))
    functions = []
    for name, parameters in found:
        text = comments[name]
        while copied := re.search(r"\\copydetails (\w+)", text):
            text = comments[copied.group(1)]
        returns = re.sub(r"\s+", " ", text.split("\\return", 1)[1]).strip()
        functions.append(Function(name, parameters.split(","), returns))
    return functions


def status_values(source):
    text = (source / "include/zmxj/types.h").read_text()
    return {name: int(value) for name, value in re.findall(r"(zmxSts\w+) = (-?\d+)", text)}


class Call:
    """The arguments of one sound call, kept alive; changed by what makes them wrong."""

    def __init__(self, function, library):
        self.keep, self.values, self.library = [], {}, library
        for kind, name, count in function.parameters:
            self.values[name] = self.sound(function, kind, name, count)

    def memory(self, size=ROOM):
        buffer = ctypes.create_string_buffer(size)
        self.keep.append(buffer)
        return ctypes.addressof(buffer) + size // 2  # what stands ahead of it can be read too

    def state(self, function, kind):
        """A built table or an initialised state."""
        holder = ctypes.c_void_p()
        side = "Decode" if "Decode" in kind else "Encode"
        if "JPEG2K" in kind or "CBProgr" in kind:
            make = "zmxiDecodeCBProgrInitAlloc_JPEG2K" if "CBProgr" in kind else "zmxiEncodeInitAlloc_JPEG2K"
            assert self.library[make](ctypes.byref(holder), Size(16, 16)) == 0
            return holder.value
        part = "Spec" if "Spec" in kind else "State"
        make = self.library[f"zmxi{side}Huffman{part}InitAlloc_JPEG_8u"]
        if part == "State":
            assert make(ctypes.byref(holder)) == 0
        else:
            bits = (ctypes.c_uint8 * 16)(*([0] * 8 + [200] + [0] * 6 + [56]))
            vals = (ctypes.c_uint8 * 256)(*range(256))
            assert make(bits, vals, ctypes.byref(holder)) == 0
        return holder.value

    def sound(self, function, kind, name, count):
        plain = kind.replace("const", "").replace(" ", "")
        if count and "*" in plain:  # planes, tables
            one = (lambda: self.state(function, plain)) if "Huffman" in plain else self.memory
            return (ctypes.c_void_p * count)(*[one() for _ in range(count)])
        if count:  # steps
            return (ctypes.c_int * count)(*[64] * count)
        if plain == "ZmxiSize":
            return Size(8, 8)
        if plain == "ZmxiRect*":
            return Rect(0, 0, 8, 8)
        if plain.endswith("**"):
            return self.memory()
        if re.match(r"Zmxi(Decode|Encode)", plain) and "Init_" not in function.name:
            if "DecodeCodeBlock" in function.name:
                return self.memory()
            return self.state(function, plain)
        if plain.endswith("*"):
            address = self.memory()
            if name == "pDstLen":
                ctypes.c_int.from_address(address).value = 64
            return address
        if name.lower().endswith("step"):
            return 64
        return DEFAULTS[name]

    def arguments(self, function):
        out = []
        for kind, name, count in function.parameters:
            value, plain = self.values[name], kind.replace("const", "").replace(" ", "")
            if plain == "ZmxiSize":
                out.append(value)
            elif "*" in plain or count:
                out.append(ctypes.c_void_p(None) if value is None else
                           ctypes.c_void_p(value) if isinstance(value, int) else ctypes.byref(value))
            else:
                out.append(SCALARS[plain](value))
        return out


def assign(name, value):
    return lambda call: call.values.__setitem__(name, value)


def field(name, part, value):
    def change(call):
        if call.values[name] is not None:
            setattr(call.values[name], part, value)
    return change


def element(name, index, value):
    def change(call):
        if call.values[name] is not None:
            call.values[name][index] = value
    return change


def pointed(name, value):
    def change(call):
        if call.values[name] is not None:
            ctypes.c_int.from_address(call.values[name]).value = value
    return change


def ways(function, reason):
    """The changes that make a reason true, each alone. An empty list: the reason is not understood."""
    counts = {name: count for _, name, count in function.parameters}
    kinds = {name: kind for kind, name, _ in function.parameters}
    reason = re.sub(r" \((?:the|not)[^)]*\)", "", reason)
    reason = re.sub(r"^bFlushState is 0 and ", "", reason)
    reason = re.sub(r", or (?:there is no memory|does not hold what one can|an int cannot tell.*)$", "", reason)
    first = lambda index: range(counts[index] if "nPlanes" not in counts else 1)
    if match := re.fullmatch(r"(.*?),? is null", reason):
        out = []
        for word in re.split(r", or |, | or (?!the table)", match.group(1)):
            if word in counts:
                out.append(assign(word, None))
            elif inside := re.fullmatch(r"a (?:plane|band) of (\w+)", word):
                out += [element(inside.group(1), i, None) for i in first(inside.group(1))]
            elif word == "the row or the table of a plane":
                out += [element(name, 0, None) for name, count in counts.items() if count]
            else:
                return []
        return out
    if match := re.fullmatch(r"(?:the (width|height) or )?the (?:width|height)(?: of (\w+))? is below 1", reason):
        name = match.group(2) or "roiSize"
        return [field(name, part, value) for part in ("width", "height") for value in (0, -5)]
    if match := re.fullmatch(r"a step of (\w+) is below 1", reason):
        return [element(match.group(1), i, 0) for i in range(4)]
    if match := re.fullmatch(r"(\*?)([\w, ]+) is below ([01])", reason):
        least = int(match.group(3))
        change = pointed if match.group(1) else assign
        names = re.split(r", | or ", match.group(2))
        if set(names) <= set(kinds):
            return [change(name, least - 1) for name in names]
    if reason == "the capacity is below 1":
        return [pointed("pDstLen", 0)]
    if match := re.fullmatch(r"(\w+) is exactly 0", reason):
        return [assign(match.group(1), 0)]
    if match := re.fullmatch(r"(\w+) is below (?:4 x width, as unsigned numbers|(\d+), as an unsigned number)", reason):
        return [assign(match.group(1), int(match.group(2) or 9) - 1), assign(match.group(1), 0)]
    if reason == "the width or the height is not a multiple of 4":
        return [field("roiSize", "width", 6), field("roiSize", "height", 7)]
    if re.fullmatch(r"pState is not an? (?:decoder|encoder) state", reason):
        return [pointed("pState", 7)]
    if reason.startswith(("Al is outside", "Ss is outside")):
        out = [assign("Al", -1), assign("Al", 14)]
        return out + [assign("Ss", 0), assign("Ss", 64), assign("Se", 64), assign("Se", 0)] * reason.startswith("Ss")
    if reason == "P is outside 2 to 16 or Pt is below 0":
        return [assign("P", 1), assign("P", 17), assign("Pt", -1)]
    if reason == "predictor is outside 1 to 7":
        return [assign("predictor", 0), assign("predictor", 8)]
    return []


def check(function, library, values):
    """Faults found, and how many calls were made."""
    tests, faults, calls = [], [], 0
    for clause in function.returns.split("; "):
        match = re.fullmatch(r"(zmxSts\w+)(?: \([^)]*\))? when (.*)", clause)
        if not match or match.group(1) in DATA:
            break
        if match.group(2).startswith("the state does not hold"):
            break
        if match.group(2).startswith(("an int cannot tell",)):
            continue
        made = ways(function, match.group(2))
        if not made:
            return [f"{function.name}: cannot make true: {match.group(2)}"], 0
        tests += [(len(tests), values[match.group(1)], match.group(2), change) for change in made]
    if not tests:
        return [f"{function.name}: no test of arguments"], 0
    call_it = library[function.name]
    # Alone and in pairs; what stands first in the comment decides, whichever was changed first. Two changes of one
    # argument would undo each other, so null pointers are made last.
    for some in itertools.chain(((t,) for t in tests), itertools.combinations(tests, 2)):
        call = Call(function, library)
        for _, _, reason, change in sorted(some, key=lambda t: "is null" in t[2]):
            change(call)
        got = call_it(*call.arguments(function))
        calls += 1
        undone = len(some) == 2 and some[0][2].split(" is ")[0].split()[-1] == some[1][2].split(" is ")[0].split()[-1]
        wanted = {some[0][1]} | ({some[-1][1]} if undone else set())
        if got not in wanted:
            faults.append(f"{function.name}: {' and '.join(t[2] for t in some)}: {got}, not {some[0][1]}")
    return faults, calls


def main(source, path):
    source = pathlib.Path(source)
    library, values = ctypes.CDLL(path), status_values(source)
    functions, faults, calls = read_headers(source), [], 0
    for function in functions:
        found, made = check(function, library, values)
        faults += found
        calls += made
    # The check itself: an order that is not that of the library must be noticed.
    wrong = next(f for f in functions if f.name == "zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R")
    wrong.returns = ("zmxStsNullPtrErr when pSrc, pDst or pQuantFwdTable is null; zmxStsStepErr when srcStep is below 1; "
                     "zmxStsNoErr otherwise")
    if not check(wrong, library, values)[0]:
        faults.append("a wrong order is not noticed")
    print("\n".join(faults[:60]))
    print(f"{len(functions)} functions, {calls} calls, {len(faults)} faults")
    return bool(faults) or len(functions) < 200


sys.exit(main(*sys.argv[1:]))

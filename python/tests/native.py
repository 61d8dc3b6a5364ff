# SPDX-License-Identifier: BSD-2-Clause
"""The library by ctypes: the same functions without the binding, for comparison.

Prototypes come from the public headers by a reader of its own, which knows types and nothing of what they mean.
"""
from __future__ import annotations

import ctypes
import os
import re
import subprocess
import warnings
from collections.abc import Callable, Sequence
from pathlib import Path
from typing import Any

import numpy as np
from guarded import PAGE, Slot

import zmxjpx

ROOT = Path(__file__).resolve().parents[2]
INCLUDE = ROOT / "include" / "zmxj"


class Size(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int)]


class Rect(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int)]


def _library() -> ctypes.CDLL:
    """The one beside the extension, or of the system where the package has none of its own."""
    beside = Path(zmxjpx.__file__).parent / "libzmxjpx.so.6.1"
    return ctypes.CDLL(os.environ.get("ZMXJPX_LIBRARY") or (str(beside) if beside.exists() else "libzmxjpx.so.6.1"))


LIBRARY = _library()
_NUMBERS = {"int": ctypes.c_int, "Zmx32u": ctypes.c_uint32, "ZmxiSize": Size}


def _prototypes() -> dict[str, list[tuple[str, str]]]:
    """Types and names of parameters, as they stand."""
    found = {}
    for header in INCLUDE.glob("*.h"):
        text = re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S)
        for name, rest in re.findall(r"ZMXJ_API ZmxStatus (\w+)\((.*?)\);", text, re.S):
            parts = [" ".join(part.split()) for part in rest.split(",")]
            found[name] = [re.fullmatch(r"(.*?)(\w+(?:\[\d\])?)", part).groups() for part in parts]
    return found


PROTOTYPES = _prototypes()


def function(name: str):
    """A function of the library with its types: numbers and records by value, all else as addresses."""
    f = getattr(LIBRARY, name)
    f.argtypes = [ctypes.c_void_p if "*" in kind or "[" in who else _NUMBERS[kind.strip()]
                  for kind, who in PROTOTYPES[name]]
    f.restype = ctypes.c_int
    return f


def exported() -> set[str]:
    """What the dynamic linker finds in the library."""
    path = LIBRARY._name if "/" in LIBRARY._name else next(
        line.split()[-1] for line in Path("/proc/self/maps").read_text().splitlines() if "libzmxjpx.so" in line)
    listed = subprocess.run(["nm", "-D", "--defined-only", path], capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"T (zmx[ij]\w+)", listed))


class Array:
    """An array for Python, and its twin for C, each flush against closed pages.

    Its last element is, or every other time its first one. What lies between its rows is compared as well.
    """

    _turn = 0

    def __init__(self, base: np.ndarray, columns: int | None = None, ahead: tuple[int, int] = (0, 0)) -> None:
        Array._turn += 1
        self.ahead, self.step = ahead, base.strides[0]
        shape = base.shape if columns is None else (base.shape[0], columns)
        sides = []
        for _ in range(2):
            slot = Slot(base.nbytes // PAGE + 1)
            array = slot.array(shape, base.strides, base.dtype, Array._turn % 2 == 0, 0)
            array[...] = base if columns is None else base[:, :columns]
            sides.append((slot, array))
        (self.slot, self.python), (self.twin, self.copy) = sides

    @property
    def base(self) -> np.ndarray:
        return self.python

    @property
    def address(self) -> int:
        """Of the element at which C begins, behind those that lie ahead of it."""
        rows, columns = self.ahead
        return self.copy.ctypes.data + rows * self.step + columns * self.copy.itemsize

    def check(self, what: str) -> None:
        assert np.array_equal(self.slot.bytes, self.twin.bytes), f"{what} differs"


class State:
    """A table or state for Python, and one for C."""

    def __init__(self, python: object, address: int | None) -> None:
        self.python, self.address = python, address


class Out:
    """A number that only comes out."""

    def __init__(self, kind: type = ctypes.c_int) -> None:
        self.kind = kind


CALLED: set[str] = set()
RANDOM = np.random.default_rng(17)


def noise(shape: tuple[int, ...], dtype: type) -> np.ndarray:
    if np.dtype(dtype).kind == "f":
        return (RANDOM.standard_normal(shape) * 300).astype(dtype)
    limits = np.iinfo(dtype)
    return RANDOM.integers(limits.min, limits.max, shape, dtype, endpoint=True)


def plane(rows: int, columns: int, dtype: type, ahead: tuple[int, int] = (0, 0)) -> Array:
    """Rows of noise with a gap between them that nothing may touch."""
    return Array(noise((rows, columns + int(RANDOM.integers(0, 4))), dtype), columns, ahead)


def block(count: int, dtype: type) -> Array:
    return Array(noise((count,), dtype))


def numbers(values: Sequence[int], dtype: type = np.int32) -> Array:
    return Array(np.array(values, dtype))


def _native_argument(name: str, given: dict[str, Any], keep: list[Any]) -> Any:
    """What C gets for a parameter."""
    plain = name.partition("[")[0]
    if plain.endswith("Step") and plain not in given:
        buffer = "p" + plain[0].upper() + plain[1:-4]
        arrays = given.get(buffer, given.get(buffer + "MCU"))
        if "[" in name:
            keep.append((ctypes.c_int * 4)(*(a.step for a in arrays)))
            return ctypes.addressof(keep[-1])
        return arrays[0].step if isinstance(arrays, list) else arrays.step
    value = given[plain]
    if isinstance(value, list):
        keep.append((ctypes.c_void_p * max(len(value), 4))(*(v.address for v in value)))
        return ctypes.addressof(keep[-1])
    if isinstance(value, Out):
        keep.append(value.kind(-1 if plain == "pErrorBitPlane" else 0))
        return ctypes.addressof(keep[-1])
    if isinstance(value, (Array, State)):
        return value.address
    if isinstance(value, tuple) and len(value) == 4:
        keep.append(Rect(*value))
        return ctypes.addressof(keep[-1])
    return Size(*value) if isinstance(value, tuple) else value


def python_name(name: str) -> str:
    """Without the p of a pointer."""
    match = re.fullmatch(r"p+([A-Z]|n[PT])(\w*)", name)
    return match[1][0].lower() + match[1][1:] + match[2] if match else name


def both(name: str, **given: Any) -> tuple[int, Any]:
    """Calls a function from Python and from C with equal arguments: statuses, results and all arrays are to be equal.

    Arguments have the names of C. Gives the status and the results.
    """
    CALLED.add(name)
    keep: list[Any] = []
    arguments = [_native_argument(who, given, keep) for _, who in PROTOTYPES[name]]
    python = {python_name(k): [v.python for v in value] if isinstance(value, list) else
              value.python if isinstance(value, (Array, State)) else value
              for k, value in given.items() if not isinstance(value, Out)}
    status = function(name)(*arguments)
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        try:
            result, answered = getattr(zmxjpx.raw, name)(**python), 0
        except zmxjpx.StatusError as error:
            result, answered = error.results, error.status
    if caught:
        answered = caught[0].message.status
    assert answered == status, f"{name}: {answered} from Python, {status} from C"
    outs = [k.value for (_, who), k in zip(((p, w) for p, w in PROTOTYPES[name] if isinstance(given.get(w), Out)),
                                           (k for k in keep if isinstance(k, ctypes._SimpleCData)))]
    if outs:
        assert (result if isinstance(result, tuple) else (result,)) == tuple(outs), name
    for who, value in given.items():
        for one in value if isinstance(value, list) else [value]:
            if isinstance(one, Array):
                one.check(f"{name}: {who}")
    return status, result


_KEPT: list[Any] = []  # memory of states on the side of C


def made(name: str, **given: Any) -> State:
    """A table or state by an InitAlloc function, on both sides. Those of C live as long as the tests."""
    CALLED.add(name)
    keep: list[Any] = []
    pointer = ctypes.c_void_p()
    arguments = [ctypes.addressof(pointer) if "**" in kind else _native_argument(who, given, keep)
                 for kind, who in PROTOTYPES[name]]
    status = function(name)(*arguments)
    state = getattr(zmxjpx.raw, name)(**{python_name(k): v.python if isinstance(v, Array) else v
                                         for k, v in given.items()})
    assert status == 0 and state.ready
    return State(state, pointer.value)


def freed(name: str, state: State) -> None:
    CALLED.add(name)
    parameter = python_name(PROTOTYPES[name][0][1])
    assert function(name)(state.address) == 0
    getattr(zmxjpx.raw, name)(**{parameter: state.python})
    assert state.python.released


def blank(kind: str, size: Callable[[], int], *arguments: Any) -> State:
    """Memory for a state on both sides, which an Init function is to fill."""
    _KEPT.append(ctypes.create_string_buffer(size() + 64))
    aligned = (ctypes.addressof(_KEPT[-1]) + 63) // 64 * 64
    return State(getattr(zmxjpx.raw, kind)(*arguments), aligned)


def _table(kind: str) -> object:
    """A table of all symbols, with codes of 8 bits and more."""
    bits = np.array([0] * 7 + [255] + [0] * 7 + [1], np.uint8)
    return getattr(zmxjpx.raw, f"zmxi{kind}InitAlloc_JPEG_8u")(bits, np.arange(256, dtype=np.uint8))


def _encoder(loaded: bool) -> object:
    state = zmxjpx.raw.zmxiEncodeInitAlloc_JPEG2K((16, 16))
    if loaded:
        samples = np.arange(256, dtype=np.int32).reshape(16, 16)
        zmxjpx.raw.zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(samples, state, 0, 31, 0, 0)
    return state


def _decoder(attached: bool) -> object:
    state = zmxjpx.raw.zmxiDecodeCBProgrInitAlloc_JPEG2K((16, 16))
    if attached:
        zmxjpx.raw.zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(np.zeros((16, 16), np.int32), state, 0, 9, 0)
        zmxjpx.raw.zmxiDecodeCBProgrSetPassCounter_JPEG2K(20, state)
    return state


# Ways to have a table or state of each kind, good and bad.
EXAMPLES_OF_TABLES: dict[str, list[Callable[[], object]]] = {
    kind: [lambda kind=kind: _table(kind)] * 6 + [getattr(zmxjpx.raw, kind)]
    for kind in ("DecodeHuffmanSpec", "EncodeHuffmanSpec")}
EXAMPLES_OF_TABLES.update({
    kind: [lambda kind=kind: getattr(zmxjpx.raw, f"zmxi{kind}InitAlloc_JPEG_8u")()] * 6 + [getattr(zmxjpx.raw, kind)]
    for kind in ("DecodeHuffmanState", "EncodeHuffmanState")})
EXAMPLES_OF_TABLES["EncodeState_JPEG2K"] = [lambda: _encoder(True), lambda: _encoder(True), lambda: _encoder(False)]
EXAMPLES_OF_TABLES["DecodeCBProgrState"] = [
    lambda: _decoder(True), lambda: _decoder(True), lambda: _decoder(False),
    lambda: zmxjpx.raw.DecodeCBProgrState((16, 16))]

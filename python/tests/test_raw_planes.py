# SPDX-License-Identifier: BSD-2-Clause
"""Functions without states, from Python and from C on the same noise: byte for byte the same."""
from __future__ import annotations

import re

import numpy as np
import pytest
from native import PROTOTYPES, RANDOM, Array, Out, block, both, noise, numbers, plane, python_name

import zmxjpx

TYPES = {"Zmx8u": np.uint8, "Zmx16s": np.int16, "Zmx16u": np.uint16, "Zmx32s": np.int32, "Zmx32f": np.float32}
NAMES = sorted(PROTOTYPES)


def named(pattern: str) -> pytest.MarkDecorator:
    """A case for each function whose name matches."""
    names = [name for name in NAMES if re.search(pattern, name)]
    assert names, pattern
    return pytest.mark.parametrize("name", names)


def element(name: str, parameter: str) -> type:
    kind = next(kind for kind, who in PROTOTYPES[name] if who.startswith(parameter))
    return TYPES[re.search(r"Zmx\d+[usf]", kind)[0]]


def exact(name: str, **given) -> None:
    """As both(); besides, each array is as large as it has to be: with a row or a column less Python refuses it."""
    both(name, **given)
    python = {python_name(k): [v.python for v in value] if isinstance(value, list) else
              value.python if isinstance(value, Array) else value for k, value in given.items()}
    for who, value in python.items():
        arrays = value if isinstance(value, list) else [value]
        for n, array in enumerate(arrays):
            for less in [] if not isinstance(array, np.ndarray) else [array[:-1], array[..., :-1]]:
                shorter = arrays[:n] + [less] + arrays[n + 1:]
                with pytest.raises(ValueError, match=who):
                    getattr(zmxjpx.raw, name)(**{**python, who: shorter if isinstance(value, list) else less})


def side(most: int = 40) -> int:
    return int(RANDOM.integers(1, most))


def layouts(name: str) -> tuple[str, str]:
    """Of source and destination: C3 is three interleaved channels, P3 three planes."""
    first, second = re.search(r"_([CP]\d)?([CP]\d)I?R$", name).groups()
    return first or second, second


def region(name: str, parameter: str, layout: str, width: int, height: int):
    """The buffer of a whole region."""
    kind = element(name, parameter)
    if layout[0] == "P":
        step = width + int(RANDOM.integers(0, 4))  # one for all
        return [Array(noise((height, step), kind), width) for _ in range(int(layout[1]))]
    packed = kind is np.uint16 and re.search("5[56]5", name)
    return plane(height, width * (1 if packed else int(layout[1])), kind)


@pytest.mark.parametrize("round", range(3))
@named(r"To(RGB|BGR|CMYK|YCbCr|YCCK)\w*_JPEG_|ToY_|[RI]CT(Fwd|Inv)_|(Add|Sub)128_")
def test_regions(name, round):
    width, height = (side(), side()) if round else (130, 70)  # more than 8192 samples are shared out
    source, target = layouts(name)
    if "I" in name.rsplit("_", 1)[1]:
        exact(name, pSrcDst=region(name, "pSrcDst", source, width, height), roiSize=(width, height))
        return
    if "YCbCr422ToRGB" in name:
        pairs = (width + 1) // 2
        source_plane, target_plane = plane(height, 4 * pairs, np.uint8), plane(height, 6 * pairs, np.uint8)
        exact(name, pSrc=source_plane, pDst=target_plane, roiSize=(width, height))
        return
    exact(name, pSrc=region(name, "pSrc", source, width, height), pDst=region(name, "pDst", target, width, height),
         roiSize=(width, height))


@named("_MCU_")
def test_units(name):
    across, down, blocks = {"444": (8, 8, 1), "422": (16, 8, 2), "411": (16, 16, 4)}[re.search("444|422|411", name)[0]]
    source, target = layouts(name)
    planes = int(max(source, target)[1])  # P sorts behind C
    samples = [block(64 * (blocks if n in (0, 3) else 1), np.int16) for n in range(planes)]
    side_of_pixels, layout = ("pDst", target) if source[0] == "P" else ("pSrc", source)
    kind = element(name, side_of_pixels)
    pixels = plane(down, across * (1 if kind is np.uint16 else int(layout[1])), kind)
    exact(name, **({"pSrcMCU": samples, "pDst": pixels} if source[0] == "P" else {"pSrc": pixels, "pDstMCU": samples}))


@pytest.mark.parametrize("round", range(3))
@named("SampleUpH|SampleDownH")
def test_resampling(name, round):
    width, height = side(), side()
    both_ways = "H2V2" in name
    if "Up" in name:
        rows = height // 2 + 2 if both_ways else height
        source = plane(rows, width // 2 + 2, np.uint8, (1 if both_ways else 0, 1))
    else:
        source = plane(height * 2 if both_ways else height, 2 * width, np.uint8)
    size = (width, height)
    exact(name, pSrc=source, srcRoiSize=size, pDst=plane(height, width, np.uint8), dstRoiSize=size)


@pytest.mark.parametrize("width", [1, 2, 3, 8, 33])
@named("Sample(Up|Down)Row")
def test_rows_resampled(name, width):
    up = "Up" in name
    count = (3 if width == 1 else width) if up else width + width % 2
    rows = {who: plane(1, count, np.uint8, (0, int(up and width == 1))) for who in ("pSrc", "pSrc1", "pSrc2")
            if any(w == who for _, w in PROTOTYPES[name])}
    exact(name, **rows, srcWidth=width, pDst=plane(1, max(2 * width, 4) if up else (width + 1) // 2, np.uint8))


@named(r"DCTQuant|Quant(Fwd|Inv)8x8_")
def test_transforms(name):
    given = {}
    for kind, who in PROTOTYPES[name]:
        if "Table" in who:
            given[who] = block(64, element(name, who))
        elif who in ("pSrc", "pDst", "pSrcDst"):
            stepped = any(w == who[1].lower() + who[2:] + "Step" for _, w in PROTOTYPES[name])
            side = int(re.search(r"8x8(?:To(\d))?", name)[1] or 8)
            given[who] = plane(side, side, element(name, who)) if stepped else block(64, element(name, who))
    exact(name, **given)


@pytest.mark.parametrize("quality", [1, 50, 75, 100, 0])
def test_tables_of_quantisers(quality):
    raw = block(64, np.uint8)
    both("zmxiQuantFwdRawTableInit_JPEG_8u", pQuantRawTable=raw, qualityFactor=quality)
    both("zmxiQuantFwdTableInit_JPEG_8u16u", pQuantRawTable=raw, pQuantFwdTable=block(64, np.uint16))
    both("zmxiQuantInvTableInit_JPEG_8u16u", pQuantRawTable=raw, pQuantInvTable=block(64, np.uint16))


@named("PCT(Fwd|Inv)")
def test_photo_transform(name):
    sides = re.search(r"(\d+)x(\d+)_", name)
    width, height = (int(sides[1]), int(sides[2])) if sides else (4 * side(9), 4 * side(9))
    exact(name, pSrcDst=plane(height, width, np.int32), **({} if sides else {"roiSize": (width, height)}))


@pytest.mark.parametrize("round", range(3))
@named("Texture")
def test_textures(name, round):
    width, height = side(), side()
    blocks = block((width + 3) // 4 * ((height + 3) // 4) * (8 if "DXT1" in name else 16), np.uint8)
    pixels = plane(height, width * (3 if "YCoCg" in name else 4), np.uint8)
    source, target = (blocks, pixels) if "Decode" in name else (pixels, blocks)
    exact(name, pSrc=source, pDst=target, roiSize=(width, height))


def test_rows_packed():
    for _ in range(30):
        row = np.repeat(RANDOM.integers(0, 4, 40, np.uint8), RANDOM.integers(1, 5, 40))
        packed, at = block(400, np.uint8), numbers([0])
        both("zmxiPackBitsRow_TIFF_8u_C1", pSrc=numbers(row, np.uint8), srcLen=len(row), pDst=packed, pDstPos=at,
             dstLen=400)
        back, from_ = block(len(row), np.uint8), numbers([0])
        both("zmxiUnpackBitsRow_TIFF_8u_C1", pSrc=packed, pSrcPos=from_, srcLen=int(at.base[0]), pDst=back,
             dstLen=len(row))
        assert np.array_equal(back.base, row)


def test_rows_split():
    words, halves = plane(1, 33, np.uint16), [plane(1, 33, np.uint8), plane(1, 33, np.uint8)]
    exact("zmxiSplitRow_TIFF_16u8u_C1", pSrc=words, pDst=halves, len=33)
    exact("zmxiJoinRow_TIFF_8u16u_C1", pSrc=halves, pDst=plane(1, 33, np.uint16), len=33)


@pytest.mark.parametrize("parameter", range(-1, 9))
@named("Pred(First)?Row")
def test_predictors(name, parameter):
    last = {"P": 16 - max(parameter, 0), "Pt": max(parameter, 0)} if "First" in name else {"predictor": parameter}
    above = {} if "First" in name else {"pPrevRow": block(37, np.int16)}
    exact(name, pSrc=block(37, np.int16), **above, pDst=block(37, np.int16), nWidth=37, **last)


@named("WTGetBufSize")
def test_sizes_of_scratch_memory(name):
    for _ in range(5):
        both(name, pTileRect=(side(), side(), side(), side()), pSize=Out())


@pytest.mark.parametrize("round", range(4))
@named(r"WT(Fwd|Inv)_")
def test_wavelets_of_planes(name, round):
    x, y, width, height = round % 2, round // 2, side(), side()
    # Scratch memory is no result: each side has its own.
    scratch = {"pBuffer": numbers(np.zeros(1 << 16), np.uint8)}
    scratch["pBuffer"].check = lambda what: None
    if name.endswith("IR"):
        both(name, pSrcDst=plane(height, width, element(name, "pSrcDst")), pTileRect=(x, y, width, height), **scratch)
        return
    kind = element(name, "pDst")
    low, high = ((width + 1) // 2, (height + 1) // 2), (width // 2, height // 2)
    bands = [plane(rows, max(columns, 1), kind) for columns, rows in
             ((low[0], low[1]), (low[0], max(high[1], 1)), (high[0], low[1]), (high[0], max(high[1], 1)))]
    samples = plane(height, width, kind)
    source, target = (samples, bands) if "Fwd" in name else (bands, samples)
    both(name, pSrc=source, pDst=target, pTileRect=(x, y, width, height), **scratch)


@pytest.mark.parametrize("phase", [0, 1])
@named(r"WT(Fwd|Inv)(Row|Col)_")
def test_kernels_of_wavelets(name, phase):
    width, height = side(20), side(20)
    kind = element(name, "pDst" if "Inv" in name else "pSrc")
    even, odd, more = {("B53", "Fwd"): (2, 1, 3), ("D97", "Fwd"): (4, 3, 7)}.get(
        (name.split("_")[1], "Fwd" if "Fwd" in name else ""), (0, 0, 0))

    def reaching(twice: bool, before: int, beyond: int):
        """The plane of a band or of samples, with what lies around it."""
        if "Row" in name:
            return plane(height, (2 * width if twice else width) + beyond, kind, (0, before))
        return plane((2 * height if twice else height) + beyond, width, kind, (before, 0))

    roi = {"dstRoiSize" if "Fwd" in name else "srcRoiSize": (width, height)}
    if "Fwd" in name:
        exact(name, pSrc=reaching(True, odd if phase else even, more), pDstLow=plane(height, width, kind),
             pDstHigh=plane(height, width, kind), **roi, phase=phase)
        return
    (low_even, low_odd, low_more), (before, high_more) = (
        ((0, 1, 1), (1, 2)) if "B53" in name else ((1, 2, 3), (2, 4)))
    target = plane(height, 2 * width, kind) if "Row" in name else plane(2 * height, width, kind)
    low = reaching(False, low_odd if phase else low_even, low_more)
    high = reaching(False, before, high_more)
    while "InvCol_B53" in name and phase and low.step != high.step:
        with pytest.raises(ValueError, match="same step"):
            getattr(zmxjpx.raw, name)(low.python, high.python, target.python, phase, srcRoiSize=(width, height))
        high = reaching(False, before, high_more)
    exact(name, pSrcLow=low, pSrcHigh=high, **roi, pDst=target, phase=phase)


@named("ColLift")
def test_lifting_of_columns(name):
    width = side()
    rows = {who: plane(1, width, element(name, who)) for _, who in PROTOTYPES[name] if who != "width"}
    exact(name, **rows, width=width)


RECORDS = {"size": (8, 8), "tileRect": (0, 0, 8, 8)}


def required(name: str) -> list[tuple[str, bool]]:
    """The arguments that Python wants, and whether they are pointers."""
    signature = getattr(zmxjpx.raw, name).__text_signature__[1:-1].partition("*")[0]
    pointers = {python_name(who.partition("[")[0]) for kind, who in PROTOTYPES[name] if "*" in kind or "[" in who}
    return [(who, who in pointers - set(RECORDS)) for who in signature.replace(" ", "").split(",") if who]


@pytest.mark.parametrize("name", [name for name in NAMES if any(pointer for _, pointer in required(name))])
def test_a_null_pointer_has_the_status_of_c(name):
    with pytest.raises(zmxjpx.StatusError) as error:
        getattr(zmxjpx.raw, name)(*[None if pointer else RECORDS.get(who, 1) for who, pointer in required(name)])
    assert error.value.name == "zmxStsNullPtrErr" and error.value.function == name

# SPDX-License-Identifier: BSD-2-Clause
"""Any shape, stride, type and byte string: an exception that is documented, or a result; never a crash."""
from __future__ import annotations

import os
import re
import warnings

import numpy as np
from conftest import picture
from guarded import Slot
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays
from native import EXAMPLES_OF_TABLES, PROTOTYPES, python_name

import zmxjpx
from zmxjpx import raw

LONG = bool(os.environ.get("ZMX_LONG_TESTS"))
DOCUMENTED = (ValueError, TypeError, MemoryError, zmxjpx.StatusError)  # CodecError is a ValueError
MANY = settings(max_examples=20000 if LONG else 700, deadline=None, derandomize=not LONG, database=None,
                suppress_health_check=list(HealthCheck))
FEW = settings(MANY, max_examples=5000 if LONG else 250)

FILES = [
    zmxjpx.encode_jpeg(picture(20, 30)), zmxjpx.encode_jpeg(picture(20, 30), progressive=True, restart=2),
    zmxjpx.encode_jpeg(picture(20, 30, 1, 16), lossless=3), zmxjpx.encode_jpeg(picture(9, 9, 4), colour="cmyk"),
    zmxjpx.encode_jpeg2000(picture(20, 30)), zmxjpx.encode_jpeg2000(picture(40, 30, 1), tile=(16, 16), rate=[1, 3]),
    zmxjpx.encode_dds(picture(20, 30), "dxt5", mips=True), zmxjpx.encode_packbits(picture(5, 50, 1)),
]


@st.composite
def files(draw) -> bytes:
    """Bytes of any kind, and files with bytes changed, cut off and moved."""
    if draw(st.integers(0, 9)) == 0:
        return draw(st.binary(max_size=200))
    file = bytearray(draw(st.sampled_from(FILES)))
    for _ in range(draw(st.integers(0, 6))):
        file[draw(st.integers(0, len(file) - 1))] = draw(st.integers(0, 255))
    end = draw(st.integers(0, len(file)) | st.just(len(file)))
    return bytes(file[:end]) + draw(st.binary(max_size=8))


@FEW
@given(file=files(), choice=st.integers(0, 7), reduce=st.integers(-1, 6), numbers=st.tuples(*[st.integers(-5, 50)] * 4))
def test_decoders(file, choice, reduce, numbers):
    limit = {"max_pixels": 1 << 16}
    calls = [
        lambda: zmxjpx.decode_jpeg(file, **limit), lambda: zmxjpx.decode_jpeg(file, strict=True, scale=4, **limit),
        lambda: zmxjpx.transcode_jpeg(file, crop=numbers, progressive=True, trim=True, **limit),
        lambda: zmxjpx.decode_jpeg2000(file, reduce=reduce, **limit),
        lambda: zmxjpx.decode_jpeg2000(file, window=numbers, component=reduce if reduce > 0 else None, **limit),
        lambda: zmxjpx.decode_dds(file, level=max(reduce, 0), **limit), lambda: zmxjpx.info(file),
        lambda: zmxjpx.decode_packbits(file, size=numbers[0] * 10),
    ]
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", zmxjpx.DamageWarning)
        try:
            calls[choice]()
        except DOCUMENTED:
            pass


@st.composite
def images(draw) -> np.ndarray:
    """Arrays of any type, shape and layout; most of them are pictures."""
    dtype = draw(st.sampled_from([np.uint8, np.uint16]) | arrays.scalar_dtypes())
    shape = draw(st.tuples(st.integers(1, 24), st.integers(1, 24)) |
                 st.tuples(st.integers(1, 24), st.integers(1, 24), st.integers(1, 5)) |
                 arrays.array_shapes(min_dims=0, max_dims=4, min_side=0, max_side=6))
    image = np.zeros(shape, dtype)
    if image.dtype.kind == "u" and image.size:
        image[...] = np.random.default_rng(draw(st.integers(0, 99))).integers(
            0, np.iinfo(image.dtype).max, shape, image.dtype.newbyteorder("="), endpoint=True)
    for axis in range(image.ndim):
        image = np.moveaxis(np.moveaxis(image, axis, 0)[:: draw(st.sampled_from([1, 1, -1, 2]))], 0, axis)
    return image.T if draw(st.integers(0, 5)) == 0 else image


@FEW
@given(image=images(), choice=st.integers(0, 4), number=st.integers(-1, 9))
def test_encoders(image, choice, number):
    calls = [
        lambda: zmxjpx.decode_jpeg2000(zmxjpx.encode_jpeg2000(image)),
        lambda: zmxjpx.decode_jpeg(zmxjpx.encode_jpeg(image, lossless=number, colour="cmyk" if number == 4 else None)),
        lambda: zmxjpx.encode_jpeg(image, number * 12, progressive=number % 2 == 0),
        lambda: zmxjpx.encode_dds(image, ["dxt1", "dxt3", "dxt5", "ycocg-dxt5"][number % 4], mips=number > 3),
        lambda: zmxjpx.encode_packbits(image),
    ]
    try:
        back = calls[choice]()
    except DOCUMENTED:
        return
    # Whatever a lossless codec has taken, it gives back. Of more than four channels a picture shows four.
    if choice == 0 or (choice == 1 and number > 0):
        shown = image[:, :, :4] if image.ndim == 3 else image
        assert np.array_equal(back, shown[:, :, 0] if shown.shape[2:] == (1,) else shown)


SLOTS = [Slot(4) for _ in range(12)]
NAMES = sorted(PROTOTYPES)
TYPES = {"Zmx8u": np.uint8, "Zmx16s": np.int16, "Zmx16u": np.uint16, "Zmx32s": np.int32, "Zmx32u": np.uint32,
         "Zmx32f": np.float32, "int": np.int32}
SMALL = st.integers(1, 16)
NUMBERS = SMALL | SMALL | SMALL | st.integers(0, 70) | st.sampled_from([-1, 1 << 20, (1 << 31) - 1, -(1 << 31)])


class Pool:
    """The slots that a call has taken."""

    def __init__(self, data: st.DataObject) -> None:
        self.data, self.taken = data, []

    def draw(self, strategy: st.SearchStrategy):
        return self.data.draw(strategy)

    def array(self, dtype: type, stepped: bool) -> np.ndarray:
        """Rows with gaps, rows that overlay each other or run backward, and single rows; most often what is wanted."""
        kind = np.dtype(dtype)
        item, form = kind.itemsize, self.draw(st.integers(0, 9))
        shape, strides = (600,), (item,)
        gap = self.draw(st.integers(0, 9))
        if (form > 0) == stepped:
            shape, strides = (20, 64), (64 * item + gap, item)
        if form == 9:  # anything
            rows, columns = self.draw(st.integers(0, 20)), self.draw(st.integers(0, 70))
            step = self.draw(st.sampled_from([columns * item + gap, -columns * item - gap, 0, gap]))
            shape, strides = (rows, columns), (step, self.draw(st.sampled_from([item, item, 2 * item])))
        slot = SLOTS[len(self.taken)]
        try:
            shift = self.draw(st.sampled_from([0] * 9 + [1]))
            array = slot.array(shape, strides, kind, self.draw(st.booleans()), shift)
        except ValueError:
            array = slot.array((1, 1), (kind.itemsize, kind.itemsize), kind, True, 0)
        self.taken.append(slot)
        if kind.itemsize == 4 and kind.kind in "iu" and self.draw(st.booleans()) and array.size and array.ndim == 1:
            array[...] = self.draw(NUMBERS)  # positions and lengths of which some are good
        return array

    def state(self, kind: str):
        """One that is built, or not, or released, or of another kind."""
        return self.draw(st.sampled_from(EXAMPLES_OF_TABLES[kind]))()

    def argument(self, kind: str, name: str, stepped: bool):
        state = re.search(r"Zmxi(\w*(?:Spec|State)\w*)", kind)
        one = (lambda: self.state(state[1])) if state else (
            lambda: self.array(TYPES[re.search(r"Zmx\d+\w|int", kind)[0]], stepped))
        odd = self.draw(st.integers(0, 99))
        if odd < 3:
            return [None, 7, b"bytes"][odd]
        if "[" in name:
            first = one()
            # Of one step, most often: lists of the same array do.
            return [first] * self.draw(st.sampled_from([int(name[-2])] * 5 + [1, 2]))
        return one()


@MANY
@given(data=st.data())
def test_functions_of_the_library(data):
    pool = Pool(data)
    name = pool.draw(st.sampled_from(NAMES))
    wanted = re.sub(r"[() ]", "", getattr(raw, name).__text_signature__).split(",")
    required = wanted[: wanted.index("*")] if "*" in wanted else wanted
    # Results that have the name of an argument come first, and are overwritten.
    by_name = {python_name(who.partition("[")[0]): (kind, who) for kind, who in reversed(PROTOTYPES[name])}
    given_: dict[str, object] = {}
    for who in filter(None, (w.partition("=")[0] for w in wanted if w != "*")):
        kind, plain = by_name.get(who, ("int ", who))
        if who not in required and pool.draw(st.integers(0, 2)):
            continue
        if "ZmxiRect" in kind:
            given_[who] = pool.draw(st.tuples(SMALL, SMALL, SMALL, SMALL) | st.tuples(*[NUMBERS] * 4))
        elif "ZmxiSize" in kind:
            given_[who] = pool.draw(st.tuples(SMALL, SMALL) | st.tuples(NUMBERS, NUMBERS))
        elif "*" in kind or "[" in plain:
            step = plain[1].lower() + plain[2:].partition("[")[0].replace("MCU", "") + "Step"
            given_[who] = pool.argument(kind, plain, any(w.startswith(step) for _, w in PROTOTYPES[name]))
        else:
            given_[who] = pool.draw(NUMBERS)
    try:
        getattr(raw, name)(**given_)
    except DOCUMENTED:
        pass
    assert all(slot.intact() for slot in pool.taken), f"{name} wrote beside its arrays"

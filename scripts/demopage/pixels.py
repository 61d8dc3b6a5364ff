# SPDX-License-Identifier: BSD-2-Clause
"""pixels.py: the samples of two pictures of one shape: where they differ, and by how much.

Pictures are binary PPM files of 8-bit samples. Nothing but Python's own library is wanted, so whole rows go through map()
and bytes.translate(), which are fast enough for photographs.
"""
import operator

AMPLIFY = 8  # a map of differences shows them so many times larger


class Picture:
    """Width, height, and three bytes a pixel."""

    def __init__(self, width, height, samples):
        if len(samples) != 3 * width * height:
            raise ValueError(f"{len(samples)} samples for {width} x {height} pixels")
        self.width, self.height, self.samples = width, height, samples

    @staticmethod
    def read(path):
        data = path.read_bytes()
        kind, width, height, largest = data.split(None, 4)[:4]
        if kind != b"P6" or largest != b"255":
            raise ValueError(f"{path}: no PPM of 8-bit samples")
        width, height = int(width), int(height)
        return Picture(width, height, data[len(data) - 3 * width * height:])

    def write(self, path):
        path.write_bytes(b"P6\n%d %d\n255\n" % (self.width, self.height) + self.samples)

    def crop(self, left, top, size):
        """A square part; it lies within the picture as far as there is room."""
        width, height = min(size, self.width), min(size, self.height)
        left, top = max(0, min(left, self.width - width)), max(0, min(top, self.height - height))
        rows = (3 * (y * self.width + left) for y in range(top, top + height))
        return Picture(width, height, b"".join(self.samples[at:at + 3 * width] for at in rows))


def difference(one, other):
    """Sample by sample, without sign."""
    samples = bytes(map(abs, map(operator.sub, one.samples, other.samples)))
    return Picture(one.width, one.height, samples)


def amplified(picture):
    """AMPLIFY times as bright, white where that is too much."""
    return Picture(picture.width, picture.height, picture.samples.translate(bytes(min(255, AMPLIFY * v) for v in range(256))))


def worst_place(differences, size):
    """The left upper corner of the square of this size whose squared differences are largest; squares overlap by halves."""
    squares = [v * v for v in range(256)]
    step = max(1, size // 2)
    columns = differences.width // step or 1
    sums = []  # a list for each band of `step` rows, a number for each `step` columns
    for top in range(0, max(1, differences.height - step + 1), step):
        band = [0] * columns
        for y in range(top, min(top + step, differences.height)):
            at = 3 * y * differences.width
            row = differences.samples[at:at + 3 * differences.width]
            for x in range(columns):
                part = row[3 * x * step:3 * (x + 1) * step]
                if any(part):
                    band[x] += sum(map(squares.__getitem__, part))
        sums.append(band)

    def error(place):
        x, y = place
        return sum(sum(band[x:x + 2]) for band in sums[y:y + 2])

    places = [(x, y) for y in range(max(1, len(sums) - 1)) for x in range(max(1, columns - 1))]
    x, y = max(places, key=error)
    return x * step, y * step

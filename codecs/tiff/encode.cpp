// encode.cpp - rows of samples packed into strips.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/storedrows.h"
#include "codecs/picture/tiffmetadata.h"
#include "codecs/picture/tiffwrite.h"
#include "codecs/tiff/tiff.h"
#include "zmxj.h"

#include <algorithm>
#include <climits>

namespace codecs::tiff {
namespace {

// Written at once; a strip of more is written piece by piece, so that memory stays flat.
constexpr std::size_t kMostHeld = std::size_t(1) << 18;

// Makes the bytes of a row, and packs them.
class RowPacker {
public:
    RowPacker(const Shape& shape, int depth, bool splits)
        : samples(shape.rowSamples()), bits(depth), split(splits), rowBytes((samples * std::size_t(bits) + 7) / 8),
          room(rowBytes) {}

    std::size_t bytes() const { return rowBytes; }

    void pack(const std::uint8_t* row, Samples& strip) {
        if (bits == 8) return packBytes(row, rowBytes, strip);
        if (split) {
            std::uint8_t* const planes[2] = {room.data(), room.data() + samples};
            zmxiSplitRow_TIFF_16u8u_C1(reinterpret_cast<const Zmx16u*>(row), planes, int(samples));
            packBytes(planes[0], samples, strip);
            return packBytes(planes[1], samples, strip);
        }
        if (bits == 1)
            bytesToBits(row, room.data(), samples, 0);
        else
            wordsOfLittleEndian(row, room.data(), samples);
        packBytes(room.data(), rowBytes, strip);
    }

private:
    // A literal packet costs a byte more than it holds. Two of them stand apart by more than a pair (a pair alone is
    // absorbed), so that one byte in five at the most is added: rows like aabbc.
    static void packBytes(const std::uint8_t* bytes, std::size_t n, Samples& strip) {
        const std::size_t before = strip.size();
        strip.resize(before + n + n / 5 + 2);
        int pos = 0;
        if (zmxiPackBitsRow_TIFF_8u_C1(bytes, int(n), strip.data() + before, &pos, int(strip.size() - before)) !=
            zmxStsNoErr)
            throw std::logic_error("a packed row is longer than the longest");
        strip.resize(before + std::size_t(pos));
    }

    std::size_t samples;
    int bits;
    bool split;
    std::size_t rowBytes;
    Samples room;
};

void writeStrip(const TiffFile& file, std::uint32_t strip, Samples& bytes) {
    const auto size = tmsize_t(bytes.size());
    if (TIFFWriteRawStrip(file.get(), strip, bytes.data(), size) != size)
        file.fail("strip " + std::to_string(strip) + ": it cannot be written");
    bytes.clear();
}

int bitsFor(const Shape& shape) { return shape.wide() ? 16 : shape.maxval == 1 && shape.channels == 1 ? 1 : 8; }

} // namespace

std::vector<std::string> encode(RowSource& source, ByteSink& bytes, const EncodeOptions& options) {
    const int bits = bitsFor(source.shape());
    const Rows rows = withDepth(borrowed(source), (1 << bits) - 1);
    const Shape& shape = rows->shape();
    if (shape.colour == Colour::other) throw Error("TIFF: a file is written of grey, RGB or CMYK pictures");
    if (options.split16 && bits != 16) throw Error("TIFF: split rows are for samples of 16 bits");
    if (shape.rowBytes() > INT_MAX / 2) throw Error("TIFF: the rows are too long");
    RowPacker packer(shape, bits, options.split16);
    const int advised = std::max(1, int(8192 / packer.bytes()));
    const int rowsPerStrip = std::min(shape.height, options.rowsPerStrip > 0 ? options.rowsPerStrip : advised);

    TiffFile file(bytes, std::uint64_t(packer.bytes()) * unsigned(shape.height) > UINT64_C(1) << 31);
    writePictureTags(file, shape, bits);
    writeMetadata(file, rows->metadata());
    file.set(TIFFTAG_ROWSPERSTRIP, unsigned(rowsPerStrip));
    file.set(TIFFTAG_COMPRESSION, unsigned(options.split16 ? kSplitPackBits : kPackBits));
    Samples strip;
    for (int y = 0; y < shape.height;) {
        const Band band = rows->next(bandRows(shape));
        for (int r = 0; r < band.rows; ++r) {
            packer.pack(band.row(r), strip);
            ++y;
            if (y % rowsPerStrip == 0 || y == shape.height || strip.size() > kMostHeld)
                writeStrip(file, unsigned(y - 1) / unsigned(rowsPerStrip), strip);
        }
    }
    file.finish();
    return depthChange(source.shape().maxval, shape.maxval, "a TIFF file");
}

} // namespace codecs::tiff

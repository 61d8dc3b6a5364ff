// losslessencode.cpp - pixels to a lossless file of one scan. Its tables are made for the picture, which is gone through
// twice and held for that.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/metadata.h"
#include "codecs/jpeg/segmentwriter.h"

#include <bit>
#include <cstdlib>

namespace codecs::jpeg {

namespace {

// Counts, then writes; both passes make the differences anew, which is cheaper than to keep them.
class LosslessEncoding {
public:
    LosslessEncoding(const Picture& p, ByteSink& file, const LosslessRows& r, int restart)
        : picture(p), how(r), width(p.shape().width), channels(p.shape().channels), rowsInInterval(restart / width),
          rows(std::size_t(channels)), tables(std::size_t(channels)), out(file) {
        for (Lines& r1 : rows) {
            r1.current.resize(std::size_t(width));
            r1.above = r1.differences = r1.current;
        }
    }

    Warnings run() {
        count();
        Frame frame;
        frame.sof = SOF3;
        frame.precision = how.precision;
        frame.width = width;
        frame.height = picture.shape().height;
        Scan scan;
        // A table of Huffman codes for each component, as their differences are spread differently.
        for (int i = 0; i < channels; ++i) {
            frame.components.push_back({i + 1, 1, 1, 0});
            scan.components.push_back({i, i, 0});
        }
        // A lossless scan tells its predictor and its point transform where others have bands and bits (B.2.3).
        scan.first = how.predictor;
        scan.last = 0;
        scan.low = how.pointTransform;
        out.marker(SOI);
        // JFIF says YCbCr of three components.
        Warnings warnings;
        writeMetadata(out, picture.metadata, channels != 3 && picture.metadata.resolution, warnings);
        if (channels > 2) writeAdobe(out, 0); // no colour is converted
        writeFrame(out, frame);
        if (rowsInInterval) writeRestartInterval(out, rowsInInterval * width);
        for (int i = 0; i < channels; ++i) writeHuffmanTable(out, TableClass::dc, i, tables[std::size_t(i)]);
        writeScan(out, frame, scan);
        write();
        out.marker(EOI);
        out.flush();
        return warnings;
    }

private:
    struct Lines {
        std::vector<Zmx16s> current, above, differences;
    };

    // Whether a row is predicted as the first of the picture is: at the start of each interval (H.1.1).
    bool begins(int y) const { return y == 0 || (rowsInInterval && y % rowsInInterval == 0); }

    // The differences of a row of each component.
    void difference(int y) {
        for (int c = 0; c < channels; ++c) {
            Lines& r = rows[std::size_t(c)];
            r.current.swap(r.above);
            // Interleaved pixels, one component of them.
            const auto store = [&](auto from) {
                for (int x = 0; x < width; ++x)
                    r.current[std::size_t(x)] =
                        how.stored(from[std::size_t(c) + std::size_t(x) * std::size_t(channels)]);
            };
            picture.shape().wide() ? store(picture.words(y)) : store(picture.bytes(y));
            if (begins(y))
                zmxiDiffPredFirstRow_JPEG_16s_C1(r.current.data(), r.differences.data(), width, how.precision,
                                                 how.firstRowTransform());
            else
                zmxiDiffPredRow_JPEG_16s_C1(r.current.data(), r.above.data(), r.differences.data(), width,
                                            how.predictor);
        }
    }

    // How often each category, which is the length of a magnitude (H.1.2.2), occurs in each component. The library counts
    // one difference a call.
    void count() {
        std::vector<SymbolCounts> counts(rows.size());
        for (int y = 0; y < picture.shape().height; ++y) {
            difference(y);
            for (std::size_t c = 0; c < rows.size(); ++c)
                for (const Zmx16s d : rows[c].differences)
                    ++counts[c][std::size_t(std::bit_width(unsigned(std::abs(int(d)))))];
        }
        for (std::size_t c = 0; c < rows.size(); ++c) tables[c] = optimalTable(counts[c]);
    }

    // The entropy-coded data.
    void write() {
        std::vector<EncodeSpec> owned;
        const ZmxiEncodeHuffmanSpec* specs[kMaxComponents] = {};
        const Zmx16s* planes[kMaxComponents] = {};
        for (std::size_t c = 0; c < rows.size(); ++c) {
            owned.push_back(encodeSpecOf(tables[c]));
            specs[c] = owned.back().get();
            planes[c] = rows[c].differences.data();
        }
        const EncodeState state = newEncodeState();
        const std::size_t room = kWorstDifference * std::size_t(width) * rows.size() + 2;
        // With `flush` the library takes no rows but ends the interval: the last byte is filled with ones (F.1.2.3).
        const auto code = [&](bool flush) {
            Zmx8u* to = out.reserve(room);
            int at = 0;
            if (zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(planes, width, channels, to, int(room), &at, specs, state.get(),
                                                     flush) != zmxStsNoErr)
                throw Error("a row cannot be coded");
            out.advance(std::size_t(at));
        };
        int restarts = 0;
        for (int y = 0; y < picture.shape().height; ++y) {
            if (y > 0 && begins(y)) {
                code(true);
                // The markers count modulo 8 (E.1.4).
                out.marker(RST0 + (restarts++ & 7));
            }
            difference(y);
            code(false);
        }
        code(true);
    }

    const Picture& picture;
    const LosslessRows how;
    const int width, channels, rowsInInterval;
    std::vector<Lines> rows;
    std::vector<HuffmanTable> tables;
    Output out;
};

// A sample beyond the largest would have no code of its own.
bool fits(const Picture& picture) {
    const Shape& s = picture.shape();
    for (int y = 0; y < s.height; ++y) {
        unsigned bits = 0;
        if (s.wide())
            for (std::uint16_t v : picture.words(y)) bits |= v;
        else
            for (std::uint8_t v : picture.bytes(y)) bits |= v;
        if (bits > unsigned(s.maxval)) return false;
    }
    return true;
}

} // namespace

// All tests but that of the samples stand ahead of the first row: a large picture is not read in vain.
Warnings encodeLossless(RowSource& source, ByteSink& file, const EncodeOptions& options) {
    const Shape& shape = source.shape();
    const int precision = int(std::bit_width(unsigned(shape.maxval)));
    if (shape.channels < 1 || shape.channels > kMaxComponents)
        throw Error("a picture of " + std::to_string(shape.channels) + " channels; supported are 1 to 4");
    if (precision < 2 || precision > 16) throw Error("lossless samples have 2 to 16 bits");
    if (shape.maxval != (1 << precision) - 1)
        throw Error("samples up to " + std::to_string(shape.maxval) + "; those of " + std::to_string(precision) +
                    " bits go up to " + std::to_string((1 << precision) - 1));
    if (options.lossless < 1 || options.lossless > 7) throw Error("a predictor is 1 to 7");
    if (options.pointTransform < 0 || options.pointTransform >= precision)
        throw Error("a point transform is 0 to " + std::to_string(precision - 1) + " bits");
    if (options.restart % shape.width != 0)
        throw Error("a restart interval of a lossless file is a multiple of its width, " + std::to_string(shape.width));
    const Picture picture = readRows(source);
    if (!fits(picture)) throw Error("a sample of more than " + std::to_string(precision) + " bits");
    const LosslessRows how{precision, options.lossless, options.pointTransform};
    return LosslessEncoding(picture, file, how, options.restart).run();
}

} // namespace codecs::jpeg

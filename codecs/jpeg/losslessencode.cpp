// losslessencode.cpp - pixels to a lossless file of one scan.
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/writer.h"

namespace jpeg {

namespace {

template <class Sample> class LosslessEncoding {
public:
    LosslessEncoding(const Sample* p, int w, int h, int c, const LosslessRows& r, int restart)
        : pixels(p), width(w), height(h), channels(c), how(r), rowsInInterval(restart / w), rows(std::size_t(c)),
          tables(std::size_t(c)) {
        for (Rows& r1 : rows) r1.current.resize(std::size_t(w)), r1.above = r1.differences = r1.current;
    }

    std::vector<std::uint8_t> run() {
        count();
        Frame frame;
        frame.sof = SOF3;
        frame.precision = how.precision;
        frame.width = width;
        frame.height = height;
        Scan scan;
        for (int i = 0; i < channels; ++i) {
            frame.components.push_back({i + 1, 1, 1, 0});
            scan.components.push_back({i, i, 0});
        }
        scan.first = how.predictor;
        scan.last = 0;
        scan.low = how.pointTransform;
        out.marker(SOI);
        if (channels > 2) writeAdobe(out, 0); // no colour is converted
        writeFrame(out, frame);
        if (rowsInInterval) writeRestartInterval(out, rowsInInterval * width);
        for (int i = 0; i < channels; ++i) writeHuffmanTable(out, 0, i, tables[std::size_t(i)]);
        writeScan(out, frame, scan);
        write();
        out.marker(EOI);
        return out.take();
    }

private:
    struct Rows {
        std::vector<Zmx16s> current, above, differences;
    };

    bool begins(int y) const { return y == 0 || (rowsInInterval && y % rowsInInterval == 0); }

    // The differences of a row of each component.
    void difference(int y) {
        for (int c = 0; c < channels; ++c) {
            Rows& r = rows[std::size_t(c)];
            r.current.swap(r.above);
            const Sample* from = pixels + std::size_t(y) * std::size_t(width * channels) + c;
            for (int x = 0; x < width; ++x) r.current[std::size_t(x)] = how.stored(from[x * std::ptrdiff_t(channels)]);
            if (begins(y))
                zmxiDiffPredFirstRow_JPEG_16s_C1(r.current.data(), r.differences.data(), width, how.precision,
                                                 how.firstRowTransform());
            else
                zmxiDiffPredRow_JPEG_16s_C1(r.current.data(), r.above.data(), r.differences.data(), width,
                                            how.predictor);
        }
    }

    void count() {
        std::vector<SymbolCounts> counts(rows.size());
        for (int y = 0; y < height; ++y) {
            difference(y);
            for (std::size_t c = 0; c < rows.size(); ++c)
                for (const Zmx16s& d : rows[c].differences)
                    zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(&d, counts[c].data());
        }
        for (std::size_t c = 0; c < rows.size(); ++c) tables[c] = optimalTable(counts[c]);
    }

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
        // A sample at its worst: a code of 16 bits and 15 more, all bytes 0xFF with their stuffing.
        const std::size_t room = 2 * 4 * std::size_t(width) * rows.size() + 2;
        const auto code = [&](int flush) {
            Zmx8u* to = out.reserve(room);
            int at = 0;
            if (zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(planes, width, channels, to, int(room), &at, specs, state.get(),
                                                     flush) != zmxStsNoErr)
                throw Error("a row cannot be coded");
            out.advance(std::size_t(at));
        };
        int restarts = 0;
        for (int y = 0; y < height; ++y) {
            if (y > 0 && begins(y)) {
                code(1);
                out.marker(RST0 + (restarts++ & 7));
            }
            difference(y);
            code(0);
        }
        code(1);
    }

    const Sample* pixels;
    int width, height, channels;
    LosslessRows how;
    int rowsInInterval;
    std::vector<Rows> rows;
    std::vector<HuffmanTable> tables;
    Output out;
};

} // namespace

template <class Sample>
std::vector<std::uint8_t> encodeLossless(const Sample* pixels, int width, int height, int channels, int precision,
                                         const EncodeOptions& options) {
    if (channels < 1 || channels > kMaxComponents)
        throw Error("a picture of " + std::to_string(channels) + " channels; supported are 1 to 4");
    if (precision < 2 || precision > 16) throw Error("lossless samples have 2 to 16 bits");
    if (options.lossless < 1 || options.lossless > 7) throw Error("a predictor is 1 to 7");
    if (options.pointTransform < 0 || options.pointTransform >= precision)
        throw Error("a point transform is 0 to " + std::to_string(precision - 1) + " bits");
    if (options.restart % width != 0)
        throw Error("a restart interval of a lossless file is a multiple of its width, " + std::to_string(width));
    if (!std::all_of(pixels, pixels + std::size_t(width) * std::size_t(height) * std::size_t(channels),
                     [precision](Sample s) { return s >> precision == 0; }))
        throw Error("a sample of more than " + std::to_string(precision) + " bits");
    const LosslessRows how{precision, options.lossless, options.pointTransform};
    return LosslessEncoding<Sample>(pixels, width, height, channels, how, options.restart).run();
}

template std::vector<std::uint8_t> encodeLossless(const std::uint8_t*, int, int, int, int, const EncodeOptions&);
template std::vector<std::uint8_t> encodeLossless(const std::uint16_t*, int, int, int, int, const EncodeOptions&);

} // namespace jpeg

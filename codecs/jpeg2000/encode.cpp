// encode.cpp - a picture to a file: tiles, then layers for what is asked, then the codestream and its boxes.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/codestreamwriter.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/jpeg2000/planar.h"
#include "codecs/jpeg2000/rate.h"
#include "codecs/jpeg2000/rowinput.h"
#include "codecs/jpeg2000/settings.h"
#include "codecs/jpeg2000/tileencoder.h"
#include "codecs/jpeg2000/tiles.h"
#include "codecs/picture/bytefile.h"
#include "codecs/picture/convert.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace codecs::jpeg2000 {

namespace {

// The squared difference of decoded samples to those of a source.
class Comparison final : public SampleSink {
    const SampleSource& source;
    std::atomic<std::uint64_t> total{0};

public:
    explicit Comparison(const SampleSource& original) : source(original) {}
    void open(std::int64_t, std::int64_t) override {}
    void close() override {}
    void put(std::size_t component, std::int64_t x, std::int64_t y, std::span<const Sample> samples) override {
        std::vector<Sample> original(samples.size());
        source.get(component, x, y, original);
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const std::int64_t d = std::int64_t(original[i]) - samples[i];
            sum += std::uint64_t(d * d);
        }
        total += sum;
    }
    double error() const { return double(total); }
};

// A picture on its way into a codestream. Without layers to be cut it goes through row of tiles by row of tiles;
// otherwise all coded blocks wait until it is known what they are worth.
class Encoder {
    SampleSource& source;
    const EncodeOptions& options;
    const int threads;
    const ImageSize& size;
    const bool inFiles; // what is tried goes into a temporary file, not into memory
    HeaderSet headers;
    const Rect region;              // of interest
    std::vector<EncodedTile> tiles; // all of them, or a row of them

    template <class Use> static void forEachBlock(EncodedTile& t, Use use) {
        for (std::size_t c = 0; c < t.blocks.size(); ++c)
            for (std::size_t b = 0; b < t.blocks[c].size(); ++b)
                use(c, t.layout.components[c].blocks[b], t.blocks[c][b]);
    }
    // As many guard bits as the largest coefficient asks for.
    void settleGuardBits(EncodedTile& tile) {
        forEachBlock(tile, [&](std::size_t c, const Block& block, CodedBlock& coded) {
            const int exponent = headers.quant[c].step(block.resolution, block.band).exponent, s = headers.roiShift[c];
            // A block that holds a part of a region has s planes more than its numbers.
            const int planes = coded.bitPlanes > s ? coded.bitPlanes - s : coded.bitPlanes;
            tile.guardBits = std::max(tile.guardBits, planes + 1 - exponent);
            need(s == 0 || exponent + tile.guardBits - 1 <= s, "coefficients too large for a region of interest");
        });
        need(tile.guardBits <= 7, "coefficients that do not fit their guard bits");
    }
    void settleZeroPlanes(EncodedTile& tile) {
        forEachBlock(tile, [&](std::size_t c, const Block& block, CodedBlock& coded) {
            const int exponent = headers.quant[c].step(block.resolution, block.band).exponent;
            coded.zeroPlanes = tile.guardBits + exponent - 1 + headers.roiShift[c] - coded.bitPlanes;
        });
    }

    // A row of tiles goes behind those that are there.
    void encodeRow(int row) {
        const int across = size.tilesAcross(), first = row * across;
        const std::size_t at = tiles.size();
        tiles.resize(at + std::size_t(across));
        if (across == 1)
            tiles[at] = TileEncoder(size, headers, region, source, threads).encode(first, true);
        else {
            const Rect area = tileRect(size, first);
            source.advance(area.y0, area.y1);
            const bool share = across >= threads; // a tile for a thread, or all threads for a tile
            std::vector<TileEncoder> encoders;
            for (int t = 0; t < (share ? threads : 1); ++t)
                encoders.emplace_back(size, headers, region, source, share ? 1 : threads);
            parallelFor(std::size_t(across), int(encoders.size()), [&](std::size_t i, int thread) {
                tiles[at + i] = encoders[std::size_t(thread)].encode(first + int(i), false);
            });
        }
        for (std::size_t i = at; i < tiles.size(); ++i) settleGuardBits(tiles[i]);
    }
    // The main header says what the tiles at hand ask for; those that come later say so themselves if they want more.
    void settleHeaders() {
        int guard = 2;
        for (const EncodedTile& t : tiles) guard = std::max(guard, t.guardBits);
        for (Quantization& q : headers.quant) q.guardBits = guard;
    }
    void settleTiles() {
        for (EncodedTile& t : tiles) {
            t.guardBits = std::max(t.guardBits, headers.quant[0].guardBits);
            settleZeroPlanes(t);
        }
    }

    // The largest difference of the first component, which PSNR is about.
    double peak() const { return (1 << size.components[0].depth) - 1; }
    double samplesOf(const SizComponent& c) const {
        return double(componentRect({size.x0, size.y0, size.x1, size.y1}, c).area());
    }
    double samples() const {
        double n = 0;
        for (const SizComponent& c : size.components) n += samplesOf(c);
        return n;
    }

    // Bytes of the file up to the end of each layer, as rates or ratios ask for.
    std::vector<double> layerBytes() const {
        constexpr double everything = std::numeric_limits<double>::infinity();
        const double pixels = double(size.x1 - size.x0) * double(size.y1 - size.y0);
        double bits = 0;
        for (const SizComponent& c : size.components) bits += c.depth * samplesOf(c);
        std::vector<double> bytes;
        for (const double rate : options.rates) bytes.push_back(rate * pixels / 8);
        for (const double ratio : options.ratios) bytes.push_back(ratio == 1 ? everything : bits / 8 / ratio);
        return bytes;
    }

    // `psnrs` are what to aim at for options.psnrs.
    void allocate(const std::vector<double>& psnrs) {
        RateTarget target;
        // A rate counts the whole codestream, of which packets are what can be cut.
        const auto overhead = double(headerBytes(size, headers, options));
        for (const double b : layerBytes()) target.bytes.push_back(b - overhead);
        // The squared error of all samples that a PSNR stands for.
        for (const double psnr : psnrs) target.errors.push_back(peak() * peak() * samples() * std::pow(10, -psnr / 10));
        allocateLayers(tiles, size, headers, target);
    }

    // PSNR of the picture as a decoder of so many layers has it.
    double measured(ByteView codestream, int layers) const {
        const Rect all{size.x0, size.y0, size.x1, size.y1};
        Codestream stream = readMainHeader(codestream);
        findTileParts(stream, all);
        const Scope scope{stream, all, 0, layers, std::vector<bool>(size.components.size(), true), 0};
        Comparison comparison(source);
        decodeTiles(scope, comparison, threads);
        const double error = comparison.error();
        return error == 0 ? 150 : 10 * std::log10(peak() * peak() * samples() / error);
    }

    // Errors of coefficients only come close to those of samples: decode, and aim by so much higher or lower.
    void allocateForQuality() {
        std::vector<double> aims = options.psnrs;
        allocate(aims);
        for (int round = 0; round < 2; ++round) {
            tryOut([&](ByteView tried) {
                // By how much a layer missed is how much higher the next round aims.
                for (std::size_t layer = 0; layer < aims.size(); ++layer)
                    aims[layer] += options.psnrs[layer] - measured(tried, int(layer) + 1);
            });
            allocate(aims);
        }
    }
    // The codestream as it would be now.
    template <class Use> void tryOut(Use use) const {
        if (!inFiles) {
            MemorySink tried;
            writeAll(tried);
            return use(tried.bytes);
        }
        const codecs::Descriptor file = codecs::openNameless();
        const auto tried = codecs::sinkOn(file.lent());
        writeAll(*tried);
        tried->finish();
        use(codecs::sourceOn(file.lent())->whole());
    }

    // All tiles that have been kept.
    void writeAll(ByteSink& sink) const {
        CodestreamWriter writer(size, headers, options, sink);
        // The main header holds the headers of all packets: it cannot be written ahead of them.
        if (options.packedHeaders == PackedHeaders::main) return writer.write(tiles);
        writer.begin();
        for (const EncodedTile& t : tiles) writer.write(t);
        writer.end();
    }

    // Row of tiles by row of tiles, without keeping them.
    void stream(ByteSink& sink) {
        CodestreamWriter writer(size, headers, options, sink);
        for (int row = 0; row < size.tilesDown(); ++row) {
            encodeRow(row);
            if (row == 0) {
                settleHeaders();
                writer.begin();
            }
            settleTiles();
            allocate({});
            for (const EncodedTile& t : tiles) writer.write(t);
            tiles.clear();
        }
        writer.end();
    }

public:
    Encoder(SampleSource& from, const ImageSize& imageSize, const EncodeOptions& o, bool files)
        : source(from), options(o), threads(threadCount(o.threads)), size(imageSize), inFiles(files),
          headers(headersOf(size, o)), region(o.region ? windowOn(size, *o.region) : Rect{}) {}

    void run(ByteSink& sink) {
        // Only where nothing is cut and nothing waits for the end.
        const bool cut = !options.rates.empty() || !options.psnrs.empty() || !options.ratios.empty();
        if (!cut && options.packedHeaders != PackedHeaders::main) return stream(sink);
        for (int row = 0; row < size.tilesDown(); ++row) encodeRow(row);
        settleHeaders();
        settleTiles();
        if (options.psnrs.empty())
            allocate({});
        else
            allocateForQuality();
        writeAll(sink);
    }
};

void encodeTo(ByteSink& sink, SampleSource& source, const ImageSize& size, const FileHeader& header,
              const EncodeOptions& options, bool inFiles) {
    if (!sink.seekable()) { // lengths are filled in behind what they are the lengths of
        SpooledSink spool(sink);
        return encodeTo(spool, source, size, header, options, inFiles);
    }
    if (options.jp2) sink.write(writeBoxes(size, header));
    const std::uint64_t begin = sink.position();
    Encoder(source, size, options, inFiles).run(sink);
    if (options.jp2) patchCodestreamBox(sink, begin);
    sink.finish();
}

// A JP2 file has a place for everything, but for shapes of pixels of no size (I.5.3.7).
std::vector<std::string> lossIn(const Metadata& metadata, bool jp2) {
    if (!jp2) return lossOf(metadata, "a codestream without boxes");
    Metadata lost;
    if (metadata.resolution && metadata.resolution->unit == codecs::Resolution::Unit::none)
        lost.resolution = metadata.resolution;
    return lossOf(lost, "a JP2 file");
}

// What `write` makes.
template <class Write> Bytes inMemory(Write write) {
    MemorySink sink;
    write(sink);
    return std::move(sink.bytes);
}

// What a planar picture says of a component must be true.
void testComponent(const Rect& area, const Component& c) {
    const Rect r = componentRect(area, {c.depth, c.isSigned, c.dx, c.dy});
    need(!r.empty() && c.width == r.width() && c.height == r.height() && c.samples.size() == r.area(),
         "a component that does not fit the image area");
    const auto [least, most] = std::minmax_element(c.samples.begin(), c.samples.end());
    need(*least >= c.smallest() && *most <= c.largest(), "samples that do not fit their depth");
}

} // namespace

void encode(const PlanarPicture& picture, ByteSink& sink, const EncodeOptions& options) {
    const Rect area{picture.x0, picture.y0, picture.x1, picture.y1};
    std::vector<SizComponent> components;
    for (const Component& c : picture.components) components.push_back({c.depth, c.isSigned, c.dx, c.dy});
    const ImageSize size = sizeOf(area, components, options);
    for (const Component& c : picture.components) testComponent(area, c);
    PlanarSource source(picture);
    encodeTo(sink, source, size, {picture.colour, picture.alpha, picture.metadata}, options, false);
}

Bytes encode(const PlanarPicture& picture, const EncodeOptions& options) {
    return inMemory([&](ByteSink& sink) { encode(picture, sink, options); });
}

namespace {

// A picture that passes by, or one that is in memory as it is and can be looked at as a whole.
std::vector<std::string> encodeRows(RowSource& picture, bool passesBy, ByteSink& sink, const EncodeOptions& options) {
    // A component has 2^n levels (A.5.1).
    const int maxval = (1 << std::bit_width(unsigned(picture.shape().maxval))) - 1;
    if (maxval != picture.shape().maxval) {
        std::vector<std::string> told = depthChange(picture.shape().maxval, maxval, "a JPEG2000 file");
        const Rows scaled = withDepth(borrowed(picture), maxval);
        for (std::string& more : encodeRows(*scaled, passesBy, sink, options)) told.push_back(std::move(more));
        return told;
    }
    const Shape& shape = picture.shape();
    const Rect area{options.x0, options.y0, std::int64_t(options.x0) + shape.width,
                    std::int64_t(options.y0) + shape.height};
    const ImageSize size = sizeOf(area, componentsOf(shape, options), options);
    const ColourSpace colour = shape.colour == Colour::grey   ? ColourSpace::grey
                               : shape.colour == Colour::rgb  ? ColourSpace::sRgb
                               : shape.colour == Colour::cmyk ? ColourSpace::cmyk
                                                              : ColourSpace::unknown;
    const FileHeader header{colour, shape.alpha ? shape.channels - 1 : -1, picture.metadata()};
    RowInput source(picture, size);
    // What is decoded on the way to a PSNR is compared with the picture.
    if (!options.psnrs.empty()) passesBy ? source.keepRows() : source.advance(size.y0, size.y1);
    encodeTo(sink, source, size, header, options, passesBy);
    std::vector<std::string> told = lossIn(picture.metadata(), options.jp2);
    // Four components that nothing is said of pass for RGB with opacity.
    if (!options.jp2 && colour == ColourSpace::cmyk)
        told.emplace_back("a codestream without boxes does not say that its components are inks");
    return told;
}

} // namespace

std::vector<std::string> encode(RowSource& picture, ByteSink& sink, const EncodeOptions& options) {
    return encodeRows(picture, true, sink, options);
}

Bytes encode(const Picture& picture, const EncodeOptions& options) {
    PictureSource source(picture);
    return inMemory([&](ByteSink& sink) { encodeRows(source, false, sink, options); });
}

} // namespace codecs::jpeg2000

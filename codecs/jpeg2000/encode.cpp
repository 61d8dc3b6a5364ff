// encode.cpp - a picture to a codestream: components, wavelet, code blocks, layers, then headers and packets.
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/components.h"
#include "codecs/jpeg2000/markers.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/jpeg2000/rate.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>

namespace jpeg2000 {

namespace {

void need(bool good, const char* what) {
    if (!good) throw Error(what);
}

int logOf(int v, int least, int most, const char* what) {
    need(v >= 1 << least && v <= 1 << most && std::has_single_bit(unsigned(v)), what);
    return std::bit_width(unsigned(v)) - 1;
}

ImageSize sizeOf(const Picture& p, const EncodeOptions& o) {
    ImageSize s;
    s.x0 = p.x0;
    s.y0 = p.y0;
    s.x1 = p.x1;
    s.y1 = p.y1;
    s.tileX = o.tileX;
    s.tileY = o.tileY;
    s.tileWidth = o.tileWidth > 0 ? o.tileWidth : p.x1 - o.tileX;
    s.tileHeight = o.tileHeight > 0 ? o.tileHeight : p.y1 - o.tileY;
    for (const Component& c : p.components) s.components.push_back({c.depth, c.isSigned, c.dx, c.dy});
    // What the decoder refuses, the encoder does not write.
    std::vector<std::uint8_t> bytes;
    ByteWriter out(bytes);
    need(!p.components.empty() && p.components.size() <= std::size_t(maxComponents),
         "no components, or more than 16384");
    writeSiz(out, s);
    readSiz({bytes.data() + 4, bytes.size() - 4}, ~std::size_t(0));
    for (const Component& c : p.components) {
        const Rect r = componentRect({p.x0, p.y0, p.x1, p.y1}, {c.depth, c.isSigned, c.dx, c.dy});
        need(!r.empty() && c.width == r.width() && c.height == r.height() && c.samples.size() == r.area(),
             "a component that does not fit the image area");
        const auto [least, most] = std::minmax_element(c.samples.begin(), c.samples.end());
        need(*least >= c.smallest() && *most <= c.largest(), "samples that do not fit their depth");
    }
    return s;
}

bool canTransform(const Picture& p) {
    const auto same = [](const Component& a, const Component& b) {
        return a.dx == b.dx && a.dy == b.dy && a.depth == b.depth && a.isSigned == b.isSigned;
    };
    return p.components.size() >= 3 && same(p.components[0], p.components[1]) && same(p.components[0], p.components[2]);
}

CodingStyle styleOf(const EncodeOptions& o) {
    CodingStyle s;
    need(o.levels >= 0 && o.levels <= maxLevels, "wavelet levels are 0 to 32");
    need(o.style < 64, "an unknown code-block style");
    s.levels = o.levels;
    s.blockWidthLog = logOf(o.blockWidth, 2, 10, "the sides of a code block are powers of 2 from 4 to 1024");
    s.blockHeightLog = logOf(o.blockHeight, 2, 10, "the sides of a code block are powers of 2 from 4 to 1024");
    need(s.blockWidthLog + s.blockHeightLog <= 12, "a code block has at most 4096 samples");
    s.style = o.style;
    s.reversible = o.reversible;
    for (std::size_t i = 0; !o.precincts.empty() && i <= std::size_t(o.levels); ++i) {
        const auto [w, h] = o.precincts[std::min(i, o.precincts.size() - 1)];
        constexpr const char* what = "the sides of a precinct are powers of 2 from 2 to 32768";
        s.precincts[std::size_t(o.levels) - i] = std::uint8_t(logOf(w, 1, 15, what) | logOf(h, 1, 15, what) << 4);
    }
    return s;
}

double normOf(bool reversible, int levels, int resolution, Orientation o) {
    return waveletNorm(reversible, resolution == 0 ? levels : levels - resolution + 1, o);
}

// The step for what is asked: 1 serves up to 46 dB, and each further 6 dB want half of it.
double baseStepOf(const EncodeOptions& o) {
    if (o.baseStep > 0) return o.baseStep;
    const double most = o.psnrs.empty() ? 0 : *std::max_element(o.psnrs.begin(), o.psnrs.end());
    return std::clamp(std::exp2((46 - most) / 6), 1.0 / 64, 1.0);
}

// Step sizes that give each band's errors the same weight in the picture.
Quantization quantizationOf(const EncodeOptions& o, int depth) {
    Quantization q;
    q.kind = o.reversible ? Quantization::none : Quantization::expounded;
    for (int r = 0; r <= o.levels; ++r)
        for (const Orientation band : r == 0 ? std::vector{LL} : std::vector{HL, LH, HH}) {
            const int range = depth + (band == LL ? 0 : band == HH ? 2 : 1); // R of E-4
            if (o.reversible) {
                q.steps.push_back({range, 0});
                continue;
            }
            const double step = std::ldexp(baseStepOf(o), depth - 8) / normOf(false, o.levels, r, band);
            const int power = int(std::floor(std::log2(step)));
            const int mantissa = std::min(int((std::ldexp(step, -power) - 1) * 2048 + 0.5), 2047);
            q.steps.push_back({std::clamp(range - power, 0, 31), mantissa});
        }
    return q;
}

// Norm of what one unit of a transformed component does to the three colours.
double colourNorm(bool reversible, std::size_t component) {
    static constexpr double rct[] = {1.7320508, 0.8291562, 0.8291562}, ict[] = {1.7320508, 1.8051, 1.5734};
    return reversible ? rct[component] : ict[component];
}

class Encoder {
    const Picture& picture;
    const EncodeOptions& options;
    const int threads;
    const ImageSize size;
    HeaderSet headers;
    std::vector<EncodedTile> tiles;
    std::vector<std::unique_ptr<BlockEncoder>> blockEncoders;

    std::vector<Plane> planesOf(const Tile& tile) {
        std::vector<Plane> planes;
        for (std::size_t c = 0; c < tile.components.size(); ++c) {
            const Rect& r = tile.components[c].rect;
            planes.push_back(r.empty() ? Plane() : Plane(r.width(), r.height()));
        }
        parallelFor(planes.size(), threads, [&](std::size_t c, int) {
            const Component& from = picture.components[c];
            const Rect whole = componentRect({size.x0, size.y0, size.x1, size.y1}, size.components[c]);
            const Rect& r = tile.components[c].rect;
            if (!r.empty())
                toPlane(from, int(r.x0 - whole.x0), int(r.y0 - whole.y0), planes[c],
                        planeFraction(options.reversible, from.depth));
        });
        if (headers.tile.colourTransform) forwardColour(planes, options.reversible, picture.components[0].depth);
        const auto transform = [&](std::size_t c, int team) {
            for (int r = options.levels; r > 0; --r)
                forwardWavelet(planes[c], tile.components[c].resolutions[std::size_t(r)].rect,
                               filterOf(options.reversible, picture.components[c].depth), team);
        };
        if (options.reversible)
            parallelFor(planes.size(), threads, [&](std::size_t c, int) { transform(c, 1); });
        else
            for (std::size_t c = 0; c < planes.size(); ++c) transform(c, threads);
        return planes;
    }

    void encodeTile(int index) {
        EncodedTile out{layOutTile(size, headers, index, ~std::size_t(0) >> 1), {}};
        std::vector<Plane> planes = planesOf(out.layout);
        std::vector<std::pair<std::size_t, std::size_t>> jobs; // component, block
        for (std::size_t c = 0; c < planes.size(); ++c) {
            out.blocks.emplace_back(out.layout.components[c].blocks.size());
            for (std::size_t b = 0; b < out.blocks[c].size(); ++b) jobs.push_back({c, b});
        }
        parallelFor(jobs.size(), threads, [&](std::size_t i, int thread) {
            const auto [c, b] = jobs[i];
            const TileComponent& tc = out.layout.components[c];
            const Block& block = tc.blocks[b];
            const Orientation o = tc.resolutions[block.resolution].bands[block.band].orientation;
            const int depth = picture.components[c].depth;
            const BandCoding coding =
                bandCoding(headers.coding[c], headers.quant[c], 0, depth, block.resolution, block.band, o);
            auto& encoder = blockEncoders[std::size_t(thread)];
            if (!encoder) encoder = std::make_unique<BlockEncoder>(options.blockWidth, options.blockHeight);
            CodedBlock& coded = out.blocks[c][b] = encoder->encode(planes[c], block, o, options.style, coding);
            const double step =
                options.reversible ? 1 : stepOf(headers.quant[c].step(block.resolution, block.band), depth, o);
            const double colour = headers.tile.colourTransform && c < 3 ? colourNorm(options.reversible, c) : 1;
            const double error = step * colour * normOf(options.reversible, options.levels, block.resolution, o);
            coded.weight = error * error;
        });
        tiles.push_back(std::move(out));
    }

    template <class Use> void forEachBlock(Use use) {
        for (EncodedTile& t : tiles)
            for (std::size_t c = 0; c < t.blocks.size(); ++c)
                for (std::size_t b = 0; b < t.blocks[c].size(); ++b)
                    use(c, t.layout.components[c].blocks[b], t.blocks[c][b]);
    }

    // As many guard bits as the largest coefficient asks for.
    void settleBitPlanes() {
        int guard = 2;
        forEachBlock([&](std::size_t c, const Block& block, CodedBlock& coded) {
            guard = std::max(guard, coded.bitPlanes + 1 - headers.quant[c].step(block.resolution, block.band).exponent);
        });
        need(guard <= 7, "coefficients that do not fit their guard bits");
        for (Quantization& q : headers.quant) q.guardBits = guard;
        forEachBlock([&](std::size_t c, const Block& block, CodedBlock& coded) {
            coded.zeroPlanes =
                guard + headers.quant[c].step(block.resolution, block.band).exponent - 1 - coded.bitPlanes;
        });
    }

    std::vector<std::uint8_t> mainHeader() const {
        std::vector<std::uint8_t> bytes;
        ByteWriter out(bytes);
        out.u16(SOC);
        writeSiz(out, size);
        writeCod(out, headers.tile, headers.coding[0]);
        writeQcd(out, headers.quant[0]);
        for (std::size_t c = 1; c < headers.quant.size(); ++c)
            if (picture.components[c].depth != picture.components[0].depth)
                writeQcc(out, headers.quant[c], c, headers.quant.size());
        if (!headers.changes.empty()) writePoc(out, headers.changes, headers.coding.size());
        return bytes;
    }

    // `psnrs` are what to aim at for options.psnrs.
    void allocate(const std::vector<double>& psnrs) {
        RateTarget target;
        const double pixels = double(size.x1 - size.x0) * double(size.y1 - size.y0);
        const double overhead = double(mainHeader().size()) + 14.0 * double(tiles.size()) + 2;
        for (const double rate : options.rates) target.bytes.push_back(rate * pixels / 8 - overhead);
        double samples = 0;
        for (const Component& c : picture.components) samples += double(c.samples.size());
        const double peak = (1 << picture.components[0].depth) - 1;
        for (const double psnr : psnrs) target.errors.push_back(peak * peak * samples * std::pow(10, -psnr / 10));
        allocateLayers(tiles, size, headers, target);
    }

    // PSNR of the picture as a decoder of so many layers has it.
    double measured(const std::vector<std::uint8_t>& bytes, int layers) const {
        const Picture back = decode(bytes.data(), bytes.size(), {0, layers, ~std::size_t(0), threads});
        double error = 0, samples = 0;
        for (std::size_t c = 0; c < back.components.size(); ++c) {
            const auto &a = picture.components[c].samples, &b = back.components[c].samples;
            for (std::size_t i = 0; i < a.size(); ++i) error += (double(a[i]) - b[i]) * (double(a[i]) - b[i]);
            samples += double(a.size());
        }
        const double peak = (1 << picture.components[0].depth) - 1;
        return error == 0 ? 150 : 10 * std::log10(peak * peak * samples / error);
    }

    // The packets of a tile, and the packet headers where they are kept apart, part by part.
    struct TilePart {
        std::vector<std::uint8_t> body, headers;
    };
    std::vector<TilePart> partsOf(const EncodedTile& tile) const {
        std::vector<TilePart> parts(1);
        PacketWriter writer(tile);
        int resolution = -1, packets = 0;
        forEachPacket(size, tile.layout, headers, [&](const PacketId& id) {
            const bool split = options.tilePartsByResolution && resolution >= 0 && id.resolution != resolution;
            if (split && parts.size() < 254) parts.emplace_back();
            resolution = id.resolution;
            TilePart& part = parts.back();
            std::vector<std::uint8_t>& header = options.packedHeaders == PackedHeaders::none ? part.body : part.headers;
            if (headers.tile.sop) writeSop(part.body, packets++);
            writer.writeHeader(id, header);
            if (headers.tile.eph) ByteWriter(header).u16(EPH);
            writer.writeBody(id, part.body);
            return true;
        });
        return parts;
    }

    static void writeSop(std::vector<std::uint8_t>& bytes, int packet) {
        ByteWriter out(bytes);
        out.u16(SOP);
        out.u16(4);
        out.u16(unsigned(packet & 0xFFFF));
    }

    // Packet headers as segments, PPM or PPT,
    // counted on from `number`.
    static void writePacked(ByteWriter& out, int marker, const std::vector<std::uint8_t>& packed, int& number) {
        constexpr std::size_t most = 65000;
        for (std::size_t at = 0; at < packed.size(); at += most, ++number) {
            need(number < 256, "too many packet headers to be kept apart");
            const std::size_t n = std::min(most, packed.size() - at);
            out.u16(unsigned(marker));
            out.u16(unsigned(n + 3));
            out.u8(unsigned(number));
            for (std::size_t i = 0; i < n; ++i) out.u8(packed[at + i]);
        }
    }

    void writeTilePart(ByteWriter& out, int tile, std::size_t part, std::size_t parts, const TilePart& data,
                       int& packedNumber) const {
        const std::size_t begin = out.size();
        out.u16(SOT);
        out.u16(10);
        out.u16(unsigned(tile));
        out.u32(0); // its length, below
        out.u8(unsigned(part));
        out.u8(unsigned(parts));
        if (options.packedHeaders == PackedHeaders::tile) writePacked(out, PPT, data.headers, packedNumber);
        out.u16(SOD);
        out.bytes(data.body);
        out.patch32(begin + 6, std::uint32_t(out.size() - begin));
    }

    std::vector<std::uint8_t> write() const {
        std::vector<std::uint8_t> bytes = mainHeader(), packed;
        ByteWriter out(bytes), outPacked(packed);
        std::vector<std::vector<TilePart>> parts;
        for (const EncodedTile& tile : tiles) parts.push_back(partsOf(tile));
        if (options.packedHeaders == PackedHeaders::main) {
            for (const auto& tile : parts)
                for (const TilePart& part : tile) {
                    outPacked.u32(std::uint32_t(part.headers.size()));
                    outPacked.bytes(part.headers);
                }
            int number = 0;
            writePacked(out, PPM, packed, number);
        }
        for (std::size_t t = 0; t < parts.size(); ++t) {
            int number = 0; // of the PPT segments of this tile
            for (std::size_t p = 0; p < parts[t].size(); ++p)
                writeTilePart(out, int(t), p, parts[t].size(), parts[t][p], number);
        }
        out.u16(EOC);
        return bytes;
    }

public:
    Encoder(const Picture& p, const EncodeOptions& o)
        : picture(p), options(o), threads(threadCount(o.threads)), size(sizeOf(p, o)),
          blockEncoders(std::size_t(threads)) {
        const std::size_t layers = std::max({o.rates.size(), o.psnrs.size(), std::size_t(1)});
        need(layers <= std::size_t(maxLayers), "more than 65535 layers");
        need(o.baseStep == 0 || (o.baseStep >= 1.0 / 64 && o.baseStep <= 64), "a step size that is not 1/64 to 64");
        headers.tile = {o.sop, o.eph, o.progression, int(layers), o.colourTransform && canTransform(p)};
        headers.coding.assign(p.components.size(), styleOf(o));
        for (const Component& c : p.components) headers.quant.push_back(quantizationOf(o, c.depth));
        headers.roiShift.resize(p.components.size());
        headers.changes = o.changes;
        need(o.changes.size() <= 1000, "too many progression changes");
    }

    std::vector<std::uint8_t> run() {
        for (int t = 0; t < size.tiles(); ++t) encodeTile(t);
        settleBitPlanes();
        std::vector<double> aims = options.psnrs;
        allocate(aims);
        std::vector<std::uint8_t> bytes = write();
        // Errors of coefficients only come close to those of samples: decode, and aim by so much higher or lower.
        for (int round = 0; round < 2 && !aims.empty(); ++round) {
            for (std::size_t layer = 0; layer < aims.size(); ++layer)
                aims[layer] += options.psnrs[layer] - measured(bytes, int(layer) + 1);
            allocate(aims);
            bytes = write();
        }
        return bytes;
    }
};

} // namespace

std::vector<std::uint8_t> encode(const Picture& picture, const EncodeOptions& options) {
    std::vector<std::uint8_t> stream = Encoder(picture, options).run();
    if (!options.jp2) return stream;
    std::vector<std::uint8_t> file = writeBoxes(picture, stream.size());
    file.insert(file.end(), stream.begin(), stream.end());
    return file;
}

} // namespace jpeg2000

// encode.cpp - a picture to a file: tiles, then layers for what is asked, then the codestream and its boxes.
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/codestreamwriter.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/jpeg2000/rate.h"
#include "codecs/jpeg2000/settings.h"
#include "codecs/jpeg2000/tileencoder.h"

#include <algorithm>
#include <cmath>

namespace codecs::jpeg2000 {

namespace {

class Encoder {
    const PlanarPicture& picture;
    const EncodeOptions& options;
    const int threads;
    const ImageSize size;
    HeaderSet headers;
    const CodestreamWriter writer;
    std::vector<EncodedTile> tiles;

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

    double peak() const { return (1 << picture.components[0].depth) - 1; }

    // `psnrs` are what to aim at for options.psnrs.
    void allocate(const std::vector<double>& psnrs) {
        RateTarget target;
        const double pixels = double(size.x1 - size.x0) * double(size.y1 - size.y0);
        const double overhead = double(writer.mainHeader().size()) + 14.0 * double(tiles.size()) + 2;
        for (const double rate : options.rates) target.bytes.push_back(rate * pixels / 8 - overhead);
        double samples = 0;
        for (const Component& c : picture.components) samples += double(c.samples.size());
        for (const double psnr : psnrs) target.errors.push_back(peak() * peak() * samples * std::pow(10, -psnr / 10));
        allocateLayers(tiles, size, headers, target);
    }

    // PSNR of the picture as a decoder of so many layers has it.
    double measured(ByteView bytes, int layers) const {
        const PlanarPicture back = decode(bytes, {0, layers, ~std::size_t(0), threads});
        double error = 0, samples = 0;
        for (std::size_t c = 0; c < back.components.size(); ++c) {
            const auto &a = picture.components[c].samples, &b = back.components[c].samples;
            for (std::size_t i = 0; i < a.size(); ++i) error += (double(a[i]) - b[i]) * (double(a[i]) - b[i]);
            samples += double(a.size());
        }
        return error == 0 ? 150 : 10 * std::log10(peak() * peak() * samples / error);
    }

public:
    Encoder(const PlanarPicture& p, const EncodeOptions& o)
        : picture(p), options(o), threads(threadCount(o.threads)), size(sizeOf(p, o)), headers(headersOf(size, o)),
          writer(size, headers, options) {}

    Bytes run() {
        TileEncoder encoder(picture, size, headers, threads);
        for (int t = 0; t < size.tiles(); ++t) tiles.push_back(encoder.encode(t));
        settleBitPlanes();
        std::vector<double> aims = options.psnrs;
        allocate(aims);
        Bytes bytes = writer.write(tiles);
        // Errors of coefficients only come close to those of samples: decode, and aim by so much higher or lower.
        for (int round = 0; round < 2 && !aims.empty(); ++round) {
            for (std::size_t layer = 0; layer < aims.size(); ++layer)
                aims[layer] += options.psnrs[layer] - measured(bytes, int(layer) + 1);
            allocate(aims);
            bytes = writer.write(tiles);
        }
        return bytes;
    }
};

} // namespace

Bytes encode(const PlanarPicture& picture, const EncodeOptions& options) {
    Bytes stream = Encoder(picture, options).run();
    if (!options.jp2) return stream;
    Bytes file = writeBoxes(picture, stream.size());
    file.insert(file.end(), stream.begin(), stream.end());
    return file;
}

} // namespace codecs::jpeg2000

// commands.cpp - zmx j2k: the codec behind files.
#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/picture/image.h"
#include "zmx/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <cstdio>
#include <limits>
#include <memory>

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using codecs::Error;
using jpeg2000::Component;
using jpeg2000::PlanarPicture;

// An Error of the codec, with the name of the file ahead of it.
template <class Call> auto naming(const std::string& path, Call call) {
    try {
        return call();
    } catch (const Error& e) {
        throw Error(path + ": " + e.what());
    }
}

// YCbCr of full range (IEC 61966-2-1, annex G) to RGB.
void fromYcc(Image& image) {
    const double half = (image.maxval + 1) / 2;
    const auto limited = [&](double v) { return std::uint16_t(std::clamp(v + 0.5, 0.0, double(image.maxval))); };
    for (std::size_t i = 0; i + 2 < image.samples.size(); i += std::size_t(image.channels)) {
        std::uint16_t* p = image.samples.data() + i;
        const double y = p[0], cb = p[1] - half, cr = p[2] - half;
        p[0] = limited(y + 1.402 * cr);
        p[1] = limited(y - 0.344136 * cb - 0.714136 * cr);
        p[2] = limited(y + 1.772 * cb);
    }
}

// Components of any size and sign as channels of one: repeated where they are subsampled, moved up where they are
// signed, scaled up to the deepest. More than four, or three of five, do not fit a picture file: the first ones do.
Image toImage(const PlanarPicture& picture) {
    const auto& all = picture.components;
    const int channels = int(std::min<std::size_t>(all.size(), 4));
    int width = 0, height = 0, depth = 1, dx = 255, dy = 255;
    for (int k = 0; k < channels; ++k) {
        const Component& c = all[std::size_t(k)];
        width = std::max(width, c.width);
        height = std::max(height, c.height);
        depth = std::max(depth, c.depth);
        dx = std::min(dx, c.dx);
        dy = std::min(dy, c.dy);
    }
    if (width == 0 || height == 0) throw ImageError("a picture without samples");
    Image image{width, height, channels, (1 << depth) - 1, {}, channels == 4 && picture.alpha < 0};
    image.samples.resize(image.rowSamples() * std::size_t(height));
    for (int k = 0; k < channels; ++k) {
        const Component& c = all[std::size_t(k)];
        if (c.samples.empty()) continue;
        const int own = (1 << c.depth) - 1, up = -c.smallest();
        for (int y = 0; y < height; ++y) {
            std::uint16_t* row = image.row(y);
            const std::int32_t* src =
                c.samples.data() + std::size_t(std::min(y * dy / c.dy, c.height - 1)) * std::size_t(c.width);
            for (int x = 0; x < width; ++x) {
                const std::int64_t v = src[std::min(x * dx / c.dx, c.width - 1)] + up;
                row[x * channels + k] = std::uint16_t(c.depth == depth ? v : (v * image.maxval + own / 2) / own);
            }
        }
    }
    if (picture.colour == jpeg2000::ColourSpace::sYcc && channels == 3) fromYcc(image);
    return image;
}

const std::string orders[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"}; // in the order of their codes

struct EncodeArguments {
    std::string in, out, order = "LRCP", packed;
    jpeg2000::EncodeOptions options;
    std::vector<int> block{64, 64}, changes, tile, precincts, origin, tileOrigin, sampling;
    bool lossy = false, noColour = false, asSigned = false, bypass = false, reset = false, terminate = false,
         causal = false, predictable = false, symbols = false;
};

PlanarPicture toPicture(const Image& image, const EncodeArguments& args) {
    PlanarPicture picture;
    const int depth = std::bit_width(unsigned(image.maxval));
    const int dx = args.sampling.empty() ? 1 : args.sampling[0], dy = args.sampling.empty() ? 1 : args.sampling[1];
    if (!args.origin.empty()) {
        picture.x0 = std::uint32_t(args.origin[0]);
        picture.y0 = std::uint32_t(args.origin[1]);
    }
    picture.x1 = picture.x0 + std::uint32_t(image.width);
    picture.y1 = picture.y0 + std::uint32_t(image.height);
    for (int k = 0; k < image.channels; ++k) {
        Component c;
        c.depth = depth;
        c.isSigned = args.asSigned;
        if (k > 0 && (k < 3 || image.cmyk)) {
            c.dx = dx;
            c.dy = dy;
        }
        const int down = c.isSigned ? 1 << (depth - 1) : 0;
        const auto ceilDiv = [](std::uint32_t a, int b) { return int((a + unsigned(b) - 1) / unsigned(b)); };
        const int left = ceilDiv(picture.x0, c.dx), top = ceilDiv(picture.y0, c.dy);
        c.width = ceilDiv(picture.x1, c.dx) - left;
        c.height = ceilDiv(picture.y1, c.dy) - top;
        for (int y = 0; y < c.height; ++y)
            for (int x = 0; x < c.width; ++x)
                c.samples.push_back(
                    image.row((top + y) * c.dy -
                              int(picture.y0))[((left + x) * c.dx - int(picture.x0)) * image.channels + k] -
                    down);
        picture.components.push_back(std::move(c));
    }
    if (image.channels % 2 == 0 && !image.cmyk) picture.alpha = image.channels - 1;
    return picture;
}

void runEncode(EncodeArguments& args) {
    jpeg2000::EncodeOptions& o = args.options;
    o.reversible = !args.lossy;
    o.colourTransform = !args.noColour;
    o.blockWidth = args.block[0];
    o.blockHeight = args.block[1];
    for (std::size_t i = 0; i + 1 < args.precincts.size(); i += 2)
        o.precincts.push_back({args.precincts[i], args.precincts[i + 1]});
    if (!args.tile.empty()) {
        o.tileWidth = std::uint32_t(args.tile[0]);
        o.tileHeight = std::uint32_t(args.tile[1]);
    }
    if (!args.tileOrigin.empty()) {
        o.tileX = std::uint32_t(args.tileOrigin[0]);
        o.tileY = std::uint32_t(args.tileOrigin[1]);
    }
    for (double& r : o.rates)
        if (r == 0) r = std::numeric_limits<double>::infinity();
    using namespace jpeg2000;
    o.progression = Progression(std::find(std::begin(orders), std::end(orders), args.order) - orders);
    o.packedHeaders = args.packed == "main"   ? PackedHeaders::main
                      : args.packed == "tile" ? PackedHeaders::tile
                                              : PackedHeaders::none;
    for (std::size_t i = 0; i + 5 < args.changes.size(); i += 6) {
        const int* p = &args.changes[i];
        if (p[5] < 0 || p[5] > 4) throw Error("a progression change of an unknown order");
        o.changes.push_back({p[0], p[1], p[2], p[3], p[4], Progression(p[5])});
    }
    o.style = (args.bypass ? kStyleBypass : 0u) | (args.reset ? kStyleReset : 0u) |
              (args.terminate ? kStyleTerminateAll : 0u) | (args.causal ? kStyleCausal : 0u) |
              (args.predictable ? kStylePredictable : 0u) | (args.symbols ? kStyleSegmentation : 0u);
    o.jp2 = args.out.size() < 4 || args.out.substr(args.out.size() - 4) == ".jp2";
    const Image image = readImage(args.in);
    writeBytes(args.out, naming(args.in, [&] { return jpeg2000::encode(toPicture(image, args), o); }));
}

struct DecodeArguments {
    std::string in, out;
    jpeg2000::DecodeOptions options;
    bool strict = false;
};
void runDecode(const DecodeArguments& args) {
    const std::vector<std::uint8_t> file = readBytes(args.in);
    const PlanarPicture picture = naming(args.in, [&] { return jpeg2000::decode(file, args.options); });
    writeImage(args.out, toImage(picture));
    for (const std::string& w : picture.warnings)
        std::fprintf(stderr, "zmx: %s: warning: %s\n", args.in.c_str(), w.c_str());
    if (args.strict && !picture.warnings.empty()) throw Error(args.in + ": not a sound file");
}

void runInfo(const std::string& in) {
    const std::vector<std::uint8_t> file = readBytes(in);
    const std::string text = naming(in, [&] { return jpeg2000::describe(file); });
    std::fputs(text.c_str(), stdout);
}

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a JPEG2000 file");
    const auto args = std::make_shared<EncodeArguments>();
    jpeg2000::EncodeOptions& o = args->options;
    c->add_option("IN", args->in, kPictureFile)->required();
    c->add_option("OUT", args->out, "the file; .jp2 has boxes around the codestream, others are the codestream alone")
        ->required();
    c->add_flag("--lossy", args->lossy, "9/7 wavelet and ICT; otherwise 5/3 and RCT, lossless unless layers are cut");
    auto* rate = c->add_option("--rate", o.rates, "bits a pixel, one number for each layer, rising; 0: everything")
                     ->delimiter(',');
    c->add_option("--psnr", o.psnrs, "dB, one number for each layer, rising")->delimiter(',')->excludes(rate);
    c->add_option("--levels", o.levels, "wavelet levels")->capture_default_str()->check(CLI::Range(0, 32));
    c->add_option("--block", args->block, "code block: WIDTH,HEIGHT, powers of 2")
        ->delimiter(',')
        ->expected(2)
        ->capture_default_str();
    c->add_option("--precincts", args->precincts, "WIDTH,HEIGHT,... from the highest resolution down")->delimiter(',');
    c->add_option("--tile", args->tile, "WIDTH,HEIGHT")->delimiter(',')->expected(2);
    c->add_option("--origin", args->origin, "of the image area: X,Y")
        ->delimiter(',')
        ->expected(2)
        ->check(CLI::Range(0, 1 << 29));
    c->add_option("--tile-origin", args->tileOrigin, "of the grid of tiles: X,Y")
        ->delimiter(',')
        ->expected(2)
        ->check(CLI::Range(0, 1 << 29));
    c->add_option("--sampling", args->sampling, "of the second and third component: DX,DY")
        ->delimiter(',')
        ->expected(2)
        ->check(CLI::Range(1, 255));
    c->add_option("--order", args->order, "progression")
        ->capture_default_str()
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(orders), std::end(orders))));
    c->add_option(
         "--changes", args->changes,
         "of the progression, six numbers each: first resolution, first component, layer, resolution and component "
         "to stop at, order 0 to 4 in the sequence above")
        ->delimiter(',');
    c->add_option("--packed-headers", args->packed, "keep packet headers apart from packets")
        ->check(CLI::IsMember({"main", "tile"}));
    c->add_flag("--no-colour-transform", args->noColour, "code the components as they are");
    c->add_flag("--signed", args->asSigned, "store samples around 0");
    c->add_flag("--bypass", args->bypass, "code-block style: raw passes from the fifth plane on");
    c->add_flag("--reset", args->reset, "code-block style: contexts afresh in each pass");
    c->add_flag("--terminate", args->terminate, "code-block style: each pass ends its segment");
    c->add_flag("--causal", args->causal, "code-block style: vertically causal contexts");
    c->add_flag("--predictable", args->predictable, "code-block style: predictable termination");
    c->add_flag("--symbols", args->symbols, "code-block style: segmentation symbols");
    c->add_flag("--sop", o.sop, "a marker before each packet");
    c->add_flag("--eph", o.eph, "a marker behind each packet header");
    c->add_flag("--tile-parts", o.tilePartsByResolution, "a tile-part for each run of packets of one resolution");
    c->add_option("--step", o.baseStep, "quantiser step of 8-bit samples, 1/64 to 64; 0: 1, less for a high --psnr")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 64.0));
    c->add_option("--threads", o.threads, "0: one for each processor")
        ->capture_default_str()
        ->check(CLI::Range(0, 256));
    c->footer("Examples:\n"
              "  zmx j2k encode scan.pgm scan.jp2\n"
              "  zmx j2k encode photo.png photo.jp2 --lossy --rate 0.25,0.5,1\n"
              "  zmx j2k encode photo.png photo.j2k --lossy --psnr 40 --tile 512,512 --order RPCL");
    c->callback([args] { runEncode(*args); });
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a JPEG2000 file as " + kPictureFile);
    const auto args = std::make_shared<DecodeArguments>();
    c->add_option("IN", args->in, "a JP2 file or a codestream of Part 1")->required();
    c->add_option("OUT", args->out, "a " + kPictureEndings + " file")->required();
    c->add_option("--reduce", args->options.reduce, "halve the size so many times")
        ->capture_default_str()
        ->check(CLI::Range(0, 32));
    c->add_option("--layers", args->options.layers, "decode so many layers; 0: all")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    c->add_option("--max-pixels", args->options.maxPixels, "refuse files of more samples")->capture_default_str();
    c->add_option("--threads", args->options.threads, "0: one for each processor")
        ->capture_default_str()
        ->check(CLI::Range(0, 256));
    c->add_flag("--strict", args->strict, "fail when a part of the file is damaged or missing");
    c->footer("Examples:\n"
              "  zmx j2k decode photo.jp2 photo.png\n"
              "  zmx j2k decode photo.jp2 small.ppm --reduce 2");
    c->callback([args] { runDecode(*args); });
}

void addInfo(CLI::App& app) {
    auto* c = app.add_subcommand("info", "Print what the boxes and marker segments of a JPEG2000 file say");
    const auto in = std::make_shared<std::string>();
    c->add_option("IN", *in, "a JP2 file or a codestream")->required();
    c->footer("Example:\n  zmx j2k info photo.jp2");
    c->callback([in] { runInfo(*in); });
}

} // namespace

void addJpeg2000Commands(CLI::App& app) {
    CLI::App* j2k = app.add_subcommand("j2k", "JPEG2000 files (ISO/IEC 15444-1)");
    j2k->require_subcommand(1);
    addEncode(*j2k);
    addDecode(*j2k);
    addInfo(*j2k);
}

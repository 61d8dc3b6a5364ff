// j2k.cpp - zmx j2k: encode, decode and info.
#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/picture/bytefile.h"
#include "zmx/commands.h"
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using command::Run;
using command::UsageError;

const std::vector<std::string> kOrders = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"}; // in the order of their codes

// Options that are put together from what the command line says.
struct EncodeArguments {
    command::Files files;
    command::PictureOptions picture;
    jpeg2000::EncodeOptions options;
    std::string order = "LRCP", packed;
    std::vector<int> block{64, 64}, changes, precincts, sampling{1, 1};
    std::vector<std::uint32_t> tile{0, 0}, origin{0, 0}, tileOrigin{0, 0};
    bool lossy = false, noColour = false;
    bool bypass = false, reset = false, terminate = false, causal = false, predictable = false, symbols = false;
};

unsigned styleOf(const EncodeArguments& a) {
    using namespace jpeg2000;
    return (a.bypass ? kStyleBypass : 0u) | (a.reset ? kStyleReset : 0u) | (a.terminate ? kStyleTerminateAll : 0u) |
           (a.causal ? kStyleCausal : 0u) | (a.predictable ? kStylePredictable : 0u) |
           (a.symbols ? kStyleSegmentation : 0u);
}

jpeg2000::EncodeOptions optionsOf(const EncodeArguments& a) {
    using namespace jpeg2000;
    EncodeOptions o = a.options;
    o.reversible = !a.lossy;
    o.colourTransform = !a.noColour;
    o.blockWidth = a.block[0];
    o.blockHeight = a.block[1];
    o.tileWidth = a.tile[0];
    o.tileHeight = a.tile[1];
    o.x0 = a.origin[0];
    o.y0 = a.origin[1];
    o.tileX = a.tileOrigin[0];
    o.tileY = a.tileOrigin[1];
    o.samplingX = a.sampling[0];
    o.samplingY = a.sampling[1];
    for (std::size_t i = 0; i + 1 < a.precincts.size(); i += 2)
        o.precincts.push_back({a.precincts[i], a.precincts[i + 1]});
    for (double& r : o.rates)
        if (r == 0) r = std::numeric_limits<double>::infinity();
    o.progression = Progression(std::find(kOrders.begin(), kOrders.end(), a.order) - kOrders.begin());
    o.packedHeaders = a.packed == "main"   ? PackedHeaders::main
                      : a.packed == "tile" ? PackedHeaders::tile
                                           : PackedHeaders::none;
    if (a.changes.size() % 6 != 0) throw UsageError("--changes: six numbers for each change");
    for (std::size_t i = 0; i < a.changes.size(); i += 6) {
        const int* p = &a.changes[i];
        if (p[5] < 0 || p[5] > 4) throw UsageError("--changes: orders are 0 to 4");
        o.changes.push_back({p[0], p[1], p[2], p[3], p[4], Progression(p[5])});
    }
    o.style = styleOf(a);
    o.threads = a.files.manners.threads;
    return o;
}

// A codestream goes without boxes into a file whose name asks for it.
bool wantsBoxes(const std::string& name) {
    const auto dot = name.rfind('.');
    const std::string ending = dot == std::string::npos ? "" : name.substr(dot);
    return ending != ".j2k" && ending != ".j2c" && ending != ".jpc";
}

void encode(Run& run, const EncodeArguments& args, jpeg2000::EncodeOptions options) {
    options.jp2 = wantsBoxes(run.outName());
    codecs::RowSource& rows = run.pictureIn(args.picture);
    codecs::named(run.inName(), [&] { jpeg2000::encode(rows, run.bytesOut(), options); });
}

struct DecodeArguments {
    command::Files files;
    command::PictureOptions picture;
    jpeg2000::DecodeOptions options;
};

void decode(Run& run, const DecodeArguments& args) {
    jpeg2000::DecodeOptions options = args.options;
    options.threads = args.files.manners.threads;
    options.maxPixels = std::size_t(args.picture.maxPixels);
    run.warn(codecs::named(run.inName(),
                           [&] { return jpeg2000::decode(run.bytesIn(), run.pictureOut(args.picture), options); }));
}

void info(const std::string& in) {
    const auto file = codecs::openBytes(in);
    const std::string text = codecs::named(in, [&] { return jpeg2000::describe(file->whole()); });
    std::fputs(text.c_str(), stdout);
}

// ---- the command line

CLI::Option* addPair(CLI::App& c, const std::string& name, auto& pair, const std::string& text) {
    return c.add_option(name, pair, text)->delimiter(',')->expected(2);
}

void addQuality(CLI::App& c, EncodeArguments& a) {
    jpeg2000::EncodeOptions& o = a.options;
    c.add_flag("--lossy", a.lossy, "9/7 wavelet and ICT; otherwise 5/3 and RCT, lossless unless layers are cut");
    auto* rate = c.add_option("--rate", o.rates, "bits a pixel, one number for each layer, rising; 0: everything")
                     ->delimiter(',');
    c.add_option("--psnr", o.psnrs, "dB, one number for each layer, rising")->delimiter(',')->excludes(rate);
    c.add_option("--step", o.baseStep, "quantiser step of 8-bit samples, 1/64 to 64; 0: 1, less for a high --psnr")
        ->capture_default_str();
}

void addPlaces(CLI::App& c, EncodeArguments& a) {
    const CLI::Range place(0, 1 << 29);
    addPair(c, "--tile", a.tile, "WIDTH,HEIGHT")->check(place);
    addPair(c, "--origin", a.origin, "of the image area: X,Y")->check(place);
    addPair(c, "--tile-origin", a.tileOrigin, "of the grid of tiles: X,Y")->check(place);
    addPair(c, "--sampling", a.sampling, "of the second and third component: DX,DY")->check(CLI::Range(1, 255));
    c.add_flag("--signed", a.options.asSigned, "store samples around 0");
    c.add_flag("--no-colour-transform", a.noColour, "code the components as they are");
}

void addCoding(CLI::App& c, EncodeArguments& a) {
    c.add_option("--levels", a.options.levels, "wavelet levels")->capture_default_str()->check(CLI::Range(0, 32));
    addPair(c, "--block", a.block, "code block: WIDTH,HEIGHT, powers of 2")->capture_default_str();
    c.add_option("--precincts", a.precincts, "WIDTH,HEIGHT,... from the highest resolution down")->delimiter(',');
    c.add_flag("--bypass", a.bypass, "code-block style: raw passes from the fifth plane on");
    c.add_flag("--reset", a.reset, "code-block style: contexts afresh in each pass");
    c.add_flag("--terminate", a.terminate, "code-block style: each pass ends its segment");
    c.add_flag("--causal", a.causal, "code-block style: vertically causal contexts");
    c.add_flag("--predictable", a.predictable, "code-block style: predictable termination");
    c.add_flag("--symbols", a.symbols, "code-block style: segmentation symbols");
}

void addPackets(CLI::App& c, EncodeArguments& a) {
    c.add_option("--order", a.order, "progression")->capture_default_str()->check(CLI::IsMember(kOrders));
    c.add_option(
         "--changes", a.changes,
         "of the progression, six numbers each: first resolution, first component, layer, resolution and component "
         "to stop at, order 0 to 4 in the sequence above")
        ->delimiter(',');
    c.add_option("--packed-headers", a.packed, "keep packet headers apart from packets")
        ->check(CLI::IsMember({"main", "tile"}));
    c.add_flag("--sop", a.options.sop, "a marker before each packet");
    c.add_flag("--eph", a.options.eph, "a marker behind each packet header");
    c.add_flag("--tile-parts", a.options.tilePartsByResolution,
               "a tile-part for each run of packets of one resolution");
}

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a JPEG2000 file");
    const auto args = std::make_shared<EncodeArguments>();
    args->files.addTo(*c, codecs::kPictureFile,
                      "the file; .j2k, .j2c and .jpc are the codestream alone, others have the boxes of JP2 around it",
                      ".jp2");
    addQuality(*c, *args);
    addPlaces(*c, *args);
    addCoding(*c, *args);
    addPackets(*c, *args);
    args->picture.addInputTo(*c);
    c->footer("Examples:\n"
              "  zmx j2k encode scan.pgm scan.jp2\n"
              "  zmx j2k encode photo.png photo.jp2 --lossy --rate 0.25,0.5,1\n"
              "  zmx j2k encode photo.png photo.j2k --lossy --psnr 40 --tile 512,512 --order RPCL");
    c->callback([args] {
        const jpeg2000::EncodeOptions options = optionsOf(*args);
        args->files.each([&](Run& run) { encode(run, *args, options); });
    });
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a JPEG2000 file as " + codecs::kPictureFile);
    const auto args = std::make_shared<DecodeArguments>();
    args->files.addTo(*c, "a JP2 file or a codestream of Part 1", "a " + codecs::kPictureEndings + " file", ".png");
    c->add_option("--reduce", args->options.reduce, "halve the size so many times")
        ->capture_default_str()
        ->check(CLI::Range(0, 32));
    c->add_option("--layers", args->options.layers, "decode so many layers; 0: all")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    args->picture.addOutputTo(*c);
    c->footer("Examples:\n"
              "  zmx j2k decode photo.jp2 photo.png\n"
              "  zmx j2k decode photo.jp2 small.ppm --reduce 2");
    c->callback([args] { args->files.each([&](Run& run) { decode(run, *args); }); });
}

void addInfo(CLI::App& app) {
    auto* c = app.add_subcommand("info", "Print what the boxes and marker segments of a JPEG2000 file say");
    const auto in = std::make_shared<std::string>();
    c->add_option("IN", *in, "a JP2 file or a codestream")->required();
    c->footer("Example:\n  zmx j2k info photo.jp2");
    c->callback([in] { info(*in); });
}

} // namespace

void command::addJpeg2000(CLI::App& app) {
    CLI::App* j2k = app.add_subcommand("j2k", "JPEG2000 files (ISO/IEC 15444-1)");
    j2k->require_subcommand(1);
    addEncode(*j2k);
    addDecode(*j2k);
    addInfo(*j2k);
}

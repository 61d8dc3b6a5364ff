// j2k.cpp - zmx j2k: encode, decode and info.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/pgx.h"
#include "codecs/picture/bytefile.h"
#include "zmx/commands.h"
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>

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
    std::vector<std::string> more, own;
    std::vector<std::int64_t> region;
    bool lossy = false, noColour = false;
    bool bypass = false, reset = false, terminate = false, causal = false, predictable = false, symbols = false;
};

// The byte of COD and COC that says how code blocks are coded (Table A.19).
unsigned styleOf(const EncodeArguments& a) {
    using namespace jpeg2000;
    return (a.bypass ? kStyleBypass : 0u) | (a.reset ? kStyleReset : 0u) | (a.terminate ? kStyleTerminateAll : 0u) |
           (a.causal ? kStyleCausal : 0u) | (a.predictable ? kStylePredictable : 0u) |
           (a.symbols ? kStyleSegmentation : 0u);
}

// Four numbers that were given, or none.
std::optional<jpeg2000::Window> windowOf(const std::vector<std::int64_t>& n) {
    if (n.empty()) return {};
    return jpeg2000::Window{n[0], n[1], n[2], n[3]};
}

// "3:lossless,levels=2,block=32x32": what component 3 has of its own.
jpeg2000::ComponentOptions componentOptionsOf(const std::string& text) {
    // Items in any order; of one that is given twice the last counts.
    jpeg2000::ComponentOptions own;
    int used = 0;
    // Widths in the formats keep numbers within an int.
    bool good = std::sscanf(text.c_str(), "%5d%n", &own.component, &used) == 1 && text[std::size_t(used)] == ':';
    for (std::size_t at = std::size_t(used) + 1; good && at <= text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        const std::string item = text.substr(at, end - at);
        int a = 0, b = 0, n = 0;
        // What follows a number would be passed over in silence.
        const auto whole = [&] { return std::size_t(n) == item.size(); };
        if (item == "lossless" || item == "lossy")
            own.reversible = item == "lossless";
        else if (std::sscanf(item.c_str(), "levels=%3d%n", &a, &n) == 1 && whole())
            own.levels = a;
        else if (std::sscanf(item.c_str(), "block=%5dx%5d%n", &a, &b, &n) == 2 && whole()) {
            own.blockWidth = a;
            own.blockHeight = b;
        } else
            good = false;
        at = end + 1;
    }
    if (!good) throw UsageError("--own " + text + ": not of the form 3:lossless,levels=2,block=32x32");
    return own;
}

// What the library is asked for. Values that it would refuse are left to check(); here are forms alone.
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
    // The last pair stands for all resolutions below it.
    if (a.precincts.size() % 2 != 0) throw UsageError("--precincts: a width and a height for each");
    for (std::size_t i = 0; i < a.precincts.size(); i += 2) o.precincts.push_back({a.precincts[i], a.precincts[i + 1]});
    // No rate is so high that it means everything for sure, so 0 stands for it.
    for (double& r : o.rates)
        if (r == 0) r = std::numeric_limits<double>::infinity();
    // The parser has seen to it that the name is one of them.
    o.progression = Progression(std::find(kOrders.begin(), kOrders.end(), a.order) - kOrders.begin());
    // In PPM or PPT segments (A.7.4, A.7.5).
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
    o.region = windowOf(a.region);
    for (const std::string& text : a.own) o.own.push_back(componentOptionsOf(text));
    o.threads = a.files.manners.threads;
    return o;
}

// What a name ends in: ".jp2".
std::string endingOf(const std::string& name) {
    // A dot in the name of a folder ends no file.
    const auto slash = name.rfind('/'), dot = name.rfind('.');
    return dot == std::string::npos || (slash != std::string::npos && dot < slash) ? "" : name.substr(dot);
}
// One component, with a depth and a sign of its own: what no picture in rows can hold.
bool isPgx(const std::string& name) { return endingOf(name) == ".pgx"; }

// A codestream goes without boxes into a file whose name asks for it.
bool wantsBoxes(const std::string& name) {
    const std::string ending = endingOf(name);
    return ending != ".j2k" && ending != ".j2c" && ending != ".jpc";
}

// Components that have files of their own.
void encodePgx(Run& run, const EncodeArguments& args, const jpeg2000::EncodeOptions& options) {
    // PGX files have no place on a grid, and say themselves how large and of what sign they are.
    if (options.x0 != 0 || options.y0 != 0 || options.samplingX != 1 || options.samplingY != 1 || options.asSigned)
        throw UsageError("--origin, --sampling and --signed are not for PGX files");
    // Each message names the file that it is about.
    std::vector<jpeg2000::Component> components;
    codecs::named(run.inName(), [&] { components.push_back(jpeg2000::readPgx(run.bytesIn().whole())); });
    for (const std::string& file : args.more)
        components.push_back(codecs::named(file, [&] { return jpeg2000::readPgx(codecs::readFile(file)); }));
    codecs::named(run.inName(),
                  [&] { jpeg2000::encode(jpeg2000::fromComponents(std::move(components)), run.bytesOut(), options); });
}

// A picture goes through row by row, and is never in memory as a whole.
void encode(Run& run, const EncodeArguments& args, jpeg2000::EncodeOptions options) {
    options.jp2 = wantsBoxes(run.outName());
    if (isPgx(run.inName())) return encodePgx(run, args, options);
    if (!args.more.empty()) throw UsageError("--with is for PGX files");
    codecs::RowSource& rows = run.pictureIn(args.picture);
    run.warn(codecs::named(run.inName(), [&] { return jpeg2000::encode(rows, run.bytesOut(), options); }));
}

// The same for the way back.
struct DecodeArguments {
    command::Files files;
    command::PictureOptions picture;
    jpeg2000::DecodeOptions options;
    std::vector<std::int64_t> window;
    bool separate = false, cmyk = false;
};

// "out.2.pgm" for the third component.
std::string componentPath(const std::string& path, std::size_t component) {
    const std::string ending = endingOf(path);
    return path.substr(0, path.size() - ending.size()) + "." + std::to_string(component) + ending;
}

// Signed samples move up in files that have no sign.
void writeComponent(const std::string& path, const jpeg2000::Component& c) {
    if (isPgx(path)) return codecs::writeFile(path, jpeg2000::writePgx(c));
    codecs::Picture picture(codecs::shapeOf(c.width, c.height, 1, (1 << c.depth) - 1));
    for (int y = 0; y < c.height; ++y)
        for (int x = 0; x < c.width; ++x) {
            const std::int32_t v = c.samples[std::size_t(y) * std::size_t(c.width) + std::size_t(x)];
            picture.set(x, y, unsigned(v - c.smallest()));
        }
    codecs::writePicture(path, picture);
}

// Each component in a file of its own, at its own size and depth.
void decodeComponents(Run& run, const jpeg2000::DecodeOptions& options) {
    // Several files do not fit a pipe.
    if (run.outName() == codecs::nameForMessages("-", false))
        throw UsageError("components go into files, not to standard output");
    const jpeg2000::DecodedPlanes decoded =
        codecs::named(run.inName(), [&] { return jpeg2000::decodePlanes(run.bytesIn().whole(), options); });
    run.warn(decoded.warnings);
    const auto& components = decoded.picture.components;
    for (std::size_t c = 0; c < components.size(); ++c)
        // A single component needs no number in the name.
        writeComponent(components.size() == 1 ? run.outName() : componentPath(run.outName(), c), components[c]);
}

// Bare codestreams do not say what their components are.
codecs::Rows asInks(codecs::Rows rows) {
    if (rows->shape().channels != 4) throw codecs::Error("--cmyk wants a picture of 4 channels");
    return withColour(std::move(rows), codecs::Colour::cmyk, false);
}

// The library tells what was wrong with a file that it could decode in part.
void decode(Run& run, const DecodeArguments& args) {
    jpeg2000::DecodeOptions options = args.options;
    options.threads = args.files.manners.threads;
    options.maxPixels = args.picture.maxPixels;
    // Whether it lies within the picture shows with the file alone.
    options.window = windowOf(args.window);
    // PGX files hold one component each, so that they are always apart.
    if (args.separate || isPgx(run.outName())) return decodeComponents(run, options);
    codecs::RowSink& rows = run.pictureOut(args.picture, args.cmyk ? asInks : codecs::RowChange());
    run.warn(codecs::named(run.inName(), [&] { return jpeg2000::decode(run.bytesIn(), rows, options); }));
}

// Text for people: what it says may change.
void info(const std::string& in) {
    const auto file = codecs::openBytes(in);
    const std::string text = codecs::named(in, [&] { return jpeg2000::describe(file->whole()); });
    std::fputs(text.c_str(), stdout);
}

// ---- the command line

// Two numbers with a comma between them.
CLI::Option* addPair(CLI::App& c, const std::string& name, auto& pair, const std::string& text) {
    return c.add_option(name, pair, text)->delimiter(',')->expected(2);
}

// Places and sizes are in pixels of the picture, whatever the reference grid.
void addWindow(CLI::App& c, const std::string& name, std::vector<std::int64_t>& numbers, const std::string& text) {
    c.add_option(name, numbers, text)->delimiter(',')->expected(4)->check(CLI::NonNegativeNumber);
}

void addQuality(CLI::App& c, EncodeArguments& a) {
    jpeg2000::EncodeOptions& o = a.options;
    c.add_flag("-l,--lossy", a.lossy, "9/7 wavelet and ICT; otherwise 5/3 and RCT, lossless unless layers are cut");
    // Three ways to say what layers hold, of which one is taken.
    auto* rate = c.add_option("-r,--rate", o.rates, "bits a pixel, one number for each layer, rising; 0: everything")
                     ->delimiter(',');
    // As other programs count, by the samples that go in.
    auto* ratio = c.add_option("--ratio", o.ratios,
                               "how many times smaller than the samples, one number for each layer, falling; 1: "
                               "everything")
                      ->delimiter(',')
                      ->excludes(rate);
    c.add_option("--psnr", o.psnrs, "dB, one number for each layer, rising")
        ->delimiter(',')
        ->excludes(rate)
        ->excludes(ratio);
    addWindow(c, "--region", a.region, "a part of the picture that comes first in each layer: X,Y,WIDTH,HEIGHT");
    c.add_option("--step", o.baseStep, "quantiser step of 8-bit samples, 1/64 to 64; 0: 1, less for a high --psnr")
        ->capture_default_str();
}

void addPlaces(CLI::App& c, EncodeArguments& a) {
    // Twice the largest still fits the 31 bits that the codec computes in.
    const CLI::Range place(0, 1 << 29);
    addPair(c, "--tile", a.tile, "WIDTH,HEIGHT")->check(place);
    addPair(c, "--origin", a.origin, "of the image area: X,Y")->check(place);
    addPair(c, "--tile-origin", a.tileOrigin, "of the grid of tiles: X,Y")->check(place);
    // Samples are left out, not averaged: what remains is as it was.
    addPair(c, "--sampling", a.sampling, "of the second and third component: DX,DY")->check(CLI::Range(1, 255));
    c.add_flag("--signed", a.options.asSigned, "store samples around 0");
    c.add_flag("--no-colour-transform", a.noColour, "code the components as they are");
}

void addCoding(CLI::App& c, EncodeArguments& a) {
    c.add_option("--levels", a.options.levels, "wavelet levels")->capture_default_str()->check(CLI::Range(0, 32));
    // The codec tests what the standard says of them (Table A.18).
    addPair(c, "--block", a.block, "code block: WIDTH,HEIGHT, powers of 2")->capture_default_str();
    // Of COC and QCC segments.
    c.add_option("--own", a.own,
                 "what a component has of its own, such as 3:lossless,levels=2,block=32x32; once for each component");
    c.add_option("--precincts", a.precincts, "WIDTH,HEIGHT,... from the highest resolution down")->delimiter(',');
    c.add_flag("--bypass", a.bypass, "code-block style: raw passes from the fifth plane on");
    c.add_flag("--reset", a.reset, "code-block style: contexts afresh in each pass");
    c.add_flag("--terminate", a.terminate, "code-block style: each pass ends its segment");
    c.add_flag("--causal", a.causal, "code-block style: vertically causal contexts");
    c.add_flag("--predictable", a.predictable, "code-block style: predictable termination");
    c.add_flag("--symbols", a.symbols, "code-block style: segmentation symbols");
}

void addPackets(CLI::App& c, EncodeArguments& a) {
    // By letters: layer, resolution, component, position (Table A.16).
    c.add_option("--order", a.order, "progression")->capture_default_str()->check(CLI::IsMember(kOrders));
    c.add_option(
         "--changes", a.changes,
         // Of POC segments, in their order of fields.
         "of the progression, six numbers each: first resolution, first component, layer, resolution and component "
         "to stop at, order 0 to 4 in the sequence above")
        ->delimiter(',');
    c.add_option("--packed-headers", a.packed, "keep packet headers apart from packets")
        ->check(CLI::IsMember({"main", "tile"}));
    c.add_flag("--sop", a.options.sop, "a marker before each packet");
    c.add_flag("--eph", a.options.eph, "a marker behind each packet header");
    // They cost six bytes each and make windows quick, so that they are there unless somebody minds.
    c.add_flag("!--no-tile-lengths", a.options.tileLengths, "no TLM segments, which tell where each tile-part is");
    c.add_flag("--tile-parts", a.options.tilePartsByResolution,
               "a tile-part for each run of packets of one resolution");
}

// What no picture could be encoded with is a wrong command line.
void checked(const jpeg2000::EncodeOptions& options) {
    try {
        jpeg2000::check(options);
    } catch (const codecs::Error& e) {
        throw UsageError(e.what());
    }
}

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a JPEG2000 file");
    const auto args = std::make_shared<EncodeArguments>();
    args->files.addTo(*c, codecs::kPictureFile + ", or a PGX file",
                      "the file; .j2k, .j2c and .jpc are the codestream alone, others have the boxes of JP2 around it",
                      ".jp2");
    // Options are added in the order of the help text.
    addQuality(*c, *args);
    addPlaces(*c, *args);
    addCoding(*c, *args);
    addPackets(*c, *args);
    // IN is the first component.
    c->add_option("--with", args->more, "PGX files of further components, for an IN that is a PGX file")
        ->delimiter(',');
    args->picture.addInputTo(*c);
    c->footer("Examples:\n"
              "  zmx j2k encode scan.pgm scan.jp2\n"
              "  zmx j2k encode photo.png photo.jp2 --lossy --rate 0.25,0.5,1\n"
              "  zmx j2k encode photo.png photo.j2k --lossy --psnr 40 --tile 512,512 --order RPCL\n"
              "  zmx j2k encode y.pgx film.j2c --with cb.pgx,cr.pgx");
    c->callback([args] {
        // A wrong command line is found ahead of the first file.
        const jpeg2000::EncodeOptions options = optionsOf(*args);
        checked(options);
        args->files.each([&](Run& run) { encode(run, *args, options); });
    });
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a JPEG2000 file as " + codecs::kPictureFile);
    const auto args = std::make_shared<DecodeArguments>();
    // What a file is shows in its first bytes, not in its name.
    args->files.addTo(*c, "a JP2 file or a codestream of Part 1", "a " + codecs::kPictureEndings + " file", ".png");
    // More levels than a file has are left out by taking every second sample.
    c->add_option("-r,--reduce", args->options.reduce, "halve the size so many times")
        ->capture_default_str()
        ->check(CLI::Range(0, 32));
    c->add_option("-l,--layers", args->options.layers, "decode so many layers; 0: all")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    addWindow(*c, "-w,--window", args->window, "a part of the picture, in pixels of its full size: X,Y,WIDTH,HEIGHT");
    c->add_option("--component", args->options.component, "one component alone, from 0")->check(CLI::Range(0, 16383));
    c->add_flag("--separate", args->separate,
                "each component in a file of its own, at its own size and depth: out.0.pgm, out.1.pgm and so on; files "
                "that end in .pgx always are");
    c->add_flag("--cmyk", args->cmyk, "the 4 components are CMYK, which a codestream without boxes does not say");
    args->picture.addOutputTo(*c);
    c->footer("Examples:\n"
              "  zmx j2k decode photo.jp2 photo.png\n"
              "  zmx j2k decode photo.jp2 small.ppm --reduce 2\n"
              "  zmx j2k decode map.jp2 corner.png --window 9000,9000,512,512\n"
              "  zmx j2k decode film.j2c planes.pgx");
    c->callback([args] { args->files.each([&](Run& run) { decode(run, *args); }); });
}

void addInfo(CLI::App& app) {
    auto* c = app.add_subcommand("info", "Print what the boxes and marker segments of a JPEG2000 file say");
    const auto in = std::make_shared<std::string>();
    // Standard input serves, too.
    c->add_option("IN", *in, "a JP2 file or a codestream")->required();
    c->footer("Example:\n  zmx j2k info photo.jp2");
    c->callback([in] { info(*in); });
}

} // namespace

void command::addJpeg2000(CLI::App& app) {
    // One of the three is wanted, and the parser says so.
    CLI::App* j2k = app.add_subcommand("j2k", "JPEG2000 files (ISO/IEC 15444-1)");
    j2k->require_subcommand(1);
    addEncode(*j2k);
    addDecode(*j2k);
    addInfo(*j2k);
}

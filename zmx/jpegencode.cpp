// jpegencode.cpp - zmx jpeg encode: pictures as JPEG files.
//
// What the picture is brought to ahead of the codec: its inks, its luma, its depth. All of it happens to the rows on their
// way, so that no picture is held here. What only the command line can get wrong is a UsageError, or CLI11 says so; what
// depends on the picture is an Error under the name of its file.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "zmx/files.h"
#include "zmx/jpeg.h"

#include <CLI/CLI.hpp>
#include <bit>
#include <cstdio>
#include <map>

namespace {

namespace jpeg = codecs::jpeg;
using codecs::RawFormat;
using codecs::Rows;
using command::Run;
using command::UsageError;

// Of headerless files: samples in the order of the name.
const std::map<std::string, RawFormat> kRawFormats = {
    {"gray", RawFormat::gray}, {"rgb", RawFormat::rgb}, {"bgr", RawFormat::bgr}, {"cmyk", RawFormat::cmyk}};

// Words of the command line that are not options of the codec as they stand.
struct Arguments {
    command::Files files;
    command::PictureOptions picture;
    std::string sampling = "420", scans, tables, rawSize, format;
    jpeg::EncodeOptions options;
    bool gray = false, cmyk = false, noAlpha = false;
    int precision = 0; // 0: 8 or, in lossless mode, what the picture has
};

// One of the names, or HxV for each component, each 1 to 4; false when it is none.
bool readSampling(const std::string& text, jpeg::EncodeOptions& options) {
    using jpeg::Sampling;
    options.factors.clear();
    if (text == "444" || text == "422" || text == "420") {
        options.sampling = text == "444" ? Sampling::s444 : text == "422" ? Sampling::s422 : Sampling::s420;
        return true;
    }
    // 0 for what is no factor, which is refused below.
    const auto factor = [](char c) { return c >= '1' && c <= '4' ? c - '0' : 0; };
    // Three signs each, and a comma between them.
    for (std::size_t at = 0; at < text.size(); at += 4) {
        if (text.size() - at < 3 || text[at + 1] != 'x' || (at + 3 < text.size() && text[at + 3] != ',')) return false;
        options.factors.push_back({factor(text[at]), factor(text[at + 2])});
        if (!options.factors.back().h || !options.factors.back().v) return false;
    }
    return !text.empty() && text.back() != ',' && options.factors.size() <= 4;
}

// WIDTHxHEIGHT; false when it is none.
bool readSize(const std::string& text, int& width, int& height) {
    int used = 0;
    return std::sscanf(text.c_str(), "%5dx%5d%n", &width, &height, &used) == 2 && std::size_t(used) == text.size() &&
           width > 0 && height > 0;
}

// The picture as the options want it.
Rows prepared(Rows rows, const Arguments& args) {
    using codecs::Colour;
    if (args.cmyk) {
        // PNG and TIFF files of four channels pass for RGB with alpha otherwise.
        if (rows->shape().channels != 4) throw codecs::Error("--cmyk wants a picture of 4 channels");
        rows = withColour(std::move(rows), Colour::cmyk, false);
    }
    // The luma alone is without alpha already; else nobody has said that it may be lost.
    if (args.gray || args.noAlpha) rows = withoutAlpha(std::move(rows));
    if (rows->shape().alpha)
        throw codecs::Error("a picture with alpha, which a JPEG file does not hold; --no-alpha leaves it out");
    if (args.gray) rows = asGrey(std::move(rows));
    // Options of another kind of picture would do nothing, silently.
    if (args.options.rgb && rows->shape().colour != Colour::rgb) throw codecs::Error("--rgb is for RGB pictures");
    if (args.options.ycck && rows->shape().colour != Colour::cmyk) throw codecs::Error("--ycck is for CMYK pictures");
    // The bits that hold its samples, where no others are asked for.
    const int own = std::max(int(std::bit_width(unsigned(rows->shape().maxval))), 2);
    const int precision = args.precision ? args.precision : args.options.lossless ? own : 8;
    return withDepth(std::move(rows), (1 << precision) - 1);
}

// A file without a header is opened by the size that was given, all others tell by themselves what they are.
void encode(Run& run, const Arguments& args) {
    std::vector<std::string> depthWarning;
    const codecs::RowChange change = [&](Rows r) {
        const int before = r->shape().maxval;
        Rows changed = prepared(std::move(r), args);
        // Lossy files are not about single levels, and a depth that was asked for is no surprise.
        if (args.options.lossless && !args.precision)
            depthWarning = codecs::depthChange(before, changed->shape().maxval, "a lossless JPEG file");
        return changed;
    };
    int width = 0, height = 0;
    const bool raw = readSize(args.rawSize, width, height);
    // Bytes without a header are RGB unless someone says otherwise.
    const std::string format = !args.format.empty() ? args.format : args.cmyk ? "cmyk" : "rgb";
    codecs::RowSource& rows =
        raw ? run.rawIn(width, height, kRawFormats.at(format), change) : run.pictureIn(args.picture, change);
    run.warn(depthWarning);
    run.warn(codecs::named(run.inName(), [&] { return jpeg::encode(rows, run.bytesOut(), args.options); }));
}

// Texts are read once for all files.
void run(Arguments& args) {
    // Whether a picture has such samples shows later; what no file holds is refused now.
    if (args.precision && args.precision != 8 && args.precision != 12 && !args.options.lossless)
        throw UsageError("--precision " + std::to_string(args.precision) +
                         ": only --lossless files have other than 8 and 12");
    readSampling(args.sampling, args.options);
    if (!args.scans.empty()) args.options.scans = command::jpegText(args.scans);
    if (!args.tables.empty()) args.options.tables = command::jpegText(args.tables);
    args.files.each([&](Run& job) { encode(job, args); });
}

// How the picture is coded.
void addCodingOptions(CLI::App* c, Arguments& args) {
    jpeg::EncodeOptions& o = args.options;
    c->add_option("-Q,--quality", o.quality, "1 to 100")->capture_default_str()->check(CLI::Range(1, 100));
    c->add_option("-s,--sampling", args.sampling, "of the chroma")
        ->capture_default_str()
        ->check(CLI::Validator(
            [](std::string& s) {
                jpeg::EncodeOptions tried;
                return readSampling(s, tried) ? std::string() : "neither 444, 422, 420 nor factors of 1 to 4: " + s;
            },
            "444|422|420|HxV[,HxV...]"));
    auto* tables =
        c->add_option("--qtables", args.tables,
                      "a file with 1 to 4 quantisation tables for quality 50: luma and chroma, or each component")
            ->type_name("FILE");
    c->add_flag("-O,--optimize", o.optimize, "make Huffman tables for the picture");
    auto* dct = c->add_option("--dct", o.dct, "the transform: float, or integer, which rounds once more")
                    ->transform(CLI::CheckedTransformer(std::map<std::string, jpeg::Dct>{
                        {"float", jpeg::Dct::single}, {"integer", jpeg::Dct::integer}}))
                    ->option_text("float|integer");
    c->add_flag("--fast", o.fast, "integer, and colours are converted without rounding: up to 2 dB worse")
        ->excludes(dct);
    c->add_option("--restart", o.restart, "MCUs in a restart interval; 0: none")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    auto* progressive = c->add_flag("-p,--progressive", o.progressive, "in the usual progressive scans");
    auto* scans =
        c->add_option("--scans", args.scans, "a file with a scan script")->type_name("FILE")->excludes(progressive);
    // Lossless files have neither bands of coefficients nor divisors.
    auto* lossless = c->add_option("--lossless", o.lossless, "lossless mode with this predictor")
                         ->check(CLI::Range(1, 7))
                         ->excludes(progressive)
                         ->excludes(scans)
                         ->excludes(tables);
    c->add_option("--point-transform", o.pointTransform, "lossless: low bits to leave out")
        ->check(CLI::Range(0, 15))
        ->needs(lossless);
    c->add_option("--precision", args.precision, "bits of a sample: 8, 12, or in lossless mode 2 to 16")
        ->check(CLI::Range(2, 16));
}

// What the picture is, and which of its colours go into the file.
void addColourOptions(CLI::App* c, Arguments& args) {
    c->add_flag("-g,--gray", args.gray, "store the luma alone");
    c->add_flag("--no-alpha", args.noAlpha, "leave the alpha channel of IN out");
    auto* rgb = c->add_flag("--rgb", args.options.rgb, "store RGB as it is, not as YCbCr");
    c->add_flag("--cmyk", args.cmyk, "the 4 channels of IN are CMYK, whatever the file says");
    c->add_flag("--ycck", args.options.ycck, "store CMYK as YCCK")->excludes(rgb);
    auto* rawSize = c->add_option("--raw-size", args.rawSize, "IN has no header, and this size: WIDTHxHEIGHT")
                        ->check(CLI::Validator(
                            [](std::string& s) {
                                int width, height;
                                return readSize(s, width, height) ? std::string() : "not WIDTHxHEIGHT: " + s;
                            },
                            "WIDTHxHEIGHT"));
    c->add_option("-F,--format", args.format,
                  "of IN without a header: bytes of these channels; else rgb, or with --cmyk cmyk")
        ->check(CLI::IsMember(kRawFormats))
        ->needs(rawSize);
}

} // namespace

void command::addJpegEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a JPEG file");
    const auto args = std::make_shared<Arguments>();
    args->files.addTo(*c, codecs::kPictureFile, "the JPEG file", ".jpg");
    addCodingOptions(c, *args);
    addColourOptions(c, *args);
    args->picture.addInputTo(*c);
    c->footer("Examples:\n"
              "  zmx jpeg encode photo.png photo.jpg --quality 90\n"
              "  zmx jpeg encode scan.pgm scan.jpg --optimize --restart 64\n"
              "  zmx jpeg encode *.tif -o web/ --progressive --upright --strip\n"
              "  zmx jpeg encode print.tif print.jpg --ycck --sampling 444\n"
              "  zmx jpeg encode frame.raw frame.jpg --raw-size 640x480 --format bgr\n"
              "  zmx jpeg encode photo.png photo.jpg --progressive --sampling 2x2,2x1,1x2\n"
              "  zmx jpeg encode scan16.pgm scan16.jpg --lossless 4\n"
              "  zmx jpeg encode scan16.pgm scan12.jpg --precision 12");
    c->callback([args] { run(*args); });
}

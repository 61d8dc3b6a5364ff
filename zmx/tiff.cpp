// commands.cpp - zmx tiff: PackBits files.
#include "codecs/tiff/tiff.h"
#include "codecs/picture/image.h"
#include "zmx/commands.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <memory>

namespace {

struct EncodeArguments {
    std::string in, out;
    tif::EncodeOptions options;
};
struct DecodeArguments {
    std::string in, out;
    std::size_t maxPixels = std::size_t(1) << 28;
};

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a TIFF file of PackBits strips");
    const auto args = std::make_shared<EncodeArguments>();
    c->add_option("IN", args->in, kPictureFile + "; bitmaps keep their single bit")->required();
    c->add_option("OUT", args->out, "the TIFF file")->required();
    c->add_option("--rows-per-strip", args->options.rowsPerStrip, "rows of a strip; left out: about 8 KiB")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    c->add_flag("--split16", args->options.split16,
                "pack the high and the low bytes of 16-bit samples apart; Compression is then " +
                    std::to_string(tif::kSplitPackBits) + ", which other programs do not know");
    c->footer("Examples:\n"
              "  zmx tiff encode page.pbm page.tif\n"
              "  zmx tiff encode xray.pgm xray.tif --split16 --rows-per-strip 32");
    c->callback([args] { tif::write(args->out, readImage(args->in), args->options); });
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a TIFF file of PackBits strips as " + kPictureFile);
    const auto args = std::make_shared<DecodeArguments>();
    c->add_option("IN", args->in, "a TIFF file: grey or RGB, with or without alpha, 1, 8 or 16 bits")->required();
    c->add_option("OUT", args->out, "a " + kPictureEndings + " file")->required();
    c->add_option("--max-pixels", args->maxPixels, "refuse larger pictures")->capture_default_str();
    c->footer("Example:\n  zmx tiff decode page.tif page.png");
    c->callback([args] { writeImage(args->out, tif::read(args->in, args->maxPixels)); });
}

} // namespace

void addTiffCommands(CLI::App& app) {
    CLI::App* tiff = app.add_subcommand("tiff", "TIFF files of PackBits strips (TIFF 6.0, section 9)");
    tiff->require_subcommand(1);
    addEncode(*tiff);
    addDecode(*tiff);
}

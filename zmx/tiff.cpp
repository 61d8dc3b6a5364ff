// tiff.cpp - zmx tiff: files of PackBits rows.
//
// Other kinds of TIFF are pictures like any other (zmx image convert): here the rows of the strips go through the library.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/tiff/tiff.h"
#include "codecs/picture/bytefile.h"
#include "zmx/commands.h"
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <memory>

namespace {

using command::Run;

// encode IN OUT: the codec has defaults for all of its own.
struct EncodeArguments {
    command::Files files;
    command::PictureOptions picture;
    codecs::tiff::EncodeOptions options;
};
// decode IN OUT: what there is to choose is about the picture that comes out.
struct DecodeArguments {
    command::Files files;
    command::PictureOptions picture;
};

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a TIFF file of PackBits strips");
    const auto args = std::make_shared<EncodeArguments>();
    args->files.addTo(*c, codecs::kPictureFile + "; bitmaps keep their single bit", "the TIFF file", ".tif");
    c->add_option("-r,--rows-per-strip", args->options.rowsPerStrip, "rows of a strip; left out: about 8 KiB")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    // Only our own decoder reads it, so it is never chosen by itself.
    c->add_flag("--split16", args->options.split16,
                "pack the high and the low bytes of 16-bit samples apart; Compression is then " +
                    std::to_string(codecs::tiff::kSplitPackBits) + ", which other programs do not know");
    args->picture.addInputTo(*c);
    c->footer("Examples:\n"
              "  zmx tiff encode page.pbm page.tif\n"
              "  zmx tiff encode scans/*.png -o packed/\n"
              "  zmx tiff encode xray.pgm xray.tif --split16 --rows-per-strip 32");
    // IN is opened ahead of OUT: what cannot be read makes no file.
    command::workOnEach(*c, args, [](Run& run, const EncodeArguments& a) {
        codecs::RowSource& rows = run.pictureIn(a.picture);
        run.warn(codecs::named(run.inName(), [&] { return codecs::tiff::encode(rows, run.bytesOut(), a.options); }));
    });
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a TIFF file of PackBits strips as " + codecs::kPictureFile);
    const auto args = std::make_shared<DecodeArguments>();
    args->files.addTo(*c, "a TIFF file of PackBits strips or tiles", "a " + codecs::kPictureEndings + " file",
                      args->picture);
    args->picture.addOutputTo(*c);
    c->footer("Examples:\n"
              "  zmx tiff decode page.tif page.png\n"
              "  zmx tiff decode page.tif - --to pam | pnminvert >negative.pam");
    command::workOnEach(*c, args, [](Run& run, const DecodeArguments& a) {
        codecs::named(run.inName(), [&] {
            // What the rows have to say is known when all have passed.
            const codecs::Rows source =
                codecs::tiff::open(std::make_unique<codecs::BorrowedSource>(run.bytesIn()), a.picture.maxPixels);
            copyRows(*source, run.pictureOut(a.picture));
            run.warn(source->warnings());
        });
    });
}

} // namespace

void command::addTiff(CLI::App& app) {
    CLI::App* tiff = app.add_subcommand("tiff", "TIFF files of PackBits strips (TIFF 6.0, section 9)");
    tiff->require_subcommand(1);
    addEncode(*tiff);
    addDecode(*tiff);
}

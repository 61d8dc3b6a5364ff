// image.cpp - zmx image: pictures that are not coded.
//
// They stand on codecs/picture alone: the same readers and writers that every other subcommand has at its ends.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/compare.h"
#include "zmx/commands.h"
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

namespace {

using codecs::Rows;
using command::Run;

// compare A B
struct CompareArguments {
    std::string a, b;
    int level = 0;
};
// Both pictures pass by; neither is held. The three lines are for scripts: one word and one number each.
void runCompare(const CompareArguments& args) {
    const Rows a = codecs::openPicture(args.a), b = codecs::openPicture(args.b);
    const codecs::Difference d = codecs::named(args.b, [&] { return codecs::compare(*a, *b, args.level); });
    std::printf("psnr %.4f\nmax %d\nwithin %.6f\n", d.psnr, d.max, d.within);
}

// convert IN OUT: every change is left out unless it is asked for.
struct ConvertArguments {
    command::Files files;
    command::PictureOptions picture;
    std::vector<int> part;
    bool gray = false, rgb = false, noAlpha = false;
    int depth = 0;
};

// The changes in the order in which they cost the least: the part first, the depth last.
Rows changed(Rows rows, const ConvertArguments& args) {
    if (!args.part.empty()) rows = cropped(std::move(rows), args.part[0], args.part[1], args.part[2], args.part[3]);
    // Ahead of the colours, which are to be converted without it.
    if (args.noAlpha) rows = withoutAlpha(std::move(rows));
    // Inks have a luma by way of the colours that they make.
    if (args.gray || args.rgb) rows = asRgb(std::move(rows));
    if (args.gray) rows = asGrey(std::move(rows));
    // Last: what goes before works at the depth that the picture has.
    if (args.depth) rows = withDepth(std::move(rows), (1 << args.depth) - 1);
    return rows;
}

// The picture is turned and stripped on the way in; the way out is plain.
void convert(Run& run, const ConvertArguments& args) {
    codecs::RowSource& rows = run.pictureIn(args.picture, [&](Rows r) { return changed(std::move(r), args); });
    copyRows(rows, run.pictureOut({.to = args.picture.to}));
}

void addCompare(CLI::App& app) {
    auto* c = app.add_subcommand("compare", "Print the PSNR in dB, the largest difference and the share of samples "
                                            "within a level of each other, a line each");
    const auto args = std::make_shared<CompareArguments>();
    c->add_option("A", args->a, "a picture")->required();
    c->add_option("B", args->b, "another of the same shape")->required();
    c->add_option("-w,--within", args->level, "the level")->capture_default_str()->check(CLI::Range(0, 65535));
    c->footer("Example:\n  zmx image compare photo.png decoded.png --within 3");
    c->callback([args] { runCompare(*args); });
}

void addConvert(CLI::App& app) {
    auto* c = app.add_subcommand("convert", "Write a picture to another kind of file, or a part of it");
    const auto args = std::make_shared<ConvertArguments>();
    args->files.addTo(*c, codecs::kPictureFile, "a " + codecs::kPictureEndings + " file", args->picture);
    // Whether the part lies inside is known when the picture is open.
    c->add_option("-c,--crop", args->part, "only this part: X,Y,WIDTH,HEIGHT")->delimiter(',')->expected(4);
    auto* gray = c->add_flag("-g,--gray", args->gray, "its luma alone");
    c->add_flag("--rgb", args->rgb, "grey and CMYK become RGB; inks by what they absorb, without a profile")
        ->excludes(gray);
    c->add_flag("--no-alpha", args->noAlpha, "leave out the alpha channel");
    c->add_option("-d,--depth", args->depth, "scale the samples to so many bits")->check(CLI::Range(1, 16));
    args->picture.addOutputTo(*c);
    c->footer("Examples:\n"
              "  zmx image convert photo.png part.ppm --crop 100,50,640,480\n"
              "  zmx image convert print.tif screen.png --rgb --strip\n"
              "  zmx image convert scans/*.tif -o small/ --to png --depth 8");
    command::workOnEach(*c, args, convert);
}

} // namespace

void command::addImage(CLI::App& app) {
    CLI::App* image = app.add_subcommand("image", "Compare and convert pictures");
    image->require_subcommand(1);
    addCompare(*image);
    addConvert(*image);
}

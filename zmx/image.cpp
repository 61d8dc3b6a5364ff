// commands.cpp - zmx image: pictures that are not coded.
#include "codecs/picture/image.h"
#include "zmx/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

namespace {

struct CompareArguments {
    std::string a, b;
    int level = 0;
};
void runCompare(const CompareArguments& args) {
    const codecs::Difference d = codecs::compare(codecs::readPicture(args.a), codecs::readPicture(args.b), args.level);
    std::printf("psnr %.4f\nmax %d\nwithin %.6f\n", d.psnr, d.max, d.within);
}

struct ConvertArguments {
    std::string in, out;
    std::vector<int> part;
};
void runConvert(const ConvertArguments& args) {
    codecs::Rows rows = codecs::openPicture(args.in);
    if (!args.part.empty())
        rows = codecs::named(args.in, [&] {
            return codecs::cropped(std::move(rows), args.part[0], args.part[1], args.part[2], args.part[3]);
        });
    copyRows(*rows, *codecs::createPicture(args.out));
}

} // namespace

void addImageCommands(CLI::App& app) {
    CLI::App* image = app.add_subcommand("image", "Compare and convert PNG, PNM, PAM and TIFF pictures");
    image->require_subcommand(1);

    auto* c = image->add_subcommand("compare", "Print the PSNR in dB, the largest difference and the share of samples "
                                               "within a level of each other, a line each");
    const auto compareArgs = std::make_shared<CompareArguments>();
    c->add_option("A", compareArgs->a, "a picture")->required();
    c->add_option("B", compareArgs->b, "another of the same shape")->required();
    c->add_option("--within", compareArgs->level, "the level")->capture_default_str()->check(CLI::Range(0, 65535));
    c->footer("Example:\n  zmx image compare photo.png decoded.png --within 3");
    c->callback([compareArgs] { runCompare(*compareArgs); });

    auto* v = image->add_subcommand("convert", "Write a picture to another kind of file, or a part of it");
    const auto convertArgs = std::make_shared<ConvertArguments>();
    v->add_option("IN", convertArgs->in, kPictureFile)->required();
    v->add_option("OUT", convertArgs->out, "a " + kPictureEndings + " file")->required();
    v->add_option("--crop", convertArgs->part, "only this part: X,Y,WIDTH,HEIGHT")->delimiter(',')->expected(4);
    v->footer("Example:\n  zmx image convert photo.png part.ppm --crop 100,50,640,480");
    v->callback([convertArgs] { runConvert(*convertArgs); });
}

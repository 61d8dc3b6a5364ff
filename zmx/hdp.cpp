// hdp.cpp - zmx hdp: the HD Photo core transform.
//
// The library has the transform of HD Photo and not its codec, so there is no file to write: the command shows what the
// transform does to a picture.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/hdphoto/hdphoto.h"
#include "zmx/commands.h"
#include "zmx/run.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <numeric>

namespace {

// energy IN [-o COEFFICIENTS]
struct EnergyArguments {
    std::string in, out;
    command::Manners manners;
    command::PictureOptions picture;
};

// A table of 16 numbers, laid out as they lie in a block.
void runEnergy(const EnergyArguments& args) {
    // Coefficients are kept only where they are asked for: they take four times the memory of the picture.
    command::Run run(args.manners, {args.in, args.out});
    const codecs::hdphoto::Energy e = codecs::hdphoto::measure(run.pictureIn(args.picture), !args.out.empty());
    // A picture that is black has no energy to share.
    const double all = std::accumulate(e.mean.begin(), e.mean.end(), 0.0);
    std::printf("blocks %llu\nmean square of each coefficient, and its share in %%, by its place in the block\n",
                static_cast<unsigned long long>(e.blocks));
    for (std::size_t i = 0; i < 16; ++i)
        std::printf("%14.2f %7.3f%s", e.mean[i], all > 0 ? 100 * e.mean[i] / all : 0, i % 4 == 3 ? "\n" : " ");
    // The transform has no loss; where it has, the picture of it is worth nothing.
    if (e.lost != 0)
        throw codecs::FileError(run.inName() + ": " + std::to_string(e.lost) +
                                " samples did not come back from the transform");
    std::printf("every sample came back\n");
    if (!args.out.empty()) writeRows(e.coefficients, run.pictureOut(args.picture));
    run.keep();
}

} // namespace

void command::addHdp(CLI::App& app) {
    CLI::App* hdp = app.add_subcommand("hdp", "The core transform of HD Photo (ITU-T T.832)");
    hdp->require_subcommand(1);
    auto* c = hdp->add_subcommand(
        "energy", "Transform a picture, show how much energy each coefficient holds, and check that the "
                  "inverse brings every sample back");
    const auto args = std::make_shared<EnergyArguments>();
    c->add_option("IN", args->in, codecs::kPictureFile + "; - is a pipe")->required();
    c->add_option("-o,--output", args->out, "also write the coefficients as a picture, those of one place together");
    args->manners.addTo(*c);
    args->picture.addInputTo(*c);
    c->footer("Example:\n  zmx hdp energy photo.png --output coefficients.png");
    c->callback([args] { runEnergy(*args); });
}

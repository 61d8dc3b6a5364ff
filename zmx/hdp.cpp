// commands.cpp - zmx hdp: the HD Photo core transform.
#include "codecs/hdphoto/hdphoto.h"
#include "zmx/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <numeric>

namespace {

struct EnergyArguments {
    std::string in, out;
};
void runEnergy(const EnergyArguments& args) {
    const Image image = readImage(args.in);
    const hdp::Energy e = hdp::measure(image);
    const double all = std::accumulate(e.mean.begin(), e.mean.end(), 0.0);
    std::printf("blocks %zu\nmean square of each coefficient, and its share in %%, by its place in the block\n",
                e.blocks);
    for (std::size_t i = 0; i < 16; ++i)
        std::printf("%14.2f %7.3f%s", e.mean[i], all > 0 ? 100 * e.mean[i] / all : 0, i % 4 == 3 ? "\n" : " ");
    if (e.lost != 0)
        throw ImageError(args.in + ": " + std::to_string(e.lost) + " samples did not come back from the transform");
    std::printf("every sample came back\n");
    if (!args.out.empty()) writeImage(args.out, e.coefficients);
}

} // namespace

void addHdpCommands(CLI::App& app) {
    CLI::App* hdp = app.add_subcommand("hdp", "The core transform of HD Photo (ITU-T T.832)");
    hdp->require_subcommand(1);
    auto* c = hdp->add_subcommand(
        "energy", "Transform a picture, show how much energy each coefficient holds, and check that the "
                  "inverse brings every sample back");
    const auto args = std::make_shared<EnergyArguments>();
    c->add_option("IN", args->in, kPictureFile)->required();
    c->add_option("--output", args->out, "also write the coefficients as a picture, those of one place together");
    c->footer("Example:\n  zmx hdp energy photo.png --output coefficients.png");
    c->callback([args] { runEnergy(*args); });
}

// run.cpp - opens and writes what a subcommand works on.
//
// The order matters: IN is opened when a codec asks for it, OUT is made when the codec knows that it has something to
// write, and takes its place only in keep().
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/run.h"

#include "codecs/picture/bytefile.h"
#include "codecs/picture/orientation.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace command {
namespace {

// Hands all on but the end, which is not the codec's to decide: a codec finishes its sink when it is done, and a warning
// that --strict makes an error is known only then.
class HeldSink final : public codecs::ByteSink {
public:
    explicit HeldSink(codecs::ByteSink& sink) : to(sink) {}
    void write(codecs::ByteView bytes) override { to.write(bytes); }
    void finish() override {}
    std::uint64_t position() const override { return to.position(); }
    bool seekable() const override { return to.seekable(); }
    void patch(std::uint64_t at, codecs::ByteView bytes) override { to.patch(at, bytes); }
    std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> bytes) override { return to.readBack(at, bytes); }

private:
    codecs::ByteSink& to;
};

} // namespace

void PictureOptions::addCommonTo(CLI::App& c) {
    c.add_flag("--strip", strip, "leave out colour profile, EXIF, XMP and resolution");
    c.add_flag("--upright", upright, "turn the pixels as the orientation of the EXIF says");
    c.add_option("--max-pixels", maxPixels, "refuse larger pictures")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
}
// All that can be asked of a picture that is read can be asked of one that is written.
void PictureOptions::addInputTo(CLI::App& c) { addCommonTo(c); }
void PictureOptions::addOutputTo(CLI::App& c) {
    addCommonTo(c);
    c.add_option("--to", to, "the kind of file to write, where no name says it: " + codecs::kPictureEndings)
        ->check(CLI::Validator(
            // With its dot or without.
            [](std::string& ending) {
                if (!ending.empty() && ending[0] == '.') ending.erase(0, 1);
                try {
                    codecs::containerOf("." + ending);
                    return std::string();
                } catch (const codecs::Error& e) {
                    return std::string(e.what());
                }
            },
            "png|tif|bmp|pbm|pgm|ppm|pnm|pam"));
}

// Nothing is opened yet: a wrong option in what follows is to be found first.
Run::Run(const Manners& m, Job files)
    : manners(m), job(std::move(files)), in(codecs::nameForMessages(job.in, true)),
      out(codecs::nameForMessages(job.out, false)), progress(!m.quiet, in) {}

codecs::ByteSource& Run::bytesIn() {
    if (!source) source = codecs::openBytes(job.in);
    return *source;
}

// The bar counts what is read, whatever becomes of it.
codecs::RowSource& Run::sourceOf(codecs::Rows opened, const codecs::RowChange& change) {
    rows = progress.counting(std::move(opened));
    if (change) rows = codecs::named(in, [&] { return change(std::move(rows)); });
    return *rows;
}

codecs::RowSource& Run::pictureIn(const PictureOptions& options, const codecs::RowChange& change) {
    codecs::Rows opened = codecs::openPicture(job.in, options.maxPixels);
    // Turned first: without the EXIF the orientation would be lost.
    if (options.upright) opened = codecs::upright(std::move(opened));
    if (options.strip) opened = codecs::stripped(std::move(opened));
    return sourceOf(std::move(opened), change);
}

codecs::RowSource& Run::rawIn(int width, int height, codecs::RawFormat format, const codecs::RowChange& change) {
    return sourceOf(
        codecs::namedRows(in, [&] { return codecs::openRaw(codecs::openBytes(job.in), width, height, format); }),
        change);
}

codecs::ByteSink& Run::bytesOut() {
    if (!sink) sink = sharedOut();
    return *sink;
}

std::unique_ptr<codecs::ByteSink> Run::sharedOut() {
    // A sink of its own for whoever writes pictures, which wants to own one.
    held = codecs::createBytes(job.out);
    return std::make_unique<HeldSink>(*held);
}

// Changes stand ahead of the sink in the order in which the rows meet them: the last one named meets them first.
codecs::RowSink& Run::sinkOf(std::unique_ptr<codecs::RowSink> opened, const PictureOptions& options,
                             const codecs::RowChange& change) {
    // So what is to come last is put there first.
    if (options.strip)
        opened =
            codecs::changedBefore(std::move(opened), [](codecs::Rows r) { return codecs::stripped(std::move(r)); });
    if (options.upright) opened = codecs::uprightBefore(std::move(opened));
    if (change) opened = codecs::changedBefore(std::move(opened), change);
    to = progress.counting(codecs::namedSink(out, std::move(opened)));
    return *to;
}

codecs::RowSink& Run::pictureOut(const PictureOptions& options, const codecs::RowChange& change) {
    // A pipe has no name: PNM there, or what --to says.
    const codecs::Container container = !options.to.empty() ? codecs::containerOf("." + options.to)
                                        : job.out == "-"
                                            ? codecs::Container::anymap
                                            : codecs::named(out, [&] { return codecs::containerOf(job.out); });
    return sinkOf(codecs::createPicture(sharedOut(), container), options, change);
}

codecs::RowSink& Run::rawOut(const PictureOptions& options, codecs::RawFormat format) {
    return sinkOf(codecs::createRaw(sharedOut(), format), options, {});
}

void Run::keep() {
    progress.clear();
    // Both may throw by --strict, while OUT is not there yet.
    if (rows) manners.warn(in, rows->warnings());
    if (to) manners.warn(out, to->warnings());
    if (!held) return;
    // From here on only the system can fail.
    const std::uint64_t size = held->position();
    held->finish();
    if (manners.verbose) {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        std::fprintf(stderr, "zmx: %s: %llu bytes from %s in %.2f s\n", out.c_str(),
                     static_cast<unsigned long long>(size), in.c_str(), time.count());
    }
}

} // namespace command

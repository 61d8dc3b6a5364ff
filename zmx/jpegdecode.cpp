// jpegdecode.cpp - zmx jpeg decode: JPEG files as pictures.
//
// Rows go from the codec into the file as they come. Files without a header are the exception in what they are, not in how
// they are written: their size is printed, since nothing else tells it.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "codecs/picture/bytefile.h"
#include "codecs/picture/orientation.h"
#include "zmx/files.h"
#include "zmx/jpeg.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>

namespace {

namespace jpeg = codecs::jpeg;
using codecs::RawFormat;
using command::Run;

// Headerless files: samples in the order of the name, and packed words, which are made by the decoder itself.
const std::map<std::string, RawFormat> kRawFormats = {
    {"gray", RawFormat::gray}, {"rgb", RawFormat::rgb}, {"bgr", RawFormat::bgr}, {"cmyk", RawFormat::cmyk}};
const std::map<std::string, jpeg::Packing> kPackings = {{"rgb565", jpeg::Packing::rgb565},
                                                        {"bgr565", jpeg::Packing::bgr565},
                                                        {"rgb555", jpeg::Packing::rgb555},
                                                        {"bgr555", jpeg::Packing::bgr555}};

struct Arguments {
    command::Files files;
    command::PictureOptions picture;
    std::string scale = "1", upsampling = "fancy", format, scans;
    jpeg::DecodeOptions options;
};

// Words in a file of their own, low byte first.
class WordSink final : public codecs::RowSink {
public:
    explicit WordSink(codecs::ByteSink& sink) : file(sink) {}
    // No place for metadata, and nobody expects one.
    void begin(const codecs::Shape& s, const codecs::Metadata&) override { bytes.resize(2 * s.rowSamples()); }
    void write(const codecs::Band& band) override {
        for (int y = 0; y < band.rows; ++y) {
            for (std::size_t x = 0; x < bytes.size() / 2; ++x) {
                bytes[2 * x] = std::uint8_t(band.words(y)[x]);
                bytes[2 * x + 1] = std::uint8_t(band.words(y)[x] >> 8);
            }
            file.write(bytes);
        }
    }
    void finish() override { file.finish(); }

private:
    codecs::ByteSink& file;
    codecs::Bytes bytes; // of a row
};

// Knows the size of a picture that a file without a header does not tell.
class MeasuredSink final : public codecs::RowSink {
public:
    MeasuredSink(codecs::RowSink& sink, bool upright) : to(sink), turned(upright) {}

    int width = 0, height = 0;

    void begin(const codecs::Shape& s, const codecs::Metadata& metadata) override {
        width = s.width;
        height = s.height;
        constexpr int kFirstLying = 5; // orientations from here on exchange the sides
        if (turned && codecs::orientationOf(metadata) >= kFirstLying) std::swap(width, height);
        to.begin(s, metadata);
    }
    void write(const codecs::Band& band) override { to.write(band); }
    void finish() override { to.finish(); }

private:
    codecs::RowSink& to;
    bool turned;
};

// With --strict a warning is thrown here, ahead of keep(): nothing is there under the name of OUT.
void decodeTo(codecs::RowSink& sink, Run& run, const jpeg::DecodeOptions& options) {
    run.warn(codecs::named(run.inName(), [&] { return jpeg::decode(run.bytesIn(), sink, options); }));
}

// Bytes go through the conversions of all raw files. Words are the decoder's own, and only turned.
void decodeHeaderless(Run& run, const Arguments& args) {
    // Packed words have no header and no other form: they go to the file as they are.
    std::unique_ptr<codecs::RowSink> words;
    if (kPackings.contains(args.format)) {
        words = std::make_unique<WordSink>(run.bytesOut());
        if (args.picture.upright) words = codecs::uprightBefore(std::move(words));
    }
    codecs::RowSink& out = words ? *words : run.rawOut(args.picture, kRawFormats.at(args.format));
    MeasuredSink sink(out, args.picture.upright);
    decodeTo(sink, run, args.options);
    // The pixels themselves may be on their way to the standard output.
    const bool piped = run.outName() == codecs::nameForMessages("-", false);
    std::fprintf(piped ? stderr : stdout, "%dx%d\n", sink.width, sink.height);
}

// The pictures behind each scan are files of their own; CMYK needs a kind of file that holds it.
void decode(Run& run, const Arguments& args) {
    if (!args.format.empty()) return decodeHeaderless(run, args);
    jpeg::DecodeOptions options = args.options;
    int scans = 0;
    if (!args.scans.empty())
        // Numbered, so that they stand in order.
        options.afterScan = [&](const codecs::Picture& p) {
            char name[32];
            std::snprintf(name, sizeof name, "/scan%03d.%s", ++scans, p.shape().channels == 4 ? "tif" : "png");
            codecs::writePicture(args.scans + name, p);
        };
    decodeTo(run.pictureOut(args.picture), run, options);
}

void run(Arguments& args) {
    // "1", "1/2" and so on.
    args.options.scale = args.scale.back() - '0';
    args.options.maxPixels = args.picture.maxPixels;
    if (args.upsampling == "plain") args.options.upsampling = jpeg::Upsampling::plain;
    if (kPackings.contains(args.format)) args.options.packing = kPackings.at(args.format);
    // Files whose names are made of those of IN are called what they are.
    if (!args.format.empty()) args.picture.to = "raw";
    args.files.each([&](Run& job) { decode(job, args); });
}

} // namespace

void command::addJpegDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a JPEG file, sequential, progressive or lossless, as a picture");
    const auto args = std::make_shared<Arguments>();
    args->files.addTo(*c, "a JPEG file", "a " + codecs::kPictureEndings + " file; CMYK goes to .tif or .pam",
                      args->picture);
    c->add_option("-s,--scale", args->scale, "decode to this part of the size")
        ->capture_default_str()
        ->check(CLI::IsMember({"1", "1/1", "1/2", "1/4", "1/8"}));
    auto* upsampling =
        c->add_option("--upsampling", args->upsampling, "of the chroma: fancy, smoothly, or plain: by repetition")
            ->capture_default_str()
            ->check(CLI::IsMember({"fancy", "plain"}));
    auto* format =
        c->add_option(
             "-F,--format", args->format,
             "write OUT without a header, and print its size: rows without gaps of bytes (gray, rgb, bgr, cmyk), "
             "or of 16-bit words, low byte first (the others, the first colour of the name in the low bits)")
            ->check(CLI::IsMember(kRawFormats) | CLI::IsMember(kPackings));
    // It repeats the chroma, so that --upsampling would mean nothing.
    c->add_flag("--fast", args->options.fast,
                "repeat the chroma and convert colours without rounding: faster, and up to 14 dB worse")
        ->excludes(upsampling);
    // Raw pixels have one file only.
    c->add_option("--show-scans", args->scans, "a directory for the picture as it is after each scan")
        ->check(CLI::ExistingDirectory)
        ->excludes(format);
    args->picture.addOutputTo(*c);
    c->footer("Examples:\n"
              "  zmx jpeg decode photo.jpg photo.png\n"
              "  zmx jpeg decode photo.jpg small.ppm --scale 1/4\n"
              "  zmx jpeg decode *.jpg -o pictures/ --to tif --upright\n"
              "  zmx jpeg decode print.jpg print.tif\n"
              "  zmx jpeg decode photo.jpg screen.raw --format bgr565");
    c->callback([args] { run(*args); });
}

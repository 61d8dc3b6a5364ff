// jpeg.cpp - zmx jpeg: the JPEG codec behind files.
#include "codecs/jpeg/jpeg.h"

#include "codecs/picture/bytefile.h"
#include "codecs/picture/files.h"
#include "codecs/picture/raw.h"
#include "zmx/commands.h"

#include <CLI/CLI.hpp>
#include <bit>
#include <cstdio>
#include <map>

namespace {

namespace jpeg = codecs::jpeg;
using codecs::RawFormat;

void warn(const std::string& path, const std::vector<std::string>& warnings) {
    for (const std::string& w : warnings) std::fprintf(stderr, "zmx: %s: warning: %s\n", path.c_str(), w.c_str());
}

std::string readText(const std::string& path) {
    const codecs::Bytes bytes = codecs::readFile(path);
    // A script of no words is an error of its own, unlike none.
    return bytes.empty() ? " " : std::string(bytes.begin(), bytes.end());
}

// Headerless files: samples in the order of the name, and packed words, which are made by the decoder itself.
const std::map<std::string, RawFormat> kRawFormats = {
    {"gray", RawFormat::gray}, {"rgb", RawFormat::rgb}, {"bgr", RawFormat::bgr}, {"cmyk", RawFormat::cmyk}};
const std::map<std::string, jpeg::Packing> kPackings = {{"rgb565", jpeg::Packing::rgb565},
                                                        {"bgr565", jpeg::Packing::bgr565},
                                                        {"rgb555", jpeg::Packing::rgb555},
                                                        {"bgr555", jpeg::Packing::bgr555}};
template <class Map> bool isIn(const Map& map, const std::string& name) { return map.find(name) != map.end(); }

struct EncodeArguments {
    std::string in, out, sampling = "420", scans, rawSize, format;
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
    const auto factor = [](char c) { return c >= '1' && c <= '4' ? c - '0' : 0; };
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

codecs::Rows openInput(const EncodeArguments& args) {
    if (args.rawSize.empty()) return codecs::openPicture(args.in);
    int width = 0, height = 0;
    readSize(args.rawSize, width, height);
    const std::string format = !args.format.empty() ? args.format : args.cmyk ? "cmyk" : "rgb";
    return codecs::openRaw(codecs::openBytes(args.in), width, height, kRawFormats.at(format));
}

// The picture as the options want it.
codecs::Rows prepared(codecs::Rows rows, const EncodeArguments& args) {
    const codecs::Shape& shape = rows->shape();
    if (args.cmyk) {
        if (shape.channels != 4) throw codecs::Error("--cmyk wants a picture of 4 channels");
        rows = withColour(std::move(rows), codecs::Colour::cmyk, false);
    }
    if (args.gray || args.noAlpha) rows = withoutAlpha(std::move(rows));
    if (rows->shape().alpha)
        throw codecs::Error("a picture with alpha, which a JPEG file does not hold; --no-alpha leaves it out");
    if (args.gray) rows = asGrey(std::move(rows));
    if (args.options.rgb && rows->shape().colour != codecs::Colour::rgb)
        throw codecs::Error("--rgb is for RGB pictures");
    if (args.options.ycck && rows->shape().colour != codecs::Colour::cmyk)
        throw codecs::Error("--ycck is for CMYK pictures");
    // The bits that hold its samples, where no others are asked for.
    const int own = std::max(int(std::bit_width(unsigned(rows->shape().maxval))), 2);
    const int precision = args.precision ? args.precision : args.options.lossless ? own : 8;
    return withDepth(std::move(rows), (1 << precision) - 1);
}

void runEncode(EncodeArguments& args) {
    readSampling(args.sampling, args.options);
    if (!args.scans.empty()) args.options.scans = readText(args.scans);
    codecs::named(args.in, [&] {
        const codecs::Rows rows = prepared(openInput(args), args);
        const auto out = codecs::createBytes(args.out);
        jpeg::encode(*rows, *out, args.options);
        out->finish();
        warn(args.in, rows->warnings());
    });
}

// A file without a header, of samples or of packed words, low byte first. It knows the size of the picture.
class HeaderlessSink final : public codecs::RowSink {
public:
    HeaderlessSink(const std::string& path, const std::string& format) {
        if (isIn(kRawFormats, format))
            raw = codecs::createRaw(codecs::createBytes(path), kRawFormats.at(format));
        else
            packed = codecs::createBytes(path);
    }

    codecs::Shape shape;

    void begin(const codecs::Shape& s, const codecs::Metadata& metadata) override {
        shape = s;
        if (raw) raw->begin(s, metadata);
    }
    void write(const codecs::Band& band) override {
        if (raw) return raw->write(band);
        for (int y = 0; y < band.rows; ++y) {
            bytes.clear();
            for (std::size_t x = 0; x < shape.rowSamples(); ++x) {
                const std::uint16_t word = band.words(y)[x];
                bytes.insert(bytes.end(), {std::uint8_t(word), std::uint8_t(word >> 8)});
            }
            packed->write(bytes);
        }
    }
    void finish() override { raw ? raw->finish() : packed->finish(); }

private:
    std::unique_ptr<codecs::RowSink> raw;
    std::unique_ptr<codecs::ByteSink> packed;
    codecs::Bytes bytes; // of a row
};

struct DecodeArguments {
    std::string in, out, scale = "1", upsampling = "fancy", format, scans;
    jpeg::DecodeOptions options;
    bool strict = false;
};

void decodeTo(codecs::RowSink& sink, const DecodeArguments& args) {
    jpeg::Warnings warnings;
    codecs::named(args.in, [&] { warnings = jpeg::decode(*codecs::openBytes(args.in), sink, args.options); });
    warn(args.in, warnings);
    warn(args.out, sink.warnings());
    if (args.strict && !warnings.empty()) throw codecs::Error(args.in + ": not a sound file");
}

void runDecode(DecodeArguments& args) {
    args.options.scale = args.scale.back() - '0';
    if (args.upsampling == "plain") args.options.upsampling = jpeg::Upsampling::plain;
    if (isIn(kPackings, args.format)) args.options.packing = kPackings.at(args.format);
    int scans = 0;
    if (!args.scans.empty())
        args.options.afterScan = [&](const codecs::Picture& p) {
            char name[32];
            std::snprintf(name, sizeof name, "/scan%03d.%s", ++scans, p.shape().channels == 4 ? "tif" : "png");
            codecs::writePicture(args.scans + name, p);
        };
    if (args.format.empty()) return decodeTo(*codecs::createPicture(args.out), args);
    HeaderlessSink sink(args.out, args.format);
    decodeTo(sink, args);
    std::printf("%dx%d\n", sink.shape.width, sink.shape.height);
}

struct TranscodeArguments {
    std::string in, out, scans;
    jpeg::TranscodeOptions options;
    bool digest = false;
};
void runTranscode(TranscodeArguments& args) {
    if (!args.scans.empty()) args.options.scans = readText(args.scans);
    const jpeg::Transcoded result =
        codecs::named(args.in, [&] { return jpeg::transcode(*codecs::openBytes(args.in), args.options); });
    warn(args.in, result.warnings);
    codecs::writeFile(args.out, result.file);
    if (args.digest)
        std::printf("before %016llx\nafter %016llx\n", static_cast<unsigned long long>(result.before),
                    static_cast<unsigned long long>(result.after));
    if (result.before != result.after) throw codecs::Error(args.out + ": the coefficients have changed");
}

void runInfo(const std::string& in) {
    const std::string text = codecs::named(in, [&] { return jpeg::describe(*codecs::openBytes(in)); });
    std::fputs(text.c_str(), stdout);
}

// How the picture is coded.
void addCodingOptions(CLI::App* c, EncodeArguments& args) {
    jpeg::EncodeOptions& o = args.options;
    c->add_option("--quality", o.quality, "1 to 100")->capture_default_str()->check(CLI::Range(1, 100));
    c->add_option("--sampling", args.sampling, "of the chroma")
        ->capture_default_str()
        ->check(CLI::Validator(
            [](std::string& s) {
                jpeg::EncodeOptions tried;
                return readSampling(s, tried) ? std::string() : "neither 444, 422, 420 nor factors of 1 to 4: " + s;
            },
            "444|422|420|HxV[,HxV...]"));
    c->add_flag("--optimize", o.optimize, "make Huffman tables for the picture");
    auto* dct = c->add_option("--dct", o.dct, "the transform: float, or integer, which rounds once more")
                    ->transform(CLI::CheckedTransformer(std::map<std::string, jpeg::Dct>{
                        {"float", jpeg::Dct::single}, {"integer", jpeg::Dct::integer}}))
                    ->option_text("float|integer");
    c->add_flag("--fast", o.fast, "integer, and colours are converted without rounding: up to 2 dB worse")
        ->excludes(dct);
    c->add_option("--restart", o.restart, "MCUs in a restart interval; 0: none")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535));
    auto* progressive = c->add_flag("--progressive", o.progressive, "in the usual progressive scans");
    auto* scans = c->add_option("--scans", args.scans, "a file with a scan script")->excludes(progressive);
    auto* lossless = c->add_option("--lossless", o.lossless, "lossless mode with this predictor")
                         ->check(CLI::Range(1, 7))
                         ->excludes(progressive)
                         ->excludes(scans);
    c->add_option("--point-transform", o.pointTransform, "lossless: low bits to leave out")
        ->check(CLI::Range(0, 15))
        ->needs(lossless);
    c->add_option("--precision", args.precision, "bits of a sample: 8, 12, or in lossless mode 2 to 16")
        ->check(CLI::Range(2, 16));
}

// What the picture is, and which of its colours go into the file.
void addInputOptions(CLI::App* c, EncodeArguments& args) {
    c->add_flag("--gray", args.gray, "store the luma alone");
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
    c->add_option("--format", args.format,
                  "of IN without a header: bytes of these channels; else rgb, or with --cmyk cmyk")
        ->check(CLI::IsMember(kRawFormats))
        ->needs(rawSize);
}

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a JPEG file");
    const auto args = std::make_shared<EncodeArguments>();
    c->add_option("IN", args->in, codecs::kPictureFile)->required();
    c->add_option("OUT", args->out, "the JPEG file")->required();
    addCodingOptions(c, *args);
    addInputOptions(c, *args);
    c->footer("Examples:\n"
              "  zmx jpeg encode photo.png photo.jpg --quality 90\n"
              "  zmx jpeg encode scan.pgm scan.jpg --optimize --restart 64\n"
              "  zmx jpeg encode print.tif print.jpg --ycck --sampling 444\n"
              "  zmx jpeg encode frame.raw frame.jpg --raw-size 640x480 --format bgr\n"
              "  zmx jpeg encode photo.png photo.jpg --progressive --sampling 2x2,2x1,1x2\n"
              "  zmx jpeg encode scan16.pgm scan16.jpg --lossless 4\n"
              "  zmx jpeg encode scan16.pgm scan12.jpg --precision 12");
    c->callback([args] { runEncode(*args); });
}

void addMaxPixels(CLI::App* c, std::uint64_t& limit) {
    c->add_option("--max-pixels", limit, "refuse larger pictures")
        ->capture_default_str()
        ->check(CLI::Range(std::int64_t(1), std::int64_t(1) << 40));
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a JPEG file as " + codecs::kPictureFile);
    const auto args = std::make_shared<DecodeArguments>();
    c->add_option("IN", args->in, "a JPEG file: sequential, progressive or lossless")->required();
    c->add_option("OUT", args->out, "a " + codecs::kPictureEndings + " file; CMYK goes to .tif or .pam")->required();
    c->add_option("--scale", args->scale, "decode to this part of the size")
        ->capture_default_str()
        ->check(CLI::IsMember({"1", "1/1", "1/2", "1/4", "1/8"}));
    auto* upsampling =
        c->add_option("--upsampling", args->upsampling, "of the chroma: fancy, smoothly, or plain: by repetition")
            ->capture_default_str()
            ->check(CLI::IsMember({"fancy", "plain"}));
    auto* format =
        c->add_option(
             "--format", args->format,
             "write OUT without a header, and print its size: rows without gaps of bytes (gray, rgb, bgr, cmyk), "
             "or of 16-bit words, low byte first (the others, the first colour of the name in the low bits)")
            ->check(CLI::IsMember(kRawFormats) | CLI::IsMember(kPackings));
    c->add_flag("--fast", args->options.fast,
                "repeat the chroma and convert colours without rounding: faster, and up to 14 dB worse")
        ->excludes(upsampling);
    c->add_option("--show-scans", args->scans, "a directory for the picture as it is after each scan")
        ->check(CLI::ExistingDirectory)
        ->excludes(format);
    addMaxPixels(c, args->options.maxPixels);
    c->add_flag("--strict", args->strict, "fail when a part of the file is damaged or missing");
    c->footer("Examples:\n"
              "  zmx jpeg decode photo.jpg photo.png\n"
              "  zmx jpeg decode photo.jpg small.ppm --scale 1/4\n"
              "  zmx jpeg decode print.jpg print.tif\n"
              "  zmx jpeg decode photo.jpg screen.raw --format bgr565");
    c->callback([args] { runDecode(*args); });
}

void addTranscode(CLI::App& app) {
    auto* c = app.add_subcommand("transcode", "Code the coefficients of a JPEG file anew, without any loss");
    const auto args = std::make_shared<TranscodeArguments>();
    jpeg::TranscodeOptions& o = args->options;
    c->add_option("IN", args->in, "a JPEG file, sequential or progressive")->required();
    c->add_option("OUT", args->out, "the JPEG file, with Huffman tables made for it")->required();
    auto* progressive = c->add_flag("--progressive", o.progressive, "in the usual progressive scans");
    c->add_option("--scans", args->scans, "a file with a scan script")->excludes(progressive);
    c->add_option("--restart", o.restart, "MCUs in a restart interval; 0: none; else as IN has it")
        ->check(CLI::Range(0, 65535));
    addMaxPixels(c, o.maxPixels);
    c->add_flag("--digest", args->digest, "print a digest of the coefficients of IN and OUT");
    c->footer("Examples:\n"
              "  zmx jpeg transcode photo.jpg smaller.jpg --progressive\n"
              "  zmx jpeg transcode photo.jpg sequential.jpg --digest");
    c->callback([args] { runTranscode(*args); });
}

void addInfo(CLI::App& app) {
    auto* c = app.add_subcommand("info", "Print what the segments of a JPEG file say");
    const auto in = std::make_shared<std::string>();
    c->add_option("IN", *in, "a JPEG file of any mode")->required();
    c->footer("Example:\n  zmx jpeg info photo.jpg");
    c->callback([in] { runInfo(*in); });
}

} // namespace

void command::addJpeg(CLI::App& app) {
    CLI::App* jpeg = app.add_subcommand("jpeg", "JPEG files (ITU-T T.81)");
    jpeg->require_subcommand(1);
    addEncode(*jpeg);
    addDecode(*jpeg);
    addTranscode(*jpeg);
    addInfo(*jpeg);
}

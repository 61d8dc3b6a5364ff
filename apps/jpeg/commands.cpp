// commands.cpp - zmx jpeg: the codec behind files.
#include "image/image.h"
#include "jpeg/jpeg.h"
#include "zmx/commands.h"
#include "zmxj.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

namespace {

// An Error of the codec, with the name of the file ahead of it.
template <class Call> auto naming(const std::string& path, Call call) {
    try {
        return call();
    } catch (const jpeg::Error& e) {
        throw jpeg::Error(path + ": " + e.what());
    }
}

// Adobe's programs store CMYK inverted, and so does everyone else.
void invert(std::vector<std::uint8_t>& samples) {
    for (std::uint8_t& s : samples) s = std::uint8_t(255 - s);
}

std::vector<std::uint8_t> toGrey(const std::vector<std::uint8_t>& rgb, int width, int height) {
    std::vector<std::uint8_t> grey(rgb.size() / 3);
    zmxiRGBToY_JPEG_8u_C3C1R(rgb.data(), 3 * width, grey.data(), width, {width, height});
    return grey;
}

struct EncodeArguments {
    std::string in, out, sampling = "420";
    jpeg::EncodeOptions options;
    bool gray = false, cmyk = false;
};
void runEncode(EncodeArguments& args) {
    using jpeg::Sampling;
    args.options.sampling = args.sampling == "444" ? Sampling::s444 : args.sampling == "422" ? Sampling::s422 : Sampling::s420;
    Image image = readImage(args.in);
    if (args.cmyk) {
        if (image.channels != 4) throw ImageError(args.in + ": --cmyk wants a picture of 4 channels");
        image.cmyk = true;
    }
    image = withoutAlpha(image);
    std::vector<std::uint8_t> pixels = to8bit(image);
    int channels = image.channels;
    if (image.cmyk) invert(pixels);
    if (args.gray && channels != 1) {
        if (channels != 3) throw ImageError(args.in + ": --gray wants a grey or RGB picture");
        pixels = toGrey(pixels, image.width, image.height);
        channels = 1;
    }
    writeBytes(args.out, naming(args.in, [&] {
                   return jpeg::encode(pixels.data(), image.width, image.height, channels, args.options);
               }));
}

struct DecodeArguments {
    std::string in, out, scale = "1";
    jpeg::DecodeOptions options;
    bool strict = false;
};
void runDecode(DecodeArguments& args) {
    args.options.scale = args.scale.back() - '0';
    const std::vector<std::uint8_t> file = readBytes(args.in);
    jpeg::Picture picture = naming(args.in, [&] { return jpeg::decode(file.data(), file.size(), args.options); });
    const bool cmyk = picture.channels == 4;
    if (cmyk && picture.adobe) invert(picture.pixels);
    Image image = from8bit(picture.pixels.data(), picture.width, picture.height, picture.channels);
    image.cmyk = cmyk;
    writeImage(args.out, image);
    for (const std::string& w : picture.warnings) std::fprintf(stderr, "zmx: %s: warning: %s\n", args.in.c_str(), w.c_str());
    if (args.strict && !picture.warnings.empty()) throw jpeg::Error(args.in + ": not a sound file");
}

void runInfo(const std::string& in) {
    const std::vector<std::uint8_t> file = readBytes(in);
    const std::string text = naming(in, [&] { return jpeg::describe(file.data(), file.size()); });
    std::fputs(text.c_str(), stdout);
}

void addEncode(CLI::App& app) {
    auto* c = app.add_subcommand("encode", "Write a picture as a baseline JPEG file");
    const auto args = std::make_shared<EncodeArguments>();
    jpeg::EncodeOptions& o = args->options;
    c->add_option("IN", args->in, "a PNG, PNM or PAM file")->required();
    c->add_option("OUT", args->out, "the JPEG file")->required();
    c->add_option("--quality", o.quality, "1 to 100")->capture_default_str()->check(CLI::Range(1, 100));
    c->add_option("--sampling", args->sampling, "of the chroma")
        ->capture_default_str()
        ->check(CLI::IsMember({"444", "422", "420"}));
    c->add_flag("--optimize", o.optimize, "make Huffman tables for the picture");
    c->add_option("--restart", o.restart, "MCUs in a restart interval; 0: none")->capture_default_str()->check(CLI::Range(0, 65535));
    c->add_flag("--gray", args->gray, "store the luma alone");
    c->add_flag("--rgb", o.rgb, "store RGB as it is, not as YCbCr");
    c->add_flag("--cmyk", args->cmyk, "the 4 channels of IN are CMYK, whatever the file says");
    c->add_flag("--ycck", o.ycck, "store CMYK as YCCK");
    c->footer("Examples:\n"
              "  zmx jpeg encode photo.png photo.jpg --quality 90\n"
              "  zmx jpeg encode scan.pgm scan.jpg --optimize --restart 64\n"
              "  zmx jpeg encode print.pam print.jpg --ycck --sampling 444");
    c->callback([args] { runEncode(*args); });
}

void addDecode(CLI::App& app) {
    auto* c = app.add_subcommand("decode", "Write a JPEG file as a PNG, PNM or PAM file");
    const auto args = std::make_shared<DecodeArguments>();
    c->add_option("IN", args->in, "a JPEG file, baseline or extended sequential, 8 bits")->required();
    c->add_option("OUT", args->out, "a .png, .pgm, .ppm, .pnm or .pam file; CMYK goes to .pam")->required();
    c->add_option("--scale", args->scale, "decode to this part of the size")
        ->capture_default_str()
        ->check(CLI::IsMember({"1", "1/2", "1/4", "1/8"}));
    c->add_option("--max-pixels", args->options.maxPixels, "refuse larger pictures")->capture_default_str();
    c->add_flag("--strict", args->strict, "fail when a part of the file is damaged or missing");
    c->footer("Examples:\n"
              "  zmx jpeg decode photo.jpg photo.png\n"
              "  zmx jpeg decode photo.jpg small.ppm --scale 1/4");
    c->callback([args] { runDecode(*args); });
}

void addInfo(CLI::App& app) {
    auto* c = app.add_subcommand("info", "Print what the segments of a JPEG file say");
    const auto in = std::make_shared<std::string>();
    c->add_option("IN", *in, "a JPEG file of any mode")->required();
    c->footer("Example:\n  zmx jpeg info photo.jpg");
    c->callback([in] { runInfo(*in); });
}

} // namespace

void addJpegCommands(CLI::App& app) {
    CLI::App* jpeg = app.add_subcommand("jpeg", "JPEG files (ITU-T T.81)");
    jpeg->require_subcommand(1);
    addEncode(*jpeg);
    addDecode(*jpeg);
    addInfo(*jpeg);
}

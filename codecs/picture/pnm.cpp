// pnm.cpp - PBM, PGM, PPM and PAM files through libnetpbm.
#include "codecs/picture/files.h"

#include <csetjmp>
#include <cstdlib>
#include <cstring>

extern "C" {
#include <netpbm/pam.h>
}
#undef max
#undef min

namespace {

// libnetpbm prints its message through this function, then jumps to where pm_setjmpbuf() says.
char message[200];
void keepMessage(const char* text) { std::snprintf(message, sizeof message, "%s", text); }

void startNetpbm() {
    static const bool started = [] {
        pm_init("zmx", 0);
        pm_setusermessagefn(keepMessage);
        pm_setusererrormsgfn(keepMessage);
        return true;
    }();
    (void)started;
    message[0] = 0;
}

std::string trouble(const std::string& path) {
    std::string text = message;
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    return path + ": PNM: " + (text.empty() ? "not readable" : text);
}

// Calls libnetpbm. When it jumps out, this throws; the calls themselves make no object with a destructor.
template <class Calls> [[gnu::noinline]] void netpbm(const std::string& path, Calls calls) {
    std::jmp_buf jump;
    if (setjmp(jump)) {
        pm_setjmpbuf(nullptr);
        throw ImageError(trouble(path));
    }
    pm_setjmpbuf(&jump);
    calls();
    pm_setjmpbuf(nullptr);
}

// One line of samples, and the tuples of a row as libnetpbm wants them: pointers into the line.
struct Line {
    std::vector<sample> samples;
    std::vector<sample*> tuples;
    Line(std::size_t width, std::size_t depth) : samples(width * depth), tuples(width) {
        for (std::size_t x = 0; x < width; ++x) tuples[x] = samples.data() + x * depth;
    }
};

} // namespace

Image readPnm(std::FILE* file, const std::string& path, std::size_t maxPixels) {
    startNetpbm();
    pam head{};
    netpbm(path, [&] { pnm_readpaminit(file, &head, int(sizeof head)); });
    if (std::size_t(head.width) * std::size_t(head.height) > maxPixels)
        throw ImageError(path + ": PNM: more pixels than the limit allows");
    if (head.depth < 1 || head.depth > 4 || head.maxval > 65535)
        throw ImageError(path + ": PNM: not 1 to 4 channels of up to 16 bits");
    Image image{head.width, head.height, int(head.depth), int(head.maxval), {}};
    image.cmyk = head.depth == 4 && head.format == PAM_FORMAT && std::strcmp(head.tuple_type, "CMYK") == 0;
    image.samples.resize(image.rowSamples() * std::size_t(image.height));
    Line line(std::size_t(image.width), head.depth);
    for (int y = 0; y < image.height; ++y) {
        netpbm(path, [&] { pnm_readpamrow(&head, line.tuples.data()); });
        for (std::size_t i = 0; i < line.samples.size(); ++i) image.row(y)[i] = std::uint16_t(line.samples[i]);
    }
    return image;
}

void writePnm(std::FILE* file, const std::string& path, const Image& image, bool asPam) {
    static const char* const kinds[] = {"GRAYSCALE", "GRAYSCALE_ALPHA", "RGB", "RGB_ALPHA"};
    startNetpbm();
    pam head{};
    head.size = sizeof head;
    head.len = PAM_STRUCT_SIZE(tuple_type);
    head.file = file;
    head.format = asPam ? PAM_FORMAT : image.channels == 1 ? RPGM_FORMAT : RPPM_FORMAT;
    head.width = image.width;
    head.height = image.height;
    head.depth = unsigned(image.channels);
    head.maxval = sample(image.maxval);
    if (image.channels <= 4)
        std::snprintf(head.tuple_type, sizeof head.tuple_type, "%s", image.cmyk ? "CMYK" : kinds[image.channels - 1]);
    netpbm(path, [&] { pnm_writepaminit(&head); });
    Line line(std::size_t(image.width), head.depth);
    for (int y = 0; y < image.height; ++y) {
        for (std::size_t i = 0; i < line.samples.size(); ++i) line.samples[i] = image.row(y)[i];
        netpbm(path, [&] { pnm_writepamrow(&head, line.tuples.data()); });
    }
}

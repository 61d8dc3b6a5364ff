// files.cpp - picks the container by its first bytes or by the ending of the path.
#include "codecs/picture/files.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <memory>

namespace {

struct Close {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, Close>;

File open(const std::string& path, const char* mode) {
    File file(std::fopen(path.c_str(), mode));
    if (!file) throw ImageError(path + ": " + std::strerror(errno));
    return file;
}

std::string endingOf(const std::string& path) {
    const auto dot = path.rfind('.');
    std::string ending = dot == std::string::npos ? "" : path.substr(dot + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ending;
}

} // namespace

Image readImage(const std::string& path, std::size_t maxPixels) {
    const File file = open(path, "rb");
    unsigned char head[2] = {};
    if (std::fread(head, 1, sizeof head, file.get()) != sizeof head)
        throw ImageError(path + ": too short for a picture");
    std::rewind(file.get());
    if (head[0] == 0x89 && head[1] == 'P') return readPng(file.get(), path, maxPixels);
    if (head[0] == 'P' && head[1] >= '1' && head[1] <= '7') return readPnm(file.get(), path, maxPixels);
    if (head[0] == head[1] && (head[0] == 'I' || head[0] == 'M')) return readTiff(path, maxPixels);
    throw ImageError(path + ": not " + kPictureFile);
}

void writeImage(const std::string& path, const Image& image) {
    const std::string ending = endingOf(path);
    const bool pnm = ending == "pgm" || ending == "ppm" || ending == "pnm", pam = ending == "pam",
               tiff = ending == "tif" || ending == "tiff";
    if (!pnm && !pam && !tiff && ending != "png")
        throw ImageError(path + ": the name of a picture to write ends in " + kPictureEndings);
    if (image.cmyk && !pam && !tiff) throw ImageError(path + ": a CMYK picture is written to a .tif or .pam file");
    if (pnm && image.channels % 2 == 0)
        throw ImageError(path + ": a PNM file holds no alpha channel; write .png, .tif or .pam");
    if (tiff) return writeTiff(path, image);
    File file = open(path, "wb");
    if (ending == "png")
        writePng(file.get(), path, image);
    else
        writePnm(file.get(), path, image, pam);
    if (std::fclose(file.release()) != 0) throw ImageError(path + ": " + std::strerror(errno));
}

std::vector<std::uint8_t> readBytes(const std::string& path) {
    const File file = open(path, "rb");
    std::vector<std::uint8_t> bytes;
    std::size_t used = 0;
    do {
        bytes.resize(std::max<std::size_t>(1 << 16, 2 * used));
        used += std::fread(bytes.data() + used, 1, bytes.size() - used, file.get());
    } while (used == bytes.size());
    if (std::ferror(file.get())) throw ImageError(path + ": " + std::strerror(errno));
    bytes.resize(used);
    return bytes;
}

void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    File file = open(path, "wb");
    const bool written = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    if (std::fclose(file.release()) != 0 || !written) throw ImageError(path + ": " + std::strerror(errno));
}

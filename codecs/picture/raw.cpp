// raw.cpp - headerless pictures in and out.
#include "codecs/picture/raw.h"

#include "zmxj.h"

#include <utility>

namespace {

int channelsOf(RawFormat format) { return format == RawFormat::gray ? 1 : format == RawFormat::cmyk ? 4 : 3; }

void exchangeRedAndBlue(std::vector<std::uint8_t>& pixels) {
    for (std::size_t i = 0; i < pixels.size(); i += 3) std::swap(pixels[i], pixels[i + 2]);
}

} // namespace

Image readRaw(const std::string& path, int width, int height, RawFormat format) {
    std::vector<std::uint8_t> pixels = readBytes(path);
    const std::size_t size = std::size_t(width) * std::size_t(height) * std::size_t(channelsOf(format));
    if (pixels.size() != size)
        throw ImageError(path + ": " + std::to_string(pixels.size()) + " bytes, but the picture has " +
                         std::to_string(size));
    if (format == RawFormat::bgr) exchangeRedAndBlue(pixels);
    Image image = from8bit(pixels.data(), width, height, channelsOf(format));
    image.cmyk = format == RawFormat::cmyk;
    return image;
}

void writeRaw(const std::string& path, const Image& picture, RawFormat format) {
    if (picture.cmyk != (format == RawFormat::cmyk))
        throw ImageError(path + ": cmyk is for CMYK pictures, and they have no other raw format");
    Image image = withoutAlpha(picture);
    if (format == RawFormat::gray && image.channels == 3) image = toGrey(image);
    std::vector<std::uint8_t> pixels = to8bit(image);
    if (image.channels < channelsOf(format)) {
        std::vector<std::uint8_t> rgb;
        for (std::uint8_t grey : pixels) rgb.insert(rgb.end(), 3, grey);
        pixels = std::move(rgb);
    }
    if (format == RawFormat::bgr) exchangeRedAndBlue(pixels);
    writeBytes(path, pixels);
}

Image toGrey(const Image& image) {
    const std::vector<std::uint8_t> rgb = to8bit(image);
    std::vector<std::uint8_t> grey(rgb.size() / 3);
    zmxiRGBToY_JPEG_8u_C3C1R(rgb.data(), 3 * image.width, grey.data(), image.width, {image.width, image.height});
    return from8bit(grey.data(), image.width, image.height, 1);
}

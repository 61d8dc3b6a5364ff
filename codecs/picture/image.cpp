// image.cpp - pictures of 16-bit samples over those of bytes.
#include "codecs/picture/image.h"

using namespace codecs;

namespace {

template <class Change> Image changed(const Image& image, Change change) {
    const Picture picture = pictureFrom(image);
    return imageFrom(readRows(*change(std::make_unique<PictureSource>(picture))));
}

} // namespace

Picture pictureFrom(const Image& image) {
    Shape shape = shapeOf(image.width, image.height, image.channels, image.maxval);
    if (image.cmyk) shape.colour = Colour::cmyk;
    shape.alpha &= !image.cmyk;
    Picture picture(shape);
    for (int y = 0; y < image.height; ++y)
        for (std::size_t x = 0; x < image.rowSamples(); ++x) picture.set(int(x), y, image.row(y)[x]);
    return picture;
}

Image imageFrom(const Picture& picture) {
    const Shape& s = picture.shape();
    Image image{s.width, s.height, s.channels, s.maxval, {}, s.colour == Colour::cmyk};
    image.samples.resize(image.rowSamples() * std::size_t(s.height));
    for (int y = 0; y < s.height; ++y)
        for (std::size_t x = 0; x < s.rowSamples(); ++x) image.row(y)[x] = std::uint16_t(picture.at(int(x), y));
    return image;
}

Image readImage(const std::string& path, std::size_t maxPixels) { return imageFrom(readPicture(path, maxPixels)); }
void writeImage(const std::string& path, const Image& image) { writePicture(path, pictureFrom(image)); }

Image readRaw(const std::string& path, int width, int height, RawFormat format) {
    return named(path, [&] { return imageFrom(readRows(*openRaw(openBytes(path), width, height, format))); });
}
void writeRaw(const std::string& path, const Image& image, RawFormat format) {
    named(path, [&] { writeRows(pictureFrom(image), *createRaw(createBytes(path), format)); });
}

Image scaled(const Image& image, int maxval) {
    return changed(image, [&](Rows rows) { return withDepth(std::move(rows), maxval); });
}
std::vector<std::uint8_t> to8bit(const Image& image) {
    const Picture picture = pictureFrom(scaled(image, 255));
    return {picture.all().begin(), picture.all().end()};
}
Image from8bit(const std::uint8_t* samples, int width, int height, int channels) {
    Image image{width, height, channels, 255, {}};
    image.samples.assign(samples, samples + image.rowSamples() * std::size_t(height));
    return image;
}
Image withoutAlpha(const Image& image) {
    return changed(image, [](Rows rows) { return codecs::withoutAlpha(std::move(rows)); });
}
Image toGrey(const Image& image) {
    return changed(image, [](Rows rows) { return asGrey(std::move(rows)); });
}
Image crop(const Image& image, int x, int y, int width, int height) {
    return changed(image, [&](Rows rows) { return cropped(std::move(rows), x, y, width, height); });
}

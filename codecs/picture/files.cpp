// files.cpp - picks the container by the first bytes of a file or by the ending of its name.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/files.h"

#include "codecs/picture/bytefile.h"
#include "codecs/picture/formats.h"

#include <algorithm>
#include <cctype>

namespace codecs {
namespace {

// A source whose errors begin with the name of its file.
class NamedRows final : public RowSource {
public:
    NamedRows(std::string file, Rows source) : name(std::move(file)), from(std::move(source)) {
        form = from->shape();
        beside = from->metadata();
    }
    Band next(int rows) override {
        return named(name, [&] { return from->next(rows); });
    }
    std::vector<std::string> warnings() const override { return from->warnings(); }

private:
    std::string name;
    Rows from;
};

class NamedSink final : public RowSink {
public:
    NamedSink(std::string file, std::unique_ptr<RowSink> sink) : name(std::move(file)), to(std::move(sink)) {}
    void begin(const Shape& shape, const Metadata& metadata) override {
        named(name, [&] { to->begin(shape, metadata); });
    }
    void write(const Band& band) override {
        named(name, [&] { to->write(band); });
    }
    void finish() override {
        named(name, [&] { to->finish(); });
    }
    std::vector<std::string> warnings() const override { return to->warnings(); }

private:
    std::string name;
    std::unique_ptr<RowSink> to;
};

std::string endingOf(const std::string& path) {
    const auto dot = path.rfind('.'), slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ending = path.substr(dot + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ending;
}

struct Ending {
    const char* text;
    Container container;
};
constexpr Ending kEndings[] = {{"png", Container::png}, {"tif", Container::tiff}, {"tiff", Container::tiff},
                               {"bmp", Container::bmp}, {"pgm", Container::pgm},  {"ppm", Container::pgm},
                               {"pbm", Container::pbm}, {"pnm", Container::pnm},  {"pam", Container::pam}};

} // namespace

Rows openPicture(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels) {
    const ByteView head = bytes->view(2);
    if (head.size() < 2) throw Error("too short for a picture");
    const std::uint8_t first = head[0], second = head[1];
    if (first == 0x89 && second == 'P') return openPng(std::move(bytes), maxPixels);
    if (first == 'P' && second >= '1' && second <= '7') return openPnm(std::move(bytes), maxPixels);
    if (first == second && (first == 'I' || first == 'M')) return openTiff(std::move(bytes), maxPixels);
    if (first == 'B' && second == 'M') return openBmp(std::move(bytes), maxPixels);
    throw Error("not " + kPictureFile);
}

Rows openPicture(const std::string& path, std::uint64_t maxPixels) {
    return namedRows(nameForMessages(path, true), [&] { return openPicture(openBytes(path), maxPixels); });
}

Container containerOf(const std::string& path) {
    const std::string ending = endingOf(path);
    const auto* const found =
        std::find_if(std::begin(kEndings), std::end(kEndings), [&](const Ending& e) { return ending == e.text; });
    if (found == std::end(kEndings)) throw Error("the name of a picture to write ends in " + kPictureEndings);
    return found->container;
}

std::unique_ptr<RowSink> createPicture(std::unique_ptr<ByteSink> bytes, Container container) {
    switch (container) {
    case Container::png:
        return createPng(std::move(bytes));
    case Container::tiff:
        return createTiff(std::move(bytes));
    case Container::bmp:
        return createBmp(std::move(bytes));
    default:
        return createPnm(std::move(bytes), container);
    }
}

std::unique_ptr<RowSink> createPicture(const std::string& path, Container container) {
    return namedSink(nameForMessages(path, false), createPicture(createBytes(path), container));
}

std::unique_ptr<RowSink> createPicture(const std::string& path) {
    return createPicture(path, named(path, [&] { return containerOf(path); }));
}

Rows namedRows(const std::string& file, const std::function<Rows()>& open) {
    return std::make_unique<NamedRows>(file, named(file, open));
}
std::unique_ptr<RowSink> namedSink(const std::string& file, std::unique_ptr<RowSink> to) {
    return std::make_unique<NamedSink>(file, std::move(to));
}

Picture readPicture(const std::string& path, std::uint64_t maxPixels) {
    return readRows(*openPicture(path, maxPixels));
}

void writePicture(const std::string& path, const Picture& picture) { writeRows(picture, *createPicture(path)); }

} // namespace codecs

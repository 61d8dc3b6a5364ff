// pictures.h - made-up pictures, and what tests ask of pictures in memory and in files.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytefile.h"
#include "codecs/picture/files.h"
#include "tests/support/rng.h"

#include <filesystem>
#include <gtest/gtest.h>

// A folder of one test's own, removed behind it.
struct Folder {
    std::string path;
    Folder() {
        path = (std::filesystem::temp_directory_path() / "zmx-test-XXXXXX").string();
        if (!mkdtemp(path.data())) std::abort();
    }
    Folder(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(path); }
    std::string file(const std::string& name) const { return path + "/" + name; }
};

inline codecs::Shape cmykShape(int width, int height, int maxval = 255) {
    return {width, height, 4, maxval, codecs::Colour::cmyk, false};
}

// A picture of these samples, row by row.
template <class Values> codecs::Picture made(const codecs::Shape& shape, const Values& values) {
    codecs::Picture picture(shape);
    auto v = values.begin();
    for (int y = 0; y < shape.height; ++y)
        for (std::size_t x = 0; x < shape.rowSamples(); ++x) picture.set(int(x), y, unsigned(*v++));
    return picture;
}
inline codecs::Picture made(const codecs::Shape& shape, std::initializer_list<unsigned> values) {
    return made<std::initializer_list<unsigned>>(shape, values);
}

inline codecs::Picture noise(const codecs::Shape& shape, std::uint64_t seed = 1) {
    Rng rng(seed);
    return made(shape, rng.vec<std::uint16_t>(shape.rowSamples() * std::size_t(shape.height), 0, shape.maxval));
}

inline std::vector<unsigned> samplesOf(const codecs::Picture& picture) {
    std::vector<unsigned> all;
    for (int y = 0; y < picture.shape().height; ++y)
        for (std::size_t x = 0; x < picture.shape().rowSamples(); ++x) all.push_back(picture.at(int(x), y));
    return all;
}

// The samples as another function of each.
template <class Function> codecs::Picture mapped(const codecs::Picture& picture, Function function) {
    std::vector<unsigned> all = samplesOf(picture);
    for (unsigned& v : all) v = function(v);
    return made(picture.shape(), all);
}
inline codecs::Picture inverse(const codecs::Picture& picture) {
    return mapped(picture, [&](unsigned v) { return unsigned(picture.shape().maxval) - v; });
}

inline void expectSame(const codecs::Picture& a, const codecs::Picture& b) {
    EXPECT_EQ(a.shape().width, b.shape().width);
    EXPECT_EQ(a.shape().height, b.shape().height);
    EXPECT_EQ(a.shape().channels, b.shape().channels);
    EXPECT_EQ(a.shape().maxval, b.shape().maxval);
    EXPECT_EQ(a.shape().colour, b.shape().colour);
    EXPECT_EQ(a.shape().alpha, b.shape().alpha);
    EXPECT_TRUE(a.all().size() == b.all().size() && std::equal(a.all().begin(), a.all().end(), b.all().begin()));
}

// The file that a sink makes of a picture, its rows in bands of `rows`. `create` makes the sink of the bytes.
template <class Create> codecs::Bytes written(const codecs::Picture& picture, Create create, int rows = 3) {
    auto bytes = std::make_unique<codecs::MemorySink>();
    codecs::MemorySink& kept = *bytes;
    const std::unique_ptr<codecs::RowSink> sink = create(std::move(bytes));
    codecs::PictureSource source(picture);
    copyRows(source, *sink, rows);
    return std::move(kept.bytes);
}
inline codecs::Bytes fileOf(const codecs::Picture& picture, codecs::Container container, int rows = 3) {
    return written(
        picture, [&](auto bytes) { return codecs::createPicture(std::move(bytes), container); }, rows);
}
inline codecs::Picture pictureIn(codecs::ByteView file, std::uint64_t maxPixels = 1 << 20) {
    codecs::PictureSink sink;
    copyRows(*codecs::openPicture(std::make_unique<codecs::MemorySource>(file), maxPixels), sink, 5);
    return std::move(sink.picture);
}

// The Error that a call throws; empty where it throws none.
template <class Call> std::string errorOf(Call call) {
    try {
        call();
        return "";
    } catch (const codecs::Error& e) {
        return e.what();
    }
}

// A change of rows, over a picture in memory.
inline codecs::Picture changed(const codecs::Picture& picture, const codecs::RowChange& change) {
    return readRows(*change(std::make_unique<codecs::PictureSource>(picture)));
}

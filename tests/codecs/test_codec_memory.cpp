// Memory that runs out: each request that a codec makes, and each that the libraries below it make, fails once. Then a call
// ends in an exception that says so, or gives what it always gives, and takes no memory away with it.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/hdphoto/hdphoto.h"
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/picture/borrowedsink.h"
#include "codecs/texture/texture.h"
#include "codecs/tiff/tiff.h"
#include "tests/codecs/support/pictures.h"
#include "tests/support/failingmemory.cpp"
#include "tests/support/rounds.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

using namespace codecs;

namespace {

// What travels beside the samples needs memory too.
Picture pictured(const Shape& shape) {
    Picture picture = noise(shape);
    picture.metadata.icc = Bytes(300, 0x11);
    picture.metadata.xmp = Bytes(200, 'x');
    picture.metadata.resolution = Resolution{300, 300, Resolution::Unit::inch};
    return picture;
}

// A picture as bytes, to be compared.
Bytes bytesOf(const Picture& picture) {
    Bytes all;
    for (unsigned v : samplesOf(picture)) all.insert(all.end(), {std::uint8_t(v), std::uint8_t(v >> 8)});
    for (const Bytes* part : {&picture.metadata.icc, &picture.metadata.exif, &picture.metadata.xmp})
        all.insert(all.end(), part->begin(), part->end());
    return all;
}

enum class Outcome { never, same, refused, wrong };

// The libraries below have words of their own for it, and libtiff has none for a compressor that cannot begin.
bool tellsOfMemory(std::string words) {
    if (words.rfind("TIFF: ", 0) == 0) return true;
    std::transform(words.begin(), words.end(), words.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return words.find("memory") != std::string::npos || words.find("alloc") != std::string::npos;
}

// One call of which the n-th request fails; never: it makes fewer.
template <class Call> Outcome outcomeOf(long n, const Bytes& expected, std::string& said, Call call) {
    const long before = blocksInUse();
    Outcome outcome = Outcome::wrong;
    std::array<char, 200> message{}; // of no memory of its own, which would count
    failRequest(n);
    try {
        const bool same = call() == expected, reached = requestsMade() >= n;
        failRequest(0);
        outcome = !same ? Outcome::wrong : reached ? Outcome::same : Outcome::never;
        std::strncpy(message.data(), "another result", message.size() - 1);
    } catch (const std::bad_alloc&) {
        failRequest(0);
        outcome = Outcome::refused;
    } catch (const Error& e) {
        failRequest(0);
        outcome = tellsOfMemory(e.what()) ? Outcome::refused : Outcome::wrong;
        std::strncpy(message.data(), e.what(), message.size() - 1);
    }
    const long lost = blocksInUse() - before;
    said = message.data();
    // What libtiff holds when memory runs out in what it calls cannot be given back (TiffFile::close()).
    if (lost == 0 || (outcome == Outcome::refused && std::strncmp(message.data(), "TIFF: ", 6) == 0)) return outcome;
    said += ", a leak of " + std::to_string(lost) + " blocks";
    return Outcome::wrong;
}

// Each request in its turn; in the usual form some hundred of them where there are more, evenly spread.
template <class Call> void eachRequestFails(const char* name, Call call) {
    SCOPED_TRACE(name);
    call(); // what is made once for the whole process
    failRequest(0);
    const Bytes expected = call();
    const long all = requestsMade(), step = rounds(1) > 1 ? 1 : std::max(1L, all / (shortened() ? 20 : 250));
    long refused = 0;
    std::string said(300, 0);
    for (long n = 1; n <= all; n += step) {
        said.clear();
        const Outcome outcome = outcomeOf(n, expected, said, call);
        refused += outcome == Outcome::refused;
        ASSERT_NE(outcome, Outcome::never) << "request " << n << " of " << all;
        ASSERT_NE(outcome, Outcome::wrong) << "request " << n << ": " << said;
    }
    EXPECT_GT(refused, 0);
}

template <class Encode> Bytes encoded(const Picture& picture, Encode encode) {
    return encodedInMemory(picture, [&](RowSource& from, ByteSink& to) { encode(from, to); });
}

Bytes jpegOf(const Picture& picture, const jpeg::EncodeOptions& options) {
    return encoded(picture, [&](RowSource& from, ByteSink& to) { jpeg::encode(from, to, options); });
}

void jpegBothWays(const char* name, const Picture& picture, const jpeg::EncodeOptions& options) {
    eachRequestFails(name, [&] { return jpegOf(picture, options); });
    const Bytes file = jpegOf(picture, options);
    eachRequestFails(name, [&] { return bytesOf(jpeg::decode(file).picture); });
}

void jpeg2000BothWays(const char* name, const Picture& picture, jpeg2000::EncodeOptions options) {
    options.threads = 1; // threads keep memory of their own
    options.levels = 2;
    eachRequestFails(name, [&] { return jpeg2000::encode(picture, options); });
    const Bytes file = jpeg2000::encode(picture, options);
    jpeg2000::DecodeOptions back;
    back.threads = 1;
    eachRequestFails(name, [&] { return bytesOf(jpeg2000::decode(file, back).picture); });
    back.window = jpeg2000::Window{3, 2, 9, 8};
    eachRequestFails(name, [&] { return bytesOf(jpeg2000::decode(file, back).picture); });
}

} // namespace

TEST(OutOfMemory, Jpeg) {
    const Picture colour = pictured(shapeOf(37, 19, 3));
    jpegBothWays("baseline", colour, {});
    jpeg::EncodeOptions o;
    o.optimize = true;
    o.restart = 1;
    jpegBothWays("optimised", colour, o);
    o = {};
    o.progressive = true;
    jpegBothWays("progressive", colour, o);
    o = {};
    o.lossless = 4;
    jpegBothWays("lossless", pictured(shapeOf(21, 13, 3, 65535)), o);
    jpegBothWays("12 bits", pictured(shapeOf(21, 13, 1, 4095)), {});
    o = {};
    o.ycck = true;
    jpegBothWays("inks", noise(cmykShape(17, 9)), o);
}

TEST(OutOfMemory, JpegTranscoded) {
    const Bytes file = jpegOf(pictured(shapeOf(48, 32, 3)), {});
    for (bool progressive : {false, true}) {
        jpeg::TranscodeOptions o;
        o.progressive = progressive;
        o.turn = progressive ? Turn::none : Turn::quarter;
        eachRequestFails("transcode", [&] { return jpeg::transcode(file, o).file; });
    }
    eachRequestFails("describe", [&] {
        const std::string text = jpeg::describe(file);
        return Bytes(text.begin(), text.end());
    });
}

TEST(OutOfMemory, Jpeg2000) {
    const Picture colour = pictured(shapeOf(29, 23, 3));
    jpeg2000BothWays("reversible", colour, {});
    jpeg2000::EncodeOptions o;
    o.reversible = false;
    o.rates = {1, 4};
    o.tileWidth = o.tileHeight = 16;
    o.sop = o.eph = true;
    jpeg2000BothWays("layers and tiles", colour, o);
}

TEST(OutOfMemory, Textures) {
    const Picture picture = noise(shapeOf(13, 9, 4));
    for (auto format : {texture::Format::dxt1, texture::Format::dxt5, texture::Format::ycocgDxt5}) {
        const auto encode = [&](RowSource& from, ByteSink& to) { texture::encode(from, to, {format, true}); };
        eachRequestFails("encode", [&] { return encoded(picture, encode); });
        const Bytes file = encoded(picture, encode);
        eachRequestFails("decode", [&] {
            MemorySource source(file);
            PictureSink rows;
            texture::decode(source, texture::readHeader(source), rows);
            return bytesOf(rows.picture);
        });
    }
}

TEST(OutOfMemory, Tiff) {
    for (const Shape& shape : {shapeOf(21, 13, 3), shapeOf(21, 13, 1, 1), shapeOf(9, 7, 1, 65535)}) {
        const Picture picture = pictured(shape);
        const auto encode = [](RowSource& from, ByteSink& to) { tiff::encode(from, to); };
        eachRequestFails("encode", [&] { return encoded(picture, encode); });
        const Bytes file = encoded(picture, encode);
        eachRequestFails("decode", [&] {
            MemorySource source(file);
            PictureSink rows;
            tiff::decode(source, rows, 1 << 20);
            return bytesOf(rows.picture);
        });
    }
}

TEST(OutOfMemory, PicturesInFiles) {
    const Picture picture = pictured(shapeOf(21, 13, 3));
    for (Container container : {Container::png, Container::tiff, Container::bmp, Container::anymap}) {
        const auto write = [&] {
            MemorySink file;
            {
                const auto rows = createPicture(std::make_unique<BorrowedSink>(file), container);
                writeRows(picture, *rows);
            }
            return std::move(file.bytes);
        };
        eachRequestFails("write", write);
        const Bytes file = write();
        eachRequestFails("read", [&] {
            const Rows rows = openPicture(std::make_unique<MemorySource>(file));
            return bytesOf(readRows(*rows));
        });
    }
}

TEST(OutOfMemory, HdPhoto) {
    const Picture picture = noise(shapeOf(21, 13, 1));
    eachRequestFails("measure", [&] {
        PictureSource rows(picture);
        return bytesOf(hdphoto::measure(rows, true).coefficients);
    });
}

// Threads that cannot be begun are done without, and one that fails ends all of them.
TEST(OutOfMemory, Threads) {
    for (long n = 1; n <= 40; ++n) {
        SCOPED_TRACE(n);
        std::atomic<int> done{0};
        failRequest(n);
        EXPECT_NO_THROW(jpeg2000::parallelFor(100, 4, [&](std::size_t, int) { ++done; }));
        failRequest(0);
        EXPECT_EQ(done, 100);
    }
    EXPECT_THROW(jpeg2000::parallelFor(100, 4,
                                       [](std::size_t i, int) {
                                           if (i == 7) throw std::bad_alloc();
                                       }),
                 std::bad_alloc);
    const Picture colour = pictured(shapeOf(29, 23, 3));
    jpeg2000::EncodeOptions o;
    o.threads = 4;
    const Bytes expected = jpeg2000::encode(colour, o);
    for (long n = 1; n <= 2000; n += rounds(1) > 1 ? 1 : 37) {
        failRequest(n);
        try {
            const Bytes file = jpeg2000::encode(colour, o);
            failRequest(0);
            EXPECT_EQ(file, expected) << n;
        } catch (const std::bad_alloc&) {
            failRequest(0);
        }
    }
}

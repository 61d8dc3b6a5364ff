// format.h - what the front asks of each kind of file. The list of all kinds is made by the build (cmake/web.cmake).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"
#include "wasm/src/options.h"

#include <optional>
#include <span>

namespace web {

using codecs::ByteView;
using Warnings = std::vector<std::string>;

struct Window {
    std::int64_t x, y, width, height;
};

// What is wanted of a file.
struct Request {
    std::optional<Window> window; // in pixels of the full size
    int reduce = 0;
    std::optional<int> layers, component;
    std::uint64_t maxPixels = 0;

    Request(Options& options);
};

struct Decoded {
    codecs::Picture picture;
    Warnings warnings;
    bool isSigned = false; // in the file
    bool damaged = false;
};

struct ComponentInfo {
    int width = 0, height = 0, bits = 8;
    bool isSigned = false;
    int dx = 1, dy = 1;
};

struct Tiles {
    std::int64_t width, height, across, down;
};

struct Info {
    std::int64_t width = 0, height = 0;
    std::vector<ComponentInfo> components;
    std::string colour, mode, text;
    bool alpha = false, progressive = false, lossless = false;
    int levels = 0, layers = 1;
    std::optional<Tiles> tiles;
    codecs::Metadata metadata;
    Warnings warnings;
};

struct Format {
    const char* name;
    bool (*fits)(ByteView file); // by its first bytes
    Info (*info)(ByteView file);
    Decoded (*decode)(ByteView file, const Request& request);
    // Gives warnings. Kinds that are not written have none.
    Warnings (*encode)(codecs::RowSource& rows, codecs::ByteSink& file, Options& options);
};

extern const std::span<const Format* const> kFormats;

// Whether a file begins so.
bool beginsWith(ByteView file, std::string_view bytes);

// Takes the rows of a whole picture, and keeps the part and the channel that are wanted.
class PartSink final : public codecs::RowSink {
public:
    explicit PartSink(const Request& wanted) : request(wanted) {}
    codecs::Picture picture;

    void begin(const codecs::Shape& shape, const codecs::Metadata& metadata) override;
    void write(const codecs::Band& band) override;
    void finish() override;

private:
    const Request& request;
    codecs::Shape from;
    int left = 0, top = 0, row = 0;
};

// Kinds whose rows come from a source.
Info rowsInfo(const codecs::RowSource& rows, const std::string& kind);
Decoded decodeRows(codecs::Rows rows, const Request& request);
// A source of bytes that stay where they are.
std::unique_ptr<codecs::ByteSource> sourceOf(ByteView file);
// A picture into a file of one of the containers.
Warnings writeContainer(codecs::RowSource& rows, std::unique_ptr<codecs::RowSink> to);
// A sink that stays with the caller.
std::unique_ptr<codecs::ByteSink> borrowed(codecs::ByteSink& sink);

} // namespace web

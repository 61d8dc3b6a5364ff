// rows.h - pictures as rows that pass by, a band at a time, so that memory need not hold all of them.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/picture.h"

#include <memory>
#include <string>
#include <vector>

namespace codecs {

// Pictures of more pixels are refused, unless the caller says otherwise.
inline constexpr std::uint64_t kMaxPixels = std::uint64_t(1) << 30;

// The rows of a picture from top to bottom.
class RowSource {
public:
    virtual ~RowSource() = default;
    const Shape& shape() const { return form; }
    const Metadata& metadata() const { return beside; }
    // What was not as it should be so far, a line each; the rows are there nevertheless.
    virtual std::vector<std::string> warnings() const { return told; }

    // The next `rows` rows, fewer only where the picture ends. The view holds until the next call.
    virtual Band next(int rows) = 0;

protected:
    Shape form;
    Metadata beside;
    std::vector<std::string> told;
};

// A place for the rows of a picture. Each call of write() brings the next ones; finish() comes when all are there.
class RowSink {
public:
    virtual ~RowSink() = default;
    virtual void begin(const Shape& shape, const Metadata& metadata) = 0;
    virtual void write(const Band& band) = 0;
    virtual void finish() = 0;
    // What the sink could not keep, a line each.
    virtual std::vector<std::string> warnings() const { return told; }

protected:
    std::vector<std::string> told;
};

// A picture in memory as a source; the picture stays with the caller.
class PictureSource final : public RowSource {
public:
    explicit PictureSource(const Picture& from);
    Band next(int rows) override;

private:
    const Picture& picture;
    int row = 0;
};

// Gathers the rows into a picture.
class PictureSink final : public RowSink {
public:
    Picture picture;

    void begin(const Shape& shape, const Metadata& metadata) override;
    void write(const Band& band) override;
    void finish() override;

private:
    int row = 0;
};

// As many rows as make bands that stay in a cache.
int bandRows(const Shape& shape);

// Moves a whole picture, begin() and finish() included, in bands of `rows`; 0: of bandRows().
void copyRows(RowSource& from, RowSink& to, int rows = 0);

Picture readRows(RowSource& from);
void writeRows(const Picture& picture, RowSink& to);

// The file that `encode`, of a source and a sink, makes of a picture in memory.
template <class Encode> Bytes encodedInMemory(const Picture& picture, Encode encode) {
    PictureSource source(picture);
    MemorySink sink;
    encode(source, sink);
    return std::move(sink.bytes);
}

} // namespace codecs

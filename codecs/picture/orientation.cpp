// orientation.cpp - the eight orientations, and pixels moved by them.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/orientation.h"

#include "codecs/picture/exif.h"

#include <algorithm>
#include <cstring>

namespace codecs {
namespace {

class TurnedRows final : public RowSource {
public:
    TurnedRows(Rows source, int orientation) : from(std::move(source)), turn(stepsOf(turnOf(orientation))) {
        form = from->shape();
        beside = from->metadata();
        setOrientation(beside, 1);
        if (turn.exchanged) {
            std::swap(form.width, form.height);
            if (beside.resolution) std::swap(beside.resolution->x, beside.resolution->y);
        }
        pixelBytes = std::size_t(form.channels) * (form.wide() ? 2 : 1);
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        const std::size_t size = form.rowBytes();
        band.resize(std::max(band.size(), size * std::size_t(n)));
        // Rows that come in their order, whether mirrored or not, need no picture in memory.
        const bool whole = turn.exchanged || turn.down;
        if (whole && picture.shape().height == 0) picture = readRows(*from);
        const Band source = whole ? Band{} : from->next(n);
        for (int y = 0; y < n && !turn.exchanged; ++y) {
            const int sourceY = turn.down ? form.height - 1 - (row + y) : y;
            line(whole ? picture.bytes(sourceY).data() : source.row(y), band.data() + size * std::size_t(y));
        }
        if (turn.exchanged) columns(n);
        row += n;
        return {band.data(), std::ptrdiff_t(size), n};
    }
    std::vector<std::string> warnings() const override { return from->warnings(); }

private:
    // A row of the source as a row, backwards or not.
    void line(const std::uint8_t* source, std::uint8_t* to) const {
        if (!turn.right) {
            std::memcpy(to, source, form.rowBytes());
            return;
        }
        const std::uint8_t* pixel = source + form.rowBytes();
        for (int x = 0; x < form.width; ++x, to += pixelBytes) std::memcpy(to, pixel -= pixelBytes, pixelBytes);
    }

    // Columns of the source as rows: each of its rows gives a pixel to each of them.
    void columns(int n) {
        const std::size_t size = form.rowBytes();
        for (int x = 0; x < form.width; ++x) {
            const std::uint8_t* source = picture.bytes(turn.down ? form.width - 1 - x : x).data();
            for (int y = 0; y < n; ++y) {
                const int sourceX = turn.right ? form.height - 1 - (row + y) : row + y;
                std::memcpy(band.data() + size * std::size_t(y) + pixelBytes * std::size_t(x),
                            source + pixelBytes * std::size_t(sourceX), pixelBytes);
            }
        }
    }

    Rows from;
    TurnSteps turn;
    std::size_t pixelBytes = 0;
    Picture picture;
    Samples band;
    int row = 0;
};

// Turns what a sink is given, once all of it is there.
class TurningSink final : public RowSink {
public:
    explicit TurningSink(std::unique_ptr<RowSink> sink) : to(std::move(sink)) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        turns = orientationOf(metadata) != 1;
        (turns ? gathered : *to).begin(shape, metadata);
    }
    void write(const Band& band) override { (turns ? gathered : *to).write(band); }
    void finish() override {
        if (!turns) return to->finish();
        gathered.finish();
        copyRows(*upright(std::make_unique<PictureSource>(gathered.picture)), *to);
    }
    std::vector<std::string> warnings() const override { return to->warnings(); }

private:
    std::unique_ptr<RowSink> to;
    bool turns = false;
    PictureSink gathered;
};

} // namespace

Turn turnOf(int orientation) { return Turn(orientation - 1); }

TurnSteps stepsOf(Turn turn) {
    static constexpr TurnSteps steps[] = {{false, false, false}, {false, true, false}, {false, true, true},
                                          {false, false, true},  {true, false, false}, {true, false, true},
                                          {true, true, true},    {true, true, false}};
    return steps[std::size_t(turn)];
}

int orientationOf(const Metadata& metadata) {
    if (metadata.exif.empty()) return 1;
    const auto directory = parseExif(metadata.exif);
    const ExifEntry* entry = directory ? findEntry(*directory, kExifOrientation) : nullptr;
    // Of numbers of any width the low bytes come first, and 1 to 8 is in the first two.
    const unsigned v = entry && entry->value.size() >= 2 ? entry->value[0] | entry->value[1] << 8 : 1;
    return v >= 1 && v <= 8 ? int(v) : 1;
}

void setOrientation(Metadata& metadata, int orientation) {
    auto directory = metadata.exif.empty() ? ExifDirectory{} : parseExif(metadata.exif);
    if (!directory || (directory->empty() && orientation == 1)) return;
    const ExifEntry* entry = findEntry(*directory, kExifOrientation);
    // Where it stands, if it can be: the rest, a maker's own notes included, stays as it is.
    if (entry && overwriteNumber(metadata.exif, *entry, unsigned(orientation))) return;
    if (!entry && orientation == 1) return;
    // An entry that is no single number gives way to one that is.
    std::erase_if(*directory, [](const ExifEntry& e) { return e.tag == kExifOrientation; });
    directory->push_back(shortEntry(kExifOrientation, unsigned(orientation)));
    metadata.exif = serialiseExif(*directory);
}

void setPixelSize(Metadata& metadata, int width, int height) {
    const auto directory = metadata.exif.empty() ? std::nullopt : parseExif(metadata.exif);
    const ExifEntry* details = directory ? findEntry(*directory, kExifDetails) : nullptr;
    if (!details) return;
    for (const auto& [tag, size] : {std::pair{kExifWidth, width}, {kExifHeight, height}})
        if (const ExifEntry* entry = findEntry(details->children, tag))
            overwriteNumber(metadata.exif, *entry, unsigned(size));
}

Rows upright(Rows from) {
    const int orientation = orientationOf(from->metadata());
    if (orientation == 1) return from;
    return std::make_unique<TurnedRows>(std::move(from), orientation);
}

std::unique_ptr<RowSink> uprightBefore(std::unique_ptr<RowSink> to) {
    return std::make_unique<TurningSink>(std::move(to));
}

} // namespace codecs

// convert.cpp - sources that change the rows of another, a function a row.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/convert.h"

#include "zmxj.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace codecs {
namespace {

// One row in, one row out.
using RowFunction = std::function<void(const std::uint8_t*, std::uint8_t*)>;

class ConvertedRows final : public RowSource {
public:
    ConvertedRows(Rows source, const Shape& to, RowFunction function)
        : from(std::move(source)), row(std::move(function)) {
        form = to;
        beside = from->metadata();
    }

    Band next(int rows) override {
        const Band band = from->next(rows);
        const std::size_t size = form.rowBytes();
        buffer.resize(std::max(buffer.size(), size * std::size_t(band.rows)));
        for (int y = 0; y < band.rows; ++y) row(band.row(y), buffer.data() + size * std::size_t(y));
        return {buffer.data(), std::ptrdiff_t(size), band.rows};
    }
    std::vector<std::string> warnings() const override { return from->warnings(); }

private:
    Rows from;
    RowFunction row;
    Samples buffer;
};

// The same samples: another shape, other metadata, a part.
class ViewedRows final : public RowSource {
public:
    ViewedRows(Rows source, const Shape& to, Metadata metadata, int x = 0, int y = 0)
        : from(std::move(source)), above(y),
          before(std::ptrdiff_t(std::size_t(x) * (from->shape().rowBytes() / std::size_t(from->shape().width)))) {
        form = to;
        beside = std::move(metadata);
    }

    Band next(int rows) override {
        while (above > 0) above -= from->next(std::min(above, bandRows(from->shape()))).rows;
        const Band band = from->next(std::min(rows, form.height - given));
        given += band.rows;
        return {band.data + before, band.step, band.rows};
    }
    std::vector<std::string> warnings() const override { return from->warnings(); }

private:
    Rows from;
    int above, given = 0;
    std::ptrdiff_t before; // bytes of a row
};

class BorrowedRows final : public RowSource {
public:
    explicit BorrowedRows(RowSource& source) : from(source) {
        form = from.shape();
        beside = from.metadata();
    }
    Band next(int rows) override { return from.next(rows); }
    std::vector<std::string> warnings() const override { return from.warnings(); }

private:
    RowSource& from;
};

// Gives the band that a sink was just given.
class FedRows final : public RowSource {
public:
    FedRows(const Shape& shape, const Metadata& metadata) {
        form = shape;
        beside = metadata;
    }
    void feed(const Band& band) { fed = band; }
    Band next(int) override { return fed; }

private:
    Band fed;
};

class ChangingSink final : public RowSink {
public:
    ChangingSink(std::unique_ptr<RowSink> sink, RowChange function)
        : to(std::move(sink)), change(std::move(function)) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        auto first = std::make_unique<FedRows>(shape, metadata);
        fed = first.get();
        chain = change(std::move(first));
        to->begin(chain->shape(), chain->metadata());
    }
    void write(const Band& band) override {
        fed->feed(band);
        to->write(chain->next(band.rows));
    }
    void finish() override { to->finish(); }
    std::vector<std::string> warnings() const override { return to->warnings(); }

private:
    std::unique_ptr<RowSink> to;
    RowChange change;
    Rows chain;
    FedRows* fed = nullptr; // the front of the chain
};

// Calls `put` for each pixel with the two of them as arrays of samples of the right type.
template <class Put> RowFunction byPixel(const Shape& in, const Shape& out, Put put) {
    const auto loop = [in, out, put](const auto* from, auto* to) {
        for (int x = 0; x < in.width; ++x, from += in.channels, to += out.channels) put(from, to);
    };
    if (!in.wide()) return loop;
    return [loop](const std::uint8_t* from, std::uint8_t* to) {
        loop(reinterpret_cast<const std::uint16_t*>(from), reinterpret_cast<std::uint16_t*>(to));
    };
}
template <class Put> Rows converted(Rows from, const Shape& to, Put put) {
    RowFunction row = byPixel(from->shape(), to, put);
    return std::make_unique<ConvertedRows>(std::move(from), to, std::move(row));
}

template <class In, class Out>
void lookUp(const std::uint16_t* table, const std::uint8_t* in, std::uint8_t* out, std::size_t samples) {
    const auto* from = reinterpret_cast<const In*>(in);
    auto* to = reinterpret_cast<Out*>(out);
    for (std::size_t i = 0; i < samples; ++i) to[i] = Out(table[from[i]]);
}

} // namespace

DepthTable::DepthTable(int f, int t) : from(f), to(t) {
    const auto most = unsigned(from);
    // Each value that the type can hold has an entry, so that no sample looks behind the table.
    if (changes()) table.resize(most > 255 ? 65536 : 256);
    for (std::size_t v = 0; v < table.size(); ++v)
        table[v] = std::uint16_t((std::min<std::uint64_t>(v, most) * unsigned(to) + most / 2) / most);
}

void DepthTable::convert(const std::uint8_t* in, std::uint8_t* out, std::size_t samples) const {
    if (!changes())
        std::copy_n(in, samples * (to > 255 ? 2 : 1), out);
    else if (from > 255)
        (to > 255 ? lookUp<std::uint16_t, std::uint16_t> : lookUp<std::uint16_t, std::uint8_t>)(table.data(), in, out,
                                                                                                samples);
    else
        (to > 255 ? lookUp<std::uint8_t, std::uint16_t> : lookUp<std::uint8_t, std::uint8_t>)(table.data(), in, out,
                                                                                              samples);
}

std::vector<std::string> depthChange(int from, int to, const std::string& container) {
    const bool fillsItsBits = std::has_single_bit(unsigned(from) + 1);
    if (from == to || (from < to && fillsItsBits)) return {};
    return {"samples up to " + std::to_string(from) + " are scaled to those of " + container + ", up to " +
            std::to_string(to)};
}

Rows withDepth(Rows from, int maxval) {
    const DepthTable table(from->shape().maxval, maxval);
    if (!table.changes()) return from;
    Shape to = from->shape();
    to.maxval = maxval;
    return std::make_unique<ConvertedRows>(std::move(from), to, [table, to](const std::uint8_t* in, std::uint8_t* out) {
        table.convert(in, out, to.rowSamples());
    });
}

Rows withoutAlpha(Rows from) {
    Shape to = from->shape();
    if (!to.alpha) return from;
    --to.channels;
    to.alpha = false;
    return converted(std::move(from), to, [n = to.channels](const auto* p, auto* q) { std::copy_n(p, n, q); });
}

Rows asGrey(Rows from) {
    Shape to = from->shape();
    if (to.colour == Colour::grey) return from;
    if (to.colour != Colour::rgb) throw Error("only grey and RGB pictures have a luma");
    const bool alpha = to.alpha;
    to.channels = 1 + int(alpha);
    to.colour = Colour::grey;
    if (to.maxval == 255 && !alpha)
        return std::make_unique<ConvertedRows>(std::move(from), to, [to](const std::uint8_t* in, std::uint8_t* out) {
            zmxiRGBToY_JPEG_8u_C3C1R(in, 3 * to.width, out, to.width, {to.width, 1});
        });
    // The luma of ITU-T T.871 in 16 fractional bits.
    return converted(std::move(from), to, [alpha](const auto* p, auto* q) {
        q[0] = std::remove_reference_t<decltype(*q)>((19595u * p[0] + 38470u * p[1] + 7471u * p[2] + 32768u) >> 16);
        if (alpha) q[1] = p[3];
    });
}

Rows asRgb(Rows from) {
    const Shape in = from->shape();
    if (in.colour == Colour::rgb) return from;
    if (in.colour == Colour::other) throw Error("only grey and CMYK pictures can be made RGB");
    Shape to = in;
    to.channels = 3 + int(in.alpha);
    to.colour = Colour::rgb;
    if (in.colour == Colour::grey)
        return converted(std::move(from), to, [alpha = in.alpha](const auto* p, auto* q) {
            q[0] = q[1] = q[2] = p[0];
            if (alpha) q[3] = p[1];
        });
    return converted(std::move(from), to, [in](const auto* p, auto* q) {
        const auto most = unsigned(in.maxval);
        for (int c = 0; c < 3; ++c)
            q[c] =
                std::remove_reference_t<decltype(*q)>(((most - p[c]) * std::uint64_t(most - p[3]) + most / 2) / most);
        if (in.alpha) q[3] = p[4];
    });
}

Rows withAlpha(Rows from) {
    const Shape in = from->shape();
    if (in.alpha) return from;
    Shape to = in;
    ++to.channels;
    to.alpha = true;
    return converted(std::move(from), to, [in](const auto* p, auto* q) {
        std::copy_n(p, in.channels, q);
        q[in.channels] = std::remove_reference_t<decltype(*q)>(in.maxval);
    });
}

Rows inverted(Rows from) {
    const Shape same = from->shape();
    return converted(std::move(from), same, [same](const auto* p, auto* q) {
        for (int c = 0; c < same.channels; ++c)
            q[c] = std::remove_reference_t<decltype(*q)>(c < same.colours() ? same.maxval - p[c] : p[c]);
    });
}

Rows withRedAndBlueExchanged(Rows from) {
    const Shape same = from->shape();
    return converted(std::move(from), same, [same](const auto* p, auto* q) {
        std::copy_n(p, same.channels, q);
        std::swap(q[0], q[2]);
    });
}

Rows cropped(Rows from, int x, int y, int width, int height) {
    Shape to = from->shape();
    if (x < 0 || y < 0 || width < 1 || height < 1 || width > to.width - x || height > to.height - y)
        throw Error("the part to crop is not inside the picture of " + std::to_string(to.width) + " by " +
                    std::to_string(to.height));
    to.width = width;
    to.height = height;
    const Metadata beside = from->metadata();
    return std::make_unique<ViewedRows>(std::move(from), to, beside, x, y);
}

Rows stripped(Rows from) {
    const Shape same = from->shape();
    return std::make_unique<ViewedRows>(std::move(from), same, Metadata{});
}

Rows withColour(Rows from, Colour colour, bool alpha) {
    Shape to = from->shape();
    to.colour = colour;
    to.alpha = alpha;
    const Metadata beside = from->metadata();
    return std::make_unique<ViewedRows>(std::move(from), to, beside);
}

Rows borrowed(RowSource& from) { return std::make_unique<BorrowedRows>(from); }

std::unique_ptr<RowSink> changedBefore(std::unique_ptr<RowSink> to, RowChange change) {
    return std::make_unique<ChangingSink>(std::move(to), std::move(change));
}

} // namespace codecs

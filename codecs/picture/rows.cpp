// rows.cpp - sources and sinks of rows in memory, and the way from one to the other.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/rows.h"

#include <algorithm>
#include <cstring>

namespace codecs {

PictureSource::PictureSource(const Picture& from) : picture(from) {
    form = from.shape();
    beside = from.metadata;
}

Band PictureSource::next(int rows) {
    const int n = std::min(rows, form.height - row);
    row += n;
    return picture.band(row - n, n);
}

void PictureSink::begin(const Shape& shape, const Metadata& metadata) {
    picture = Picture(shape, metadata);
    row = 0;
}

void PictureSink::write(const Band& band) {
    if (band.rows > picture.shape().height - row) throw Error("more rows than the picture has");
    const std::size_t size = picture.shape().rowBytes();
    for (int y = 0; y < band.rows; ++y) std::memcpy(picture.bytes(row++).data(), band.row(y), size);
}

void PictureSink::finish() {
    if (row != picture.shape().height) throw Error("the picture ends at row " + std::to_string(row));
}

int bandRows(const Shape& shape) {
    constexpr std::size_t kBandBytes = std::size_t(1) << 17;
    return int(std::clamp<std::size_t>(kBandBytes / std::max<std::size_t>(shape.rowBytes(), 1), 1, 1024));
}

// The sink hears of the shape first, and of the end last.
void copyRows(RowSource& from, RowSink& to, int rows) {
    const Shape& shape = from.shape();
    if (rows <= 0) rows = bandRows(shape);
    to.begin(shape, from.metadata());
    for (int y = 0; y < shape.height;) {
        const Band band = from.next(rows);
        to.write(band);
        y += band.rows;
    }
    to.finish();
}

Picture readRows(RowSource& from) {
    PictureSink sink;
    copyRows(from, sink);
    return std::move(sink.picture);
}

void writeRows(const Picture& picture, RowSink& to) {
    PictureSource source(picture);
    copyRows(source, to, picture.shape().height);
}

} // namespace codecs

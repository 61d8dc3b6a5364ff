// SPDX-License-Identifier: BSD-2-Clause
#include "python/src/codecs/arrays.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace binding {
namespace {

// Whether the samples of a row lie side by side, and words where words may lie.
bool isRowwise(const py::array& a) {
    const py::ssize_t item = a.itemsize(), channels = a.ndim() == 3 ? a.shape(2) : 1;
    const bool near = a.ndim() < 3 || channels == 1 || a.strides(2) == item;
    const bool packed = a.shape(1) == 1 || a.strides(1) == item * channels;
    const bool aligned = reinterpret_cast<std::uintptr_t>(a.data()) % std::size_t(item) == 0 &&
                         (a.shape(0) == 1 || a.strides(0) % item == 0);
    return near && packed && aligned;
}

void checkKind(const py::array& a) {
    // Native words and bytes only: the Python side has converted what else there is.
    if (!(py::isinstance<py::array_t<std::uint8_t>>(a) || py::isinstance<py::array_t<std::uint16_t>>(a)))
        throw py::type_error("samples are uint8 or uint16");
    if (a.ndim() != 2 && a.ndim() != 3) refuse("an array of shape (height, width) or (height, width, channels)");
    for (py::ssize_t i = 0; i < a.ndim(); ++i)
        if (a.shape(i) < 1 || a.shape(i) > INT_MAX / 8) refuse("an array without pixels, or with too many in a row");
    if (!isRowwise(a)) refuse("the samples of a row do not lie side by side");
}

codecs::Shape shapeOf(const py::array& a, int bits, const std::string& colour) {
    const int channels = a.ndim() == 3 ? int(std::min<py::ssize_t>(a.shape(2), INT_MAX)) : 1;
    codecs::Shape shape = codecs::shapeOf(int(a.shape(1)), int(a.shape(0)), channels, (1 << bits) - 1);
    if (colour == "cmyk") {
        if (channels != 4) refuse("CMYK is of 4 channels");
        shape.colour = codecs::Colour::cmyk;
        shape.alpha = false;
    } else if (colour == "other") {
        shape.colour = channels == 1 ? codecs::Colour::grey : codecs::Colour::other;
        shape.alpha = false;
    }
    // The codecs measure depth by the largest sample, and width by whether that exceeds a byte.
    if (shape.wide() != (a.itemsize() == 2)) refuse("uint8 holds up to 8 bits, uint16 9 to 16");
    return shape;
}

template <class T> bool anyAbove(const std::uint8_t* row, std::size_t samples, unsigned largest) {
    T most = 0;
    for (std::size_t i = 0; i < samples; ++i) {
        T sample;
        std::memcpy(&sample, row + i * sizeof(T), sizeof(T));
        most = std::max(most, sample);
    }
    return most > largest;
}

} // namespace

void refuse(const std::string& what) { throw py::value_error(what); }

FileView::FileView(const py::buffer& object) : info(object.request()) {
    if (info.itemsize != 1 || info.ndim != 1 || (info.size > 1 && info.strides[0] != 1))
        refuse("a file is bytes that lie side by side");
}

ArraySource::ArraySource(const py::array& pixels, int bits, const std::string& colour) {
    checkKind(pixels);
    form = shapeOf(pixels, bits, colour);
    first = static_cast<const std::uint8_t*>(pixels.data());
    step = pixels.strides(0);
}

void ArraySource::checkSamples() const {
    const bool full = form.maxval == (form.wide() ? 0xFFFF : 0xFF);
    for (int y = 0; !full && y < form.height; ++y) {
        const std::uint8_t* samples = first + step * y;
        if (form.wide() ? anyAbove<std::uint16_t>(samples, form.rowSamples(), unsigned(form.maxval))
                        : anyAbove<std::uint8_t>(samples, form.rowSamples(), unsigned(form.maxval)))
            throw codecs::Error("row " + std::to_string(y) + " has samples above " + std::to_string(form.maxval));
    }
}

codecs::Band ArraySource::next(int rows) {
    const codecs::Band band{first + step * row, step, std::min(rows, form.height - row)};
    row += band.rows;
    return band;
}

ArraySink::ArraySink(const std::optional<py::array>& out) : given(out) {
    if (!given) return;
    checkKind(*given);
    to = static_cast<std::uint8_t*>(given->mutable_data()); // throws where it is read-only
    step = given->strides(0);
    givenItem = std::size_t(given->itemsize());
    givenShape.assign(given->shape(), given->shape() + given->ndim());
    if (givenShape.size() == 2) givenShape.push_back(1);
}

void ArraySink::begin(const codecs::Shape& shape, const codecs::Metadata&) {
    form = shape;
    row = 0;
    if (given) {
        const std::vector<py::ssize_t> wanted{shape.height, shape.width, shape.channels};
        if (wanted != givenShape || givenItem != (shape.wide() ? 2u : 1u))
            throw codecs::Error("out is not of the picture's shape and type: " + std::to_string(shape.height) + " x " +
                                std::to_string(shape.width) + " x " + std::to_string(shape.channels) +
                                (shape.wide() ? ", uint16" : ", uint8"));
        return;
    }
    memory = std::make_unique<codecs::Samples>(form.rowBytes() * std::size_t(form.height));
    to = memory->data();
    step = std::ptrdiff_t(form.rowBytes());
}

void ArraySink::write(const codecs::Band& band) {
    for (int y = 0; y < band.rows && row < form.height; ++y, ++row)
        std::memcpy(to + step * row, band.row(y), form.rowBytes());
}

void ArraySink::finish() {
    // A codec that ends early has said so; what it has not written is not left to chance.
    for (; row < form.height; ++row) std::memset(to + step * row, 0, form.rowBytes());
}

py::array ArraySink::array() {
    if (given) return *given;
    if (!memory) throw codecs::Error("no picture");
    std::vector<py::ssize_t> shape{form.height, form.width};
    if (form.channels > 1) shape.push_back(form.channels);
    codecs::Samples* const kept = memory.release();
    const py::capsule owner(kept, [](void* samples) { delete static_cast<codecs::Samples*>(samples); });
    if (form.wide())
        return py::array_t<std::uint16_t>(shape, reinterpret_cast<const std::uint16_t*>(kept->data()), owner);
    return py::array_t<std::uint8_t>(shape, kept->data(), owner);
}

py::bytes toBytes(const codecs::Bytes& file) {
    return py::bytes(reinterpret_cast<const char*>(file.data()), file.size());
}

} // namespace binding

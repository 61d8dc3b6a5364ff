// arrays.h - NumPy arrays as the sources and sinks of the codecs, and bytes-like objects as their files.
//
// Nothing here copies samples but a sink, which puts the rows where they are to stay. While a codec works the
// interpreter is free for other threads: what it calls of these classes meanwhile touches no Python object.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <optional>
#include <string>

namespace binding {

namespace py = pybind11;

// What a codec tells of an array that it cannot take; ValueError in Python.
[[noreturn]] void refuse(const std::string& what);

// The bytes of an object, for as long as this lives; the object cannot be resized meanwhile.
class FileView {
public:
    explicit FileView(const py::buffer& object);
    codecs::ByteView bytes() const { return {static_cast<const std::uint8_t*>(info.ptr), std::size_t(info.size)}; }

private:
    py::buffer_info info;
};

// The rows of an array of 8 or 16 bits, height x width or height x width x channels. Its samples lie side by side in a
// row; how far rows are apart, and in which direction, is free. The caller of the codec holds the array.
class ArraySource final : public codecs::RowSource {
public:
    // `colour`: empty, by the number of channels; else "cmyk", or "other": as they are, without alpha.
    ArraySource(const py::array& pixels, int bits, const std::string& colour);
    // Throws where a sample is larger than its bits allow. Without the interpreter's lock.
    void checkSamples() const;
    codecs::Band next(int rows) override;

private:
    const std::uint8_t* first = nullptr;
    std::ptrdiff_t step = 0;
    int row = 0;
};

// Rows into memory of its own, or into an array that the caller has given.
class ArraySink final : public codecs::RowSink {
public:
    explicit ArraySink(const std::optional<py::array>& out);
    void begin(const codecs::Shape& shape, const codecs::Metadata& metadata) override;
    void write(const codecs::Band& band) override;
    void finish() override;
    // The array, when the codec is done: the one that was given, or one that owns the memory.
    py::array array();

private:
    std::optional<py::array> given;
    std::vector<py::ssize_t> givenShape;
    std::size_t givenItem = 0;
    codecs::Shape form;
    std::unique_ptr<codecs::Samples> memory;
    std::uint8_t* to = nullptr;
    std::ptrdiff_t step = 0;
    int row = 0;
};

// Calls a codec while other threads run Python.
template <class Call> auto unlocked(Call call) {
    const py::gil_scoped_release released;
    return call();
}

py::bytes toBytes(const codecs::Bytes& file);

// The parts of the module.
void addJpeg(py::module_& module);
void addJpeg2000(py::module_& module);
void addTextures(py::module_& module);
void addPackBits(py::module_& module);

} // namespace binding

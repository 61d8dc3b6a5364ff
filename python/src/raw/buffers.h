// buffers.h - arrays of Python as pointers, after it was made sure that all that a call may touch lies within them.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

namespace binding::raw {

namespace py = pybind11;

// What of a plane a call may touch, in elements and rows, margins ahead of the first element included.
struct Extent {
    std::int64_t rows = 0, columns = 0;
    std::int64_t rowsAhead = 0, columnsAhead = 0;
};

// How large an array is: rows, and elements in a row.
struct Measure {
    std::int64_t rows = 1, columns = 1;
};

// The kinds of elements, as the buffer protocol names them.
enum class Kind : std::uint8_t { unsignedInteger, signedInteger, floating };
struct Element {
    Kind kind;
    py::ssize_t bytes;
};
template <class T> constexpr Element elementOf() {
    return {std::is_floating_point_v<T> ? Kind::floating
            : std::is_signed_v<T>       ? Kind::signedInteger
                                        : Kind::unsignedInteger,
            py::ssize_t(sizeof(T))};
}

// The memory of an object, held for as long as this lives.
class View {
public:
    // TypeError where the elements are of another type, or the memory is not to be written.
    View(PyObject* object, const std::string& name, Element element, bool writable);
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    ~View() { PyBuffer_Release(&buffer); }

    Measure measure() const;
    std::size_t bytes() const { return std::size_t(buffer.len); }
    // Bytes between rows; ValueError where an int cannot tell them.
    int step() const;
    // The first element of a plane; ValueError where the array is too small, or the elements of a row do not lie side
    // by side.
    char* plane(const Extent& extent) const;
    // The first of `count` elements without gaps, aligned; `ahead` of them lie ahead of it.
    char* block(std::int64_t count, std::int64_t ahead) const;

private:
    [[noreturn]] void refuse(const std::string& what) const;
    bool isPacked(int from) const;

    Py_buffer buffer{};
    std::string name;
};

} // namespace binding::raw

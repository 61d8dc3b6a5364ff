// SPDX-License-Identifier: BSD-2-Clause
#include "python/src/raw/buffers.h"

#include <climits>
#include <string_view>

namespace binding::raw {
namespace {

// Whether the format of a buffer is one number of this kind in this machine's byte order. Integers of 32 bits may have
// either sign: counts of symbols are made as one and taken as the other.
bool matches(const char* format, py::ssize_t bytes, Element wanted) {
    const std::string_view text = format ? format : "B";
    const bool ordered = !text.empty() && (text[0] == '@' || text[0] == '=' || text[0] == '<');
    const std::string_view kind = text.substr(ordered ? 1 : 0);
    const std::uint16_t one = 1;
    const bool little = *reinterpret_cast<const std::uint8_t*>(&one) == 1;
    if (kind.size() != 1 || bytes != wanted.bytes || (ordered && text[0] == '<' && !little)) return false;
    const bool isUnsigned = std::string_view("BHILQ").find(kind[0]) != std::string_view::npos;
    const bool isSigned = std::string_view("bhilq").find(kind[0]) != std::string_view::npos;
    switch (wanted.kind) {
    case Kind::floating:
        return kind[0] == 'f' || kind[0] == 'd';
    case Kind::signedInteger:
        return isSigned || (isUnsigned && bytes == 4);
    default:
        return isUnsigned || (isSigned && bytes == 4);
    }
}

std::string textOf(Element element) {
    static constexpr const char* kinds[] = {"uint", "int", "float"};
    return kinds[int(element.kind)] + std::to_string(element.bytes * 8);
}

} // namespace

View::View(PyObject* object, const std::string& parameter, Element element, bool writable) : name(parameter) {
    const int flags = PyBUF_STRIDES | PyBUF_FORMAT | (writable ? PyBUF_WRITABLE : 0);
    if (PyObject_GetBuffer(object, &buffer, flags) != 0) {
        PyErr_Clear();
        throw py::type_error(name + ": not " + (writable ? "a writable" : "an") + " array of " + textOf(element));
    }
    if (!matches(buffer.format, buffer.itemsize, element)) {
        PyBuffer_Release(&buffer);
        throw py::type_error(name + ": not an array of " + textOf(element));
    }
}

void View::refuse(const std::string& what) const { throw py::value_error(name + ": " + what); }

// Whether the dimensions behind `from` lie without gaps, in their order.
bool View::isPacked(int from) const {
    py::ssize_t wanted = buffer.itemsize;
    for (int i = buffer.ndim - 1; i >= from; --i) {
        if (buffer.shape[i] != 1 && buffer.strides[i] != wanted) return false;
        wanted *= buffer.shape[i];
    }
    return true;
}

Measure View::measure() const {
    Measure m;
    if (buffer.ndim > 1) m.rows = buffer.shape[0];
    for (int i = buffer.ndim > 1 ? 1 : 0; i < buffer.ndim; ++i) m.columns *= buffer.shape[i];
    return m;
}

int View::step() const {
    // An array of one row has a distance of rows only on paper.
    const bool single = buffer.ndim < 2 || buffer.shape[0] == 1;
    const std::int64_t step = single ? measure().columns * buffer.itemsize : buffer.strides[0];
    if (step < INT_MIN || step > INT_MAX) refuse("rows further apart than 2^31 - 1 bytes");
    return int(step);
}

char* View::plane(const Extent& extent) const {
    const Measure have = measure();
    if (extent.rows > have.rows || extent.columns > have.columns)
        refuse(std::to_string(have.rows) + " rows of " + std::to_string(have.columns) +
               " elements, where a call may touch " + std::to_string(extent.rows) + " rows of " +
               std::to_string(extent.columns));
    if (have.rows > 0 && have.columns > 0 && !isPacked(buffer.ndim > 1 ? 1 : 0))
        refuse("the elements of a row do not lie side by side");
    return static_cast<char*>(buffer.buf) + extent.rowsAhead * step() + extent.columnsAhead * buffer.itemsize;
}

char* View::block(std::int64_t count, std::int64_t ahead) const {
    const std::int64_t have = buffer.len / buffer.itemsize;
    if (count > have) refuse(std::to_string(have) + " elements, where a call may touch " + std::to_string(count));
    if (have > 0 && !isPacked(0)) refuse("the elements do not lie side by side");
    char* const first = static_cast<char*>(buffer.buf) + ahead * buffer.itemsize;
    if (have > 0 && reinterpret_cast<std::uintptr_t>(first) % std::uintptr_t(buffer.itemsize) != 0)
        refuse("the elements are not aligned");
    return first;
}

} // namespace binding::raw

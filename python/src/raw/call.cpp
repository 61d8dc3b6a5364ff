// SPDX-License-Identifier: BSD-2-Clause
#include "python/src/raw/call.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <pybind11/stl.h>

namespace binding::raw {

int Arguments::narrow(int i, std::int64_t value) const {
    if (value < INT_MIN || value > INT_MAX) throw py::value_error(nameOf(i) + ": beyond 32 bits");
    return int(value);
}

int Arguments::number(int i) const { return cast<int>(i, values[std::size_t(i)]); }

Zmx32u Arguments::word(int i) const { return cast<Zmx32u>(i, values[std::size_t(i)]); }

int Arguments::length(int i, std::int64_t there) const {
    const int given = number(i, there);
    demand(given <= there, i, "more than there is");
    return given;
}

ZmxiSize Arguments::size(int i) const {
    const auto [width, height] = cast<std::pair<int, int>>(i, values[std::size_t(i)]);
    return {width, height};
}

ZmxiSize Arguments::size(int i, const Measure& measure, int acrossBy, int downBy) const {
    if (!absent(i)) return size(i);
    return {narrow(i, measure.columns / acrossBy), narrow(i, measure.rows / downBy)};
}

ZmxiRect Arguments::rect(int i, const Measure& measure) const {
    if (absent(i)) return {0, 0, narrow(i, measure.columns), narrow(i, measure.rows)};
    const auto r = cast<std::array<int, 4>>(i, values[std::size_t(i)]);
    // The library takes it as it is.
    demand(r[2] >= 0 && r[3] >= 0, i, "a width or height below 0");
    return {r[0], r[1], r[2], r[3]};
}

Measure Arguments::measure(int i, bool list) {
    if (isNull(i) || absent(i)) return {};
    PyObject* const object = list ? itemOf(i, 0, -1) : values[std::size_t(i)];
    if (object == Py_None) return {};
    Py_buffer b;
    if (PyObject_GetBuffer(object, &b, PyBUF_STRIDES | PyBUF_FORMAT) != 0) {
        PyErr_Clear();
        throw py::type_error(nameOf(i) + ": not an array");
    }
    Measure m;
    if (b.ndim > 1) m.rows = b.shape[0];
    for (int d = b.ndim > 1 ? 1 : 0; d < b.ndim; ++d) m.columns *= b.shape[d];
    PyBuffer_Release(&b);
    return m;
}

std::int64_t Arguments::count(int i) {
    if (isNull(i) || absent(i)) return 0;
    const Measure m = measure(i);
    return m.rows * m.columns;
}

int Arguments::listed(int i) {
    if (isNull(i)) return 0;
    const Py_ssize_t n = PySequence_Size(values[std::size_t(i)]);
    if (n < 0) {
        PyErr_Clear();
        throw py::type_error(nameOf(i) + ": not a list");
    }
    return narrow(i, n);
}

PyObject* Arguments::itemOf(int i, int n, int wanted) {
    const int there = listed(i);
    demand(wanted < 0 || there == wanted, i, "not as many arrays as planes");
    demand(n < there, i, "not as many items as planes");
    PyObject* const item = PySequence_GetItem(values[std::size_t(i)], n);
    if (!item) {
        PyErr_Clear();
        throw py::type_error(nameOf(i) + ": not a list");
    }
    lists.push_back(py::reinterpret_steal<py::object>(item));
    return item;
}

View* Arguments::make(int i, int n, PyObject* object, Element element, bool writable) {
    if (object == Py_None) return nullptr;
    const std::string name = n < 0 ? nameOf(i) : nameOf(i) + "[" + std::to_string(n) + "]";
    held.push_back({i, n, std::make_unique<View>(object, name, element, writable)});
    volume += held.back().view->bytes();
    return held.back().view.get();
}

View* Arguments::viewOf(int i) const { return itemViewOf(i, -1); }

View* Arguments::itemViewOf(int i, int n) const {
    for (const Held& h : held)
        if (h.argument == i && h.item == n) return h.view.get();
    return nullptr;
}

Zmx32u Arguments::forwardStep(int i) {
    const int step = this->step(i);
    demand(step >= 0, i, "rows that run backward");
    return Zmx32u(step);
}

int Arguments::commonStep(int i) {
    int common = 1;
    bool first = true;
    for (const Held& h : held) {
        if (h.argument != i) continue;
        const int step = h.view->step();
        demand(first || step == common, i, "planes of different steps");
        common = step;
        first = false;
    }
    return common;
}

std::vector<int> Arguments::copied(int i) {
    View* const v = view<const int>(i);
    if (!v) return {};
    const std::int64_t n = count(i);
    const int* const from = reinterpret_cast<const int*>(v->block(n, 0));
    return {from, from + n};
}

std::int64_t Arguments::symbols(int i) {
    if (isNull(i)) return 0;
    const Zmx8u* const counts = block<const Zmx8u>(i, 16);
    int sum = 0;
    for (int n = 0; n < 16; ++n) sum += counts[n];
    return sum < 256 ? sum : 256;
}

void Arguments::demandSegments(int i, const std::vector<int>& lengths, int n, std::int64_t there) const {
    demand(n <= int(lengths.size()), i, "not as many segments as nTerms");
    std::int64_t sum = 0;
    for (int k = 0; k < n; ++k) {
        demand(lengths[std::size_t(k)] >= 0, i, "a length below 0");
        sum += lengths[std::size_t(k)];
    }
    demand(sum <= there, i, "segments that are longer than src");
}

const Zmx8u* Arguments::padded(int i, std::int64_t length) {
    const Zmx8u* const stream = block<const Zmx8u>(i, length);
    // A head of a run says 129 and more; its value may be the byte behind the stream.
    if (!stream || length < 1 || length < count(i) || stream[length - 1] < 129) return stream;
    own.assign(stream, stream + length);
    own.push_back(0);
    return own.data();
}

std::int64_t scratchBytes(ZmxStatus (*getSize)(const ZmxiRect*, int*), const ZmxiRect& rect, std::size_t element) {
    const std::int64_t row = std::int64_t(rect.width) * std::int64_t(element) + 32;
    const std::int64_t line = std::int64_t(std::max(rect.width, rect.height)) * 4 + 64;
    if (rect.height > 0 && (INT_MAX - line) / rect.height < row) throw py::value_error("tileRect: work in tiles");
    int bytes = 0;
    getSize(&rect, &bytes);
    return bytes;
}

void Arguments::demand(bool holds, int i, const char* what) const {
    if (!holds) throw py::value_error(nameOf(i) + ": " + what);
}

void Arguments::demandMarker(int i, std::int64_t from) {
    // A block takes at most 64 codes of 16 bits with 16 more each, all stuffed, and a few bytes are read ahead.
    constexpr std::int64_t kMost = 1024;
    const std::int64_t there = count(i);
    const Zmx8u* const bytes = block<const Zmx8u>(i, there);
    if (!bytes) return;
    demand(from <= there, i, "a position behind its end");
    bool safe = there - from >= kMost && bytes[there - 1] != 0xFF;
    for (std::int64_t at = from; !safe && at + 1 < there; ++at)
        safe = bytes[at] == 0xFF && bytes[at + 1] != 0 && bytes[at + 1] != 0xFF;
    demand(safe, i, "no marker behind the position: this function does not look where its source ends");
}

void Arguments::checkState(int i, const Block* block, bool built) const {
    if (!block) return;
    demand(block->get() != nullptr, i, "it was released");
    demand(!built || block->ready, i, "no Init function has built it");
}

py::object Arguments::answer(ZmxStatus status, std::vector<py::object> results) {
    py::object result = py::none();
    if (results.size() == 1) result = results[0];
    if (results.size() > 1) {
        py::tuple all(results.size());
        for (std::size_t n = 0; n < results.size(); ++n) all[n] = results[n];
        result = all;
    }
    if (status == zmxStsNoErr) return result;
    const py::module_ module = py::module_::import("zmxjpx._status");
    if (status < 0) {
        const py::object error = module.attr("StatusError")(status, function.name, result);
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
        throw py::error_already_set();
    }
    module.attr("warn")(status, function.name);
    return result;
}

void keepSamples(Arguments& a, int i, Block& block, ZmxStatus status) {
    if (status != zmxStsNoErr && status != zmxStsCBDamagedErr) return;
    for (Arguments::Held& h : a.held)
        if (h.argument == i) block.samples = std::move(h.view);
}

} // namespace binding::raw

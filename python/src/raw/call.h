// call.h - one call of a function of the library: its arguments from Python, its results and its status.
//
// The functions that python/generate.py writes ask for each argument by its place. None is a null pointer, which the
// library answers with a status; what was left out has a value made of the other arguments.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "python/src/raw/states.h"

#include <array>
#include <deque>
#include <type_traits>

namespace binding::raw {

class Arguments;

// What is known of a function: generate.py makes a list of them.
struct Function {
    const char* name;
    const char* doc; // begins with its signature, which inspect.signature() reads
    std::vector<const char*> parameters;
    int required; // so many of them may not be left out
    py::object (*call)(Arguments&);
};
// The functions of the library, in the order of the headers.
const std::vector<Function>& functions();

// A number that goes in and comes out: an array of at least one element, whose first one is read ahead of the call and
// written behind it, so that nothing can change it between a test and its use.
template <class T> class Cell {
public:
    Cell() = default;
    explicit Cell(T* element) : at(element), kept(element ? *element : T()) {}
    T* pointer() { return at ? &kept : nullptr; }
    T value() const { return kept; }
    void store() const {
        if (at) *at = kept;
    }

private:
    T* at = nullptr;
    T kept{};
};

class Arguments {
public:
    Arguments(const Function& called, std::vector<PyObject*> given) : function(called), values(std::move(given)) {}

    // Whether an argument was left out, by its absence or by `...`.
    bool absent(int i) const { return !values[std::size_t(i)] || values[std::size_t(i)] == Py_Ellipsis; }
    bool isNull(int i) const { return values[std::size_t(i)] == Py_None; }

    int number(int i) const;
    int number(int i, std::int64_t otherwise) const { return absent(i) ? narrow(i, otherwise) : number(i); }
    Zmx32u word(int i) const;
    // A length that was given may not exceed what is there.
    int length(int i, std::int64_t there) const;
    ZmxiSize size(int i) const;
    ZmxiSize size(int i, const Measure& measure, int acrossBy = 1, int downBy = 1) const;
    ZmxiRect rect(int i, const Measure& measure) const;

    // Of an array, or of the first array of a list; 1 x 1 of None.
    Measure measure(int i, bool list = false);
    // How many elements an array has; 0 of None.
    std::int64_t count(int i);
    // How many arrays or objects a list has; 0 of None.
    int listed(int i);

    template <class T> T* plane(int i, const Extent& extent) {
        View* const v = view<T>(i);
        return v ? reinterpret_cast<T*>(v->plane(extent)) : nullptr;
    }
    int step(int i) { return stepOf(viewOf(i)); }
    // For functions that take it as an unsigned number.
    Zmx32u forwardStep(int i);
    template <class T> T* block(int i, std::int64_t count, std::int64_t ahead = 0) {
        View* const v = view<T>(i);
        return v ? reinterpret_cast<T*>(v->block(count, ahead)) : nullptr;
    }
    // Lists of N arrays. All planes are of one step where the function takes but one.
    template <class T, std::size_t N> std::array<T*, N> planes(int i, const std::array<Extent, N>& extents) {
        std::array<T*, N> pointers{};
        for (std::size_t n = 0; n < N; ++n)
            if (View* const v = item<T>(i, int(n), int(N))) pointers[n] = reinterpret_cast<T*>(v->plane(extents[n]));
        return pointers;
    }
    template <class T, std::size_t N> std::array<T*, N> blocks(int i, const std::array<std::int64_t, N>& counts) {
        std::array<T*, N> pointers{};
        for (std::size_t n = 0; n < N; ++n)
            // A count below 0: none is wanted, and none need be there.
            if (View* const v = counts[n] < 0 ? nullptr : item<T>(i, int(n), -1))
                pointers[n] = reinterpret_cast<T*>(v->block(counts[n], 0));
        return pointers;
    }
    int commonStep(int i);
    template <std::size_t N> std::array<int, N> steps(int i) {
        std::array<int, N> result{};
        for (std::size_t n = 0; n < N; ++n) result[n] = stepOf(itemViewOf(i, int(n)));
        return result;
    }

    template <class T> Cell<T> cell(int i) {
        View* const v = view<T>(i);
        return v ? Cell<T>(reinterpret_cast<T*>(v->block(1, 0))) : Cell<T>();
    }
    // A copy, which stays as it was tested.
    std::vector<int> copied(int i);
    template <class T> T* scratch(int i, std::int64_t bytes) {
        if (!absent(i)) return block<T>(i, bytes);
        own.resize(std::size_t(bytes) + 1);
        return own.data();
    }

    // A table or state; `built`: only after an Init function.
    template <class T> State<std::remove_const_t<T>>* state(int i, bool built) {
        auto* const s = isNull(i) ? nullptr : cast<State<std::remove_const_t<T>>*>(i, values[std::size_t(i)]);
        checkState(i, s, built);
        return s;
    }
    template <class T, std::size_t N> std::array<T*, N> states(int i, int wanted);

    // The symbols of a Huffman table, as its 16 counts tell; the library takes at most 256.
    std::int64_t symbols(int i);
    // Segments behind each other, none of which reaches beyond what is there.
    void demandSegments(int i, const std::vector<int>& lengths, int n, std::int64_t there) const;
    // A stream behind which the library may read one byte more, when a packet ends there.
    const Zmx8u* padded(int i, std::int64_t length);

    // ValueErrors with the name of the argument.
    void demand(bool holds, int i, const char* what) const;
    // Of the functions that do not look where their source ends: a marker stands ahead of that, or so many bytes do
    // that no block takes them all.
    void demandMarker(int i, std::int64_t from);

    // Calls the library; without the interpreter's lock where there is much to do and no state that two could use at
    // once.
    template <class Call> ZmxStatus run(bool alone, Call call) {
        if (!alone || volume < kWorthUnlocking) return call();
        const py::gil_scoped_release released;
        return call();
    }
    // What Python gets: nothing, the value, or a tuple of them; StatusError for a status below 0.
    template <class... Results> py::object done(ZmxStatus status, const Results&... results) {
        return answer(status, {py::cast(results)...});
    }
    template <class T> py::object made(T* allocated, ZmxStatus (*give)(T*), ZmxStatus status, ZmxiSize limits = {0, 0});
    template <class T> py::object release(int i, ZmxStatus (*give)(T*));

private:
    static constexpr std::size_t kWorthUnlocking = 1 << 16;

    std::string nameOf(int i) const { return function.parameters[std::size_t(i)]; }
    int narrow(int i, std::int64_t value) const;
    template <class T> T cast(int i, PyObject* object) const {
        try {
            return py::cast<T>(py::handle(object));
        } catch (const py::cast_error&) {
            throw py::type_error(nameOf(i) + ": not of the right type");
        }
    }
    template <class T> View* view(int i) {
        return make(i, -1, values[std::size_t(i)], elementOf<T>(), !std::is_const_v<T>);
    }
    template <class T> View* item(int i, int n, int wanted) {
        return isNull(i) ? nullptr : make(i, n, itemOf(i, n, wanted), elementOf<T>(), !std::is_const_v<T>);
    }
    View* make(int i, int n, PyObject* object, Element element, bool writable);
    PyObject* itemOf(int i, int n, int wanted);
    View* viewOf(int i) const;
    View* itemViewOf(int i, int n) const;
    int stepOf(const View* v) const { return v ? v->step() : 1; }
    void checkState(int i, const Block* block, bool built) const;
    py::object answer(ZmxStatus status, std::vector<py::object> results);

    struct Held {
        int argument, item;
        std::unique_ptr<View> view;
    };
    const Function& function;
    std::vector<PyObject*> values;
    std::deque<Held> held;
    std::vector<py::object> lists; // their items are kept by them
    std::vector<Zmx8u> own;        // scratch memory, or a stream and a byte more
    std::size_t volume = 0;        // of all arrays, in bytes

    friend void keepSamples(Arguments& a, int i, Block& block, ZmxStatus status);
};

// The array that a state of code blocks refers to from now on.
void keepSamples(Arguments& a, int i, Block& block, ZmxStatus status);

template <class T> T* pointerTo(const State<T>* state) { return state ? static_cast<T*>(state->get()) : nullptr; }

// The scratch memory of a wavelet. What GetBufSize tells wraps for absurd sizes, which are refused ahead of it.
std::int64_t scratchBytes(ZmxStatus (*getSize)(const ZmxiRect*, int*), const ZmxiRect& rect, std::size_t element);

template <class T, std::size_t N> std::array<T*, N> Arguments::states(int i, int wanted) {
    std::array<T*, N> pointers{};
    for (int n = 0; n < wanted && n < int(N) && !isNull(i); ++n) {
        PyObject* const object = itemOf(i, n, -1);
        if (object == Py_None) continue;
        auto* const s = cast<State<std::remove_const_t<T>>*>(i, object);
        checkState(i, s, true);
        pointers[std::size_t(n)] = static_cast<T*>(s->get());
    }
    return pointers;
}

template <class T> py::object Arguments::made(T* allocated, ZmxStatus (*give)(T*), ZmxStatus status, ZmxiSize limits) {
    if (!allocated) return answer(status, {py::none()});
    // Each kind has one function that gives it back: it is known by the kind.
    static ZmxStatus (*const giver)(T*) = give;
    auto block = std::make_unique<State<T>>(
        allocated, [](void* memory) { return giver(static_cast<T*>(memory)); }, limits);
    block->ready = status == zmxStsNoErr;
    return answer(status, {py::cast(std::move(block))});
}

template <class T> py::object Arguments::release(int i, ZmxStatus (*give)(T*)) {
    if (isNull(i)) return answer(give(nullptr), {});
    auto* const s = state<T>(i, false);
    demand(s->isAllocated(), i, "its memory is not from an InitAlloc function");
    return answer(s->release(), {});
}

} // namespace binding::raw

// states.h - tables and states of the library as Python objects with lifetimes.
//
// A block is either memory of the object, which an Init function fills, or what an InitAlloc function stored; the
// object gives back what it has. No object is used by two calls at once: calls with one keep the interpreter's lock.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "python/src/raw/buffers.h"

#include "zmxj.h"

#include <functional>
#include <memory>
#include <vector>

namespace binding::raw {

class Block {
public:
    using Free = ZmxStatus (*)(void*);

    explicit Block(std::size_t bytes, ZmxiSize limits = {0, 0})
        : own((bytes + 7) / 8), memory(own.data()), size(limits) {}
    Block(void* allocated, Free give, ZmxiSize limits) : memory(allocated), giveBack(give), size(limits) {}
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block() { release(); }

    void* get() const { return memory; }
    bool isAllocated() const { return giveBack != nullptr; }
    // What the function that gives it back answers; the block is gone.
    ZmxStatus release();
    // Whether a picture of this size fits a state of code blocks.
    bool holds(ZmxiSize wanted) const { return wanted.width <= size.width && wanted.height <= size.height; }

    bool ready = false;            // it was built, and without an error
    std::unique_ptr<View> samples; // the array to which a state of code blocks refers

private:
    std::vector<std::uint64_t> own; // aligned for pointers
    void* memory = nullptr;
    Free giveBack = nullptr;
    ZmxiSize size{0, 0}; // of the largest code block
};

// A class of its own for each kind, so that Python tells them apart.
template <class T> struct State : Block { using Block::Block; };

using DecodeHuffmanSpec = State<ZmxiDecodeHuffmanSpec>;
using EncodeHuffmanSpec = State<ZmxiEncodeHuffmanSpec>;
using DecodeHuffmanState = State<ZmxiDecodeHuffmanState>;
using EncodeHuffmanState = State<ZmxiEncodeHuffmanState>;
using DecodeCBProgrState = State<ZmxiDecodeCBProgrState>;
using EncodeStateJpeg2k = State<ZmxiEncodeState_JPEG2K>;

void addStates(py::module_& module);

} // namespace binding::raw

// SPDX-License-Identifier: BSD-2-Clause
#include "python/src/raw/states.h"

namespace binding::raw {
namespace {

// The bytes that a GetBufSize function tells.
template <class GetSize> std::size_t sizeBy(GetSize getSize) {
    int bytes = 0;
    const ZmxStatus status = getSize(&bytes);
    if (status < 0 || bytes < 1) throw py::value_error("no such size: status " + std::to_string(status));
    return std::size_t(bytes);
}

template <class S> py::class_<S> addState(py::module_& module, const char* name, const char* doc) {
    return py::class_<S>(module, name, doc)
        .def_property_readonly(
            "ready", [](const S& s) { return s.ready; }, "Whether an Init function has built it without an error.")
        .def_property_readonly(
            "released", [](const S& s) { return !s.get(); }, "Whether a Free function has taken it.");
}

template <class S> void addMaking(py::class_<S> type, ZmxStatus (*getSize)(int*)) {
    type.def(py::init([getSize] { return std::make_unique<S>(sizeBy(getSize)); }),
             "Memory for one, which its Init function fills.");
}

} // namespace

ZmxStatus Block::release() {
    ZmxStatus status = zmxStsNoErr;
    if (memory && giveBack) status = giveBack(memory);
    own.clear();
    memory = nullptr;
    ready = false;
    samples.reset();
    return status;
}

void addStates(py::module_& module) {
    addMaking(addState<DecodeHuffmanSpec>(module, "DecodeHuffmanSpec", "A Huffman table for decoders; opaque."),
              zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u);
    addMaking(addState<EncodeHuffmanSpec>(module, "EncodeHuffmanSpec", "A Huffman table for encoders; opaque."),
              zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u);
    addMaking(addState<DecodeHuffmanState>(module, "DecodeHuffmanState", "A bit reader; opaque."),
              zmxiDecodeHuffmanStateGetBufSize_JPEG_8u);
    addMaking(addState<EncodeHuffmanState>(module, "EncodeHuffmanState", "A bit writer; opaque."),
              zmxiEncodeHuffmanStateGetBufSize_JPEG_8u);
    addState<DecodeCBProgrState>(module, "DecodeCBProgrState",
                                 "A code block under decoding; opaque. It keeps the array that it decodes into.")
        .def(py::init([](std::pair<int, int> size) {
                 const ZmxiSize limits{size.first, size.second};
                 const auto getSize = [&](int* bytes) { return zmxiDecodeCBProgrGetStateSize_JPEG2K(limits, bytes); };
                 return std::make_unique<DecodeCBProgrState>(sizeBy(getSize), limits);
             }),
             py::arg("size"), "Memory for code blocks of up to this width and height, which Init fills.");
    addState<EncodeStateJpeg2k>(module, "EncodeState_JPEG2K",
                                "The encoder of code blocks; opaque. zmxiEncodeInitAlloc_JPEG2K() makes one.");
}

} // namespace binding::raw

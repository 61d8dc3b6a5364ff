// png.cpp - PNG files.
// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/container.h"

namespace web {
namespace {

struct Png {
    static constexpr const char *name = "png", *title = "PNG";
    static bool fits(ByteView file) { return beginsWith(file, "\x89PNG"); }
    static constexpr auto open = codecs::openPng;
    static constexpr auto create = codecs::createPng;
};

} // namespace

extern const Format kPng;
const Format kPng = Container<Png>::format;

} // namespace web

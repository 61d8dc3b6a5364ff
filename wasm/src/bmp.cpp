// bmp.cpp - BMP files.
// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/container.h"

namespace web {
namespace {

struct Bmp {
    static constexpr const char *name = "bmp", *title = "BMP";
    static bool fits(ByteView file) { return beginsWith(file, "BM"); }
    static constexpr auto open = codecs::openBmp;
    static constexpr auto create = codecs::createBmp;
};

} // namespace

extern const Format kBmp;
const Format kBmp = Container<Bmp>::format;

} // namespace web

// container.h - kinds of file that are nothing but rows of samples, with nothing to choose.
//
//   Kind::name, title          as options and texts call it
//   Kind::fits(file)           by its first bytes
//   Kind::open, Kind::create   of codecs/picture
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/formats.h"
#include "wasm/src/format.h"

namespace web {

template <class Kind> struct Container {
    static Info info(ByteView file) { return rowsInfo(*Kind::open(sourceOf(file), UINT64_MAX), Kind::title); }
    static Decoded decode(ByteView file, const Request& request) {
        return decodeRows(Kind::open(sourceOf(file), request.maxPixels), request);
    }
    static Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
        o.checkAllUsed(Kind::name);
        return writeContainer(rows, Kind::create(borrowed(file)));
    }
    static constexpr Format format = {Kind::name, Kind::fits, info, decode, encode};
};

} // namespace web

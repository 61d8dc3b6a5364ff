// SPDX-License-Identifier: BSD-2-Clause
#include "wasm/src/answer.h"

#include <array>

namespace web {
namespace {

// One call at a time: a module has one thread.
Answer kept;
std::array<std::uint32_t, 11> words;

template <class T> std::uint32_t addressOf(const T* pointer) {
    return std::uint32_t(reinterpret_cast<std::uintptr_t>(pointer));
}

} // namespace

const std::uint32_t* keep(Answer answer) {
    kept = std::move(answer);
    const auto describe = [](std::size_t at, const auto& bytes) {
        words[at] = addressOf(bytes.data());
        words[at + 1] = std::uint32_t(bytes.size());
    };
    words[0] = kept.failed;
    describe(1, kept.text);
    const codecs::ByteView samples = kept.picture.all();
    if (kept.file.empty())
        describe(3, samples);
    else
        describe(3, kept.file);
    describe(5, kept.picture.metadata.icc);
    describe(7, kept.picture.metadata.exif);
    describe(9, kept.picture.metadata.xmp);
    return words.data();
}

void release() { kept = Answer(); }

} // namespace web

// JPEG files coded anew: turned, mirrored, cut and in other scans. The first four bytes choose how, the others are the
// file. Whatever they are, the coefficients that were to be written are those that stand in the new file, and a picture
// that was turned comes back when it is turned by the opposite.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "fuzz/support/mutator.h"

#include <cstdlib>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg(data, size, most, seed, 4);
}

namespace {

namespace jpeg = codecs::jpeg;
using codecs::Turn;

constexpr std::size_t kChoices = 4;

jpeg::TranscodeOptions optionsOf(codecs::ByteView choices) {
    jpeg::TranscodeOptions how;
    how.maxPixels = 1 << 16;
    how.turn = Turn(choices[0] % 8);
    how.trim = choices[0] & 8;
    how.upright = choices[0] & 16;
    how.strip = choices[0] & 32;
    how.progressive = choices[0] & 64;
    how.restart = choices[0] & 128 ? choices[1] % 16 : -1;
    how.grey = choices[1] & 32;
    // Parts of every kind, also such as lie outside.
    if (choices[1] & 16)
        how.part = jpeg::Part{choices[2] % 64 - 1, choices[3] % 64 - 1, choices[2] / 3, choices[3] / 3};
    return how;
}

jpeg::Transcoded checked(codecs::ByteView file, const jpeg::TranscodeOptions& how) {
    jpeg::Transcoded t = jpeg::transcode(file, how);
    if (t.before != t.after) std::abort();
    return t;
}

Turn opposite(Turn turn) {
    return turn == Turn::quarter ? Turn::threeQuarters : turn == Turn::threeQuarters ? Turn::quarter : turn;
}

// The coefficients of a sound picture of whole units are the same behind a turn and the one that undoes it.
void thereAndBack(codecs::ByteView file, Turn turn) {
    jpeg::TranscodeOptions how;
    how.maxPixels = 1 << 16;
    const std::uint64_t before = checked(file, how).before;
    how.turn = turn;
    const jpeg::Transcoded other = checked(file, how);
    how.turn = opposite(turn);
    if (checked(other.file, how).after != before) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kChoices) return 0;
    const codecs::ByteView choices(data, kChoices), file(data + kChoices, size - kChoices);
    try {
        checked(file, optionsOf(choices));
    } catch (const codecs::Error&) {
    }
    try {
        thereAndBack(file, Turn(choices[0] % 8));
    } catch (const codecs::Error&) {
    }
    return 0;
}

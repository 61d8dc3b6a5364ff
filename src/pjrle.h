// pjrle.h - short moves of bytes for the PackBits coders.
//
// Most packets hold a few bytes, for which a call of the system's block routines costs more than the move itself. Neither
// function touches a byte outside its n: a packet that follows may not fit, and what lies behind then has to stay.
#pragma once

#include "pjrows.h"

#include <cstdint>

// Moves n bytes, 1 or more, between buffers that do not overlap.
inline void copyBytes(const Zmx8u* src, Zmx8u* dst, int n) {
    // Two words of half the span or more, the second flush with the end.
    const auto ends = [=](auto word) {
        using Word = decltype(word);
        const Word first = load<Word>(src, 0), last = load<Word>(src + n - sizeof(Word), 0);
        store(dst, 0, first);
        store(dst + n - sizeof(Word), 0, last);
    };
    if (n > 16) std::memcpy(dst, src, std::size_t(n));
    else if (n >= 8) ends(std::uint64_t());
    else if (n >= 4) ends(Zmx32u());
    else if (n >= 2) ends(Zmx16u());
    else *dst = *src;
}

// Sets n bytes, 1 or more.
inline void setBytes(Zmx8u val, Zmx8u* dst, int n) {
    const auto ends = [=](auto ones) {
        using Word = decltype(ones);
        store(dst, 0, Word(ones * val));
        store(dst + n - sizeof(Word), 0, Word(ones * val));
    };
    if (n > 16) std::memset(dst, val, std::size_t(n));
    else if (n >= 8) ends(std::uint64_t(0x0101010101010101));
    else if (n >= 4) ends(Zmx32u(0x01010101));
    else if (n >= 2) ends(Zmx16u(0x0101));
    else *dst = val;
}

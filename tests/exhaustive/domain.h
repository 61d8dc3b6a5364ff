// domain.h - whole domains: everything that the arithmetic of a function can be given, where that is at most 2^32 values.
//
// A domain is cut into slices, so that a run can be stopped, shared out and sampled. A slice calls the library on rows of
// values and compares with the model (tests/<family>/model/) byte for byte.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace exhaustive {

struct Domain {
    std::string name;     // for the command line
    std::string what;     // for the document
    std::uint64_t slices; // of `values` each
    std::uint64_t values;
    // Whether the library does what the model does in all of a slice.
    std::function<bool(std::uint64_t)> agree;
};
using Domains = std::vector<Domain>;

inline constexpr int kWords = 1 << 16; // values of 16 bits

template <class T> bool same(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// All numbers of 16 bits, from 0 up and from -32768 after 32767.
inline std::vector<Zmx16s> allWords() {
    std::vector<Zmx16s> words(kWords);
    for (int i = 0; i < kWords; ++i) words[std::size_t(i)] = Zmx16s(i);
    return words;
}

void addColours(Domains& to);
void addQuantisers(Domains& to);
void addTextures(Domains& to);
void addPredictors(Domains& to);
void addEntropy(Domains& to);
void addResampling(Domains& to);

} // namespace exhaustive

// mutator.h - changes to whole files that keep them files: lengths are right, tables are tables, numbers are those that one meets.
//
// A fuzzer that changes bytes blindly spends nearly all inputs on the first test of a header. Here a file is taken apart, a
// piece of it is changed, and it is put together again with its lengths; entropy-coded data keep their stuffing. What cannot
// be taken apart, and every fourth input, goes to the fuzzer's own mutator, so that broken files are met as well.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

// The fuzzer's own; other engines have none.
extern "C" [[gnu::weak]] std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace fuzz {

using codecs::Bytes;
using codecs::ByteView;

// The numbers of one mutation, by its seed.
class Dice {
    std::uint32_t state;

public:
    explicit Dice(unsigned seed) : state(seed * 2654435761u + 1) {}
    unsigned next() {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    }
    std::size_t below(std::size_t n) { return n ? next() % n : 0; }
    bool oneIn(unsigned n) { return next() % n == 0; }
};

// Bytes changed by the fuzzer's own mutator, or where there is none by one byte; they grow by no more than `room`.
void mutateBytes(Bytes& bytes, std::size_t room, Dice& dice);

// Changes a file in place, of which `head` bytes ahead of it are choices of the target; its new size.
std::size_t mutateJpeg(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed, std::size_t head = 0);
std::size_t mutateJpeg2000(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed,
                           std::size_t head = 0);

// The frame of both: `change` makes a new file of the old one, or an empty one where it cannot.
template <class Change>
std::size_t mutateFile(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed, std::size_t head,
                       Change change) {
    Dice dice(seed);
    Bytes all(data, data + size);
    Bytes file;
    if (size > head && !dice.oneIn(4)) {
        file = change(ByteView(all).subspan(head), maxSize - head, dice);
        if (head > 0 && dice.oneIn(4)) all[dice.below(head)] = std::uint8_t(dice.next());
    }
    if (file.empty() || file.size() > maxSize - head) {
        mutateBytes(all, maxSize - size, dice);
    } else {
        all.resize(head);
        all.insert(all.end(), file.begin(), file.end());
    }
    for (std::size_t i = 0; i < all.size(); ++i) data[i] = all[i];
    return all.size();
}

} // namespace fuzz

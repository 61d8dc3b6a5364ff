// readers.h - the codecs, each with all that it does to a file that a stranger made, and the memory that it may take for it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <string>
#include <vector>

namespace hostile {

using codecs::Bytes;
using codecs::ByteView;

// The rule of docs/limits.md: so many bytes in any case, for each byte of the file, and for each pixel that is allowed.
struct MemoryRule {
    std::size_t fixed, perByte, perPixel;

    std::size_t limit(std::size_t fileBytes, std::size_t maxPixels) const {
        return fixed + perByte * fileBytes + perPixel * maxPixels;
    }
};

struct Reader {
    const char* name; // also of the folder with samples
    MemoryRule rule;
    // Ways to read a file; how often is how many there are. A message is an answer as good as a picture.
    int ways;
    void (*read)(ByteView file, int way, std::uint64_t maxPixels);
    // A change that knows the format, or null.
    std::size_t (*mutate)(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed, std::size_t head);
};
const std::vector<Reader>& readers();

// Files that are small and ask for much; some for just what is allowed.
struct Bomb {
    std::string name;
    Bytes file;
};
std::vector<Bomb> bombsFor(const std::string& reader, std::uint64_t maxPixels);

} // namespace hostile

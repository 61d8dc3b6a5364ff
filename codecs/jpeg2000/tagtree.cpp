// tagtree.cpp - the shape of a tag tree: each node of a level stands for two by two of the level below.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/tagtree.h"

namespace codecs::jpeg2000 {

// Leaves come first, and each level ahead of the next one up, down to the one root.
TagTree::TagTree(int across, int down) {
    std::size_t first = 0;
    for (;;) {
        const std::size_t next = first + std::size_t(across) * std::size_t(down);
        const int parentsAcross = (across + 1) / 2;
        const bool root = across * std::int64_t(down) <= 1;
        for (int y = 0; y < down; ++y)
            for (int x = 0; x < across; ++x) {
                const std::size_t parent = next + std::size_t(y / 2) * std::size_t(parentsAcross) + std::size_t(x / 2);
                nodes.push_back({std::uint32_t(root ? nodes.size() : parent), kUnknown, 0, false});
            }
        if (root) return;
        first = next;
        across = parentsAcross;
        down = (down + 1) / 2;
    }
}

} // namespace codecs::jpeg2000

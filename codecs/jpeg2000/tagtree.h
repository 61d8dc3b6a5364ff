// tagtree.h - tag trees (B.10.2): the numbers of a grid of code blocks, told as far as a threshold asks for.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"

namespace codecs::jpeg2000 {

class TagTree {
    struct Node {
        std::uint32_t parent; // its own index for the root
        std::int32_t value;   // what the encoder knows, or what the decoder has found
        std::int32_t low;     // nothing below it is possible
        bool known;           // value is settled for the decoder
    };
    std::vector<Node> nodes; // leaves first, row by row, then level by level

public:
    static constexpr std::int32_t kUnknown = 0x7FFFFFFF;

    TagTree() = default;
    TagTree(int across, int down);

    // Encoder: gives a leaf its number; all leaves before the first bit is coded.
    void set(std::size_t leaf, std::int32_t value) {
        for (std::size_t n = leaf;; n = nodes[n].parent) {
            if (nodes[n].value <= value) return;
            nodes[n].value = value;
            if (nodes[n].parent == n) return;
        }
    }

    // Decoder: reads bits until it is known whether the leaf's number is below `threshold`, and says so.
    template <class Bits> bool below(std::size_t leaf, std::int32_t threshold, Bits& bits) {
        return walk(leaf, threshold, [&](Node& n) {
            if (bits.bit()) {
                n.value = n.low;
                n.known = true;
            } else
                ++n.low;
        });
    }
    // Encoder: writes the bits that tell it.
    template <class Bits> void tell(std::size_t leaf, std::int32_t threshold, Bits& bits) {
        walk(leaf, threshold, [&](Node& n) {
            n.known = n.low >= n.value;
            bits.bit(n.known);
            if (!n.known) ++n.low;
        });
    }
    std::int32_t value(std::size_t leaf) const { return nodes[leaf].value; }

private:
    template <class Step> bool walk(std::size_t leaf, std::int32_t threshold, Step step) {
        std::uint32_t path[33];
        int depth = 0;
        for (auto n = std::uint32_t(leaf);; n = nodes[n].parent) {
            path[depth++] = n;
            if (nodes[n].parent == n) break;
        }
        std::int32_t low = 0;
        while (depth-- > 0) {
            Node& n = nodes[path[depth]];
            if (n.low < low) n.low = low;
            while (n.low < threshold && !n.known) step(n);
            low = n.low;
        }
        return nodes[leaf].known && nodes[leaf].value < threshold;
    }
};

} // namespace codecs::jpeg2000

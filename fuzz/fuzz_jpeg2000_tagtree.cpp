// Tag trees (ISO/IEC 15444-1, B.10.2) of any shape: arbitrary bits into a tree, and arbitrary numbers into bits and back.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/bits.h"
#include "codecs/jpeg2000/tagtree.h"
#include "fuzz/support/input.h"

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using fuzz::require;
using jpeg2000::TagTree;

struct Query {
    std::size_t leaf;
    std::int32_t threshold;
};

// Leaves and thresholds in any order; an answer never changes to the contrary.
void fromBits(int across, int down, const std::vector<Query>& queries, codecs::ByteView bytes) {
    TagTree tree(across, down);
    jpeg2000::BitReader bits(bytes);
    try {
        for (const Query& q : queries) {
            const bool below = tree.below(q.leaf, q.threshold, bits);
            if (below) require(tree.value(q.leaf) < q.threshold);
            require(tree.below(q.leaf, q.threshold, bits) == below);
        }
    } catch (const codecs::Error&) {
    }
}

// The decoder answers each question as the encoder knows it, and has read all that was written.
void thereAndBack(int across, int down, const std::vector<Query>& queries, fuzz::Input in) {
    TagTree from(across, down), to(across, down);
    std::vector<std::int32_t> values(std::size_t(across) * std::size_t(down));
    for (std::size_t i = 0; i < values.size(); ++i) from.set(i, values[i] = in.below(40));
    codecs::Bytes bytes;
    jpeg2000::BitWriter writer(bytes);
    for (const Query& q : queries) from.tell(q.leaf, q.threshold, writer);
    writer.finish();
    jpeg2000::BitReader reader(bytes);
    for (const Query& q : queries) require(to.below(q.leaf, q.threshold, reader) == (values[q.leaf] < q.threshold));
    require(reader.finish() == bytes.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const int across = 1 + in.below(40), down = 1 + in.below(40);
    std::vector<Query> queries(1 + in.byte());
    for (Query& q : queries) {
        q.leaf = in.word() % std::size_t(across * down);
        q.threshold = in.below(48);
    }
    fromBits(across, down, queries, in.rest());
    thereAndBack(across, down, queries, in);
    return 0;
}

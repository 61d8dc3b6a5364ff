// codestream.cpp - marker segments, packet headers with their tag trees, and the segments of code blocks.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/codestream.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace model {

namespace {

using Bytes = std::vector<std::uint8_t>;

[[noreturn]] void unknown(const char* what) { throw std::runtime_error(std::string("codestream: ") + what); }

// Packet headers: a bit is stuffed behind a byte 0xFF (B.10.1).
class HeaderBits {
    const Bytes& data;
    std::size_t& at;
    int left = 0, byte = 0;

public:
    HeaderBits(const Bytes& d, std::size_t& position) : data(d), at(position) {}
    int bit() {
        if (left == 0) {
            left = byte == 0xFF ? 7 : 8;
            byte = data.at(at++);
        }
        return byte >> --left & 1;
    }
    int bits(int n) {
        int v = 0;
        while (n-- > 0) v = 2 * v + bit();
        return v;
    }
    // The header ends on a whole byte, which is not 0xFF.
    void finish() {
        if (byte == 0xFF) ++at;
    }
};

// B.10.2. Levels from the leaves up to the root.
class TagTree {
    struct Node {
        int low = 0;
        bool known = false;
    };
    struct Level {
        int width, height;
        std::vector<Node> nodes;
    };
    std::vector<Level> levels;

public:
    TagTree(int width, int height) {
        for (;;) {
            levels.push_back({width, height, std::vector<Node>(std::size_t(width * height))});
            if (width == 1 && height == 1) break;
            width = (width + 1) / 2;
            height = (height + 1) / 2;
        }
    }
    // Whether the leaf's value is below the threshold.
    bool below(HeaderBits& in, int x, int y, int threshold) {
        int low = 0;
        bool known = false;
        for (int i = int(levels.size()) - 1; i >= 0; --i) {
            Level& l = levels[std::size_t(i)];
            Node& n = l.nodes[std::size_t((y >> i) * l.width + (x >> i))];
            n.low = std::max(n.low, low);
            while (!n.known && n.low < threshold)
                if (in.bit())
                    n.known = true;
                else
                    ++n.low;
            low = n.low;
            known = n.known;
        }
        return known && low < threshold;
    }
};

// Table B.4.
int passCount(HeaderBits& in) {
    if (!in.bit()) return 1;
    if (!in.bit()) return 2;
    int n = in.bits(2);
    if (n < 3) return 3 + n;
    n = in.bits(5);
    if (n < 31) return 6 + n;
    return 37 + in.bits(7);
}

int log2Floor(int n) {
    int bits = 0;
    while (n >> (bits + 1)) ++bits;
    return bits;
}

// How many passes the segments of a block hold (B.10.7, D.4.2).
std::vector<int> segmentPasses(unsigned mode, int passes) {
    std::vector<int> all;
    const bool bypass = mode & 1, termAll = mode & 4;
    while (passes > 0) {
        int n = passes;
        if (termAll)
            n = 1;
        else if (bypass)
            n = all.empty() ? 10 : all.size() % 2 ? 2 : 1;
        n = std::min(n, passes);
        all.push_back(n);
        passes -= n;
    }
    return all;
}

} // namespace

Codestream::Codestream(const Bytes& file) {
    std::size_t at = 0;
    const auto word = [&] {
        const int v = file.at(at) << 8 | file.at(at + 1);
        at += 2;
        return v;
    };
    const auto quad = [&] {
        const int high = word();
        return high << 16 | word();
    };

    int blockWidth = 0, blockHeight = 0, guardBits = 0;
    std::vector<int> exponents;
    if (word() != 0xFF4F) unknown("no start");
    for (bool inData = false; !inData;) {
        const int marker = word();
        if (marker == 0xFF93) break;
        const std::size_t segment = at;
        const int length = word();
        switch (marker) {
        case 0xFF51: // SIZ
            word();
            width = quad();
            height = quad();
            if (quad() || quad()) unknown("image offset");
            if (quad() != width || quad() != height || quad() || quad()) unknown("tiles");
            if (word() != 1 || file.at(at) != 7) unknown("not one component of 8 bits");
            break;
        case 0xFF52: // COD
            if (file.at(at) != 0 || file.at(at + 3) != 1) unknown("precincts, layers");
            levels = file.at(at + 5);
            blockWidth = 4 << file.at(at + 6);
            blockHeight = 4 << file.at(at + 7);
            mode = file.at(at + 8);
            if (file.at(at + 9) != 1) unknown("not reversible");
            break;
        case 0xFF5C: // QCD
            if (file.at(at) & 31) unknown("quantised");
            guardBits = file.at(at) >> 5;
            for (int i = 1; i < length - 2; ++i) exponents.push_back(file.at(at + std::size_t(i)) >> 3);
            break;
        case 0xFF64: // COM
        case 0xFF90: // SOT
            break;
        default:
            unknown("marker");
        }
        at = segment + std::size_t(length);
    }

    // One packet to a resolution.
    for (int r = 0; r <= levels; ++r) {
        const int down = r == 0 ? levels : levels - r + 1; // halvings of the bands of this resolution
        const std::size_t first = bands.size();
        const auto half = [&](int n, bool high) {
            for (int i = 0; i < down; ++i) n = high && i == down - 1 ? n / 2 : (n + 1) / 2;
            return n;
        };
        if (r == 0)
            bands.push_back({0, half(width, false), half(height, false), {}});
        else {
            bands.push_back({2, half(width, true), half(height, false), {}});
            bands.push_back({1, half(width, false), half(height, true), {}});
            bands.push_back({3, half(width, true), half(height, true), {}});
        }
        HeaderBits in(file, at);
        if (!in.bit()) unknown("empty packet");
        for (std::size_t b = first; b < bands.size(); ++b) {
            StreamBand& band = bands[b];
            const int across = (band.width + blockWidth - 1) / blockWidth;
            const int down_ = (band.height + blockHeight - 1) / blockHeight;
            if (across == 0 || down_ == 0) continue;
            TagTree inclusion(across, down_), zeroPlanes(across, down_);
            for (int j = 0; j < down_; ++j)
                for (int i = 0; i < across; ++i) {
                    StreamBlock block{i * blockWidth, j * blockHeight, 0, 0, 0, 0, {}, {}};
                    block.width = std::min(blockWidth, band.width - block.x);
                    block.height = std::min(blockHeight, band.height - block.y);
                    if (inclusion.below(in, i, j, 1)) {
                        int zero = 0;
                        while (!zeroPlanes.below(in, i, j, zero + 1)) ++zero;
                        block.planes = guardBits + exponents.at(b) - 1 - zero;
                        block.passes = passCount(in);
                        int lengthBits = 3;
                        while (in.bit()) ++lengthBits;
                        for (int n : segmentPasses(mode, block.passes))
                            block.lengths.push_back(in.bits(lengthBits + log2Floor(n)));
                    }
                    band.blocks.push_back(block);
                }
        }
        in.finish();
        for (std::size_t b = first; b < bands.size(); ++b)
            for (StreamBlock& block : bands[b].blocks)
                for (int n : block.lengths)
                    for (int i = 0; i < n; ++i) block.bytes.push_back(file.at(at++));
    }
    if (word() != 0xFFD9) unknown("packets do not end at the end");
}

Bytes readFile(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + name);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

Picture readPgm(const std::string& name) {
    const Bytes file = readFile(name);
    std::istringstream in(std::string(file.begin(), file.end()));
    std::string magic;
    int most = 0;
    Picture p;
    in >> magic >> p.width >> p.height >> most;
    if (magic != "P5" || most != 255) throw std::runtime_error("not a plain PGM: " + name);
    const std::size_t n = std::size_t(p.width) * std::size_t(p.height);
    if (file.size() < n) throw std::runtime_error("short: " + name);
    p.samples.assign(file.end() - std::ptrdiff_t(n), file.end());
    return p;
}

} // namespace model

// rate.cpp - the passes of a block where its rate and distortion leave the convex hull are never worth a cut. Those on
// it are taken in the order of their slopes; a layer is a threshold for the slope, found by bisection. Its size is
// that of the packets as they would be written.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/rate.h"

#include <algorithm>
#include <cmath>

namespace codecs::jpeg2000 {

namespace {

struct HullPoint {
    int passes;
    double slope, distortion; // of the step that ends here; reduction of the error so far
};

// A block with the cuts that are worth it. A slope picks one of them.
struct HullBlock {
    CodedBlock* block;
    std::vector<HullPoint> hull; // of falling slopes

    const HullPoint* cut(double slope) const {
        const auto end =
            std::partition_point(hull.begin(), hull.end(), [slope](const HullPoint& p) { return p.slope >= slope; });
        return end == hull.begin() ? nullptr : &end[-1];
    }
};

// Passes that cost more for what they give than those behind them fall out.
std::vector<HullPoint> hullOf(const CodedBlock& b) {
    std::vector<HullPoint> hull;
    const auto rateAt = [&](std::size_t points) {
        return points == 0 ? 0.0 : double(b.passes[std::size_t(hull[points - 1].passes) - 1].rate);
    };
    const auto distortionAt = [&](std::size_t points) { return points == 0 ? 0.0 : hull[points - 1].distortion; };
    for (std::size_t i = 0; i < b.passes.size(); ++i) {
        const double distortion = b.passes[i].distortion * b.weight;
        for (;;) {
            const std::size_t n = hull.size();
            const double gained = distortion - distortionAt(n);
            if (gained <= 0) break;
            const double slope = gained / std::max(b.passes[i].rate - rateAt(n), 0.001);
            if (n > 0 && slope >= hull.back().slope) {
                hull.pop_back();
                continue;
            }
            hull.push_back({int(i) + 1, slope, distortion});
            break;
        }
    }
    return hull;
}

// Sets the passes of each layer, for all blocks of a picture together.
class Allocator {
    std::vector<EncodedTile>& tiles;
    const ImageSize& size;
    const HeaderSet& headers;
    std::vector<HullBlock> blocks;
    double error = 0; // without any pass
    double minSlope = 1e300, maxSlope = 0;

    // A layer never takes back what one before it has given.
    void cutAll(int layer, double slope) {
        for (HullBlock& h : blocks) {
            const HullPoint* p = h.cut(slope);
            auto& layers = h.block->layerPasses;
            const int before = layer == 0 ? 0 : layers[std::size_t(layer) - 1];
            layers[std::size_t(layer)] = std::uint16_t(std::max(p ? p->passes : 0, before));
        }
    }
    // What is wrong with the picture if all blocks are cut at a slope.
    double errorAt(double slope) const {
        double left = error;
        for (const HullBlock& h : blocks)
            if (const HullPoint* p = h.cut(slope)) left -= p->distortion;
        return left;
    }

    // The bytes of the packets of the layers up to `last`.
    double packetBytes(int last) const {
        HeaderSet these = headers;
        these.tile.layers = last + 1;
        these.tile.progression = Progression::LRCP; // any order comes to the same size
        double bytes = 0;
        Bytes header;
        for (const EncodedTile& tile : tiles) {
            PacketWriter writer(tile);
            forEachPacket(size, tile.layout, these, [&](const PacketId& id) {
                header.clear();
                bytes += double(writer.writeHeader(id, header));
                bytes += double(header.size()) + (headers.tile.sop ? 6 : 0) + (headers.tile.eph ? 2 : 0);
                return true;
            });
        }
        return bytes;
    }

    // The lowest slope that fulfils good(slope), which holds above it.
    template <class Good> double bisect(Good good) const {
        double low = std::log2(minSlope) - 1, high = std::log2(maxSlope) + 1;
        for (int i = 0; i < 40 && high - low > 1e-4; ++i) {
            // Slopes span many powers of two, so that their logarithm is halved.
            const double middle = (low + high) / 2;
            (good(std::exp2(middle)) ? high : low) = middle;
        }
        return std::exp2(high);
    }

public:
    Allocator(std::vector<EncodedTile>& t, const ImageSize& s, const HeaderSet& h) : tiles(t), size(s), headers(h) {
        for (EncodedTile& tile : tiles)
            for (auto& component : tile.blocks)
                for (CodedBlock& b : component) {
                    b.layerPasses.assign(std::size_t(headers.tile.layers), 0);
                    error += (b.residual + (b.passes.empty() ? 0 : b.passes.back().distortion)) * b.weight;
                    blocks.push_back({&b, hullOf(b)});
                    for (const HullPoint& p : blocks.back().hull) {
                        minSlope = std::min(minSlope, p.slope);
                        maxSlope = std::max(maxSlope, p.slope);
                    }
                }
        // A picture without any pass: every slope cuts the same.
        if (maxSlope == 0) minSlope = maxSlope = 1;
    }

    void everything(int layer) {
        for (HullBlock& h : blocks) h.block->layerPasses[std::size_t(layer)] = std::uint16_t(h.block->passes.size());
    }
    // A layer that does not fit even when empty stays as the layer before it.
    void toBytes(int layer, double limit) {
        const double slope = bisect([&](double s) {
            cutAll(layer, s);
            return packetBytes(layer) <= limit;
        });
        cutAll(layer, slope);
    }
    void toError(int layer, double limit) {
        cutAll(layer, bisect([&](double s) { return errorAt(s) > limit; }) * 0.9999);
    }
};

} // namespace

void allocateLayers(std::vector<EncodedTile>& tiles, const ImageSize& size, const HeaderSet& headers,
                    const RateTarget& target) {
    Allocator allocator(tiles, size, headers);
    for (int layer = 0; layer < headers.tile.layers; ++layer) {
        const auto i = std::size_t(layer);
        if (i < target.errors.size())
            allocator.toError(layer, target.errors[i]);
        else if (i < target.bytes.size() && std::isfinite(target.bytes[i]))
            allocator.toBytes(layer, target.bytes[i]);
        else
            allocator.everything(layer);
    }
}

} // namespace codecs::jpeg2000

// energy.cpp - the core transform over a picture, and what is in each coefficient.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/hdphoto/hdphoto.h"
#include "zmxj.h"

#include <algorithm>
#include <stdexcept>

namespace codecs::hdphoto {
namespace {

void check(ZmxStatus status) {
    if (status != zmxStsNoErr) throw std::logic_error("the transform refuses its arguments: " + std::to_string(status));
}

// A row of blocks of one channel after the other.
class BlockRow {
public:
    BlockRow(const Shape& shape, Energy& sums)
        : form(shape), energy(sums), across((shape.width - 1) / 4 + 1), down((shape.height - 1) / 4 + 1),
          plane(std::size_t(across) * 16), before(plane.size()) {}

    ZmxiSize blocks() const { return {across, down}; }

    // The rows of a picture that stand in block row `y`, four or, at the end, fewer.
    void measure(const Band& band, int y) {
        const ZmxiSize size{4 * across, 4};
        const int step = int(sizeof(Zmx32s)) * size.width;
        for (int c = 0; c < form.channels; ++c) {
            centre(band, c);
            plane = before;
            check(zmxiPCTFwd_HDP_32s_C1IR(plane.data(), step, size));
            add();
            if (energy.coefficients.shape().height > 0) show(c, y);
            check(zmxiPCTInv_HDP_32s_C1IR(plane.data(), step, size));
            for (std::size_t i = 0; i < plane.size(); ++i) energy.lost += plane[i] != before[i];
        }
        energy.blocks += std::uint64_t(unsigned(across)) * unsigned(form.channels);
    }

private:
    int middle() const { return (form.maxval + 1) / 2; }

    void centre(const Band& band, int channel) {
        Zmx32s* to = before.data();
        for (int y = 0; y < 4; ++y) {
            const int row = std::min(y, band.rows - 1);
            for (int x = 0; x < 4 * across; ++x) {
                const int i = std::min(x, form.width - 1) * form.channels + channel;
                *to++ = (form.wide() ? band.words(row)[i] : band.row(row)[i]) - middle();
            }
        }
    }

    void add() {
        for (std::size_t y = 0; y < 4; ++y)
            for (int x = 0; x < 4 * across; ++x) {
                const double v = plane[y * std::size_t(4 * across) + std::size_t(x)];
                energy.mean[4 * y + std::size_t(x % 4)] += v * v;
            }
    }

    // The DC has a gain of 4 and is shown without it.
    void show(int channel, int blockY) {
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4 * across; ++x) {
                const Zmx32s v = plane[std::size_t(y * 4 * across + x)];
                const int shown = std::clamp(middle() + (x % 4 + y == 0 ? v / 4 : v), 0, form.maxval);
                energy.coefficients.set((x % 4 * across + x / 4) * form.channels + channel, y * down + blockY,
                                        unsigned(shown));
            }
    }

    Shape form;
    Energy& energy;
    int across, down; // in blocks
    std::vector<Zmx32s> plane, before;
};

} // namespace

Energy measure(RowSource& rows, bool withCoefficients) {
    Energy e;
    BlockRow row(rows.shape(), e);
    if (withCoefficients) {
        Shape shape = rows.shape();
        shape.width = 4 * row.blocks().width;
        shape.height = 4 * row.blocks().height;
        e.coefficients = Picture(shape);
    }
    for (int y = 0; y < row.blocks().height; ++y) row.measure(rows.next(4), y);
    for (double& m : e.mean) m /= double(e.blocks);
    return e;
}

} // namespace codecs::hdphoto

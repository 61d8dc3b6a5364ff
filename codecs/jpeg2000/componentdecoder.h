// componentdecoder.h - one component of a tile on its way from code blocks to samples, stripe by stripe.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/synthesis.h"

namespace codecs::jpeg2000 {

class ComponentDecoder {
    const CodedComponent coded;
    const Rect rect; // of the samples
    // A component that has fewer levels than are left out gives each (1 << thinning)th number of its lowest band.
    const int thinning;
    std::unique_ptr<Synthesis> synthesis;
    AnyRows stripe;
    int begin = 0, end = 0; // rows of numbers that the stripe holds

    // How many rows of numbers the first `rows` rows of samples are.
    int numbers(int rows) const { return rows == 0 ? 0 : ((rows - 1) << thinning) + 1; }

public:
    // Samples of `wanted`, which lies in the component with `reduce` levels left out.
    ComponentDecoder(const CodedComponent& component, const Rect& wanted, int reduce);

    const Rect& area() const { return rect; }
    Road road() const { return coded.coding.road; }
    int depth() const { return coded.coding.depth; }
    std::size_t index() const { return coded.index; }

    // Tells the code blocks that the first `rows` rows ask for, each once in all calls.
    void need(int rows, std::vector<BlockJob>& jobs);
    bool decode(const BlockJob& job, BlockDecoder& decoder) { return synthesis->decode(job, decoder); }
    // Makes the stripe of the rows from the end of the one before up to the first `rows` in all.
    void advance(int rows);
    // Numbers of a row in the stripe, from column x on. Those that lie there already are not copied.
    template <Road R> const Number<R>* row(int y) const { return rowsOn<R>(stripe)[(y << thinning) - begin]; }
    template <Road R> void copyRow(int x, int y, std::span<Number<R>> to) const {
        const Number<R>* from = row<R>(y) + (std::ptrdiff_t(x) << thinning);
        for (std::size_t i = 0; i < to.size(); ++i) to[i] = from[i << thinning];
    }
};

} // namespace codecs::jpeg2000

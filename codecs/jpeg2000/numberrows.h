// numberrows.h - rows of numbers with room at both ends, where the filters find what lies past the edges.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/road.h"

#include <cstddef>
#include <variant>
#include <vector>

namespace codecs::jpeg2000 {

constexpr int kMargin = 8; // more than any kernel looks beyond an end; keeps rows aligned

template <class T> class NumberRows {
    std::vector<T> memory;
    std::size_t stride = 0;

public:
    NumberRows() = default;
    NumberRows(int rows, int width) { reset(rows, width); }
    // The contents are of no worth afterwards. A row holds one number more, as kernels count in pairs.
    void reset(int rows, int width) {
        // Rows begin at multiples of 16 numbers, where vectors of any width are aligned alike.
        stride = (std::size_t(width) + 1 + 2 * kMargin + 15) / 16 * 16;
        memory.resize(std::size_t(rows) * stride);
    }
    T* operator[](int row) { return memory.data() + std::size_t(row) * stride + kMargin; }
    const T* operator[](int row) const { return memory.data() + std::size_t(row) * stride + kMargin; }
};

// Rows on any road.
using AnyRows = std::variant<NumberRows<std::int16_t>, NumberRows<std::int32_t>, NumberRows<float>>;

template <Road R> const NumberRows<Number<R>>& rowsOn(const AnyRows& rows) {
    return std::get<NumberRows<Number<R>>>(rows);
}
template <Road R> NumberRows<Number<R>>& rowsOn(AnyRows& rows) { return std::get<NumberRows<Number<R>>>(rows); }

inline AnyRows makeRows(Road road, int rows, int width) {
    return onRoad(road, [=]<Road R>() { return AnyRows(NumberRows<Number<R>>(rows, width)); });
}

} // namespace codecs::jpeg2000

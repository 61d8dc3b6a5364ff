// componentdecoder.cpp - stripes of a component.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/componentdecoder.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

int thinningOf(const CodedComponent& component, int reduce) {
    return std::max(reduce - component.coding.style.levels, 0);
}

} // namespace

ComponentDecoder::ComponentDecoder(const CodedComponent& component, const Rect& wanted, int reduce)
    : coded(component), rect(wanted), thinning(thinningOf(component, reduce)), stripe(makeRows(road(), 0, 0)) {
    if (rect.empty()) return;
    const int resolution = std::max(coded.coding.style.levels - reduce, 0);
    // The first and the last sample that is wanted, and what lies between them.
    const Rect all{rect.x0 << thinning, rect.y0 << thinning, ((rect.x1 - 1) << thinning) + 1,
                   ((rect.y1 - 1) << thinning) + 1};
    synthesis = makeSynthesis(coded, resolution, all);
}

void ComponentDecoder::need(int rows, std::vector<BlockJob>& jobs) {
    if (synthesis) synthesis->need(numbers(rows), jobs);
}

void ComponentDecoder::advance(int rows) {
    begin = end;
    end = numbers(rows);
    if (end == begin) return;
    onRoad(road(), [&]<Road R>() { rowsOn<R>(stripe).reset(end - begin, numbers(rect.width())); });
    synthesis->take(end - begin, stripe);
}

} // namespace codecs::jpeg2000

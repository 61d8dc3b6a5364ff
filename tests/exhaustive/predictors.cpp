// predictors.cpp - the predictors of lossless rows (ITU-T T.81, H.1.2.1) and their inverses, over all pairs of samples. Of three
// neighbours two run through everything: a row of equal samples stands below one that pairs each sample with the slice's, in
// either order.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/predictors.h"
#include "tests/exhaustive/domain.h"

#include <utility>

namespace exhaustive {

namespace {

using Row = std::vector<Zmx16s>;

using Walk = ZmxStatus (*)(const Zmx16s*, const Zmx16s*, Zmx16s*, int, int);

// `one` and each sample by turns: every pair with it, in both orders.
Row pairsWith(Zmx16s one) {
    Row row(2 * kWords, one);
    for (std::size_t i = 0; i < kWords; ++i) row[2 * i + 1] = Zmx16s(i);
    return row;
}

template <int Predictor, class Model>
bool rowsAgree(const Row& src, const Row& above, Row& got, Row& expected, Walk library, Model plain) {
    const int width = int(src.size());
    if (library(src.data(), above.data(), got.data(), width, Predictor)) return false;
    plain(src.data(), above.data(), expected.data(), width);
    return same(got, expected);
}

template <int Predictor> bool predictorAgrees(std::uint64_t slice) {
    const auto one = Zmx16s(slice);
    const Row pairs = pairsWith(one), ones(pairs.size(), one);
    Row got(pairs.size()), expected(pairs.size());
    // The predictor is a constant here, so that the loops of the model have no decisions.
    const auto diff = [](const Zmx16s* src, const Zmx16s* above, Zmx16s* dst, int width) {
        model::diffRow(src, above, dst, width, Predictor);
    };
    const auto reconstruct = [](const Zmx16s* src, const Zmx16s* above, Zmx16s* dst, int width) {
        model::reconstructRow(src, above, dst, width, Predictor);
    };
    const auto both = [&](const Row& src, const Row& above) {
        return rowsAgree<Predictor>(src, above, got, expected, zmxiDiffPredRow_JPEG_16s_C1, diff) &&
               rowsAgree<Predictor>(src, above, got, expected, zmxiReconstructPredRow_JPEG_16s_C1, reconstruct);
    };
    return both(pairs, ones) && both(ones, pairs);
}

template <int... P> void addEach(Domains& to, std::integer_sequence<int, P...>) {
    (to.push_back({std::string("Predictor") + char('1' + P), "predictor and its inverse, every pair of neighbours",
                   kWords, kWords, predictorAgrees<P + 1>}),
     ...);
}

} // namespace

void addPredictors(Domains& to) { addEach(to, std::make_integer_sequence<int, 7>()); }

} // namespace exhaustive

// predictors.cpp - the predictors of lossless rows (ITU-T T.81, H.1.2.1) and their inverses, over all pairs of samples. Of three
// neighbours two run through everything: a row of equal samples stands below one that pairs each sample with the slice's, in
// either order.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/jpeg/model/lossless.h"

namespace exhaustive {

namespace {

using Row = std::vector<Zmx16s>;

// `one` and each sample by turns: every pair with it, in both orders.
Row pairsWith(Zmx16s one) {
    Row row;
    row.reserve(2 * kWords);
    for (int i = 0; i < kWords; ++i) {
        row.push_back(one);
        row.push_back(Zmx16s(i));
    }
    return row;
}

template <class Library, class Model>
bool rowsAgree(const Row& src, const Row& above, int predictor, Library library, Model plain) {
    Row got(src.size()), expected(src.size());
    if (library(src.data(), above.data(), got.data(), int(src.size()), predictor)) return false;
    plain(src.data(), above.data(), expected.data(), int(src.size()), predictor);
    return same(got, expected);
}

bool predictorAgrees(int predictor, std::uint64_t slice) {
    const auto one = Zmx16s(slice);
    const Row pairs = pairsWith(one), ones(pairs.size(), one);
    const auto both = [&](const Row& src, const Row& above) {
        return rowsAgree(src, above, predictor, zmxiDiffPredRow_JPEG_16s_C1, model::diffRow) &&
               rowsAgree(src, above, predictor, zmxiReconstructPredRow_JPEG_16s_C1, model::reconstructRow);
    };
    return both(pairs, ones) && both(ones, pairs);
}

} // namespace

void addPredictors(Domains& to) {
    for (int p = 1; p <= 7; ++p)
        to.push_back({std::string("Predictor") + char('0' + p), "predictor and its inverse, every pair of neighbours",
                      kWords, kWords, [p](std::uint64_t slice) { return predictorAgrees(p, slice); }});
}

} // namespace exhaustive

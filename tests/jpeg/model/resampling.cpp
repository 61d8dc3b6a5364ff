// resampling.cpp - plain models of chroma resampling by two.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/resampling.h"

namespace model {

int upH2V1(Plane s, int x, int y) {
    const int i = x / 2;
    return x % 2 == 0 ? (3 * s.at(i, y) + s.at(i - 1, y) + 1) >> 2 : (3 * s.at(i, y) + s.at(i + 1, y) + 2) >> 2;
}

int upH2V2(Plane s, int x, int y) {
    const int nearRow = y / 2, farRow = y % 2 == 0 ? nearRow - 1 : nearRow + 1;
    const auto column = [&](int i) { return 3 * s.at(i, nearRow) + s.at(i, farRow); };
    const int i = x / 2;
    return x % 2 == 0 ? (3 * column(i) + column(i - 1) + 8) >> 4 : (3 * column(i) + column(i + 1) + 7) >> 4;
}

int downH2V1(Plane s, int x, int y) { return (s.at(2 * x, y) + s.at(2 * x + 1, y) + 1) >> 1; }

int downH2V2(Plane s, int x, int y) {
    return (s.at(2 * x, 2 * y) + s.at(2 * x + 1, 2 * y) + s.at(2 * x, 2 * y + 1) + s.at(2 * x + 1, 2 * y + 1) + 3) >> 2;
}

void upRowH2V1(const Zmx8u* s, int n, Zmx8u* d) {
    d[0] = s[0];
    d[1] = Zmx8u((3 * s[0] + s[1] + 2) >> 2);
    for (int i = 1; i <= n - 2; ++i) {
        d[2 * i] = Zmx8u((3 * s[i] + s[i - 1] + 1) >> 2);
        d[2 * i + 1] = Zmx8u((3 * s[i] + s[i + 1] + 2) >> 2);
    }
    // Behind the first two, even if there is but one sample.
    Zmx8u* const last = n == 1 ? d + 2 : d + 2 * n - 2;
    last[0] = Zmx8u((3 * s[n - 1] + s[n - 2] + 1) >> 2);
    last[1] = s[n - 1];
}

void upRowH2V2(const Zmx8u* nearRow, const Zmx8u* farRow, int width, Zmx8u* d) {
    const int n = width == 1 ? 2 : width;
    const auto column = [&](int i) { return 3 * nearRow[i] + farRow[i]; };
    d[0] = Zmx8u((4 * column(0) + 8) >> 4);
    d[1] = Zmx8u((3 * column(0) + column(1) + 7) >> 4);
    for (int i = 1; i <= n - 2; ++i) {
        d[2 * i] = Zmx8u((3 * column(i) + column(i - 1) + 8) >> 4);
        d[2 * i + 1] = Zmx8u((3 * column(i) + column(i + 1) + 7) >> 4);
    }
    d[2 * n - 2] = Zmx8u((3 * column(n - 1) + column(n - 2) + 8) >> 4);
    d[2 * n - 1] = Zmx8u((4 * column(n - 1) + 7) >> 4);
}

void downRowH2V1(const Zmx8u* s, int width, Zmx8u* d) {
    for (int x = 0; 2 * x < width; ++x) d[x] = Zmx8u((s[2 * x] + s[2 * x + 1] + x % 2) >> 1);
}

void downRowH2V2(const Zmx8u* s1, const Zmx8u* s2, int width, Zmx8u* d) {
    for (int x = 0; 2 * x < width; ++x)
        d[x] = Zmx8u((s1[2 * x] + s1[2 * x + 1] + s2[2 * x] + s2[2 * x + 1] + 1 + x % 2) >> 2);
}

} // namespace model

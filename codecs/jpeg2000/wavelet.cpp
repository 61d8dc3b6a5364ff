// wavelet.cpp - the 5/3 filter on whole planes; the 9/7 filter by row kernels and column lifting, which are faster and
// serve odd origins: the library's forward transform of whole planes does not put their bands where a codestream
// wants them.
#include "codecs/jpeg2000/wavelet.h"

#include "codecs/jpeg2000/parallel.h"
#include "zmxj.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace codecs::jpeg2000 {

namespace {

// One line of n samples that begins at an even (0) or odd (1) place.
struct Line {
    int n, phase;
    int lows() const { return (n + 1 - phase) / 2; }
    // Symmetric extension (F.3.7).
    int mirrored(int i) const {
        if (n == 1) return 0;
        const int period = 2 * (n - 1);
        i = ((i % period) + period) % period;
        return i < n ? i : period - i;
    }
    // Where sample i, also one outside the line, lies once low and high bands are apart.
    int inBands(int i) const {
        const int m = mirrored(i);
        return (m + phase) % 2 == 0 ? (m + phase) / 2 - phase : lows() + (m - 1 + phase) / 2;
    }
};

constexpr int kMargin = 6;      // more than the kernels look beyond either end
constexpr int kStripWidth = 64; // columns lifted together, few enough to stay in the cache

void forwardRow97(std::int32_t* row, const Line& line, std::vector<std::int32_t>& scratch) {
    const int pairs = (line.n + 1) / 2;
    scratch.resize(std::size_t(4 * pairs + 2 * kMargin));
    std::int32_t *x = scratch.data() + kMargin, *low = x + 2 * pairs + kMargin, *high = low + pairs;
    std::memcpy(x, row, sizeof *row * std::size_t(line.n));
    for (int i = 1; i <= kMargin; ++i) {
        x[-i] = row[line.mirrored(-i)];
        if (line.n + i <= 2 * pairs + kMargin) x[line.n + i - 1] = row[line.mirrored(line.n + i - 1)];
    }
    zmxiWTFwdRow_D97_JPEG2K_32s_C1R(x, 4, low, 4, high, 4, {pairs, 1}, line.phase);
    std::memcpy(row, low, sizeof *row * std::size_t(line.lows()));
    std::memcpy(row + line.lows(), high, sizeof *row * std::size_t(line.n - line.lows()));
}

void inverseRow97(std::int32_t* row, const Line& line, std::vector<std::int32_t>& scratch) {
    const int pairs = (line.n + 1) / 2, lows = line.lows(), highs = line.n - lows;
    scratch.resize(std::size_t(4 * pairs + 4 * kMargin));
    std::int32_t *low = scratch.data() + kMargin, *high = low + pairs + 2 * kMargin, *x = high + pairs + kMargin;
    std::memcpy(low, row, sizeof *row * std::size_t(lows));
    std::memcpy(high, row + lows, sizeof *row * std::size_t(highs));
    const auto lowAt = [&](int k) { return row[line.inBands(2 * k + line.phase)]; };
    const auto highAt = [&](int k) { return row[line.inBands(2 * k + 1 - line.phase)]; };
    for (int k = 1; k <= 3; ++k) {
        low[-k] = lowAt(-k);
        high[-k] = highAt(-k);
    }
    for (int k = lows; k < pairs + 3; ++k) low[k] = lowAt(k);
    for (int k = highs; k < pairs + 3; ++k) high[k] = highAt(k);
    zmxiWTInvRow_D97_JPEG2K_32s_C1R(low, 4, high, 4, {pairs, 1}, x, 4, line.phase);
    std::memcpy(row, x, sizeof *row * std::size_t(line.n));
}

// Rows of the strip under work, a ring for the stages and a copy of the result.
struct Strip {
    std::vector<std::int32_t> memory;
    std::int32_t* row(int i) { return memory.data() + std::size_t(i) * kStripWidth; }
    explicit Strip(int rows) : memory(std::size_t(rows) * kStripWidth) {}
};

// Both directions begin three stages ahead: what a stage takes from stages that never were has left the pipeline
// by the time that its rows count.
constexpr int kLeadIn = 3;

void forwardColumns97(Plane& plane, const Line& line, int x, int width) {
    Strip result(line.n), ring(6);
    const int lows = line.lows(), highs = line.n - lows;
    const auto source = [&](int absolute) { return plane.at(x, line.mirrored(absolute - line.phase)); };
    std::int32_t *b0 = ring.row(0), *b1 = ring.row(1), *g0 = ring.row(2), *a1 = ring.row(3), *a2 = ring.row(4);
    const int last = std::max(lows - 1 + line.phase, highs);
    for (int r = -kLeadIn; r <= last; ++r) {
        zmxiWTFwdColLift_D97_JPEG2K_32s_C1(source(2 * r + 2), source(2 * r + 3), source(2 * r + 4), b0, b1, g0, a1, a2,
                                           width);
        const int low = r - line.phase, high = r - 1;
        if (low >= 0 && low < lows) std::memcpy(result.row(low), b0, 4 * std::size_t(width));
        if (high >= 0 && high < highs) std::memcpy(result.row(lows + high), g0, 4 * std::size_t(width));
        std::swap(b0, b1);
        std::swap(g0, a1); // A(2r + 1), now G(2r + 1), is the next G; then its row is free for the next A
        std::swap(a1, a2);
    }
    for (int i = 0; i < line.n; ++i) std::memcpy(plane.at(x, i), result.row(i), 4 * std::size_t(width));
}

void inverseColumns97(Plane& plane, const Line& line, int x, int width) {
    Strip result(line.n), ring(6);
    const auto source = [&](int absolute) { return plane.at(x, line.inBands(absolute - line.phase)); };
    std::int32_t *done = ring.row(0), *a = ring.row(1), *b = ring.row(2), *nextA = ring.row(3), *nextB = ring.row(4);
    for (int n = -kLeadIn; 2 * n - 1 - line.phase < line.n; ++n) {
        zmxiWTInvColLift_D97_JPEG2K_32s_C1(source(2 * n + 2), source(2 * n + 1), source(2 * n + 3), done, a, b, nextA,
                                           nextB, width);
        for (const auto& [row, from] : {std::pair{2 * n - 1 - line.phase, a}, std::pair{2 * n - line.phase, b}})
            if (row >= 0 && row < line.n) std::memcpy(result.row(row), from, 4 * std::size_t(width));
        std::swap(done, b); // row 2n is what the next stage finds done
        std::swap(a, nextA);
        std::swap(b, nextB);
    }
    for (int i = 0; i < line.n; ++i) std::memcpy(plane.at(x, i), result.row(i), 4 * std::size_t(width));
}

enum class Direction { forward, inverse };

// A line of one sample is left alone at an even place and doubled at an odd one (F.4.8).
void singleSample(std::int32_t& v, int phase, Direction way) {
    if (phase == 1) v = way == Direction::forward ? std::int32_t(std::uint32_t(v) * 2) : v / 2;
}

void rows97(Plane& plane, const Rect& rect, Direction way, int threads) {
    const Line line{rect.width(), int(rect.x0 & 1)};
    constexpr int bunch = 16;
    parallelFor(std::size_t(rect.height() + bunch - 1) / bunch, threads, [&](std::size_t part, int) {
        std::vector<std::int32_t> scratch;
        for (int y = int(part) * bunch; y < std::min(int(part + 1) * bunch, rect.height()); ++y) {
            std::int32_t* row = plane.at(0, y);
            if (line.n == 1)
                singleSample(*row, line.phase, way);
            else
                (way == Direction::forward ? forwardRow97 : inverseRow97)(row, line, scratch);
        }
    });
}

void columns97(Plane& plane, const Rect& rect, Direction way, int threads) {
    const Line line{rect.height(), int(rect.y0 & 1)};
    if (line.n == 1) {
        for (int x = 0; x < rect.width(); ++x) singleSample(*plane.at(x, 0), line.phase, way);
        return;
    }
    parallelFor(std::size_t(rect.width() + kStripWidth - 1) / kStripWidth, threads, [&](std::size_t part, int) {
        const int x = int(part) * kStripWidth;
        (way == Direction::forward ? forwardColumns97 : inverseColumns97)(plane, line, x,
                                                                          std::min(kStripWidth, rect.width() - x));
    });
}

template <class BufferSize, class Transform>
void wholePlane(Plane& plane, const Rect& rect, BufferSize bufferSize, Transform transform) {
    const ZmxiRect tile{int(rect.x0 & 1), int(rect.y0 & 1), rect.width(), rect.height()};
    int size = 0;
    bufferSize(&tile, &size);
    std::vector<Zmx8u> buffer(std::size_t(size) + 1);
    transform(plane.at(0, 0), plane.stride(), &tile, buffer.data());
}

} // namespace

void forwardWavelet(Plane& plane, const Rect& rect, Filter filter, int threads) {
    if (rect.empty()) return;
    if (filter == Filter::reversible)
        return wholePlane(plane, rect, zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR, zmxiWTFwd_B53_JPEG2K_32s_C1IR);
    if (filter == Filter::precise && rect.x0 % 2 == 0 && rect.y0 % 2 == 0)
        return wholePlane(plane, rect, zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR, zmxiWTFwd_D97_JPEG2K_32s_C1IR);
    columns97(plane, rect, Direction::forward, threads);
    rows97(plane, rect, Direction::forward, threads);
}

void inverseWavelet(Plane& plane, const Rect& rect, Filter filter, int threads) {
    if (rect.empty()) return;
    if (filter == Filter::reversible)
        return wholePlane(plane, rect, zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR, zmxiWTInv_B53_JPEG2K_32s_C1IR);
    if (filter == Filter::precise)
        return wholePlane(plane, rect, zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR, zmxiWTInv_D97_JPEG2K_32s_C1IR);
    rows97(plane, rect, Direction::inverse, threads);
    columns97(plane, rect, Direction::inverse, threads);
}

namespace {

// The norm of a filter's response after `levels` steps of synthesis, of which the lowest is the high one or not.
double lineNorm(const std::vector<double>& low, const std::vector<double>& high, int levels, bool isHigh) {
    std::vector<double> v{1};
    for (int l = 0; l < levels; ++l) {
        const std::vector<double>& f = l == 0 && isHigh ? high : low;
        std::vector<double> up(2 * v.size() + f.size());
        for (std::size_t i = 0; i < v.size(); ++i)
            for (std::size_t k = 0; k < f.size(); ++k) up[2 * i + k] += v[i] * f[k];
        v = std::move(up);
    }
    double sum = 0;
    for (const double s : v) sum += s * s;
    return std::sqrt(sum);
}

} // namespace

double waveletNorm(bool reversible, int levels, Orientation o) {
    // Synthesis filters; the low one has gain 2 at frequency 0, the high one 1 at the highest.
    static const std::vector<double> low53{0.5, 1, 0.5}, high53{-0.125, -0.25, 0.75, -0.25, -0.125};
    static const std::vector<double> low97{-0.091271763114, -0.057543526228, 0.591271763114, 1.115087052457,
                                           0.591271763114,  -0.057543526228, -0.091271763114};
    static const std::vector<double> high97{0.026748757411,  0.016864118443, -0.078223266529,
                                            -0.266864118443, 0.602949018236, -0.266864118443,
                                            -0.078223266529, 0.016864118443, 0.026748757411};
    const auto& low = reversible ? low53 : low97;
    const auto& high = reversible ? high53 : high97;
    const int n = std::min(levels, 10); // from there on the norm doubles from level to level
    const double norm = lineNorm(low, high, n, o == HL || o == HH) * lineNorm(low, high, n, o == LH || o == HH);
    return std::ldexp(norm, levels - n);
}

} // namespace codecs::jpeg2000

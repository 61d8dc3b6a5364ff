// progress.cpp - when the bar is drawn, and what counts the rows.
//
// Nothing is measured ahead: a picture tells its height at the begin, and each row that passes is a step.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/progress.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace command {
namespace {

using std::chrono::steady_clock;

// Counts what a codec takes. The codec sees the source as it is: same shape, same metadata, same warnings.
class CountedRows final : public codecs::RowSource {
public:
    CountedRows(codecs::Rows source, Progress& bar) : from(std::move(source)), progress(bar) {
        form = from->shape();
        beside = from->metadata();
    }
    codecs::Band next(int rows) override {
        const codecs::Band band = from->next(rows);
        progress.show(done += band.rows, form.height);
        return band;
    }
    std::vector<std::string> warnings() const override { return from->warnings(); }

private:
    codecs::Rows from;
    Progress& progress;
    int done = 0;
};

// Counts what a codec gives. The height is known when the codec has read the header, not when the sink is made.
class CountedSink final : public codecs::RowSink {
public:
    CountedSink(std::unique_ptr<codecs::RowSink> sink, Progress& bar) : to(std::move(sink)), progress(bar) {}
    void begin(const codecs::Shape& shape, const codecs::Metadata& metadata) override {
        height = shape.height;
        to->begin(shape, metadata);
    }
    void write(const codecs::Band& band) override {
        to->write(band);
        progress.show(done += band.rows, height);
    }
    void finish() override { to->finish(); }
    std::vector<std::string> warnings() const override { return to->warnings(); }

private:
    std::unique_ptr<codecs::RowSink> to;
    Progress& progress;
    int done = 0, height = 0;
};

} // namespace

Progress::Progress(bool wanted, std::string name)
    : active(wanted && isatty(STDERR_FILENO)), what(std::move(name)),
      next(steady_clock::now() + std::chrono::seconds(1)) {}

void Progress::show(int done, int all) {
    if (!active || steady_clock::now() < next) return;
    // Often enough to be seen to move.
    next = steady_clock::now() + std::chrono::milliseconds(200);
    // With a name of some length and the number behind it the bar still fits on a line of 80.
    constexpr int kWidth = 40;
    // 64 bits: a height times 100 may be more than 31 of them hold.
    const int full = int(std::int64_t(kWidth) * done / std::max(all, 1));
    std::fprintf(stderr, "\r%s [%s%s] %3d %%", what.c_str(), std::string(std::size_t(full), '#').c_str(),
                 std::string(std::size_t(kWidth - full), '.').c_str(),
                 int(std::int64_t(100) * done / std::max(all, 1)));
    std::fflush(stderr);
    shown = true;
}

// The line is left as if nothing had been there: back to its begin, and erased to its end (ECMA-48, EL).
void Progress::clear() {
    if (shown) std::fprintf(stderr, "\r\033[K");
    shown = false;
}

// Without a terminal the rows pass with nothing between.
codecs::Rows Progress::counting(codecs::Rows rows) {
    if (!active) return rows;
    return std::make_unique<CountedRows>(std::move(rows), *this);
}
std::unique_ptr<codecs::RowSink> Progress::counting(std::unique_ptr<codecs::RowSink> rows) {
    if (!active) return rows;
    return std::make_unique<CountedSink>(std::move(rows), *this);
}

} // namespace command

// exhaustive [--every N] [--from SLICE] [--seconds S] [NAME...]: compares the library with its models over whole domains.
//
// Without names: all domains. With --every N each N-th slice alone, which is a sample; the first and the last slice are in it.
// With --from and --seconds a part of one: a run goes on where another one stopped. Prints a line for each domain: its name, the
// slice behind the last one that was compared, how many slices there are, how many values were compared, and the seconds.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace exhaustive {

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::uint64_t every = 1, from = 0;
    double seconds = 1e9;
    bool list = false;
    std::vector<std::string> names;
};

Options optionsOf(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const bool more = i + 1 < argc;
        if (word == "--list")
            o.list = true;
        else if (word == "--every" && more)
            o.every = std::max<std::uint64_t>(1, std::strtoull(argv[++i], nullptr, 10));
        else if (word == "--from" && more)
            o.from = std::strtoull(argv[++i], nullptr, 10);
        else if (word == "--seconds" && more)
            o.seconds = std::strtod(argv[++i], nullptr);
        else
            o.names.push_back(word);
    }
    return o;
}

double since(Clock::time_point begin) { return std::chrono::duration<double>(Clock::now() - begin).count(); }

// Tells whether all agree.
bool run(const Domain& d, const Options& o) {
    const auto begin = Clock::now();
    std::uint64_t slice = o.from, compared = 0;
    bool good = true;
    while (good && slice < d.slices && since(begin) < o.seconds) {
        good = d.agree(slice);
        compared += d.values;
        if (!good)
            std::fprintf(stderr, "%s: the library and its model differ in slice %llu\n", d.name.c_str(),
                         static_cast<unsigned long long>(slice));
        // The last slice is in every sample.
        const std::uint64_t last = d.slices - 1;
        slice = slice < last ? std::min(slice + o.every, last) : d.slices;
    }
    std::printf("%s %llu %llu %llu %.1f\n", d.name.c_str(), static_cast<unsigned long long>(slice),
                static_cast<unsigned long long>(d.slices), static_cast<unsigned long long>(compared), since(begin));
    std::fflush(stdout);
    return good;
}

} // namespace

} // namespace exhaustive

int main(int argc, char** argv) {
    using namespace exhaustive;
    const Options options = optionsOf(argc, argv);
    Domains all;
    addColours(all);
    addQuantisers(all);
    addTextures(all);
    addPredictors(all);
    addEntropy(all);
    addResampling(all);
    std::size_t found = 0;
    bool good = true;
    for (const Domain& d : all) {
        const auto named = std::find(options.names.begin(), options.names.end(), d.name);
        if (!options.names.empty() && named == options.names.end()) continue;
        ++found;
        if (options.list)
            std::printf("%s\t%llu\t%llu\t%s\n", d.name.c_str(), static_cast<unsigned long long>(d.slices),
                        static_cast<unsigned long long>(d.values), d.what.c_str());
        else
            good = run(d, options) && good;
    }
    if (found < std::max<std::size_t>(1, options.names.size())) {
        std::fprintf(stderr, "exhaustive: no such domain\n");
        return 2;
    }
    return good ? 0 : 1;
}

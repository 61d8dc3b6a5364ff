// exhaustive [--every N] [--from SLICE] [--to SLICE] [NAME...]: compares the library with its models over whole domains.
//
// Without names: all domains. With --every N each N-th slice alone, which is a sample; the first and the last slice are in it.
// With --from and --to a part of one, the slice named last not included. Prints a line for each domain: its name, the slice
// behind the last one that was compared, how many slices there are, how many values were compared, and the seconds of
// processor time.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace exhaustive {

namespace {

struct Options {
    std::uint64_t every = 1, from = 0, to = ~std::uint64_t(0);
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
        else if (word == "--to" && more)
            o.to = std::strtoull(argv[++i], nullptr, 10);
        else
            o.names.push_back(word);
    }
    return o;
}

// Tells whether all agree.
bool run(const Domain& d, const Options& o) {
    const std::clock_t begin = std::clock();
    const std::uint64_t end = std::min(d.slices, o.to), last = end - 1;
    std::uint64_t slice = o.from, compared = 0;
    bool good = true;
    while (good && slice < end) {
        good = d.agree(slice);
        compared += d.values;
        if (!good)
            std::fprintf(stderr, "%s: the library and its model differ in slice %llu\n", d.name.c_str(),
                         static_cast<unsigned long long>(slice));
        // The last slice is in every sample.
        slice = slice < last ? std::min(slice + o.every, last) : end;
    }
    std::printf("%s %llu %llu %llu %.2f\n", d.name.c_str(), static_cast<unsigned long long>(slice),
                static_cast<unsigned long long>(d.slices), static_cast<unsigned long long>(compared),
                double(std::clock() - begin) / CLOCKS_PER_SEC);
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

// hostile CODEC SAMPLES [OPTION...]: a codec on files that someone broke.
//
// Truncations of every file in the folder SAMPLES, files changed at random, and the bombs of bombs.cpp. Each is an answer within
// 10 seconds of processor time and within the memory of its rule (docs/limits.md), or this program says so and fails.
//
// --cuts N           as many truncations of each file (default 400); --whole: every one
// --count N          as many changed files (default 1000), by --seed N
// --changed-only     neither truncations nor bombs
// --max-pixels N     what is allowed (default 65536)
// --keep FOLDER      where a file goes that broke a limit (default: here)
// --tell             prints a line for each file
// --write-bombs FOLDER   writes the bombs there, and that is all
//
// The last line has the figures: files, truncations, changed ones, bombs, the longest time in seconds, the largest share of the
// memory that the rule allows, in percent, and the failures.
// SPDX-License-Identifier: BSD-2-Clause
#include "fuzz/support/mutator.h"
#include "tests/codecs/support/damage.h"
#include "tests/hostile/memory.h"
#include "tests/hostile/readers.h"

#include "codecs/picture/bytefile.h"
#include "codecs/picture/error.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <new>
#include <sys/resource.h>
#include <unistd.h>

namespace hostile {

namespace {

namespace fs = std::filesystem;
constexpr double kLongest = 10; // seconds

struct Options {
    std::string codec, samples, keep = ".", bombs;
    long count = 1000, cuts = 400;
    std::uint64_t seed = 1, maxPixels = 1 << 16;
    bool whole = false, tell = false, changedOnly = false;
};

// What is under work, for a handler of signals.
struct Present {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    char path[512] = {};
} present;

void keepPresent() {
    std::FILE* const f = std::fopen(present.path, "wb");
    if (f == nullptr) return;
    std::fwrite(present.data, 1, present.size, f);
    std::fclose(f);
}
extern "C" void onSignal(int signal) {
    keepPresent();
    const char text[] = "hostile: a crash or no end; see the kept file\n";
    if (write(2, text, sizeof text - 1) < 0) _exit(3);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

double processorTime() { return double(std::clock()) / CLOCKS_PER_SEC; }

class Trial {
    const Reader& reader;
    const Options& options;

public:
    long files = 0, failures = 0;
    double longest = 0, largest = 0; // seconds; share of the memory allowed

    Trial(const Reader& r, const Options& o) : reader(r), options(o) {}

    void one(ByteView file, const std::string& name) {
        ++files;
        present.data = file.data();
        present.size = file.size();
        std::snprintf(present.path, sizeof present.path, "%s/%s-%s", options.keep.c_str(), reader.name, name.c_str());
        for (int way = 0; way < reader.ways; ++way) {
            const std::size_t before = memoryInUse();
            restartPeak();
            const double begin = processorTime();
            alarm(120); // a wait without end takes no processor time
            read(file, way);
            alarm(0);
            const double took = processorTime() - begin;
            const std::size_t memory = peakMemory() - before,
                              limit = reader.rule.limit(file.size(), std::size_t(options.maxPixels));
            longest = std::max(longest, took);
            largest = std::max(largest, double(memory) / double(limit));
            if (options.tell)
                std::printf("%s way %d: %zu bytes of file, %zu of memory, %.2f s\n", name.c_str(), way, file.size(),
                            memory, took);
            if (took > kLongest || memory > limit) {
                std::fprintf(stderr, "%s, way %d: %.1f s, %zu bytes of %zu\n", present.path, way, took, memory, limit);
                keepPresent();
                ++failures;
            }
        }
    }

private:
    void read(ByteView file, int way) {
        try {
            reader.read(file, way, options.maxPixels);
        } catch (const codecs::Error&) {
        }
    }
};

void truncations(Trial& trial, const Bytes& file, const std::string& name, const Options& options) {
    if (options.cuts < 1) return;
    const std::size_t step = options.whole ? 1 : std::max<std::size_t>(1, file.size() / std::size_t(options.cuts));
    for (std::size_t n = 0; n < file.size(); n += step)
        // A copy of its own length, so that a tool that looks at reads sees one behind the end.
        trial.one(Bytes(file.begin(), file.begin() + std::ptrdiff_t(n)), name + "-cut" + std::to_string(n));
}

Bytes changed(const Reader& reader, const Bytes& file, Rng& rng) {
    Bytes out = file;
    if (reader.mutate != nullptr && rng.oneIn(2)) {
        constexpr std::size_t room = 4096;
        for (auto times = rng.range(1, 4); times > 0; --times) {
            const std::size_t size = out.size();
            out.resize(size + room);
            out.resize(reader.mutate(out.data(), size, size + room, unsigned(rng.next()), 0));
        }
        return out;
    }
    // Each change may lose a byte; the last one stays.
    const int most = std::min(rng.oneIn(4) ? 40 : 4, int(out.size()) - 1);
    return most < 1 ? out : damaged(out, rng, most);
}

Options optionsOf(int argc, char** argv) {
    Options o;
    std::vector<std::string> plain;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const char* const value = i + 1 < argc ? argv[i + 1] : "0";
        bool* const flag = word == "--whole"          ? &o.whole
                           : word == "--tell"         ? &o.tell
                           : word == "--changed-only" ? &o.changedOnly
                                                      : nullptr;
        if (flag) {
            *flag = true;
            continue;
        }
        if (word == "--count")
            o.count = std::strtol(value, nullptr, 10);
        else if (word == "--cuts")
            o.cuts = std::strtol(value, nullptr, 10);
        else if (word == "--seed")
            o.seed = std::strtoull(value, nullptr, 10);
        else if (word == "--max-pixels")
            o.maxPixels = std::strtoull(value, nullptr, 10);
        else if (word == "--keep")
            o.keep = value;
        else if (word == "--write-bombs")
            o.bombs = value;
        else {
            plain.push_back(word);
            continue;
        }
        ++i;
    }
    plain.resize(2);
    o.codec = plain[0];
    o.samples = plain[1];
    return o;
}

std::vector<std::pair<std::string, Bytes>> samplesIn(const std::string& folder) {
    std::vector<std::pair<std::string, Bytes>> files;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.is_regular_file()) files.emplace_back(entry.path().filename(), codecs::readFile(entry.path()));
    std::sort(files.begin(), files.end());
    return files;
}

int run(const Options& options) {
    const auto& all = readers();
    const auto reader = std::find_if(all.begin(), all.end(), [&](const Reader& r) { return r.name == options.codec; });
    if (reader == all.end()) {
        std::fprintf(stderr, "hostile: no such codec: %s\n", options.codec.c_str());
        return 2;
    }
    const auto samples = samplesIn(options.samples);
    if (samples.empty()) {
        std::fprintf(stderr, "hostile: no samples in %s\n", options.samples.c_str());
        return 2;
    }
    if (!options.bombs.empty()) {
        for (const Bomb& bomb : bombsFor(options.codec, options.maxPixels))
            codecs::writeFile(options.bombs + "/" + options.codec + "-" + bomb.name, bomb.file);
        return 0;
    }
    for (const int s : {SIGSEGV, SIGABRT, SIGFPE, SIGBUS, SIGILL, SIGALRM}) std::signal(s, onSignal);
    Trial trial(*reader, options);
    if (!options.changedOnly)
        for (const Bomb& bomb : bombsFor(options.codec, options.maxPixels)) trial.one(bomb.file, "bomb-" + bomb.name);
    const long bombs = trial.files;
    if (!options.changedOnly)
        for (const auto& [name, file] : samples) truncations(trial, file, name, options);
    const long cut = trial.files - bombs;
    Rng rng(options.seed);
    for (long i = 0; i < options.count; ++i) {
        const auto& [name, file] = samples[std::size_t(rng.range(0, std::int64_t(samples.size()) - 1))];
        trial.one(changed(*reader, file, rng), name + "-changed" + std::to_string(i));
    }
    std::printf("%s files %ld truncations %ld changed %ld bombs %ld longest %.2f memory %.1f failures %ld\n",
                reader->name, trial.files, cut, options.count, bombs, trial.longest,
                memoryIsCounted ? 100 * trial.largest : 0, trial.failures);
    return trial.failures == 0 ? 0 : 1;
}

} // namespace

} // namespace hostile

int main(int argc, char** argv) { return hostile::run(hostile::optionsOf(argc, argv)); }

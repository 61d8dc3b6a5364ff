// run.h - the work on one pair of files: what is read and written, and what is said about it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/files.h"
#include "codecs/picture/raw.h"
#include "zmx/manners.h"
#include "zmx/progress.h"

#include <chrono>
#include <memory>

namespace command {

// One file in and one out; "-" is standard input or output.
struct Job {
    std::string in, out;
};

// What may be asked for wherever a picture is read or written.
struct PictureOptions {
    std::uint64_t maxPixels = codecs::kMaxPixels;
    bool strip = false, upright = false;
    std::string to; // the kind of file to write, an ending

    // For a subcommand that reads a picture, and for one that writes one.
    void addInputTo(CLI::App& c);
    void addOutputTo(CLI::App& c);

private:
    void addCommonTo(CLI::App& c);
};

// What codecs write is not there under its name before keep(): where a warning turns into an error by --strict, or the
// work fails in its last step, what stood there before stays.
class Run {
public:
    Run(const Manners& manners, Job job);

    const std::string& inName() const { return in; } // for messages
    const std::string& outName() const { return out; }

    // What is read: bytes, or a picture, changed as the options say and then by `change`.
    codecs::ByteSource& bytesIn();
    codecs::RowSource& pictureIn(const PictureOptions& options, const codecs::RowChange& change = {});
    codecs::RowSource& rawIn(int width, int height, codecs::RawFormat format, const codecs::RowChange& change = {});

    // What is written: bytes, or a picture in the kind of file that the options or the name say.
    codecs::ByteSink& bytesOut();
    codecs::RowSink& pictureOut(const PictureOptions& options, const codecs::RowChange& change = {});
    codecs::RowSink& rawOut(const PictureOptions& options, codecs::RawFormat format);

    // Warnings of a codec about the file that is read; with --strict the first is thrown.
    void warn(const std::vector<std::string>& texts) const { manners.warn(in, texts); }

    // Says what the picture files had to say, and puts the output in its place.
    void keep();

private:
    codecs::RowSource& sourceOf(codecs::Rows rows, const codecs::RowChange& change);
    codecs::RowSink& sinkOf(std::unique_ptr<codecs::RowSink> rows, const PictureOptions& options,
                            const codecs::RowChange& change);
    std::unique_ptr<codecs::ByteSink> sharedOut();

    const Manners& manners;
    Job job;
    std::string in, out;
    Progress progress;
    std::unique_ptr<codecs::ByteSource> source;
    std::unique_ptr<codecs::ByteSink> held, sink; // the one that keep() finishes; the one that codecs write to
    codecs::Rows rows;
    std::unique_ptr<codecs::RowSink> to;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace command

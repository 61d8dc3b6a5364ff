// bytefile.h - files and pipes as streams of bytes.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <memory>
#include <string>

namespace codecs {

// "-" is standard input.
std::unique_ptr<ByteSource> openBytes(const std::string& path);

// "-" is standard output. A file is written beside its place under another name and takes its place in finish(): when
// work fails, is interrupted or never gets there, what stood under the name stays as it was. What is no plain file (a
// device, a named pipe) is written as it is.
std::unique_ptr<ByteSink> createBytes(const std::string& path);

// For a handler of signals: removes the files that are not finished. It calls nothing that a handler may not.
void removeUnfinishedFiles() noexcept;

// Holds bytes back in a nameless temporary file, and hands them on in finish(), which finishes the target too. For
// formats that go back, on pipes.
class SpooledSink final : public ByteSink {
public:
    explicit SpooledSink(ByteSink& target);
    ~SpooledSink() override;

    void write(ByteView bytes) override;
    void finish() override;
    std::uint64_t position() const override;
    bool seekable() const override { return true; }
    void patch(std::uint64_t at, ByteView bytes) override;
    std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> to) override;

private:
    ByteSink& target;
    std::unique_ptr<ByteSink> spool;
};

// A whole file, in and out.
Bytes readFile(const std::string& path);
void writeFile(const std::string& path, ByteView bytes);

// The name of a file for messages.
inline std::string nameForMessages(const std::string& path, bool input) {
    return path != "-" ? path : input ? "standard input" : "standard output";
}

} // namespace codecs

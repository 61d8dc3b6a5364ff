// descriptor.h - open files of the system, closed by themselves, and its calls with every way in which they may fall short.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <memory>
#include <string>
#include <utility>

namespace codecs {

class Descriptor {
public:
    Descriptor() = default;
    Descriptor(int opened, std::string fileName, bool closing = true)
        : fd(opened), name(std::move(fileName)), owned(closing) {}
    Descriptor(Descriptor&& other) noexcept { swap(other); }
    Descriptor& operator=(Descriptor&& other) noexcept {
        swap(other);
        return *this;
    }
    ~Descriptor() { close(); }

    int get() const { return fd; }
    const std::string& file() const { return name; }
    // The same file for somebody who must not outlive this.
    Descriptor lent() const { return {fd, name, false}; }
    bool isPlainFile() const;
    std::uint64_t fileSize() const;

    // What there is by now, nothing only at the end of the file.
    std::size_t readSome(std::span<std::uint8_t> to) const;
    // Less than asked for only at the end of the file.
    std::size_t read(std::span<std::uint8_t> to) const;
    std::size_t readAt(std::uint64_t at, std::span<std::uint8_t> to) const;
    void write(ByteView bytes) const;
    void writeAt(std::uint64_t at, ByteView bytes) const;
    // False where the system says that not all that was written has arrived.
    bool close() noexcept;

    // Throws a FileError with the system's own words.
    [[noreturn]] void fail() const;

private:
    void swap(Descriptor& other) noexcept {
        std::swap(fd, other.fd);
        std::swap(name, other.name);
        std::swap(owned, other.owned);
    }

    int fd = -1;
    std::string name;
    bool owned = true;
};

// open(2), once more where a signal came between.
int openUninterrupted(const char* path, int flags);
// Opens a file for reading, "-" for standard input.
Descriptor openToRead(const std::string& path);
// A file without a name, gone with its descriptor.
Descriptor openNameless();

// Streams on open files. Such a sink goes back, and must not be on a pipe.
std::unique_ptr<ByteSource> sourceOn(Descriptor opened);
std::unique_ptr<ByteSink> sinkOn(Descriptor opened);

} // namespace codecs

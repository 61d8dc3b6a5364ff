// bytes.h - streams of bytes in and out, whatever is behind them: memory (here), a file or a pipe (bytefile.h).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/error.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace codecs {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// Bytes to read, through a window that slides, so that memory stays flat whatever the length. What needs more than that
// asks for readAt(), size() or whole(): a file answers without being held in memory; a pipe is first read to its end,
// which must happen before its first skip().
class ByteSource {
public:
    virtual ~ByteSource() = default;

    // What stands at the position: `wanted` bytes or more, fewer only where the end is nearer. It holds until the next
    // call of view() or skip().
    virtual ByteView view(std::size_t wanted) = 0;
    // Moves the position on, to the end at the furthest.
    virtual void skip(std::uint64_t n) = 0;
    virtual std::uint64_t position() const = 0;

    // Whether it must be read to its end for these, which leave the position alone.
    virtual bool isPipe() const = 0;
    virtual std::uint64_t size() = 0;
    virtual std::size_t readAt(std::uint64_t at, std::span<std::uint8_t> to) = 0; // how many there were
    virtual ByteView whole() = 0;                                                 // holds as long as the source
};

// A place for bytes. Without finish() they are nothing yet: a file is not there under its name.
class ByteSink {
public:
    virtual ~ByteSink() = default;

    virtual void write(ByteView bytes) = 0;     // at the end
    virtual void finish() = 0;                  // once more does nothing
    virtual std::uint64_t position() const = 0; // the end

    // For formats that go back to what they have written. A pipe cannot: wrap it in a SpooledSink.
    virtual bool seekable() const = 0;
    virtual void patch(std::uint64_t at, ByteView bytes) = 0; // may lie behind the end, which then moves
    virtual std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> to) = 0;
};

class MemorySource final : public ByteSource {
public:
    explicit MemorySource(ByteView all) : bytes(all) {} // a view: the bytes stay with the caller

    ByteView view(std::size_t) override { return bytes.subspan(at); }
    void skip(std::uint64_t n) override { at += std::size_t(n < bytes.size() - at ? n : bytes.size() - at); }
    std::uint64_t position() const override { return at; }
    bool isPipe() const override { return false; }
    std::uint64_t size() override { return bytes.size(); }
    std::size_t readAt(std::uint64_t from, std::span<std::uint8_t> to) override;
    ByteView whole() override { return bytes; }

private:
    ByteView bytes;
    std::size_t at = 0;
};

// A source that stays with the caller, for what wants one of its own.
class BorrowedSource final : public ByteSource {
public:
    explicit BorrowedSource(ByteSource& source) : from(source) {}

    ByteView view(std::size_t wanted) override { return from.view(wanted); }
    void skip(std::uint64_t n) override { from.skip(n); }
    std::uint64_t position() const override { return from.position(); }
    bool isPipe() const override { return from.isPipe(); }
    std::uint64_t size() override { return from.size(); }
    std::size_t readAt(std::uint64_t at, std::span<std::uint8_t> to) override { return from.readAt(at, to); }
    ByteView whole() override { return from.whole(); }

private:
    ByteSource& from;
};

class MemorySink final : public ByteSink {
public:
    Bytes bytes;

    void write(ByteView more) override { bytes.insert(bytes.end(), more.begin(), more.end()); }
    void finish() override {}
    std::uint64_t position() const override { return bytes.size(); }
    bool seekable() const override { return true; }
    void patch(std::uint64_t at, ByteView with) override;
    std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> to) override;
};

} // namespace codecs

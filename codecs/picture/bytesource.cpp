// bytesource.cpp - files and pipes to read from.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "codecs/picture/descriptor.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <sys/mman.h>
#include <unistd.h>

namespace codecs {
namespace {

// Read at once, unless a view wants more. It fits a second-level cache together with what is made of it.
constexpr std::size_t kWindow = std::size_t(1) << 18;

class Mapping {
public:
    Mapping() = default;
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping() {
        if (at) munmap(at, size);
    }
    bool make(int fd, std::size_t bytes) {
        void* p = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, fd, 0);
        if (p == MAP_FAILED) return false;
        at = p;
        size = bytes;
        return true;
    }
    ByteView view() const { return {static_cast<const std::uint8_t*>(at), size}; }

private:
    void* at = nullptr;
    std::size_t size = 0;
};

// What a descriptor has to give, behind what was read of it before.
Bytes slurp(const Descriptor& file, ByteView before) {
    // A byte more than a file has shows its end without another round.
    const std::size_t known = file.isPlainFile() ? std::size_t(file.fileSize()) + 1 : 0;
    Bytes bytes(before.begin(), before.end());
    std::size_t used = bytes.size();
    do {
        bytes.resize(std::max({kWindow, 2 * used, known}));
        used += file.read({bytes.data() + used, bytes.size() - used});
    } while (used == bytes.size());
    bytes.resize(used);
    return bytes;
}

// The window is a buffer that read(2) fills, not a mapping that slides: a file that is cut short meanwhile ends then, in
// place of a signal, and the copy into a warm cache costs no more than the page faults would.
class DescriptorSource final : public ByteSource {
public:
    explicit DescriptorSource(Descriptor opened) : file(std::move(opened)), plain(file.isPlainFile()) {
        // Standard input may stand anywhere in its file.
        if (const off_t here = plain ? lseek(file.get(), 0, SEEK_CUR) : 0; here > 0) base = std::uint64_t(here);
    }

    ByteView view(std::size_t wanted) override {
        if (held) return rest(*held);
        if (end - begin < wanted && !ended) fill(wanted);
        return {buffer.get() + begin, end - begin};
    }

    void skip(std::uint64_t n) override {
        while (n > 0) {
            if (const ByteView there = view(1); !there.empty()) {
                const std::uint64_t some = std::min<std::uint64_t>(n, there.size());
                if (!held) begin += std::size_t(some);
                offset += some;
                n -= some;
            } else {
                return;
            }
        }
    }

    std::uint64_t position() const override { return offset; }

    bool isPipe() const override { return !plain; }

    std::uint64_t size() override {
        if (!plain || held) return whole().size();
        const std::uint64_t length = file.fileSize();
        return length > base ? length - base : 0;
    }

    std::size_t readAt(std::uint64_t at, std::span<std::uint8_t> to) override {
        if (plain && !held) return file.readAt(base + at, to);
        return MemorySource(whole()).readAt(at, to);
    }

    ByteView whole() override {
        if (!held) held = plain && base + size() > 0 ? mapped() : slurped();
        return *held;
    }

private:
    ByteView rest(ByteView from) const {
        return from.subspan(std::size_t(std::min<std::uint64_t>(offset, from.size())));
    }

    // Moves what is left to the front and reads on, as far as a pipe has something and at least to what is wanted. A view
    // of more than the window gets a buffer of just its size, so that equal views follow each other without moving
    // anything.
    void fill(std::size_t wanted) {
        const std::size_t left = end - begin;
        if (const std::size_t size = std::max(wanted, kWindow); size > capacity) {
            std::unique_ptr<std::uint8_t[]> larger(new std::uint8_t[size]);
            if (left) std::memcpy(larger.get(), buffer.get() + begin, left);
            buffer = std::move(larger);
            capacity = size;
        } else if (left) {
            std::memmove(buffer.get(), buffer.get() + begin, left);
        }
        begin = 0;
        for (end = left; end < wanted && !ended;) {
            const std::size_t n = file.readSome({buffer.get() + end, capacity - end});
            end += n;
            ended = n == 0;
        }
    }

    ByteView mapped() {
        const std::uint64_t length = file.fileSize();
        if (length > SIZE_MAX || !mapping.make(file.get(), std::size_t(length))) return slurped();
        return mapping.view().subspan(std::size_t(std::min(base, length)));
    }

    ByteView slurped() {
        if (offset > 0) throw std::logic_error("a pipe cannot be read again from its start");
        all = slurp(file, {buffer.get() + begin, end - begin});
        return all;
    }

    Descriptor file;
    bool plain;
    std::uint64_t base = 0, offset = 0; // of the first byte in the file; of the next one behind it
    std::unique_ptr<std::uint8_t[]> buffer;
    std::size_t capacity = 0, begin = 0, end = 0;
    bool ended = false;
    std::optional<ByteView> held; // the whole
    Mapping mapping;
    Bytes all;
};

} // namespace

std::unique_ptr<ByteSource> sourceOn(Descriptor opened) {
    return std::make_unique<DescriptorSource>(std::move(opened));
}

std::unique_ptr<ByteSource> openBytes(const std::string& path) { return sourceOn(openToRead(path)); }

Bytes readFile(const std::string& path) { return slurp(openToRead(path), {}); }

} // namespace codecs

// nofiles.cpp - what codecs/picture/ has in descriptor.cpp, bytesource.cpp and bytesink.cpp, where there are no files: nameless
// files are in memory, and named ones cannot be opened.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "codecs/picture/descriptor.h"

#include <algorithm>
#include <map>

namespace codecs {
namespace {

std::map<int, Bytes> files; // by descriptor

[[noreturn]] void refuse(const std::string& path) { throw FileError(path + ": there are no files here"); }

std::size_t copyOut(const Bytes& from, std::uint64_t at, std::span<std::uint8_t> to) {
    const std::size_t n = at < from.size() ? std::min<std::size_t>(to.size(), from.size() - std::size_t(at)) : 0;
    std::copy_n(from.begin() + std::ptrdiff_t(n > 0 ? at : 0), n, to.begin());
    return n;
}

void copyIn(Bytes& to, std::uint64_t at, ByteView from) {
    const std::uint64_t end = at + from.size();
    if (end > to.max_size()) throw std::bad_alloc();
    if (end > to.size()) to.resize(std::size_t(end));
    std::copy(from.begin(), from.end(), to.begin() + std::ptrdiff_t(at));
}

// The file lives as long as whoever opened it.
class NamelessSink final : public ByteSink {
public:
    explicit NamelessSink(Descriptor file) : kept(std::move(file)) {}
    void write(ByteView bytes) override { copyIn(files[kept.get()], position(), bytes); }
    void finish() override {}
    std::uint64_t position() const override { return files[kept.get()].size(); }
    bool seekable() const override { return true; }
    void patch(std::uint64_t at, ByteView bytes) override { copyIn(files[kept.get()], at, bytes); }
    std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> to) override {
        return copyOut(files[kept.get()], at, to);
    }

private:
    Descriptor kept;
};

} // namespace

std::size_t Descriptor::readAt(std::uint64_t at, std::span<std::uint8_t> to) const {
    return copyOut(files[fd], at, to);
}
void Descriptor::writeAt(std::uint64_t at, ByteView bytes) const { copyIn(files[fd], at, bytes); }

bool Descriptor::close() noexcept {
    if (owned && fd >= 0) files.erase(fd);
    fd = -1;
    return true;
}

Descriptor openNameless() {
    const int fd = files.empty() ? 0 : files.rbegin()->first + 1;
    files[fd];
    return {fd, "a file in memory"};
}

std::unique_ptr<ByteSource> sourceOn(Descriptor opened) {
    return std::make_unique<MemorySource>(files[opened.get()]); // lent: the bytes stay with who has opened it
}
std::unique_ptr<ByteSink> sinkOn(Descriptor opened) { return std::make_unique<NamelessSink>(std::move(opened)); }

std::unique_ptr<ByteSource> openBytes(const std::string& path) { refuse(path); }
std::unique_ptr<ByteSink> createBytes(const std::string& path) { refuse(path); }
Bytes readFile(const std::string& path) { refuse(path); }
void writeFile(const std::string& path, ByteView) { refuse(path); }

} // namespace codecs

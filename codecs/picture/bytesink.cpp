// bytesink.cpp - files and pipes to write to.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "codecs/picture/descriptor.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace codecs {
namespace {

// The names of files that are not finished, where a handler of signals finds them. A file beyond the last place is just
// not found by it.
std::array<std::atomic<const char*>, 64> unfinished;
static_assert(std::atomic<const char*>::is_always_lock_free);

// A file beside its place, under a name that no one else has.
class Unfinished {
public:
    explicit Unfinished(const std::string& target) {
        const auto slash = target.rfind('/');
        const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
        for (unsigned n = 0; fd < 0; ++n) {
            name = folder + ".zmx-" + std::to_string(getpid()) + "-" + std::to_string(n);
            fd = openUninterrupted(name.c_str(), O_RDWR | O_CREAT | O_EXCL);
            if (fd < 0 && errno != EEXIST) throw FileError(target + ": " + std::strerror(errno));
        }
        for (auto& place : unfinished) {
            const char* none = nullptr;
            if (place.compare_exchange_strong(none, name.c_str())) {
                listed = &place;
                break;
            }
        }
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        if (!name.empty()) unlink(name.c_str());
        unlist();
    }

    bool takePlace(const std::string& target) {
        if (std::rename(name.c_str(), target.c_str()) != 0) return false;
        unlist();
        name.clear();
        return true;
    }

    int fd = -1;

private:
    void unlist() {
        if (listed) listed->store(nullptr);
        listed = nullptr;
    }

    std::string name;
    std::atomic<const char*>* listed = nullptr;
};

// What all of them have: bytes wait in a buffer. Whole buffers at multiples of their size, which the system keeps in large
// pages, cost less than rows as they come, even with the copy that this takes.
class DescriptorSink : public ByteSink {
public:
    DescriptorSink(Descriptor opened, bool goesBack) : file(std::move(opened)), back(goesBack) {}

    void write(ByteView bytes) override {
        while (!bytes.empty()) {
            const std::size_t n = std::min(bytes.size(), buffer.size() - used);
            std::copy_n(bytes.begin(), n, buffer.begin() + std::ptrdiff_t(used));
            used += n;
            bytes = bytes.subspan(n);
            if (used == buffer.size()) flush();
        }
    }
    void finish() override {
        flush();
        if (!file.close()) file.fail();
    }
    std::uint64_t position() const override { return written + used; }
    bool seekable() const override { return back; }
    void patch(std::uint64_t at, ByteView bytes) override {
        flush();
        file.writeAt(at, bytes);
        written = std::max(written, at + bytes.size());
    }
    std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> to) override {
        flush();
        return file.readAt(at, to);
    }

protected:
    void flush() { put({buffer.data(), std::exchange(used, 0)}); }

    Descriptor file;

private:
    // By place where there are places, for patch() may have moved the end.
    void put(ByteView bytes) {
        if (back)
            file.writeAt(written, bytes);
        else
            file.write(bytes);
        written += bytes.size();
    }

    bool back;
    std::uint64_t written = 0;
    std::size_t used = 0;
    std::array<std::uint8_t, 1 << 17> buffer;
};

class FileSink final : public DescriptorSink {
public:
    FileSink(std::string place, const std::string& name, std::unique_ptr<Unfinished> beside)
        : DescriptorSink(Descriptor(beside->fd, name), true), target(std::move(place)),
          unfinishedFile(std::move(beside)) {}

    void finish() override {
        DescriptorSink::finish();
        if (unfinishedFile && !unfinishedFile->takePlace(target)) file.fail();
        unfinishedFile.reset();
    }

private:
    std::string target;
    std::unique_ptr<Unfinished> unfinishedFile;
};

// The file that a link leads to is what is to be replaced, not the link.
std::string linkFollowed(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

} // namespace

std::unique_ptr<ByteSink> sinkOn(Descriptor opened) {
    return std::make_unique<DescriptorSink>(std::move(opened), true);
}

std::unique_ptr<ByteSink> createBytes(const std::string& path) {
    const std::string name = nameForMessages(path, false);
    if (path == "-") return std::make_unique<DescriptorSink>(Descriptor(STDOUT_FILENO, name, false), false);
    struct stat old {};
    const bool exists = stat(path.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        Descriptor device(openUninterrupted(path.c_str(), O_WRONLY), name);
        if (device.get() < 0) device.fail();
        return std::make_unique<DescriptorSink>(std::move(device), false);
    }
    // What may not be written may not be replaced either.
    if (exists && access(path.c_str(), W_OK) != 0) Descriptor(-1, name).fail();
    const std::string target = exists ? linkFollowed(path) : path;
    auto beside = std::make_unique<Unfinished>(target);
    if (exists && fchmod(beside->fd, old.st_mode & 07777) != 0) Descriptor(-1, name).fail();
    return std::make_unique<FileSink>(target, name, std::move(beside));
}

void removeUnfinishedFiles() noexcept {
    for (auto& place : unfinished)
        if (const char* name = place.exchange(nullptr)) unlink(name);
}

void writeFile(const std::string& path, ByteView bytes) {
    const auto file = createBytes(path);
    file->write(bytes);
    file->finish();
}

} // namespace codecs

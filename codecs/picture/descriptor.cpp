// descriptor.cpp - the system's calls on files, repeated until all is done or they fail.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/descriptor.h"

#include "codecs/picture/bytefile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace codecs {
namespace {

// A call takes at most this many bytes, which every system allows.
constexpr std::size_t kMostAtOnce = std::size_t(1) << 30;

// Repeats a call of read(2)'s kind over a span until it is done or nothing comes any more. Returns what was done.
template <class Span, class Call> std::size_t repeated(Span bytes, const Descriptor& file, Call call) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = call(bytes.data() + done, std::min(bytes.size() - done, kMostAtOnce), done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) file.fail();
        if (n == 0) break;
        done += std::size_t(n);
    }
    return done;
}

// The same for what must all be taken: a device that takes nothing, and has no reason, would lose the rest.
template <class Call> void allWritten(ByteView bytes, const Descriptor& file, Call call) {
    if (repeated(bytes, file, call) == bytes.size()) return;
    errno = EIO;
    file.fail();
}

} // namespace

void Descriptor::fail() const { throw FileError(name + ": " + std::strerror(errno)); }

bool Descriptor::isPlainFile() const {
    struct stat s {};
    return fstat(fd, &s) == 0 && S_ISREG(s.st_mode);
}

std::uint64_t Descriptor::fileSize() const {
    struct stat s {};
    if (fstat(fd, &s) != 0) fail();
    return std::uint64_t(s.st_size);
}

std::size_t Descriptor::readSome(std::span<std::uint8_t> to) const {
    while (true) {
        const ssize_t n = ::read(fd, to.data(), std::min(to.size(), kMostAtOnce));
        if (n >= 0) return std::size_t(n);
        if (errno != EINTR) fail();
    }
}

std::size_t Descriptor::read(std::span<std::uint8_t> to) const {
    return repeated(to, *this, [&](std::uint8_t* p, std::size_t n, std::size_t) { return ::read(fd, p, n); });
}

std::size_t Descriptor::readAt(std::uint64_t at, std::span<std::uint8_t> to) const {
    return repeated(
        to, *this, [&](std::uint8_t* p, std::size_t n, std::size_t done) { return pread(fd, p, n, off_t(at + done)); });
}

void Descriptor::write(ByteView bytes) const {
    allWritten(bytes, *this, [&](const std::uint8_t* p, std::size_t n, std::size_t) { return ::write(fd, p, n); });
}

void Descriptor::writeAt(std::uint64_t at, ByteView bytes) const {
    allWritten(bytes, *this, [&](const std::uint8_t* p, std::size_t n, std::size_t done) {
        return pwrite(fd, p, n, off_t(at + done));
    });
}

bool Descriptor::close() noexcept {
    const int open = std::exchange(fd, -1);
    // An interrupted close() has closed nevertheless, and must not be repeated.
    return open < 0 || !owned || ::close(open) == 0 || errno == EINTR;
}

int openUninterrupted(const char* path, int flags) {
    int fd;
    do fd = ::open(path, flags | O_CLOEXEC, 0666);
    while (fd < 0 && errno == EINTR);
    return fd;
}

Descriptor openToRead(const std::string& path) {
    const std::string name = nameForMessages(path, true);
    if (path == "-") return {STDIN_FILENO, name, false};
    Descriptor file(openUninterrupted(path.c_str(), O_RDONLY), name);
    if (file.get() < 0) file.fail();
    struct stat s {};
    if (fstat(file.get(), &s) == 0 && S_ISDIR(s.st_mode)) {
        errno = EISDIR;
        file.fail();
    }
    return file;
}

Descriptor openNameless() {
    const char* folder = std::getenv("TMPDIR");
    std::string path;
    int fd;
    do fd = mkstemp((path = std::string(folder && *folder ? folder : "/tmp") + "/zmx-XXXXXX").data());
    while (fd < 0 && errno == EINTR);
    Descriptor file(fd, path);
    if (file.get() < 0) file.fail();
    unlink(path.c_str());
    return file;
}

} // namespace codecs

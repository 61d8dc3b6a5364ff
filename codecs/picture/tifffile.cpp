// tifffile.cpp - libtiff over our streams of bytes: its calls, its messages, and what both directions say in tags.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tifffile.h"

#include "codecs/picture/bytefile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>

namespace codecs {

TiffFile::TiffFile(ByteSource& bytes) : source(&bytes) { open("rm"); }

// The low byte first, on every machine.
TiffFile::TiffFile(ByteSink& bytes, bool big) : sink(&bytes) {
    if (!bytes.seekable()) {
        spool = std::make_unique<SpooledSink>(bytes);
        sink = spool.get();
    }
    open(big ? "wl8" : "wl");
}

void TiffFile::open(const char* mode) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep, this);
    TIFFOpenOptionsSetWarningHandlerExtR(
        options.get(),
        [](TIFF*, void* file, const char*, const char* format, va_list) {
            static_cast<TiffFile*>(file)->look(format);
            return 1;
        },
        this);
    handle.reset(TIFFClientOpenExt(
        "", mode, this, read, write, seek, [](thandle_t) { return 0; }, sizeOf, nullptr, nullptr, options.get()));
    if (!handle) fail("not readable as a TIFF file");
    if (unsound || thrown) {
        close(); // no destructor will
        needSound();
    }
}

// Without what TIFFClose() would still write: finish() has written all, and what is given up may be in no state for it.
// Where libtiff could not grow a list of tags it counts one more than it holds, and stumbles over it: such a handle is left
// behind.
void TiffFile::close() {
    if (!handle) return;
    TIFFSetMode(handle.get(), O_RDONLY);
    if (unsound)
        static_cast<void>(handle.release());
    else
        handle.reset();
}

template <class Code> auto TiffFile::guarded(Code code) -> decltype(code()) {
    try {
        return code();
    } catch (...) {
        if (!thrown) thrown = std::current_exception();
        return decltype(code())(-1);
    }
}

// Where it fails nothing was read: libtiff counts with the result, and clears memory ahead of its buffer by -1.
tmsize_t TiffFile::read(thandle_t handle, void* to, tmsize_t n) {
    TiffFile& f = of(handle);
    const tmsize_t done = f.guarded([&] {
        const std::span<std::uint8_t> room(static_cast<std::uint8_t*>(to), std::size_t(n));
        const std::size_t got = f.source ? f.source->readAt(f.place, room) : f.sink->readBack(f.place, room);
        f.place += got;
        return tmsize_t(got);
    });
    return std::max(done, tmsize_t(0));
}

tmsize_t TiffFile::write(thandle_t handle, void* from, tmsize_t n) {
    TiffFile& f = of(handle);
    return f.guarded([&] {
        const ByteView bytes(static_cast<const std::uint8_t*>(from), std::size_t(n));
        if (f.source) return tmsize_t(-1);
        if (f.place == f.sink->position())
            f.sink->write(bytes);
        else
            f.sink->patch(f.place, bytes);
        f.place += bytes.size();
        return n;
    });
}

toff_t TiffFile::seek(thandle_t handle, toff_t to, int whence) {
    TiffFile& f = of(handle);
    f.place = whence == SEEK_SET ? to : whence == SEEK_CUR ? f.place + to : sizeOf(handle) + to;
    return f.place;
}

toff_t TiffFile::sizeOf(thandle_t handle) {
    TiffFile& f = of(handle);
    return f.guarded([&] { return toff_t(f.source ? f.source->size() : f.sink->position()); });
}

int TiffFile::keep(TIFF*, void* file, const char*, const char* format, va_list values) {
    // No exception may leave a callback of C, so the text has its place already. The first is the cause.
    TiffFile& f = *static_cast<TiffFile*>(file);
    if (!f.told[0]) std::vsnprintf(f.told.data(), f.told.size(), format, values);
    f.look(format);
    return 1;
}

void TiffFile::look(const char* message) {
    for (const char* words : {"llocate ", "ut of memory", "nough memory", "o space ", "nsertion in tif_map"})
        unsound = unsound || std::strstr(message, words);
}

void TiffFile::needSound() const {
    if (unsound || thrown) fail({});
}

void TiffFile::fail(const std::string& what) const {
    if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
    std::string why = told.data();
    std::replace(why.begin(), why.end(), '\n', ' ');
    throw Error("TIFF: " + (unsound ? "not enough memory" : what) + (why.empty() ? "" : " (" + why + ")"));
}

void TiffFile::setAlpha() const {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (!TIFFSetField(get(), TIFFTAG_EXTRASAMPLES, 1, &alpha)) fail("the alpha channel cannot be written");
}

void TiffFile::finish() {
    const bool flushed = TIFFFlush(get());
    needSound();
    close();
    if (!flushed || thrown) fail("the directory cannot be written");
    sink->finish();
}

Bytes TiffFile::bytes(std::uint32_t which) const {
    std::uint32_t count = 0;
    const std::uint8_t* value = nullptr;
    if (!TIFFGetField(handle.get(), which, &count, &value) || !value) return {};
    return {value, value + count};
}

void TiffFile::setBytes(std::uint32_t which, ByteView value) const {
    if (!TIFFSetField(handle.get(), which, std::uint32_t(value.size()), value.data()))
        fail("the tag " + std::to_string(which) + " cannot be written");
}

std::uint64_t TiffFile::append(ByteView more) {
    const std::uint8_t zero = 0;
    if (sink->position() % 2) sink->write({&zero, 1});
    const std::uint64_t at = sink->position();
    sink->write(more);
    return at;
}

} // namespace codecs

// tifffile.cpp - libtiff over our streams of bytes: its calls, its messages, and what both directions say in tags.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tifffile.h"

#include "codecs/picture/bytefile.h"

#include <algorithm>
#include <cstdio>

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
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep, this);
    TIFFOpenOptionsSetWarningHandlerExtR(
        options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return 1; }, this);
    handle.reset(TIFFClientOpenExt(
        "", mode, this, read, write, seek, [](thandle_t) { return 0; }, sizeOf, nullptr, nullptr, options.get()));
    if (!handle) fail("not readable as a TIFF file");
}

template <class Code> auto TiffFile::guarded(Code code) -> decltype(code()) {
    try {
        return code();
    } catch (...) {
        if (!thrown) thrown = std::current_exception();
        return decltype(code())(-1);
    }
}

tmsize_t TiffFile::read(thandle_t handle, void* to, tmsize_t n) {
    TiffFile& f = of(handle);
    return f.guarded([&] {
        const std::span<std::uint8_t> room(static_cast<std::uint8_t*>(to), std::size_t(n));
        const std::size_t got = f.source ? f.source->readAt(f.place, room) : f.sink->readBack(f.place, room);
        f.place += got;
        return tmsize_t(got);
    });
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
    std::string& text = static_cast<TiffFile*>(file)->told;
    char line[300];
    std::vsnprintf(line, sizeof line, format, values);
    if (text.empty()) text = line; // the first is the cause
    return 1;
}

void TiffFile::fail(const std::string& what) const {
    if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
    std::string why = told;
    std::replace(why.begin(), why.end(), '\n', ' ');
    throw Error("TIFF: " + what + (why.empty() ? "" : " (" + why + ")"));
}

void TiffFile::setAlpha() const {
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (!TIFFSetField(get(), TIFFTAG_EXTRASAMPLES, 1, &alpha)) fail("the alpha channel cannot be written");
}

void TiffFile::finish() {
    const bool flushed = TIFFFlush(get());
    handle.reset();
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

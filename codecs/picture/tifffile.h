// tifffile.h - an open TIFF file of libtiff, with its tags and its messages.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/picture.h"

#include <array>
#include <cstdarg>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <tiffio.h>

namespace codecs {

class TiffFile {
public:
    // An Error when the bytes are no TIFF file. More than one may read the same bytes.
    explicit TiffFile(ByteSource& bytes);
    // To write, through a spool where the sink cannot go back. `big` for files that may grow beyond 4 GiB.
    TiffFile(ByteSink& bytes, bool big);
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;
    ~TiffFile() { close(); }
    TIFF* get() const { return handle.get(); }

    // Throws an Error of one line: `what`, and libtiff's first message if there is one.
    [[noreturn]] void fail(const std::string& what) const;
    [[noreturn]] void refuse(const std::string& tag, unsigned value) const {
        fail(tag + " " + std::to_string(value) + " is not supported");
    }

    // A tag of one number, or its default.
    template <class T> T tag(std::uint32_t which, T otherwise) const {
        T value{};
        return TIFFGetFieldDefaulted(handle.get(), which, &value) ? value : otherwise;
    }
    void set(std::uint32_t which, unsigned value) const {
        if (!TIFFSetField(handle.get(), which, value)) fail("the tag " + std::to_string(which) + " cannot be written");
    }
    // A tag whose value libtiff holds as `count` bytes; empty where there is none.
    Bytes bytes(std::uint32_t which) const;
    void setBytes(std::uint32_t which, ByteView value) const;
    ByteSource& input() const { return *source; }
    // Bytes behind all that there is so far, at an even place. Returns where they stand.
    std::uint64_t append(ByteView bytes);
    bool isBig() const { return TIFFIsBigTIFF(handle.get()); }

    // An Error where libtiff's memory ran out or a file could not be read: it may leave out tags then, or fill up samples.
    void needSound() const;
    // The last channel of a picture.
    void setAlpha() const;
    // Writes what is still held back, and finishes the sink.
    void finish();

private:
    void open(const char* mode);
    static TiffFile& of(thandle_t handle) { return *static_cast<TiffFile*>(handle); }
    void close();
    void look(const char* message); // of libtiff's: whether it tells of memory
    static tmsize_t read(thandle_t handle, void* to, tmsize_t n);
    static tmsize_t write(thandle_t handle, void* from, tmsize_t n);
    static toff_t seek(thandle_t handle, toff_t to, int whence);
    static toff_t sizeOf(thandle_t handle);
    static int keep(TIFF*, void* file, const char*, const char* format, va_list values);
    // Our code in a callback of libtiff, which knows no exceptions.
    template <class Code> auto guarded(Code code) -> decltype(code());

    ByteSource* source = nullptr;
    ByteSink* sink = nullptr;
    std::unique_ptr<ByteSink> spool;
    std::uint64_t place = 0; // where libtiff stands
    mutable std::exception_ptr thrown;
    std::array<char, 300> told{};
    bool unsound = false; // libtiff's structures, where its memory ran out
    std::unique_ptr<TIFF, void (*)(TIFF*)> handle{nullptr, TIFFClose};
};

} // namespace codecs

// pnglib.h - libpng called from C++: its errors jump, ours are thrown, and neither may cross the other's frames.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/error.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <png.h>
#include <string>
#include <utility>

namespace codecs {

// The text that is XMP (XMP specification, part 3).
inline constexpr char kPngXmpKeyword[] = "XML:com.adobe.xmp";

// The two structures of libpng for one file, and what went wrong.
class PngLib {
public:
    enum class Way { read, write };
    explicit PngLib(Way direction) : way(direction) {
        const auto create = way == Way::read ? png_create_read_struct_2 : png_create_write_struct_2;
        png = create(PNG_LIBPNG_VER_STRING, this, onError, onWarning, this, take, give);
        info = png ? png_create_info_struct(png) : nullptr;
    }
    PngLib(const PngLib&) = delete;
    PngLib& operator=(const PngLib&) = delete;
    ~PngLib() {
        if (way == Way::read)
            png_destroy_read_struct(&png, &info, nullptr);
        else
            png_destroy_write_struct(&png, &info);
    }

    // Calls of libpng. Where one fails this throws; what `calls` itself makes has no destructor, for a jump passes it by.
    template <class Calls> [[gnu::noinline]] void run(Calls calls) {
        if (!info) throw std::bad_alloc();
        if (setjmp(jump)) {
            if (thrown) std::rethrow_exception(std::exchange(thrown, nullptr));
            if (noMemory) throw std::bad_alloc();
            throw Error(std::string("PNG: ") + text);
        }
        calls();
        // Of a chunk beside the samples libpng only warns then, and leaves it out.
        if (noMemory) throw std::bad_alloc();
    }
    // Our own code in a callback of libpng: an exception waits until run() can throw it.
    template <class Code> void guarded(Code code) {
        try {
            code();
            return;
        } catch (...) {
            thrown = std::current_exception();
        }
        png_error(png, "in a callback");
    }

    png_structp png = nullptr;
    png_infop info = nullptr;
    char profileTrouble[200] = "";

private:
    static png_voidp take(png_structp png, png_alloc_size_t n) {
        void* const p = std::malloc(n);
        if (!p) static_cast<PngLib*>(png_get_mem_ptr(png))->noMemory = true;
        return p;
    }
    static void give(png_structp, png_voidp p) { std::free(p); }
    [[noreturn]] static void onError(png_structp png, png_const_charp message) {
        auto* self = static_cast<PngLib*>(png_get_error_ptr(png));
        std::snprintf(self->text, sizeof self->text, "%s", message);
        std::longjmp(self->jump, 1);
    }
    static void onWarning(png_structp png, png_const_charp message) {
        // "iCCP: ..." says why a colour profile was left out; the others leave nothing out.
        auto* self = static_cast<PngLib*>(png_get_error_ptr(png));
        if (std::strncmp(message, "iCCP", 4) == 0)
            std::snprintf(self->profileTrouble, sizeof self->profileTrouble, "%s", message);
    }

    Way way;
    std::jmp_buf jump;
    bool noMemory = false;
    char text[200] = "";
    std::exception_ptr thrown;
};

} // namespace codecs

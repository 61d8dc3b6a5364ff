// glibcmemory.h - what glibc's allocator is called when malloc() is someone else's, and whose call it is.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <link.h>

extern "C" {
void* __libc_malloc(std::size_t n);
void* __libc_calloc(std::size_t count, std::size_t n);
void* __libc_realloc(void* p, std::size_t n);
void* __libc_memalign(std::size_t alignment, std::size_t n);
void __libc_free(void* p);
}

// Where a library that was loaded stands.
struct CodeRange {
    const char* name;
    std::uintptr_t begin = UINTPTR_MAX, end = 0;

    explicit CodeRange(const char* library) : name(library) {
        dl_iterate_phdr(
            [](dl_phdr_info* info, std::size_t, void* range) {
                CodeRange& self = *static_cast<CodeRange*>(range);
                for (int i = 0; std::strstr(info->dlpi_name, self.name) && i < info->dlpi_phnum; ++i) {
                    const std::uintptr_t at = info->dlpi_addr + info->dlpi_phdr[i].p_vaddr;
                    self.begin = std::min(self.begin, at);
                    self.end = std::max(self.end, at + info->dlpi_phdr[i].p_memsz);
                }
                return 0;
            },
            this);
    }
    bool holds(const void* address) const {
        const auto a = reinterpret_cast<std::uintptr_t>(address);
        return a >= begin && a < end;
    }
};

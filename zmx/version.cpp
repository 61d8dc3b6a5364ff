// version.cpp - what helps with a report: which library was loaded, what it was built by, and what it may use here.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/version.h"
#include "codecs/picture/files.h"
#include "zmxcore.h"
#include "zmxj.h"

#include <bit>
#include <cstdio>
#include <dlfcn.h>
#include <filesystem>
#include <sched.h>
#include <unistd.h>

// What the build knows of itself; cmake/codecs.cmake sets all of them.
#ifndef ZMX_BUILD
#define ZMX_BUILD "unknown"
#define ZMX_IMAGE_LIBRARIES "unknown"
#endif

namespace command {
namespace {

// Two columns; the heads are what a script looks for.
std::string line(std::string head, const std::string& text) {
    head.resize(12, ' ');
    return "\n" + head + text;
}

// Where the loader found the library. A program that holds it (static libraries) is the place itself.
std::string libraryPath() {
    Dl_info place{};
    // A pointer to a function is no pointer to an object for C++; POSIX says that it can be made one.
    if (!dladdr(reinterpret_cast<const void*>(&zmxjGetLibVersion), &place) || !place.dli_fname) return "unknown";
    // As the loader has it the name goes by way of the program's own folder.
    std::error_code trouble;
    const auto whole = std::filesystem::weakly_canonical(place.dli_fname, trouble);
    return trouble ? std::string(place.dli_fname) : whole.string();
}

// The loader looks for builds for newer processors in folders of that name (ld.so(8)); all else is for every processor.
std::string levelOf(const std::string& path) {
    const std::string folder = "/glibc-hwcaps/";
    const auto at = path.rfind(folder);
    if (at == std::string::npos) return "baseline";
    const auto begin = at + folder.size();
    return path.substr(begin, path.find('/', begin) - begin);
}

// Of the command. The library may be another one: the loader takes what it finds.
const char* compiler() {
#if defined(__clang__)
    return "clang " __clang_version__;
#elif defined(__GNUC__)
    return "gcc " __VERSION__;
#else
    return "unknown";
#endif
}

// What the command was compiled for, which a 32-bit build on a 64-bit system differs in from uname(1).
const char* processor() {
#if defined(__x86_64__)
    return "x86-64";
#elif defined(__i386__)
    return "i386";
#elif defined(__aarch64__)
    return "arm64";
#else
    return "another processor";
#endif
}

// Allowed are those of the affinity mask, which taskset(1) and --threads narrow.
std::string processors() {
    cpu_set_t mask;
    CPU_ZERO(&mask);
    const int allowed = sched_getaffinity(0, sizeof mask, &mask) == 0 ? CPU_COUNT(&mask) : 0;
    return std::to_string(allowed) + " allowed of " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN));
}

} // namespace

std::string versionText(bool all, const Command& table) {
    const ZmxLibraryVersion& v = *zmxjGetLibVersion();
    std::string text = std::string(v.Name) + " " + v.Version;
    if (!all) return text;
    const std::string path = libraryPath();
    text += line("headers", ZMXJ_VERSION_STRING) + line("interface", std::string("of ") + v.BuildDate);
    text += line("loaded from", path) + line("level", levelOf(path));
    text += line("compiler", compiler()) + line("build", ZMX_BUILD);
    text += line("target", std::string(processor()) + ", " + std::to_string(8 * sizeof(void*)) + " bits, " +
                               (std::endian::native == std::endian::little ? "little-endian" : "big-endian"));
    text += line("processors", processors());
    // The processors, or fewer where the control group grants less time.
    text += line("threads", std::to_string(ownGetNumThreads()) + " at the most");
    text += line("pictures", codecs::kPictureEndings + " (" ZMX_IMAGE_LIBRARIES ")");
    // The codecs describe themselves.
    for (const Command& c : table.commands) text += line(c.words.back(), c.text);
    return text;
}

} // namespace command

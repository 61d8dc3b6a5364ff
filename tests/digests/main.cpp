// main.cpp - digests of what every function of libzmxjpx gives for inputs that are the same on every platform.
//
//   zmx_digests             prints them, a line each: 16 hexadecimal digits, a blank, the name
//   zmx_digests LIST        compares them with such a list; the exit code is 0 only when all are equal
//
// The list of the repository, digests.txt, was made by an x86-64 build without optimisation (scripts/everywhere --list).
// Every other build has to come to the same. A name is that of a function, and what is done with it behind a colon.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/groups.h"

#include <cstdio>
#include <map>

namespace {

std::string hexadecimal(std::uint64_t v) {
    std::string text(16, '0');
    for (std::size_t i = 16; i-- > 0; v >>= 4) text[i] = "0123456789abcdef"[v & 15];
    return text;
}

Report everything() {
    Report report;
    for (const Group& group : kGroups) group.digests(report);
    return report;
}

// The lines of a list, by name. Binary mode and the test for a carriage return: Windows may have added some.
bool readList(const char* path, std::map<std::string, std::string>& list) {
    std::FILE* file = std::fopen(path, "rb");
    if (!file) return false;
    std::string line;
    for (int c; (c = std::fgetc(file)) != EOF;) {
        if (c == '\n') {
            if (line.size() > 17 && line[16] == ' ') list[line.substr(17)] = line.substr(0, 16);
            line.clear();
        } else if (c != '\r') {
            line += char(c);
        }
    }
    std::fclose(file);
    return true;
}

// Sizes that hold for pointers of another width than ours.
bool ofOtherPointers(const std::string& name) {
    const auto endsWith = [&](const std::string& end) {
        return name.size() >= end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0;
    };
    return endsWith(pointerWidth(sizeof(void*) == 8 ? 4 : 8));
}

int compare(const Report& report, std::map<std::string, std::string> list) {
    int equal = 0, different = 0;
    for (const Report::Line& line : report.lines) {
        const auto known = list.find(line.name);
        const std::string value = hexadecimal(line.digest);
        if (known == list.end()) {
            std::printf("not in the list: %s\n", line.name.c_str());
            ++different;
        } else if (known->second != value) {
            std::printf("different: %s is %s, not %s\n", line.name.c_str(), value.c_str(), known->second.c_str());
            ++different;
        } else {
            ++equal;
        }
        if (known != list.end()) list.erase(known);
    }
    for (const auto& [name, value] : list) {
        if (ofOtherPointers(name)) continue;
        std::printf("not made: %s\n", name.c_str());
        ++different;
    }
    std::printf("%d of %d digests equal\n", equal, equal + different);
    return equal == 0 || different != 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count > 2) {
        std::fprintf(stderr, "usage: zmx_digests [LIST]\n");
        return 2;
    }
    const Report report = everything();
    if (count == 1) {
        for (const Report::Line& line : report.lines)
            std::printf("%s %s\n", hexadecimal(line.digest).c_str(), line.name.c_str());
        return 0;
    }
    std::map<std::string, std::string> list;
    if (!readList(arguments[1], list)) {
        std::fprintf(stderr, "zmx_digests: cannot read %s\n", arguments[1]);
        return 2;
    }
    return compare(report, list);
}

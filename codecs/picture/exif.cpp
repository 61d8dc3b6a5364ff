// exif.cpp - directories of tags, read in either byte order and of either word size, written with the low byte first.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/exif.h"

#include <algorithm>

namespace codecs {
namespace {

// Bytes of a value of each type, by its number in TIFF; 0: no such type.
constexpr std::uint8_t kTypeBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
// Bytes of the numbers that it is made of: a fraction is two of four.
constexpr std::uint8_t kNumberBytes[] = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8, 4, 1, 1, 8, 8, 8};
constexpr std::uint16_t kShort = 3, kLong = 4, kLong8 = 16;

// More is no description of a picture.
constexpr std::uint64_t kMostBytes = 1 << 24;
constexpr unsigned kMostEntries = 4096;

bool pointsToDirectory(std::uint16_t tag) { return tag == kExifDetails || tag == kExifGps || tag == kExifInterop; }

struct Damaged {};

class Reader {
public:
    // Byte order, then 42, or 43 where places are words of 64 bits (BigTIFF).
    explicit Reader(ByteSource& source) : bytes(source) {
        const Bytes head = take(0, 4);
        little = head[0] == 'I';
        if (head[0] != head[1] || (head[0] != 'I' && head[0] != 'M')) throw Damaged();
        const std::uint64_t version = number(head, 2, 2);
        big = version == 43;
        if (version != 42 && !big) throw Damaged();
    }

    ExifDirectory first() { return directory(big ? numberAt(8, 8) : numberAt(4, 4), 0); }

private:
    Bytes take(std::uint64_t at, std::uint64_t n) {
        // Directories may point to each other: all that is read together has a limit.
        if (n > kMostBytes - std::min(kMostBytes, taken)) throw Damaged();
        taken += n;
        Bytes out(static_cast<std::size_t>(n));
        if (bytes.readAt(at, out) != out.size()) throw Damaged();
        return out;
    }
    std::uint64_t number(const Bytes& from, std::size_t at, std::size_t size) const {
        std::uint64_t v = 0;
        for (std::size_t i = 0; i < size; ++i) v = v << 8 | from[at + (little ? size - 1 - i : i)];
        return v;
    }
    std::uint64_t numberAt(std::uint64_t at, std::size_t size) { return number(take(at, size), 0, size); }

    ExifDirectory directory(std::uint64_t at, int depth) {
        const std::size_t word = big ? 8 : 4, entryBytes = 4 + 2 * word;
        const std::uint64_t count = numberAt(at, big ? 8 : 2);
        if (count > kMostEntries || depth > 3) throw Damaged();
        at += big ? 8 : 2;
        const Bytes table = take(at, count * entryBytes);
        ExifDirectory all;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t start = i * entryBytes;
            ExifEntry e;
            e.tag = std::uint16_t(number(table, start, 2));
            e.type = std::uint16_t(number(table, start + 2, 2));
            e.count = number(table, start + 4, word);
            // What is of an unknown type cannot be measured, and is left out.
            if (e.type >= std::size(kTypeBytes) || kTypeBytes[e.type] == 0) continue;
            if (e.count > kMostBytes) throw Damaged();
            const std::uint64_t size = e.count * kTypeBytes[e.type];
            // A value that fits the word of its place stands there itself.
            e.at = size <= word ? at + start + 4 + word : number(table, start + 4 + word, word);
            if (pointsToDirectory(e.tag))
                e.children = directory(numberAt(e.at, e.type == kShort ? 2 : size > 4 ? 8 : 4), depth + 1);
            else
                e.value = ordered(take(e.at, size), kNumberBytes[e.type]);
            all.push_back(std::move(e));
        }
        return all;
    }
    Bytes ordered(Bytes value, std::size_t size) const {
        if (!little)
            for (std::size_t at = 0; at + size <= value.size(); at += size)
                std::reverse(value.begin() + std::ptrdiff_t(at), value.begin() + std::ptrdiff_t(at + size));
        return value;
    }

    ByteSource& bytes;
    bool little = true, big = false;
    std::uint64_t taken = 0;
};

void append(Bytes& to, std::uint64_t v, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) to.push_back(std::uint8_t(v >> 8 * i));
}

} // namespace

std::optional<ExifDirectory> parseExif(ByteSource& bytes) {
    try {
        return Reader(bytes).first();
    } catch (const Damaged&) {
        return std::nullopt;
    }
}
std::optional<ExifDirectory> parseExif(ByteView bytes) {
    MemorySource source(bytes);
    return parseExif(source);
}

Bytes serialiseDirectory(const ExifDirectory& directory, std::uint64_t base, bool big) {
    // Tags stand in rising order (TIFF 6.0, section 2).
    ExifDirectory sorted = directory;
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.tag < b.tag; });
    // A number of 8 bytes has no place in a small file.
    std::erase_if(sorted, [&](const ExifEntry& e) { return !big && e.type >= kLong8 && !pointsToDirectory(e.tag); });
    const std::size_t word = big ? 8 : 4, count = big ? 8 : 2;
    const std::uint64_t behind = base + count + sorted.size() * (4 + 2 * word) + word;
    Bytes table, values;
    append(table, sorted.size(), count);
    for (const ExifEntry& e : sorted) {
        const bool pointer = pointsToDirectory(e.tag);
        Bytes value = e.value;
        if (pointer) {
            if (values.size() % 2) values.push_back(0);
            const std::uint64_t at = behind + values.size();
            const Bytes more = serialiseDirectory(e.children, at, big);
            values.insert(values.end(), more.begin(), more.end());
            value.clear();
            append(value, at, word);
        }
        append(table, e.tag, 2);
        append(table, pointer ? big ? kLong8 : kLong : e.type, 2);
        append(table, pointer ? 1 : e.count, word);
        if (value.size() > word) {
            if (values.size() % 2) values.push_back(0); // values begin at even places
            append(table, behind + values.size(), word);
            values.insert(values.end(), value.begin(), value.end());
        } else {
            value.resize(word);
            table.insert(table.end(), value.begin(), value.end());
        }
    }
    append(table, 0, word); // no directory follows
    table.insert(table.end(), values.begin(), values.end());
    return table;
}

Bytes serialiseExif(const ExifDirectory& directory) {
    Bytes out{'I', 'I', 42, 0, 8, 0, 0, 0};
    const Bytes first = serialiseDirectory(directory, out.size());
    out.insert(out.end(), first.begin(), first.end());
    return out;
}

const ExifEntry* findEntry(const ExifDirectory& directory, std::uint16_t tag) {
    const auto found = std::find_if(directory.begin(), directory.end(), [&](const auto& e) { return e.tag == tag; });
    return found == directory.end() ? nullptr : &*found;
}

std::optional<Resolution> resolutionIn(const ExifDirectory& directory) {
    constexpr std::uint16_t kFraction = 5;
    // Numerator and denominator of 32 bits each; 0 where it is none.
    const auto fraction = [&](std::uint16_t tag) {
        const ExifEntry* e = findEntry(directory, tag);
        if (!e || e->type != kFraction || e->count != 1) return 0.0;
        const auto number = [&](std::size_t at) {
            return double(e->value[at] | e->value[at + 1] << 8 | e->value[at + 2] << 16) + e->value[at + 3] * 0x1p24;
        };
        return number(4) == 0 ? 0.0 : number(0) / number(4);
    };
    const double x = fraction(kExifAcross), y = fraction(kExifDown);
    const ExifEntry* unit = findEntry(directory, kExifUnit);
    // Inches are taken for granted. No unit, 1, is of TIFF alone: the numbers are a ratio then.
    const int code = unit && unit->value.size() >= 2 ? unit->value[0] : 2;
    if (x <= 0 || y <= 0 || code < 1 || code > 3 || (code == 1 && x == y)) return std::nullopt;
    constexpr Resolution::Unit units[] = {Resolution::Unit::none, Resolution::Unit::inch, Resolution::Unit::centimetre};
    return Resolution{x, y, units[code - 1]};
}

bool overwriteNumber(Bytes& exif, const ExifEntry& entry, unsigned value) {
    if (entry.count != 1 || (entry.type != kShort && entry.type != kLong)) return false;
    const bool little = exif[0] == 'I';
    const std::size_t size = entry.value.size();
    for (std::size_t i = 0; i < size; ++i) exif[entry.at + i] = std::uint8_t(value >> 8 * (little ? i : size - 1 - i));
    return true;
}

ExifEntry shortEntry(std::uint16_t tag, unsigned value) {
    ExifEntry e;
    e.tag = tag;
    e.type = kShort;
    e.count = 1;
    append(e.value, value, 2);
    return e;
}

} // namespace codecs

// metadata.cpp - APPn segments to metadata and back.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/metadata.h"

#include "codecs/jpeg/segmentwriter.h"
#include "codecs/picture/exif.h"
#include "codecs/picture/orientation.h"

#include <cmath>
#include <map>
#include <string_view>
#include <utility>

namespace codecs::jpeg {

namespace {

// What the segments begin with.
constexpr std::string_view kJfif{"JFIF\0", 5}, kExif{"Exif\0\0", 6}, kXmp{"http://ns.adobe.com/xap/1.0/\0", 29},
    kMoreXmp{"http://ns.adobe.com/xmp/extension/\0", 35}, kProfile{"ICC_PROFILE\0", 12}, kAdobe{"Adobe", 5};
// A segment has 65535 bytes at the most, its length among them (B.1.1.4).
constexpr std::size_t kMostBody = 65533, kProfileHead = kProfile.size() + 2;

// A segment of this marker that begins with the name.
bool isA(const ApplicationSegment& s, int marker, std::string_view name) {
    return s.marker == marker && s.body.size() >= name.size() &&
           std::equal(name.begin(), name.end(), s.body.begin(),
                      [](char a, std::uint8_t b) { return std::uint8_t(a) == b; });
}

int wordAt(ByteView bytes, std::size_t at) { return bytes[at] << 8 | bytes[at + 1]; }
void setWord(Bytes& bytes, std::size_t at, int v) {
    bytes[at] = std::uint8_t(v >> 8);
    bytes[at + 1] = std::uint8_t(v);
}

// Where the densities stand in the body of a JFIF segment: behind the name and two bytes of version.
constexpr std::size_t kUnit = 7, kAcross = 8, kDown = 10, kJfifBody = 12;

// The density that a JFIF segment tells (T.871, 10.1).
std::optional<Resolution> resolutionOf(ByteView jfif) {
    if (jfif.size() < kJfifBody || jfif[kUnit] > 2) return {};
    const int x = wordAt(jfif, kAcross), y = wordAt(jfif, kDown);
    // Square pixels of no size are what a file says that knows nothing.
    if (x == 0 || y == 0 || (jfif[kUnit] == 0 && x == y)) return {};
    constexpr Resolution::Unit units[] = {Resolution::Unit::none, Resolution::Unit::inch, Resolution::Unit::centimetre};
    return Resolution{double(x), double(y), units[jfif[kUnit]]};
}

// The parts of a profile may stand in any order; each says its number, from 1, and how many there are.
class Profile {
public:
    void add(ByteView body) {
        if (body.size() < kProfileHead) return;
        // Every part says the same count, or the last of them is believed. A part that comes twice is taken once.
        count = body[kProfile.size() + 1];
        parts.emplace(body[kProfile.size()], body.subspan(kProfileHead));
    }
    Bytes joined(Warnings& warnings) const {
        Bytes out;
        for (int i = 1; i <= count; ++i) {
            const auto part = parts.find(i);
            if (part == parts.end()) {
                warnings.push_back("part " + std::to_string(i) + " of the colour profile is missing: it is left out");
                return {};
            }
            out.insert(out.end(), part->second.begin(), part->second.end());
        }
        return out;
    }

private:
    int count = 0;
    std::map<int, ByteView> parts;
};

} // namespace

std::vector<ApplicationSegment> segmentsOf(ByteView application) {
    std::vector<ApplicationSegment> out;
    while (application.size() >= 4) {
        // The reader has made sure that the length is that of what is there.
        const std::size_t length = std::size_t(wordAt(application, 2)) + 2;
        out.push_back({application[1], application.first(length), application.subspan(4, length - 4)});
        application = application.subspan(length);
    }
    return out;
}

// The first of each kind counts; profiles come in parts.
Metadata metadataOf(ByteView application, Warnings& warnings) {
    Metadata out;
    Profile profile;
    const auto take = [](Bytes& to, const ApplicationSegment& s, std::string_view name) {
        if (to.empty()) to.assign(s.body.begin() + std::ptrdiff_t(name.size()), s.body.end());
    };
    for (const ApplicationSegment& s : segmentsOf(application)) {
        if (isA(s, APP0, kJfif) && !out.resolution) out.resolution = resolutionOf(s.body);
        if (isA(s, APP1, kExif)) take(out.exif, s, kExif);
        if (isA(s, APP1, kXmp)) take(out.xmp, s, kXmp);
        if (isA(s, APP1, kMoreXmp) && (warnings.empty() || warnings.back() != "extended XMP is left out"))
            warnings.push_back("extended XMP is left out");
        if (isA(s, APP2, kProfile)) profile.add(s.body);
    }
    out.icc = profile.joined(warnings);
    // A camera's file has no JFIF segment, or one that knows nothing.
    if (!out.resolution && !out.exif.empty())
        if (const auto directory = parseExif(out.exif)) out.resolution = resolutionIn(*directory);
    return out;
}

namespace {

// Name, head and content are one body.
void writeSegment(Output& out, int marker, std::string_view name, ByteView head, ByteView content) {
    out.marker(marker);
    out.word(int(2 + name.size() + head.size() + content.size()));
    for (char c : name) out.byte(std::uint8_t(c));
    out.append(head);
    out.append(content);
}

// One that has to fit a segment as a whole.
void writeWhole(Output& out, std::string_view name, const Bytes& content, const char* what, Warnings& warnings) {
    if (content.empty()) return;
    if (content.size() > kMostBody - name.size())
        warnings.push_back(std::string(what) + " of " + std::to_string(content.size()) +
                           " bytes does not fit a segment: it is left out");
    else
        writeSegment(out, APP1, name, {}, content);
}

// In as many parts as it takes (ICC.1, B.4), none of them empty.
void writeProfile(Output& out, const Bytes& icc, Warnings& warnings) {
    constexpr std::size_t kPart = kMostBody - kProfileHead;
    const std::size_t parts = (icc.size() + kPart - 1) / kPart;
    if (parts > 255) return warnings.push_back("a colour profile of more than 255 segments is left out");
    for (std::size_t i = 0; i < parts; ++i) {
        const std::uint8_t head[] = {std::uint8_t(i + 1), std::uint8_t(parts)};
        writeSegment(out, APP2, kProfile, head,
                     ByteView(icc).subspan(i * kPart, std::min(kPart, icc.size() - i * kPart)));
    }
}

// How far off a resolution is once it is in whole numbers, as a share of it.
double lossOfRounding(const Resolution& r) {
    return std::max(std::abs(r.x - std::round(r.x)) / r.x, std::abs(r.y - std::round(r.y)) / r.y);
}

// In whole numbers of 16 bits: to the centimetre where it is so given and that is as near as the inch. 300 to the inch may
// come as 118.11 to the centimetre, by way of a file that counts by the metre.
Density densityOf(const std::optional<Resolution>& resolution, Warnings& warnings) {
    if (!resolution) return {};
    Resolution r = resolution->in(Resolution::Unit::inch);
    if (resolution->unit == Resolution::Unit::centimetre && lossOfRounding(*resolution) <= lossOfRounding(r))
        r = *resolution;
    // A ratio of small numbers keeps its digits by being made larger.
    if (r.unit == Resolution::Unit::none)
        while (r.x < 1000 && r.y < 1000 && r.x > 0 && r.y > 0 && (r.x != std::round(r.x) || r.y != std::round(r.y)))
            r.x *= 10, r.y *= 10;
    if (!(r.x >= 0.5 && r.x < 65535.5 && r.y >= 0.5 && r.y < 65535.5)) {
        warnings.push_back("a resolution that does not fit the JFIF segment is left out");
        return {};
    }
    return {r.unit == Resolution::Unit::none   ? 0
            : r.unit == Resolution::Unit::inch ? 1
                                               : 2,
            int(std::lround(r.x)), int(std::lround(r.y))};
}

} // namespace

void writeMetadata(Output& out, const Metadata& metadata, bool jfif, Warnings& warnings) {
    if (jfif)
        writeJfif(out, densityOf(metadata.resolution, warnings));
    else if (metadata.resolution)
        warnings.push_back("the resolution is left out: a file of RGB has no JFIF segment");
    writeWhole(out, kExif, metadata.exif, "EXIF", warnings);
    writeWhole(out, kXmp, metadata.xmp, "XMP", warnings);
    writeProfile(out, metadata.icc, warnings);
}

// All other segments stay as they are, in their places.
Bytes turnedApplication(ByteView application, const Turned& picture, Warnings& warnings) {
    MemorySink sink;
    Output out(sink);
    for (const ApplicationSegment& s : segmentsOf(application)) {
        if (isA(s, APP1, kExif)) {
            Metadata own;
            own.exif.assign(s.body.begin() + std::ptrdiff_t(kExif.size()), s.body.end());
            setPixelSize(own, picture.width, picture.height);
            if (orientationOf(own) != picture.orientation) setOrientation(own, picture.orientation);
            writeWhole(out, kExif, own.exif, "EXIF", warnings);
        } else if (isA(s, APP0, kJfif) && s.body.size() >= kJfifBody && picture.exchanged) {
            Bytes jfif(s.all.begin(), s.all.end());
            constexpr std::size_t kBody = 4;
            setWord(jfif, kBody + kAcross, wordAt(s.body, kDown));
            setWord(jfif, kBody + kDown, wordAt(s.body, kAcross));
            out.append(jfif);
        } else {
            out.append(s.all);
        }
    }
    out.flush();
    return std::move(sink.bytes);
}

// A JFIF segment says YCbCr by being there; its density and its small picture are left out.
Bytes strippedApplication(ByteView application) {
    MemorySink sink;
    Output out(sink);
    bool told = false;
    for (const ApplicationSegment& s : segmentsOf(application)) {
        if (isA(s, APP14, kAdobe)) out.append(s.all);
        if (isA(s, APP0, kJfif) && !std::exchange(told, true)) writeJfif(out, {});
    }
    out.flush();
    return std::move(sink.bytes);
}

} // namespace codecs::jpeg

// describe.cpp - what a file says of itself, for people.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/segmentreader.h"

namespace codecs::jpeg {

namespace {

// The codes of Table B.1 are bits: two for the mode, one for differential frames, one for arithmetic coding.
std::string modeOf(int sof) {
    static const char* const modes[] = {"baseline", "extended sequential", "progressive", "lossless"};
    std::string text = modes[sof & 3];
    if (sof & 4) text += ", hierarchical";
    text += sof & 8 ? ", arithmetic coding" : ", Huffman coding";
    return text;
}

} // namespace

// A file that ends in trouble is described as far as it goes.
std::string describe(ByteSource& file, Warnings* trouble) {
    std::string log, last;
    // The reader refuses what is no JPEG file at all; from here on there is something to tell.
    SegmentReader reader(file, &log);
    int scans = 0;
    try {
        while (reader.nextScan()) ++scans;
    } catch (const Error& e) {
        last = std::string("trouble: ") + e.what() + "\n";
        if (trouble) trouble->push_back(e.what());
    }
    const Header& h = reader.header();
    std::string out;
    if (!h.frame.components.empty()) {
        out += "size: " + std::to_string(h.frame.width) + " by " + std::to_string(h.frame.height) + "\n";
        out += "mode: " + modeOf(h.frame.sof) + "\n";
        out += "bits: " + std::to_string(h.frame.precision) + "\n";
        for (const Component& c : h.frame.components)
            out += "component " + std::to_string(c.id) + ": sampling " + std::to_string(c.h) + "x" +
                   std::to_string(c.v) + ", quantisation table " + std::to_string(c.quant) + "\n";
    }
    out += "restart interval: " + std::to_string(h.restart) + "\n";
    if (h.jfif) out += "JFIF: yes\n";
    if (h.adobe >= 0) out += "Adobe transform: " + std::to_string(h.adobe) + "\n";
    out += "scans: " + std::to_string(scans) + "\n";
    out += "segments, by offset:\n" + log + last;
    return out;
}

std::string describe(ByteView file, Warnings* trouble) {
    MemorySource source(file);
    return describe(source, trouble);
}

} // namespace codecs::jpeg

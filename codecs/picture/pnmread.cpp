// pnmread.cpp - PBM, PGM, PPM (raw and plain) and PAM files as netpbm defines them. The header is text, and behind it the
// samples stand as they are: that wants no library, and none reads them in bands without a copy.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "codecs/picture/storedrows.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace codecs {
namespace {

constexpr std::size_t kLongestHeader = std::size_t(1) << 16;

bool isSpace(std::uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The text of a header from its front to its end. It is asked for byte by byte, for a pipe may have no more yet.
class HeaderText {
public:
    explicit HeaderText(ByteSource& source) : bytes(source) {}
    std::size_t position() const { return at; }
    [[noreturn]] void fail(const std::string& what) const {
        throw Error("PNM: byte " + std::to_string(at) + " of the header: " + what);
    }

    // A comment is passed over as the line end behind it.
    std::uint8_t next() {
        std::uint8_t c = get();
        if (c == '#')
            while (c != '\n') c = get();
        return c;
    }
    // A number, and the one space behind it.
    unsigned number() {
        std::uint8_t c = next();
        while (isSpace(c)) c = next();
        std::uint64_t v = 0;
        if (c < '0' || c > '9') fail("no number");
        for (; c >= '0' && c <= '9'; c = next())
            if (v = 10 * v + (c - unsigned('0')); v > INT32_MAX) fail("a number that is too large");
        if (!isSpace(c)) fail("no number");
        return unsigned(v);
    }
    std::string line() {
        std::string all;
        while (true) {
            if (const std::uint8_t c = get(); c != '\n')
                all += char(c);
            else
                return all;
        }
    }

private:
    std::uint8_t get() {
        if (at == text.size()) text = bytes.view(at + 1);
        if (at >= std::min(text.size(), kLongestHeader)) fail("it ends here");
        return text[at++];
    }

    ByteSource& bytes;
    ByteView text;
    std::size_t at = 0;
};

// What a header says.
struct Head {
    Shape shape;
    bool bits = false, plain = false;
};

void setMaxval(Head& head, unsigned maxval, const HeaderText& text) {
    if (maxval < 1 || maxval > 65535) text.fail("the largest sample is " + std::to_string(maxval));
    head.shape.maxval = int(maxval);
}

Head readPnmHead(HeaderText& text, int kind) {
    Head head;
    head.plain = kind <= 3;
    head.bits = kind == 1 || kind == 4;
    const unsigned width = text.number(), height = text.number();
    head.shape = shapeOf(int(width), int(height), kind % 3 == 0 ? 3 : 1);
    setMaxval(head, head.bits ? 1 : text.number(), text);
    return head;
}

// The lines of a PAM header: a word and its value.
Head readPamHead(HeaderText& text) {
    unsigned width = 0, height = 0, depth = 0, maxval = 0;
    std::string type;
    while (true) {
        const std::string line = text.line();
        const auto start = line.find_first_not_of(" \t\r");
        if (start == std::string::npos || line[start] == '#') continue;
        const auto wordEnd = std::min(line.find_first_of(" \t\r", start), line.size());
        const auto valueStart = std::min(line.find_first_not_of(" \t\r", wordEnd), line.size());
        const auto valueEnd = line.find_last_not_of(" \t\r") + 1;
        const std::string word = line.substr(start, wordEnd - start);
        const std::string value = valueStart < valueEnd ? line.substr(valueStart, valueEnd - valueStart) : "";
        if (word == "ENDHDR") break;
        if (word == "TUPLTYPE") {
            type += (type.empty() ? "" : " ") + value;
            continue;
        }
        unsigned* const field = word == "WIDTH"    ? &width
                                : word == "HEIGHT" ? &height
                                : word == "DEPTH"  ? &depth
                                : word == "MAXVAL" ? &maxval
                                                   : nullptr;
        if (!field) text.fail("\"" + word.substr(0, 20) + "\" is no word of a header");
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), *field);
        if (error != std::errc() || end != value.data() + value.size() || *field > INT32_MAX)
            text.fail(word + " has no number");
    }
    // More are not in any file that a JPEG2000 codestream could not hold.
    if (depth < 1 || depth > 16384) text.fail("a depth of " + std::to_string(depth));
    Head head;
    head.shape = shapeOf(int(width), int(height), int(depth));
    setMaxval(head, maxval, text);
    if (type == "CMYK" && depth == 4) {
        head.shape.colour = Colour::cmyk;
        head.shape.alpha = false;
    } else if (depth > 4) {
        head.shape.colour = Colour::other;
        head.shape.alpha = false;
    }
    return head;
}

// Samples as numbers between spaces; in bitmaps as digits that may stand without any.
class PlainRows final : public RowSource {
public:
    PlainRows(std::unique_ptr<ByteSource> source, const Head& head) : bytes(std::move(source)), bits(head.bits) {
        form = head.shape;
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        band = Picture({form.width, n, form.channels, form.maxval, form.colour, form.alpha});
        for (int y = 0; y < n; ++y, ++row)
            for (std::size_t x = 0; x < form.rowSamples(); ++x) band.set(int(x), y, bits ? 1 - digit() : number());
        return band.band(0, n);
    }

private:
    [[noreturn]] void fail(const std::string& what) const {
        throw Error("PNM: row " + std::to_string(row) + ": " + what);
    }

    // The next byte outside comments, 0 at the end.
    std::uint8_t get() {
        bool comment = false;
        while (true) {
            const ByteView there = bytes->view(1);
            if (there.empty()) return 0;
            const std::uint8_t c = there[0];
            bytes->skip(1);
            comment = c == '#' || (comment && c != '\n');
            if (!comment) return c;
        }
    }
    std::uint8_t word() {
        std::uint8_t c = get();
        while (isSpace(c)) c = get();
        if (c == 0) fail("the file ends");
        if (c < '0' || c > '9') fail("no number");
        return c;
    }
    unsigned digit() {
        const unsigned v = word() - unsigned('0');
        if (v > 1) fail("a bit is 0 or 1");
        return v;
    }
    unsigned number() {
        unsigned v = 0;
        for (std::uint8_t c = word(); c >= '0' && c <= '9'; c = get())
            if (v = 10 * v + (c - unsigned('0')); v > unsigned(form.maxval))
                fail("a sample goes beyond " + std::to_string(form.maxval));
        return v;
    }

    std::unique_ptr<ByteSource> bytes;
    bool bits;
    Picture band;
    int row = 0;
};

// Throws where a sample is larger than the header allows.
template <class Sample> void checkSamples(const std::uint8_t* samples, const Shape& shape) {
    const auto* s = reinterpret_cast<const Sample*>(samples);
    const Sample most = *std::max_element(s, s + shape.rowSamples());
    if (most > shape.maxval)
        throw Error("a sample of " + std::to_string(most) + " goes beyond " + std::to_string(shape.maxval));
}

// None where the bytes of the file are the samples.
UnpackRow unpackerOf(const Head& head) {
    const Shape shape = head.shape;
    const std::size_t n = shape.rowSamples();
    if (head.bits)
        return [n](const std::uint8_t* stored, std::uint8_t* samples) { bitsToBytes(stored, samples, n, 1); };
    if (shape.wide())
        return [n, shape](const std::uint8_t* stored, std::uint8_t* samples) {
            wordsOfBigEndian(stored, samples, n);
            if (shape.maxval < 65535) checkSamples<std::uint16_t>(samples, shape);
        };
    if (shape.maxval < 255)
        return [n, shape](const std::uint8_t* stored, std::uint8_t* samples) {
            checkSamples<std::uint8_t>(stored, shape);
            std::copy_n(stored, n, samples);
        };
    return {};
}

} // namespace

Rows openPnm(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels) {
    HeaderText text(*bytes);
    const int kind = text.next() == 'P' ? text.next() - '0' : 0;
    if (kind < 1 || kind > 7) throw Error("not a PNM or PAM file");
    const Head head = kind == 7 ? readPamHead(text) : readPnmHead(text, kind);
    try {
        checkSize(unsigned(head.shape.width), unsigned(head.shape.height), maxPixels);
    } catch (const Error& e) {
        throw Error(std::string("PNM: ") + e.what());
    }
    bytes->skip(text.position());
    if (head.plain) return std::make_unique<PlainRows>(std::move(bytes), head);
    const std::size_t stored = head.bits ? (std::size_t(head.shape.width) + 7) / 8 : head.shape.rowBytes();
    return storedRows(std::move(bytes), head.shape, stored, unpackerOf(head));
}

} // namespace codecs

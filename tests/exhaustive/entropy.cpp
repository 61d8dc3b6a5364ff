// entropy.cpp - every difference of a lossless row as a Huffman code with its bits and back, which is EXTEND (ITU-T T.81,
// F.2.2.1), behind every number of bits that the writer can hold.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/exhaustive/domain.h"
#include "tests/jpeg/model/lossless.h"

#include <algorithm>
#include <memory>

namespace exhaustive {

namespace {

// Codes for the categories 0 to 16: fourteen of four bits and three of five.
constexpr Zmx8u kBits[16] = {0, 0, 0, 14, 3};
constexpr Zmx8u kVals[256] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

struct FreeEncode {
    void operator()(ZmxiEncodeHuffmanSpec* p) const { zmxiEncodeHuffmanSpecFree_JPEG_8u(p); }
    void operator()(ZmxiEncodeHuffmanState* p) const { zmxiEncodeHuffmanStateFree_JPEG_8u(p); }
};
struct FreeDecode {
    void operator()(ZmxiDecodeHuffmanSpec* p) const { zmxiDecodeHuffmanSpecFree_JPEG_8u(p); }
    void operator()(ZmxiDecodeHuffmanState* p) const { zmxiDecodeHuffmanStateFree_JPEG_8u(p); }
};

// The library's tables and states.
struct Coder {
    std::unique_ptr<ZmxiEncodeHuffmanSpec, FreeEncode> to;
    std::unique_ptr<ZmxiDecodeHuffmanSpec, FreeDecode> from;
    std::unique_ptr<ZmxiEncodeHuffmanState, FreeEncode> writer;
    std::unique_ptr<ZmxiDecodeHuffmanState, FreeDecode> reader;

    Coder() {
        ZmxiEncodeHuffmanSpec* a = nullptr;
        ZmxiDecodeHuffmanSpec* b = nullptr;
        ZmxiEncodeHuffmanState* c = nullptr;
        ZmxiDecodeHuffmanState* d = nullptr;
        zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(kBits, kVals, &a);
        zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(kBits, kVals, &b);
        zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&c);
        zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&d);
        to.reset(a), from.reset(b), writer.reset(c), reader.reset(d);
    }
};

// `ahead` ones of the difference 1 stand in front of each difference, so that it begins at another bit. Their codes have
// five bits with those of the value.
bool differencesAgree(std::uint64_t ahead) {
    Coder coder;
    model::EncodeSpec spec;
    if (model::buildEncodeSpec(kBits, kVals, spec)) return false;
    std::vector<Zmx16s> values;
    for (int v = 0; v < kWords; ++v) {
        values.insert(values.end(), std::size_t(ahead), Zmx16s(1));
        values.push_back(Zmx16s(v));
    }
    const std::size_t room = values.size() * 8;
    std::vector<Zmx8u> got(room), expected(room);
    int end = 0, plainEnd = 0;
    model::EncodeState state{};
    model::Writer writer{expected.data(), int(room), &plainEnd, &state};
    zmxiEncodeHuffmanStateInit_JPEG_8u(coder.writer.get());
    for (const Zmx16s& v : values) {
        if (zmxiEncodeHuffmanOne_JPEG_16s1u_C1(&v, got.data(), int(room), &end, coder.to.get(), coder.writer.get(), 0))
            return false;
        if (model::encodeOne(writer, v, spec)) return false;
    }
    if (zmxiEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, got.data(), int(room), &end, coder.to.get(), coder.writer.get(), 1))
        return false;
    if (model::flush(writer) || end != plainEnd || got != expected) return false;

    zmxiDecodeHuffmanStateInit_JPEG_8u(coder.reader.get());
    int at = 0, marker = 0;
    return std::all_of(values.begin(), values.end(), [&](Zmx16s v) {
        Zmx16s back = 0;
        return zmxiDecodeHuffmanOne_JPEG_1u16s_C1(got.data(), int(room), &at, &back, &marker, coder.from.get(),
                                                  coder.reader.get()) == zmxStsNoErr &&
               back == v;
    });
}

} // namespace

void addEntropy(Domains& to) {
    to.push_back({"Differences", "every difference into bits and back (EXTEND), at each place within a byte", 8, kWords,
                  differencesAgree});
}

} // namespace exhaustive

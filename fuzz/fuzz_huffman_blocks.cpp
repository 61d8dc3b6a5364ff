// The decoders of blocks and of lossless rows on arbitrary bytes: sequential, progressive and lossless, with the tables of
// ITU-T T.81, Annex K.3 or with ones made of the input. Whatever the bytes are, the position stays within them, and so do
// the coefficients within their numbers. The first bytes choose what is called.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/standard.h"
#include "fuzz/support/input.h"
#include "zmxj.h"

#include <array>

namespace {

namespace jpeg = codecs::jpeg;
using fuzz::require;

// A spec that was refused is there all the same, and is to be freed.
jpeg::DecodeSpec specOf(const Zmx8u* bits, const Zmx8u* vals) {
    ZmxiDecodeHuffmanSpec* p = nullptr;
    const ZmxStatus status = zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(bits, vals, &p);
    jpeg::DecodeSpec spec(p);
    return status == zmxStsNoErr ? std::move(spec) : nullptr;
}
jpeg::DecodeSpec specOf(const jpeg::HuffmanTable& table) { return specOf(table.bits.data(), table.vals.data()); }
jpeg::DecodeSpec specOf(fuzz::Input& in) {
    jpeg::HuffmanTable table;
    for (Zmx8u& n : table.bits) n = Zmx8u(in.below(8));
    const codecs::ByteView listed = in.take(in.byte());
    std::copy(listed.begin(), listed.end(), table.vals.begin());
    return specOf(table);
}

// What one call needs.
struct Call {
    codecs::Bytes stream;
    int position = 0, marker = 0;
    Zmx16s dc = 0;
    ZmxiDecodeHuffmanState* state;
    const ZmxiDecodeHuffmanSpec *dcSpec, *acSpec;
    int first, last, low;
};

ZmxStatus decode(Call& c, int kind, Zmx16s* block) {
    const Zmx8u* src = c.stream.data();
    const int n = int(c.stream.size());
    switch (kind) {
    case 0:
        return zmxiDecodeHuffman8x8_JPEG_1u16s_C1(src, n, &c.position, block, &c.dc, &c.marker, c.dcSpec, c.acSpec,
                                                  c.state);
    case 1:
        return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src, n, &c.position, block, &c.dc, &c.marker, c.low, c.dcSpec,
                                                          c.state);
    case 2:
        return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src, n, &c.position, block, &c.marker, c.low, c.state);
    case 3:
        return zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(src, n, &c.position, block, &c.marker, c.first, c.last, c.low,
                                                          c.acSpec, c.state);
    case 4:
        return zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(src, n, &c.position, block, &c.marker, c.first, c.last,
                                                           c.low, c.acSpec, c.state);
    default:
        return zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(src, n, &c.position, &block, 32, 1, &c.marker, &c.dcSpec, c.state);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 4096) return 0;
    fuzz::Input in(data, size);
    const int kind = in.below(6), first = in.below(64), last = first + in.below(64 - first), low = in.below(14);
    static const jpeg::DecodeState state = jpeg::newDecodeState();
    static const jpeg::DecodeSpec usual[] = {specOf(jpeg::kLumaDc), specOf(jpeg::kLumaAc)};
    jpeg::DecodeSpec own;
    const bool given = in.flag();
    if (given && !(own = specOf(in))) return 0;
    const ZmxiDecodeHuffmanSpec *dc = given ? own.get() : usual[0].get(), *ac = given ? own.get() : usual[1].get();
    Call call{codecs::Bytes(in.rest().begin(), in.rest().end()), 0, 0, 0, state.get(), dc, ac, first, last, low};
    if (call.stream.empty()) return 0;
    require(zmxiDecodeHuffmanStateInit_JPEG_8u(state.get()) == zmxStsNoErr);
    std::array<Zmx16s, 64> block{};
    for (int blocks = 0; blocks < 64; ++blocks) {
        const int before = call.position;
        const ZmxStatus status = decode(call, kind, block.data());
        require(call.position >= before && call.position <= int(call.stream.size()));
        if (status != zmxStsNoErr || call.marker) break;
    }
    return 0;
}

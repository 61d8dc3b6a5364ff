// lossless.h - one call of each coder of lossless differences on two sides, the library's and the model's.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/lossless.h"
#include "tests/jpeg/support/huffman.h"

#include <memory>

using Row = std::vector<Zmx16s>;

inline constexpr Zmx16s kUntouched = 0x2222;

// A row call of the decoder or the encoder on up to four planes.
struct DecodePlanes {
    std::vector<std::unique_ptr<Guarded<Zmx16s>>> lib;
    std::vector<Row> plain;
    Zmx16s *libRows[6] = {}, *plainRows[6] = {};
    const ZmxiDecodeHuffmanSpec* libTables[6] = {};
    const model::DecodeSpec* plainTables[6] = {};

    DecodePlanes(int width, std::vector<DecodeTable*> tables) {
        for (std::size_t c = 0; c < tables.size(); ++c) {
            lib.push_back(std::make_unique<Guarded<Zmx16s>>(std::size_t(width)));
            lib[c]->fill(kUntouched);
            plain.emplace_back(std::size_t(width), kUntouched);
            libRows[c] = lib[c]->data();
            libTables[c] = tables[c]->lib();
            plainTables[c] = &tables[c]->plain;
        }
        for (std::size_t c = 0; c < tables.size(); ++c) plainRows[c] = plain[c].data();
    }
    ::testing::AssertionResult same() {
        for (std::size_t c = 0; c < plain.size(); ++c)
            if (auto r = sameBytes(plain[c], lib[c]->copy()); !r) return r << " of plane " << c;
        return ::testing::AssertionSuccess();
    }
};

inline Outcome decodeRow(StreamIn& in, DecodePlanes& out, int width, int planes) {
    model::Reader r = in.reader();
    const ZmxStatus expected = model::decodeRow(r, out.plainRows, width, planes, out.plainTables);
    const ZmxStatus got = zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(in.src.data(), in.len(), &in.pos[0], out.libRows, width,
                                                               planes, &in.marker[0], out.libTables, in.state.lib());
    if (!r.noPath) {
        EXPECT_EQ(got, expected);
        EXPECT_TRUE(in.same());
        if (!r.noValue) {
            EXPECT_TRUE(out.same());
        }
    }
    return {expected, !r.noPath, !r.noPath && !r.noValue};
}

inline Outcome decodeOne(StreamIn& in, Zmx16s value[2], DecodeTable& table) {
    model::Reader r = in.reader();
    Guarded<Zmx16s> dst(1);
    dst[0] = value[0];
    const ZmxStatus expected = model::decodeOne(r, value[1], table.plain);
    const ZmxStatus got = zmxiDecodeHuffmanOne_JPEG_1u16s_C1(in.src.data(), in.len(), &in.pos[0], dst.data(),
                                                             &in.marker[0], table.lib(), in.state.lib());
    value[0] = dst[0];
    if (!r.noPath) {
        EXPECT_EQ(got, expected);
        EXPECT_TRUE(in.same());
        if (!r.noValue) {
            EXPECT_EQ(value[0], value[1]);
        }
    }
    value[1] = value[0];
    return {expected, !r.noPath, !r.noPath && !r.noValue};
}

inline ZmxStatus encodeOne(StreamOut& out, int value, EncodeTable& table) {
    Guarded<Zmx16s> src(Row{Zmx16s(value)});
    model::Writer w = out.writer();
    const ZmxStatus expected = model::encodeOne(w, Zmx16s(value), table.plain);
    EXPECT_EQ(zmxiEncodeHuffmanOne_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0], table.lib(),
                                                 out.state.lib(), 0),
              expected);
    EXPECT_TRUE(out.same());
    return expected;
}

// Rows of one width, and of every plane its table.
inline ZmxStatus encodeRow(StreamOut& out, const std::vector<Row>& rows, int planes,
                           const std::vector<EncodeTable*>& tables) {
    std::vector<std::unique_ptr<Guarded<Zmx16s>>> src;
    const Zmx16s *libRows[6] = {}, *plainRows[6] = {};
    const ZmxiEncodeHuffmanSpec* libTables[6] = {};
    const model::EncodeSpec* plainTables[6] = {};
    for (std::size_t c = 0; c < rows.size(); ++c) {
        src.push_back(std::make_unique<Guarded<Zmx16s>>(rows[c]));
        libRows[c] = src[c]->data();
        plainRows[c] = rows[c].data();
        libTables[c] = tables[c]->lib();
        plainTables[c] = &tables[c]->plain;
    }
    model::Writer w = out.writer();
    const ZmxStatus expected = model::encodeRow(w, plainRows, int(rows[0].size()), planes, plainTables);
    EXPECT_EQ(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(libRows, int(rows[0].size()), planes, out.dst.data(), out.len(),
                                                   &out.pos[0], libTables, out.state.lib(), 0),
              expected);
    EXPECT_TRUE(out.same());
    return expected;
}

inline ZmxStatus flush(StreamOut& out, bool row) {
    model::Writer w = out.writer();
    const ZmxStatus expected = model::flush(w);
    EXPECT_EQ(row ? zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, 0, 0, out.dst.data(), out.len(), &out.pos[0], nullptr,
                                                         out.state.lib(), 1)
                  : zmxiEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, out.dst.data(), out.len(), &out.pos[0], nullptr,
                                                       out.state.lib(), 1),
              expected);
    EXPECT_TRUE(out.same());
    return expected;
}

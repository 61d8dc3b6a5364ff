/* jpegfile.h - the marker segments of a JPEG file (ITU-T T.81, Annex B), which the library leaves to its callers. */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef JPEGFILE_H
#define JPEGFILE_H

#include "examples/example.h"

/* The luminance table of T.81, Table K.1, in zig-zag order, as a DQT segment holds it. */
static const Zmx8u exampleQuant[64] = {16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
                                       26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
                                       56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
                                       95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};

/* A Huffman table in all of its forms: what was counted, the lists of its DHT segment, and what the coders use. */
typedef struct Table {
    Zmx32u counts[257];
    Zmx8u bits[16];
    Zmx8u vals[256];
    ZmxiEncodeHuffmanSpec* spec;
} Table;

/* Turns the counts into the optimal table. */
static inline void buildTable(Table* t) {
    /* The counts are unsigned where they are made and signed here; the bits are the same. */
    check(zmxiEncodeHuffmanRawTableInit_JPEG_8u((const Zmx32s*)t->counts, t->bits, t->vals) == zmxStsNoErr, "lists");
    check(zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(t->bits, t->vals, &t->spec) == zmxStsNoErr, "table");
}

static inline void putQuant(Bytes* b, int id, const Zmx8u raw[64]) {
    put(b, 0xFFDB, 2);
    put(b, 67, 2);
    put(b, (unsigned)id, 1);
    putBytes(b, raw, 64);
}

static inline void putTable(Bytes* b, int classAndId, const Table* t) {
    int symbols = 0, i;
    for (i = 0; i < 16; ++i) symbols += t->bits[i];
    put(b, 0xFFC4, 2);
    put(b, (unsigned)(19 + symbols), 2);
    put(b, (unsigned)classAndId, 1);
    putBytes(b, t->bits, 16);
    putBytes(b, t->vals, symbols);
}

/* A frame header; the first of several components has `sampling` (0x22: 4:2:0), the others 0x11. All use table 0. */
static inline void putFrame(Bytes* b, unsigned marker, int precision, int width, int height, int components,
                            unsigned sampling) {
    int c;
    put(b, marker, 2);
    put(b, (unsigned)(8 + 3 * components), 2);
    put(b, (unsigned)precision, 1);
    put(b, (unsigned)height, 2);
    put(b, (unsigned)width, 2);
    put(b, (unsigned)components, 1);
    for (c = 0; c < components; ++c) {
        put(b, (unsigned)(c + 1), 1);
        put(b, c == 0 ? sampling : 0x11, 1);
        put(b, 0, 1);
    }
}

/* A scan header; every component uses the tables 0. */
static inline void putScan(Bytes* b, int components, int Ss, int Se, int AhAl) {
    int c;
    put(b, 0xFFDA, 2);
    put(b, (unsigned)(6 + 2 * components), 2);
    put(b, (unsigned)components, 1);
    for (c = 0; c < components; ++c) {
        put(b, (unsigned)(c + 1), 1);
        put(b, 0, 1);
    }
    put(b, (unsigned)Ss, 1);
    put(b, (unsigned)Se, 1);
    put(b, (unsigned)AhAl, 1);
}

#endif /* JPEGFILE_H */

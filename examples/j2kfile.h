/* j2kfile.h - the markers and packet headers of a JPEG2000 codestream (ISO/IEC 15444-1, Annexes A and B), for one grey
 * tile whose bands have one code block each. The library leaves them to its callers. */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef J2KFILE_H
#define J2KFILE_H

#include "examples/example.h"

/* What the packet of a resolution says of the one code block of a band. */
typedef struct Block {
    int zeroPlanes; /* bit planes of the band above the topmost coded one */
    int passes;     /* 0: the block is left out */
    const Zmx8u* bytes;
    int length;
} Block;

/* Bits of a packet header: behind a byte 0xFF the next one has 7 bits (B.10.1). */
typedef struct HeaderBits {
    Bytes* to;
    unsigned byte;
    int free;
} HeaderBits;

static inline void headerBits(HeaderBits* h, unsigned value, int count) {
    while (count-- > 0) {
        h->byte |= (value >> count & 1u) << --h->free;
        if (h->free > 0) continue;
        put(h->to, h->byte, 1);
        h->free = h->byte == 0xFF ? 7 : 8;
        h->byte = 0;
    }
}

/* How many passes a packet has (Table B.4). */
static inline void headerPasses(HeaderBits* h, int passes) {
    if (passes == 1)
        headerBits(h, 0, 1);
    else if (passes == 2)
        headerBits(h, 2, 2);
    else if (passes <= 5)
        headerBits(h, 0xC | (unsigned)(passes - 3), 4);
    else if (passes <= 36)
        headerBits(h, 0x1E0 | (unsigned)(passes - 6), 9);
    else
        headerBits(h, 0xFF80 | (unsigned)(passes - 37), 16);
}

/* One packet: its header, then the bytes. Tag trees of one leaf are unary numbers. */
static inline void putPacket(Bytes* b, const Block* blocks, int count) {
    HeaderBits h;
    int i;
    h.to = b;
    h.byte = 0;
    h.free = 8;
    headerBits(&h, 1, 1); /* not empty */
    for (i = 0; i < count; ++i) {
        int lengthBits = 3, z, log = 0;
        headerBits(&h, blocks[i].passes > 0, 1); /* included in this layer */
        if (blocks[i].passes == 0) continue;
        for (z = 0; z < blocks[i].zeroPlanes; ++z) headerBits(&h, 0, 1);
        headerBits(&h, 1, 1);
        headerPasses(&h, blocks[i].passes);
        while (blocks[i].passes >> (log + 1)) ++log;
        for (; blocks[i].length >> (lengthBits + log); ++lengthBits) headerBits(&h, 1, 1);
        headerBits(&h, 0, 1);
        headerBits(&h, (unsigned)blocks[i].length, lengthBits + log);
    }
    if (h.free < 8 || (b->size > 0 && b->data[b->size - 1] == 0xFF)) headerBits(&h, 0, h.free); /* whole bytes */
    for (i = 0; i < count; ++i)
        if (blocks[i].passes > 0) putBytes(b, blocks[i].bytes, blocks[i].length);
}

/* The magnitude planes of a band of 8-bit samples under the 5/3 filter: 2 guard bits, and its exponent (E.1). `gain` is
 * 0 for LL, 1 for HL and LH, 2 for HH. */
static inline int planesOfBand(int gain) { return 2 + 8 + gain - 1; }

/* Everything ahead of the packets: SIZ, COD (5/3 filter, blocks of 64 x 64, one layer), QCD, SOT, SOD. Answers where the
 * length of the tile is to be filled in by endCodestream(). */
static inline int beginCodestream(Bytes* b, int width, int height, int levels) {
    int i, tile;
    put(b, 0xFF4F, 2); /* SOC */
    put(b, 0xFF51, 2); /* SIZ */
    put(b, 41, 2);
    put(b, 0, 2);
    for (i = 0; i < 2; ++i) { /* the picture, then the tile: size and origin */
        put(b, (unsigned)width, 4);
        put(b, (unsigned)height, 4);
        put(b, 0, 4);
        put(b, 0, 4);
    }
    put(b, 1, 2);        /* one component, */
    put(b, 0x070101, 3); /* 8 bits, not sampled down */
    put(b, 0xFF52, 2);   /* COD */
    put(b, 12, 2);
    put(b, 0, 1);
    put(b, 0x00000100, 4); /* LRCP, 1 layer, no component transform */
    put(b, (unsigned)levels, 1);
    put(b, 0x04040001, 4); /* blocks of 64 x 64, no style, 5/3 */
    put(b, 0xFF5C, 2);     /* QCD */
    put(b, (unsigned)(4 + 3 * levels), 2);
    put(b, 2 << 5, 1); /* 2 guard bits, no quantisation */
    put(b, 8 << 3, 1);
    for (i = 0; i < levels; ++i) put(b, 9 << 19 | 9 << 11 | 10 << 3, 3);
    tile = b->size;
    put(b, 0xFF90, 2); /* SOT */
    put(b, 10, 2);
    put(b, 0, 2);
    put(b, 0, 4); /* the length of the tile part */
    put(b, 1, 2);
    put(b, 0xFF93, 2); /* SOD */
    return tile;
}

static inline void endCodestream(Bytes* b, int tile) {
    int i;
    for (i = 0; i < 4; ++i) b->data[tile + 6 + i] = (Zmx8u)((unsigned)(b->size - tile) >> 8 * (3 - i));
    put(b, 0xFFD9, 2); /* EOC */
}

/* Between the numbers of a wavelet and the sign-magnitude words of a code block. */
static inline Zmx32s signMagnitude(Zmx32s v) { return v < 0 ? (Zmx32s)(0x80000000u | (Zmx32u)-v) : v; }
static inline Zmx32s twosComplement(Zmx32s v) { return v < 0 ? -(Zmx32s)((Zmx32u)v & 0x7FFFFFFFu) : v; }

#endif /* J2KFILE_H */

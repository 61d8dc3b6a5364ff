/* j2k_tile.c - a tile-component through two levels of the 5/3 wavelet and its code blocks, cut to a number of bytes.
 *
 * Usage: j2k_tile BYTES OUT.j2k OUT.pgm. Then: opj_decompress -i OUT.j2k -o back.pgm, which is as close to the picture as
 * OUT.pgm, the picture that the library itself decodes
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/j2kfile.h"

enum { kSide = 128, kLevels = 2, kBands = 3 * kLevels + 1, kMaxPasses = 109 };

/* A band, which is one code block here. */
typedef struct Band {
    int side, subband; /* 0 LL, 1 LH, 2 HL, 3 HH: the numbers of the wavelet and of the code blocks are the same */
    Zmx32s samples[kSide * kSide / 4];
    double weight; /* what a squared error of 1 here means in the picture */
    Bytes stream;
    int planes, passes, rate[kMaxPasses];
    double gain[kMaxPasses]; /* by how much the first passes reduce the squared error of the picture */
    int chosen;              /* how many passes stay */
} Band;

static Band bands[kBands]; /* 0 is LL, then LH, HL, HH of the lowest resolution, and so on */

/* [wavelet] */
/* One direction of all levels: the plane of level n is split into the three bands of level n and the plane of level n - 1. */
static void transform(Zmx32s* plane, int forward) {
    int n;
    for (n = 0; n < kLevels; ++n) {
        int level = forward ? kLevels - 1 - n : n; /* 0 has the smallest bands */
        int side = (kSide / 2) >> (kLevels - 1 - level), i, size;
        ZmxiRect tile = {0, 0, 0, 0};
        Zmx32s *low = (Zmx32s*)memory((size_t)(side * side) * sizeof *low), *to[4];
        int steps[4];
        Zmx8u* buffer;
        ZmxStatus status;
        tile.width = tile.height = 2 * side;
        for (i = 0; i < 4; ++i) {
            to[i] = i == 0 ? low : bands[3 * level + i].samples;
            steps[i] = side * (int)sizeof(Zmx32s);
        }
        check(zmxiWTGetBufSize_B53_JPEG2K_32s_C1R(&tile, &size) == zmxStsNoErr, "size");
        buffer = (Zmx8u*)memory((size_t)size + 1); /* a buffer of 0 bytes still needs a pointer */
        if (forward) {
            status = zmxiWTFwd_B53_JPEG2K_32s_C1R(plane, 2 * steps[0], &tile, to, steps, buffer);
            memcpy(plane, low, (size_t)(side * side) * sizeof *low);
        } else {
            const Zmx32s* from[4];
            memcpy(low, plane, (size_t)(side * side) * sizeof *low);
            for (i = 0; i < 4; ++i) from[i] = to[i];
            status = zmxiWTInv_B53_JPEG2K_32s_C1R(from, steps, plane, 2 * steps[0], &tile, buffer);
        }
        check(status == zmxStsNoErr, "wavelet");
        free(low);
        free(buffer);
    }
}
/* [wavelet] */

/* The bands between their places and the plane: LL is what the smallest plane holds. */
static void inverse(Zmx32s* plane) {
    memset(plane, 0, kSide * kSide * sizeof *plane);
    memcpy(plane, bands[0].samples, (size_t)(bands[0].side * bands[0].side) * sizeof *plane);
    transform(plane, 0);
}

/* [weight] */
/* The weight of a band: one large coefficient, and the energy that comes of it. */
static void weigh(int index, Zmx32s* plane) {
    double energy = 0;
    int i;
    for (i = 0; i < kBands; ++i) memset(bands[i].samples, 0, sizeof bands[i].samples);
    bands[index].samples[bands[index].side * bands[index].side / 2 + bands[index].side / 2] = 4096;
    inverse(plane);
    for (i = 0; i < kSide * kSide; ++i) energy += (double)plane[i] * plane[i];
    bands[index].weight = energy / (4096. * 4096.);
}
/* [weight] */

/* [encode] */
static void encode(Band* b, ZmxiEncodeState_JPEG2K* encoder) {
    ZmxiSize size;
    int i, sfBits, segments, more;
    size.width = size.height = b->side;
    for (i = 0; i < b->side * b->side; ++i) b->samples[i] = signMagnitude(b->samples[i]);
    check(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(b->samples, b->side * (int)sizeof(Zmx32s), size, encoder, b->subband,
                                                 31, ZMX_MQ_TERM_NEAR_OPTIMAL, 0, ZMX_CB_LOSSLESS, &sfBits, &b->passes,
                                                 &segments) == zmxStsNoErr,
          "load");
    b->planes = sfBits; /* magnBits is 31: plane 0 is the lowest */
    do {
        int count = 4096;
        makeRoom(&b->stream, count);
        check(zmxiEncodeStoreBits_JPEG2K_1u(b->stream.data + b->stream.size, &count, encoder, &more) == zmxStsNoErr,
              "store");
        b->stream.size += count;
    } while (more);
    for (i = 0; i < b->passes; ++i) {
        zmxiEncodeGetRate_JPEG2K(encoder, i, &b->rate[i]);
        zmxiEncodeGetDist_JPEG2K(encoder, i, &b->gain[i]);
        b->gain[i] *= b->weight;
    }
}
/* [encode] */

/* [rate] */
/* Cuts each block where the gain less `price` times the bytes is greatest; answers how many bytes that takes. */
static int cut(double price) {
    int n, i, bytes = 0;
    for (n = 0; n < kBands; ++n) {
        double best = 0;
        bands[n].chosen = 0;
        for (i = 0; i < bands[n].passes; ++i)
            if (bands[n].gain[i] - price * bands[n].rate[i] > best) {
                best = bands[n].gain[i] - price * bands[n].rate[i];
                bands[n].chosen = i + 1;
            }
        if (bands[n].chosen > 0) bytes += bands[n].rate[bands[n].chosen - 1];
    }
    return bytes;
}

/* The lowest price of a byte at which all blocks together keep to the budget. */
static int fitInto(int budget) {
    double low = 0, high = 1e9;
    int i;
    if (cut(0) <= budget) return cut(0);
    for (i = 0; i < 80; ++i) {
        double middle = (low + high) / 2;
        if (cut(middle) <= budget)
            high = middle;
        else
            low = middle;
    }
    return cut(high);
}
/* [rate] */

static int lengthOf(const Band* b) { return b->chosen > 0 ? b->rate[b->chosen - 1] : 0; }

static Block blockOf(const Band* b, int gain) {
    Block block;
    block.zeroPlanes = planesOfBand(gain) - b->planes;
    block.passes = b->chosen;
    block.bytes = b->stream.data;
    block.length = lengthOf(b);
    return block;
}

static void decode(Band* b, ZmxiDecodeCBProgrState* decoder) {
    ZmxiSize size;
    int i, length = lengthOf(b);
    size.width = size.height = b->side;
    check(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(b->stream.data, b->samples, b->side * (int)sizeof(Zmx32s), size,
                                               b->subband, b->planes, b->chosen, &length, b->chosen > 0, 0, NULL,
                                               decoder) == zmxStsNoErr,
          "decode");
    for (i = 0; i < b->side * b->side; ++i) b->samples[i] = twosComplement(b->samples[i]);
}

int main(int argc, char** argv) {
    ZmxiSize largest;
    ZmxiEncodeState_JPEG2K* encoder;
    ZmxiDecodeCBProgrState* decoder;
    static Zmx32s plane[kSide * kSide];
    Zmx8u* picture = makePicture(kSide, kSide, 1);
    Bytes file = {NULL, 0, 0};
    Block packet[3];
    int n, i, bytes, tile;
    check(argc == 4, "usage: j2k_tile BYTES OUT.j2k OUT.pgm");
    largest.width = largest.height = kSide / 2;
    check(zmxiEncodeInitAlloc_JPEG2K(&encoder, largest) == zmxStsNoErr, "encoder");
    check(zmxiDecodeCBProgrInitAlloc_JPEG2K(&decoder, largest) == zmxStsNoErr, "decoder");
    for (n = 0; n < kBands; ++n) {
        bands[n].side = n == 0 ? kSide >> kLevels : (kSide / 2) >> (kLevels - 1 - (n - 1) / 3);
        bands[n].subband = n == 0 ? 0 : (n - 1) % 3 + 1;
    }
    for (n = 0; n < kBands; ++n) weigh(n, plane);

    for (i = 0; i < kSide * kSide; ++i) plane[i] = picture[i] - 128;
    transform(plane, 1);
    memcpy(bands[0].samples, plane, (size_t)(bands[0].side * bands[0].side) * sizeof *plane);
    for (n = 0; n < kBands; ++n) encode(&bands[n], encoder);
    bytes = fitInto(atoi(argv[1]));

    tile = beginCodestream(&file, kSide, kSide, kLevels);
    packet[0] = blockOf(&bands[0], 0);
    putPacket(&file, packet, 1);
    for (n = 0; n < kLevels; ++n) { /* a packet for each resolution: HL, LH, HH */
        packet[0] = blockOf(&bands[3 * n + 2], 1);
        packet[1] = blockOf(&bands[3 * n + 1], 1);
        packet[2] = blockOf(&bands[3 * n + 3], 2);
        putPacket(&file, packet, 3);
    }
    endCodestream(&file, tile);
    save(argv[2], file.data, (size_t)file.size);

    for (n = 0; n < kBands; ++n) decode(&bands[n], decoder);
    inverse(plane);
    for (i = 0; i < kSide * kSide; ++i) {
        int v = plane[i] + 128;
        picture[i] = (Zmx8u)(v < 0 ? 0 : v > 255 ? 255 : v);
    }
    savePnm(argv[3], picture, kSide, kSide, 1);
    printf("%d bytes of blocks in a file of %d\n", bytes, file.size);
    for (n = 0; n < kBands; ++n) free(bands[n].stream.data);
    zmxiEncodeFree_JPEG2K(encoder);
    zmxiDecodeCBProgrFree_JPEG2K(decoder);
    free(file.data);
    free(picture);
    return 0;
}

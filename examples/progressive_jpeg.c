/* progressive_jpeg.c - a grey picture as a progressive JPEG file: four scans, with spectral selection and successive
 * approximation.
 *
 * Usage: progressive_jpeg OUT.jpg. Then: djpeg OUT.jpg
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/jpegfile.h"

enum { kWidth = 208, kHeight = 128, kAcross = kWidth / 8, kBlocks = kAcross * (kHeight / 8) };

/* [scans] */
/* A scan: its band, and the bit positions of the successive approximation, as in the scan header. */
typedef struct Scan {
    int Ss, Se, Ah, Al;
} Scan;
static const Scan scans[4] = {{0, 0, 0, 1},  /* DC without its lowest bit */
                              {1, 63, 0, 1}, /* all AC coefficients without theirs */
                              {1, 63, 1, 0}, /* the lowest bits of the AC coefficients */
                              {0, 0, 1, 0}}; /* and that of DC: one bit a block, no table */
/* [scans] */

/* [count] */
/* The pass that counts, with a state of its own; it ends with a flush, as the pass that writes. */
static void count(const Scan* s, Zmx16s (*blocks)[64], Table* t, ZmxiEncodeHuffmanState* state) {
    Zmx16s lastDC = 0;
    int n;
    ZmxStatus status = zmxiEncodeHuffmanStateInit_JPEG_8u(state);
    memset(t->counts, 0, sizeof t->counts);
    for (n = 0; n < kBlocks && status == zmxStsNoErr; ++n)
        if (s->Ss == 0)
            status = zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(blocks[n], t->counts, &lastDC, s->Al);
        else if (s->Ah == 0)
            status =
                zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(blocks[n], t->counts, s->Ss, s->Se, s->Al, state, 0);
        else
            status =
                zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(blocks[n], t->counts, s->Ss, s->Se, s->Al, state, 0);
    if (status == zmxStsNoErr && s->Ss > 0) /* the last end-of-band run */
        status = s->Ah == 0
                     ? zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(NULL, t->counts, s->Ss, s->Se, s->Al, state, 1)
                     : zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(NULL, t->counts, s->Ss, s->Se, s->Al, state, 1);
    check(status == zmxStsNoErr, "count");
    buildTable(t);
}
/* [count] */

/* [write] */
/* Codes one block, or with `flush` what is held back: end-of-band runs and correction bits live in the state. */
static ZmxStatus code(const Scan* s, const Zmx16s* block, Bytes* f, Zmx16s* lastDC, const Table* t,
                      ZmxiEncodeHuffmanState* state, int flush) {
    makeRoom(f, 600); /* no call takes more */
    if (s->Ss > 0 && s->Ah == 0)
        return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(block, f->data, f->room, &f->size, s->Ss, s->Se, s->Al,
                                                          t->spec, state, flush);
    if (s->Ss > 0)
        return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(block, f->data, f->room, &f->size, s->Ss, s->Se, s->Al,
                                                           t->spec, state, flush);
    if (s->Ah == 0)
        return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(block, f->data, f->room, &f->size, lastDC, s->Al, t->spec,
                                                          state, flush);
    return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block, f->data, f->room, &f->size, s->Al, state, flush);
}

static void writeScan(const Scan* s, Zmx16s (*blocks)[64], Bytes* f, ZmxiEncodeHuffmanState* state) {
    static Table t;
    Zmx16s lastDC = 0;
    int hasTable = s->Ss > 0 || s->Ah == 0, n;
    if (hasTable) {
        count(s, blocks, &t, state);
        putTable(f, s->Ss > 0 ? 0x10 : 0x00, &t);
    }
    putScan(f, 1, s->Ss, s->Se, s->Ah << 4 | s->Al);
    zmxiEncodeHuffmanStateInit_JPEG_8u(state);
    for (n = 0; n < kBlocks; ++n) check(code(s, blocks[n], f, &lastDC, &t, state, 0) == zmxStsNoErr, "code");
    check(code(s, NULL, f, &lastDC, &t, state, 1) == zmxStsNoErr, "flush");
    if (hasTable) zmxiEncodeHuffmanSpecFree_JPEG_8u(t.spec);
}
/* [write] */

int main(int argc, char** argv) {
    Zmx8u *picture = makePicture(kWidth, kHeight, 1), raw[64];
    Zmx16u quant[64];
    Zmx16s(*blocks)[64] = (Zmx16s(*)[64])memory(kBlocks * sizeof *blocks);
    ZmxiEncodeHuffmanState* state;
    Bytes file = {NULL, 0, 0};
    int n;
    check(argc == 2, "usage: progressive_jpeg OUT.jpg");

    memcpy(raw, exampleQuant, sizeof raw);
    zmxiQuantFwdRawTableInit_JPEG_8u(raw, 90);
    zmxiQuantFwdTableInit_JPEG_8u16u(raw, quant);
    for (n = 0; n < kBlocks; ++n) /* the sides are multiples of 8: blocks straight from the picture */
        check(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(picture + n / kAcross * 8 * kWidth + n % kAcross * 8, kWidth,
                                                  blocks[n], quant) == zmxStsNoErr,
              "transform");

    put(&file, 0xFFD8, 2);
    putQuant(&file, 0, raw);
    putFrame(&file, 0xFFC2, 8, kWidth, kHeight, 1, 0x11); /* SOF2: progressive */
    check(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&state) == zmxStsNoErr, "state");
    for (n = 0; n < 4; ++n) {
        int start = file.size;
        writeScan(&scans[n], blocks, &file, state);
        printf("scan %d: %d bytes\n", n + 1, file.size - start);
    }
    put(&file, 0xFFD9, 2);

    save(argv[1], file.data, (size_t)file.size);
    zmxiEncodeHuffmanStateFree_JPEG_8u(state);
    free(blocks);
    free(picture);
    free(file.data);
    return 0;
}

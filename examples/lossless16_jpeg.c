/* lossless16_jpeg.c - 16-bit grey samples as a lossless JPEG file (ITU-T T.81, Annex H), and back.
 *
 * Usage: lossless16_jpeg OUT.jpg OUT.pgm. Then: ffmpeg -i OUT.jpg -pix_fmt gray16be back.pgm, which equals OUT.pgm
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/jpegfile.h"

/* Predictors 1 to 4 alone are those of the standard for samples of all 16 bits: 5 to 7 halve signed numbers. */
enum { kWidth = 150, kHeight = 90, kPredictor = 4 };

static Zmx16s samples[kHeight][kWidth], differences[kHeight][kWidth], back[kHeight][kWidth];

/* [predict] */
/* The first row has a rule of its own; the others look at the row above. */
static void predict(void) {
    int y;
    check(zmxiDiffPredFirstRow_JPEG_16s_C1(samples[0], differences[0], kWidth, 16, 0) == zmxStsNoErr, "first row");
    for (y = 1; y < kHeight; ++y)
        check(zmxiDiffPredRow_JPEG_16s_C1(samples[y], samples[y - 1], differences[y], kWidth, kPredictor) ==
                  zmxStsNoErr,
              "row");
}
/* [predict] */

/* [decode] */
/* Rows of differences from the stream, then samples from differences. */
static void decode(const Zmx8u* stream, int size, const Table* t) {
    ZmxiDecodeHuffmanSpec* spec;
    ZmxiDecodeHuffmanState* reader;
    Zmx16s row[kWidth], *rows[4] = {NULL, NULL, NULL, NULL};
    const ZmxiDecodeHuffmanSpec* specs[4] = {NULL, NULL, NULL, NULL};
    int at = 0, marker = 0, y; /* first values */
    check(zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(t->bits, t->vals, &spec) == zmxStsNoErr, "table");
    check(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&reader) == zmxStsNoErr, "reader");
    rows[0] = row;
    specs[0] = spec;
    for (y = 0; y < kHeight; ++y) {
        check(zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(stream, size, &at, rows, kWidth, 1, &marker, specs, reader) ==
                  zmxStsNoErr,
              "decode");
        if (y == 0)
            zmxiReconstructPredFirstRow_JPEG_16s_C1(row, back[y], kWidth, 16, 0);
        else
            zmxiReconstructPredRow_JPEG_16s_C1(row, back[y - 1], back[y], kWidth, kPredictor);
    }
    zmxiDecodeHuffmanStateFree_JPEG_8u(reader);
    zmxiDecodeHuffmanSpecFree_JPEG_8u(spec);
}
/* [decode] */

int main(int argc, char** argv) {
    static Table t;
    const ZmxiEncodeHuffmanSpec* specs[4] = {NULL, NULL, NULL, NULL};
    const Zmx16s* rows[4] = {NULL, NULL, NULL, NULL};
    ZmxiEncodeHuffmanState* writer;
    Bytes file = {NULL, 0, 0}, pgm = {NULL, 0, 0};
    char head[32];
    int x, y, start;
    check(argc == 3, "usage: lossless16_jpeg OUT.jpg OUT.pgm");
    for (y = 0; y < kHeight; ++y) /* samples of 16 bits are stored as Zmx16s; sums of them are taken modulo 65536 */
        for (x = 0; x < kWidth; ++x) samples[y][x] = (Zmx16s)(Zmx16u)(100 + x * 431 + y * y * 7 + (x * y) % 13);
    predict();

    /* [encode] */
    for (y = 0; y < kHeight; ++y)
        for (x = 0; x < kWidth; ++x)
            check(zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(&differences[y][x], t.counts) == zmxStsNoErr, "count");
    buildTable(&t);
    put(&file, 0xFFD8, 2);
    putFrame(&file, 0xFFC3, 16, kWidth, kHeight, 1, 0x11); /* SOF3: lossless */
    putTable(&file, 0x00, &t);
    putScan(&file, 1, kPredictor, 0, 0); /* Ss holds the predictor, Al the point transform */
    start = file.size;
    check(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&writer) == zmxStsNoErr, "writer");
    specs[0] = t.spec;
    for (y = 0; y < kHeight; ++y) {
        rows[0] = differences[y];
        makeRoom(&file, 8 * kWidth); /* no difference takes more than 8 bytes */
        check(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(rows, kWidth, 1, file.data, file.room, &file.size, specs, writer,
                                                   0) == zmxStsNoErr,
              "encode");
    }
    makeRoom(&file, 2);
    check(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(NULL, 0, 0, file.data, file.room, &file.size, NULL, writer, 1) ==
              zmxStsNoErr,
          "flush");
    put(&file, 0xFFD9, 2);
    /* [encode] */

    decode(file.data + start, file.size - start, &t);
    check(memcmp(samples, back, sizeof back) == 0, "the samples come back");
    save(argv[1], file.data, (size_t)file.size);
    putBytes(&pgm, head, sprintf(head, "P5\n%d %d\n65535\n", kWidth, kHeight));
    for (y = 0; y < kHeight; ++y)
        for (x = 0; x < kWidth; ++x) put(&pgm, (Zmx16u)samples[y][x], 2);
    save(argv[2], pgm.data, (size_t)pgm.size);
    printf("%d samples of 16 bits in %d bytes\n", kWidth * kHeight, file.size);
    zmxiEncodeHuffmanStateFree_JPEG_8u(writer);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(t.spec);
    free(file.data);
    free(pgm.data);
    return 0;
}

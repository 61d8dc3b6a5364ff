/* grey_jpeg.c - a grey picture as a baseline JPEG file, in 100 lines.
 *
 * Usage: grey_jpeg OUT.jpg. Then: djpeg OUT.jpg
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/jpegfile.h"

enum { kWidth = 200, kHeight = 120, kAcross = (kWidth + 7) / 8, kBlocks = kAcross * ((kHeight + 7) / 8) };

int main(int argc, char** argv) {
    Zmx8u *picture = makePicture(kWidth, kHeight, 1), raw[64];
    Zmx16u quant[64];
    Zmx16s(*coefs)[64] = (Zmx16s(*)[64])memory(kBlocks * sizeof *coefs), lastDC = 0;
    static Table dc, ac;
    ZmxiEncodeHuffmanState* writer;
    Bytes file = {NULL, 0, 0};
    int i, n;
    check(argc == 2, "usage: grey_jpeg OUT.jpg");

    /* [tables] */
    memcpy(raw, exampleQuant, sizeof raw);
    zmxiQuantFwdRawTableInit_JPEG_8u(raw, 85);    /* scale the table to quality 85 */
    zmxiQuantFwdTableInit_JPEG_8u16u(raw, quant); /* reciprocals, in natural order */
    /* [tables] */

    /* [transform] */
    for (n = 0; n < kBlocks; ++n) {
        int x = 8 * (n % kAcross), y = 8 * (n / kAcross);
        Zmx8u block[64];
        for (i = 0; i < 64; ++i) { /* a block beyond the edge repeats the last column and row */
            int row = y + i / 8 < kHeight ? y + i / 8 : kHeight - 1,
                column = x + i % 8 < kWidth ? x + i % 8 : kWidth - 1;
            block[i] = picture[row * kWidth + column];
        }
        check(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(block, 8, coefs[n], quant) == zmxStsNoErr, "transform");
    }
    /* [transform] */

    /* [count] */
    for (n = 0; n < kBlocks; ++n)
        check(zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(coefs[n], dc.counts, ac.counts, &lastDC) == zmxStsNoErr, "count");
    buildTable(&dc);
    buildTable(&ac);
    /* [count] */

    put(&file, 0xFFD8, 2); /* SOI */
    putQuant(&file, 0, raw);
    putFrame(&file, 0xFFC0, 8, kWidth, kHeight, 1, 0x11); /* SOF0: baseline */
    putTable(&file, 0x00, &dc);
    putTable(&file, 0x10, &ac);
    putScan(&file, 1, 0, 63, 0);

    /* [encode] */
    check(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&writer) == zmxStsNoErr, "writer");
    lastDC = 0;
    for (n = 0; n < kBlocks; ++n) {
        makeRoom(&file, 514); /* no block takes more */
        check(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(coefs[n], file.data, file.room, &file.size, &lastDC, dc.spec, ac.spec,
                                                 writer, 0) == zmxStsNoErr,
              "encode");
    }
    makeRoom(&file, 2);
    check(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(NULL, file.data, file.room, &file.size, NULL, NULL, NULL, writer, 1) ==
              zmxStsNoErr,
          "flush");
    /* [encode] */
    put(&file, 0xFFD9, 2); /* EOI */

    save(argv[1], file.data, (size_t)file.size);
    printf("%d x %d pixels in %d bytes\n", kWidth, kHeight, file.size);
    zmxiEncodeHuffmanStateFree_JPEG_8u(writer);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(dc.spec);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(ac.spec);
    free(coefs);
    free(picture);
    free(file.data);
    return 0;
}

/* colour_jpeg.c - a colour picture as a baseline 4:2:0 JPEG file with restart markers.
 *
 * Usage: colour_jpeg OUT.jpg. Then: djpeg OUT.jpg
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/jpegfile.h"

enum {
    kWidth = 240,
    kHeight = 160,
    kAcross = (kWidth + 15) / 16,
    kDown = (kHeight + 15) / 16,
    kUnits = kAcross * kDown
};

/* The six blocks of a 4:2:0 unit: four of luma, one of each chroma. */
typedef struct Unit {
    Zmx16s y[4][64], cb[64], cr[64];
} Unit;

/* [unit] */
/* One unit of 16 x 16 pixels: colour, chroma sampling and level shift in one call, then the transform, block by block. */
static void makeUnit(const Zmx8u* picture, int column, int row, const Zmx16u* quant, Unit* unit) {
    Zmx16s* planes[3];
    Zmx8u pixels[16 * 16 * 3];
    int i;
    for (i = 0; i < 256; ++i) { /* a unit beyond the edge repeats the last column and row */
        int x = 16 * column + i % 16 < kWidth ? 16 * column + i % 16 : kWidth - 1;
        int y = 16 * row + i / 16 < kHeight ? 16 * row + i / 16 : kHeight - 1;
        memcpy(pixels + 3 * i, picture + 3 * (y * kWidth + x), 3);
    }
    planes[0] = unit->y[0];
    planes[1] = unit->cb;
    planes[2] = unit->cr;
    check(zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R(pixels, 48, planes) == zmxStsNoErr, "unit");
    for (i = 0; i < 4; ++i) zmxiDCTQuantFwd8x8_JPEG_16s_C1I(unit->y[i], quant);
    zmxiDCTQuantFwd8x8_JPEG_16s_C1I(unit->cb, quant);
    zmxiDCTQuantFwd8x8_JPEG_16s_C1I(unit->cr, quant);
}
/* [unit] */

/* The blocks of a unit in the order of the stream, each with the component that it belongs to. */
static const Zmx16s* blockOf(const Unit* u, int i) { return i < 4 ? u->y[i] : i == 4 ? u->cb : u->cr; }
static int componentOf(int i) { return i < 4 ? 0 : i - 3; }

int main(int argc, char** argv) {
    Zmx8u *picture = makePicture(kWidth, kHeight, 3), raw[64];
    Zmx16u quant[64];
    Unit* units = (Unit*)memory(kUnits * sizeof *units);
    Zmx16s lastDC[3] = {0, 0, 0};
    static Table dc, ac;
    ZmxiEncodeHuffmanState* writer;
    Bytes file = {NULL, 0, 0};
    int n, i;
    check(argc == 2, "usage: colour_jpeg OUT.jpg");

    memcpy(raw, exampleQuant, sizeof raw);
    zmxiQuantFwdRawTableInit_JPEG_8u(raw, 90);
    zmxiQuantFwdTableInit_JPEG_8u16u(raw, quant);
    for (n = 0; n < kUnits; ++n) makeUnit(picture, n % kAcross, n / kAcross, quant, &units[n]);

    for (n = 0; n < kUnits; ++n) {
        if (n % kAcross == 0) memset(lastDC, 0, sizeof lastDC); /* as the encoder will, at each restart */
        for (i = 0; i < 6; ++i)
            check(zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(blockOf(&units[n], i), dc.counts, ac.counts,
                                                          &lastDC[componentOf(i)]) == zmxStsNoErr,
                  "count");
    }
    buildTable(&dc);
    buildTable(&ac);

    put(&file, 0xFFD8, 2);
    putQuant(&file, 0, raw);
    putFrame(&file, 0xFFC0, 8, kWidth, kHeight, 3, 0x22);
    putTable(&file, 0x00, &dc);
    putTable(&file, 0x10, &ac);
    put(&file, 0xFFDD, 2); /* DRI: a restart marker behind each row of units */
    put(&file, 4, 2);
    put(&file, kAcross, 2);
    putScan(&file, 3, 0, 63, 0);

    check(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&writer) == zmxStsNoErr, "writer");
    /* [restart] */
    for (n = 0; n < kUnits; ++n) {
        if (n % kAcross == 0) memset(lastDC, 0, sizeof lastDC);
        for (i = 0; i < 6; ++i) {
            makeRoom(&file, 514);
            check(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(blockOf(&units[n], i), file.data, file.room, &file.size,
                                                     &lastDC[componentOf(i)], dc.spec, ac.spec, writer,
                                                     0) == zmxStsNoErr,
                  "encode");
        }
        if (n % kAcross == kAcross - 1) { /* the end of an interval: the flush leaves the writer as new */
            makeRoom(&file, 2);
            check(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(NULL, file.data, file.room, &file.size, NULL, NULL, NULL, writer,
                                                     1) == zmxStsNoErr,
                  "flush");
            if (n + 1 < kUnits) put(&file, 0xFFD0 + (unsigned)(n / kAcross % 8), 2); /* RSTm */
        }
    }
    /* [restart] */
    put(&file, 0xFFD9, 2);

    save(argv[1], file.data, (size_t)file.size);
    printf("%d x %d pixels in %d bytes\n", kWidth, kHeight, file.size);
    zmxiEncodeHuffmanStateFree_JPEG_8u(writer);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(dc.spec);
    zmxiEncodeHuffmanSpecFree_JPEG_8u(ac.spec);
    free(units);
    free(picture);
    free(file.data);
    return 0;
}

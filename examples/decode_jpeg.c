/* decode_jpeg.c - decodes a baseline 4:2:0 JPEG file whose rows of units end in restart markers; what is damaged stays grey.
 *
 * Usage: decode_jpeg IN.jpg OUT.ppm. Reads what colour_jpeg writes, also after bytes of it were changed.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/jpegfile.h"

typedef struct Decoder {
    Bytes file;
    int at; /* the position in the file */
    int width, height, interval;
    Zmx16u quant[64];
    ZmxiDecodeHuffmanSpec *dc, *ac;
} Decoder;

static unsigned word(const Decoder* d, int at) {
    check(at + 1 < d->file.size, "the file ends in its headers");
    return (unsigned)d->file.data[at] << 8 | d->file.data[at + 1];
}

/* [headers] */
/* The marker segments up to the scan: the library parses none, and trusts the lists that it is given. */
static void readHeaders(Decoder* d) {
    unsigned marker = 0;
    int size, symbols, i;
    for (d->at = 2; marker != 0xFFDA; d->at += 2 + size) {
        const Zmx8u* body = d->file.data + d->at + 4;
        marker = word(d, d->at);
        size = (int)word(d, d->at + 2);
        check(d->at + 2 + size <= d->file.size, "a segment ends behind the file");
        if (marker == 0xFFDB) {
            check(size >= 67, "a short DQT");
            check(zmxiQuantInvTableInit_JPEG_8u16u(body + 1, d->quant) == zmxStsNoErr, "DQT");
        } else if (marker == 0xFFC4) {
            ZmxiDecodeHuffmanSpec** spec = size >= 19 && body[0] == 0 ? &d->dc : &d->ac;
            for (symbols = 0, i = 1; size >= 19 && i <= 16; ++i) symbols += body[i];
            check(*spec == NULL && size == 19 + symbols, "one table a DHT, and each table once");
            check(zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(body + 1, body + 17, spec) == zmxStsNoErr, "DHT");
        } else if (marker == 0xFFC0) {
            check(size == 17 && body[5] == 3 && body[7] == 0x22, "not a 4:2:0 file");
            d->height = (int)word(d, d->at + 5);
            d->width = (int)word(d, d->at + 7);
        } else if (marker == 0xFFDD) {
            d->interval = (int)word(d, d->at + 4);
        }
    }
}
/* [headers] */

/* [interval] */
/* Decodes one restart interval. Answers how many of its units are sound: the status of the first bad block ends it. */
static int decodeInterval(Decoder* d, int units, Zmx16s (*blocks)[64], ZmxiDecodeHuffmanState* reader) {
    Zmx16s lastDC[3] = {0, 0, 0}; /* first values, as at the head of the scan */
    int marker = 0, n;
    zmxiDecodeHuffmanStateInit_JPEG_8u(reader);
    for (n = 0; n < 6 * units; ++n) {
        int component = n % 6 < 4 ? 0 : n % 6 - 3;
        if (zmxiDecodeHuffman8x8_JPEG_1u16s_C1(d->file.data, d->file.size, &d->at, blocks[n], &lastDC[component],
                                               &marker, d->dc, d->ac, reader) != zmxStsNoErr)
            break;
    }
    return n / 6;
}
/* [interval] */

/* [resynchronise] */
/* Looks for the restart marker that ends interval `index`, from `from` on, and stands behind it; else at the end. */
static void resynchronise(Decoder* d, int from, int index) {
    for (d->at = from; d->at + 1 < d->file.size; ++d->at)
        if (d->file.data[d->at] == 0xFF && d->file.data[d->at + 1] == 0xD0 + index % 8) {
            d->at += 2;
            return;
        }
}
/* [resynchronise] */

int main(int argc, char** argv) {
    Decoder d;
    ZmxiDecodeHuffmanState* reader;
    Zmx16s(*blocks)[64];
    Zmx8u* wide; /* whole units, of which the picture is the top-left part */
    int across, down, row, bad = 0, n, i;
    check(argc == 3, "usage: decode_jpeg IN.jpg OUT.ppm");
    memset(&d, 0, sizeof d);
    d.file = load(argv[1]);
    readHeaders(&d);
    across = (d.width + 15) / 16;
    down = (d.height + 15) / 16;
    check(d.dc != NULL && d.ac != NULL && d.interval == across, "not a file of colour_jpeg");
    blocks = (Zmx16s(*)[64])memory(6 * (size_t)across * sizeof *blocks);
    wide = (Zmx8u*)memory((size_t)across * (size_t)down * 768);
    check(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&reader) == zmxStsNoErr, "reader");

    for (row = 0; row < down; ++row) {
        int start = d.at, sound = decodeInterval(&d, across, blocks, reader);
        bad += across - sound;
        resynchronise(&d, start, row);
        memset(blocks[6 * sound], 0, sizeof *blocks * 6 * (size_t)(across - sound)); /* mid-grey */
        for (n = 0; n < across; ++n) {
            Zmx16s samples[6][64];
            const Zmx16s* planes[3];
            planes[0] = samples[0];
            planes[1] = samples[4];
            planes[2] = samples[5];
            for (i = 0; i < 6; ++i) zmxiDCTQuantInv8x8_JPEG_16s_C1(blocks[6 * n + i], samples[i], d.quant);
            zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R(planes, wide + 48 * (row * across * 16 + n), across * 48);
        }
    }
    for (row = 1; row < d.height; ++row)
        memmove(wide + 3 * d.width * row, wide + 48 * across * row, 3 * (size_t)d.width);
    savePnm(argv[2], wide, d.width, d.height, 3);
    printf("%d x %d pixels, %d of %d units damaged\n", d.width, d.height, bad, across * down);
    zmxiDecodeHuffmanStateFree_JPEG_8u(reader);
    zmxiDecodeHuffmanSpecFree_JPEG_8u(d.dc);
    zmxiDecodeHuffmanSpecFree_JPEG_8u(d.ac);
    free(d.file.data);
    free(blocks);
    free(wide);
    return 0;
}

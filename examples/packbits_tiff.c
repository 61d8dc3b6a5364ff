/* packbits_tiff.c - a page in black and white as a TIFF file of PackBits rows, and back.
 *
 * Usage: packbits_tiff OUT.tif. Then: tiffinfo -D OUT.tif
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/example.h"

enum { kWidth = 400, kHeight = 300, kRow = (kWidth + 7) / 8 };

/* An entry of the directory; a value of 2 bytes stands in the first ones of the field. */
static void entry(Bytes* b, unsigned tag, unsigned type, unsigned count, unsigned value) {
    putLow(b, tag, 2);
    putLow(b, type, 2);
    putLow(b, count, 4);
    putLow(b, value, 4);
}

int main(int argc, char** argv) {
    Zmx8u page[kHeight][kRow], back[kRow];
    Bytes file = {NULL, 0, 0};
    int x, y, at, start, directory;
    enum { kShort = 3, kLong = 4 };
    check(argc == 2, "usage: packbits_tiff OUT.tif");
    memset(page, 0, sizeof page);
    for (y = 0; y < kHeight; ++y) /* rings */
        for (x = 0; x < kWidth; ++x)
            if (((x - 200) * (x - 200) + (y - 150) * (y - 150)) / 2000 % 2) page[y][x / 8] |= (Zmx8u)(0x80 >> x % 8);

    putBytes(&file, "II*\0", 4);
    putLow(&file, 0, 4); /* where the directory stands: known at the end */
    start = file.size;
    /* [pack] */
    for (y = 0; y < kHeight; ++y) {
        makeRoom(&file, kRow + (kRow + 4) / 5); /* the worst that a row can take */
        check(zmxiPackBitsRow_TIFF_8u_C1(page[y], kRow, file.data, &file.size, file.room) == zmxStsNoErr, "pack");
    }
    /* [pack] */

    /* [unpack] */
    putLow(&file, 0, 1); /* the decoder may look at one byte behind the stream */
    at = start;
    for (y = 0; y < kHeight; ++y) {
        check(zmxiUnpackBitsRow_TIFF_8u_C1(file.data, &at, file.size - 1, back, kRow) == zmxStsNoErr, "unpack");
        check(memcmp(page[y], back, kRow) == 0, "the row comes back");
    }
    check(at == file.size - 1, "nothing is left");
    /* [unpack] */

    if (file.size % 2) putLow(&file, 0, 1); /* directories begin at even places */
    directory = file.size;
    putLow(&file, 9, 2);
    entry(&file, 256, kShort, 1, kWidth);
    entry(&file, 257, kShort, 1, kHeight);
    entry(&file, 258, kShort, 1, 1);     /* bits a sample */
    entry(&file, 259, kShort, 1, 32773); /* compression: PackBits */
    entry(&file, 262, kShort, 1, 0);     /* 0 is white */
    entry(&file, 273, kLong, 1, (unsigned)start);
    entry(&file, 277, kShort, 1, 1); /* samples a pixel */
    entry(&file, 278, kShort, 1, kHeight);
    entry(&file, 279, kLong, 1, (unsigned)(at - start));
    putLow(&file, 0, 4); /* no other directory */
    for (x = 0; x < 4; ++x) file.data[4 + x] = (Zmx8u)((unsigned)directory >> 8 * x);

    save(argv[1], file.data, (size_t)file.size);
    printf("%d bytes of rows in %d\n", kRow * kHeight, at - start);
    free(file.data);
    return 0;
}

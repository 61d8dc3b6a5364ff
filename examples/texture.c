/* texture.c - RGBA pixels as DXT5 blocks and back, and BC7 blocks of one mode, which the library decodes.
 *
 * Usage: texture OUT-DXT5.dds OUT-BC7.dds OUT-BC7.ppm. Pillow opens all three; the last two are the same picture
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/ddsfile.h"

enum { kWidth = 150, kHeight = 90, kAcross = (kWidth + 3) / 4, kBlocks = kAcross * ((kHeight + 3) / 4) };

/* [dxt] */
/* A whole surface at a call; sides that are no multiples of 4 are filled up by the function. */
static double dxt5(const Zmx8u* picture, const char* path) {
    ZmxiSize size;
    Zmx8u *blocks = (Zmx8u*)memory(kBlocks * 16), *back = (Zmx8u*)memory(kWidth * kHeight * 4);
    Bytes file = {NULL, 0, 0};
    double error = 0;
    int i;
    size.width = kWidth;
    size.height = kHeight;
    check(zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(picture, kWidth * 4, size, blocks) == zmxStsNoErr, "encode");
    check(zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(blocks, back, kWidth * 4, size) == zmxStsNoErr, "decode");
    for (i = 0; i < kWidth * kHeight * 4; ++i) error += (double)(picture[i] - back[i]) * (picture[i] - back[i]);
    putDdsHeader(&file, kWidth, kHeight, "DXT5", kBlocks * 16);
    putBytes(&file, blocks, kBlocks * 16);
    save(path, file.data, (size_t)file.size);
    free(blocks);
    free(back);
    free(file.data);
    return error / (kWidth * kHeight * 4);
}
/* [dxt] */

/* Sets `count` bits of a block, the lowest first. */
static void setBits(Zmx8u block[16], int* at, unsigned value, int count) {
    for (; count-- > 0; value >>= 1, ++*at) block[*at / 8] |= (Zmx8u)((value & 1) << *at % 8);
}

/* A BC7 block of mode 6: two colours of 7 bits and a shared lowest one, and 16 steps between them. */
static void mode6(const Zmx8u texels[16][4], Zmx8u block[16]) {
    int low = 0, high = 0, sum[16], at = 0, i, c;
    for (i = 0; i < 16; ++i) {
        sum[i] = texels[i][0] + texels[i][1] + texels[i][2];
        if (sum[i] < sum[low]) low = i;
        if (sum[i] > sum[high]) high = i;
    }
    if (2 * sum[0] > sum[low] + sum[high]) { /* the first index has no top bit: the colours change places */
        i = low;
        low = high;
        high = i;
    }
    memset(block, 0, 16);
    setBits(block, &at, 1 << 6, 7);
    for (c = 0; c < 4; ++c) {
        setBits(block, &at, texels[low][c] >> 1, 7);
        setBits(block, &at, texels[high][c] >> 1, 7);
    }
    setBits(block, &at, 3, 2); /* the lowest bits: 1 and 1, so that 255 stays 255 */
    for (i = 0; i < 16; ++i) {
        int range = sum[high] - sum[low], step = range == 0 ? 0 : (15 * (sum[i] - sum[low]) + range / 2) / range;
        setBits(block, &at, (unsigned)(i == 0 && step > 7 ? 7 : step), i == 0 ? 3 : 4);
    }
}

/* [bc7] */
static void bc7(const Zmx8u* picture, const char* ddsPath, const char* ppmPath) {
    ZmxiSize size;
    Zmx8u *blocks = (Zmx8u*)memory(kBlocks * 16), *back = (Zmx8u*)memory(kWidth * kHeight * 4);
    Bytes file = {NULL, 0, 0};
    int n, i;
    for (n = 0; n < kBlocks; ++n) {
        Zmx8u texels[16][4];
        for (i = 0; i < 16; ++i) { /* the last column and row again, beyond the edges */
            int x = 4 * (n % kAcross) + i % 4 < kWidth ? 4 * (n % kAcross) + i % 4 : kWidth - 1;
            int y = 4 * (n / kAcross) + i / 4 < kHeight ? 4 * (n / kAcross) + i / 4 : kHeight - 1;
            memcpy(texels[i], picture + 4 * (y * kWidth + x), 4);
        }
        mode6((const Zmx8u(*)[4])texels, blocks + 16 * n);
    }
    size.width = kWidth;
    size.height = kHeight;
    check(zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R(blocks, back, kWidth * 4, size) == zmxStsNoErr, "decode");
    putDdsHeader(&file, kWidth, kHeight, "DX10", kBlocks * 16);
    putBytes(&file, blocks, kBlocks * 16);
    save(ddsPath, file.data, (size_t)file.size);
    for (i = 0; i < kWidth * kHeight; ++i) memmove(back + 3 * i, back + 4 * i, 3);
    savePnm(ppmPath, back, kWidth, kHeight, 3);
    free(blocks);
    free(back);
    free(file.data);
}
/* [bc7] */

int main(int argc, char** argv) {
    Zmx8u* picture = makePicture(kWidth, kHeight, 4);
    check(argc == 4, "usage: texture OUT-DXT5.dds OUT-BC7.dds OUT-BC7.ppm");
    printf("mean squared error of DXT5: %.2f\n", dxt5(picture, argv[1]));
    bc7(picture, argv[2], argv[3]);
    free(picture);
    return 0;
}

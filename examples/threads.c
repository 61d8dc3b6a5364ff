/* threads.c - many threads on one surface: strips of block rows, with no lock, since no two calls write the same bytes.
 *
 * Usage: threads OUT.dds. Then: Pillow opens it
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/ddsfile.h"
#include <pthread.h>

enum { kWidth = 512, kHeight = 512, kThreads = 4, kRow = kWidth / 4 * 8, kStrip = kHeight / kThreads };

/* [strip] */
typedef struct Strip {
    const Zmx8u* pixels;
    Zmx8u* blocks;
    ZmxStatus status;
} Strip;

/* Blocks are independent, and so are calls on different rows of them. */
static void* encodeStrip(void* argument) {
    Strip* s = (Strip*)argument;
    ZmxiSize size;
    size.width = kWidth;
    size.height = kStrip; /* a multiple of 4 */
    s->status = zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(s->pixels, kWidth * 4, size, s->blocks);
    return NULL;
}
/* [strip] */

int main(int argc, char** argv) {
    Zmx8u* picture = makePicture(kWidth, kHeight, 4);
    Zmx8u *blocks = (Zmx8u*)memory(kRow * kHeight / 4), *alone = (Zmx8u*)memory(kRow * kHeight / 4);
    Strip strips[kThreads];
    pthread_t threads[kThreads];
    ZmxiSize size;
    Bytes file = {NULL, 0, 0};
    int i;
    check(argc == 2, "usage: threads OUT.dds");

    /* [start] */
    for (i = 0; i < kThreads; ++i) {
        strips[i].pixels = picture + (size_t)i * kStrip * kWidth * 4;
        strips[i].blocks = blocks + (size_t)i * kStrip / 4 * kRow;
        check(pthread_create(&threads[i], NULL, encodeStrip, &strips[i]) == 0, "thread");
    }
    for (i = 0; i < kThreads; ++i) {
        pthread_join(threads[i], NULL);
        check(strips[i].status == zmxStsNoErr, "strip");
    }
    /* [start] */

    size.width = kWidth;
    size.height = kHeight;
    check(zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(picture, kWidth * 4, size, alone) == zmxStsNoErr, "encode");
    check(memcmp(blocks, alone, kRow * kHeight / 4) == 0, "the same bytes as one thread gives");
    putDdsHeader(&file, kWidth, kHeight, "DXT1", kRow * kHeight / 4);
    putBytes(&file, blocks, kRow * kHeight / 4);
    save(argv[1], file.data, (size_t)file.size);
    printf("%d threads, the same bytes as one\n", kThreads);
    free(picture);
    free(blocks);
    free(alone);
    free(file.data);
    return 0;
}

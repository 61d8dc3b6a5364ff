/* allocator.c - the library on memory of the program's own: an arena, in which nothing is given back one by one.
 *
 * Usage: allocator OUT.j2k. Then: opj_decompress -i OUT.j2k -o OUT.pgm
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/j2kfile.h"
#include <zmxcore.h>

enum { kSide = 64 };

/* [arena] */
/* Aligned as strictly as any element or pointer of a state. */
static union {
    double aligned;
    void* pointer;
    char bytes[4 << 20];
} arena;
static size_t used;
static int calls;

/* The library finds these two ahead of those of libzmxcore, since they stand in the program. */
void* zmxMalloc(int len) {
    size_t need = len < 1 ? 0 : ((size_t)len + 15) / 16 * 16;
    void* block = arena.bytes + used;
    ++calls;
    if (need == 0 || need > sizeof arena.bytes - used) return NULL; /* the functions answer with a status */
    used += need;
    return block;
}

void zmxFree(void* ptr) { (void)ptr; /* the arena goes as a whole */ }
/* [arena] */

int main(int argc, char** argv) {
    ZmxiSize size, huge;
    ZmxiEncodeState_JPEG2K* encoder;
    Zmx32s samples[kSide * kSide];
    Zmx8u* picture = makePicture(kSide, kSide, 1);
    Bytes file = {NULL, 0, 0};
    Block block;
    int i, sfBits, segments, more, tile;
    check(argc == 2, "usage: allocator OUT.j2k");

    /* [use] */
    huge.width = huge.height = 1024;
    check(zmxiEncodeInitAlloc_JPEG2K(&encoder, huge) == zmxStsMemAllocErr && encoder == NULL, "no room in the arena");
    used = 0;
    size.width = size.height = kSide;
    check(zmxiEncodeInitAlloc_JPEG2K(&encoder, size) == zmxStsNoErr, "encoder");
    check((char*)encoder >= arena.bytes && (char*)encoder < arena.bytes + sizeof arena.bytes, "it is in the arena");
    /* [use] */

    for (i = 0; i < kSide * kSide; ++i) samples[i] = signMagnitude(picture[i] - 128);
    check(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(samples, kSide * (int)sizeof *samples, size, encoder, 0, 31,
                                                 ZMX_MQ_TERM_FLUSH, 0, 0, &sfBits, &block.passes,
                                                 &segments) == zmxStsNoErr,
          "load");
    block.length = 20000;
    block.bytes = (Zmx8u*)memory((size_t)block.length);
    check(zmxiEncodeStoreBits_JPEG2K_1u((Zmx8u*)block.bytes, &block.length, encoder, &more) == zmxStsNoErr && !more,
          "store");
    block.zeroPlanes = planesOfBand(0) - sfBits;
    tile = beginCodestream(&file, kSide, kSide, 0);
    putPacket(&file, &block, 1);
    endCodestream(&file, tile);
    save(argv[1], file.data, (size_t)file.size);
    printf("%d calls of the allocator, %lu bytes of the arena in use\n", calls, (unsigned long)used);
    zmxiEncodeFree_JPEG2K(encoder);
    free((Zmx8u*)block.bytes);
    free(picture);
    free(file.data);
    return 0;
}

/* j2k_codeblock.c - one JPEG2000 code block there and back, and as the only one of a codestream.
 *
 * Usage: j2k_codeblock OUT.j2k OUT.pgm. Then: opj_decompress -i OUT.j2k -o back.pgm, which equals OUT.pgm
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#include "examples/j2kfile.h"

enum { kSide = 64, kStep = kSide * (int)sizeof(Zmx32s) };

int main(int argc, char** argv) {
    ZmxiSize size;
    ZmxiEncodeState_JPEG2K* encoder;
    ZmxiDecodeCBProgrState* decoder;
    Zmx32s samples[kSide * kSide], back[kSide * kSide];
    Zmx8u* picture = makePicture(kSide, kSide, 1);
    Bytes stream = {NULL, 0, 0}, file = {NULL, 0, 0};
    Block block;
    int i, magnBits = 31, sfBits, passes, segments, more, length, nBitPlanes, tile;
    check(argc == 3, "usage: j2k_codeblock OUT.j2k OUT.pgm");
    size.width = size.height = kSide;

    /* [encode] */
    for (i = 0; i < kSide * kSide; ++i)
        samples[i] = signMagnitude(picture[i] - 128); /* the level shift of 8-bit samples */
    check(zmxiEncodeInitAlloc_JPEG2K(&encoder, size) == zmxStsNoErr, "encoder");
    check(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(samples, kStep, size, encoder, 0, magnBits, ZMX_MQ_TERM_NEAR_OPTIMAL,
                                                 0, ZMX_CB_LOSSLESS, &sfBits, &passes, &segments) == zmxStsNoErr,
          "load");
    do { /* buffers of any size: the bytes are the same */
        int count = 1000;
        makeRoom(&stream, count);
        check(zmxiEncodeStoreBits_JPEG2K_1u(stream.data + stream.size, &count, encoder, &more) == zmxStsNoErr, "store");
        stream.size += count;
    } while (more);
    check(segments == 1, "one segment");
    check(zmxiEncodeGetTermPassLen_JPEG2K(encoder, 0, &length) == zmxStsNoErr, "length");
    /* [encode] */

    /* [decode] */
    nBitPlanes = sfBits - (31 - magnBits); /* the planes that were coded */
    check(zmxiDecodeCBProgrInitAlloc_JPEG2K(&decoder, size) == zmxStsNoErr, "decoder");
    check(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(back, kStep, size, decoder, 0, nBitPlanes, 0) == zmxStsNoErr,
          "attach");
    check(zmxiDecodeCBProgrSetPassCounter_JPEG2K(passes, decoder) == zmxStsNoErr, "passes");
    check(zmxiDecodeCBProgrStep_JPEG2K(stream.data, length, decoder) == zmxStsNoErr, "step");
    check(memcmp(samples, back, sizeof back) == 0, "the samples come back");
    /* [decode] */

    block.zeroPlanes = planesOfBand(0) - nBitPlanes;
    block.passes = passes;
    block.bytes = stream.data;
    block.length = length;
    tile = beginCodestream(&file, kSide, kSide, 0); /* no wavelet: the block is the picture */
    putPacket(&file, &block, 1);
    endCodestream(&file, tile);
    save(argv[1], file.data, (size_t)file.size);
    savePnm(argv[2], picture, kSide, kSide, 1);
    printf("%d planes in %d passes and %d bytes\n", nBitPlanes, passes, length);
    zmxiEncodeFree_JPEG2K(encoder);
    zmxiDecodeCBProgrFree_JPEG2K(decoder);
    free(stream.data);
    free(file.data);
    free(picture);
    return 0;
}

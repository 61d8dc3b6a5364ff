/* dds.c - a DDS file of DXT blocks to PPM or PAM (d IN OUT) and back (e IN OUT), the whole surface in one call to the
   library: what a short program of one's own takes. A last argument of dxt5 says which. */
// SPDX-License-Identifier: BSD-2-Clause
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zmxj.h>
int main(int argc, char** argv) {
    FILE *in = fopen(argv[2], "rb"), *out = fopen(argv[3], "wb");
    int w, h, dxt5 = argc > 4 && strcmp(argv[4], "dxt5") == 0, k = dxt5 ? 16 : 8;
    unsigned char head[128] = {0};
    if (argv[1][0] == 'd') {
        if (fread(head, 1, 128, in) != 128) return 1;
        memcpy(&h, head + 12, 4);
        memcpy(&w, head + 16, 4);
    } else if (fscanf(in, "P7 WIDTH %d HEIGHT %d DEPTH 4 MAXVAL 255 TUPLTYPE RGB_ALPHA ENDHDR", &w, &h) != 2 ||
               fgetc(in) < 0)
        return 1;
    size_t blocks = (size_t)((w + 3) / 4) * ((h + 3) / 4) * k, pixels = (size_t)4 * w * h, i;
    unsigned char *b = malloc(blocks), *p = malloc(pixels);
    ZmxiSize roi = {w, h};
    if (argv[1][0] == 'd') {
        if (fread(b, 1, blocks, in) != blocks) return 1;
        if (dxt5)
            zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(b, p, 4 * w, roi);
        else
            zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(b, p, 4 * w, roi);
        if (!dxt5)
            for (i = 0; i < pixels / 4; ++i) memmove(p + 3 * i, p + 4 * i, 3);
        fprintf(out,
                dxt5 ? "P7\nWIDTH %d\nHEIGHT %d\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
                     : "P6\n%d %d\n255\n",
                w, h);
        fwrite(p, dxt5 ? 4 : 3, pixels / 4, out);
    } else {
        if (fread(p, 1, pixels, in) != pixels) return 1;
        if (dxt5)
            zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(p, 4 * w, roi, b);
        else
            zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(p, 4 * w, roi, b);
        fwrite(head, 1, 128, out);
        fwrite(b, 1, blocks, out);
    }
    return fclose(out) != 0;
}

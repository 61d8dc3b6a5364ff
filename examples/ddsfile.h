/* ddsfile.h - the header of a DDS file of compressed blocks without mip levels. */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef DDSFILE_H
#define DDSFILE_H

#include "examples/example.h"

/* `format` is DXT1, DXT5 or so; BC7 is named by DX10 and the number 98 in a header of its own. */
static inline void putDdsHeader(Bytes* b, int width, int height, const char* format, int bytes) {
    int i;
    putBytes(b, "DDS ", 4);
    putLow(b, 124, 4);
    putLow(b, 0x81007, 4); /* caps, height, width, pixel format, linear size */
    putLow(b, (unsigned)height, 4);
    putLow(b, (unsigned)width, 4);
    putLow(b, (unsigned)bytes, 4);
    for (i = 0; i < 13; ++i) putLow(b, 0, 4);
    putLow(b, 32, 4);
    putLow(b, 4, 4); /* the format has four letters */
    putBytes(b, format, 4);
    for (i = 0; i < 5; ++i) putLow(b, 0, 4);
    putLow(b, 0x1000, 4); /* a texture */
    for (i = 0; i < 4; ++i) putLow(b, 0, 4);
    if (strcmp(format, "DX10") != 0) return;
    putLow(b, 98, 4); /* BC7_UNORM */
    putLow(b, 3, 4);  /* two dimensions */
    putLow(b, 0, 4);
    putLow(b, 1, 4); /* one surface */
    putLow(b, 0, 4);
}

#endif /* DDSFILE_H */

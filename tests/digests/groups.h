// groups.h - the digests by family, for programs that call them in ways of their own.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/digests/digests.h"

struct Group {
    const char* name;
    void (*digests)(Report&);
};

inline constexpr Group kGroups[] = {{"colour", colourDigests},
                                    {"resampling", resamplingDigests},
                                    {"minimum coded units", unitDigests},
                                    {"blocks", blockDigests},
                                    {"Huffman tables", huffmanDigests},
                                    {"sequential coding", sequentialDigests},
                                    {"progressive coding", progressiveDigests},
                                    {"lossless coding", losslessDigests},
                                    {"components", componentDigests},
                                    {"wavelets on planes", waveletPlaneDigests},
                                    {"wavelet kernels", waveletKernelDigests},
                                    {"wavelet lifting", waveletLiftDigests},
                                    {"code blocks", codeblockDigests},
                                    {"textures", textureDigests},
                                    {"HD Photo and TIFF", photoAndTiffDigests}};

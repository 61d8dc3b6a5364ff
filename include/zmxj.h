/** \file
 *  zmxj.h - the public interface of libzmxjpx: exact image-codec primitives behind plain C functions.
 */
/* SPDX-License-Identifier: BSD-2-Clause */

/** \mainpage libzmxjpx
 *
 *  Image-codec primitives behind plain C functions: the inner loops of JPEG, JPEG2000, the HD Photo transform, TIFF
 *  PackBits rows and DXT and BC7 textures. The same bytes come out of every build.
 *
 *  \section guides Guides
 *
 *  Each is made of a program of `examples/` that is compiled and run by the tests:
 *
 *  - \ref guide_jpeg_baseline
 *  - \ref guide_jpeg_decoding
 *  - \ref guide_jpeg_progressive
 *  - \ref guide_jpeg_lossless
 *  - \ref guide_jpeg2000
 *  - \ref guide_textures
 *  - \ref guide_tiff
 *  - \ref guide_embedding
 *  - \ref guide_python
 *  - \ref guide_browser
 *
 *  \section names Names
 *
 *  An exported name reads `<domain><Operation>_<Codec>_<depths>_<layout>`:
 *
 *  - *domain*: `zmxi` images, blocks or rows; `zmxj` this library
 *  - *Operation*: what is done; `LS`: a level shift of 128 is part of it; `411`, `422`, `444`: the chroma sampling, where
 *    411 is 4:2:0
 *  - *Codec*: `JPEG`, `JPEG2K`, `HDP`, `TIFF`; `MCU` for one whole minimum coded unit; or a block format
 *  - *depths*: element types, source first: `8u`, `16s`, `16u`, `32s`, `32f`; `1u` is a packed bit stream
 *  - *layout*: `C` and a digit: interleaved channels; `P` and a digit: planes; `R`: rows with steps; `I`: in place
 *
 *  \section conventions What holds for every function
 *
 *  - **Statuses.** A function tests its arguments in the order in which its page lists the statuses, before it touches any
 *    data. The first test that fails decides, and nothing has been written then. See \ref status.
 *  - **Steps.** A step is the distance in bytes between the first elements of two successive rows, whatever the element
 *    type, and need not be a multiple of the element size. A group of planes is an array of pointers with one shared
 *    step. Bytes between the end of a row and the start of the next one are neither read nor written.
 *  - **Sizes** count samples or pixels, never bytes.
 *  - **Blocks.** An 8x8 block is 64 elements in natural order, row by row. Zig-zag order occurs in DQT tables only.
 *  - **Buffers.** Each page tells which addresses will do and which buffers may coincide. What it does not name as
 *    allowed is not: buffers that a call writes do not overlap any other buffer of the call. The sizes of buffers are
 *    the caller's affair: no function can test them unless their length is an argument.
 *  - **Numbers.** Arithmetic overflow of data is never reported. Each page says where results wrap and where they
 *    saturate.
 *  - **Memory.** Only the six functions with `InitAlloc` in their names take any, from zmxMalloc().
 *  - **Threads.** Every function is safe to call at the same time from several threads as long as the buffers and state
 *    blocks that they write are distinct. 19 functions share the rows of a region of more than 8192 samples out to a
 *    team of threads, and return when all are done; their pages say so. How many: see ownGetNumThreads().
 */
#ifndef ZMXJ_H
#define ZMXJ_H

#include "zmxj/types.h"
#include "zmxj_version.h"

#include "zmxj/codeblock.h"
#include "zmxj/colour.h"
#include "zmxj/component.h"
#include "zmxj/dct.h"
#include "zmxj/hdphoto.h"
#include "zmxj/huffman.h"
#include "zmxj/levelshift.h"
#include "zmxj/lossless.h"
#include "zmxj/mcu.h"
#include "zmxj/progressive.h"
#include "zmxj/resampling.h"
#include "zmxj/texture.h"
#include "zmxj/tiff.h"
#include "zmxj/wavelet.h"

/** \addtogroup version
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Returns the version record of the loaded library.
 *
 *  \return  a pointer to a constant record, the same on every call; never null, and not to be released
 */
ZMXJ_API const ZmxLibraryVersion* zmxjGetLibVersion(void);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_H */

/* zmxj.h - the public interface of libzmxjpx: exact image-codec primitives behind plain C functions.
 *
 * An exported name reads <domain><Operation>_<Codec>_<depths>_<layout>:
 *   domain     zmxi: images, blocks or rows; zmxj: this library
 *   Operation  what is done; LS: a level shift of 128 is part of it; 411, 422, 444: the chroma sampling, where 411 is 4:2:0
 *   Codec      JPEG, JPEG2K, HDP, TIFF; MCU for one whole minimum coded unit; or a block format
 *   depths     element types, source first: 8u, 16s, 16u, 32s, 32f; 1u is a packed bit stream
 *   layout     C and a digit: interleaved channels; P and a digit: planes; R: rows with steps; I: in place
 *
 * A step is the distance in bytes between the first elements of two successive rows, whatever the element
 * type, and need not be a multiple of the element size. A group of planes is an array of pointers with one
 * shared step. An 8x8 block is 64 elements in natural order, row by row.
 *
 * Every function is safe to call at the same time from several threads as long as the buffers and state
 * blocks that they write are distinct.
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

#ifdef __cplusplus
extern "C" {
#endif

/** Returns the version record of the library.
 *
 *  \return a pointer to a constant record, the same on every call; never null, and not to be released
 */
ZMXJ_API const ZmxLibraryVersion* zmxjGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_H */

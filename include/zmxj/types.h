/** \file
 *  types.h - element types, small records and status values shared by every function of libzmxjpx.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_TYPES_H
#define ZMXJ_TYPES_H

#include <stdint.h>

/** \defgroup types Types and records
 *  Element types, whose codes (8u, 16s and so on) are part of the names of functions, and the small records, which are
 *  passed by value. All fields are signed 32-bit.
 *  \{
 */

/** Marks what the library exports. */
#if defined(_WIN32) && defined(ZMXJ_EXPORTS) /* while the DLL itself is built */
#define ZMXJ_API __declspec(dllexport)
#elif defined(__GNUC__) && !defined(_WIN32)
#define ZMXJ_API __attribute__((visibility("default")))
#else
#define ZMXJ_API
#endif

typedef uint8_t Zmx8u;   /**< unsigned 8-bit sample, or a byte of a packed bit stream */
typedef int16_t Zmx16s;  /**< signed 16-bit sample or coefficient */
typedef uint16_t Zmx16u; /**< unsigned 16-bit sample, or one packed 555 or 565 pixel */
typedef int32_t Zmx32s;  /**< signed 32-bit sample or coefficient */
typedef uint32_t Zmx32u; /**< unsigned 32-bit counter, or bit accumulator */
typedef float Zmx32f;    /**< IEEE 754 single-precision sample */

/** The size of a region, in samples or pixels, never in bytes. */
typedef struct ZmxiSize {
    int width;  /**< samples or pixels in a row */
    int height; /**< rows */
} ZmxiSize;

/** A rectangle in the coordinates of a plane or band. */
typedef struct ZmxiRect {
    int x;      /**< column of the first sample; the wavelets look at its parity alone */
    int y;      /**< row of the first sample; the wavelets look at its parity alone */
    int width;  /**< samples in a row */
    int height; /**< rows */
} ZmxiRect;

/** A position in a plane. No function takes one; it completes the records. */
typedef struct ZmxiPoint {
    int x; /**< column */
    int y; /**< row */
} ZmxiPoint;

/** \} */

/** \defgroup status Status values
 *  What functions return. Arguments are tested in a fixed order before any data is touched; the first test that fails
 *  decides, and nothing has been written at that point. The pages of the functions list the tests in that order. A status
 *  that comes from the data (zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsHuffTableErr, zmxStsErr, zmxStsUnderRunErr,
 *  zmxStsCBDamagedErr) leaves what was read and written up to there.
 *  \{
 */

/** A status: 0 is success, a negative value an error, a positive value a warning that leaves a defined result. */
typedef int ZmxStatus;

/** The values of ZmxStatus; no other is returned. */
enum {
    zmxStsDivByZero = 6,           /**< warning: a zero divisor was met and a defined value stored */
    zmxStsNoErr = 0,               /**< success */
    zmxStsErr = -2,                /**< a run of the stream leads out of the block (sequential decoder) */
    zmxStsBadArgErr = -5,          /**< an argument out of its domain, not being a size */
    zmxStsSizeErr = -6,            /**< a width, height, length or buffer length below 1 */
    zmxStsRangeErr = -7,           /**< a difference whose category exceeds 16; cannot happen for 16-bit differences */
    zmxStsNullPtrErr = -8,         /**< a null pointer; or a failed allocation in the Huffman InitAlloc functions */
    zmxStsMemAllocErr = -9,        /**< allocation failed in the JPEG2000 InitAlloc functions */
    zmxStsStepErr = -14,           /**< a row step below 1 */
    zmxStsContextMatchErr = -17,   /**< a state block whose magic word does not match */
    zmxStsOutOfBufErr = -62,       /**< the bit reader ran out of input, or the bit writer out of room */
    zmxStsDCTRangeErr = -63,       /**< a value that has no representation, or an invalid code */
    zmxStsHuffTableErr = -64,      /**< a Huffman table that cannot be built, or a symbol with no code */
    zmxStsCBDamagedErr = -112,     /**< the code block is damaged; remembered until the next attach */
    zmxStsBadPassNumberErr = -113, /**< a coding-pass number outside 0 to the pass count minus 1 */
    zmxStsUnderRunErr = -124,      /**< TIFF packing or unpacking ran out of source or of destination */
    zmxStsCBNotAttachedErr = -180, /**< a decoding step on a state with no code block attached */
    zmxStsNotSupportedModeErr = -9999 /**< reserved: no exported function returns it */
};

/** \} */

/** \defgroup version Version
 *  The version of the loaded library (zmxjGetLibVersion()) and that of the headers (ZMXJ_VERSION_AT_LEAST()).
 *  \{
 */

/** The version record of the loaded library. */
typedef struct ZmxLibraryVersion {
    int major;             /**< 6 */
    int minor;             /**< 1 */
    int majorBuild;        /**< 137 */
    int build;             /**< 823 */
    char targetCpu[4];     /**< "px" and two zero bytes: generic code */
    const char* Name;      /**< the loaded name of the library */
    const char* Version;   /**< the version in words */
    const char* BuildDate; /**< the date of the interface */
} ZmxLibraryVersion;

/** \} */

#endif /* ZMXJ_TYPES_H */

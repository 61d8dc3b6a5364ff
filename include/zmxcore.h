/** \file
 *  zmxcore.h - the companion library: memory, and how many threads a parallel region may use.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXCORE_H
#define ZMXCORE_H

/** \defgroup core Memory and threads (libzmxcore)
 *  libzmxjpx takes all of its memory, and the thread count of its row-parallel functions, from these three functions. A
 *  program that wants its own allocator defines them itself; the dynamic linker then prefers the program's definitions
 *  (see \ref guide_embedding).
 *  \{
 */

/** Marks what the companion library exports. */
#if defined(_WIN32) && defined(ZMXCORE_EXPORTS) /* while the DLL itself is built */
#define ZMX_EXPORT __declspec(dllexport)
#elif defined(__GNUC__) && !defined(_WIN32)
#define ZMX_EXPORT __attribute__((visibility("default")))
#else
#define ZMX_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Allocates memory.
 *
 *  The library asks for natural alignment only; a definition of your own need not align to 64 bytes.
 *
 *  \param len  number of bytes, at least 1
 *  \return  a block of at least `len` bytes aligned to 64 bytes, which zmxFree() takes back; null when `len` is below 1
 *           or no memory can be had
 */
ZMX_EXPORT void* zmxMalloc(int len);

/** Gives back a block that zmxMalloc() returned. A null pointer is harmless.
 *
 *  \param ptr  the block, or null
 */
ZMX_EXPORT void zmxFree(void* ptr);

/** Tells how many threads a parallel region may use.
 *
 *  Counted are the processors in the affinity mask of the process, limited by the CPU quota of its control
 *  group (rounded up). The count is taken at the first call and kept, so a call costs a load. OMP_NUM_THREADS has no
 *  say: the library asks OpenMP for a team of this many threads. `taskset` has, and so has a program that defines this
 *  function itself.
 *
 *  \return  a positive integer
 */
ZMX_EXPORT int ownGetNumThreads(void);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXCORE_H */

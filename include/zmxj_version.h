/** \file
 *  zmxj_version.h - the version of the headers, for the preprocessor. zmxjGetLibVersion() has that of the loaded library.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_VERSION_H
#define ZMXJ_VERSION_H

/** \addtogroup version
 *  \{
 */

#define ZMXJ_VERSION_MAJOR 6                   /**< the first number of the version */
#define ZMXJ_VERSION_MINOR 1                   /**< the second number of the version */
#define ZMXJ_VERSION_MAJOR_BUILD 137           /**< the build line */
#define ZMXJ_VERSION_BUILD 823                 /**< the number of the build */
#define ZMXJ_VERSION_STRING "6.1 build 137.56" /**< the version in words, as in ZmxLibraryVersion */

/** Tells, also in `#if`, whether the headers are of version major.minor or a later one.
 *
 *  \param major  the first number of the version that is wanted
 *  \param minor  the second number of the version that is wanted
 *  \return  1 when they are, 0 when they are older
 */
#define ZMXJ_VERSION_AT_LEAST(major, minor)                                                                            \
    (ZMXJ_VERSION_MAJOR > (major) || (ZMXJ_VERSION_MAJOR == (major) && ZMXJ_VERSION_MINOR >= (minor)))

/** \} */

#endif /* ZMXJ_VERSION_H */

/* resampling.h - chroma resampling of whole planes and rows. */
#ifndef ZMXJ_RESAMPLING_H
#define ZMXJ_RESAMPLING_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_RESAMPLING_H */

/* lossless.h - lossless JPEG row coding. */
#ifndef ZMXJ_LOSSLESS_H
#define ZMXJ_LOSSLESS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_LOSSLESS_H */

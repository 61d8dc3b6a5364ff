/* tiff.h - TIFF PackBits rows. */
#ifndef ZMXJ_TIFF_H
#define ZMXJ_TIFF_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_TIFF_H */

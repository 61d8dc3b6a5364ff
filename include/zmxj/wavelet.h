/* wavelet.h - JPEG2000 wavelet transforms. */
#ifndef ZMXJ_WAVELET_H
#define ZMXJ_WAVELET_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_WAVELET_H */

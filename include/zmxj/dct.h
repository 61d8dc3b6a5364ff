/* dct.h - quantisation tables, and 8x8 blocks between samples and quantised DCT coefficients. */
#ifndef ZMXJ_DCT_H
#define ZMXJ_DCT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_DCT_H */

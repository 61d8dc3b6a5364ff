/* mcu.h - conversions of one minimum coded unit between pixels and zero-centred 8x8 blocks. */
#ifndef ZMXJ_MCU_H
#define ZMXJ_MCU_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_MCU_H */

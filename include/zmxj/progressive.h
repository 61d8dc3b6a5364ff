/* progressive.h - progressive JPEG block coding. */
#ifndef ZMXJ_PROGRESSIVE_H
#define ZMXJ_PROGRESSIVE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_PROGRESSIVE_H */

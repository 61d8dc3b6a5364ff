/* texture.h - DXT and BC7 texture blocks. */
#ifndef ZMXJ_TEXTURE_H
#define ZMXJ_TEXTURE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_TEXTURE_H */

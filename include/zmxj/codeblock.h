/* codeblock.h - JPEG2000 code-block coding. */
#ifndef ZMXJ_CODEBLOCK_H
#define ZMXJ_CODEBLOCK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_CODEBLOCK_H */

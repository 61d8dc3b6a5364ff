/* colour.h - colour conversion of whole planes. */
#ifndef ZMXJ_COLOUR_H
#define ZMXJ_COLOUR_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_COLOUR_H */

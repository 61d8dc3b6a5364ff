/* component.h - JPEG2000 component transforms. */
#ifndef ZMXJ_COMPONENT_H
#define ZMXJ_COMPONENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_COMPONENT_H */

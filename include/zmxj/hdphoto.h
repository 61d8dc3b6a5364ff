/* hdphoto.h - the HD Photo core transform. */
#ifndef ZMXJ_HDPHOTO_H
#define ZMXJ_HDPHOTO_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_HDPHOTO_H */

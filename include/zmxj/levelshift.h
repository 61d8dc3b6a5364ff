/* levelshift.h - the level shift ahead of the forward and behind the inverse DCT. */
#ifndef ZMXJ_LEVELSHIFT_H
#define ZMXJ_LEVELSHIFT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_LEVELSHIFT_H */

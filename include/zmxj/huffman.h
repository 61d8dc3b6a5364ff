/* huffman.h - JPEG Huffman tables, bit states and sequential block coding. */
#ifndef ZMXJ_HUFFMAN_H
#define ZMXJ_HUFFMAN_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_HUFFMAN_H */

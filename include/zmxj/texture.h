/** \file
 *  texture.h - DXT and BC7 texture blocks.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_TEXTURE_H
#define ZMXJ_TEXTURE_H

#include "types.h"

/** \defgroup texture Texture blocks
 *  A surface is a dense array of blocks in raster order, ceil(width/4) to a block row and ceil(height/4) block rows, with
 *  no row step. A block covers 4 by 4 texels: 8 bytes in DXT1 (BC1), 16 bytes in DXT3 (BC2), DXT5 (BC3) and BC7. Whole
 *  blocks are always read and written; of a block that reaches beyond the region only the pixels inside it are written by
 *  a decoder, and an encoder fills it by repeating the region's last column, then its last row.
 *
 *  The step of the pixels is unsigned here, and is tested for nothing but being exactly 0. Everything runs on the calling
 *  thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Decodes a surface of DXT1 blocks into RGBA pixels.
 *
 *  A 5:6:5 colour is widened by plain shifts, without repeating its top bits: a field of 31 gives 248, one of 63
 *  gives 252. Interpolated colours are truncated. The four-colour palette stands where colour 0 is above colour 1 as
 *  a 16-bit number; otherwise index 2 is the mean of the two and index 3 is opaque white, (255, 255, 255, 255), not
 *  transparent black. All other texels have alpha 255.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first block, 8 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \param pDst     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param dstStep  bytes between the starts of two rows of pDst; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep,
                                                              ZmxiSize roiSize);
/** Decodes a surface of DXT3 blocks into RGBA pixels.
 *
 *  Colours are those of zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(), always with the four-colour palette; alpha is
 *  its 4 bits shifted left 4, so that 15 gives 240.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first block, 16 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \param pDst     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param dstStep  bytes between the starts of two rows of pDst; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep,
                                                              ZmxiSize roiSize);
/** Decodes a surface of DXT5 blocks into RGBA pixels.
 *
 *  Colours are those of zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(), always with the four-colour palette; alpha has
 *  eight rounded values where alpha 0 is above alpha 1, and else six with 0 and 255.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first block, 16 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \param pDst     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param dstStep  bytes between the starts of two rows of pDst; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep,
                                                              ZmxiSize roiSize);

/** Decodes a surface of BC7 (BPTC) blocks, all eight modes, into RGBA pixels, as the format defines them.
 *
 *  A block whose first byte is 0 has no mode. It is no error: its pixels become (0, 0, 0, 0).
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first block, 16 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \param pDst     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param dstStep  bytes between the starts of two rows of pDst; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R(const Zmx8u* pSrc, Zmx8u* pDst, Zmx32u dstStep,
                                                             ZmxiSize roiSize);

/** Encodes RGBA pixels as DXT1 blocks at real-time speed, without a search.
 *
 *  The end-points of a block are the bounding box of its colours, drawn in by a sixteenth of its size on each side
 *  and truncated to 5:6:5. A texel takes the palette entry at the least distance |dR| + |dG| + |dB|, the palette
 *  being widened with its top bits repeated, unlike the decoder's. Colour 0 is never below colour 1. Alpha has no
 *  influence on a DXT1 block.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param srcStep  bytes between the starts of two rows of pSrc; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \param pDst     the first block, 8 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                                Zmx8u* pDst);
/** Encodes RGBA pixels as DXT3 blocks.
 *
 *  Colours as in zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(); alpha keeps its top 4 bits.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param srcStep  bytes between the starts of two rows of pSrc; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \param pDst     the first block, 16 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                                Zmx8u* pDst);
/** Encodes RGBA pixels as DXT5 blocks.
 *
 *  Colours as in zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(); alpha has end-points drawn in like those of the
 *  colours, and the eight-value mode wherever they differ.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first pixel: four bytes R, G, B, A, each 0 to 255
 *  \param srcStep  bytes between the starts of two rows of pSrc; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \param pDst     the first block, 16 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                                Zmx8u* pDst);

/** Encodes YCoCg pixels as DXT5 blocks from which a shader recovers the colour.
 *
 *  Y goes to the alpha block with its exact bounds as end-points, Co to the red field, Cg to the green field, and
 *  the scale of the block's chroma less 1 (0, 1 or 3) to the blue field. Chroma is multiplied by the scale about its
 *  zero, 128, before it is encoded. Colour index 1 does not occur.
 *
 *  The function takes YCoCg as it is given. From RGB bytes, each result limited to 0..255:
 *
 *      Y  = (R + 2 G + B + 2) >> 2
 *      Co = ((R - B + 1) >> 1) + 128
 *      Cg = ((2 G - R - B + 2) >> 2) + 128
 *
 *  Back, in a shader that samples the texture as DXT5, with r, g, b, a in 0..1:
 *
 *      scale = b * (255.0 / 8.0) + 1.0
 *      Co = (r - 128.0 / 255.0) / scale
 *      Cg = (g - 128.0 / 255.0) / scale
 *      rgb = (a + Co - Cg, a + Cg, a - Co - Cg)
 *
 *  A decoder that widens fields by plain shifts, as zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R() does, gives r and g
 *  up to 248 and 252: multiply them by 255/248 and 255/252 first.
 *
 *  \par Buffers
 *  Any address and any step will do. Source and destination do not overlap.
 *
 *  \param pSrc     the first pixel: three bytes Y, Co, Cg, each 0 to 255, chroma with 128 as its zero
 *  \param srcStep  bytes between the starts of two rows of pSrc; any value but 0; unsigned, so never backward
 *  \param roiSize  width and height in pixels, each at least 1; no multiples of 4 are needed
 *  \param pDst     the first block, 16 bytes each; ceil(width / 4) x ceil(height / 4) of them, without a row step
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep is exactly 0; zmxStsSizeErr when
 *           the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R(const Zmx8u* pSrc, Zmx32u srcStep, ZmxiSize roiSize,
                                                                 Zmx8u* pDst);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_TEXTURE_H */

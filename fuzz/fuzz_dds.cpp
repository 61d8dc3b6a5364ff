// fuzz_dds.cpp - the DDS reader, and the texture functions on surfaces of any size.
//
// An input that begins like a DDS file goes to the reader; a file that it takes is decoded level by level, and coded
// anew. Any other input is the arguments of one call, with buffers of exactly the size that the call may touch.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/texture.h"
#include "zmxj.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

namespace texture = codecs::texture;
using Bytes = std::vector<Zmx8u>;

void require(bool holds) {
    if (!holds) std::abort();
}

void readFile(codecs::ByteView data) {
    codecs::MemorySource file(data);
    texture::Texture t;
    try {
        t = texture::readHeader(file);
    } catch (const codecs::Error& e) {
        require(std::strchr(e.what(), '\n') == nullptr);
        return;
    }
    require(t.headerBytes + t.layerBytes() * unsigned(t.layers) <= data.size());
    for (int layer = 0; layer < std::min(t.layers, 8); ++layer)
        for (int i = 0; i < t.levels; ++i) {
            const texture::Level place = t.level(layer, i);
            codecs::PictureSink picture;
            texture::decode(file, t, picture, {layer, i});
            require(picture.picture.shape().width == place.width && picture.picture.shape().height == place.height);
            if (i > 0 || layer > 0 || t.format == texture::Format::bc7) continue;
            codecs::PictureSource rows(picture.picture);
            codecs::MemorySink again;
            texture::encode(rows, again, {t.format, t.levels > 1});
            codecs::MemorySource written(again.bytes);
            require(texture::readHeader(written).format == t.format);
        }
}

// What a call reads, zeros where the input is too short.
Bytes take(const Zmx8u* data, std::size_t size, std::size_t wanted) {
    Bytes out(data, data + std::min(size, wanted));
    out.resize(wanted);
    out.shrink_to_fit();
    return out;
}

void callFunction(const Zmx8u* data, std::size_t size) {
    static constexpr decltype(&zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R) decoders[] = {
        zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R,
        zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R};
    static constexpr decltype(&zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R) encoders[] = {
        zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R,
        zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R};
    if (size < 4) return;
    const int which = data[0] % 4;
    const bool encode = data[0] & 4;
    const ZmxiSize roi{data[1] % 40, data[2] % 40}; // 0 too: refused, and nothing touched
    const std::size_t pixel = encode && which == 3 ? 3 : 4;
    const std::size_t step = pixel * std::size_t(roi.width) + data[3] % 8;
    const std::size_t rows = roi.height ? step * std::size_t(roi.height - 1) + pixel * std::size_t(roi.width) : 0;
    const std::size_t blocks = std::size_t((roi.width + 3) / 4) * std::size_t((roi.height + 3) / 4) * (which ? 16 : 8);
    const ZmxStatus expected = !step ? zmxStsStepErr : roi.width < 1 || roi.height < 1 ? zmxStsSizeErr : zmxStsNoErr;

    const Bytes in = take(data + 4, size - 4, encode ? rows : blocks);
    Bytes out(encode ? blocks : rows);
    Zmx8u none = 0;
    const Zmx8u* src = in.empty() ? &none : in.data();
    Zmx8u* dst = out.empty() ? &none : out.data();
    const ZmxStatus status =
        encode ? encoders[which](src, Zmx32u(step), roi, dst) : decoders[which](src, dst, Zmx32u(step), roi);
    require(status == expected && none == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const Zmx8u* data, std::size_t size) {
    if (size >= 4 && std::memcmp(data, "DDS ", 4) == 0) {
        readFile({data, size});
        return 0;
    }
    callFunction(data, size);
    return 0;
}

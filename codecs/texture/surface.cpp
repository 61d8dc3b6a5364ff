// surface.cpp - pictures to texture blocks and back, through the library.
#include "codecs/texture/surface.h"

#include "codecs/texture/ycocg.h"
#include "zmxj.h"

namespace dds {

namespace {

// Four bytes a pixel, R, G, B, A.
struct Pixels {
    int width, height;
    std::vector<Zmx8u> bytes;

    Pixels(int w, int h) : width(w), height(h), bytes(std::size_t(w) * std::size_t(h) * 4) {}
    Zmx8u* at(int x, int y) { return bytes.data() + 4 * (std::size_t(y) * std::size_t(width) + std::size_t(x)); }
    const Zmx8u* at(int x, int y) const { return const_cast<Pixels*>(this)->at(x, y); }
    std::size_t count() const { return bytes.size() / 4; }
};

// Grey becomes three equal colours, and no alpha becomes 255.
Pixels pixelsOf(const Image& picture) {
    const std::vector<Zmx8u> samples = to8bit(picture);
    Pixels out(picture.width, picture.height);
    const bool colour = picture.channels >= 3, alpha = picture.channels % 2 == 0;
    const Zmx8u* s = samples.data();
    for (std::size_t i = 0; i < out.count(); ++i, s += picture.channels) {
        Zmx8u* d = &out.bytes[4 * i];
        for (int c = 0; c < 3; ++c) d[c] = s[colour ? c : 0];
        d[3] = alpha ? s[picture.channels - 1] : 255;
    }
    return out;
}

// Half as wide and high, each pixel the mean of those that it stands for; an odd side leaves three to the last.
Pixels halved(const Pixels& in) {
    Pixels out(std::max(1, in.width / 2), std::max(1, in.height / 2));
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) {
            const int x0 = 2 * x, x1 = x + 1 == out.width ? in.width : x0 + 2;
            const int y0 = 2 * y, y1 = y + 1 == out.height ? in.height : y0 + 2;
            const int n = (x1 - x0) * (y1 - y0);
            for (int c = 0; c < 4; ++c) {
                int sum = n / 2;
                for (int v = y0; v < y1; ++v)
                    for (int u = x0; u < x1; ++u) sum += in.at(u, v)[c];
                out.at(x, y)[c] = Zmx8u(sum / n);
            }
        }
    return out;
}

std::vector<Zmx8u> ycocgOf(const Pixels& in) {
    std::vector<Zmx8u> out;
    out.reserve(3 * in.count());
    for (std::size_t i = 0; i < in.count(); ++i) {
        const Zmx8u* p = &in.bytes[4 * i];
        const Triple t = toYCoCg(p[0], p[1], p[2]);
        out.insert(out.end(), {t.a, t.b, t.c});
    }
    return out;
}

// The library refuses nothing that these arguments can be.
void check(ZmxStatus status) {
    if (status != zmxStsNoErr) throw Error("the texture library returned " + std::to_string(status));
}

void encodeBlocks(const Pixels& in, Format format, Zmx8u* blocks) {
    const ZmxiSize size{in.width, in.height};
    const Zmx8u* src = in.bytes.data();
    const Zmx32u step = Zmx32u(4 * in.width);
    switch (format) {
    case Format::dxt1:
        return check(zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(src, step, size, blocks));
    case Format::dxt3:
        return check(zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(src, step, size, blocks));
    case Format::dxt5:
        return check(zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(src, step, size, blocks));
    case Format::ycocgDxt5:
        return check(
            zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R(ycocgOf(in).data(), Zmx32u(3 * in.width), size, blocks));
    case Format::bc7:
        break;
    }
    throw Error("BC7 textures can be read, not written");
}

void decodeBlocks(const Zmx8u* blocks, Format format, Pixels& out) {
    const ZmxiSize size{out.width, out.height};
    Zmx8u* dst = out.bytes.data();
    const Zmx32u step = Zmx32u(4 * out.width);
    switch (format) {
    case Format::dxt1:
        return check(zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(blocks, dst, step, size));
    case Format::dxt3:
        return check(zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(blocks, dst, step, size));
    case Format::dxt5:
    case Format::ycocgDxt5:
        return check(zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(blocks, dst, step, size));
    case Format::bc7:
        return check(zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R(blocks, dst, step, size));
    }
}

} // namespace

Texture encode(const Image& picture, Format format, bool chain) {
    Texture t;
    t.format = format;
    t.width = picture.width;
    t.height = picture.height;
    t.levels = chain ? fullChain(t.width, t.height) : 1;
    t.blocks.resize(t.layerBytes());
    Pixels pixels = pixelsOf(picture);
    for (int i = 0; i < t.levels; ++i) {
        if (i > 0) pixels = halved(pixels);
        encodeBlocks(pixels, format, t.blocks.data() + t.level(0, i).offset);
    }
    return t;
}

Image decode(const Texture& texture, int layer, int level) {
    const Level place = texture.level(layer, level);
    Pixels pixels(place.width, place.height);
    decodeBlocks(texture.blocks.data() + place.offset, texture.format, pixels);
    if (texture.format == Format::ycocgDxt5)
        for (std::size_t i = 0; i < pixels.count(); ++i) {
            Zmx8u* p = &pixels.bytes[4 * i];
            const Triple rgb = toRgb(p[0], p[1], p[2], p[3]);
            p[0] = rgb.a;
            p[1] = rgb.b;
            p[2] = rgb.c;
        }
    const Image picture = from8bit(pixels.bytes.data(), place.width, place.height, 4);
    const bool opaque = texture.format == Format::dxt1 || texture.format == Format::ycocgDxt5;
    return opaque ? withoutAlpha(picture) : picture;
}

} // namespace dds

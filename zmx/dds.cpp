// commands.cpp - zmx dds encode, decode and info.
#include "zmx/commands.h"

#include "codecs/texture/surface.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Options {
    std::string in, out, format;
    bool mips = false;
    int layer = 0;
};

// "out.png" for the first level, "out.mip2.png" for the third.
std::string levelPath(const std::string& path, int level) {
    if (level == 0) return path;
    const auto slash = path.find_last_of('/'), dot = path.rfind('.');
    const bool ending = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const auto at = ending ? dot : path.size();
    return path.substr(0, at) + ".mip" + std::to_string(level) + path.substr(at);
}

void encode(const Options& o) {
    const Image picture = readImage(o.in);
    if (std::max(picture.width, picture.height) > dds::kMaxSide)
        throw dds::Error(o.in + ": a side of more than " + std::to_string(dds::kMaxSide) + " pixels");
    dds::write(o.out, dds::encode(picture, dds::formatNamed(o.format), o.mips));
}

void decode(const Options& o) {
    const dds::Texture texture = dds::read(o.in);
    if (o.layer >= texture.layers)
        throw dds::Error(o.in + ": layer " + std::to_string(o.layer) + " is not among its " +
                         std::to_string(texture.layers));
    const int levels = o.mips ? texture.levels : 1;
    for (int i = 0; i < levels; ++i) writeImage(levelPath(o.out, i), dds::decode(texture, o.layer, i));
}

void info(const Options& o) {
    const dds::Texture t = dds::read(o.in);
    std::printf("%s: %s, %d x %d, %s header\n", o.in.c_str(), dds::nameOf(t.format), t.width, t.height,
                t.headerBytes > 128 ? "DX10" : "FourCC");
    std::printf("%d layer%s%s, %d level%s\n", t.layers, t.layers > 1 ? "s" : "", t.cube ? " of a cube map" : "",
                t.levels, t.levels > 1 ? "s" : "");
    for (int layer = 0; layer < t.layers; ++layer)
        for (int i = 0; i < t.levels; ++i) {
            const dds::Level l = t.level(layer, i);
            const std::string name = t.layerName(layer);
            std::printf("  layer %d%s level %d: %d x %d, %zu bytes at %zu\n", layer,
                        name.empty() ? "" : (" (" + name + ")").c_str(), i, l.width, l.height, l.size,
                        t.headerBytes + l.offset);
        }
}

} // namespace

void addDdsCommands(CLI::App& app) {
    CLI::App* group = app.add_subcommand("dds", "DDS texture files: DXT1, DXT3, DXT5, BC7 and YCoCg DXT5");
    group->require_subcommand(1);
    const auto o = std::make_shared<Options>();

    CLI::App* enc = group->add_subcommand("encode", "Compress a PNG or PNM picture into a DDS file");
    enc->add_option("in", o->in, "the picture")->required();
    enc->add_option("out", o->out, "the DDS file")->required();
    std::vector<std::string> formats;
    for (dds::Format f : {dds::Format::dxt1, dds::Format::dxt3, dds::Format::dxt5, dds::Format::ycocgDxt5})
        formats.push_back(dds::nameOf(f));
    enc->add_option("--format", o->format, "the block format")->required()->check(CLI::IsMember(formats));
    enc->add_flag("--mips", o->mips, "with a chain of levels down to 1 by 1");
    enc->callback([o] { encode(*o); });

    CLI::App* dec = group->add_subcommand("decode", "Expand a DDS file into a picture");
    dec->add_option("in", o->in, "the DDS file")->required();
    dec->add_option("out", o->out, "the picture, a PNG or PNM file by its name")->required();
    dec->add_flag("--mips", o->mips, "every level: out.png, out.mip1.png, out.mip2.png and so on");
    dec->add_option("--layer", o->layer, "which face of a cube map or element of an array, from 0")
        ->check(CLI::NonNegativeNumber);
    dec->callback([o] { decode(*o); });

    CLI::App* inf = group->add_subcommand("info", "List the pictures in a DDS file");
    inf->add_option("in", o->in, "the DDS file")->required();
    inf->callback([o] { info(*o); });
}

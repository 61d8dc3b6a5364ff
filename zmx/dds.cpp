// dds.cpp - zmx dds: encode, decode and info.
//
// A DDS file may hold a chain of levels, each half the size of the one before, and layers: the faces of a cube map or the
// elements of an array. One picture goes in; one level comes out, or a chain of them.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "codecs/texture/texture.h"
#include "zmx/commands.h"
#include "zmx/files.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace texture = codecs::texture;
using command::Run;

// encode IN OUT: what the command line says, as the codec wants it.
struct EncodeArguments {
    command::Files files;
    command::PictureOptions picture;
    std::string format;
    bool chain = false;
};
// decode IN OUT; the levels of a chain go to files beside OUT
struct DecodeArguments {
    command::Files files;
    command::PictureOptions picture;
    bool chain = false;
    int layer = 0, level = 0;
};

// "out.png" for the first level, "out.mip2.png" for the third.
std::string levelPath(const std::string& path, int level) {
    if (level == 0) return path;
    const auto slash = path.find_last_of('/'), dot = path.rfind('.');
    const bool ending = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const auto at = ending ? dot : path.size();
    return path.substr(0, at) + ".mip" + std::to_string(level) + path.substr(at);
}

// What is lost is known at the end, and said before the file takes its place.
void encode(Run& run, const EncodeArguments& args) {
    // The source is opened ahead of the sink: a picture that is not there makes no file.
    codecs::RowSource& rows = run.pictureIn(args.picture);
    run.warn(codecs::named(run.inName(), [&] {
        return texture::encode(rows, run.bytesOut(), {texture::formatNamed(args.format), args.chain});
    }));
}

// The levels of a chain are files of their own, which are there one after the other.
void decode(Run& run, const DecodeArguments& args) {
    if (args.chain && run.outName() == codecs::nameForMessages("-", false))
        throw command::UsageError("--mips writes several files, not standard output");
    codecs::named(run.inName(), [&] {
        const texture::Texture t = texture::readHeader(run.bytesIn());
        // The header is believed only up to the limit, before anything of its size is allocated.
        codecs::checkSize(unsigned(t.width), unsigned(t.height), args.picture.maxPixels);
        texture::decode(run.bytesIn(), t, run.pictureOut(args.picture), {args.layer, args.level});
        // The first level waits for keep(), with which the others are there already.
        for (int i = 1; i < t.levels && args.chain; ++i) {
            const auto out = codecs::createPicture(levelPath(run.outName(), i));
            texture::decode(run.bytesIn(), t, *out, {args.layer, i});
        }
    });
}

// A line for the file, one for what it holds, and one for each picture.
void info(const std::string& in) {
    // Only the header is read, whatever the size of the file.
    const texture::Texture t = codecs::named(in, [&] { return texture::readHeader(*codecs::openBytes(in)); });
    std::printf("%s: %s", in.c_str(), texture::describe(t).c_str());
}

void addEncode(CLI::App& app) {
    CLI::App* c = app.add_subcommand("encode", "Compress a picture into a DDS file");
    const auto args = std::make_shared<EncodeArguments>();
    args->files.addTo(*c, codecs::kPictureFile, "the DDS file", ".dds");
    // BC7 is read, not written: the library has no encoder for it.
    std::vector<std::string> formats;
    for (texture::Format f :
         {texture::Format::dxt1, texture::Format::dxt3, texture::Format::dxt5, texture::Format::ycocgDxt5})
        formats.emplace_back(texture::nameOf(f));
    c->add_option("-F,--format", args->format, "the block format")->required()->check(CLI::IsMember(formats));
    c->add_flag("-m,--mips", args->chain, "with a chain of levels down to 1 by 1");
    args->picture.addInputTo(*c);
    c->footer("Examples:\n"
              "  zmx dds encode brick.png brick.dds --format dxt1 --mips\n"
              "  zmx dds encode *.png -o textures/ --format dxt5");
    command::workOnEach(*c, args, encode);
}

void addDecode(CLI::App& app) {
    CLI::App* c = app.add_subcommand("decode", "Expand a DDS file into a picture");
    const auto args = std::make_shared<DecodeArguments>();
    args->files.addTo(*c, "a DDS file", "a " + codecs::kPictureEndings + " file", args->picture);
    auto* mips = c->add_flag("-m,--mips", args->chain, "every level: out.png, out.mip1.png, out.mip2.png and so on");
    c->add_option("-l,--level", args->level, "which level of the chain, from 0: the largest")
        ->check(CLI::Range(0, 15))
        ->excludes(mips);
    // How many there are is known when the file is read; the codec says so then.
    c->add_option("--layer", args->layer, "which face of a cube map or element of an array, from 0")
        ->check(CLI::NonNegativeNumber);
    args->picture.addOutputTo(*c);
    c->footer("Examples:\n"
              "  zmx dds decode brick.dds brick.png\n"
              "  zmx dds decode sky.dds front.png --layer 4");
    command::workOnEach(*c, args, decode);
}

} // namespace

void command::addDds(CLI::App& app) {
    CLI::App* group = app.add_subcommand("dds", "DDS texture files: DXT1, DXT3, DXT5, BC7 and YCoCg DXT5");
    group->require_subcommand(1);
    addEncode(*group);
    addDecode(*group);
    CLI::App* c = group->add_subcommand("info", "List the pictures in a DDS file");
    const auto in = std::make_shared<std::string>();
    c->add_option("IN", *in, "a DDS file; - is a pipe")->required();
    c->footer("Example:\n  zmx dds info sky.dds");
    c->callback([in] { info(*in); });
}

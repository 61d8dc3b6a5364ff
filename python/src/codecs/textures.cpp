// textures.cpp - DDS texture files for Python.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/texture.h"
#include "python/src/codecs/arrays.h"

namespace binding {
namespace {

namespace texture = codecs::texture;
using namespace py::literals;

py::tuple encode(const py::array& image, const std::string& format, bool chain) {
    const texture::EncodeOptions options{texture::formatNamed(format), chain};
    ArraySource rows(image, 8, "");
    codecs::MemorySink file;
    const std::vector<std::string> lost = unlocked([&] { return texture::encode(rows, file, options); });
    return py::make_tuple(toBytes(file.bytes), lost);
}

py::array decode(const py::buffer& data, int layer, int level, std::uint64_t maxPixels,
                 const std::optional<py::array>& out) {
    const FileView view(data);
    codecs::MemorySource file(view.bytes());
    ArraySink picture(out);
    unlocked([&] {
        const texture::Texture t = texture::readHeader(file);
        codecs::checkSize(std::uint64_t(t.width), std::uint64_t(t.height), maxPixels);
        texture::decode(file, t, picture, {layer, level});
    });
    return picture.array();
}

py::dict info(const py::buffer& data) {
    const FileView view(data);
    codecs::MemorySource file(view.bytes());
    const texture::Texture t = texture::readHeader(file);
    return py::dict("format"_a = "dds", "width"_a = t.width, "height"_a = t.height, "channels"_a = 4, "bits"_a = 8,
                    "texture"_a = texture::nameOf(t.format), "levels"_a = t.levels, "layers"_a = t.layers,
                    "cube"_a = t.cube, "trouble"_a = py::list());
}

} // namespace

void addTextures(py::module_& module) {
    module.def("encode_dds", encode);
    module.def("decode_dds", decode);
    module.def("info_dds", info);
}

} // namespace binding

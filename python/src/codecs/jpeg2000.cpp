// jpeg2000.cpp - JPEG2000 files (ISO/IEC 15444-1) for Python.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/codestream.h"
#include "python/src/codecs/arrays.h"

#include <array>

namespace binding {
namespace {

namespace jpeg2000 = codecs::jpeg2000;
using namespace py::literals;

constexpr const char* kOrders[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"}; // Table A.16

jpeg2000::Progression orderNamed(const std::string& name) {
    for (int i = 0; i < 5; ++i)
        if (name == kOrders[i]) return jpeg2000::Progression(i);
    refuse("no such progression: " + name);
}

py::bytes encode(const py::array& image, int bits, const std::string& colour, const py::dict& o) {
    jpeg2000::EncodeOptions options;
    options.reversible = o["reversible"].cast<bool>();
    options.levels = o["levels"].cast<int>();
    std::tie(options.blockWidth, options.blockHeight) = o["block"].cast<std::pair<int, int>>();
    std::tie(options.tileWidth, options.tileHeight) = o["tile"].cast<std::pair<std::uint32_t, std::uint32_t>>();
    options.progression = orderNamed(o["progression"].cast<std::string>());
    options.colourTransform = o["colour_transform"].cast<bool>();
    options.rates = o["rates"].cast<std::vector<double>>();
    options.psnrs = o["psnrs"].cast<std::vector<double>>();
    options.ratios = o["ratios"].cast<std::vector<double>>();
    options.jp2 = o["jp2"].cast<bool>();
    options.threads = o["threads"].cast<int>();
    ArraySource rows(image, bits, colour);
    codecs::MemorySink file;
    unlocked([&] {
        rows.checkSamples();
        jpeg2000::encode(rows, file, options);
    });
    return toBytes(file.bytes);
}

py::tuple decode(const py::buffer& data, const std::optional<std::array<std::int64_t, 4>>& window, int reduce,
                 int layers, int component, std::uint64_t maxPixels, int threads, const std::optional<py::array>& out) {
    const FileView view(data);
    jpeg2000::DecodeOptions options;
    options.reduce = reduce;
    options.layers = layers;
    options.component = component;
    options.maxPixels = maxPixels;
    options.threads = threads;
    if (window) options.window = jpeg2000::Window{(*window)[0], (*window)[1], (*window)[2], (*window)[3]};
    ArraySink picture(out);
    const std::vector<std::string> warnings = unlocked([&] {
        codecs::MemorySource file(view.bytes());
        return jpeg2000::decode(file, picture, options);
    });
    return py::make_tuple(picture.array(), warnings);
}

py::dict info(const py::buffer& data) {
    const FileView view(data);
    const jpeg2000::Boxes boxes = jpeg2000::readBoxes(view.bytes());
    const jpeg2000::Codestream stream = jpeg2000::readMainHeader(boxes.codestream);
    const jpeg2000::ImageSize& size = stream.size;
    py::list components;
    for (const jpeg2000::SizComponent& c : size.components)
        components.append(py::dict("bits"_a = c.depth, "signed"_a = c.isSigned, "dx"_a = c.dx, "dy"_a = c.dy));
    const jpeg2000::CodingStyle& coding = stream.main.coding.at(0);
    return py::dict("format"_a = boxes.jp2 ? "jp2" : "j2k", "width"_a = size.x1 - size.x0,
                    "height"_a = size.y1 - size.y0, "channels"_a = size.components.size(),
                    "bits"_a = size.components.at(0).depth, "components"_a = components,
                    "tile"_a = std::pair(size.tileWidth, size.tileHeight), "tiles"_a = size.tiles(),
                    "levels"_a = coding.levels, "reversible"_a = coding.reversible,
                    "layers"_a = stream.main.tile.layers, "progression"_a = kOrders[int(stream.main.tile.progression)],
                    "trouble"_a = boxes.warnings, "text"_a = jpeg2000::describe(view.bytes()));
}

} // namespace

void addJpeg2000(py::module_& module) {
    module.def("encode_jpeg2000", encode);
    module.def("decode_jpeg2000", decode);
    module.def("info_jpeg2000", info);
}

} // namespace binding

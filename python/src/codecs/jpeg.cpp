// jpeg.cpp - JPEG files (ITU-T T.81) for Python.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/interpret.h"
#include "python/src/codecs/arrays.h"

#include <array>

namespace binding {
namespace {

namespace jpeg = codecs::jpeg;
using namespace py::literals;

py::bytes encode(const py::array& image, int bits, const std::string& colour, const py::dict& o) {
    jpeg::EncodeOptions options;
    options.quality = o["quality"].cast<int>();
    const auto sampling = o["sampling"].cast<std::string>();
    options.sampling = sampling == "444"   ? jpeg::Sampling::s444
                       : sampling == "422" ? jpeg::Sampling::s422
                                           : jpeg::Sampling::s420;
    options.optimize = o["optimize"].cast<bool>();
    options.progressive = o["progressive"].cast<bool>();
    options.fast = o["fast"].cast<bool>();
    options.restart = o["restart"].cast<int>();
    options.lossless = o["lossless"].cast<int>();
    options.pointTransform = o["point_transform"].cast<int>();
    // What the files of this colour hold when they are not to be subsampled by eye.
    options.rgb = o["rgb"].cast<bool>();
    options.ycck = o["ycck"].cast<bool>();
    ArraySource rows(image, bits, colour);
    codecs::MemorySink file;
    unlocked([&] {
        rows.checkSamples();
        jpeg::encode(rows, file, options);
    });
    return toBytes(file.bytes);
}

py::tuple decode(const py::buffer& data, int scale, bool smooth, bool fast, std::uint64_t maxPixels,
                 const std::optional<py::array>& out) {
    const FileView view(data);
    jpeg::DecodeOptions options;
    options.scale = scale;
    options.upsampling = smooth ? jpeg::Upsampling::smooth : jpeg::Upsampling::plain;
    options.fast = fast;
    options.maxPixels = maxPixels;
    ArraySink picture(out);
    const jpeg::Warnings warnings = unlocked([&] {
        codecs::MemorySource file(view.bytes());
        return jpeg::decode(file, picture, options);
    });
    return py::make_tuple(picture.array(), warnings);
}

// A turn to the right by so many degrees, and a mirror behind it.
codecs::Turn turnOf(int degrees, const std::string& flip) {
    using codecs::Turn;
    static constexpr Turn turns[3][4] = {{Turn::none, Turn::quarter, Turn::half, Turn::threeQuarters},
                                         {Turn::mirror, Turn::transpose, Turn::flip, Turn::transverse},
                                         {Turn::flip, Turn::transverse, Turn::mirror, Turn::transpose}};
    return turns[flip.empty() ? 0 : flip == "horizontal" ? 1 : 2][degrees / 90 % 4];
}

py::tuple transcode(const py::buffer& data, const py::dict& o) {
    const FileView view(data);
    jpeg::TranscodeOptions options;
    options.progressive = o["progressive"].cast<bool>();
    options.restart = o["restart"].cast<int>();
    options.turn = turnOf(o["rotate"].cast<int>(), o["flip"].cast<std::string>());
    options.upright = o["orient"].cast<bool>();
    options.trim = o["trim"].cast<bool>();
    options.grey = o["grey"].cast<bool>();
    options.strip = o["strip"].cast<bool>();
    options.maxPixels = o["max_pixels"].cast<std::uint64_t>();
    if (const auto part = o["crop"].cast<std::optional<std::array<int, 4>>>())
        options.part = jpeg::Part{(*part)[0], (*part)[1], (*part)[2], (*part)[3]};
    const jpeg::Transcoded result = unlocked([&] { return jpeg::transcode(view.bytes(), options); });
    if (result.before != result.after) throw codecs::Error("the coefficients have changed");
    return py::make_tuple(toBytes(result.file), result.warnings);
}

// By the frame header (ITU-T T.81, Table B.1).
const char* modeOf(const jpeg::Frame& frame) {
    if (frame.lossless()) return "lossless";
    if (frame.progressive()) return "progressive";
    return frame.sof == jpeg::SOF0 ? "baseline" : "extended";
}

py::dict info(const py::buffer& data) {
    const FileView view(data);
    codecs::MemorySource file(view.bytes());
    jpeg::SegmentReader reader(file);
    jpeg::toFirstScan(reader, UINT64_MAX);
    const jpeg::Header& header = reader.header();
    static constexpr const char* models[] = {"grey", "ycbcr", "rgb", "ycck", "cmyk"};
    std::vector<std::pair<int, int>> sampling;
    for (const jpeg::Component& c : header.frame.components) sampling.emplace_back(c.h, c.v);
    jpeg::Warnings trouble;
    const std::string text = jpeg::describe(view.bytes(), &trouble);
    return py::dict("format"_a = "jpeg", "width"_a = header.frame.width, "height"_a = header.frame.height,
                    "channels"_a = header.frame.components.size(), "bits"_a = header.frame.precision,
                    "mode"_a = modeOf(header.frame), "colour"_a = models[int(jpeg::modelOf(header))],
                    "sampling"_a = sampling, "restart"_a = header.restart, "trouble"_a = trouble, "text"_a = text);
}

} // namespace

void addJpeg(py::module_& module) {
    module.def("encode_jpeg", encode);
    module.def("decode_jpeg", decode);
    module.def("transcode_jpeg", transcode);
    module.def("info_jpeg", info);
}

} // namespace binding

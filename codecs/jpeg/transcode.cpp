// transcode.cpp - a file's coefficients in other scans.
#include "codecs/jpeg/collect.h"
#include "codecs/jpeg/scanwriter.h"

namespace jpeg {

namespace {

CoefficientFile read(const std::uint8_t* data, std::size_t size, std::size_t maxPixels, Warnings& warnings) {
    Reader reader(data, size);
    firstScan(reader);
    const Frame& frame = reader.header().frame;
    checkFrame(frame, maxPixels);
    if (frame.lossless()) throw Error("a lossless file has no coefficients to transcode");
    return collect(reader, data, size, warnings);
}

} // namespace

Transcoded transcode(const std::uint8_t* data, std::size_t size, const TranscodeOptions& options) {
    if (options.restart < -1 || options.restart > 65535) throw Error("a restart interval is 0 to 65535 MCUs");
    Transcoded out;
    CoefficientFile file = read(data, size, options.maxPixels, out.warnings);
    out.before = file.blocks.digest();
    file.blocks.fillPadding();
    if (options.restart >= 0) file.restart = options.restart;
    out.file = writeFile(file, scriptFor(file, options.scans, options.progressive));
    Warnings none;
    out.after = read(out.file.data(), out.file.size(), options.maxPixels, none).blocks.digest();
    return out;
}

} // namespace jpeg

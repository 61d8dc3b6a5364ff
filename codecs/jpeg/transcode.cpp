// transcode.cpp - a file's coefficients in other scans.
#include "codecs/jpeg/collect.h"
#include "codecs/jpeg/interpret.h"
#include "codecs/jpeg/scanwriter.h"

namespace codecs::jpeg {

namespace {

CoefficientFile read(ByteSource& source, std::uint64_t maxPixels, Warnings& warnings) {
    SegmentReader reader(source);
    toFirstScan(reader, maxPixels);
    if (reader.header().frame.lossless()) throw Error("a lossless file has no coefficients to transcode");
    return collect(reader, warnings);
}

} // namespace

Transcoded transcode(ByteSource& source, const TranscodeOptions& options) {
    if (options.restart < -1 || options.restart > 65535) throw Error("a restart interval is 0 to 65535 MCUs");
    Transcoded out;
    {
        CoefficientFile file = read(source, options.maxPixels, out.warnings);
        out.before = file.blocks.digest();
        file.blocks.fillPadding();
        if (options.restart >= 0) file.restart = options.restart;
        MemorySink sink;
        writeFile(file, scriptFor(file, options.scans, options.progressive), sink);
        out.file = std::move(sink.bytes);
    }
    MemorySource again(out.file);
    Warnings none;
    out.after = read(again, options.maxPixels, none).blocks.digest();
    return out;
}

Transcoded transcode(ByteView file, const TranscodeOptions& options) {
    MemorySource source(file);
    return transcode(source, options);
}

} // namespace codecs::jpeg

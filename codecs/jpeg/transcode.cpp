// transcode.cpp - a file's coefficients in other scans, and in other places.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/collect.h"
#include "codecs/jpeg/interpret.h"
#include "codecs/jpeg/metadata.h"
#include "codecs/jpeg/scanwriter.h"
#include "codecs/jpeg/turn.h"

namespace codecs::jpeg {

namespace {

// All coefficients of a file.
CoefficientFile read(ByteSource& source, std::uint64_t maxPixels, Warnings& warnings) {
    SegmentReader reader(source);
    toFirstScan(reader, maxPixels);
    if (reader.header().frame.lossless()) throw Error("a lossless file has no coefficients to transcode");
    return collect(reader, warnings);
}

// The file as the options want it, scans apart. Luma alone comes first: its units are smaller than those of colours.
CoefficientFile changed(CoefficientFile file, const TranscodeOptions& options, Warnings& warnings) {
    // A turn of the user's own leaves the orientation alone: who gives one knows how the picture is shown. Segments that
    // cannot be understood stay as they are, so that nobody need hear of them.
    Warnings none;
    const int orientation = orientationOf(metadataOf(file.application, none));
    const Turn turn = options.upright ? turnOf(orientation) : options.turn;
    if (options.grey) file = withoutChroma(std::move(file));
    file = turned(std::move(file), turn, options.trim);
    if (options.part) file = cropped(std::move(file), *options.part, warnings);
    if (options.strip)
        file.application = strippedApplication(file.application);
    else if (turn != Turn::none || options.part)
        file.application = turnedApplication(
            file.application,
            {options.upright ? 1 : orientation, stepsOf(turn).exchanged, file.frame.width, file.frame.height},
            warnings);
    if (options.restart >= 0) file.restart = options.restart;
    file.blocks.fillPadding();
    return file;
}

} // namespace

// The coefficients that were written are gone when the file is read again, so that the two are not held at once.
Transcoded transcode(ByteSource& source, const TranscodeOptions& options) {
    if (options.restart < -1 || options.restart > 65535) throw Error("a restart interval is 0 to 65535 MCUs");
    Transcoded out;
    {
        const CoefficientFile file = changed(read(source, options.maxPixels, out.warnings), options, out.warnings);
        out.before = file.blocks.digest();
        MemorySink sink;
        writeFile(file, scriptFor(file, options.scans, options.progressive), sink);
        out.file = std::move(sink.bytes);
    }
    // Read by the decoder that any file goes through, so that nothing rests on what the writer believed.
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

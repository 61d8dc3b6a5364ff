// decode.cpp - a file to a picture: boxes, codestream, then its tiles from the top down.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/jpeg2000/planar.h"
#include "codecs/jpeg2000/rowoutput.h"
#include "codecs/jpeg2000/tiles.h"

namespace codecs::jpeg2000 {

namespace {

// Most pictures have up to four components.
void checkSamples(std::uint64_t samples, std::uint64_t maxPixels) {
    need(samples / 4 <= maxPixels, "more samples than four to each pixel allowed");
}

// The wanted part of the reference grid.
Rect windowOf(const ImageSize& s, const DecodeOptions& options) {
    const Rect r = options.window ? windowOn(s, *options.window) : Rect{s.x0, s.y0, s.x1, s.y1};
    // The limit is about what is decoded: a small window of a huge picture passes.
    checkSize(std::uint64_t(r.width()), std::uint64_t(r.height()), options.maxPixels);
    std::uint64_t samples = 0;
    for (const SizComponent& c : s.components) samples += componentRect(r, c).area();
    if (options.component < 0) checkSamples(samples, options.maxPixels);
    return r;
}

void append(std::vector<std::string>& to, const std::vector<std::string>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

// A file, and what of it is wanted.
// The samples go into rows where all components are in step, and else by way of planes.
class Decoding {
    const int threads;
    const std::uint64_t maxPixels;
    Boxes boxes;
    Codestream stream;
    Scope scope;
    ChannelMap map;

    // The components of the first channels are wanted.
    void want(std::size_t channels) {
        // What no channel shows need not be decoded.
        scope.wanted.assign(stream.size.components.size(), false);
        for (std::size_t k = 0; k < channels; ++k) scope.wanted[map.channels[k].component] = true;
        scope.lead = map.channels[0].component;
    }
    std::vector<Rect> areas() const {
        std::vector<Rect> r;
        for (std::size_t c = 0; c < stream.size.components.size(); ++c)
            r.push_back(scope.wants(c) ? scope.samples(c, scope.window) : Rect{});
        return r;
    }
    std::vector<std::string> run(SampleSink& sink) {
        std::vector<std::string> warnings = stream.warnings;
        const std::vector<std::string> tiles = decodeTiles(scope, sink, threads);
        append(warnings, tiles);
        append(warnings, map.warnings);
        return warnings;
    }

public:
    Decoding(ByteView file, const DecodeOptions& options)
        : threads(threadCount(options.threads)), maxPixels(options.maxPixels), boxes(readBoxes(file)),
          stream(readMainHeader(boxes.codestream)),
          scope{stream, windowOf(stream.size, options), options.reduce, options.layers, {}, 0},
          map(channelsOf(boxes, stream.size, options.component)) {
        need(options.reduce >= 0 && options.reduce <= kMaxLevels && options.layers >= 0, "no such resolution or layer");
        // Tile-parts of other tiles are not looked at.
        findTileParts(stream, scope.window);
    }
    DecodedPlanes planes() {
        want(map.channels.size());
        // A palette makes up to 255 channels of one component.
        std::uint64_t samples = 0;
        for (const Channel& c : map.channels)
            samples += componentRect(scope.window, stream.size.components[c.component]).area();
        checkSamples(samples, maxPixels);
        PlanarSink sink(scope.window, areas());
        DecodedPlanes out;
        out.warnings = run(sink);
        out.picture = sink.picture(stream.size, map);
        return out;
    }
    std::vector<std::string> rows(RowSink& to) {
        std::vector<std::string> warnings;
        want(channelsShown(map));
        if (channelsShown(map) < map.channels.size())
            warnings.push_back(std::to_string(map.channels.size()) +
                               " channels, of which a picture has the first four; --separate writes all of them");
        // In step: a band of samples at a time. Otherwise rows of different components are due at different times.
        if (inStep(map, stream.size)) {
            RowOutput sink(to, map, stream.size, scope.samples(scope.lead, scope.window));
            append(warnings, run(sink));
        } else {
            PlanarSink sink(scope.window, areas());
            append(warnings, run(sink));
            repeatRows(sink, map, stream.size, scope.reduce, to);
        }
        to.finish();
        return warnings;
    }
};

} // namespace

DecodedPlanes decodePlanes(ByteView file, const DecodeOptions& options) { return Decoding(file, options).planes(); }

std::vector<std::string> decode(ByteSource& file, RowSink& to, const DecodeOptions& options) {
    return Decoding(file.whole(), options).rows(to);
}

DecodedPicture decode(ByteView file, const DecodeOptions& options) {
    PictureSink sink;
    MemorySource source(file);
    DecodedPicture out;
    out.warnings = decode(source, sink, options);
    out.picture = std::move(sink.picture);
    return out;
}

} // namespace codecs::jpeg2000

// decode.cpp - a file to a picture: boxes, codestream, then its tiles from the top down.
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/jpeg2000/planar.h"
#include "codecs/jpeg2000/rowoutput.h"
#include "codecs/jpeg2000/tiles.h"

namespace codecs::jpeg2000 {

namespace {

// A file, and what of it is wanted.
class Decoding {
    const DecodeOptions& options;
    const int threads;
    Boxes boxes;
    Codestream stream;
    Scope scope;
    ChannelMap map;

    // The components of the first channels are wanted.
    void want(std::size_t channels) {
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
        warnings.insert(warnings.end(), tiles.begin(), tiles.end());
        warnings.insert(warnings.end(), map.warnings.begin(), map.warnings.end());
        return warnings;
    }

public:
    Decoding(ByteView file, const DecodeOptions& o)
        : options(o), threads(threadCount(o.threads)), boxes(readBoxes(file)),
          stream(readCodestream(boxes.codestream, o.maxPixels)),
          scope{stream, {stream.size.x0, stream.size.y0, stream.size.x1, stream.size.y1}, o.reduce, o.layers, {}, 0},
          map(channelsOf(boxes, stream.size, -1)) {
        need(options.reduce >= 0 && options.reduce <= kMaxLevels && options.layers >= 0, "no such resolution or layer");
    }
    DecodedPlanes planes() {
        want(map.channels.size());
        PlanarSink sink(scope.window, areas());
        DecodedPlanes out;
        out.warnings = run(sink);
        out.picture = sink.picture(stream.size, map);
        return out;
    }
    std::vector<std::string> rows(RowSink& to) {
        std::vector<std::string> warnings;
        want(channelsShown(map));
        if (inStep(map, stream.size)) {
            RowOutput sink(to, map, stream.size, scope.samples(scope.lead, scope.window), {});
            warnings = run(sink);
        } else {
            PlanarSink sink(scope.window, areas());
            warnings = run(sink);
            repeatRows(sink, map, stream.size, scope.reduce, to, {});
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

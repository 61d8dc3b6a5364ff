// rowoutput.h - the samples of a decoder as interleaved rows for a sink of rows.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/channels.h"
#include "codecs/jpeg2000/planar.h"
#include "codecs/picture/rows.h"

namespace codecs::jpeg2000 {

// Channels side by side: moved up where they are signed, scaled up to the deepest. More than four channels do not fit
// a picture: the first ones do. Their components agree in size and place.
class RowOutput final : public SampleSink {
    RowSink& sink;
    const ChannelMap& map;
    const Rect area; // of the samples
    Shape shape;
    std::vector<std::vector<Sample>> tables; // by channel: what becomes of a sample; empty where it stays
    Samples band;
    std::int64_t top = 0, bottom = 0;

    void fromYcc();

public:
    RowOutput(RowSink& to, const ChannelMap& channels, const ImageSize& size, const Rect& where);
    void open(std::int64_t y0, std::int64_t y1) override;
    void close() override;
    void put(std::size_t component, std::int64_t x, std::int64_t y, std::span<const Sample> samples) override;
};

// How many channels go into a picture of rows.
inline std::size_t channelsShown(const ChannelMap& map) { return map.channels.size() < 4 ? map.channels.size() : 4; }

// Whether the channels that go into a picture agree in size and place.
bool inStep(const ChannelMap& map, const ImageSize& size);

// Components of different sizes in a row: samples are repeated where they are few.
void repeatRows(const PlanarSink& planes, const ChannelMap& map, const ImageSize& size, int reduce, RowSink& sink);

} // namespace codecs::jpeg2000

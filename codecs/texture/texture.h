// texture.h - pictures to DDS files and back, in bands of blocks.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"
#include "codecs/texture/dds.h"

namespace codecs::texture {

struct EncodeOptions {
    Format format = Format::dxt1; // BC7 can be read, not written
    bool chain = false;           // with all levels down to 1 by 1
};
// A file of one layer. Grey becomes three equal colours; CMYK is refused. Returns what was lost, a line each.
std::vector<std::string> encode(RowSource& rows, ByteSink& file, const EncodeOptions& options);

struct DecodeOptions {
    int layer = 0, level = 0;
};
// One picture of a file, with alpha where the format has any: of DXT1 where a texel is transparent. A YCoCg picture is
// turned back into RGB. `texture` is what readHeader() said.
void decode(ByteSource& file, const Texture& texture, RowSink& rows, const DecodeOptions& options = {});

} // namespace codecs::texture

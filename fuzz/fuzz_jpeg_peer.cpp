// JPEG files, ours against libjpeg-turbo: where both decode a file and neither has anything to say against it, the
// coefficients are the same, and the pixels within the bounds of docs/jpeg-upsampling.md, 1 in grey and 3 in colour.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/collect.h"
#include "fuzz/support/input.h"
#include "fuzz/support/mutator.h"

#include <cstdio> // ahead of jpeglib.h, which needs it
#include <jpeglib.h>

#include <algorithm>
#include <optional>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg(data, size, most, seed);
}

namespace {

namespace jpeg = codecs::jpeg;
using fuzz::require;

struct Refused {};

// A decoder of the peer's. Its errors are thrown, its warnings counted.
class Peer {
    jpeg_error_mgr errors{};

public:
    jpeg_decompress_struct info{};

    explicit Peer(codecs::ByteView file) {
        info.err = jpeg_std_error(&errors);
        errors.error_exit = [](j_common_ptr) { throw Refused(); };
        errors.output_message = [](j_common_ptr) {};
        jpeg_create_decompress(&info);
        jpeg_mem_src(&info, file.data(), file.size());
    }
    // Apart, so that what a refused file has taken is given back.
    void readHeader() { jpeg_read_header(&info, TRUE); }
    ~Peer() { jpeg_destroy_decompress(&info); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    bool sound() const { return errors.num_warnings == 0; }
};

// The coefficients of a sound file that is not too large; none of another.
std::optional<jpeg::CoefficientFile> ours(codecs::ByteView file) {
    codecs::MemorySource source(file);
    jpeg::SegmentReader reader(source);
    if (!reader.nextScan()) return {};
    const jpeg::Frame& f = reader.header().frame;
    if (f.sof > jpeg::SOF0 + 2 || f.precision != 8 || f.width > 256 || f.height > 256) return {};
    jpeg::Warnings warnings;
    jpeg::CoefficientFile found = jpeg::collect(reader, warnings);
    if (!warnings.empty()) return {};
    return found;
}

// Whether all blocks are such as a transform of samples can give, about: beyond that decoders clamp or wrap as they like.
bool isModest(const jpeg::CoefficientFile& file) {
    bool modest = true;
    file.blocks.eachVisible([&](int component, const Zmx16s* block) {
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < 64; ++i)
            sum += std::abs(block[i]) * std::int64_t(*std::ranges::max_element(file.quant[std::size_t(component)]));
        modest = modest && sum < 2000;
    });
    return modest;
}

void compareCoefficients(const jpeg::CoefficientFile& file, codecs::ByteView bytes) {
    Peer peer(bytes);
    peer.readHeader();
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&peer.info);
    if (!peer.sound()) return;
    for (int i = 0; i < peer.info.num_components; ++i) {
        const jpeg::Component& c = file.frame.components[std::size_t(i)];
        for (int y = 0; y < file.frame.blockRows(c); ++y) {
            JBLOCKARRAY row = peer.info.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&peer.info), arrays[i],
                                                                JDIMENSION(y), 1, FALSE);
            for (int x = 0; x < file.frame.blockColumns(c); ++x)
                require(std::equal(row[0][x], row[0][x] + 64, file.blocks.block(i, x, y)));
        }
    }
}

void comparePixels(codecs::ByteView bytes) {
    const jpeg::Decoded here = jpeg::decode(bytes);
    if (!here.warnings.empty()) return;
    const codecs::Shape& shape = here.picture.shape();
    Peer peer(bytes);
    peer.readHeader();
    peer.info.dct_method = JDCT_ISLOW;
    peer.info.do_block_smoothing = FALSE;
    jpeg_start_decompress(&peer.info);
    require(int(peer.info.output_width) == shape.width && int(peer.info.output_height) == shape.height);
    if (peer.info.output_components != shape.channels) return;
    const int within = shape.channels == 1 ? 1 : 3;
    codecs::Bytes row(shape.rowBytes());
    // Inks of files with an Adobe marker stand there the other way round; the peer leaves that to its caller.
    const bool inverted = shape.channels == 4 && peer.info.saw_Adobe_marker;
    for (int y = 0; y < shape.height; ++y) {
        JSAMPROW to = row.data();
        jpeg_read_scanlines(&peer.info, &to, 1);
        if (!peer.sound()) return;
        for (std::size_t x = 0; x < row.size(); ++x) {
            const int sample = inverted ? 255 - row[x] : row[x];
            require(std::abs(sample - here.picture.bytes(y)[x]) <= within);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const codecs::ByteView bytes(data, size);
    try {
        const auto file = ours(bytes);
        if (!file) return 0;
        compareCoefficients(*file, bytes);
        if (isModest(*file)) comparePixels(bytes);
    } catch (const codecs::Error&) {
    } catch (const Refused&) {
    }
    return 0;
}

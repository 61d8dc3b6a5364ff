// JPEG2000 files of ours, decoded by OpenJPEG: pictures and options out of the input. It refuses few of them. Of a file
// without loss both find every sample; of a file with loss it finds what we find, within a bound.
// SPDX-License-Identifier: BSD-2-Clause
#include "fuzz/support/jpeg2000input.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <openjpeg.h>

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using fuzz::require;

// A file in memory, as OpenJPEG wants to read it.
struct Reading {
    codecs::ByteView file;
    std::size_t at = 0;

    static OPJ_SIZE_T read(void* to, OPJ_SIZE_T n, void* self) {
        auto& r = *static_cast<Reading*>(self);
        if (r.at >= r.file.size()) return OPJ_SIZE_T(-1);
        n = std::min(n, r.file.size() - r.at);
        std::memcpy(to, r.file.data() + r.at, n);
        r.at += n;
        return n;
    }
    static OPJ_OFF_T skip(OPJ_OFF_T n, void* self) {
        auto& r = *static_cast<Reading*>(self);
        r.at = std::min(r.at + std::size_t(n), r.file.size());
        return n;
    }
    static OPJ_BOOL seek(OPJ_OFF_T to, void* self) {
        static_cast<Reading*>(self)->at = std::size_t(to);
        return OPJ_TRUE;
    }
};

struct FreeStream {
    void operator()(opj_stream_t* p) const { opj_stream_destroy(p); }
};
struct FreeCodec {
    void operator()(opj_codec_t* p) const { opj_destroy_codec(p); }
};
struct FreeImage {
    void operator()(opj_image_t* p) const { opj_image_destroy(p); }
};
using Image = std::unique_ptr<opj_image_t, FreeImage>;

Image decodeThere(codecs::ByteView file, bool jp2) {
    Reading reading{file};
    const std::unique_ptr<opj_stream_t, FreeStream> stream(opj_stream_create(1 << 12, OPJ_TRUE));
    opj_stream_set_user_data(stream.get(), &reading, nullptr);
    opj_stream_set_user_data_length(stream.get(), file.size());
    opj_stream_set_read_function(stream.get(), Reading::read);
    opj_stream_set_skip_function(stream.get(), Reading::skip);
    opj_stream_set_seek_function(stream.get(), Reading::seek);
    const std::unique_ptr<opj_codec_t, FreeCodec> codec(opj_create_decompress(jp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    require(opj_setup_decoder(codec.get(), &parameters));
    opj_image_t* image = nullptr;
    const bool header = opj_read_header(stream.get(), codec.get(), &image);
    Image owned(image);
    if (!header || !opj_decode(codec.get(), stream.get(), image)) return nullptr;
    return owned;
}

// How far two decoders may be apart in a sample. Without loss not at all (ISO/IEC 15444-1 leaves nothing open there).
// With loss each rounds once, and once more ahead of the colour transform, which sums up to three such halves; and the peer
// scales the high bands of the 9/7 filter by 1.625732 where 2 / K is 1.625786 (table F.4), 3.3e-5 of what they hold.
int boundOf(const jpeg2000::EncodeOptions& o, const jpeg2000::Component& c) {
    if (o.reversible) return 0;
    return (o.colourTransform ? 2 : 1) + (1 << c.depth) / 4096;
}

// How far a sample may be from the original when nothing was cut: with loss a few of the quantiser's steps, of which one is a
// level of 8 bits.
int lossOf(const jpeg2000::EncodeOptions& o, const jpeg2000::Component& c) {
    return o.reversible ? 0 : 16 << std::max(c.depth - 8, 0);
}

int apart(const jpeg2000::Component& a, const jpeg2000::Component& b) {
    require(a.samples.size() == b.samples.size());
    int most = 0;
    for (std::size_t i = 0; i < a.samples.size(); ++i) most = std::max(most, std::abs(a.samples[i] - b.samples[i]));
    return most;
}

void compare(const jpeg2000::Component& ours, const opj_image_comp_t& theirs, int within) {
    require(int(theirs.w) == ours.width && int(theirs.h) == ours.height);
    require(int(theirs.prec) == ours.depth && bool(theirs.sgnd) == ours.isSigned);
    for (std::size_t i = 0; i < ours.samples.size(); ++i) require(std::abs(ours.samples[i] - theirs.data[i]) <= within);
}

// Leaves out what the two need not agree on; tests/ has other judges of it.
void narrow(jpeg2000::EncodeOptions& o) {
    // A tile-part of nothing but packet headers that are kept elsewhere is allowed (A.7.4, A.7.5); the peer refuses it, or
    // leaves out the tile.
    o.packedHeaders = jpeg2000::PackedHeaders::none;
    // The standard leaves open where within its last step a number is brought back that was cut short (E.1.2.1, the r of
    // equation E-8): of numbers without fractions we take the lower end, the peer the middle.
    if (o.reversible) {
        o.rates.clear();
        o.ratios.clear();
        o.psnrs.clear();
    }
    // The bypass begins with the fifth coded plane of a block (D.6). With a region of interest the peer begins with another.
    if (o.region) o.style &= ~unsigned(jpeg2000::kStyleBypass);
    // Thousands of tiles take all the time; the encoder's own target has them.
    if (o.tileWidth) o.tileWidth = std::max(o.tileWidth, 5u), o.tileHeight = std::max(o.tileHeight, 5u);
}

// Whether a component has no sample in some tile (B.3 allows it, and it has no packet there then). The peer refuses such
// files, when it has decoded all of them.
bool hasEmptyTile(const jpeg2000::PlanarPicture& p, const jpeg2000::EncodeOptions& o) {
    const unsigned width = o.tileWidth ? o.tileWidth : p.x1, height = o.tileHeight ? o.tileHeight : p.y1;
    // Whether there is a multiple of a component's step from one place up to another.
    const auto meets = [](unsigned from, unsigned to, int step) {
        const unsigned d = unsigned(step);
        return (from + d - 1) / d < (to + d - 1) / d;
    };
    for (unsigned y = p.y0 / height * height; y < p.y1; y += height)
        for (unsigned x = p.x0 / width * width; x < p.x1; x += width)
            for (const jpeg2000::Component& c : p.components)
                if (!meets(std::max(x, p.x0), std::min(x + width, p.x1), c.dx) ||
                    !meets(std::max(y, p.y0), std::min(y + height, p.y1), c.dy))
                    return true;
    return false;
}

// Whether precincts of some component begin where the peer does not look: in the progressions by position (B.12.1.3 to
// B.12.1.5) it goes on by the least distance of all, which has to divide the others. Distances are powers of two, times three
// where a component has a sample in three.
bool hasMissedPlaces(const jpeg2000::PlanarPicture& p, const jpeg2000::EncodeOptions& o) {
    if (o.progression == jpeg2000::Progression::LRCP || o.progression == jpeg2000::Progression::RLCP) return false;
    const auto mixed = [&](int jpeg2000::Component::*step) {
        const auto inThree = std::ranges::count_if(p.components, [&](const auto& c) { return c.*step == 3; });
        return inThree > 0 && std::size_t(inThree) < p.components.size();
    };
    return mixed(&jpeg2000::Component::dx) || mixed(&jpeg2000::Component::dy);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto made = fuzz::jpeg2000Input(data, size, narrow);
    if (!made) return 0;
    const auto& [options, picture, file] = *made;
    jpeg2000::DecodeOptions how;
    how.threads = 1;
    const jpeg2000::PlanarPicture here = jpeg2000::decodePlanes(file, how).picture;
    if (options.rates.empty() && options.ratios.empty() && options.psnrs.empty())
        for (std::size_t i = 0; i < here.components.size(); ++i)
            require(apart(here.components[i], picture.components[i]) <= lossOf(options, picture.components[i]));

    const Image there = decodeThere(file, options.jp2);
    if (there == nullptr) {
        require(hasEmptyTile(picture, options));
        return 0;
    }
    require(there->numcomps == picture.components.size());
    if (hasMissedPlaces(picture, options)) return 0;
    // In a region of interest with loss the two take different places within the last step (H.1, and E-8 again): the peer
    // counts the planes of the background, all zeros there, as a part of the number.
    if (options.region && !options.reversible) return 0;
    for (std::size_t i = 0; i < here.components.size(); ++i)
        compare(here.components[i], there->comps[i], boundOf(options, here.components[i]));
    return 0;
}

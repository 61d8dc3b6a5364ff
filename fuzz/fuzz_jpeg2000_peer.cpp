// JPEG2000 files of ours, decoded by OpenJPEG: pictures and options out of the input. Of a file without loss it finds every
// sample; of a file with loss it finds what we find, to within one level, but for few samples on the edge between two. It refuses
// nothing but packed headers.
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

void compare(const jpeg2000::Component& ours, const opj_image_comp_t& theirs, int within) {
    require(int(theirs.w) == ours.width && int(theirs.h) == ours.height);
    require(int(theirs.prec) == ours.depth && bool(theirs.sgnd) == ours.isSigned);
    std::size_t apart = 0;
    for (std::size_t i = 0; i < ours.samples.size(); ++i) apart += std::abs(ours.samples[i] - theirs.data[i]) > within;
    // Numbers that two ways of rounding bring to different levels, and the transform back of CMYK or RGB sums up.
    require(apart <= (within ? ours.samples.size() / 500 + 1 : 0));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto made = fuzz::jpeg2000Input(data, size);
    if (!made) return 0;
    const auto& [options, picture, file] = *made;
    const Image there = decodeThere(file, options.jp2);
    if (there == nullptr) {
        // The peer does not take a tile-part of nothing but packet headers, when those are kept elsewhere.
        require(options.packedHeaders != jpeg2000::PackedHeaders::none);
        return 0;
    }
    require(there->numcomps == picture.components.size());
    jpeg2000::DecodeOptions how;
    how.threads = 1;
    const jpeg2000::PlanarPicture here = jpeg2000::decodePlanes(file, how).picture;
    const bool cut = !options.rates.empty() || !options.ratios.empty() || !options.psnrs.empty();
    // A block that was cut short may be brought back anywhere within its last step. And with a region of interest the peer
    // lets the bypass begin at another plane than the fifth that is coded (T.800, D.6).
    if ((options.reversible && cut) || (options.region && options.style & jpeg2000::kStyleBypass)) return 0;
    for (std::size_t i = 0; i < here.components.size(); ++i)
        compare(here.components[i], there->comps[i], options.reversible ? 0 : 1);
    return 0;
}

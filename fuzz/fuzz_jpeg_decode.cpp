// The whole JPEG decoder on arbitrary bytes, to pixels of every kind that can be asked for. The number of bytes chooses
// the options.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"

#include <cstdlib>

namespace {

namespace jpeg = codecs::jpeg;

// Hands out a few bytes at a time, so that every border of a window is met.
class Trickle final : public codecs::ByteSource {
public:
    explicit Trickle(codecs::ByteView all) : bytes(all) {}
    codecs::ByteView view(std::size_t wanted) override { return bytes.whole().subspan(at()).first(few(wanted)); }
    void skip(std::uint64_t n) override { bytes.skip(n); }
    std::uint64_t position() const override { return bytes.position(); }
    bool isPipe() const override { return false; }
    std::uint64_t size() override { return bytes.size(); }
    std::size_t readAt(std::uint64_t from, std::span<std::uint8_t> to) override { return bytes.readAt(from, to); }
    codecs::ByteView whole() override { return bytes.whole(); }

private:
    std::size_t at() const { return std::size_t(bytes.position()); }
    std::size_t few(std::size_t wanted) {
        return std::min(std::max<std::size_t>(wanted, 1), bytes.whole().size() - at());
    }
    codecs::MemorySource bytes;
};

void toPixels(codecs::ByteView file, const jpeg::DecodeOptions& options) {
    try {
        Trickle source(file);
        codecs::PictureSink sink;
        jpeg::decode(source, sink, options);
        const codecs::Shape& s = sink.picture.shape();
        if (sink.picture.all().size() != s.rowBytes() * std::size_t(s.height)) std::abort();
    } catch (const codecs::Error&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const codecs::ByteView file(data, size);
    jpeg::DecodeOptions options;
    options.maxPixels = 1 << 16;
    options.scale = 1 << (size & 3);
    toPixels(file, options);
    options.scale = 1;
    options.upsampling = jpeg::Upsampling::smooth;
    toPixels(file, options);
    options.packing = jpeg::Packing(1 + size % 4);
    if (size & 4) options.upsampling = jpeg::Upsampling::plain;
    toPixels(file, options);
    try {
        jpeg::describe(file);
    } catch (const codecs::Error&) {
    }
    return 0;
}

// spooledsink.cpp - bytes that wait in a nameless file until all of them are there.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "codecs/picture/descriptor.h"

namespace codecs {

SpooledSink::SpooledSink(ByteSink& end) : target(end), spool(sinkOn(openNameless())) {}
SpooledSink::~SpooledSink() = default;
void SpooledSink::write(ByteView bytes) { spool->write(bytes); }
std::uint64_t SpooledSink::position() const { return spool->position(); }
void SpooledSink::patch(std::uint64_t at, ByteView bytes) { spool->patch(at, bytes); }
std::size_t SpooledSink::readBack(std::uint64_t at, std::span<std::uint8_t> to) { return spool->readBack(at, to); }

void SpooledSink::finish() {
    Bytes piece(1 << 16);
    for (std::uint64_t at = 0; at < spool->position();) {
        const std::size_t n = spool->readBack(at, piece);
        if (n == 0) throw Error("the temporary file has become shorter");
        target.write(ByteView(piece).first(n));
        at += n;
    }
    target.finish();
}

} // namespace codecs

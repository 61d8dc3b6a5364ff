// SPDX-License-Identifier: BSD-2-Clause
// PGX files: what is read of them is what is written again.
#include "codecs/jpeg2000/pgx.h"

#include <cstdlib>

using namespace codecs;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const jpeg2000::Component c = jpeg2000::readPgx({data, size});
        if (c.samples.size() != std::size_t(c.width) * std::size_t(c.height)) std::abort();
        for (const std::int32_t v : c.samples)
            if (v < c.smallest() || v > c.largest()) std::abort();
        const jpeg2000::Component again = jpeg2000::readPgx(jpeg2000::writePgx(c));
        if (again.samples != c.samples || again.depth != c.depth || again.isSigned != c.isSigned) std::abort();
    } catch (const Error&) {
    }
    return 0;
}

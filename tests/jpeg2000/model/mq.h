// mq.h - the MQ coder of ISO/IEC 15444-1 Annex C, written plainly.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstdint>
#include <vector>

namespace model {

// Table C.2: the probability estimate, the rows that follow an MPS and an LPS, and whether an LPS flips the
// MPS.
struct QeRow {
    unsigned qe, nmps, nlps;
    bool flips;
};
extern const QeRow kQe[47];

// The library's numbering of the contexts.
enum Context { Uniform = 0, RunLength = 1, ZeroCoding = 2, SignCoding = 11, Refinement = 16, kContexts = 19 };

struct MqContexts {
    int row[kContexts], mps[kContexts];
    MqContexts() { reset(); }
    void reset();
};

// Decodes one codeword segment. It reads 0xFF wherever the segment has no byte, and stops consuming at a
// marker.
class MqDecoder {
public:
    void start(const std::uint8_t* segment, int length);
    int decode(MqContexts& contexts, int context);
    // Whether the segment did not end as an error-free encoder with predictable termination would have ended
    // it. It consumes the decoder.
    bool endsWrongly();

    // The registers, in the software conventions of Annex J.1: c is the complement of the standard's
    // register.
    std::uint32_t a = 0, c = 0, ct = 0;
    int at = 0;
    bool marker = false;

private:
    std::uint32_t byteAt(int i) const { return i < length ? segment[i] : 0xFF; }
    void byteIn();
    void renormalise();

    const std::uint8_t* segment = nullptr;
    int length = 0;
};

enum Termination { FullFlush = 0, NearOptimal = 1, Easy = 2 };

// Encodes codeword segments. Bytes come out in `out`, without the one that only stands ahead of the first.
class MqEncoder {
public:
    MqEncoder() { restart(); }
    void restart();
    void encode(MqContexts& contexts, int context, int decision);
    void terminate(int method);

    std::vector<std::uint8_t> out;
    std::uint32_t a, c, b;
    int ct, bytesOut;
    bool pending; // decisions coded since the last termination
    bool ahead;   // the next byte pushed is the one ahead of the segment

private:
    void renormalise();
    void byteOut();
    void push();
    void flush();
    void easy();
    void nearOptimal();
};

} // namespace model

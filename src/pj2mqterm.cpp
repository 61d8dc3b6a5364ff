// pj2mqterm.cpp - the three ways to end an MQ codeword segment (ISO/IEC 15444-1 C.2.9, D.4.1).
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2mqenc.h"

#include <cassert>

namespace zmx::mq {
namespace {

void push(EncCoderState& s, Zmx32u byte) {
    assert(s.fifoCount < kFifoSize);
    s.byteFIFO[s.fifoCount++] = byte;
}

void byteOut(EncCoderState& s) {
    s.creg <<= s.ct;
    s.ct = mq::byteOut(s.creg, s.curByte, [&s](Zmx32u byte) { push(s, byte); });
    ++s.bytesOut;
}

// SETBITS: as many bits as the interval allows.
void setBits(EncCoderState& s) {
    const Zmx32u end = s.creg + s.areg;
    s.creg |= 0xFFFF;
    if (s.creg >= end) s.creg -= 0x8000;
}

// FLUSH (C.2.9), which sets the bits behind the first byte too.
void flush(EncCoderState& s) {
    setBits(s);
    byteOut(s);
    s.creg |= 0x7FFF;
    byteOut(s);
    s.creg |= 0x7FFF;
    if (s.curByte != 0xFF) byteOut(s);
}

// Predictable: puts out the code register as it stands.
void terminateEasily(EncCoderState& s) {
    for (int bits = 12 - s.ct; bits > 0; bits -= s.ct) byteOut(s);
    if (s.curByte != 0xFF) byteOut(s);
}

// The search for the shortest string of bytes in the interval from `low` to `high`, of which the decoder
// completes the rest with 0xFF. Both ends are followed byte by byte: lowByte and highByte are what the next
// byte may be at the least and at the most, with what highByte is ahead carried along, so that beyond the
// largest byte the next one is free.
class NearOptimal {
    EncCoderState& s;
    Zmx32u low, high; // the rest of the ends, 27 bits
    int lowByte, highByte;
    bool first = true; // nothing emitted yet: the byte under construction is replaced, not pushed

public:
    explicit NearOptimal(EncCoderState& state)
        : s(state), low(s.creg << s.ct), high((s.creg + s.areg) << s.ct), lowByte(int(s.curByte)), highByte(lowByte) {}

    void terminate() {
        search();
        // A final 0xFF is not pushed: the decoder supplies it.
        if (!first && s.curByte != 0xFF) {
            push(s, s.curByte);
            s.curByte = 0xFF;
        }
    }

private:
    void search() {
        if (carry(low) && s.curByte == 0xFF) {
            // No byte can take this carry: it is the eighth bit of the byte behind the 0xFF.
            lowByte = int(low >> 20);
            highByte = int(high >> 20);
            drop(low, 7);
            drop(high, 7);
        } else {
            settle(low, lowByte);
            settle(high, highByte);
            for (;;) {
                if (highByte > 255) return;
                if (lowByte == 255) break;
                emit(lowByte);
                advance(8);
            }
            advance(7);
            if (highByte > 127) return;
        }
        for (;;) {
            emit(0xFF);
            while (lowByte < 255) {
                emit(lowByte);
                advance(8);
                if (highByte > 255) return;
            }
            advance(7);
            if (highByte > 127) return;
        }
    }

    static bool carry(Zmx32u end) { return end >> 27 & 1; }
    static void drop(Zmx32u& end, int bits) { end = (end & ((1u << (27 - bits)) - 1)) << bits; }
    static void settle(Zmx32u& end, int& byte) {
        byte += carry(end);
        end &= ~(1u << 27);
    }

    // Goes on to the next byte, of so many bits.
    void advance(int bits) {
        highByte = ((highByte - lowByte) << bits) + int(high >> (27 - bits));
        lowByte = int(low >> (27 - bits));
        drop(low, bits);
        drop(high, bits);
    }

    void emit(int byte) {
        if (!first) push(s, s.curByte);
        first = false;
        s.curByte = Zmx32u(byte);
        ++s.bytesOut;
    }
};

} // namespace

void terminate(EncCoderState* state) {
    switch (state->mqTermType) {
    case ZMX_MQ_TERM_EASY:
        terminateEasily(*state);
        break;
    case ZMX_MQ_TERM_NEAR_OPTIMAL:
        NearOptimal(*state).terminate();
        break;
    default:
        flush(*state);
    }
    state->mqPending = 0;
}

} // namespace zmx::mq

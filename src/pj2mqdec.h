// pj2mqdec.h - the MQ decoder (ISO/IEC 15444-1 C.3, in the software conventions of Annex J.1): its state, its
// routines for one codeword segment, and the form in which the coding passes run it. The standard's names of the
// procedures stand in capitals.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2mqprobest.h"

namespace zmx {

struct MQDecoderState {
    const Zmx8u* pData;         // the codeword segment
    int dataLen;                // its length; zero or negative reads as empty
    int bytePos;                // index of the byte most recently taken into creg (B of the standard)
    Zmx32u areg;                // interval register, 16 bits, bit 15 set
    Zmx32u creg;                // code register, inverted; its upper 16 bits are compared with areg
    Zmx32u ct;                  // bits left in creg before the next byte-in
    Zmx32u ctxState[kContexts]; // per context, its row of owniEstimator_JPEG2K
    Zmx32u ctxMPS[kContexts];   // per context, its more probable symbol
    Zmx32u markerFound;         // a marker has been met in this segment
};

// INITDEC (C.3.5): starts a codeword segment; the contexts stay as they are.
void mqDecoderInit(MQDecoderState* state, const Zmx8u* pData, int dataLen);

// DECODE (C.3.2): one decision under a context, 0 to 18.
int mqDecoderDecode(MQDecoderState* state, int context);

// Whether the segment ended in another way than an error-free predictable termination would have ended it: 1
// if so. Uses up the state: it is the last thing done with a segment.
int mqDecoderCheckErrPredTerm(MQDecoderState* state);

// Returns all contexts to their initial states (Table D.7).
void mqDecoderResetCtx(MQDecoderState* state);

namespace mq {

// The bytes of an MQ segment. Behind its end there are 0xFF bytes, which look like a marker: nothing is read
// there.
class Bytes {
    const Zmx8u* data;
    int len, pos;
    Zmx32u marker;

public:
    explicit Bytes(const MQDecoderState& s) : data(s.pData), len(s.dataLen), pos(s.bytePos), marker(s.markerFound) {}
    void save(MQDecoderState& s) const {
        s.bytePos = pos;
        s.markerFound = marker;
    }

    bool markerFound() const { return marker; }
    Zmx32u current() const { return at(pos); }
    Zmx32u next() const { return at(pos + 1); }

    // BYTEIN (C.3.4): adds the next byte to the code register and returns the number of its bits. A byte of 0x80 to
    // 0x8F behind a 0xFF, which no encoder writes, carries into the bits above; the sums wrap.
    Zmx32u byteIn(Zmx32u& creg) {
        if (marker) return 8; // zero bits, which are ones to the inverted register, for ever
        const Zmx32u b1 = next();
        if (current() < 0xFF) {
            ++pos;
            creg += 0xFF00 - (b1 << 8);
            return 8;
        }
        if (b1 > 0x8F) {
            marker = 1;
            return 8;
        }
        ++pos;
        creg += 0xFE00 - (b1 << 9);
        return 7;
    }

private:
    Zmx32u at(int i) const { return i < len ? data[i] : 0xFFu; }
};

// The decoder at work: registers in locals for the length of a pass, put back at the end.
//
// The interval stands in the upper half of its word, as the comparable part of the code register does. A
// decision is the MPS and changes nothing but the interval exactly when areg - Qe is above creg and still
// normalised. `floor` is both bounds in one; it moves only on a renormalisation.
class Decoder {
    MQDecoderState& state;
    Bytes bytes;
    Zmx32u areg, creg, floor;
    int ct;

public:
    explicit Decoder(MQDecoderState& s) : state(s), bytes(s), areg(s.areg << 16), creg(s.creg), ct(int(s.ct)) {
        setFloor();
    }
    ~Decoder() {
        bytes.save(state);
        state.areg = areg >> 16;
        state.creg = creg;
        state.ct = Zmx32u(ct);
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    // DECODE (C.3.2).
    [[gnu::always_inline]] Zmx32u decode(Context& context) {
        const Context c = context;
        areg -= qeOf(c);
        return areg > floor ? mpsOf(c) : exchange(context, c);
    }

private:
    void setFloor() { floor = creg > 0x7FFFFFFF ? creg : 0x7FFFFFFF; }

    // MPS_EXCHANGE and LPS_EXCHANGE, each with its two outcomes; a renormalisation follows. Which of the four it is
    // cannot be foretold, so it is worked out without branches.
    [[gnu::always_inline]] Zmx32u exchange(Context& context, Context c) {
        const Zmx32u qe = qeOf(c);
        const Zmx32u upper = -Zmx32u(creg < areg); // a mask: the code is in the upper part of the interval
        const Zmx32u isLps = (upper + 1) ^ Zmx32u(areg < qe);
        context = nextOf(c, isLps);
        creg = creg - areg + (areg & upper);
        areg = qe ^ ((areg ^ qe) & upper);
        renormD();
        setFloor();
        return mpsOf(c) ^ isLps;
    }

    // RENORMD (C.3.3), as many shifts at a time as the bytes allow.
    [[gnu::always_inline]] void renormD() {
        int shifts = __builtin_clz(areg); // areg is never zero
        areg <<= shifts;
        while (shifts > ct) [[unlikely]] {
                creg <<= ct;
                shifts -= ct;
                ct = int(bytes.byteIn(creg));
            }
        creg <<= shifts;
        ct -= shifts;
    }
};

} // namespace mq
} // namespace zmx

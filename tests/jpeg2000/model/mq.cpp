// mq.cpp - the MQ coder, from the flow charts of ISO/IEC 15444-1 Annex C.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/mq.h"

namespace model {

const QeRow kQe[47] = {
    {0x5601, 1, 1, true},    {0x3401, 2, 6, false},   {0x1801, 3, 9, false},   {0x0AC1, 4, 12, false},
    {0x0521, 5, 29, false},  {0x0221, 38, 33, false}, {0x5601, 7, 6, true},    {0x5401, 8, 14, false},
    {0x4801, 9, 14, false},  {0x3801, 10, 14, false}, {0x3001, 11, 17, false}, {0x2401, 12, 18, false},
    {0x1C01, 13, 20, false}, {0x1601, 29, 21, false}, {0x5601, 15, 14, true},  {0x5401, 16, 14, false},
    {0x5101, 17, 15, false}, {0x4801, 18, 16, false}, {0x3801, 19, 17, false}, {0x3401, 20, 18, false},
    {0x3001, 21, 19, false}, {0x2801, 22, 19, false}, {0x2401, 23, 20, false}, {0x2201, 24, 21, false},
    {0x1C01, 25, 22, false}, {0x1801, 26, 23, false}, {0x1601, 27, 24, false}, {0x1401, 28, 25, false},
    {0x1201, 29, 26, false}, {0x1101, 30, 27, false}, {0x0AC1, 31, 28, false}, {0x09C1, 32, 29, false},
    {0x08A1, 33, 30, false}, {0x0521, 34, 31, false}, {0x0441, 35, 32, false}, {0x02A1, 36, 33, false},
    {0x0221, 37, 34, false}, {0x0141, 38, 35, false}, {0x0111, 39, 36, false}, {0x0085, 40, 37, false},
    {0x0049, 41, 38, false}, {0x0025, 42, 39, false}, {0x0015, 43, 40, false}, {0x0009, 44, 41, false},
    {0x0005, 45, 42, false}, {0x0001, 45, 43, false}, {0x5601, 46, 46, false},
};

// Table D.7.
void MqContexts::reset() {
    for (int i = 0; i < kContexts; ++i) row[i] = mps[i] = 0;
    row[Uniform] = 46;
    row[RunLength] = 3;
    row[ZeroCoding] = 4;
}

namespace {

// What a coded symbol does to its context; tells the symbol's value.
int mostProbable(MqContexts& x, int i) {
    x.row[i] = int(kQe[x.row[i]].nmps);
    return x.mps[i];
}
int lessProbable(MqContexts& x, int i) {
    const int symbol = 1 - x.mps[i];
    if (kQe[x.row[i]].flips) x.mps[i] = symbol;
    x.row[i] = int(kQe[x.row[i]].nlps);
    return symbol;
}

} // namespace

// ---- decoder

void MqDecoder::start(const std::uint8_t* segmentStart, int segmentLength) {
    segment = segmentStart;
    length = segmentLength;
    at = 0;
    marker = false;
    c = (byteAt(0) ^ 0xFF) << 16;
    byteIn();
    a = 0x8000;
    c <<= 7;
    ct -= 7;
}

void MqDecoder::byteIn() {
    ct = 8;
    if (marker) return;
    const std::uint32_t next = byteAt(at + 1);
    if (byteAt(at) != 0xFF) {
        c += 0xFF00 - (next << 8);
        ++at;
    } else if (next <= 0x8F) {
        c += 0xFE00 - (next << 9); // a large byte takes the register below zero, which wraps
        ++at;
        ct = 7;
    } else {
        marker = true;
    }
}

void MqDecoder::renormalise() {
    while (a < 0x8000) {
        if (ct == 0) byteIn();
        a <<= 1;
        c <<= 1;
        --ct;
    }
}

int MqDecoder::decode(MqContexts& x, int context) {
    const std::uint32_t qe = kQe[x.row[context]].qe;
    a -= qe;
    const bool lower = (c >> 16) >= a;
    if (!lower && a >= 0x8000) return x.mps[context];
    const bool exchanged = a < qe;
    if (lower) {
        c -= a << 16;
        a = qe;
    }
    const int symbol = lower == exchanged ? mostProbable(x, context) : lessProbable(x, context);
    renormalise();
    return symbol;
}

bool MqDecoder::endsWrongly() {
    if (!marker) {
        // Without a marker met, it must be the very next thing: a byte 0xFF just used up, and no data behind
        // it.
        if (byteAt(at) != 0xFF || ct != 0 || byteAt(at + 1) < 0x90) return true;
    }
    if (ct == 1) return false;
    if (ct == 0) ct = 8;
    // One more decision, of a probability set by the number of bits not used, must come out as the less
    // probable.
    const std::uint32_t spare = ct - 1, q = 0x8000u >> spare;
    a -= q;
    if (a > c >> 16) return true;
    c = (c - (a << 16)) << spare;
    a = 0x8000;
    ct = 1;
    return false;
}

// ---- encoder

void MqEncoder::restart() {
    a = 0x8000;
    c = b = 0;
    ct = 12;
    bytesOut = 0;
    pending = false;
    ahead = true;
}

void MqEncoder::push() {
    if (!ahead) out.push_back(std::uint8_t(b));
    ahead = false;
}

void MqEncoder::byteOut() {
    // A carry goes into the byte before, unless that is 0xFF, where a bit is kept free for it.
    bool carried = false;
    if (b != 0xFF && (c & 0x8000000)) {
        b = (b + 1) & 0xFF;
        carried = true;
    }
    const int kept = b == 0xFF ? 20 : 19;
    std::uint32_t next = c >> kept;
    if (carried) next &= b == 0xFF ? 0x7F : 0xFF;
    push();
    ++bytesOut;
    b = next & 0xFF;
    c &= (1u << kept) - 1;
    ct = kept == 20 ? 7 : 8;
}

void MqEncoder::renormalise() {
    do {
        a <<= 1;
        c <<= 1;
        if (--ct == 0) byteOut();
    } while (a < 0x8000);
}

void MqEncoder::encode(MqContexts& x, int context, int decision) {
    const std::uint32_t qe = kQe[x.row[context]].qe;
    pending = true;
    a -= qe;
    const bool likely = decision == x.mps[context];
    if (likely && a >= 0x8000) {
        c += qe;
        return;
    }
    // The larger part of the interval is the MPS's; the upper part is the one of size a.
    const bool upper = likely == (a >= qe);
    if (upper)
        c += qe;
    else
        a = qe;
    if (likely)
        mostProbable(x, context);
    else
        lessProbable(x, context);
    renormalise();
}

void MqEncoder::terminate(int method) {
    if (method == Easy)
        easy();
    else if (method == NearOptimal)
        nearOptimal();
    else
        flush();
    pending = false;
}

// Figures C.11 and C.12, and a last byte only where the one before is not 0xFF.
void MqEncoder::flush() {
    const std::uint32_t top = c + a;
    c |= 0xFFFF;
    if (c >= top) c -= 0x8000;
    c <<= ct;
    byteOut();
    c = (c | 0x7FFF) << ct;
    byteOut();
    c |= 0x7FFF;
    if (b == 0xFF) return;
    c <<= ct;
    byteOut();
}

// Annex D.4.2: the bits of the code register go out, as many bytes as they need.
void MqEncoder::easy() {
    for (int bits = 12 - ct; bits > 0; bits -= ct) {
        c <<= ct;
        byteOut();
    }
    if (b == 0xFF) return;
    c <<= ct;
    byteOut();
}

// The shortest string of bytes that, followed by bytes 0xFF for ever, stays inside the interval. low and high
// are the ends of the interval as whole bytes (of 7 bits behind a 0xFF), lowRest and highRest what is below
// them.
void MqEncoder::nearOptimal() {
    const std::uint32_t carry = 0x8000000;
    std::uint32_t lowRest = c << ct, highRest = (c + a) << ct, low = b, high = b;
    bool first = true;

    const auto emit = [&](std::uint32_t x) {
        if (!first) push();
        first = false;
        b = x;
        ++bytesOut;
    };
    // The next bits of the interval's ends, eight of them or seven.
    const auto next = [&](int bits) {
        const int kept = 27 - bits;
        high = (high - low) * (1u << bits) + (highRest >> kept & ((1u << bits) - 1));
        low = lowRest >> kept & ((1u << bits) - 1);
        lowRest = (lowRest & ((1u << kept) - 1)) << bits;
        highRest = (highRest & ((1u << kept) - 1)) << bits;
    };

    bool outside = false; // 0xFF for ever is below the high end: no further byte is needed
    if ((lowRest & carry) && b == 0xFF) {
        // The carry goes into the bit kept free behind the 0xFF.
        low = lowRest >> 20;
        high = highRest >> 20;
        lowRest = (lowRest & 0xFFFFF) << 7;
        highRest = (highRest & 0xFFFFF) << 7;
    } else {
        if (lowRest & carry) {
            ++low;
            lowRest -= carry;
        }
        if (highRest & carry) {
            ++high;
            highRest -= carry;
        }
        while (!(outside = high > 255) && low < 255) {
            emit(low);
            next(8);
        }
        if (!outside) {
            next(7);
            outside = high > 127;
        }
    }
    while (!outside) {
        emit(0xFF);
        while (!outside && low < 255) {
            emit(low);
            next(8);
            outside = high > 255;
        }
        if (outside) break;
        next(7);
        outside = high > 127;
    }
    if (!first && bytesOut > 0 && b != 0xFF) {
        push();
        b = 0xFF;
    }
}

} // namespace model

// jpegmutator.cpp - JPEG files by their segments (ITU-T T.81, Annex B).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/format.h"
#include "fuzz/support/mutator.h"

namespace fuzz {

namespace {

using namespace codecs::jpeg; // the names of markers

struct Piece {
    int marker;
    Bytes body; // behind the length
    Bytes data; // entropy-coded, behind a scan header
};
using Pieces = std::vector<Piece>;

bool standsAlone(int marker) { return marker == SOI || marker == EOI || marker == TEM || isRestart(marker); }

// Entropy-coded data end at a marker that is neither stuffing nor a restart.
std::size_t endOfData(ByteView file, std::size_t at) {
    while (at + 1 < file.size() &&
           (file[at] != 0xFF || file[at + 1] == 0 || file[at + 1] == 0xFF || isRestart(file[at + 1])))
        ++at;
    return at + 1 < file.size() ? at : file.size();
}

Pieces takeApart(ByteView file) {
    Pieces pieces;
    std::size_t at = 0;
    while (at + 1 < file.size() && file[at] == 0xFF) {
        Piece piece{file[at + 1], {}, {}};
        at += 2;
        if (!standsAlone(piece.marker)) {
            if (at + 2 > file.size()) break;
            const std::size_t length = std::size_t(file[at] << 8 | file[at + 1]);
            if (length < 2 || length > file.size() - at) break;
            piece.body.assign(file.begin() + std::ptrdiff_t(at + 2), file.begin() + std::ptrdiff_t(at + length));
            at += length;
        }
        if (piece.marker == SOS) {
            const std::size_t end = endOfData(file, at);
            piece.data.assign(file.begin() + std::ptrdiff_t(at), file.begin() + std::ptrdiff_t(end));
            at = end;
        }
        pieces.push_back(std::move(piece));
    }
    return pieces;
}

Bytes putTogether(const Pieces& pieces) {
    Bytes file;
    for (const Piece& p : pieces) {
        file.insert(file.end(), {0xFF, std::uint8_t(p.marker)});
        if (!standsAlone(p.marker)) {
            const std::size_t length = std::min<std::size_t>(p.body.size(), 65533) + 2;
            file.insert(file.end(), {std::uint8_t(length >> 8), std::uint8_t(length)});
            file.insert(file.end(), p.body.begin(), p.body.begin() + std::ptrdiff_t(length - 2));
        }
        file.insert(file.end(), p.data.begin(), p.data.end());
    }
    return file;
}

void set(Bytes& body, std::size_t at, unsigned value) {
    if (at < body.size()) body[at] = std::uint8_t(value);
}

// A frame header: another mode, precision or size, other sampling factors, another table.
void changeFrame(Piece& p, Dice& dice) {
    static constexpr std::uint8_t kPrecisions[] = {8, 12, 8, 16, 2, 10};
    static constexpr std::uint8_t kModes[] = {0xC0, 0xC1, 0xC2, 0xC3};
    const std::size_t components = p.body.size() > 6 ? (p.body.size() - 6) / 3 : 0;
    const std::size_t one = 6 + 3 * dice.below(components);
    switch (dice.below(6)) {
    case 0:
        p.marker = kModes[dice.below(4)];
        break;
    case 1:
        set(p.body, 0, kPrecisions[dice.below(6)]);
        break;
    case 2: { // the height or the width
        const std::size_t side = 1 + 2 * dice.below(2);
        set(p.body, side, 0);
        set(p.body, side + 1, 1 + unsigned(dice.below(80)));
        break;
    }
    case 3:
        set(p.body, one + 1, unsigned(1 + dice.below(4)) << 4 | unsigned(1 + dice.below(4)));
        break;
    case 4:
        set(p.body, one + 2, unsigned(dice.below(4)));
        break;
    default: // one component less, or the last of them again under another number
        if (components > 1 && dice.oneIn(2))
            p.body.resize(p.body.size() - 3);
        else if (components > 0 && components < 4) {
            const Bytes last(p.body.end() - 3, p.body.end());
            p.body.insert(p.body.end(), {std::uint8_t(last[0] + 1), last[1], last[2]});
        }
        set(p.body, 5, unsigned((p.body.size() - 6) / 3));
    }
}

// A Huffman table: codes move from one length to the next, values trade places. The counts stay those of the values.
void changeHuffman(Piece& p, Dice& dice) {
    if (p.body.size() < 18) return;
    const std::size_t values = p.body.size() - 17;
    switch (dice.below(4)) {
    case 0: { // a code becomes longer: what was free stays free
        const std::size_t from = 1 + dice.below(16), to = 1 + dice.below(16);
        if (from < to && p.body[from] > 0 && p.body[to] < 255) --p.body[from], ++p.body[to];
        break;
    }
    case 1:
        std::swap(p.body[17 + dice.below(values)], p.body[17 + dice.below(values)]);
        break;
    case 2:
        set(p.body, 17 + dice.below(values), dice.next());
        break;
    default:
        set(p.body, 0, unsigned(dice.below(2)) << 4 | unsigned(dice.below(4)));
    }
}

// A scan header: another part of the spectrum, other bits of it, other tables.
void changeScan(Piece& p, Dice& dice) {
    if (p.body.size() < 6) return;
    const std::size_t components = (p.body.size() - 4) / 2, tail = p.body.size() - 3;
    static constexpr std::uint8_t kBands[][2] = {{0, 0}, {0, 63}, {1, 63}, {1, 5}, {6, 63}, {63, 63}, {4, 0}, {7, 0}};
    switch (dice.below(5)) {
    case 0: {
        const auto& band = kBands[dice.below(8)];
        set(p.body, tail, band[0]);
        set(p.body, tail + 1, band[1]);
        break;
    }
    case 1: { // the first bits, or one bit more
        const unsigned low = unsigned(dice.below(4));
        set(p.body, tail + 2, dice.oneIn(2) ? low : (low + 1) << 4 | low);
        break;
    }
    case 2:
        set(p.body, 2 + 2 * dice.below(components), unsigned(dice.below(4)) << 4 | unsigned(dice.below(4)));
        break;
    case 3: // one of its components alone
        p.body.erase(p.body.begin() + 3, p.body.begin() + std::ptrdiff_t(tail));
        set(p.body, 0, 1);
        break;
    default:
        std::swap(p.body[1], p.body[1 + 2 * dice.below(components)]);
    }
}

// A 0 behind every 0xFF that is not ahead of a restart marker or one already.
void stuff(Bytes& data) {
    Bytes out;
    for (std::size_t i = 0; i < data.size(); ++i) {
        out.push_back(data[i]);
        if (data[i] == 0xFF && (i + 1 == data.size() || (data[i + 1] != 0 && !isRestart(data[i + 1]))))
            out.push_back(0);
    }
    data = std::move(out);
}

void changeBody(Piece& p, std::size_t room, Dice& dice) {
    if (isFrame(p.marker)) return changeFrame(p, dice);
    if (p.marker == DHT) return changeHuffman(p, dice);
    if (p.marker == SOS && (p.data.empty() || dice.oneIn(4))) return changeScan(p, dice);
    if (p.marker == SOS) {
        mutateBytes(p.data, std::min<std::size_t>(room, 4096), dice);
        return stuff(p.data);
    }
    if (p.marker == DQT && !p.body.empty())
        return set(p.body, 1 + dice.below(p.body.size() - 1), 1 + dice.next() % 255);
    if (p.marker == DRI) {
        p.body = {0, std::uint8_t(dice.below(9))};
        return;
    }
    mutateBytes(p.body, std::min<std::size_t>(room, 1024), dice);
}

// What stands where: a piece again, gone, elsewhere, or new.
void changeOrder(Pieces& pieces, Dice& dice) {
    const std::size_t i = dice.below(pieces.size()), k = dice.below(pieces.size());
    const auto place = [&](std::size_t n) { return pieces.begin() + std::ptrdiff_t(n); };
    switch (dice.below(5)) {
    case 0: {
        const Piece again = pieces[i];
        pieces.insert(place(k), again);
        break;
    }
    case 1:
        pieces.erase(place(i));
        break;
    case 2:
        std::swap(pieces[i], pieces[k]);
        break;
    case 3:
        pieces.insert(place(i), {DRI, {0, std::uint8_t(1 + dice.below(8))}, {}});
        break;
    default:
        pieces.insert(place(i), {dice.oneIn(2) ? int(DNL) : int(COM), {0, std::uint8_t(1 + dice.below(60))}, {}});
    }
}

} // namespace

std::size_t mutateJpeg(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed, std::size_t head) {
    return mutateFile(data, size, maxSize, seed, head, [](ByteView file, std::size_t most, Dice& dice) -> Bytes {
        Pieces pieces = takeApart(file);
        if (pieces.size() < 3) return {};
        for (std::size_t times = 1 + dice.below(3); times > 0 && !pieces.empty(); --times)
            if (dice.oneIn(5))
                changeOrder(pieces, dice);
            else
                changeBody(pieces[dice.below(pieces.size())], most > file.size() ? most - file.size() : 0, dice);
        return putTogether(pieces);
    });
}

} // namespace fuzz

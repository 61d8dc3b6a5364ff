// blocks.h - single code blocks through the library's tier-1 coder, in both directions (annexes D and E).
#pragma once

#include "codecs/jpeg2000/packetreader.h"
#include "codecs/jpeg2000/wavelet.h"
#include "zmxj.h"

#include <memory>

namespace jpeg2000 {

// A style byte of the codestream in the library's own bits.
Zmx32u libraryStyle(unsigned style);

// How the numbers of a band are quantised.
struct BandCoding {
    bool reversible = true;
    int bitPlanes = 0; // Mb of E-2
    float step = 1;    // in units of the plane's least bit; 1 on the reversible road
    int roiShift = 0;
};
// Step size of a band (E-3) in units of the picture's samples.
double stepOf(const StepSize& s, int depth, Orientation o);
BandCoding bandCoding(const CodingStyle& style, const Quantization& quant, int roiShift, int depth, int resolution,
                      int band, Orientation o);

// Decodes blocks one by one; one for each thread.
class BlockDecoder {
    std::vector<std::uint64_t> state;
    std::vector<std::uint8_t> joined;

public:
    // Decodes into the block's place in the plane, which is zero before. Tells whether it was sound.
    bool decode(const BlockStream& stream, const Block& block, Orientation o, unsigned style, const BandCoding& coding,
                Plane& plane);
};

// A code block after tier-1 coding.
struct CodedBlock {
    struct Pass {
        std::uint32_t rate; // bytes up to its end
        bool ends;          // a codeword segment
        double distortion;  // reduction of the squared error so far, in units of the squared step
    };
    std::vector<std::uint8_t> bytes;
    std::vector<Pass> passes;
    double residual = 0;                    // squared error that all passes leave, in the same units
    int bitPlanes = 0;                      // coded ones
    int zeroPlanes = 0;                     // above them, up to the planes of the band
    double weight = 1;                      // of its errors in the picture: squared error there over squared step
    std::vector<std::uint16_t> layerPasses; // passes up to the end of each layer
};

// Encodes blocks one by one; one for each thread.
class BlockEncoder {
    struct Free {
        void operator()(ZmxiEncodeState_JPEG2K* s) const { zmxiEncodeFree_JPEG2K(s); }
    };
    std::unique_ptr<ZmxiEncodeState_JPEG2K, Free> state;
    std::vector<std::int32_t> words;
    std::vector<std::uint8_t> buffer;

public:
    BlockEncoder(int maxWidth, int maxHeight);
    CodedBlock encode(Plane& plane, const Block& block, Orientation o, unsigned style, const BandCoding& coding);
};

} // namespace jpeg2000

// cplusplus.cpp - the library from C++: states that free themselves, statuses as exceptions, containers as buffers.
//
// Usage: cplusplus OUT.jpg. Then: djpeg OUT.jpg
// SPDX-License-Identifier: BSD-2-Clause
#include "examples/jpegfile.h"
#include <array>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

// [status]
struct Failure : std::runtime_error {
    explicit Failure(ZmxStatus code) : std::runtime_error("status " + std::to_string(code)), status(code) {}
    ZmxStatus status;
};

void must(ZmxStatus status) {
    if (status < zmxStsNoErr) throw Failure(status); // warnings are above 0
}
// [status]

// [handle]
// What an InitAlloc function took, with the Free function that gives it back.
template <class T, ZmxStatus (*Free)(T*)> struct Freer {
    void operator()(T* p) const { Free(p); }
};
template <class T, ZmxStatus (*Free)(T*)> using Handle = std::unique_ptr<T, Freer<T, Free>>;

using EncoderTable = Handle<ZmxiEncodeHuffmanSpec, zmxiEncodeHuffmanSpecFree_JPEG_8u>;
using Writer = Handle<ZmxiEncodeHuffmanState, zmxiEncodeHuffmanStateFree_JPEG_8u>;

Writer makeWriter() {
    ZmxiEncodeHuffmanState* state = nullptr;
    must(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&state));
    return Writer(state);
}
// [handle]

using Block = std::array<Zmx16s, 64>;

std::vector<Block> transform(const Zmx8u* picture, int width, int height, const Zmx16u* quant) {
    std::vector<Block> blocks;
    for (int y = 0; y < height; y += 8)
        for (int x = 0; x < width; x += 8)
            must(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(picture + y * width + x, width, blocks.emplace_back().data(),
                                                     quant));
    return blocks;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) throw std::runtime_error("usage: cplusplus OUT.jpg");
    constexpr int width = 160, height = 96; // multiples of 8
    const std::unique_ptr<Zmx8u, decltype(&std::free)> picture(makePicture(width, height, 1), &std::free);

    std::array<Zmx8u, 64> raw;
    std::copy(std::begin(exampleQuant), std::end(exampleQuant), raw.begin());
    std::array<Zmx16u, 64> quant;
    must(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), 80));
    must(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), quant.data()));
    const std::vector<Block> blocks = transform(picture.get(), width, height, quant.data());

    Table dc{}, ac{};
    Zmx16s lastDC = 0;
    for (const Block& b : blocks)
        must(zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(b.data(), dc.counts, ac.counts, &lastDC));
    buildTable(&dc);
    const EncoderTable dcTable(dc.spec);
    buildTable(&ac);
    const EncoderTable acTable(ac.spec);

    Bytes head{};
    put(&head, 0xFFD8, 2);
    putQuant(&head, 0, raw.data());
    putFrame(&head, 0xFFC0, 8, width, height, 1, 0x11);
    putTable(&head, 0x00, &dc);
    putTable(&head, 0x10, &ac);
    putScan(&head, 1, 0, 63, 0);

    // [encode]
    std::vector<Zmx8u> scan(514 * blocks.size() + 2); // the most that blocks and a flush can take
    const Writer writer = makeWriter();
    int at = 0;
    lastDC = 0;
    for (const Block& b : blocks)
        must(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(b.data(), scan.data(), int(scan.size()), &at, &lastDC, dcTable.get(),
                                                acTable.get(), writer.get(), 0));
    must(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, scan.data(), int(scan.size()), &at, nullptr, nullptr, nullptr,
                                            writer.get(), 1));
    // [encode]

    std::ofstream file(argv[1], std::ios::binary);
    file.write(reinterpret_cast<const char*>(head.data), head.size);
    file.write(reinterpret_cast<const char*>(scan.data()), at);
    file.write("\xFF\xD9", 2);
    std::free(head.data);
    if (!file.flush()) throw std::runtime_error("the file cannot be written");
    std::printf("%d x %d pixels in %d bytes\n", width, height, head.size + at + 2);
} catch (const std::exception& e) {
    std::fprintf(stderr, "cplusplus: %s\n", e.what());
    return 1;
}

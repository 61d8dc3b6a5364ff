// pnmwrite.cpp - raw PBM, PGM, PPM and PAM files.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "codecs/picture/storedrows.h"

namespace codecs {
namespace {

ByteView viewOf(const std::string& text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

// The name of a kind of tuple; empty where there is none.
std::string tupleType(const Shape& shape) {
    if (shape.colour == Colour::cmyk) return "CMYK";
    if (shape.colour == Colour::other) return "";
    const bool bitmap = shape.colour == Colour::grey && shape.maxval == 1;
    return std::string(bitmap                         ? "BLACKANDWHITE"
                       : shape.colour == Colour::grey ? "GRAYSCALE"
                                                      : "RGB") +
           (shape.alpha ? "_ALPHA" : "");
}

class PnmSink final : public RowSink {
public:
    PnmSink(std::unique_ptr<ByteSink> sink, Container kind) : bytes(std::move(sink)), container(kind) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        form = shape;
        told = lossOf(metadata, "a PNM or PAM file");
        if (container == Container::anymap)
            container = shape.alpha || (shape.colour != Colour::grey && shape.colour != Colour::rgb) ? Container::pam
                                                                                                     : Container::pnm;
        bits = container == Container::pbm || (container == Container::pnm && shape.maxval == 1 && shape.channels == 1);
        const std::string size = std::to_string(shape.width) + " " + std::to_string(shape.height);
        if (container == Container::pam) {
            bytes->write(viewOf(pamHeader()));
        } else {
            if (shape.colour == Colour::cmyk) throw Error("a CMYK picture is written to a .tif or .pam file");
            if (shape.alpha) throw Error("a PNM file holds no alpha channel; write .png, .tif or .pam");
            if (shape.channels != 1 && shape.channels != 3) throw Error("a PNM file has 1 or 3 channels; write .pam");
            if (bits && (shape.maxval != 1 || shape.channels != 1))
                throw Error("a .pbm file holds pictures of single bits alone; write .pgm or .ppm");
            bytes->write(viewOf(bits ? "P4\n" + size + "\n"
                                     : std::string(shape.channels == 1 ? "P5\n" : "P6\n") + size + "\n" +
                                           std::to_string(shape.maxval) + "\n"));
        }
    }

    void write(const Band& band) override {
        const std::size_t size = form.rowBytes();
        if (!bits && !form.wide() && band.step == std::ptrdiff_t(size))
            return bytes->write({band.data, size * std::size_t(band.rows)});
        for (int y = 0; y < band.rows; ++y) writeRow(band.row(y), size);
    }

    void finish() override { bytes->finish(); }

private:
    std::string pamHeader() const {
        const std::string type = tupleType(form);
        return "P7\nWIDTH " + std::to_string(form.width) + "\nHEIGHT " + std::to_string(form.height) + "\nDEPTH " +
               std::to_string(form.channels) + "\nMAXVAL " + std::to_string(form.maxval) + "\n" +
               (type.empty() ? "" : "TUPLTYPE " + type + "\n") + "ENDHDR\n";
    }

    void writeRow(const std::uint8_t* row, std::size_t size) {
        if (!bits && !form.wide()) return bytes->write({row, size});
        stored.resize(bits ? (form.rowSamples() + 7) / 8 : size);
        if (bits)
            bytesToBits(row, stored.data(), form.rowSamples(), 1);
        else
            wordsOfBigEndian(row, stored.data(), form.rowSamples());
        bytes->write(stored);
    }

    std::unique_ptr<ByteSink> bytes;
    Container container;
    Shape form;
    bool bits = false;
    Samples stored;
};

} // namespace

std::unique_ptr<RowSink> createPnm(std::unique_ptr<ByteSink> bytes, Container container) {
    return std::make_unique<PnmSink>(std::move(bytes), container);
}

} // namespace codecs

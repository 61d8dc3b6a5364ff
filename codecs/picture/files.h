// files.h - pictures in files: told apart by their first bytes, written by the ending of their names.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/container.h"
#include "codecs/picture/convert.h"
#include "codecs/picture/rows.h"

#include <memory>
#include <string>

namespace codecs {

// What openPicture() and createPicture() take, for help and messages.
inline const std::string kPictureFile = "a PNG, PNM, PAM, TIFF or BMP file",
                         kPictureEndings = ".png, .tif, .bmp, .pbm, .pgm, .ppm, .pnm or .pam";

// Opens a PNG, PBM, PGM, PPM, PAM, TIFF or BMP file, "-" for standard input. Palettes are expanded; grey of 1, 2, 4 bits keeps
// its depth. Errors begin with the name of the file. `maxPixels` bounds what a header may ask for.
Rows openPicture(const std::string& path, std::uint64_t maxPixels = kMaxPixels);
// The same from bytes; errors know no file.
Rows openPicture(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels = kMaxPixels);

// By the ending of a path; an Error with the endings that there are when it is none of them.
Container containerOf(const std::string& path);

// Writes a picture as its rows come. Depths that the container does not have are scaled up to the next; what it cannot
// hold at all is an Error. The file is there after finish(), not before.
std::unique_ptr<RowSink> createPicture(const std::string& path);
std::unique_ptr<RowSink> createPicture(const std::string& path, Container container); // path may be "-"
std::unique_ptr<RowSink> createPicture(std::unique_ptr<ByteSink> bytes, Container container);

// Sources and sinks whose errors begin with the name of their file.
Rows namedRows(const std::string& file, const std::function<Rows()>& open);
std::unique_ptr<RowSink> namedSink(const std::string& file, std::unique_ptr<RowSink> to);

// Whole pictures.
Picture readPicture(const std::string& path, std::uint64_t maxPixels = kMaxPixels);
void writePicture(const std::string& path, const Picture& picture);

} // namespace codecs

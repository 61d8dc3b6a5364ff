// files.h - the readers and writers behind readImage() and writeImage(), one pair a container.
#pragma once

#include "codecs/picture/picture.h"

#include <cstdio>

Image readPng(std::FILE* file, const std::string& path, std::size_t maxPixels);
void writePng(std::FILE* file, const std::string& path, const Image& image);

Image readPnm(std::FILE* file, const std::string& path, std::size_t maxPixels);
void writePnm(std::FILE* file, const std::string& path, const Image& image, bool pam);

// libtiff opens its files itself.
Image readTiff(const std::string& path, std::size_t maxPixels);
void writeTiff(const std::string& path, const Image& image);

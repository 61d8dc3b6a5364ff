/* example.h - what the examples share: a picture to work on, bytes that grow, and files. */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef EXAMPLE_H
#define EXAMPLE_H

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zmxj.h>

/* Ends the program when something is not as it should be. */
static inline void check(int good, const char* what) {
    if (good) return;
    fprintf(stderr, "failed: %s\n", what);
    exit(1);
}

/* Memory that is there, or the program ends. */
static inline void* memory(size_t bytes) {
    void* p = malloc(bytes);
    check(p != NULL, "no memory");
    return p;
}

/* Bytes of a file in the making. */
typedef struct Bytes {
    Zmx8u* data;
    int size;
    int room;
} Bytes;

/* Makes sure that `more` bytes fit behind those that are there. */
static inline void makeRoom(Bytes* b, int more) {
    if (b->room - b->size >= more) return;
    b->room = 2 * b->room + more;
    b->data = (Zmx8u*)realloc(b->data, (size_t)b->room);
    check(b->data != NULL, "no memory");
}

static inline void putBytes(Bytes* b, const void* from, int count) {
    makeRoom(b, count);
    memcpy(b->data + b->size, from, (size_t)count);
    b->size += count;
}

/* A number of `bytes` bytes, the highest first, as JPEG and JPEG2000 want it. */
static inline void put(Bytes* b, unsigned value, int bytes) {
    while (bytes-- > 0) {
        Zmx8u byte = (Zmx8u)(value >> 8 * bytes);
        putBytes(b, &byte, 1);
    }
}

/* The same, the lowest byte first, as TIFF and DDS files have it here. */
static inline void putLow(Bytes* b, unsigned value, int bytes) {
    for (; bytes-- > 0; value >>= 8) {
        Zmx8u byte = (Zmx8u)value;
        putBytes(b, &byte, 1);
    }
}

static inline void save(const char* path, const void* data, size_t size) {
    FILE* f = fopen(path, "wb");
    check(f != NULL && fwrite(data, 1, size, f) == size && fclose(f) == 0, path);
}

static inline Bytes load(const char* path) {
    Bytes b = {NULL, 0, 0};
    FILE* f = fopen(path, "rb");
    int byte;
    check(f != NULL, path);
    while ((byte = fgetc(f)) != EOF) put(&b, (unsigned)byte, 1);
    fclose(f);
    return b;
}

/* A PGM or PPM file: the simplest of picture files. */
static inline void savePnm(const char* path, const Zmx8u* pixels, int width, int height, int channels) {
    Bytes b = {NULL, 0, 0};
    char head[64];
    int n = sprintf(head, "P%d\n%d %d\n255\n", channels == 1 ? 5 : 6, width, height);
    putBytes(&b, head, n);
    putBytes(&b, pixels, width * height * channels);
    save(path, b.data, (size_t)b.size);
    free(b.data);
}

/* A picture to work on: soft gradients, an edge and a disc, in 1, 3 or 4 channels. */
static inline Zmx8u* makePicture(int width, int height, int channels) {
    Zmx8u* pixels = (Zmx8u*)memory((size_t)width * (size_t)height * (size_t)channels);
    int x, y, c;
    for (y = 0; y < height; ++y)
        for (x = 0; x < width; ++x)
            for (c = 0; c < channels; ++c) {
                int dx = 2 * x - width, dy = 2 * y - height;
                int disc = 4 * (dx * dx + dy * dy) < width * height * (c + 1);
                int v =
                    40 + 150 * (c == 1 ? y : x) / (c == 1 ? height : width) + 40 * disc + (x > 3 * width / 4 ? 20 : 0);
                pixels[(y * width + x) * channels + c] = (Zmx8u)(c == 3 ? 255 - x * 128 / width : v);
            }
    return pixels;
}

#endif /* EXAMPLE_H */

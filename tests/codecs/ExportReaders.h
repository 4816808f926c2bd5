#pragma once
#include "codecs/CodecTestSupport.h"

// Independent readers for what the exporters write: the libraries themselves for JPEG, PNG
// and TIFF (when the build has them), a few lines of our own for BMP.
struct ReadBack {
    bool ok = false;
    std::uint32_t width = 0, height = 0;
    Bytes rgb;       // R, G, B a pixel, top row first
    int layout = 0;  // how the file stores pixels: see each reader
    int bits = 0;    // bits a sample or index
};

// layout: the PNG colour type.
ReadBack ReadPng(const Bytes& file);
// layout: the photometric interpretation; bits: bits a sample. `compression` receives the tag.
ReadBack ReadTiff(const Bytes& file, int* compression);
// layout: the TurboJPEG colour space.
ReadBack ReadJpeg(const Bytes& file);
// layout: 0; bits: bits a pixel.
ReadBack ReadBmp(const Bytes& file);

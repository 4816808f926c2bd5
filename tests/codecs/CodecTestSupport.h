#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/ivCodec.h"
#include "platform/ivImage2d.h"

using Bytes = std::vector<std::uint8_t>;

// A file under tests/data/codecs.
Bytes ReadCodecFixture(const std::string& name);

struct DecodeResult {
    ivStatus status = kOk;
    ivImage2d image;
    std::string error;
};

// Decodes `data` from a memory stream, keeping the importer's error text.
DecodeResult DecodeBytes(ivImageImporter& importer, std::span<const std::uint8_t> data);

// The pixel bytes of `image` without the row padding, `bytesPerPixel` a pixel.
Bytes PackedPixels(const ivImage2d& image, int bytesPerPixel);

// The largest difference between two byte strings of the same length.
int MaxDifference(const Bytes& a, const Bytes& b);

// Blue-green-red bytes turned into red-green-blue, in place.
void SwapRedBlue(Bytes& pixels);

// A P4 (binary) PBM as one byte a pixel, 1 for black.
Bytes ReadPbmPixels(const std::string& name, std::uint32_t* width, std::uint32_t* height);

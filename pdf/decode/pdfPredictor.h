#pragma once
#include <cstdint>

#include "platform/ivStream.h"

// Undoes the PNG row filters (Predictor >= 10): each row is a tag byte and then
// Columns x Colors bytes (fewer when 0 < bitsPerComponent < 8). Returns a rewound memory
// stream with the rows, tag bytes removed.
// Rows stop once the output holds `limit` bytes.
ivRef<ivStream> ApplyPNGPredictor(ivRef<ivStream> source, std::uint32_t columns, std::uint32_t colors,
                                  std::uint32_t bitsPerComponent, std::uint64_t limit = std::uint64_t(-1));

#pragma once
#include <cstdint>

#include "platform/ivStream.h"

// Undoes the PNG row filters (Predictor >= 10): each row is a tag byte and then
// Columns x Colors bytes (fewer when 0 < bitsPerComponent < 8). Returns a stream of the rows,
// tag bytes removed, undone as it is read, so only two rows are ever held. A short last row
// and a read error of `source` end the rows quietly; rows stop once `limit` bytes came out.
// Rows longer than 16 MiB are not undone: `source` comes back unchanged.
ivRef<ivStream> ApplyPNGPredictor(ivRef<ivStream> source, std::uint32_t columns, std::uint32_t colors,
                                  std::uint32_t bitsPerComponent, std::uint64_t limit = std::uint64_t(-1));

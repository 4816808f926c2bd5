#pragma once
#include <cstdint>

#include "platform/ivMemStream.h"

// Decodes LZW data (PDF's variant: 9 to 12 bit codes, clear 256, end 257) from `source` into
// `out`, byte by byte. With `earlyChange` the code width grows one entry early. Returns kOk at
// the end code, kFail on a read error, a broken string chain or an undefined code; whatever
// was decoded before stays in `out`.
// Decoding stops once `out` holds `limit` bytes (kRemark then). `notCleared`, when given, tells
// whether codes went on after all 4,096 entries were in use without a clear code.
ivStatus DecodeLZW(ivStream& source, ivMemStream& out, bool earlyChange,
                   std::uint64_t limit = std::uint64_t(-1), bool* notCleared = nullptr);

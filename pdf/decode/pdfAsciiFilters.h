#pragma once
#include <cstdint>

#include "platform/ivMemStream.h"

class pdfDocument;

// ASCIIHexDecode: pairs of hex digits up to '>'; LF, CR and space are skipped; a lone final
// digit is dropped. A bad digit reports "Error parsing hexadimal character" and ends the data.
ivRef<ivMemStream> DecodeASCIIHex(const pdfDocument& doc, ivStream& source, std::uint64_t limit = std::uint64_t(-1));
// ASCII85Decode: groups of five digits up to "~>", 'z' for four zeros. Data that ends
// without "~>" reports "Error in decoding ASCII85".
ivRef<ivMemStream> DecodeASCII85(const pdfDocument& doc, ivStream& source, std::uint64_t limit = std::uint64_t(-1));
// Both stop once their output holds `limit` bytes.

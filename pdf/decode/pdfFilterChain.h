#pragma once
#include <cstdint>

#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfXref.h"
#include "platform/ivStream.h"

class pdfDocument;

// A stream object's data after its filter chain.
struct pdfDecodedStream {
    ivRef<ivStream> stream;
    // The Length value while no decoder ran; -1 once one did (then only reading tells).
    std::int32_t length = -1;
    const pdfObject* filter = nullptr;  // the last filter's name: what image decoding still has to do
    const pdfObject* params = nullptr;  // its DecodeParms dictionary, or null
};

// Opens a stream object's data: its stored bytes cut out of the file, then ASCIIHex,
// ASCII85, LZW and Flate (with PNG predictors) decoded in order; other filters pass the data
// on unchanged. kInvalidArg with "Not a stream" for another object, kInvalidArg (data still
// returned) when the last filter entry was not a name.
ivStatus OpenDecodedStream(pdfDocument& doc, const pdfObject* obj, const XrefEntry* entry,
                           pdfDecodedStream& out);

// The stored bytes only (decrypted once encryption is supported, never decoded).
ivStatus OpenRawStream(pdfDocument& doc, const pdfObject* obj, pdfDecodedStream& out);

// Flate or LZW over `source`, with the PNG predictor when Predictor >= 10. Null when the
// inflating stream cannot be created.
ivRef<ivStream> CreateFlateOrLZWFilter(pdfDocument& doc, ivRef<ivStream> source, const pdfObject* params,
                                       bool lzw);

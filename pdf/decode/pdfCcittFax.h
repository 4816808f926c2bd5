#pragma once
#include <cstdint>

#include "platform/ivImage2d.h"
#include "platform/ivStream.h"

class pdfDocument;
struct pdfObject;

struct CcittParams {
    bool blackIs1 = false;
    bool encodedByteAlign = false;
    std::int32_t k = 0;
};

// Decodes CCITT fax data into a 1-bit bitmap that the caller created with the image's width
// and height. Only pure two-dimensional coding (K < 0, Group 4) is decoded; for K >= 0 the
// bitmap is left filled with 0xFF. Returns 0 (end of data, EOFB or the last row decoded), 2 or 3
// for extension codes, kFail for a run code found in no table (unless the data ended inside it)
// and kInvalidArg when the bitmap is not a created 1-bit one. Rows decoded before the end stay.
ivStatus DecodeCCITTG4(ivStream& source, ivImage2d& image, const CcittParams& params);

// Reads BlackIs1, EncodedByteAlign and K from the decode parameters, then decodes.
ivStatus DecodeCCITTFax(pdfDocument& doc, const pdfObject* params, ivImage2d& image, ivStream& source);

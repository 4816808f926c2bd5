#pragma once
#include <cstdint>
#include <memory>

#include "pdf/object/pdfObject.h"
#include "platform/ivImage2d.h"
#include "platform/ivStream.h"

class ivPdf;

// What an image dictionary says about the samples.
struct pdfImageDescription {
    std::int32_t width = -1;
    std::int32_t height = -1;
    std::int32_t bitsPerComponent = -1;
    int colourModel = 0;  // 1 grey, 2 CMYK, 3 RGB, 0 unknown
    bool imageMask = false;
    const pdfObject* lookup = nullptr;  // the Indexed space's lookup (a stream or a string)
    const pdfObject* base = nullptr;    // the Indexed space's base, when a name
    std::uint32_t paletteCount = 0;     // hival + 1
};

enum : int { kColourGrey = 1, kColourCmyk = 2, kColourRgb = 3 };

// Creates the bitmap an image dictionary describes, with its palette.
ivStatus CreateImageFromDictionary(ivPdf& doc, const pdfObject* dict, ivImage2d& image,
                                   pdfImageDescription& desc);

// Decodes an image XObject into a new bitmap. With `passThrough`, DCT and CCITT data is not
// decoded: the stream with every other filter removed is handed back there instead.
ivStatus DecodeImage(ivPdf& doc, const pdfObject* stream, std::unique_ptr<ivImage2d>& image,
                     ivRef<ivStream>* passThrough);

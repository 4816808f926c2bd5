#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "pdf/object/pdfObjList.h"
#include "pdf/object/pdfObject.h"
#include "platform/ivStatus.h"

class pdfDocument;
class pdfParser;

// An inline image: the parameters written between "BI" and "ID", with their abbreviations
// expanded, and the bytes between "ID" and "EI". `size` data bytes follow the fixed part.
struct pdfInlineImage : pdfObject {
    std::uint32_t size;
    pdfObject* params;  // a Dictionary: BitsPerComponent, ColorSpace, Width, …
    std::span<const std::uint8_t> Bytes() const {
        return {reinterpret_cast<const std::uint8_t*>(this + 1), size};
    }
};

// Called by the parser right after "ID" and the one byte that follows it: reads the image
// data up to "EI" and replaces the tokens from "BI" (at `biIndex` in the list) on with the
// inline-image record followed by the keyword "EI", so the image reads as one operation.
ivStatus ReadInlineImage(pdfDocument& doc, pdfParser& source, ObjList& list, std::size_t biIndex);

// Builds the parameter dictionary from the tokens between "BI" and "ID": BPC, CS, D, DP, F,
// H, W, I and IM become their full key names, and the colour spaces G, RGB and CMYK their
// device names. Width and Height must be numbers ("Number is Expected").
pdfDict* InlineImageParameters(pdfDocument& doc, std::span<pdfObject* const> tokens);

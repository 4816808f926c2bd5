#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "pdf/object/pdfObjList.h"
#include "pdf/object/pdfObject.h"
#include "platform/ivStatus.h"

class pdfDocument;
class pdfParser;

// An inline image: the parameters written between "BI" and "ID" and the bytes between "ID"
// and "EI". `size` data bytes follow the fixed part.
struct pdfInlineImage : pdfObject {
    std::uint32_t size;
    pdfObject* params;  // a Dictionary of the parameters as written
    std::span<const std::uint8_t> Bytes() const {
        return {reinterpret_cast<const std::uint8_t*>(this + 1), size};
    }
};

// Called by the parser right after "ID" and the one byte that follows it: reads the image
// data up to "EI" and appends the inline-image record to `list`. `biIndex` is the position
// of the "BI" keyword in the list.
ivStatus ReadInlineImage(pdfDocument& doc, pdfParser& source, ObjList& list, std::size_t biIndex);

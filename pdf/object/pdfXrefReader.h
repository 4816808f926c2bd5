#pragma once
#include <cstdint>

#include "pdf/object/pdfObject.h"
#include "pdf/object/pdfXref.h"
#include "platform/ivStatus.h"

class pdfDocument;

// Checks "%PDF-" at byte 0 and stores the version; kNotFound without a header.
ivStatus ReadHeader(pdfDocument& doc);
// Creates the newest section, finds "startxref" in the last 1024 bytes and reads the section
// it names. No "startxref" leaves the section empty (status 0); an unreadable position fails.
ivStatus ReadStartXref(pdfDocument& doc, XrefSection** newest);
// Reads one classic table with its trailer, or one cross-reference stream, at `offset`.
ivStatus ReadSection(pdfDocument& doc, XrefSection& section, std::uint32_t offset);
// Stores the trailer keys of `dict` in the section.
void ApplyTrailer(XrefSection& section, pdfDocument& doc, const pdfObject* dict);
// With the extra checks on, reports a trailer Size beyond the highest object number the
// sections list.
void CheckTrailerSizes(pdfDocument& doc);
// Gives every in-file entry the extent up to the next object or section.
void ComputeLengths(pdfDocument& doc);

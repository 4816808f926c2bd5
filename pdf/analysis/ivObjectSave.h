#pragma once
#include <cstdint>

#include "platform/ivStatus.h"

class ivPdf;
class ivStream;
struct XrefEntry;
struct pdfObject;

// What "Save Object As" and "Save Stream As" write, and what the views show of an object's
// bytes. Both copy in pieces, so no object is ever held whole.

// The entry's bytes as stored: for an object in the file, its offset and size there; for one
// kept in an object stream, its piece of the stream's decoded data. kNotFound when there are
// none to copy (a placeholder, an object stream that cannot be read).
ivStatus CopyEntryBytes(ivPdf& doc, const XrefEntry& entry, ivStream& out);
// The stream's data decoded through its filters. kInvalidArg (after "Not a stream") for
// anything but a stream.
ivStatus CopyDecodedStream(ivPdf& doc, const pdfObject* stream, ivStream& out);

#pragma once
#include <cstdint>

#include "pdf/object/pdfObjList.h"
#include "pdf/object/pdfObject.h"
#include "platform/ivStatus.h"

class pdfDocument;
class pdfParser;

// Parse flags. Only kParseDecrypt is handed down into nested arrays and dictionaries.
constexpr unsigned kParseInDict = 1;    // ">>" ends the parse
constexpr unsigned kParseInArray = 2;   // "]" ends the parse
constexpr unsigned kParseToEndobj = 4;  // "endobj" ends the parse
constexpr unsigned kParseContent = 8;   // content stream: "endstream" ends, "R" is a keyword
constexpr unsigned kParseDecrypt = 32;  // strings go through the security handler

// Arrays and dictionaries nested deeper than this end the parse with a message.
constexpr int kMaxNesting = 256;

// Reads a sequence of values into `list`. Returns 0, 1 (the input ended inside a comment),
// kFail (failure, or nothing read) or kOutOfMemory (via std::bad_alloc from the arena).
ivStatus ParseObjects(pdfDocument& doc, pdfParser& source, ObjList& list, unsigned flags);
// Called after "<<" or "[" has been read; the record goes to `list` and/or `out`.
ivStatus ParseDictionary(pdfDocument& doc, pdfParser& source, ObjList* list, pdfDict** out, unsigned flags);
ivStatus ParseArray(pdfDocument& doc, pdfParser& source, ObjList* list, unsigned flags);

// Reads "N G obj". With `expected`, a different identifier reports "Object Misaligned".
// False on a mismatch, a missing "obj" or end of data; `out` receives the numbers read.
bool ReadObjectHeader(pdfDocument& doc, pdfParser& source, const ObjId* expected, ObjId& out);

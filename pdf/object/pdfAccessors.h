#pragma once
#include <cstdint>
#include <string>

#include "pdf/object/pdfObject.h"
#include "platform/ivStatus.h"

class pdfDocument;

// Typed accessors. Each follows indirect references through object access before it looks
// at the type; messages go to the scope in force, without a stream position.

// Int or Real as a double: 1 when an Int was widened, 0 for a Real; kWrongType (no message)
// for another type; kNotFound when a reference cannot be resolved.
ivStatus GetNumber(pdfDocument& doc, const pdfObject* obj, double* value);
// Int, or Real rounded to the nearest integer (then 1); another type reports "Number is Expected".
ivStatus GetInteger(pdfDocument& doc, const pdfObject* obj, std::uint32_t* value);
// As GetInteger, without "Number is Expected": for callers that report a failure of their own.
ivStatus GetIntegerQuiet(pdfDocument& doc, const pdfObject* obj, std::uint32_t* value);
// As GetInteger, and kInvalidArg first for a null record.
ivStatus GetIntegerChecked(pdfDocument& doc, const pdfObject* obj, std::uint32_t* value);
// Bool, or Int taken as non-zero; another type reports "BOOL is Expected".
ivStatus GetBool(pdfDocument& doc, const pdfObject* obj, bool* value);
// String, Name, Key, HEX String (UTF-16BE after FE FF) or UNICODE String as UTF-16 text;
// 8-bit bytes become the code units of the same value.
ivStatus GetText(pdfDocument& doc, const pdfObject* obj, std::u16string* text);
// Fills a trailer slot: an identifier for a reference, the record for a direct value.
ivStatus SetRef(ObjRef* slot, const pdfObject* obj);

// Follows references until a direct record; null when one cannot be resolved.
const pdfObject* Deref(pdfDocument& doc, const pdfObject* obj);

// Dictionary lookup that reports "Not a dictionary" when `dict` (after following a
// reference) is something else.
pdfObject* DictLookup(pdfDocument& doc, const pdfObject* dict, const char* key);

#pragma once
#include <string>

#include "pdf/object/pdfObject.h"

// The text of one token as the views show it: "null", "%d", "%g", "(text)", upper-case hex
// pairs for a HEX String, "/Name", "12 0 R", "[" and "<<" for the opening bracket of an
// array or dictionary, "stream <<" for a stream, "[inline image]", "*" for anything else.
std::string TokenText(const pdfObject* obj);

// A whole value on one line, nested arrays and dictionaries included:
// "<< /Type /Catalog /Pages 2 0 R >>". Very deep nesting is shown as "...".
std::string ObjectText(const pdfObject* obj);

// Upper-case hexadecimal pairs of some bytes.
std::string HexText(const std::uint8_t* bytes, std::size_t size);

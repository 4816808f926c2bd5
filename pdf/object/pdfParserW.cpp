#include "pdf/object/pdfParserW.h"

#include "pdf/object/pdfParser.h"

bool ReadToken(pdfParserStrW& source, std::u16string& token) {
    token.clear();
    char16_t c = 0;
    do {
        if (!source.ReadByte(c)) return false;
    } while (c < 128 && IsTokenSpace(static_cast<std::uint8_t>(c)));
    token += c;
    if (c < 128 && IsTokenDelimiter(static_cast<std::uint8_t>(c))) return true;
    while (source.ReadByte(c)) {
        if (c < 128 && IsTokenSpace(static_cast<std::uint8_t>(c))) break;
        if (c < 128 && IsTokenDelimiter(static_cast<std::uint8_t>(c))) {
            source.PushBack(c);
            break;
        }
        token += c;
    }
    return true;
}

#include "pdf/object/pdfInlineImage.h"

#include <cstring>
#include <string>

#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfParser.h"

namespace {

bool IsWhite(std::uint8_t c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == 0; }

pdfInlineImage* NewInlineImage(ivArena& arena, pdfObject* params, const std::string& data) {
    void* raw = arena.Allocate(sizeof(pdfInlineImage) + data.size(), 8);
    auto* r = ::new (raw) pdfInlineImage{};
    r->tag = kTagInlineImage;
    r->size = static_cast<std::uint32_t>(data.size());
    r->params = params;
    if (!data.empty()) std::memcpy(r + 1, data.data(), data.size());
    return r;
}

}  // namespace

ivStatus ReadInlineImage(pdfDocument& doc, pdfParser& source, ObjList& list, std::size_t biIndex) {
    // The parameters stand between "BI" and the "ID" keyword that was appended last.
    std::size_t first = std::min(biIndex + 1, list.items.size());
    std::size_t last = list.items.empty() ? 0 : list.items.size() - 1;
    std::span<pdfObject* const> params(list.items.data() + first, last > first ? last - first : 0);
    pdfDict* dict = NewDict(doc.Arena(), params);

    // The data ends at white space, "EI", then white space or the end of the data.
    std::string data;
    std::uint8_t c = 0;
    while (source.ReadByte(c)) {
        data += static_cast<char>(c);
        std::size_t n = data.size();
        if (n >= 3 && data[n - 1] == 'I' && data[n - 2] == 'E' && IsWhite(static_cast<std::uint8_t>(data[n - 3]))) {
            std::uint8_t next = 0;
            bool more = source.ReadByte(next);
            if (!more || next <= 32) {
                data.resize(n - 3);
                list.items.push_back(NewInlineImage(doc.Arena(), dict, data));
                return kOk;
            }
            source.PushBack(next);
        }
    }
    ReportAt(doc, source, "Inline image data is not followed by EI");
    list.items.push_back(NewInlineImage(doc.Arena(), dict, data));
    return kFail;
}

#include "pdf/object/pdfInlineImage.h"

#include <cstring>
#include <string>
#include <vector>

#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfParser.h"

namespace {

bool IsWhite(std::uint8_t c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == 0;
}

pdfInlineImage* NewInlineImage(ivArena& arena, pdfObject* params, const std::string& data) {
    void* raw = arena.Allocate(sizeof(pdfInlineImage) + data.size(), 8);
    auto* r = ::new (raw) pdfInlineImage{};
    r->tag = kTagInlineImage;
    r->size = static_cast<std::uint32_t>(data.size());
    r->params = params;
    if (!data.empty()) std::memcpy(r + 1, data.data(), data.size());
    return r;
}

struct Abbreviation {
    const char* shortName;
    const char* fullName;
};
constexpr Abbreviation kKeys[] = {{"BPC", "BitsPerComponent"},
                                  {"CS", "ColorSpace"},
                                  {"D", "Decode"},
                                  {"DP", "DecodeParms"},
                                  {"F", "Filter"},
                                  {"H", "Height"},
                                  {"W", "Width"},
                                  {"I", "Interpolate"},
                                  {"IM", "ImageMask"}};
constexpr Abbreviation kColourSpaces[] = {{"G", "DeviceGray"}, {"RGB", "DeviceRGB"}, {"CMYK", "DeviceCMYK"}};

template <std::size_t N>
pdfObject* Expand(pdfDocument& doc, pdfObject* name, const Abbreviation (&table)[N]) {
    const pdfBytes* n = AsName(name);
    if (!n) return name;
    for (const Abbreviation& a : table)
        if (std::strcmp(n->Chars(), a.shortName) == 0) return NewBytes(doc.Arena(), kTagName, a.fullName);
    return name;
}

// Reads the data up to white space, "EI" and white space (or the end); false at the end.
bool ReadImageData(pdfParser& source, std::string& data) {
    std::uint8_t c = 0;
    while (source.ReadByte(c)) {
        data += static_cast<char>(c);
        std::size_t n = data.size();
        if (n >= 3 && data[n - 1] == 'I' && data[n - 2] == 'E' &&
            IsWhite(static_cast<std::uint8_t>(data[n - 3]))) {
            std::uint8_t next = 0;
            bool more = source.ReadByte(next);
            if (!more || next <= 32) {
                data.resize(n - 3);
                return true;
            }
            source.PushBack(next);
        }
    }
    return false;
}

}  // namespace

pdfDict* InlineImageParameters(pdfDocument& doc, std::span<pdfObject* const> tokens) {
    std::vector<pdfObject*> items(tokens.begin(), tokens.end());
    for (std::size_t i = 0; i + 1 < items.size(); i += 2) {
        items[i] = Expand(doc, items[i], kKeys);
        const char* key = AsName(items[i]) ? static_cast<const pdfBytes*>(items[i])->Chars() : "";
        if (std::strcmp(key, "ColorSpace") == 0) items[i + 1] = Expand(doc, items[i + 1], kColourSpaces);
        if (std::strcmp(key, "Width") == 0 || std::strcmp(key, "Height") == 0) {
            const pdfObject* v = items[i + 1];
            if (v->tag != kTagInt && v->tag != kTagIndirect) Report(doc, "Number is Expected");
        }
    }
    return NewDict(doc.Arena(), items);
}

ivStatus ReadInlineImage(pdfDocument& doc, pdfParser& source, ObjList& list, std::size_t biIndex) {
    // The parameters stand between "BI" and the "ID" keyword that was appended last.
    std::size_t first = std::min(biIndex + 1, list.items.size());
    std::size_t last = list.items.empty() ? 0 : list.items.size() - 1;
    pdfDict* params =
        InlineImageParameters(doc, {list.items.data() + first, last > first ? last - first : 0});
    std::string data;
    bool ended = ReadImageData(source, data);
    if (!ended) ReportExtraAt(doc, source, "Inline image data is not followed by EI");
    list.items.resize(std::min(biIndex, list.items.size()));
    list.items.push_back(NewInlineImage(doc.Arena(), params, data));
    list.items.push_back(NewBytes(doc.Arena(), kTagKey, "EI"));
    return ended ? kOk : kFail;
}

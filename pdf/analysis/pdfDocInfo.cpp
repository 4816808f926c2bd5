#include "pdf/analysis/pdfDocInfo.h"

#include <string_view>

#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

// Same bound as the accessors put on chains of references to references.
constexpr int kMaxReferenceChain = 64;

// PDFDocEncoding where it departs from Latin-1; 0 marks a code the encoding leaves undefined.
// Such a byte (a control character, say, from an escape like \b) keeps its own code point, so
// that no byte of a string is lost in the text.
constexpr char16_t kDocEncodingLow[0x20] = {
    0,      0,      0,      0,      0,      0,      0,      0,       // 0x00
    0,      0x0009, 0x000A, 0,      0,      0x000D, 0,      0,       // 0x08: TAB, LF, CR only
    0,      0,      0,      0,      0,      0,      0,      0,       // 0x10
    0x02D8, 0x02C7, 0x02C6, 0x02D9, 0x02DD, 0x02DB, 0x02DA, 0x02DC,  // 0x18: spacing accents
};
constexpr char16_t kDocEncodingHigh[0xAE - 0x7F] = {
    0,                                                               // 0x7F
    0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044,  // 0x80
    0x2039, 0x203A, 0x2212, 0x2030, 0x201E, 0x201C, 0x201D, 0x2018,  // 0x88
    0x2019, 0x201A, 0x2122, 0xFB01, 0xFB02, 0x0141, 0x0152, 0x0160,  // 0x90
    0x0178, 0x017D, 0x0131, 0x0142, 0x0153, 0x0161, 0x017E, 0,       // 0x98
    0x20AC, 0x00A1, 0x00A2, 0x00A3, 0x00A4, 0x00A5, 0x00A6, 0x00A7,  // 0xA0: euro, then Latin-1
    0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0,                       // 0xA8; 0xAD undefined
};

char32_t FromDocEncoding(std::uint8_t code) {
    char16_t c = code;
    if (code < 0x20)
        c = kDocEncodingLow[code];
    else if (code >= 0x7F && code < 0xAE)
        c = kDocEncodingHigh[code - 0x7F];
    return c ? c : code;
}

// GetText hands 8-bit strings over one byte per code unit.
std::string DocEncodingToUtf8(std::u16string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (char16_t b : bytes) ivAppendUtf8(out, FromDocEncoding(static_cast<std::uint8_t>(b)));
    return out;
}

// The records whose text GetText gives as UTF-16 rather than byte by byte.
bool HoldsUtf16(const pdfObject* value) {
    if (value->tag == kTagUnicodeString) return true;
    const pdfBytes* b = value->tag == kTagHexString ? AsBytes(value) : nullptr;
    return b && b->size >= 2 && b->Data()[0] == 0xFE && b->Data()[1] == 0xFF;
}

// Follows references inside the dictionary without reporting again: once the document is
// analysed every object is loaded and every missing one that an object refers to reported.
const pdfObject* Fetch(ivPdf& doc, const pdfObject* value) {
    for (int hops = 0; value && value->tag == kTagIndirect; ++hops) {
        if (hops == kMaxReferenceChain) {
            const auto* ref = static_cast<const pdfRef*>(value);
            Report(doc, "Chain of references is too long at %d %d R", static_cast<int>(ref->num), ref->gen);
            return nullptr;
        }
        XrefEntry* entry = doc.LookupEntry(static_cast<const pdfRef*>(value)->Id());
        value = entry ? LoadObject(doc, entry) : nullptr;  // a placeholder loads nothing
    }
    return value;
}

const pdfObject* InfoDictionary(ivPdf& doc) {
    const XrefSection* newest = doc.NewestSection();
    if (!newest || newest->info.Empty()) return nullptr;
    if (newest->info.obj) return Fetch(doc, newest->info.obj);
    // The trailer's own reference is looked up for real: nothing else reports it missing.
    return Fetch(doc, ResolveRef(doc, newest->info.Id()));
}

// The field a key fills: only names spelled exactly as the standard entries count.
std::optional<std::string>* FieldOf(pdfDocInfo& info, const pdfObject* key) {
    const pdfBytes* name = AsName(key);
    if (!name) return nullptr;
    const std::string_view k = name->View();
    if (k == "Title") return &info.title;
    if (k == "Author") return &info.author;
    if (k == "Subject") return &info.subject;
    if (k == "Keywords") return &info.keywords;
    if (k == "Creator") return &info.creator;
    if (k == "Producer") return &info.producer;
    return nullptr;
}

}  // namespace

std::optional<pdfDocInfo> ReadDocInfo(ivPdf& doc) {
    const pdfDict* dict = AsDict(InfoDictionary(doc));
    if (!dict) return std::nullopt;
    pdfDocInfo info;
    // Keys are taken in file order, so of duplicates the last one that reads as text shows;
    // one that does not read leaves whatever an earlier one gave.
    for (const pdfPair& pair : dict->Entries()) {
        std::optional<std::string>* field = FieldOf(info, pair.key);
        if (!field) continue;
        if (std::optional<std::string> text = TextStringToUtf8(doc, pair.value)) *field = std::move(text);
    }
    return info;
}

std::optional<std::string> TextStringToUtf8(ivPdf& doc, const pdfObject* value) {
    const pdfObject* direct = Fetch(doc, value);
    std::u16string units;
    if (!direct || Failed(GetText(doc, direct, &units))) return std::nullopt;
    return HoldsUtf16(direct) ? ivUtf16ToUtf8(units) : DocEncodingToUtf8(units);
}

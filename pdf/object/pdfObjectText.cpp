#include "pdf/object/pdfObjectText.h"

#include <cstring>

#include "platform/ivFormat.h"

namespace {

constexpr int kMaxTextDepth = 32;

std::string StringText(const pdfBytes* s) {
    bool plain = true;
    for (std::uint32_t i = 0; i < s->size && plain; ++i) plain = s->Data()[i] >= 32 && s->Data()[i] != ')';
    std::string out = "(";
    if (plain) return out.append(s->View()).append(")");
    // Deliberate: the escape is a solidus with three octal digits, not a backslash.
    for (std::uint32_t i = 0; i < s->size; ++i) {
        std::uint8_t b = s->Data()[i];
        if (b < 32 || b == ')')
            out += ivFormat("/%03o", b);
        else
            out += static_cast<char>(b);
    }
    return out + ")";
}

void AppendValue(std::string& out, const pdfObject* obj, int depth) {
    if (depth > kMaxTextDepth) {
        out += "...";
        return;
    }
    if (const pdfArray* a = AsArray(obj)) {
        out += "[";
        for (std::uint32_t i = 0; i < a->count; ++i) {
            if (i) out += ' ';
            AppendValue(out, a->Items()[i], depth + 1);
        }
        out += "]";
        return;
    }
    const pdfObject* dictObj = obj;
    if (const pdfStream* s = AsStream(obj)) dictObj = s->dict;
    if (const pdfDict* d = AsDict(dictObj)) {
        out += "<<";
        for (const pdfPair& p : d->Entries()) {
            out += ' ';
            AppendValue(out, p.key, depth + 1);
            out += ' ';
            AppendValue(out, p.value, depth + 1);
        }
        out += " >>";
        if (AsStream(obj)) out += " stream";
        return;
    }
    out += TokenText(obj);
}

}  // namespace

std::string HexText(const std::uint8_t* bytes, std::size_t size) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(size * 2);
    for (std::size_t i = 0; i < size; ++i) {
        out += kDigits[bytes[i] >> 4];
        out += kDigits[bytes[i] & 15];
    }
    return out;
}

std::string TokenText(const pdfObject* obj) {
    if (!obj) return "*";
    switch (obj->tag) {
        case kTagNull:
            return "null";
        case kTagBool:
            return static_cast<const pdfBool*>(obj)->value ? "true" : "false";
        case kTagInt:
            return ivFormat("%d", static_cast<const pdfInt*>(obj)->value);
        case kTagReal:
            return ivFormat("%g", static_cast<const pdfReal*>(obj)->value);
        case kTagString:
            return StringText(static_cast<const pdfBytes*>(obj));
        case kTagHexString: {
            const auto* h = static_cast<const pdfBytes*>(obj);
            return HexText(h->Data(), h->size);
        }
        case kTagUnicodeString: {
            const auto* u = static_cast<const pdfUnicode*>(obj);
            std::string out = "(";
            return out.append(ivUtf16ToUtf8({u->Units(), u->count})).append(")");
        }
        case kTagArray:
            return "[";
        case kTagDictionary:
            return "<<";
        case kTagStream:
            return "stream <<";
        case kTagIndirect: {
            const auto* r = static_cast<const pdfRef*>(obj);
            return ivFormat("%d %d R", static_cast<int>(r->num), r->gen);
        }
        case kTagName:
            return std::string("/").append(static_cast<const pdfBytes*>(obj)->Chars());
        case kTagKey:
            return static_cast<const pdfBytes*>(obj)->Chars();
        case kTagInlineImage:
            return "[inline image]";
        default:
            return "*";
    }
}

std::string ObjectText(const pdfObject* obj) {
    std::string out;
    AppendValue(out, obj, 0);
    return out;
}

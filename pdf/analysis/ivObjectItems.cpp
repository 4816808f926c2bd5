#include "pdf/analysis/ivObjectItems.h"

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfPageLabel.h"
#include "pdf/analysis/pdfPageTree.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectText.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivFormat.h"

namespace {

// References to references are followed this far; a longer chain ends as unresolved.
constexpr int kLongestChain = 64;
constexpr std::size_t kHexBytesShown = 127;

std::string NumberText(const pdfObject* o) {
    if (o->tag == kTagInt) return ivFormat("%d", static_cast<int>(static_cast<const pdfInt*>(o)->value));
    return ivFormat("%g", static_cast<const pdfReal*>(o)->value);
}

bool IsNumber(const pdfObject* o) {
    return o && (o->tag == kTagInt || o->tag == kTagReal);
}

// Bytes of the file as text: UTF-8 as it is, anything else one character a byte.
std::string BytesText(const pdfBytes* b) {
    return ivTextToUtf8(std::string(b->View()));
}

// What the value itself adds to the text (a reference is handled by the caller).
std::string ValueText(const pdfObject* v) {
    switch (v->tag) {
        case kTagNull:
            return "null";
        case kTagBool:
            return static_cast<const pdfBool*>(v)->value ? "true" : "false";
        case kTagInt:
        case kTagReal:
            return NumberText(v);
        case kTagString:
        case kTagKey:
            return BytesText(static_cast<const pdfBytes*>(v));
        case kTagUnicodeString: {
            const auto* u = static_cast<const pdfUnicode*>(v);
            return ivUtf16ToUtf8(std::u16string_view(u->Units(), u->count));
        }
        case kTagName:
            return "/" + BytesText(static_cast<const pdfBytes*>(v));
        case kTagHexString: {
            const auto* b = static_cast<const pdfBytes*>(v);
            return HexText(b->Data(), std::min<std::size_t>(b->size, kHexBytesShown));
        }
        case kTagArray: {
            const auto* a = static_cast<const pdfArray*>(v);
            if (a->count != 4) return {};
            std::string text = ":";
            for (std::uint32_t i = 0; i < 4; ++i) {
                if (!IsNumber(a->Items()[i])) return {};
                text += (i ? "," : "") + NumberText(a->Items()[i]);
            }
            return text;
        }
        case kTagDictionary: {
            const pdfObject* type = DictGet(v, "Type");
            return AsName(type) ? " (" + BytesText(static_cast<const pdfBytes*>(type)) + ")" : std::string();
        }
        case kTagStream:
            return "Stream";
        default:
            return TypeName(v->tag);
    }
}

}  // namespace

int IconOf(const pdfObject* value) {
    if (!value) return kIconOther;
    switch (value->tag) {
        case kTagArray:
            return kIconArray;
        case kTagDictionary: {
            const pdfObject* type = DictGet(value, "Type");
            if (!AsName(type)) return kIconDictionary;
            if (TextEquals(type, "Pages")) return kIconPages;
            if (TextEquals(type, "Page")) return kIconPage;
            if (TextEquals(type, "XObject")) return kIconXObject;
            return kIconDictionary;
        }
        case kTagInt:
        case kTagReal:
            return kIconNumber;
        case kTagStream:
            return kIconStream;
        case kTagString:
        case kTagUnicodeString:
        case kTagKey:
        case kTagName:
            return kIconText;
        default:
            return kIconOther;
    }
}

std::string KeyPrefix(const pdfObject* key) {
    if (!key || (key->tag != kTagName && key->tag != kTagString && key->tag != kTagHexString)) return {};
    return BytesText(static_cast<const pdfBytes*>(key)) + " ";
}

ivItemText ObjectItemText(ivPdf& doc, const std::string& prefix, const pdfObject* value) {
    ivItemText item;
    item.text = prefix;
    const pdfObject* v = value;
    for (int hops = 0; v; ++hops) {
        item.icon = IconOf(v);
        const pdfRef* ref = AsRef(v);
        if (!ref) {
            item.text += ValueText(v);
            item.target = v;
            return item;
        }
        item.text += ivFormat("[%u %u R]", ref->num, static_cast<unsigned>(ref->gen));
        const pdfObject* next = hops < kLongestChain ? ResolveRef(doc, ref->Id()) : nullptr;
        if (!next) {
            item.text += " Unresolved";
            item.unresolved = true;
            return item;
        }
        item.text += " ";
        v = next;
    }
    return item;
}

std::string ObjectItemHint(ivPdf& doc, const pdfObject* value) {
    std::string hint;
    const pdfObject* typed = value;
    if (const pdfRef* ref = AsRef(value)) {
        hint = ivFormat("Indirect Reference %u %u R\n", ref->num, static_cast<unsigned>(ref->gen));
        XrefEntry* entry = doc.LookupEntry(ref->Id());
        if (!entry || (entry->flags & kXrefNotFound)) return hint + "Unresolved reference";
        hint += ivFormat("%s: %u (0x%Xh)", "Location", entry->offset, entry->offset);
        hint += ivFormat("\nSize: %u bytes", entry->length == kUnknownLength ? 0u : entry->length);
        if (const pdfObject* loaded = LoadObject(doc, entry))
            typed = loaded;
        else
            hint += "Unresolved reference";
        hint += "\n";
    }
    return hint + "Type:" + TypeName(typed ? typed->tag : 0);
}

std::string StreamDataHint(const pdfStream& stream) {
    return ivFormat("Stream\n%s: %u (0x%Xh)", "Stream Start", stream.dataPos, stream.dataPos);
}

bool IsExpandable(const pdfObject* value) {
    return value && (value->tag == kTagArray || value->tag == kTagDictionary || value->tag == kTagStream ||
                     value->tag == kTagIndirect);
}

ivItemText CatalogItemText(ivPdf& doc) {
    const ObjId id = doc.CatalogId();
    std::string prefix =
        id.num ? ivFormat("[%u %u R] Catalog", id.num, static_cast<unsigned>(id.gen)) : "Catalog";
    ivItemText item = ObjectItemText(doc, prefix + " ", doc.Catalog());
    item.icon = kIconCatalog;  // forced, whatever the value's own icon
    return item;
}

ivItemText PageItemText(std::size_t index, const pdfPage& page) {
    ivItemText item;
    item.text = PageLabel(index, page);
    item.icon = page.mediaBox.Width() > page.mediaBox.Height() ? kIconLandscapePage : kIconPage;
    item.target = page.Object();
    return item;
}

namespace {

// The live entry of an identifier: none for a placeholder of a missing object.
XrefEntry* LiveEntry(ivPdf& doc, ObjId id) {
    XrefEntry* entry = doc.LookupEntry(id);
    return entry && !(entry->flags & kXrefNotFound) ? entry : nullptr;
}

void FinishMenu(ivPdf& doc, ivObjectMenu& m) {
    m.saveStream = AsStream(m.target) != nullptr;
    if (m.entry) {
        m.locate = true;
        m.linkToEnabled = !doc.ReferrerOrdinals(m.entry).empty();
        m.saveImage = m.entry->role == kRoleImage;
    }
}

}  // namespace

ivObjectMenu ObjectMenuFor(ivPdf& doc, const pdfObject* value) {
    if (const pdfRef* ref = AsRef(value)) {
        ivObjectMenu m = ObjectMenuFor(doc, ref->Id());
        if (!m.target) m.target = value;  // unresolved: the reference itself
        return m;
    }
    ivObjectMenu m;
    m.target = value;
    m.entry = FindEntryByRecord(doc, value);
    FinishMenu(doc, m);
    return m;
}

ivObjectMenu ObjectMenuFor(ivPdf& doc, ObjId id) {
    ivObjectMenu m;
    m.saveObject = true;
    if (XrefEntry* entry = LiveEntry(doc, id)) {
        m.target = LoadObject(doc, entry);
        m.entry = m.target ? entry : nullptr;
    }
    FinishMenu(doc, m);
    return m;
}

#include "pdf/object/pdfAccessors.h"

#include <cmath>

#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

// The longest chain of references to references that is followed.
constexpr int kMaxReferenceChain = 64;

// Deref with the status the accessors return for an unresolvable reference.
const pdfObject* Resolve(pdfDocument& doc, const pdfObject* obj, ivStatus* st) {
    const pdfObject* direct = Deref(doc, obj);
    *st = direct || !obj ? kOk : kNotFound;
    return direct;
}

std::uint32_t RoundToU32(double v) {
    double r = std::round(v);
    if (!(r > -9.0e18 && r < 9.0e18)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(r));
}

}  // namespace

const pdfObject* Deref(pdfDocument& doc, const pdfObject* obj) {
    for (int hops = 0; obj && obj->tag == kTagIndirect; ++hops) {
        const auto* ref = static_cast<const pdfRef*>(obj);
        if (hops == kMaxReferenceChain) {
            Report(doc, "Chain of references is too long at %d %d R", static_cast<int>(ref->num), ref->gen);
            return nullptr;
        }
        obj = ResolveRef(doc, ref->Id());
    }
    return obj;
}

ivStatus GetNumber(pdfDocument& doc, const pdfObject* obj, double* value) {
    ivStatus st = kOk;
    obj = Resolve(doc, obj, &st);
    if (Failed(st)) return st;
    if (obj && obj->tag == kTagInt) {
        *value = static_cast<const pdfInt*>(obj)->value;
        return kRemark;
    }
    if (obj && obj->tag == kTagReal) {
        *value = static_cast<const pdfReal*>(obj)->value;
        return kOk;
    }
    return kWrongType;
}

ivStatus GetIntegerQuiet(pdfDocument& doc, const pdfObject* obj, std::uint32_t* value) {
    ivStatus st = kOk;
    obj = Resolve(doc, obj, &st);
    if (Failed(st)) return st;
    if (obj && obj->tag == kTagInt) {
        *value = static_cast<std::uint32_t>(static_cast<const pdfInt*>(obj)->value);
        return kOk;
    }
    if (obj && obj->tag == kTagReal) {
        *value = RoundToU32(static_cast<const pdfReal*>(obj)->value);
        return kRemark;
    }
    return kWrongType;
}

ivStatus GetInteger(pdfDocument& doc, const pdfObject* obj, std::uint32_t* value) {
    const ivStatus st = GetIntegerQuiet(doc, obj, value);
    if (st == kWrongType) Report(doc, "Number is Expected");
    return st;
}

ivStatus GetIntegerChecked(pdfDocument& doc, const pdfObject* obj, std::uint32_t* value) {
    if (!obj) return kInvalidArg;
    return GetInteger(doc, obj, value);
}

ivStatus GetBool(pdfDocument& doc, const pdfObject* obj, bool* value) {
    ivStatus st = kOk;
    obj = Resolve(doc, obj, &st);
    if (Failed(st)) return st;
    if (obj && obj->tag == kTagBool) {
        *value = static_cast<const pdfBool*>(obj)->value != 0;
        return kOk;
    }
    if (obj && obj->tag == kTagInt) {
        *value = static_cast<const pdfInt*>(obj)->value != 0;
        return kOk;
    }
    Report(doc, "BOOL is Expected");
    return kWrongType;
}

ivStatus GetText(pdfDocument& doc, const pdfObject* obj, std::u16string* text) {
    ivStatus st = kOk;
    obj = Resolve(doc, obj, &st);
    if (Failed(st)) return st;
    text->clear();
    if (!obj) return kInvalidArg;
    if (obj->tag == kTagUnicodeString) {
        const auto* u = static_cast<const pdfUnicode*>(obj);
        text->assign(u->Units(), u->count);
        return kOk;
    }
    const pdfBytes* b = AsBytes(obj);
    if (!b) return kInvalidArg;
    const std::uint8_t* d = b->Data();
    if (obj->tag == kTagHexString && b->size >= 2 && d[0] == 0xFE && d[1] == 0xFF) {
        std::uint32_t units = (b->size - 2) / 2;
        for (std::uint32_t i = 0; i < units; ++i) *text += char16_t(d[2 + 2 * i] << 8 | d[3 + 2 * i]);
        return kOk;
    }
    for (std::uint32_t i = 0; i < b->size; ++i) *text += char16_t(d[i]);
    return kOk;
}

ivStatus SetRef(ObjRef* slot, const pdfObject* obj) {
    *slot = ObjRef{};
    if (!obj) return kInvalidArg;
    if (const pdfRef* ref = AsRef(obj)) {
        slot->num = ref->num;
        slot->gen = ref->gen;
    } else {
        slot->obj = obj;
    }
    return kOk;
}

pdfObject* DictLookup(pdfDocument& doc, const pdfObject* dict, const char* key) {
    const pdfObject* d = Deref(doc, dict);
    if (!AsDict(d)) {
        Report(doc, "Not a dictionary");
        return nullptr;
    }
    return DictGet(d, key);
}

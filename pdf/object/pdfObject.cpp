#include "pdf/object/pdfObject.h"

#include <cstring>

const char* TypeName(int tag) {
    switch (tag) {
        case kTagUnknown:
            return "Unknown";
        case kTagNull:
            return "NULL";
        case kTagBool:
            return "Bool";
        case kTagInt:
            return "Int";
        case kTagReal:
            return "Real";
        case kTagString:
            return "String";
        case kTagHexString:
            return "HEX String";
        case kTagUnicodeString:
            return "UNICODE String";
        case kTagArray:
            return "Array";
        case kTagDictionary:
            return "Dictionary";
        case kTagStream:
            return "Stream";
        case kTagIndirect:
            return "Indirect";
        case kTagName:
            return "Name";
        case kTagKey:
            return "Key";
        case kNodePage:
            return "Page";
        case kNodeTree:
            return "Tree";
        case kNodeCatalog:
            return "Catalog";
        default:
            return "***";
    }
}

namespace {

// Records are 8-aligned so the pointer arrays that follow array and dictionary heads are.
constexpr std::size_t kRecordAlign = 8;

template <class T>
T* NewRecord(ivArena& arena, pdfTag tag, std::size_t trailing = 0) {
    void* raw = arena.Allocate(sizeof(T) + trailing, kRecordAlign);
    T* rec = ::new (raw) T{};
    rec->tag = tag;
    return rec;
}

}  // namespace

pdfObject* NewNull(ivArena& arena) {
    return NewRecord<pdfObject>(arena, kTagNull);
}

pdfBool* NewBool(ivArena& arena, bool value) {
    auto* r = NewRecord<pdfBool>(arena, kTagBool);
    r->value = value ? 1 : 0;
    return r;
}

pdfInt* NewInt(ivArena& arena, std::int32_t value) {
    auto* r = NewRecord<pdfInt>(arena, kTagInt);
    r->value = value;
    return r;
}

pdfReal* NewReal(ivArena& arena, double value) {
    auto* r = NewRecord<pdfReal>(arena, kTagReal);
    r->value = value;
    return r;
}

pdfBytes* NewBytes(ivArena& arena, pdfTag tag, std::span<const std::uint8_t> bytes) {
    auto* r = NewRecord<pdfBytes>(arena, tag, bytes.size() + 1);
    r->size = static_cast<std::uint32_t>(bytes.size());
    auto* out = reinterpret_cast<std::uint8_t*>(r + 1);
    if (!bytes.empty()) std::memcpy(out, bytes.data(), bytes.size());
    out[bytes.size()] = 0;
    return r;
}

pdfBytes* NewBytes(ivArena& arena, pdfTag tag, std::string_view bytes) {
    return NewBytes(arena, tag, std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

pdfUnicode* NewUnicode(ivArena& arena, std::span<const char16_t> units) {
    auto* r = NewRecord<pdfUnicode>(arena, kTagUnicodeString, (units.size() + 1) * sizeof(char16_t));
    r->count = static_cast<std::uint32_t>(units.size());
    auto* out = reinterpret_cast<char16_t*>(r + 1);
    if (!units.empty()) std::memcpy(out, units.data(), units.size() * sizeof(char16_t));
    out[units.size()] = 0;
    return r;
}

pdfArray* NewArray(ivArena& arena, std::span<pdfObject* const> items) {
    auto* r = NewRecord<pdfArray>(arena, kTagArray, items.size() * sizeof(pdfObject*));
    r->count = static_cast<std::uint32_t>(items.size());
    if (!items.empty()) std::memcpy(reinterpret_cast<pdfObject**>(r + 1), items.data(), items.size_bytes());
    return r;
}

pdfDict* NewDict(ivArena& arena, std::span<pdfObject* const> items) {
    std::size_t pairs = items.size() / 2;
    auto* r = NewRecord<pdfDict>(arena, kTagDictionary, pairs * sizeof(pdfPair));
    r->count = static_cast<std::uint32_t>(pairs);
    auto* out = reinterpret_cast<pdfPair*>(r + 1);
    for (std::size_t i = 0; i < pairs; ++i) out[i] = {items[2 * i], items[2 * i + 1]};
    return r;
}

pdfStream* NewStream(ivArena& arena, pdfObject* dict, std::uint32_t dataPos, XrefEntry* entry) {
    auto* r = NewRecord<pdfStream>(arena, kTagStream);
    r->dataPos = dataPos;
    r->dict = dict;
    r->entry = entry;
    r->objStmIndex = nullptr;
    return r;
}

pdfRef* NewRef(ivArena& arena, std::uint32_t num, std::uint16_t gen) {
    auto* r = NewRecord<pdfRef>(arena, kTagIndirect);
    r->num = num;
    r->gen = gen;
    return r;
}

std::size_t RecordSize(const pdfObject* obj) {
    if (!obj) return 0;
    switch (obj->tag) {
        case kTagNull:
            return 1;
        case kTagBool:
            return 2;
        case kTagInt:
            return 5;
        case kTagReal:
            return 9;
        case kTagString:
        case kTagHexString:
        case kTagName:
        case kTagKey:
            return static_cast<const pdfBytes*>(obj)->size + 6;
        case kTagUnicodeString:
            return 2 * std::size_t(static_cast<const pdfUnicode*>(obj)->count) + 7;
        case kTagArray: {
            auto n = static_cast<const pdfArray*>(obj)->count;
            return n ? 8 * std::size_t(n) + 5 : 13;
        }
        case kTagDictionary: {
            auto n = static_cast<const pdfDict*>(obj)->count;
            return n ? 16 * std::size_t(n) + 5 : 21;
        }
        case kTagStream:
            return 37;
        case kTagIndirect:
            return 7;
        default:
            return 0;
    }
}

const pdfBytes* AsBytes(const pdfObject* o) {
    if (!o) return nullptr;
    switch (o->tag) {
        case kTagString:
        case kTagHexString:
        case kTagName:
        case kTagKey:
            return static_cast<const pdfBytes*>(o);
        default:
            return nullptr;
    }
}

const pdfBytes* AsTextValued(const pdfObject* o) {
    if (!o) return nullptr;
    switch (o->tag) {
        case kTagString:
        case kTagHexString:
        case kTagName:
            return static_cast<const pdfBytes*>(o);
        default:
            return nullptr;
    }
}

bool TextEquals(const pdfObject* o, const char* text) {
    const pdfBytes* b = AsTextValued(o);
    return b && std::strcmp(b->Chars(), text) == 0;
}

pdfObject* DictGet(const pdfObject* dict, const char* key) {
    const pdfDict* d = AsDict(dict);
    if (!d) return nullptr;
    // strcmp semantics (a name with an embedded 0 matches up to it), without strcmp per pair.
    const std::size_t length = std::strlen(key);
    for (const pdfPair& p : d->Entries()) {
        const pdfBytes* k = AsName(p.key);
        if (!k || k->size < length || k->Chars()[length] != '\0' || k->Chars()[0] != key[0]) continue;
        if (std::memcmp(k->Chars(), key, length) == 0) return p.value;
    }
    return nullptr;
}

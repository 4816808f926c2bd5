#pragma once
#include <compare>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/ivArena.h"

// Type tags of object records. The analysis nodes (256 and up) share the numbering but never
// occur as record tags.
enum pdfTag : std::uint8_t {
    kTagUnknown = 0,
    kTagNull = 1,
    kTagBool = 2,
    kTagInt = 3,
    kTagReal = 4,
    kTagString = 5,
    kTagHexString = 6,
    kTagUnicodeString = 7,
    kTagArray = 8,
    kTagDictionary = 9,
    kTagStream = 10,
    kTagIndirect = 11,
    kTagName = 12,
    kTagKey = 13,
    kTagInlineImage = 14,
};
constexpr int kNodePage = 256;
constexpr int kNodeTree = 257;
constexpr int kNodeCatalog = 258;

// Display name of a tag as every view prints it ("Int", "HEX String", "***" for unknown ones).
const char* TypeName(int tag);

// Object identifier, printed "%d %d R"; ordered by number, then generation.
struct ObjId {
    std::uint32_t num = 0;
    std::uint16_t gen = 0;
    friend auto operator<=>(const ObjId&, const ObjId&) = default;
};

struct XrefEntry;
struct ObjStmIndex;

// Records live in the document's arena and are never freed one by one. Variable-length
// content (bytes, code units, element pointers, pairs) follows the fixed part directly.
struct pdfObject {
    std::uint8_t tag;
};

struct pdfBool : pdfObject {
    std::uint8_t value;
};

struct pdfInt : pdfObject {
    std::int32_t value;
};

struct pdfReal : pdfObject {
    double value;
};

// String, HEX String, Name and Key: `size` bytes, then a 0 byte that is not counted.
struct pdfBytes : pdfObject {
    std::uint32_t size;
    const char* Chars() const { return reinterpret_cast<const char*>(this + 1); }
    const std::uint8_t* Data() const { return reinterpret_cast<const std::uint8_t*>(this + 1); }
    std::string_view View() const { return {Chars(), size}; }
};

// UNICODE String: `count` UTF-16 code units in machine order, then a 0 unit.
struct pdfUnicode : pdfObject {
    std::uint32_t count;
    const char16_t* Units() const { return reinterpret_cast<const char16_t*>(this + 1); }
};

struct pdfArray : pdfObject {
    std::uint32_t count;
    pdfObject* const* Items() const { return reinterpret_cast<pdfObject* const*>(this + 1); }
    std::span<pdfObject* const> Elements() const { return {Items(), count}; }
};

struct pdfPair {
    pdfObject* key;
    pdfObject* value;
};

// Keys are normally Names, but whatever stood in a key position is kept; pairs keep file
// order and duplicates.
struct pdfDict : pdfObject {
    std::uint32_t count;
    const pdfPair* Pairs() const { return reinterpret_cast<const pdfPair*>(this + 1); }
    std::span<const pdfPair> Entries() const { return {Pairs(), count}; }
};

struct pdfStream : pdfObject {
    std::uint32_t dataPos;     // first data byte within the container it was read from
    pdfObject* dict;           // the stream's dictionary record
    XrefEntry* entry;          // the entry it was read for, or null
    ObjStmIndex* objStmIndex;  // built on first use when this is an object stream; not owned
};

struct pdfRef : pdfObject {
    std::uint16_t gen;
    std::uint32_t num;
    ObjId Id() const { return {num, gen}; }
};

// Reference-or-direct slot of a trailer value: an identifier for a reference, the record
// for a direct value; empty when neither.
struct ObjRef {
    std::uint32_t num = 0;
    std::uint16_t gen = 0;
    const pdfObject* obj = nullptr;
    bool Empty() const { return num == 0 && gen == 0 && obj == nullptr; }
    bool IsRef() const { return obj == nullptr && !Empty(); }
    ObjId Id() const { return {num, gen}; }
};

// Record constructors; all allocate from the arena (std::bad_alloc when memory runs out).
pdfObject* NewNull(ivArena& arena);
pdfBool* NewBool(ivArena& arena, bool value);
pdfInt* NewInt(ivArena& arena, std::int32_t value);
pdfReal* NewReal(ivArena& arena, double value);
pdfBytes* NewBytes(ivArena& arena, pdfTag tag, std::span<const std::uint8_t> bytes);
pdfBytes* NewBytes(ivArena& arena, pdfTag tag, std::string_view bytes);
pdfUnicode* NewUnicode(ivArena& arena, std::span<const char16_t> units);
pdfArray* NewArray(ivArena& arena, std::span<pdfObject* const> items);
// Pairs are items (0,1), (2,3), …; an odd last item is left out.
pdfDict* NewDict(ivArena& arena, std::span<pdfObject* const> items);
pdfStream* NewStream(ivArena& arena, pdfObject* dict, std::uint32_t dataPos, XrefEntry* entry);
pdfRef* NewRef(ivArena& arena, std::uint32_t num, std::uint16_t gen);

// Size of a record as the memory accounting counts it (the packed layout).
std::size_t RecordSize(const pdfObject* obj);

// Checked downcasts: null when the record is null or of another type.
inline const pdfDict* AsDict(const pdfObject* o) {
    return o && o->tag == kTagDictionary ? static_cast<const pdfDict*>(o) : nullptr;
}
inline const pdfArray* AsArray(const pdfObject* o) {
    return o && o->tag == kTagArray ? static_cast<const pdfArray*>(o) : nullptr;
}
inline const pdfStream* AsStream(const pdfObject* o) {
    return o && o->tag == kTagStream ? static_cast<const pdfStream*>(o) : nullptr;
}
inline pdfStream* AsStream(pdfObject* o) {
    return o && o->tag == kTagStream ? static_cast<pdfStream*>(o) : nullptr;
}
inline const pdfRef* AsRef(const pdfObject* o) {
    return o && o->tag == kTagIndirect ? static_cast<const pdfRef*>(o) : nullptr;
}
inline const pdfBytes* AsName(const pdfObject* o) {
    return o && o->tag == kTagName ? static_cast<const pdfBytes*>(o) : nullptr;
}
// String, HEX String, Name or Key.
const pdfBytes* AsBytes(const pdfObject* o);
// String, HEX String or Name: the types a literal name is compared with.
const pdfBytes* AsTextValued(const pdfObject* o);

// True when `o` is a String, HEX String or Name whose bytes up to the first 0 equal `text`.
bool TextEquals(const pdfObject* o, const char* text);

// First value whose key is a Name equal to `key` (linear scan, first match wins), or null.
pdfObject* DictGet(const pdfObject* dict, const char* key);

#pragma once
#include <cstdint>
#include <map>
#include <vector>

#include "pdf/object/pdfObject.h"

// Entry flags.
constexpr std::uint8_t kXrefCompressed = 2;  // stored in an object stream
constexpr std::uint8_t kXrefNotFound = 4;    // placeholder for an object looked up and not found
constexpr std::uint32_t kUnknownLength = 0xFFFFFFFFu;

// One in-use object of a cross-reference section. Entries live in the document's arena.
struct XrefEntry {
    pdfObject* object = nullptr;  // the loaded record, or null
    std::uint32_t num = 0;
    std::uint32_t objStm = 0;  // for a compressed object: the object stream's number
    std::uint32_t offset = 0;  // byte offset of "N G obj"; for a compressed object its index
    std::uint32_t length = kUnknownLength;
    std::uint16_t gen = 0;
    std::uint8_t flags = 0;
    std::uint8_t role = 0;
    bool loaded = false;   // read once (the record may still be null for an empty body)
    bool loading = false;  // being read right now
    std::uint32_t ordinal = 0;  // place among all entries of the document, in creation order

    ObjId Id() const { return {num, gen}; }
    bool Compressed() const { return flags & kXrefCompressed; }
};

// One classic table or cross-reference stream with its trailer values.
struct XrefSection {
    std::uint32_t size = 0;
    std::uint32_t prev = 0;
    std::uint32_t offset = 0;
    std::uint32_t xrefStm = 0;
    ObjRef root, encrypt, info, id;
    pdfStream* xrefStream = nullptr;  // null for a classic table
    ObjId xrefStreamId;               // the stream's own identifier, from its object header

    // Sorted by object number, then generation, once the section has been read; an id that
    // occurs twice keeps both entries in reading order and lookups find the first.
    std::vector<XrefEntry*> entries;
    // Placeholders of objects that were looked up and not found anywhere; only the newest
    // section gets them. Kept apart so adding one never shifts the sorted entries.
    std::map<ObjId, XrefEntry*> missing;
    bool hasList = false;  // false until the section is read: no placeholders go to it

    XrefEntry* Find(ObjId want) const;
    void SortEntries();
    std::size_t EntryCount() const { return entries.size() + missing.size(); }
    // Visits entries and placeholders together in entry order.
    template <class Fn>
    void ForEachEntry(Fn&& fn) const;
};

template <class Fn>
void XrefSection::ForEachEntry(Fn&& fn) const {
    auto m = missing.begin();
    for (XrefEntry* e : entries) {
        for (; m != missing.end() && m->first < e->Id(); ++m) fn(m->second);
        fn(e);
    }
    for (; m != missing.end(); ++m) fn(m->second);
}

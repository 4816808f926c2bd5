#include "pdf/object/pdfObjectAccess.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "pdf/decode/ivDecrypt.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjStmPrefetch.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"
#include "platform/ivMemStream.h"

namespace {

// Loads nested inside loads (an object stream kept in another object stream, …) stop here.
constexpr int kMaxLoadNesting = 32;

// Marks an entry as being read for the length of a load, so a load that needs the object
// it is reading stops instead of recursing.
class LoadGuard {
public:
    LoadGuard(pdfDocument& doc, XrefEntry* entry) : m_doc(doc), m_entry(entry) {
        m_ok = !m_doc.IsLoading(entry) && m_doc.LoadDepth() < kMaxLoadNesting;
        if (m_ok) m_doc.BeginLoad(entry);
    }
    ~LoadGuard() {
        if (m_ok) m_doc.EndLoad(m_entry);
    }
    LoadGuard(const LoadGuard&) = delete;
    LoadGuard& operator=(const LoadGuard&) = delete;
    bool Ok() const { return m_ok; }

private:
    pdfDocument& m_doc;
    XrefEntry* m_entry;
    bool m_ok;
};

struct TypeRole {
    const char* type;
    std::uint8_t role;
};
constexpr TypeRole kStreamTypeRoles[] = {
    {"ObjStm", kRoleObjectStream},
    {"Metadata", kRoleMetadata},
    {"XRef", kRoleXrefStream},
    {"EmbeddedFile", kRoleEmbeddedFile},
    {"3D", kRole3D},
};

void CheckStreamRole(pdfDocument& doc, pdfStream* stream, XrefEntry* entry) {
    const pdfObject* type = DictLookup(doc, stream->dict, "Type");
    if (AsTextValued(type)) {
        for (const TypeRole& tr : kStreamTypeRoles)
            if (TextEquals(type, tr.type)) SetAccessRole(doc, entry, tr.role);
    }
    if (entry->role == 0 && TextEquals(DictLookup(doc, stream->dict, "Subtype"), "Image"))
        entry->role = kRoleImage;
}

// A direct Length that can't be right (an extra check); the data is read up to the end of
// the file whatever it says. An indirect Length is looked at only when the data is read.
void CheckStreamLength(pdfDocument& doc, const pdfStream* stream) {
    if (!doc.ExtraChecks()) return;
    const pdfObject* length = DictGet(stream->dict, "Length");
    if (!length || length->tag != kTagInt) return;
    const std::int64_t n = static_cast<const pdfInt*>(length)->value;
    if (n < 0)
        ReportExtra(doc, "Stream Length %lld is not valid", static_cast<long long>(n));
    else if (stream->dataPos + n > static_cast<std::int64_t>(doc.FileSize()))
        ReportExtra(doc, "Stream Length %lld goes beyond the end of the file", static_cast<long long>(n));
}

// Builds the index of an object stream; false when the stream cannot serve as one.
bool BuildObjStmIndex(pdfDocument& doc, pdfStream* stream);

}  // namespace

void SetAccessRole(pdfDocument& doc, XrefEntry* entry, std::uint8_t role) {
    if (entry->role == 0)
        entry->role = role;
    else if (entry->role != role)
        Report(doc, "%d %d R Used as something else already", static_cast<int>(entry->num), entry->gen);
}

pdfObject* ResolveRef(pdfDocument& doc, ObjId id) {
    ivObjIDScope scope(doc.Control(), id.num, id.gen, "Reading Object");
    XrefEntry* entry = FindEntry(doc, id);
    return entry ? LoadObject(doc, entry) : nullptr;
}

XrefEntry* FindEntry(pdfDocument& doc, ObjId id) {
    if (XrefEntry* e = doc.LookupEntry(id)) return e->flags & kXrefNotFound ? nullptr : e;
    XrefSection* newest = doc.NewestSection();
    if (newest && newest->hasList) {
        XrefEntry* placeholder = doc.NewEntry();
        placeholder->num = id.num;
        placeholder->gen = id.gen;
        placeholder->flags = kXrefNotFound;
        newest->missing.emplace(id, placeholder);
    }
    Report(doc, "Object %d %d R was not found", static_cast<int>(id.num), id.gen);
    return nullptr;
}

XrefEntry* FindEntryByOffset(const pdfDocument& doc, std::uint32_t offset) {
    for (const auto& s : doc.Sections())
        for (XrefEntry* e : s->entries)
            if (!e->Compressed() && e->offset == offset) return e;
    return nullptr;
}

XrefEntry* FindEntryByRecord(const pdfDocument& doc, const pdfObject* record) {
    return record ? doc.EntryOfRecord(record) : nullptr;
}

pdfObject* LoadObject(pdfDocument& doc, XrefEntry* entry) {
    if (!entry || entry->loaded) return entry ? entry->object : nullptr;
    if (entry->flags & kXrefNotFound) return nullptr;
    ivObjIDScope scope(doc.Control(), entry->num, entry->gen, "Accessing Object");
    LoadGuard guard(doc, entry);
    if (!guard.Ok()) {
        if (doc.IsLoading(entry))
            Report(doc, "Object %d %d R is needed to read itself", static_cast<int>(entry->num), entry->gen);
        else
            Report(doc, "Objects are nested too deep to read %d %d R", static_cast<int>(entry->num),
                   entry->gen);
        return nullptr;
    }
    // Strings of this object are decrypted with its own key.
    if (doc.Security()) doc.Security()->SetCurrentObject(entry->Id());
    if (entry->Compressed()) return ReadFromObjectStream(doc, entry);

    if (entry->offset >= doc.FileSize() && doc.ExtraChecks()) {
        // Nothing can ever be read there: say so once and keep the entry as an empty one.
        // Otherwise the header read below finds no data and fails without a word.
        ReportExtra(doc, "Object offset %u is beyond the end of the file",
                    static_cast<unsigned>(entry->offset));
        doc.NoteLoaded(entry);
        return nullptr;
    }
    pdfParser source(&doc, doc.File(), entry->offset);
    ObjId found;
    ObjId expected = entry->Id();
    if (!ReadObjectHeader(doc, source, &expected, found)) return nullptr;
    return ReadObjectBody(doc, source, entry, kParseDecrypt);
}

pdfObject* ReadObjectBody(pdfDocument& doc, pdfParser& source, XrefEntry* entry, unsigned flags) {
    PooledList list(doc.ListPool());
    ParseObjects(doc, source, *list, flags | kParseToEndobj);
    if (list->items.empty()) {
        entry->object = nullptr;
        doc.NoteLoaded(entry);
        return nullptr;
    }
    if (list->items.size() > 1) Report(doc, "Only one object is expected. missed 'endobj'?");
    pdfObject* first = list->items.front();
    // An object's own record is never shared, so that the record leads back to its entry.
    if (pdfSharedRecords::Shareable(first)) first = pdfSharedRecords::Copy(doc.Arena(), first);
    if (list->streamPos == 0) {
        entry->object = first;
        doc.NoteLoaded(entry);
        return first;
    }
    pdfStream* stream = NewStream(doc.Arena(), first, list->streamPos, entry);
    doc.NoteStream(stream);
    CheckStreamRole(doc, stream, entry);
    if (!entry->Compressed()) CheckStreamLength(doc, stream);
    entry->object = stream;
    doc.NoteLoaded(entry);
    return stream;
}

namespace {

bool ReadObjStmHeader(pdfDocument& doc, ObjStmIndex& index) {
    pdfParser source(&doc, index.data, 0);
    std::string num, off;
    std::uint32_t previous = 0;
    for (std::uint32_t i = 0; i < index.n; ++i) {
        if (!ReadToken(source, num) || !ReadToken(source, off)) {
            ReportExtra(doc, "N is %u, but the object stream lists only %u", index.n, i);
            break;
        }
        auto offset = static_cast<std::uint32_t>(TokenToLong(off));
        if (i > 0 && offset <= previous) Report(doc, "Wrong object offset in the stream");
        previous = offset;
        index.items.push_back({static_cast<std::uint32_t>(TokenToLong(num)), 0, index.first + offset});
    }
    index.byNumber.resize(index.items.size());
    for (std::uint32_t i = 0; i < index.byNumber.size(); ++i) index.byNumber[i] = i;
    std::stable_sort(index.byNumber.begin(), index.byNumber.end(), [&](std::uint32_t a, std::uint32_t b) {
        return index.items[a].num < index.items[b].num;
    });
    index.offsets.reserve(index.items.size());
    for (const auto& item : index.items) index.offsets.push_back(item.offset);
    std::sort(index.offsets.begin(), index.offsets.end());
    return true;
}

// Whether the ordinary path would decode `stream` exactly as the prefetcher did: no security
// handler, the data where the prefetcher found it, a direct Length of the same value and the
// one filter FlateDecode, with nothing else that the filter chain would look at.
bool DecodedAsPrefetched(const pdfDocument& doc, const pdfStream* stream, const pdfObjStmPrefetch::Result& r) {
    const pdfDict* d = AsDict(stream->dict);
    if (doc.Security() || !d || stream->dataPos != r.dataPos) return false;
    int filters = 0, lengths = 0;
    for (const pdfPair& p : d->Entries()) {
        const pdfBytes* key = AsName(p.key);
        if (!key) continue;
        const char* k = key->Chars();
        if (std::strcmp(k, "DecodeParms") == 0 || std::strcmp(k, "DL") == 0) return false;
        if (std::strcmp(k, "Filter") == 0) {
            if (!p.value || p.value->tag != kTagName || !TextEquals(p.value, "FlateDecode")) return false;
            ++filters;
        } else if (std::strcmp(k, "Length") == 0) {
            if (!p.value || p.value->tag != kTagInt) return false;
            if (static_cast<const pdfInt*>(p.value)->value != static_cast<std::int64_t>(r.length)) return false;
            ++lengths;
        }
    }
    return filters == 1 && lengths == 1;
}

// Once per document: the object streams decoded so far used up what the file allows.
void ReportObjStmDecodingSpent(pdfDocument& doc) {
    if (doc.FirstObjStmRefusal())
        Report(doc, "Object streams gave more than %llu bytes in all; the rest are not decoded",
               static_cast<unsigned long long>(doc.ObjStmDecodeLimit()));
}

// The decoded data of an object stream, kept on its index while objects are read from it.
bool DecodeObjStmData(pdfDocument& doc, pdfStream* stream, ObjStmIndex& index) {
    const std::uint64_t room = doc.ObjStmDecodeRoom();
    if (room == 0) {
        ReportObjStmDecodingSpent(doc);
        return false;
    }
    if (pdfObjStmPrefetch* prefetch = doc.Prefetch(); prefetch && stream->entry) {
        std::optional<pdfObjStmPrefetch::Result> r = prefetch->Take(stream->entry->num);
        if (r && r->bytes.size() <= room && DecodedAsPrefetched(doc, stream, *r)) {
            doc.NoteObjStmDecoded(r->bytes.size());
            auto data = ivMemStream::Create();
            data->Data() = std::move(r->bytes);
            index.data = data;
            doc.NoteObjStmData(&index);
            return true;
        }
    }
    pdfDecodedStream decoded;
    if (Failed(OpenDecodedStream(doc, stream, nullptr, decoded))) return false;
    auto data = ivMemStream::Create();
    const std::uint64_t limit = std::min(doc.ParsedLimit(), room);
    ivStatus st = ivReadAll(*decoded.stream, data->Data(), limit);
    doc.NoteObjStmDecoded(data->Data().size());
    if (Failed(st)) {
        Report(doc, "Error Handling Object Stream");
        return false;
    }
    if (st == kRemark && limit == room) {
        ReportObjStmDecodingSpent(doc);
    } else if (st == kRemark) {
        Report(doc, "Decoded stream data exceeds %llu bytes; the rest is not read",
               static_cast<unsigned long long>(limit));
    }
    index.data = data;
    doc.NoteObjStmData(&index);
    return true;
}

bool BuildObjStmIndex(pdfDocument& doc, pdfStream* stream) {
    const pdfObject* dict = stream->dict;
    const pdfObject* type = AsDict(dict) ? DictGet(dict, "Type") : nullptr;
    if (dict && !AsDict(dict)) Report(doc, "Not a dictionary");
    if (!AsTextValued(type)) {
        Report(doc, "Object stream 'type' is not found");
        return false;
    }
    if (!TextEquals(type, "ObjStm")) {
        Report(doc, "Object stream 'type' must be 'ObjStm'. However it is %s", AsTextValued(type)->Chars());
        return false;
    }
    ObjStmIndex* index = doc.NewObjStmIndex();
    if (const pdfObject* n = DictGet(dict, "N")) GetInteger(doc, n, &index->n);
    if (const pdfObject* first = DictGet(dict, "First")) GetInteger(doc, first, &index->first);
    stream->objStmIndex = index;

    if (!DecodeObjStmData(doc, stream, *index)) return false;
    return ReadObjStmHeader(doc, *index);
}

}  // namespace

pdfObject* ReadFromObjectStream(pdfDocument& doc, XrefEntry* entry) {
    ivObjIDScope scope(doc.Control(), entry->objStm, 0, "Reading Stream");
    pdfObject* obj = ResolveRef(doc, {entry->objStm, 0});
    if (!obj) {
        Report(doc, "Can't find an object stream");
        return nullptr;
    }
    pdfStream* stream = AsStream(obj);
    if (!stream) {
        Report(doc, "Object stream must be a stream");
        return nullptr;
    }
    if (!stream->objStmIndex && !BuildObjStmIndex(doc, stream)) return nullptr;
    ObjStmIndex& index = *stream->objStmIndex;
    const ObjStmIndex::Item* item = index.FindFirst(entry->num);
    if (!item) {
        ReportExtra(doc, "Object %d %d R is not listed in its object stream", static_cast<int>(entry->num),
                    entry->gen);
        doc.NoteLoaded(entry);
        return nullptr;
    }
    // Data dropped once every object of the stream was read is decoded again on demand.
    if (!index.data && (!index.released || !DecodeObjStmData(doc, stream, index))) return nullptr;

    if (entry->length > 0xFFFFFFFEu) {
        // The object ends where the next object (by offset) starts, or with the data.
        auto size = static_cast<std::uint32_t>(index.data->Size());
        auto next = std::upper_bound(index.offsets.begin(), index.offsets.end(), item->offset);
        std::uint32_t end = next != index.offsets.end() ? std::min(*next, size) : size;
        entry->length = end > item->offset ? end - item->offset : 0;
    }
    if (item->offset >= index.data->Size())
        ReportExtra(doc, "Object %d %d R starts beyond the end of its object stream",
                    static_cast<int>(entry->num), entry->gen);
    const std::uint64_t available = index.data->Size() > item->offset ? index.data->Size() - item->offset : 0;
    if (!doc.TakeObjStmObjectBytes(std::min<std::uint64_t>(entry->length, available))) {
        Report(doc, "Object %d %d R is not read: objects in object streams exceed %llu bytes",
               static_cast<int>(entry->num), entry->gen,
               static_cast<unsigned long long>(doc.ObjStmObjectsLimit()));
        doc.NoteLoaded(entry);
        return nullptr;
    }
    pdfObject* object = nullptr;
    {
        pdfParser source(&doc, index.data, item->offset, entry->length);
        object = ReadObjectBody(doc, source, entry, 0);
    }
    // Each object is read once, so after the last one the decoded data is no longer needed.
    if (++index.objectsRead >= index.items.size()) index.ReleaseData();
    return object;
}

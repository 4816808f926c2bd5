#pragma once
#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "pdf/object/pdfObjList.h"
#include "pdf/object/pdfSharedRecords.h"
#include "pdf/object/pdfXref.h"
#include "platform/ivArena.h"
#include "platform/ivIOControl.h"
#include "platform/ivPtrMap.h"
#include "platform/ivStream.h"

class ivDecrypt;

// Index of one object stream: its decoded data and, per object, number and absolute offset.
struct ObjStmIndex {
    ivRef<ivStream> data;  // a memory stream with the decoded bytes
    std::uint32_t first = 0;
    std::uint32_t n = 0;
    struct Item {
        std::uint32_t num;
        std::uint16_t gen;
        std::uint32_t offset;
    };
    std::vector<Item> items;  // in header order
    // Positions in `items` sorted by number (then position), for first-match lookups.
    std::vector<std::uint32_t> byNumber;
    std::vector<std::uint32_t> offsets;  // every item's offset, ascending
    std::size_t objectsRead = 0;         // objects read from the data so far
    bool released = false;               // the data was dropped; decode it again if needed
    const Item* FindFirst(std::uint32_t num) const;
    void ReleaseData() {
        data.reset();
        released = true;
    }
};

// Everything the object layer knows about one file: the byte source, the arena that owns
// every record, the cross-reference sections and the bookkeeping of loaded objects.
class pdfObjStmPrefetch;

class pdfDocument {
public:
    pdfDocument(ivRef<ivStream> file, ivIOControl* control);
    virtual ~pdfDocument();
    pdfDocument(const pdfDocument&) = delete;
    pdfDocument& operator=(const pdfDocument&) = delete;

    ivIOControl* Control() const { return m_control; }
    // Our own validations beyond the standard report (a Size larger than the objects, a
    // Length past the end of the file, …) are reported only when this is on.
    bool ExtraChecks() const { return m_extraChecks; }
    void SetExtraChecks(bool on) { m_extraChecks = on; }
    const ivRef<ivStream>& File() const { return m_file; }
    std::uint64_t FileSize() const { return m_fileSize; }
    // The most decoded bytes one stream may give where they are held in memory or parsed:
    // 512 MiB and four times the file, so data that inflates without end stays bounded.
    std::uint64_t DecodedLimit() const { return (std::uint64_t(512) << 20) + 4 * m_fileSize; }
    // The same for data parsed into records (object and cross-reference streams).
    std::uint64_t ParsedLimit() const { return (std::uint64_t(64) << 20) + 4 * m_fileSize; }
    // The same for a page's content, whose tokens take up to about 17 bytes of records and
    // lists per byte of data: 64 MiB and half the file.
    std::uint64_t ContentLimit() const { return (std::uint64_t(64) << 20) + m_fileSize / 2; }
    ivArena& Arena() { return m_arena; }
    ObjListPool& ListPool() { return m_lists; }
    pdfSharedRecords& Shared() { return m_shared; }

    // Sections in reading order, newest first.
    const std::vector<std::unique_ptr<XrefSection>>& Sections() const { return m_sections; }
    XrefSection* NewestSection() const { return m_sections.empty() ? nullptr : m_sections.front().get(); }
    XrefSection* AppendSection();
    // Called once the chain of sections is read: lookups then go through one merged index
    // instead of asking every section in turn.
    void FinishSections();

    XrefEntry* NewEntry();
    // The most cross-reference entries the sections may list together: 256 Ki and one for
    // every eight bytes of the file (no real file packs objects tighter), so rows inflated
    // out of a few bytes stay bounded.
    std::uint64_t EntryLimit() const { return (std::uint64_t(1) << 18) + m_fileSize / 8; }
    bool EntriesFull() const { return m_allEntries.size() >= EntryLimit(); }
    // Every entry by its ordinal, placeholders included.
    const std::vector<XrefEntry*>& AllEntries() const { return m_allEntries; }
    // The entry of `id` in the newest section that has it, real or placeholder; null when none has.
    XrefEntry* LookupEntry(ObjId id) const;
    // The ordinal of the entry LookupEntry gives for `id`, without touching the entry, when the
    // table by number answers; false when LookupEntry must be asked.
    bool OrdinalOf(ObjId id, std::uint32_t& ordinal) const;

    void NoteLoaded(XrefEntry* entry);  // entry now holds its (possibly null) record
    // Object streams inflated ahead on a second thread while the objects are read in order.
    pdfObjStmPrefetch* Prefetch() const { return m_prefetch.get(); }
    void SetPrefetch(std::unique_ptr<pdfObjStmPrefetch> prefetch);
    XrefEntry* EntryOfRecord(const pdfObject* record) const;

    // Loads in progress, so that a load that needs the object it is reading can stop.
    bool IsLoading(const XrefEntry* entry) const { return entry->loading; }
    int LoadDepth() const { return m_loadDepth; }
    void BeginLoad(XrefEntry* entry) {
        entry->loading = true;
        ++m_loadDepth;
    }
    void EndLoad(XrefEntry* entry) {
        entry->loading = false;
        --m_loadDepth;
    }

    void NoteStream(pdfStream* stream) { m_streams.push_back(stream); }
    const std::vector<pdfStream*>& Streams() const { return m_streams; }
    ObjStmIndex* NewObjStmIndex();
    // Drops the decoded data of every object stream (it is decoded again if ever needed).
    void ReleaseObjStmData();
    // Notes newly decoded object-stream data; the oldest data beyond a budget is dropped, so
    // memory stays bounded however many object streams are in use at once.
    void NoteObjStmData(ObjStmIndex* index);
    // Objects read out of object streams become records for good: together they may come
    // from 16 MiB and eight times the file's size of decoded data. False, taking nothing,
    // when `bytes` more would go beyond that.
    std::uint64_t ObjStmObjectsLimit() const { return (std::uint64_t(16) << 20) + 8 * m_fileSize; }
    bool TakeObjStmObjectBytes(std::uint64_t bytes);
    // Object streams decoded, again after a release included, may give 64 MiB and sixteen
    // times the file's size in all, so streams that inflate without end cost bounded time.
    std::uint64_t ObjStmDecodeLimit() const { return (std::uint64_t(64) << 20) + 16 * m_fileSize; }
    std::uint64_t ObjStmDecodeRoom() const {
        return ObjStmDecodeLimit() - std::min(m_objStmDecoded, ObjStmDecodeLimit());
    }
    void NoteObjStmDecoded(std::uint64_t bytes) { m_objStmDecoded += bytes; }
    // True the first time only, for one message however many streams are refused.
    bool FirstObjStmRefusal() { return !std::exchange(m_objStmRefused, true); }

    // The standard security handler, once the encryption dictionary has been read; it then
    // decrypts this document's strings and streams.
    ivDecrypt* Security() const { return m_security.get(); }
    bool HasSecurityHandler() const { return m_security != nullptr; }
    ivDecrypt* SetSecurity(std::unique_ptr<ivDecrypt> security);

    std::uint16_t VersionMajor() const { return m_versionMajor; }
    std::uint16_t VersionMinor() const { return m_versionMinor; }
    void SetVersion(std::uint16_t major, std::uint16_t minor) {
        m_versionMajor = major;
        m_versionMinor = minor;
    }

private:
    ivIOControl* m_control;  // not owned; outlives the document
    ivRef<ivStream> m_file;
    std::uint64_t m_fileSize;
    ivArena m_arena;
    ObjListPool m_lists;
    pdfSharedRecords m_shared{m_arena};
    std::vector<std::unique_ptr<XrefSection>> m_sections;
    std::vector<XrefEntry*> m_index;     // newest entry per id, sorted; built by FinishSections
    std::vector<XrefEntry*> m_byNumber;  // lowest-generation entry of m_index per number, when dense
    // The same entries' ordinals (plus one; 0: none) and generations, packed so that a lookup
    // by number does not have to touch the entry itself.
    struct NumberKey {
        std::uint32_t ordinalPlusOne = 0;
        std::uint16_t gen = 0;
    };
    std::vector<NumberKey> m_byNumberKeys;
    bool m_indexed = false;
    std::vector<XrefEntry*> m_allEntries;
    // Records that cannot carry their entry's ordinal themselves (see NoteLoaded).
    ivPtrMap<pdfObject, XrefEntry> m_loaded;
    std::vector<pdfStream*> m_streams;
    std::vector<std::unique_ptr<ObjStmIndex>> m_objStmIndexes;
    std::deque<ObjStmIndex*> m_decodedObjStms;  // holding data, oldest first
    std::uint64_t m_decodedObjStmBytes = 0;
    std::uint64_t m_objStmObjectBytes = 0;
    std::uint64_t m_objStmDecoded = 0;
    bool m_objStmRefused = false;
    std::uint16_t m_versionMajor = 0, m_versionMinor = 0;
    int m_loadDepth = 0;
    bool m_extraChecks = false;
    std::unique_ptr<ivDecrypt> m_security;
    std::unique_ptr<pdfObjStmPrefetch> m_prefetch;
};

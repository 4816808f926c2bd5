#include "pdf/object/pdfDocument.h"

#include "pdf/object/pdfObjStmPrefetch.h"

#include <algorithm>

#include "pdf/decode/ivDecrypt.h"

const ObjStmIndex::Item* ObjStmIndex::FindFirst(std::uint32_t num) const {
    auto it =
        std::lower_bound(byNumber.begin(), byNumber.end(), num,
                         [this](std::uint32_t pos, std::uint32_t want) { return items[pos].num < want; });
    return it != byNumber.end() && items[*it].num == num ? &items[*it] : nullptr;
}

pdfDocument::pdfDocument(ivRef<ivStream> file, ivIOControl* control)
    : m_control(control), m_file(std::move(file)), m_fileSize(m_file ? m_file->Size() : 0) {}

pdfDocument::~pdfDocument() = default;

ivDecrypt* pdfDocument::SetSecurity(std::unique_ptr<ivDecrypt> security) {
    m_security = std::move(security);
    return m_security.get();
}

XrefSection* pdfDocument::AppendSection() {
    m_sections.push_back(std::make_unique<XrefSection>());
    m_indexed = false;
    return m_sections.back().get();
}

void pdfDocument::FinishSections() {
    std::size_t total = 0;
    for (const auto& s : m_sections) total += s->entries.size();
    m_index.clear();
    m_index.reserve(total);
    // Newest sections come first and stable_sort keeps that order among equal ids, so the
    // first of each run is the entry that a newest-first search would find.
    for (const auto& s : m_sections) m_index.insert(m_index.end(), s->entries.begin(), s->entries.end());
    // A single section is sorted already.
    const auto byId = [](const XrefEntry* a, const XrefEntry* b) { return a->Id() < b->Id(); };
    if (!std::is_sorted(m_index.begin(), m_index.end(), byId)) std::stable_sort(m_index.begin(), m_index.end(), byId);
    m_index.erase(std::unique(m_index.begin(), m_index.end(),
                              [](const XrefEntry* a, const XrefEntry* b) { return a->Id() == b->Id(); }),
                  m_index.end());
    // Object numbers are usually dense: then a table by number answers most lookups at once.
    m_byNumber.clear();
    m_byNumberKeys.clear();
    std::uint32_t highest = m_index.empty() ? 0 : m_index.back()->num;
    if (!m_index.empty() && highest < 2 * m_index.size() + 1024) {
        m_byNumber.assign(std::size_t(highest) + 1, nullptr);
        m_byNumberKeys.assign(std::size_t(highest) + 1, NumberKey{});
        for (XrefEntry* e : m_index) {
            if (m_byNumber[e->num]) continue;
            m_byNumber[e->num] = e;
            m_byNumberKeys[e->num] = {e->ordinal + 1, e->gen};
        }
    }
    m_indexed = true;
}

bool pdfDocument::OrdinalOf(ObjId id, std::uint32_t& ordinal) const {
    if (!m_indexed || id.num >= m_byNumberKeys.size()) return false;
    const NumberKey& key = m_byNumberKeys[id.num];
    if (key.ordinalPlusOne == 0 || key.gen != id.gen) return false;
    // A placeholder made before the index was built may hide the entry: LookupEntry decides.
    const XrefSection* newest = NewestSection();
    if (newest && !newest->missing.empty() && newest->missing.count(id)) return false;
    ordinal = key.ordinalPlusOne - 1;
    return true;
}

XrefEntry* pdfDocument::LookupEntry(ObjId id) const {
    if (!m_indexed) {
        for (const auto& s : m_sections)
            if (XrefEntry* e = s->Find(id)) return e;
        return nullptr;
    }
    XrefEntry* real = id.num < m_byNumber.size() ? m_byNumber[id.num] : nullptr;
    if (!real || real->gen != id.gen) {
        auto it = std::lower_bound(m_index.begin(), m_index.end(), id,
                                   [](const XrefEntry* e, ObjId want) { return e->Id() < want; });
        real = it != m_index.end() && (*it)->Id() == id ? *it : nullptr;
    }
    XrefSection* newest = NewestSection();
    // A placeholder in the newest section hides older sections' entries, as a newest-first
    // search would meet it first; entries of the newest section itself come before it.
    if (newest && !newest->missing.empty()) {
        auto m = newest->missing.find(id);
        if (m != newest->missing.end() && !(real && newest->Find(id) == real)) return m->second;
    }
    return real;
}

namespace {

// Most records keep three bytes of padding after their tag; an object's own record keeps its
// entry's ordinal (plus one) there, so a record leads back to its entry without a lookup.
// Records whose second byte holds data (Bool, Indirect) or that are one byte long (NULL) go
// through a map instead.
constexpr std::uint32_t kNoOwnerSlot = 0xFFFFFF;

bool HasOwnerSlot(const pdfObject* o) {
    switch (o->tag) {
        case kTagNull:
        case kTagBool:
        case kTagIndirect: return false;
        default: return true;
    }
}

std::uint32_t ReadOwner(const pdfObject* o) {
    const auto* b = reinterpret_cast<const std::uint8_t*>(o);
    return b[1] | std::uint32_t(b[2]) << 8 | std::uint32_t(b[3]) << 16;
}

void WriteOwner(pdfObject* o, std::uint32_t value) {
    auto* b = reinterpret_cast<std::uint8_t*>(o);
    b[1] = static_cast<std::uint8_t>(value);
    b[2] = static_cast<std::uint8_t>(value >> 8);
    b[3] = static_cast<std::uint8_t>(value >> 16);
}

}  // namespace

bool pdfDocument::TakeObjStmObjectBytes(std::uint64_t bytes) {
    if (bytes > ObjStmObjectsLimit() - m_objStmObjectBytes) return false;
    m_objStmObjectBytes += bytes;
    return true;
}

XrefEntry* pdfDocument::NewEntry() {
    XrefEntry* e = m_arena.New<XrefEntry>();
    e->ordinal = static_cast<std::uint32_t>(m_allEntries.size());
    m_allEntries.push_back(e);
    return e;
}

void pdfDocument::NoteLoaded(XrefEntry* entry) {
    entry->loaded = true;
    if (!entry->object) return;
    if (HasOwnerSlot(entry->object) && entry->ordinal + 1 < kNoOwnerSlot)
        WriteOwner(entry->object, entry->ordinal + 1);
    else
        m_loaded.Set(entry->object, entry);
}

XrefEntry* pdfDocument::EntryOfRecord(const pdfObject* record) const {
    if (HasOwnerSlot(record))
        if (std::uint32_t owner = ReadOwner(record); owner && owner - 1 < m_allEntries.size())
            return m_allEntries[owner - 1];
    return m_loaded.Find(record);
}

void pdfDocument::SetPrefetch(std::unique_ptr<pdfObjStmPrefetch> prefetch) {
    m_prefetch = std::move(prefetch);
}

void pdfDocument::ReleaseObjStmData() {
    for (auto& index : m_objStmIndexes)
        if (index->data) index->ReleaseData();
    m_decodedObjStms.clear();
    m_decodedObjStmBytes = 0;
}

void pdfDocument::NoteObjStmData(ObjStmIndex* index) {
    // As much decoded data as the file is long (plus a little): every object stream of an
    // ordinary file stays decoded until its last object is read, while data that inflates
    // far beyond the file cannot pile up.
    const std::uint64_t kBudget = (std::uint64_t(32) << 20) + m_fileSize;
    // Entries of released indexes are dropped as they come up, with the bytes they held.
    m_decodedObjStms.push_back(index);
    m_decodedObjStmBytes += index->data ? index->data->Size() : 0;
    while (m_decodedObjStmBytes > kBudget && m_decodedObjStms.size() > 1) {
        ObjStmIndex* oldest = m_decodedObjStms.front();
        m_decodedObjStms.pop_front();
        if (!oldest->data) continue;
        m_decodedObjStmBytes -= std::min<std::uint64_t>(m_decodedObjStmBytes, oldest->data->Size());
        oldest->ReleaseData();
    }
}

ObjStmIndex* pdfDocument::NewObjStmIndex() {
    m_objStmIndexes.push_back(std::make_unique<ObjStmIndex>());
    return m_objStmIndexes.back().get();
}

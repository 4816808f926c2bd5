#include "pdf/object/pdfDocument.h"

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
    std::stable_sort(m_index.begin(), m_index.end(),
                     [](const XrefEntry* a, const XrefEntry* b) { return a->Id() < b->Id(); });
    m_index.erase(std::unique(m_index.begin(), m_index.end(),
                              [](const XrefEntry* a, const XrefEntry* b) { return a->Id() == b->Id(); }),
                  m_index.end());
    // Object numbers are usually dense: then a table by number answers most lookups at once.
    m_byNumber.clear();
    std::uint32_t highest = m_index.empty() ? 0 : m_index.back()->num;
    if (!m_index.empty() && highest < 2 * m_index.size() + 1024) {
        m_byNumber.assign(std::size_t(highest) + 1, nullptr);
        for (XrefEntry* e : m_index)
            if (!m_byNumber[e->num]) m_byNumber[e->num] = e;
    }
    m_indexed = true;
    m_loaded.Reserve(m_index.size());
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

void pdfDocument::NoteLoaded(XrefEntry* entry) {
    entry->loaded = true;
    if (entry->object) m_loaded.Set(entry->object, entry);
}

ObjStmIndex* pdfDocument::NewObjStmIndex() {
    m_objStmIndexes.push_back(std::make_unique<ObjStmIndex>());
    return m_objStmIndexes.back().get();
}

#include "pdf/object/pdfSharedRecords.h"

#include <cstring>

namespace {

// Names are short: mix them eight bytes at a time.
std::uint64_t Hash(pdfTag tag, std::string_view bytes) {
    std::uint64_t h = (bytes.size() * 0x9E3779B97F4A7C15ull) ^ tag;
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t w;
        std::memcpy(&w, bytes.data() + i, 8);
        h = (h ^ w) * 0xbf58476d1ce4e5b9ull;
        h ^= h >> 31;
    }
    // The last bytes, read without a call: the last eight (overlapping what was mixed) when
    // there are eight, else two four-byte reads or single bytes.
    std::uint64_t tail = 0;
    const std::size_t n = bytes.size();
    const char* p = bytes.data();
    if (n >= 8 && i < n) {
        std::memcpy(&tail, p + n - 8, 8);
    } else if (n >= 4) {
        std::uint32_t a, b;
        std::memcpy(&a, p, 4);
        std::memcpy(&b, p + n - 4, 4);
        tail = std::uint64_t(a) << 32 | b;
    } else {
        for (std::size_t k = 0; k < n; ++k) tail = tail << 8 | static_cast<std::uint8_t>(p[k]);
    }
    h = (h ^ tail) * 0x94d049bb133111ebull;
    return h ^ (h >> 29);
}

bool Same(const pdfBytes* r, pdfTag tag, std::string_view bytes) {
    return r->tag == tag && r->View() == bytes;
}

}  // namespace

pdfBytes* pdfSharedRecords::Intern(pdfTag tag, std::string_view bytes) {
    if ((m_count + 1) * 2 > m_table.size()) Grow();
    const std::size_t mask = m_table.size() - 1;
    for (std::size_t i = Hash(tag, bytes) & mask;; i = (i + 1) & mask) {
        pdfBytes*& slot = m_table[i];
        if (!slot) {
            slot = NewBytes(m_arena, tag, bytes);
            ++m_count;
            return slot;
        }
        if (Same(slot, tag, bytes)) return slot;
    }
}

void pdfSharedRecords::Grow() {
    std::vector<pdfBytes*> old(m_table.empty() ? 256 : m_table.size() * 2, nullptr);
    old.swap(m_table);
    const std::size_t mask = m_table.size() - 1;
    for (pdfBytes* r : old) {
        if (!r) continue;
        std::size_t i = Hash(static_cast<pdfTag>(r->tag), r->View()) & mask;
        while (m_table[i]) i = (i + 1) & mask;
        m_table[i] = r;
    }
}

pdfInt* pdfSharedRecords::Int(std::int32_t value) {
    if (value < kSmallMin || value > kSmallMax) return NewInt(m_arena, value);
    pdfInt*& slot = m_ints[static_cast<std::size_t>(value - kSmallMin)];
    if (!slot) slot = NewInt(m_arena, value);
    return slot;
}

pdfBool* pdfSharedRecords::Bool(bool value) {
    pdfBool*& slot = m_bools[value ? 1 : 0];
    if (!slot) slot = NewBool(m_arena, value);
    return slot;
}

pdfObject* pdfSharedRecords::Null() {
    if (!m_null) m_null = NewNull(m_arena);
    return m_null;
}

bool pdfSharedRecords::Shareable(const pdfObject* o) {
    switch (o->tag) {
        case kTagName:
        case kTagKey:
        case kTagInt:
        case kTagBool:
        case kTagNull: return true;
        default: return false;
    }
}

pdfObject* pdfSharedRecords::Copy(ivArena& arena, const pdfObject* o) {
    switch (o->tag) {
        case kTagName:
        case kTagKey: {
            const auto* b = static_cast<const pdfBytes*>(o);
            return NewBytes(arena, static_cast<pdfTag>(o->tag), b->View());
        }
        case kTagInt: return NewInt(arena, static_cast<const pdfInt*>(o)->value);
        case kTagBool: return NewBool(arena, static_cast<const pdfBool*>(o)->value != 0);
        case kTagNull: return NewNull(arena);
        default: return const_cast<pdfObject*>(o);
    }
}

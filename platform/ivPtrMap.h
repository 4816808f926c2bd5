#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

// An open-addressing hash map from pointers to pointers: one pair per slot and no node
// allocations, for maps that grow to millions of entries. Null keys are not allowed.
template <class K, class V>
class ivPtrMap {
public:
    V* Find(const K* key) const {
        if (m_slots.empty()) return nullptr;
        for (std::size_t i = Hash(key) & m_mask;; i = (i + 1) & m_mask) {
            if (m_slots[i].key == key) return m_slots[i].value;
            if (!m_slots[i].key) return nullptr;
        }
    }
    // Inserts or replaces.
    void Set(const K* key, V* value) {
        if ((m_count + 1) * 4 > m_slots.size() * 3) Grow();
        for (std::size_t i = Hash(key) & m_mask;; i = (i + 1) & m_mask) {
            if (!m_slots[i].key) {
                m_slots[i] = {key, value};
                ++m_count;
                return;
            }
            if (m_slots[i].key == key) {
                m_slots[i].value = value;
                return;
            }
        }
    }
    std::size_t Size() const { return m_count; }
    // Makes room for `count` pairs at once instead of growing step by step.
    void Reserve(std::size_t count) {
        std::size_t slots = 64;
        while (slots * 3 < count * 4) slots *= 2;
        if (slots > m_slots.size()) Rehash(slots);
    }

private:
    struct Slot {
        const K* key = nullptr;
        V* value = nullptr;
    };
    static std::size_t Hash(const K* key) {
        auto v = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key));
        v ^= v >> 29;
        v *= 0xbf58476d1ce4e5b9ull;
        return static_cast<std::size_t>(v ^ (v >> 32));
    }
    void Grow() { Rehash(m_slots.empty() ? 64 : m_slots.size() * 2); }
    void Rehash(std::size_t slots) {
        std::vector<Slot> old(slots);
        old.swap(m_slots);
        m_mask = m_slots.size() - 1;
        m_count = 0;
        for (const Slot& s : old)
            if (s.key) Set(s.key, s.value);
    }

    std::vector<Slot> m_slots;
    std::size_t m_mask = 0;
    std::size_t m_count = 0;
};

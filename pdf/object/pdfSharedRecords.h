#pragma once
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "pdf/object/pdfObject.h"

// Records that carry nothing but their value — names, keywords, small integers, booleans and
// null — are made once per document and shared by every container that holds one, since a
// million-object file repeats "/Type", "/Page" or "0" millions of times. A shared record is
// never the top-level record of an object: object access gives those a copy of their own.
class pdfSharedRecords {
public:
    explicit pdfSharedRecords(ivArena& arena) : m_arena(arena) {}

    pdfBytes* Name(std::string_view bytes) { return Intern(kTagName, bytes); }
    pdfBytes* Key(std::string_view bytes) { return Intern(kTagKey, bytes); }
    pdfInt* Int(std::int32_t value);
    pdfBool* Bool(bool value);
    pdfObject* Null();

    // True for records of the kinds that may be shared.
    static bool Shareable(const pdfObject* o);
    // A record of its own with the same value, for a shareable record that stands alone.
    static pdfObject* Copy(ivArena& arena, const pdfObject* o);

private:
    static constexpr std::int32_t kSmallMin = -256, kSmallMax = 4095;

    pdfBytes* Intern(pdfTag tag, std::string_view bytes);
    void Grow();

    ivArena& m_arena;
    std::vector<pdfBytes*> m_table;  // open addressing, power-of-two size
    std::size_t m_count = 0;
    std::array<pdfInt*, kSmallMax - kSmallMin + 1> m_ints{};
    pdfBool* m_bools[2] = {nullptr, nullptr};
    pdfObject* m_null = nullptr;
};

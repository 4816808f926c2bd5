#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "pdf/object/pdfXref.h"

class ivPdf;

// What the search box of the cross-reference view asks for, parsed from its text:
//   "12", "12 0", "12 0 R"   the object 12 (of any generation when none is given)
//   "to 12 0 R"              the objects that refer to 12 0
//   "from 12 0 R"            the objects that 12 0 refers to
//   anything else            a text, found in role names and /Type names, any case
class ivXrefFilter {
public:
    enum class Mode { None = 0, Object = 1, To = 2, From = 3, Text = 5 };

    static ivXrefFilter Parse(ivPdf& doc, std::string_view text);

    Mode GetMode() const { return m_mode; }
    std::uint32_t Number() const { return m_num; }
    bool AnyGeneration() const { return m_anyGen; }
    std::uint16_t Generation() const { return m_gen; }
    const XrefEntry* Target() const { return m_target; }
    const std::string& UpperText() const { return m_upper; }

    // Whether one entry passes (Text mode may report "Not a dictionary" for a stream whose
    // dictionary is none).
    bool Matches(ivPdf& doc, XrefEntry& entry) const;
    // Whether an object item's text contains the searched text (Text mode).
    bool TextMatches(std::string_view itemText) const;

private:
    Mode m_mode = Mode::None;
    std::uint32_t m_num = 0;
    bool m_anyGen = true;
    std::uint16_t m_gen = 0;
    const XrefEntry* m_target = nullptr;  // the object of "to"
    std::string m_upper;
};

// The entries each section shows under a filter: indices into its `entries`, in order, and
// how many there are in all. Worked out from the document's own data: no item is made.
struct ivXrefMatches {
    std::vector<std::vector<std::uint32_t>> rows;  // per section
    std::size_t count = 0;
};
ivXrefMatches FindMatches(ivPdf& doc, const ivXrefFilter& filter);

// Upper case for ASCII letters, as the search compares.
std::string UpperAscii(std::string_view text);

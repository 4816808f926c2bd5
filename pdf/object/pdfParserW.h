#pragma once
#include <cstdint>
#include <string>
#include <string_view>

// A source of UTF-16 code units from a string in memory, with a one-unit push-back: the
// search box of the cross-reference view splits its text with it.
class pdfParserStrW {
public:
    explicit pdfParserStrW(std::u16string_view text) : m_text(text) {}

    // The next unit; false at the end (the unit is then 0).
    bool ReadByte(char16_t& unit) {
        if (m_hasPushBack) {
            m_hasPushBack = false;
            unit = m_pushBack;
            return true;
        }
        if (m_index >= m_text.size()) {
            unit = 0;
            return false;
        }
        unit = m_text[m_index++];
        return true;
    }
    void PushBack(char16_t unit) {
        m_pushBack = unit;
        m_hasPushBack = true;
    }
    bool GetPosition(std::uint32_t& pos) const {
        pos = static_cast<std::uint32_t>(m_index);
        return true;
    }

private:
    std::u16string_view m_text;
    std::size_t m_index = 0;
    bool m_hasPushBack = false;
    char16_t m_pushBack = 0;
};

// The token reader's rules over code units: blanks, CR, LF and TAB separate tokens, and the
// same delimiters stand alone as one-unit tokens.
bool ReadToken(pdfParserStrW& source, std::u16string& token);

#include "cli/cliJson.h"

#include <charconv>
#include <cmath>

#include "platform/ivFormat.h"

std::string JsonQuote(std::string_view text) {
    std::string utf8 = ivTextToUtf8(std::string(text));
    std::string out = "\"";
    for (char ch : utf8) {
        auto c = static_cast<unsigned char>(ch);
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20 || c == 0x7F)
                    out += ivFormat("\\u%04x", c);
                else
                    out += ch;
        }
    }
    return out + "\"";
}

void JsonWriter::BeforeValue() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_first.empty()) {
        if (!m_first.back()) m_out += ',';
        m_first.back() = false;
    }
}

JsonWriter& JsonWriter::BeginObject() {
    BeforeValue();
    m_out += '{';
    m_first.push_back(true);
    return *this;
}

JsonWriter& JsonWriter::EndObject() {
    m_out += '}';
    m_first.pop_back();
    return *this;
}

JsonWriter& JsonWriter::BeginArray() {
    BeforeValue();
    m_out += '[';
    m_first.push_back(true);
    return *this;
}

JsonWriter& JsonWriter::EndArray() {
    m_out += ']';
    m_first.pop_back();
    return *this;
}

JsonWriter& JsonWriter::Key(std::string_view key) {
    BeforeValue();
    m_out += JsonQuote(key);
    m_out += ':';
    m_afterKey = true;
    return *this;
}

JsonWriter& JsonWriter::String(std::string_view text) {
    BeforeValue();
    m_out += JsonQuote(text);
    return *this;
}

JsonWriter& JsonWriter::Number(std::int64_t value) {
    BeforeValue();
    m_out += std::to_string(value);
    return *this;
}

JsonWriter& JsonWriter::Real(double value) {
    if (!std::isfinite(value)) return Null();
    BeforeValue();
    char text[32];
    auto result = std::to_chars(text, text + sizeof text, value);
    m_out.append(text, result.ptr);
    return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
    BeforeValue();
    m_out += value ? "true" : "false";
    return *this;
}

JsonWriter& JsonWriter::Null() {
    BeforeValue();
    m_out += "null";
    return *this;
}

JsonWriter& JsonWriter::StringOrNull(const char* text) {
    return text ? String(text) : Null();
}

#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Writes compact JSON (one line) into a string. Strings given to it are the core's 8-bit
// texts; they are turned into UTF-8 and escaped.
class JsonWriter {
public:
    JsonWriter& BeginObject();
    JsonWriter& EndObject();
    JsonWriter& BeginArray();
    JsonWriter& EndArray();
    JsonWriter& Key(std::string_view key);
    JsonWriter& String(std::string_view text);
    JsonWriter& Number(std::int64_t value);
    // The shortest text that reads back as the same double; null for infinities and NaN.
    JsonWriter& Real(double value);
    JsonWriter& Bool(bool value);
    JsonWriter& Null();
    // A text, or null when `text` is null.
    JsonWriter& StringOrNull(const char* text);

    const std::string& Text() const { return m_out; }

private:
    void BeforeValue();

    std::string m_out;
    std::vector<bool> m_first;  // per open container: no element written yet
    bool m_afterKey = false;
};

// JSON string literal of an 8-bit text (quotes included).
std::string JsonQuote(std::string_view text);

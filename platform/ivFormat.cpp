#include "platform/ivFormat.h"

#include <cstdio>
#include <iterator>

std::string ivVFormat(const char* format, std::va_list args) {
    char buffer[kMaxFormatted + 1];
    int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    if (n < 0) return {};
    return std::string(buffer, std::min<std::size_t>(static_cast<std::size_t>(n), kMaxFormatted));
}

std::string ivFormat(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::string s = ivVFormat(format, args);
    va_end(args);
    return s;
}

std::string ivFormatOne(const std::string& format, const std::string& arg) {
    std::string out;
    std::size_t at = format.find("%s");
    if (at == std::string::npos) return format.substr(0, kMaxFormatted);
    out = format.substr(0, at) + arg + format.substr(at + 2);
    if (out.size() > kMaxFormatted) out.resize(kMaxFormatted);
    return out;
}

namespace {

bool IsValidUtf8(const std::string& s) {
    std::size_t i = 0, n = s.size();
    while (i < n) {
        auto c = static_cast<unsigned char>(s[i]);
        int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
        if (extra < 0 || (extra == 1 && c < 0xC2)) return false;
        if (i + extra >= n && extra > 0) return false;
        std::uint32_t cp = extra ? c & (0x3F >> extra) : c;
        for (int k = 1; k <= extra; ++k) {
            auto d = static_cast<unsigned char>(s[i + k]);
            if ((d & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (d & 0x3F);
        }
        if ((extra == 2 && (cp < 0x800 || (cp >= 0xD800 && cp < 0xE000))) ||
            (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)))
            return false;
        i += extra + 1;
    }
    return true;
}

// Windows-1252 code points of bytes 0x80-0x9F; the undefined ones keep their C1 value.
constexpr char16_t kCp1252High[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

std::string ivTextToUtf8(const std::string& text) {
    if (IsValidUtf8(text)) return text;
    std::string out;
    out.reserve(text.size() + text.size() / 2);
    for (char ch : text) {
        auto b = static_cast<unsigned char>(ch);
        ivAppendUtf8(out, b >= 0x80 && b < 0xA0 ? kCp1252High[b - 0x80] : b);
    }
    return out;
}

void ivAppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string ivUtf16ToUtf8(std::u16string_view units) {
    std::string out;
    out.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t c = units[i];
        const bool high = c >= 0xD800 && c <= 0xDBFF;
        if (high && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF)
            c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
        else if (c >= 0xD800 && c <= 0xDFFF)
            c = 0xFFFD;
        ivAppendUtf8(out, c);
    }
    return out;
}

std::string ivUtf8ToCodePage(const std::string& text) {
    if (!IsValidUtf8(text)) return text;
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        auto c = static_cast<unsigned char>(text[i]);
        int extra = c < 0x80 ? 0 : c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
        char32_t cp = extra ? c & (0x3F >> extra) : c;
        for (int k = 1; k <= extra; ++k) cp = (cp << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        i += extra + 1;
        char byte = '?';
        if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) byte = static_cast<char>(cp);
        for (int k = 0; k < 32; ++k)
            if (kCp1252High[k] == cp) byte = static_cast<char>(0x80 + k);
        out += byte;
    }
    return out;
}

std::string FormatThousands(std::uint64_t value) {
    std::string digits = std::to_string(value);
    std::string out;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
        out += digits[i];
    }
    return out;
}

std::string FormatSizeEx(std::uint64_t bytes) {
    if (bytes < 1024) return FormatThousands(bytes) + " bytes";
    static const char* const kUnits[] = {"KB", "MB", "GB", "TB", "PB", "EB"};
    double value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    // A value that would round up to 1000 is shown in the next unit.
    while (value >= 999.5 && unit + 1 < std::size(kUnits)) {
        value /= 1024;
        ++unit;
    }
    const int decimals = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
    return ivFormat("%.*f %s", decimals, value, kUnits[unit]) + " (" + FormatThousands(bytes) + " bytes)";
}

#pragma once
#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>

// Longest formatted message or scope text; longer ones are cut.
constexpr std::size_t kMaxFormatted = 260;

#if defined(__GNUC__)
#define IV_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define IV_PRINTF(fmt, args)
#endif

// printf-style formatting, cut at 260 characters.
std::string ivFormat(const char* format, ...) IV_PRINTF(1, 2);
std::string ivVFormat(const char* format, std::va_list args) IV_PRINTF(1, 0);

// Formats a single "%s" (or any printf text with one string argument) with `arg`.
std::string ivFormatOne(const std::string& format, const std::string& arg);

// Texts of the core are 8-bit strings in the system code page (Windows-1252). This turns one
// into UTF-8 for output: valid UTF-8 passes unchanged, anything else maps byte by byte.
std::string ivTextToUtf8(const std::string& text);

// UTF-8 text in the system code page (Windows-1252): characters it lacks become '?'. Text
// that is not valid UTF-8 is taken as already 8-bit.
std::string ivUtf8ToCodePage(const std::string& text);

// Appends one code point as UTF-8.
void ivAppendUtf8(std::string& out, char32_t codePoint);
// UTF-16 as UTF-8: surrogate pairs joined, a lone half of a pair as U+FFFD.
std::string ivUtf16ToUtf8(std::u16string_view units);

// A file size for people: "812 bytes" below a kilobyte, else the size in KB, MB, GB or TB
// (units of 1024) to three significant digits followed by the exact count, "1.25 MB
// (1,310,720 bytes)". The status bar and the properties page show the same text.
std::string FormatSizeEx(std::uint64_t bytes);
// Digits in groups of three: 1310720 → "1,310,720".
std::string FormatThousands(std::uint64_t value);

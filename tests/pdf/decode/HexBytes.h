#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Test vectors are written as hex text; spaces are allowed for readability.
inline std::vector<std::uint8_t> FromHex(std::string_view hex) {
    auto nibble = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
    std::vector<std::uint8_t> out;
    int high = -1;
    for (char c : hex) {
        if (c == ' ') continue;
        if (high < 0) {
            high = nibble(c);
        } else {
            out.push_back(static_cast<std::uint8_t>(high << 4 | nibble(c)));
            high = -1;
        }
    }
    return out;
}

inline std::string ToHex(std::span<const std::uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string out;
    for (std::uint8_t b : bytes) {
        out += kDigits[b >> 4];
        out += kDigits[b & 15];
    }
    return out;
}

inline std::span<const std::uint8_t> AsBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

#pragma once
#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

// Reads a fuzz input front to back: fixed-size little-endian numbers, then fields with a
// 16-bit length in front, then the rest. Whatever the input lacks reads as zeros, so every
// input is valid. make_seeds.cpp writes the same layout with FuzzRecordWriter.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return static_cast<std::uint32_t>(Number(4)); }
    std::int32_t I32() { return static_cast<std::int32_t>(U32()); }
    bool Flag() { return Byte() & 1; }

    // A field: a 16-bit length, then as many bytes as there are of it.
    std::string_view Field() {
        const std::size_t want = U16();
        return Take(want);
    }
    std::string_view Rest() { return Take(m_size - m_at); }
    std::size_t Remaining() const { return m_size - m_at; }

private:
    std::uint64_t Number(int bytes) {
        std::uint64_t v = 0;
        for (int i = 0; i < bytes && m_at < m_size; ++i) v |= std::uint64_t(m_data[m_at++]) << (8 * i);
        return v;
    }
    std::string_view Take(std::size_t want) {
        const std::size_t n = std::min(want, m_size - m_at);
        std::string_view out(reinterpret_cast<const char*>(m_data + m_at), n);
        m_at += n;
        return out;
    }

    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

// The writing side of FuzzInput, for seeds.
class FuzzRecordWriter {
public:
    FuzzRecordWriter& Byte(std::uint8_t v) { return Number(v, 1); }
    FuzzRecordWriter& U16(std::uint16_t v) { return Number(v, 2); }
    FuzzRecordWriter& U32(std::uint32_t v) { return Number(v, 4); }
    FuzzRecordWriter& I32(std::int32_t v) { return Number(static_cast<std::uint32_t>(v), 4); }
    FuzzRecordWriter& Field(std::string_view bytes) {
        const std::size_t n = std::min<std::size_t>(bytes.size(), 0xFFFF);
        U16(static_cast<std::uint16_t>(n));
        m_out.append(bytes.substr(0, n));
        return *this;
    }
    FuzzRecordWriter& Rest(std::string_view bytes) {
        m_out.append(bytes);
        return *this;
    }
    const std::string& Bytes() const { return m_out; }

private:
    FuzzRecordWriter& Number(std::uint64_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) m_out += static_cast<char>((v >> (8 * i)) & 0xFF);
        return *this;
    }
    std::string m_out;
};

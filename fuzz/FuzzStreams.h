#pragma once
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "platform/ivMemStream.h"

inline ivRef<ivMemStream> FuzzStream(std::string_view bytes) {
    return ivMemStream::Create(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

// A stream over bytes that does not offer them in one piece and hands them out in reads of at
// most `chunk` bytes, so readers take their buffered and short-read paths.
class FuzzChunkedStream final : public ivStream {
public:
    FuzzChunkedStream(std::string_view bytes, std::uint32_t chunk)
        : m_bytes(bytes), m_chunk(std::max<std::uint32_t>(chunk, 1)) {}

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override {
        const std::uint64_t left = m_pos < m_bytes.size() ? m_bytes.size() - m_pos : 0;
        const auto n = static_cast<std::uint32_t>(std::min<std::uint64_t>({count, m_chunk, left}));
        if (n) std::memcpy(buffer, m_bytes.data() + m_pos, n);
        m_pos += n;
        *read = n;
        return n ? kOk : kRemark;
    }
    ivStatus Write(const void*, std::uint32_t, std::uint32_t* written) override {
        *written = 0;
        return kFail;
    }
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override {
        const std::int64_t base = origin == ivSeekOrigin::Begin ? 0
                                  : origin == ivSeekOrigin::Current
                                      ? static_cast<std::int64_t>(m_pos)
                                      : static_cast<std::int64_t>(m_bytes.size());
        if (offset < -base) return kInvalidArg;
        m_pos = static_cast<std::uint64_t>(base + offset);
        return static_cast<std::int64_t>(m_pos);
    }
    std::uint64_t Position() const override { return m_pos; }
    std::uint64_t Size() const override { return m_bytes.size(); }
    ivStatus SetSize(std::uint64_t) override { return kFail; }

private:
    std::string m_bytes;
    std::uint32_t m_chunk;
    std::uint64_t m_pos = 0;
};

// Reads a decoded stream to its end, at most `limit` bytes: the harness's own bound, so that a
// decoder which streams its output (Flate) is not made to hold more than a fuzz run allows.
inline std::uint64_t FuzzDrain(ivStream& stream, std::uint64_t limit = std::uint64_t(64) << 20) {
    std::uint8_t buffer[16384];
    std::uint64_t total = 0;
    while (total < limit) {
        std::uint32_t got = 0;
        if (Failed(stream.Read(buffer, sizeof buffer, &got)) || got == 0) break;
        total += got;
    }
    return total;
}

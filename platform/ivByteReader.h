#pragma once
#include <array>
#include <cstdint>

#include "platform/ivStream.h"

// Buffered byte-at-a-time reading of a stream for decoders: one virtual Read per 4 KiB
// instead of one per byte. Reading stops at the first failed or empty read.
class ivByteReader {
public:
    explicit ivByteReader(ivStream& stream) : m_stream(stream) {}
    ivByteReader(const ivByteReader&) = delete;
    ivByteReader& operator=(const ivByteReader&) = delete;

    bool ReadByte(std::uint8_t& b) {
        if (m_cur == m_end && !Refill()) return false;
        b = *m_cur++;
        return true;
    }
    // Reads up to `count` bytes; returns how many came.
    std::uint32_t Read(std::uint8_t* out, std::uint32_t count);
    // Bytes handed out so far.
    std::uint64_t Consumed() const { return m_consumed + static_cast<std::uint64_t>(m_cur - m_start); }
    // Status of the read that ended the data: kOk at a plain end, a failure on a read error.
    ivStatus LastStatus() const { return m_status; }

private:
    bool Refill();

    ivStream& m_stream;
    std::array<std::uint8_t, 4096> m_buffer;
    const std::uint8_t* m_start = m_buffer.data();  // where the buffered bytes begin
    std::uint64_t m_consumed = 0;                  // bytes of earlier buffers
    const std::uint8_t* m_cur = m_buffer.data();
    const std::uint8_t* m_end = m_buffer.data();
    ivStatus m_status = kOk;
    bool m_ended = false;
};

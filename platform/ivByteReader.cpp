#include "platform/ivByteReader.h"

#include <algorithm>
#include <cstring>

bool ivByteReader::Refill() {
    if (m_ended) return false;
    std::uint32_t got = 0;
    ivStatus st = m_stream.Read(m_buffer.data(), static_cast<std::uint32_t>(m_buffer.size()), &got);
    if (Failed(st) || got == 0) {
        m_status = Failed(st) ? st : kOk;
        m_ended = true;
        return false;
    }
    m_consumed += static_cast<std::uint64_t>(m_end - m_start);
    m_cur = m_start = m_buffer.data();
    m_end = m_cur + got;
    return true;
}

std::uint32_t ivByteReader::Read(std::uint8_t* out, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        if (m_cur == m_end && !Refill()) break;
        auto n = static_cast<std::uint32_t>(std::min<std::ptrdiff_t>(m_end - m_cur, count - done));
        std::memcpy(out + done, m_cur, n);
        m_cur += n;
        done += n;
    }
    return done;
}

#include "platform/ivMemStream.h"

#include <algorithm>
#include <cstring>

ivRef<ivMemStream> ivMemStream::Create(std::span<const std::uint8_t> bytes) {
    return std::make_shared<ivMemStream>(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

ivStatus ivMemStream::Read(void* buffer, std::uint32_t count, std::uint32_t* read) {
    std::uint64_t avail = m_pos < m_data.size() ? m_data.size() - m_pos : 0;
    auto n = static_cast<std::uint32_t>(std::min<std::uint64_t>(avail, count));
    if (n) std::memcpy(buffer, m_data.data() + m_pos, n);
    m_pos += n;
    if (read) *read = n;
    return n ? kOk : kRemark;
}

ivStatus ivMemStream::Write(const void* buffer, std::uint32_t count, std::uint32_t* written) {
    if (m_pos + count > m_data.size()) m_data.resize(m_pos + count);
    if (count) std::memcpy(m_data.data() + m_pos, buffer, count);
    m_pos += count;
    if (written) *written = count;
    return kOk;
}

void ivMemStream::PutByte(std::uint8_t b) {
    if (m_pos == m_data.size()) {
        m_data.push_back(b);
    } else {
        if (m_pos > m_data.size()) m_data.resize(m_pos);
        m_data[m_pos] = b;
    }
    ++m_pos;
}

std::int64_t ivMemStream::Seek(std::int64_t offset, ivSeekOrigin origin) {
    std::int64_t base = origin == ivSeekOrigin::Current ? static_cast<std::int64_t>(m_pos)
                        : origin == ivSeekOrigin::End   ? static_cast<std::int64_t>(m_data.size())
                                                        : 0;
    std::int64_t target = base + offset;
    if (target < 0) return kInvalidArg;
    m_pos = static_cast<std::uint64_t>(target);
    return target;
}

ivStatus ivMemStream::SetSize(std::uint64_t size) {
    m_data.resize(size);
    if (m_pos > size) m_pos = size;
    return kOk;
}

#include "platform/ivSubStream.h"

#include <algorithm>

ivRef<ivSubStream> ivSubStream::Create(ivRef<ivStream> base, std::uint32_t start, std::uint32_t length) {
    return std::make_shared<ivSubStream>(std::move(base), start, length);
}

ivSubStream::ivSubStream(ivRef<ivStream> base, std::uint32_t start, std::uint32_t length)
    : m_base(std::move(base)), m_start(start), m_length(length) {
    if (length == 0xFFFFFFFFu) {
        std::uint64_t size = m_base->Size();
        m_length =
            size > start ? static_cast<std::uint32_t>(std::min<std::uint64_t>(size - start, 0xFFFFFFFFu)) : 0;
    }
    m_base->Seek(start, ivSeekOrigin::Begin);
}

ivStatus ivSubStream::Read(void* buffer, std::uint32_t count, std::uint32_t* read) {
    std::uint32_t n = std::min(m_length - m_pos, count);
    if (read) *read = 0;
    if (n == 0) return kRemark;
    if (std::int64_t at = m_base->Seek(std::int64_t(m_start) + m_pos, ivSeekOrigin::Begin); at < 0)
        return static_cast<ivStatus>(at);
    std::uint32_t got = 0;
    ivStatus st = m_base->Read(buffer, n, &got);
    m_pos += got;
    if (read) *read = got;
    return st;
}

ivStatus ivSubStream::Write(const void*, std::uint32_t, std::uint32_t* written) {
    if (written) *written = 0;
    return kWrongType;
}

std::int64_t ivSubStream::Seek(std::int64_t offset, ivSeekOrigin origin) {
    std::int64_t target = static_cast<std::int32_t>(offset + (origin == ivSeekOrigin::Current ? m_pos : 0));
    if (target < 0) target = 0;
    if (target > m_length) target = m_length;
    m_base->Seek(std::int64_t(m_start) + target, ivSeekOrigin::Begin);
    m_pos = static_cast<std::uint32_t>(target);
    return target;
}

ivStatus ivSubStream::SetSize(std::uint64_t) {
    return kWrongType;
}

std::span<const std::uint8_t> ivSubStream::Contiguous() const {
    auto whole = m_base->Contiguous();
    if (whole.empty() || m_start >= whole.size()) return {};
    return whole.subspan(m_start, std::min<std::size_t>(m_length, whole.size() - m_start));
}

#include "platform/ivFileWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

ivRef<ivFileWriter> ivFileWriter::Create(const std::filesystem::path& path, std::string* error) {
#ifdef _WIN32
    std::FILE* f = _wfopen(path.c_str(), L"wb");
#else
    std::FILE* f = std::fopen(path.c_str(), "wb");
#endif
    if (!f) {
        if (error) *error = std::strerror(errno);
        return nullptr;
    }
    ivRef<ivFileWriter> w(new ivFileWriter);
    w->m_file = f;
    return w;
}

ivFileWriter::~ivFileWriter() {
    Close();
}

bool ivFileWriter::Close() {
    if (!m_file) return !m_failed;
    m_failed |= std::fclose(m_file) != 0;
    m_file = nullptr;
    return !m_failed;
}

ivStatus ivFileWriter::Read(void*, std::uint32_t, std::uint32_t* read) {
    if (read) *read = 0;
    return kWrongType;
}

ivStatus ivFileWriter::Write(const void* buffer, std::uint32_t count, std::uint32_t* written) {
    std::size_t n = m_file ? std::fwrite(buffer, 1, count, m_file) : 0;
    if (written) *written = static_cast<std::uint32_t>(n);
    m_pos += n;
    m_size = std::max(m_size, m_pos);
    if (n < count) {
        m_failed = true;
        return kFail;
    }
    return kOk;
}

std::int64_t ivFileWriter::Seek(std::int64_t offset, ivSeekOrigin origin) {
    std::int64_t base = origin == ivSeekOrigin::Current ? static_cast<std::int64_t>(m_pos)
                        : origin == ivSeekOrigin::End   ? static_cast<std::int64_t>(m_size)
                                                        : 0;
    std::int64_t target = base + offset;
    if (target < 0 || !m_file || std::fseek(m_file, static_cast<long>(target), SEEK_SET) != 0)
        return kInvalidArg;
    m_pos = static_cast<std::uint64_t>(target);
    return target;
}

ivStatus ivFileWriter::SetSize(std::uint64_t) {
    return kWrongType;
}

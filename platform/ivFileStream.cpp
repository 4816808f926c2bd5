#include "platform/ivFileStream.h"

#include <cerrno>
#include <cstdio>
#include <algorithm>
#include <cstring>

#ifdef _WIN32
// Windows: the C runtime's 64-bit positioned stdio.
struct ivFileStream::Handle {
    std::FILE* file = nullptr;
};

ivRef<ivFileStream> ivFileStream::Open(const std::filesystem::path& path, std::string* error) {
    std::FILE* f = _wfopen(path.c_str(), L"rb");
    if (!f) {
        if (error) *error = std::strerror(errno);
        return nullptr;
    }
    ivRef<ivFileStream> s(new ivFileStream);
    s->m_handle = new Handle{f};
    _fseeki64(f, 0, SEEK_END);
    s->m_size = static_cast<std::uint64_t>(_ftelli64(f));
    _fseeki64(f, 0, SEEK_SET);
    return s;
}

ivFileStream::~ivFileStream() {
    if (m_handle) std::fclose(m_handle->file);
    delete m_handle;
}

ivStatus ivFileStream::ReadDirect(void* buffer, std::uint32_t count, std::uint32_t* read) {
    if (read) *read = 0;
    if (m_pos >= m_size || count == 0) return kRemark;
    _fseeki64(m_handle->file, static_cast<long long>(m_pos), SEEK_SET);
    std::size_t n = std::fread(buffer, 1, count, m_handle->file);
    if (n == 0 && std::ferror(m_handle->file)) {
        m_error = std::strerror(errno);
        std::clearerr(m_handle->file);
        return kFail;
    }
    m_pos += n;
    if (read) *read = static_cast<std::uint32_t>(n);
    return n ? kOk : kRemark;
}
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

struct ivFileStream::Handle {
    int fd = -1;
};

ivRef<ivFileStream> ivFileStream::Open(const std::filesystem::path& path, std::string* error) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (error) *error = std::strerror(errno);
        return nullptr;
    }
    struct stat st {};
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        if (error) *error = S_ISDIR(st.st_mode) ? "Is a directory" : std::strerror(errno);
        ::close(fd);
        return nullptr;
    }
    ivRef<ivFileStream> s(new ivFileStream);
    s->m_handle = new Handle{fd};
    s->m_size = static_cast<std::uint64_t>(st.st_size);
    return s;
}

ivFileStream::~ivFileStream() {
    if (m_handle) ::close(m_handle->fd);
    delete m_handle;
}

ivStatus ivFileStream::ReadDirect(void* buffer, std::uint32_t count, std::uint32_t* read) {
    if (read) *read = 0;
    if (m_pos >= m_size || count == 0) return kRemark;
    std::uint32_t total = 0;
    auto* out = static_cast<unsigned char*>(buffer);
    while (total < count) {
        ssize_t n = ::pread(m_handle->fd, out + total, count - total, static_cast<off_t>(m_pos + total));
        if (n < 0) {
            if (errno == EINTR) continue;
            m_error = std::strerror(errno);
            m_pos += total;
            if (read) *read = total;
            return total ? kOk : kFail;
        }
        if (n == 0) break;
        total += static_cast<std::uint32_t>(n);
    }
    m_pos += total;
    if (read) *read = total;
    return total ? kOk : kRemark;
}
#endif

const ivFileStream::Block* ivFileStream::BlockAt(std::uint64_t pos) {
    const std::uint64_t start = pos & ~std::uint64_t(kBlockSize - 1);
    Block* oldest = &m_blocks[0];
    for (Block& b : m_blocks) {
        if (b.bytes && b.start == start && pos < b.start + b.length) {
            b.lastUse = ++m_uses;
            return &b;
        }
        if (b.lastUse < oldest->lastUse) oldest = &b;
    }
    if (!oldest->bytes) oldest->bytes = std::make_unique<std::uint8_t[]>(kBlockSize);
    const std::uint64_t saved = m_pos;
    m_pos = start;
    oldest->length = 0;
    const ivStatus st = ReadDirect(oldest->bytes.get(), kBlockSize, &oldest->length);
    m_pos = saved;
    oldest->start = start;
    oldest->lastUse = ++m_uses;
    return Succeeded(st) && pos < start + oldest->length ? oldest : nullptr;
}

ivStatus ivFileStream::Read(void* buffer, std::uint32_t count, std::uint32_t* read) {
    if (count >= kBlockSize / 2) return ReadDirect(buffer, count, read);
    if (read) *read = 0;
    if (m_pos >= m_size || count == 0) return kRemark;
    auto* out = static_cast<std::uint8_t*>(buffer);
    std::uint32_t total = 0;
    while (total < count && m_pos < m_size) {
        if (!m_current || m_pos < m_current->start || m_pos >= m_current->start + m_current->length) {
            m_current = BlockAt(m_pos);
            if (!m_current) {
                if (total == 0) return m_error.empty() ? kRemark : kFail;
                break;
            }
        }
        auto n = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(count - total, m_current->start + m_current->length - m_pos));
        std::memcpy(out + total, m_current->bytes.get() + (m_pos - m_current->start), n);
        total += n;
        m_pos += n;
    }
    if (read) *read = total;
    return total ? kOk : kRemark;
}

ivStatus ivFileStream::Write(const void*, std::uint32_t, std::uint32_t* written) {
    if (written) *written = 0;
    return kWrongType;
}

ivStatus ivFileStream::SetSize(std::uint64_t) {
    return kWrongType;
}

std::int64_t ivFileStream::Seek(std::int64_t offset, ivSeekOrigin origin) {
    std::int64_t base = origin == ivSeekOrigin::Current ? static_cast<std::int64_t>(m_pos)
                        : origin == ivSeekOrigin::End   ? static_cast<std::int64_t>(m_size)
                                                        : 0;
    std::int64_t target = base + offset;
    if (target < 0) return kInvalidArg;
    m_pos = static_cast<std::uint64_t>(target);
    return target;
}

#pragma once
#include <filesystem>

#include "platform/ivStream.h"

// A file opened for reading only: Write and SetSize always fail, so nothing that holds
// this stream can change the file.
class ivFileStream final : public ivStream {
public:
    ~ivFileStream() override;
    // Opens `path`; on failure returns null and leaves the reason in `error`.
    static ivRef<ivFileStream> Open(const std::filesystem::path& path, std::string* error = nullptr);

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override;
    ivStatus Write(const void* buffer, std::uint32_t count, std::uint32_t* written) override;
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override;
    std::uint64_t Position() const override { return m_pos; }
    std::uint64_t Size() const override { return m_size; }
    ivStatus SetSize(std::uint64_t size) override;
    std::string ErrorText() const override { return m_error; }

    ivFileStream(const ivFileStream&) = delete;
    ivFileStream& operator=(const ivFileStream&) = delete;

private:
    ivFileStream() = default;
    ivStatus ReadDirect(void* buffer, std::uint32_t count, std::uint32_t* read);
    bool LoadBlock(std::uint64_t start);

    struct Handle;
    Handle* m_handle = nullptr;
    // Small reads (one object at a time) are served from one aligned block, so the file is
    // asked once per block rather than once per object.
    static constexpr std::uint32_t kBlockSize = 64 * 1024;
    std::unique_ptr<std::uint8_t[]> m_block;
    std::uint64_t m_blockStart = 0;
    std::uint32_t m_blockLength = 0;
    std::uint64_t m_size = 0;
    std::uint64_t m_pos = 0;
    std::string m_error;
};

#pragma once
#include <cstdio>
#include <filesystem>

#include "platform/ivStream.h"

// A new file opened for writing (exported images); nothing the analysis reads is ever opened
// this way.
class ivFileWriter final : public ivStream {
public:
    ~ivFileWriter() override;
    // Creates or truncates `path`; null on failure with the reason in `error`.
    static ivRef<ivFileWriter> Create(const std::filesystem::path& path, std::string* error = nullptr);

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override;
    ivStatus Write(const void* buffer, std::uint32_t count, std::uint32_t* written) override;
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override;
    std::uint64_t Position() const override { return m_pos; }
    std::uint64_t Size() const override { return m_size; }
    ivStatus SetSize(std::uint64_t size) override;
    // Flushes and closes; false when a write failed on the way.
    bool Close();

    ivFileWriter(const ivFileWriter&) = delete;
    ivFileWriter& operator=(const ivFileWriter&) = delete;

private:
    ivFileWriter() = default;
    std::FILE* m_file = nullptr;
    std::uint64_t m_pos = 0, m_size = 0;
    bool m_failed = false;
};

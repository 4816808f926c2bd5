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
    // One aligned block of the file as last read.
    struct Block {
        std::unique_ptr<std::uint8_t[]> bytes;
        std::uint64_t start = 0;
        std::uint32_t length = 0;
        std::uint64_t lastUse = 0;
    };

    ivStatus ReadDirect(void* buffer, std::uint32_t count, std::uint32_t* read);
    // The block that holds m_pos, read if none does; null when nothing can be read there.
    const Block* BlockAt(std::uint64_t pos);

    struct Handle;
    Handle* m_handle = nullptr;
    // Small reads (one object at a time) are served from a few aligned blocks, so the file is
    // asked once per block rather than once per object, and reads that go back and forth
    // between two places (an object and the objects it refers to, a read across a block
    // boundary) find both still there.
    static constexpr std::uint32_t kBlockSize = 64 * 1024;
    static constexpr std::size_t kBlocks = 8;
    Block m_blocks[kBlocks];
    const Block* m_current = nullptr;
    std::uint64_t m_uses = 0;
    std::uint64_t m_size = 0;
    std::uint64_t m_pos = 0;
    std::string m_error;
};

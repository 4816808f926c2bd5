#pragma once
#include "platform/ivStream.h"

// A read-only window on a byte range of another stream. Positions and lengths are 32-bit,
// as in the files it reads.
class ivSubStream final : public ivStream {
public:
    // A length of 0xFFFFFFFF means "to the end of the base stream".
    static ivRef<ivSubStream> Create(ivRef<ivStream> base, std::uint32_t start, std::uint32_t length);
    ivSubStream(ivRef<ivStream> base, std::uint32_t start, std::uint32_t length);

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override;
    ivStatus Write(const void* buffer, std::uint32_t count, std::uint32_t* written) override;
    // Deliberate: an end-of-stream origin seeks from the start, as the format's readers expect.
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override;
    std::uint64_t Position() const override { return m_pos; }
    std::uint64_t Size() const override { return m_length; }
    ivStatus SetSize(std::uint64_t size) override;
    std::string ErrorText() const override { return m_base->ErrorText(); }
    std::span<const std::uint8_t> Contiguous() const override;

    std::uint32_t Start() const { return m_start; }

private:
    ivRef<ivStream> m_base;
    std::uint32_t m_start;
    std::uint32_t m_length;
    std::uint32_t m_pos = 0;
};

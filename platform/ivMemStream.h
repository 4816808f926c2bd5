#pragma once
#include <vector>

#include "platform/ivStream.h"

// A growable stream in memory; every decoder writes its output into one.
class ivMemStream final : public ivStream {
public:
    ivMemStream() = default;
    explicit ivMemStream(std::vector<std::uint8_t> data) : m_data(std::move(data)) {}
    static ivRef<ivMemStream> Create() { return std::make_shared<ivMemStream>(); }
    static ivRef<ivMemStream> Create(std::span<const std::uint8_t> bytes);

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override;
    ivStatus Write(const void* buffer, std::uint32_t count, std::uint32_t* written) override;
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override;
    std::uint64_t Position() const override { return m_pos; }
    std::uint64_t Size() const override { return m_data.size(); }
    ivStatus SetSize(std::uint64_t size) override;
    std::span<const std::uint8_t> Contiguous() const override { return m_data; }

    void PutByte(std::uint8_t b);  // appends at the position, like a one-byte Write
    void Rewind() { m_pos = 0; }
    const std::vector<std::uint8_t>& Data() const { return m_data; }
    std::vector<std::uint8_t>& Data() { return m_data; }

private:
    std::vector<std::uint8_t> m_data;
    std::uint64_t m_pos = 0;
};

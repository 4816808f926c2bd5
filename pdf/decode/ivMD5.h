#pragma once
#include "pdf/decode/ivHache.h"

// MD5 as published in RFC 1321.
class ivMD5 final : public ivHache {
public:
    static constexpr std::uint32_t kDigestSize = 16;

    ivMD5() { Init(); }
    ivStatus Init() override;
    ivStatus Update(std::span<const std::uint8_t> data) override;
    std::uint32_t DigestSize() const override { return kDigestSize; }

private:
    void Finish(std::uint8_t* out) override;
    void Compress(std::span<const std::uint8_t, 64> block);

    std::array<std::uint32_t, 4> m_state{};
    std::uint64_t m_bits = 0;  // message length in bits, modulo 2^64 as the padding wants
    std::array<std::uint8_t, 64> m_block{};
    std::size_t m_used = 0;
};

// MD5 of `data` in one call; the security handler's key derivation re-hashes this way.
void Md5(std::span<const std::uint8_t> data, std::uint8_t out[ivMD5::kDigestSize]);

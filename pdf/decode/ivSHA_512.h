#pragma once
#include "pdf/decode/ivHache.h"

// SHA-512 as published in FIPS 180-4; ivSHA_384 reuses it with other initial values and a
// shorter digest.
class ivSHA_512 : public ivHache {
public:
    static constexpr std::uint32_t kDigestSize = 64;
    using State = std::array<std::uint64_t, 8>;

    ivSHA_512();
    ivStatus Init() final;
    ivStatus Update(std::span<const std::uint8_t> data) final;
    std::uint32_t DigestSize() const final { return m_digestSize; }

protected:
    ivSHA_512(const State& initial, std::uint32_t digestSize);

private:
    void Finish(std::uint8_t* out) final;
    void Compress(std::span<const std::uint8_t, 128> block);

    const State& m_initial;  // a constant table of the variant
    std::uint32_t m_digestSize;
    State m_state{};
    // Message length in bits, 128 bits wide as the padding wants.
    std::uint64_t m_bitsHigh = 0, m_bitsLow = 0;
    std::array<std::uint8_t, 128> m_block{};
    std::size_t m_used = 0;
};

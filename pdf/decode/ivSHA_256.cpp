#include "pdf/decode/ivSHA_256.h"

#include <bit>

namespace {

// First 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRound = {
    0x428a2f98u, 0x71374491u, 0xb5c0fbcfu, 0xe9b5dba5u, 0x3956c25bu, 0x59f111f1u, 0x923f82a4u, 0xab1c5ed5u,
    0xd807aa98u, 0x12835b01u, 0x243185beu, 0x550c7dc3u, 0x72be5d74u, 0x80deb1feu, 0x9bdc06a7u, 0xc19bf174u,
    0xe49b69c1u, 0xefbe4786u, 0x0fc19dc6u, 0x240ca1ccu, 0x2de92c6fu, 0x4a7484aau, 0x5cb0a9dcu, 0x76f988dau,
    0x983e5152u, 0xa831c66du, 0xb00327c8u, 0xbf597fc7u, 0xc6e00bf3u, 0xd5a79147u, 0x06ca6351u, 0x14292967u,
    0x27b70a85u, 0x2e1b2138u, 0x4d2c6dfcu, 0x53380d13u, 0x650a7354u, 0x766a0abbu, 0x81c2c92eu, 0x92722c85u,
    0xa2bfe8a1u, 0xa81a664bu, 0xc24b8b70u, 0xc76c51a3u, 0xd192e819u, 0xd6990624u, 0xf40e3585u, 0x106aa070u,
    0x19a4c116u, 0x1e376c08u, 0x2748774cu, 0x34b0bcb5u, 0x391c0cb3u, 0x4ed8aa4au, 0x5b9cca4fu, 0x682e6ff3u,
    0x748f82eeu, 0x78a5636fu, 0x84c87814u, 0x8cc70208u, 0x90befffau, 0xa4506cebu, 0xbef9a3f7u, 0xc67178f2u,
};

std::uint32_t LoadBE32(const std::uint8_t* p) {
    return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 | p[3];
}

}  // namespace

ivStatus ivSHA_256::Init() {
    // First 32 bits of the fractional parts of the square roots of the first 8 primes.
    m_state = {0x6a09e667u, 0xbb67ae85u, 0x3c6ef372u, 0xa54ff53au,
               0x510e527fu, 0x9b05688cu, 0x1f83d9abu, 0x5be0cd19u};
    m_bits = 0;
    m_used = 0;
    return kOk;
}

ivStatus ivSHA_256::Update(std::span<const std::uint8_t> data) {
    m_bits += static_cast<std::uint64_t>(data.size()) << 3;
    Absorb(data, m_block, m_used, [this](std::span<const std::uint8_t, 64> b) { Compress(b); });
    return kOk;
}

void ivSHA_256::Compress(std::span<const std::uint8_t, 64> block) {
    using std::rotr;
    std::array<std::uint32_t, 64> w;
    for (std::size_t t = 0; t < 16; ++t) w[t] = LoadBE32(&block[4 * t]);
    for (std::size_t t = 16; t < 64; ++t) {
        std::uint32_t s0 = rotr(w[t - 15], 7) ^ rotr(w[t - 15], 18) ^ (w[t - 15] >> 3);
        std::uint32_t s1 = rotr(w[t - 2], 17) ^ rotr(w[t - 2], 19) ^ (w[t - 2] >> 10);
        w[t] = s1 + w[t - 7] + s0 + w[t - 16];
    }
    auto [a, b, c, d, e, f, g, h] = m_state;
    for (std::size_t t = 0; t < 64; ++t) {
        std::uint32_t t1 =
            h + (rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25)) + ((e & f) ^ (~e & g)) + kRound[t] + w[t];
        std::uint32_t t2 = (rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const std::array<std::uint32_t, 8> worked = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < 8; ++i) m_state[i] += worked[i];
}

void ivSHA_256::Finish(std::uint8_t* out) {
    const std::uint64_t bits = m_bits;
    // 0x80, zeros up to 56 bytes into a block, then the bit length most significant first.
    std::array<std::uint8_t, 72> pad{0x80};
    std::size_t padLen = (m_used < 56 ? 56 : 120) - m_used;
    for (std::size_t i = 0; i < 8; ++i) pad[padLen + i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
    Update(std::span<const std::uint8_t>(pad.data(), padLen + 8));
    for (std::size_t i = 0; i < kDigestSize; ++i)
        out[i] = static_cast<std::uint8_t>(m_state[i / 4] >> (24 - 8 * (i % 4)));
    Init();
}

#include "pdf/decode/ivMD5.h"

#include <bit>

namespace {

// floor(2^32 * |sin(i)|) for i = 1..64, radians.
constexpr std::array<std::uint32_t, 64> kSine = {
    0xd76aa478u, 0xe8c7b756u, 0x242070dbu, 0xc1bdceeeu, 0xf57c0fafu, 0x4787c62au, 0xa8304613u, 0xfd469501u,
    0x698098d8u, 0x8b44f7afu, 0xffff5bb1u, 0x895cd7beu, 0x6b901122u, 0xfd987193u, 0xa679438eu, 0x49b40821u,
    0xf61e2562u, 0xc040b340u, 0x265e5a51u, 0xe9b6c7aau, 0xd62f105du, 0x02441453u, 0xd8a1e681u, 0xe7d3fbc8u,
    0x21e1cde6u, 0xc33707d6u, 0xf4d50d87u, 0x455a14edu, 0xa9e3e905u, 0xfcefa3f8u, 0x676f02d9u, 0x8d2a4c8au,
    0xfffa3942u, 0x8771f681u, 0x6d9d6122u, 0xfde5380cu, 0xa4beea44u, 0x4bdecfa9u, 0xf6bb4b60u, 0xbebfbc70u,
    0x289b7ec6u, 0xeaa127fau, 0xd4ef3085u, 0x04881d05u, 0xd9d4d039u, 0xe6db99e5u, 0x1fa27cf8u, 0xc4ac5665u,
    0xf4292244u, 0x432aff97u, 0xab9423a7u, 0xfc93a039u, 0x655b59c3u, 0x8f0ccc92u, 0xffeff47du, 0x85845dd1u,
    0x6fa87e4fu, 0xfe2ce6e0u, 0xa3014314u, 0x4e0811a1u, 0xf7537e82u, 0xbd3af235u, 0x2ad7d2bbu, 0xeb86d391u,
};

// Left-rotation amounts: four per round, used in turn.
constexpr std::array<int, 16> kShift = {7, 12, 17, 22, 5, 9, 14, 20, 4, 11, 16, 23, 6, 10, 15, 21};

std::uint32_t LoadLE32(const std::uint8_t* p) {
    return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
           std::uint32_t{p[3]} << 24;
}

void StoreLE32(std::uint32_t v, std::uint8_t* p) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}

}  // namespace

ivStatus ivMD5::Init() {
    m_state = {0x67452301u, 0xefcdab89u, 0x98badcfeu, 0x10325476u};
    m_bits = 0;
    m_used = 0;
    return kOk;
}

ivStatus ivMD5::Update(std::span<const std::uint8_t> data) {
    m_bits += static_cast<std::uint64_t>(data.size()) << 3;
    Absorb(data, m_block, m_used, [this](std::span<const std::uint8_t, 64> b) { Compress(b); });
    return kOk;
}

void ivMD5::Compress(std::span<const std::uint8_t, 64> block) {
    std::array<std::uint32_t, 16> x;
    for (std::size_t i = 0; i < 16; ++i) x[i] = LoadLE32(&block[4 * i]);
    std::uint32_t a = m_state[0], b = m_state[1], c = m_state[2], d = m_state[3];
    // Arguments are evaluated before the rotation of a, b, c and d.
    auto step = [&](std::uint32_t f, std::size_t k, std::size_t i) {
        std::uint32_t t = std::rotl(a + f + x[k] + kSine[i], kShift[i / 16 * 4 + i % 4]);
        a = d;
        d = c;
        c = b;
        b += t;
    };
    // The four rounds differ in their mixing function and in the order they read the words.
    for (std::size_t i = 0; i < 16; ++i) step((b & c) | (~b & d), i, i);
    for (std::size_t i = 16; i < 32; ++i) step((b & d) | (c & ~d), (5 * i + 1) % 16, i);
    for (std::size_t i = 32; i < 48; ++i) step(b ^ c ^ d, (3 * i + 5) % 16, i);
    for (std::size_t i = 48; i < 64; ++i) step(c ^ (b | ~d), 7 * i % 16, i);
    m_state[0] += a;
    m_state[1] += b;
    m_state[2] += c;
    m_state[3] += d;
}

void ivMD5::Finish(std::uint8_t* out) {
    const std::uint64_t bits = m_bits;
    // 0x80, zeros up to 56 bytes into a block, then the bit length least significant first.
    std::array<std::uint8_t, 72> pad{0x80};
    std::size_t padLen = (m_used < 56 ? 56 : 120) - m_used;
    for (std::size_t i = 0; i < 8; ++i) pad[padLen + i] = static_cast<std::uint8_t>(bits >> (8 * i));
    Update(std::span<const std::uint8_t>(pad.data(), padLen + 8));
    for (std::size_t i = 0; i < 4; ++i) StoreLE32(m_state[i], out + 4 * i);
    Init();
}

void Md5(std::span<const std::uint8_t> data, std::uint8_t out[ivMD5::kDigestSize]) {
    ivMD5 md5;
    md5.Update(data);
    std::uint32_t size = ivMD5::kDigestSize;
    md5.Final(out, &size);
}

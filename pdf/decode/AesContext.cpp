#include "pdf/decode/AesContext.h"

#include <algorithm>
#include <bit>

namespace {

// Multiplication by x in GF(2^8) modulo x^8 + x^4 + x^3 + x + 1.
constexpr std::uint8_t XTime(std::uint8_t a) {
    return static_cast<std::uint8_t>((a << 1) ^ (a & 0x80 ? 0x1b : 0));
}

constexpr std::uint8_t Mul(std::uint8_t a, std::uint8_t b) {
    std::uint8_t p = 0;
    for (; b; b >>= 1, a = XTime(a))
        if (b & 1) p ^= a;
    return p;
}

constexpr std::uint32_t Word(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3) {
    return std::uint32_t{b0} << 24 | std::uint32_t{b1} << 16 | std::uint32_t{b2} << 8 | b3;
}

// The S-box and its inverse, and the round tables that fold SubBytes and MixColumns (or their
// inverses) into one lookup per byte. A table entry is the column that byte contributes from
// row 0; rows 1 to 3 use it rotated right by 8, 16 and 24 bits. Words hold row 0 in their top
// byte.
struct Tables {
    std::array<std::uint8_t, 256> sbox{}, invSbox{};
    std::array<std::uint32_t, 256> enc{}, dec{};
};

constexpr Tables MakeTables() {
    // Inverses from powers of the generator 3.
    std::array<std::uint8_t, 256> exp{}, log{};
    std::uint8_t g = 1;
    for (int i = 0; i < 255; ++i) {
        exp[static_cast<std::size_t>(i)] = g;
        log[g] = static_cast<std::uint8_t>(i);
        g = Mul(g, 3);
    }
    Tables t;
    for (std::size_t x = 0; x < 256; ++x) {
        std::uint8_t b = x ? exp[(255 - log[x]) % 255] : 0;
        auto s = static_cast<std::uint8_t>(b ^ std::rotl(b, 1) ^ std::rotl(b, 2) ^ std::rotl(b, 3) ^
                                           std::rotl(b, 4) ^ 0x63);
        t.sbox[x] = s;
        t.invSbox[s] = static_cast<std::uint8_t>(x);
    }
    for (std::size_t x = 0; x < 256; ++x) {
        std::uint8_t s = t.sbox[x], v = t.invSbox[x];
        t.enc[x] = Word(Mul(s, 2), s, s, Mul(s, 3));
        t.dec[x] = Word(Mul(v, 14), Mul(v, 9), Mul(v, 13), Mul(v, 11));
    }
    return t;
}

constexpr Tables kT = MakeTables();
static_assert(kT.sbox[0x00] == 0x63 && kT.sbox[0x53] == 0xed && kT.invSbox[0x63] == 0x00);

constexpr std::uint32_t Byte(std::uint32_t w, int row) {
    return (w >> (24 - 8 * row)) & 0xff;
}

std::uint32_t Load(const std::uint8_t* p) {
    return Word(p[0], p[1], p[2], p[3]);
}

void Store(std::uint32_t w, std::uint8_t* p) {
    for (int row = 0; row < 4; ++row) p[row] = static_cast<std::uint8_t>(Byte(w, row));
}

std::uint32_t SubWord(std::uint32_t w) {
    return Word(kT.sbox[Byte(w, 0)], kT.sbox[Byte(w, 1)], kT.sbox[Byte(w, 2)], kT.sbox[Byte(w, 3)]);
}

// InvMixColumns of one column: dec[] starts with the inverse S-box, which sbox[] undoes.
std::uint32_t InvMixColumn(std::uint32_t w) {
    return kT.dec[kT.sbox[Byte(w, 0)]] ^ std::rotr(kT.dec[kT.sbox[Byte(w, 1)]], 8) ^
           std::rotr(kT.dec[kT.sbox[Byte(w, 2)]], 16) ^ std::rotr(kT.dec[kT.sbox[Byte(w, 3)]], 24);
}

// Blocks are read before the output reaches them only while the output does not run ahead of
// the input.
bool RunsAhead(std::span<const std::uint8_t> in, const std::uint8_t* out) {
    return out > in.data() && out < in.data() + in.size();
}

// One output column of a full round: rows 0 to 3 come from the columns a, b, c and d, which
// ShiftRows (or InvShiftRows) picked.
std::uint32_t EncColumn(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t k) {
    return kT.enc[Byte(a, 0)] ^ std::rotr(kT.enc[Byte(b, 1)], 8) ^ std::rotr(kT.enc[Byte(c, 2)], 16) ^
           std::rotr(kT.enc[Byte(d, 3)], 24) ^ k;
}

std::uint32_t DecColumn(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d, std::uint32_t k) {
    return kT.dec[Byte(a, 0)] ^ std::rotr(kT.dec[Byte(b, 1)], 8) ^ std::rotr(kT.dec[Byte(c, 2)], 16) ^
           std::rotr(kT.dec[Byte(d, 3)], 24) ^ k;
}

// The last round has no MixColumns: S-box bytes only.
std::uint32_t LastColumn(const std::array<std::uint8_t, 256>& box, std::uint32_t a, std::uint32_t b,
                         std::uint32_t c, std::uint32_t d, std::uint32_t k) {
    return Word(box[Byte(a, 0)], box[Byte(b, 1)], box[Byte(c, 2)], box[Byte(d, 3)]) ^ k;
}

}  // namespace

int AesContext::ExpandKey(std::span<const std::uint8_t> key) {
    m_rounds = m_keyLength = 0;
    m_iv.fill(0);
    const std::size_t nk = key.size() / 4;
    if (key.size() != 16 && key.size() != 24 && key.size() != 32) return kAesBadKeyLength;
    const std::size_t rounds = nk + 6, words = 4 * (rounds + 1);
    std::uint32_t* w = m_encKeys.data();
    for (std::size_t i = 0; i < nk; ++i) w[i] = Load(&key[4 * i]);
    std::uint8_t rcon = 1;
    for (std::size_t i = nk; i < words; ++i) {
        std::uint32_t temp = w[i - 1];
        if (i % nk == 0) {
            temp = SubWord(std::rotl(temp, 8)) ^ std::uint32_t{rcon} << 24;
            rcon = XTime(rcon);
        } else if (nk > 6 && i % nk == 4) {
            temp = SubWord(temp);
        }
        w[i] = w[i - nk] ^ temp;
    }
    // The equivalent inverse cipher: round keys in reverse order, InvMixColumns applied to all
    // but the first and last, so decryption runs with the same structure as encryption.
    for (std::size_t r = 0; r <= rounds; ++r) {
        for (std::size_t c = 0; c < 4; ++c) {
            std::uint32_t k = w[4 * (rounds - r) + c];
            m_decKeys[4 * r + c] = r == 0 || r == rounds ? k : InvMixColumn(k);
        }
    }
    m_rounds = rounds;
    m_keyLength = key.size();
    return kAesOk;
}

// ShiftRows: column j of a round takes row r from column j + r.
void AesContext::Encrypt(const std::uint8_t* in, std::uint8_t* out) const {
    const std::uint32_t* rk = m_encKeys.data();
    std::uint32_t s0 = Load(in) ^ rk[0], s1 = Load(in + 4) ^ rk[1], s2 = Load(in + 8) ^ rk[2],
                  s3 = Load(in + 12) ^ rk[3];
    for (std::size_t round = 1; round < m_rounds; ++round) {
        rk += 4;
        const std::uint32_t t0 = EncColumn(s0, s1, s2, s3, rk[0]), t1 = EncColumn(s1, s2, s3, s0, rk[1]),
                            t2 = EncColumn(s2, s3, s0, s1, rk[2]), t3 = EncColumn(s3, s0, s1, s2, rk[3]);
        s0 = t0, s1 = t1, s2 = t2, s3 = t3;
    }
    rk += 4;
    Store(LastColumn(kT.sbox, s0, s1, s2, s3, rk[0]), out);
    Store(LastColumn(kT.sbox, s1, s2, s3, s0, rk[1]), out + 4);
    Store(LastColumn(kT.sbox, s2, s3, s0, s1, rk[2]), out + 8);
    Store(LastColumn(kT.sbox, s3, s0, s1, s2, rk[3]), out + 12);
}

// InvShiftRows: column j of a round takes row r from column j - r.
void AesContext::Decrypt(const std::uint8_t* in, std::uint8_t* out) const {
    const std::uint32_t* rk = m_decKeys.data();
    std::uint32_t s0 = Load(in) ^ rk[0], s1 = Load(in + 4) ^ rk[1], s2 = Load(in + 8) ^ rk[2],
                  s3 = Load(in + 12) ^ rk[3];
    for (std::size_t round = 1; round < m_rounds; ++round) {
        rk += 4;
        const std::uint32_t t0 = DecColumn(s0, s3, s2, s1, rk[0]), t1 = DecColumn(s1, s0, s3, s2, rk[1]),
                            t2 = DecColumn(s2, s1, s0, s3, rk[2]), t3 = DecColumn(s3, s2, s1, s0, rk[3]);
        s0 = t0, s1 = t1, s2 = t2, s3 = t3;
    }
    rk += 4;
    Store(LastColumn(kT.invSbox, s0, s3, s2, s1, rk[0]), out);
    Store(LastColumn(kT.invSbox, s1, s0, s3, s2, rk[1]), out + 4);
    Store(LastColumn(kT.invSbox, s2, s1, s0, s3, rk[2]), out + 8);
    Store(LastColumn(kT.invSbox, s3, s2, s1, s0, rk[3]), out + 12);
}

int AesContext::EncryptBlock(std::span<const std::uint8_t, kBlockSize> in,
                             std::span<std::uint8_t, kBlockSize> out) const {
    if (!in.data() || !out.data()) return kAesBadInput;
    if (!m_rounds) return kAesBadKeyLength;
    Encrypt(in.data(), out.data());
    return kAesOk;
}

int AesContext::DecryptBlock(std::span<const std::uint8_t, kBlockSize> in,
                             std::span<std::uint8_t, kBlockSize> out) const {
    if (!in.data() || !out.data()) return kAesBadInput;
    if (!m_rounds) return kAesBadKeyLength;
    Decrypt(in.data(), out.data());
    return kAesOk;
}

int AesContext::CbcEncrypt(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    if (!in.data() || !out.data() || in.size() % kBlockSize || out.size() < in.size() ||
        RunsAhead(in, out.data()))
        return kAesBadInput;
    if (!m_rounds) return kAesBadKeyLength;
    for (std::size_t at = 0; at < in.size(); at += kBlockSize) {
        Block x;
        for (std::size_t k = 0; k < kBlockSize; ++k) x[k] = in[at + k] ^ m_iv[k];
        Encrypt(x.data(), m_iv.data());
        std::copy(m_iv.begin(), m_iv.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return kAesOk;
}

// `in` is whole blocks and `out` has room; the ciphertext block is kept aside before it is
// overwritten, so decryption in place works.
void AesContext::DecryptChain(std::span<const std::uint8_t> in, std::uint8_t* out) {
    for (std::size_t at = 0; at < in.size(); at += kBlockSize) {
        Block c, p;
        std::copy_n(in.begin() + static_cast<std::ptrdiff_t>(at), kBlockSize, c.begin());
        Decrypt(c.data(), p.data());
        for (std::size_t k = 0; k < kBlockSize; ++k) out[at + k] = p[k] ^ m_iv[k];
        m_iv = c;
    }
}

int AesContext::CbcDecrypt(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    if (!in.data() || !out.data() || in.size() % kBlockSize || out.size() < in.size() ||
        RunsAhead(in, out.data()))
        return kAesBadInput;
    if (!m_rounds) return kAesBadKeyLength;
    DecryptChain(in, out.data());
    return kAesOk;
}

int AesContext::CbcDecryptFinal(std::span<const std::uint8_t> in, std::span<std::uint8_t> out, bool last,
                                std::size_t* produced) {
    if (produced) *produced = 0;
    const std::size_t whole = in.size() / kBlockSize * kBlockSize;
    const std::size_t needed = whole + (last ? kBlockSize : 0);
    if (!in.data() || !out.data() || !produced || out.size() < needed || RunsAhead(in, out.data()))
        return kAesBadInput;
    if (!m_rounds) return kAesBadKeyLength;
    DecryptChain(in.first(whole), out.data());
    if (last) {
        const std::size_t left = in.size() - whole;
        Block tail;
        tail.fill(static_cast<std::uint8_t>(kBlockSize - left));
        std::copy(in.begin() + static_cast<std::ptrdiff_t>(whole), in.end(), tail.begin());
        DecryptChain(tail, out.data() + whole);
    }
    *produced = needed;
    return kAesOk;
}

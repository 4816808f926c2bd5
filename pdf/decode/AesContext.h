#pragma once
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

// Result codes of the AES operations (not ivStatus values).
constexpr int kAesOk = 0;
constexpr int kAesBadKeyLength = 2;  // not 16, 24 or 32 bytes, or no key expanded yet
constexpr int kAesBadInput = 4;      // null buffer, output too small, length not whole blocks

// AES (128-bit blocks, 128/192/256-bit keys) with CBC chaining. All state sits in the object;
// nothing is allocated. The output may be the input buffer or start before it (decrypting a
// string over its own IV), but not start inside it. A failing call writes nothing.
class AesContext {
public:
    static constexpr std::size_t kBlockSize = 16;
    using Block = std::array<std::uint8_t, kBlockSize>;

    // Builds both key schedules and zeroes the IV. Any other length than 16, 24 or 32 bytes
    // returns kAesBadKeyLength and leaves no key, so later calls fail the same way.
    [[nodiscard]] int ExpandKey(std::span<const std::uint8_t> key);
    // The chaining value: the IV before the first block, then the last ciphertext block.
    void SetIv(std::span<const std::uint8_t, kBlockSize> iv) {
        std::copy(iv.begin(), iv.end(), m_iv.begin());
    }
    std::size_t KeyLength() const { return m_keyLength; }

    [[nodiscard]] int EncryptBlock(std::span<const std::uint8_t, kBlockSize> in,
                                   std::span<std::uint8_t, kBlockSize> out) const;
    [[nodiscard]] int DecryptBlock(std::span<const std::uint8_t, kBlockSize> in,
                                   std::span<std::uint8_t, kBlockSize> out) const;

    // CBC over whole blocks, no padding; `out` needs in.size() bytes. The chaining value
    // carries over to the next call, so a message may come in pieces.
    [[nodiscard]] int CbcEncrypt(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);
    [[nodiscard]] int CbcDecrypt(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

    // Stream decryption in chunks: decrypts the whole blocks of `in`. With `last`, the bytes
    // left over (none when `in` is whole blocks) are filled up to a block with bytes of value
    // 16 - left over, and that block is decrypted as well, after the data; `out` therefore
    // needs 16 bytes beyond the whole blocks. `*produced` gets the bytes written: the whole
    // blocks, plus 16 with `last`. Callers count their data from what they read, not from
    // `*produced`, and remove the padding themselves.
    [[nodiscard]] int CbcDecryptFinal(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                                      bool last, std::size_t* produced);

private:
    void Encrypt(const std::uint8_t* in, std::uint8_t* out) const;
    void Decrypt(const std::uint8_t* in, std::uint8_t* out) const;
    void DecryptChain(std::span<const std::uint8_t> in, std::uint8_t* out);

    static constexpr std::size_t kMaxWords = 60;  // 4 * (14 rounds + 1)
    std::array<std::uint32_t, kMaxWords> m_encKeys{};
    std::array<std::uint32_t, kMaxWords> m_decKeys{};  // in the order decryption uses them
    std::size_t m_rounds = 0;                          // 10, 12 or 14; 0 without a key
    std::size_t m_keyLength = 0;
    Block m_iv{};
};

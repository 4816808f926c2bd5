#include "pdf/decode/AesContext.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "HexBytes.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

AesContext Keyed(std::string_view keyHex, std::string_view ivHex = "") {
    AesContext aes;
    EXPECT_EQ(aes.ExpandKey(FromHex(keyHex)), kAesOk) << keyHex;
    if (!ivHex.empty()) aes.SetIv(std::span<const std::uint8_t, 16>(FromHex(ivHex).data(), 16));
    return aes;
}

// SP 800-38A F.2: one IV and plaintext, three keys.
constexpr std::string_view kIv = "000102030405060708090a0b0c0d0e0f";
constexpr std::string_view kPlain =
    "6bc1bee22e409f96e93d7e117393172a ae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52ef f69f2445df4f9b17ad2b417be66c3710";
const struct {
    std::string_view key, cipher;
} kCbc[] = {
    // F.2.1 / F.2.2, AES-128
    {"2b7e151628aed2a6abf7158809cf4f3c",
     "7649abac8119b246cee98e9b12e9197d 5086cb9b507219ee95db113a917678b2"
     "73bed6b8e3c1743b7116e69e22229516 3ff1caa1681fac09120eca307586e1a7"},
    // F.2.3 / F.2.4, AES-192
    {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
     "4f021db243bc633d7178183a9fa071e8 b4d9ada9ad7dedf4e5e738763f69145a"
     "571b242012fb7ae07fa9baac3df102e0 08b0e27988598881d920a9e64f5615cd"},
    // F.2.5 / F.2.6, AES-256
    {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
     "f58c4c04d6e5f1ba779eabfb5f7bfbd6 9cfc4e967edb808d679f777bc6702c7d"
     "39f23369a9d9bacfa530e26304231461 b2eb05e2c39be9fcda6c19078c6a9d1b"},
};

}  // namespace

TEST(Aes, Fips197AppendixC) {
    const struct {
        std::string_view key, cipher;
    } cases[] = {
        {"000102030405060708090a0b0c0d0e0f", "69c4e0d86a7b0430d8cdb78070b4c55a"},                  // C.1
        {"000102030405060708090a0b0c0d0e0f1011121314151617", "dda97ca4864cdfe06eaf70a0ec0d7191"},  // C.2
        {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",                       // C.3
         "8ea2b7ca516745bfeafc49904b496089"},
    };
    const Bytes plain = FromHex("00112233445566778899aabbccddeeff");
    for (const auto& c : cases) {
        AesContext aes = Keyed(c.key);
        AesContext::Block out{}, back{};
        EXPECT_EQ(aes.EncryptBlock(std::span<const std::uint8_t, 16>(plain.data(), 16), out), kAesOk);
        EXPECT_EQ(ToHex(out), c.cipher) << c.key;
        EXPECT_EQ(aes.DecryptBlock(out, back), kAesOk);
        EXPECT_EQ(ToHex(back), ToHex(plain)) << c.key;
        // in place
        EXPECT_EQ(aes.DecryptBlock(out, out), kAesOk);
        EXPECT_EQ(ToHex(out), ToHex(plain)) << c.key;
    }
}

TEST(Aes, Sp80038aCbc) {
    const Bytes plain = FromHex(kPlain);
    for (const auto& c : kCbc) {
        const Bytes cipher = FromHex(c.cipher);
        Bytes out(64);
        AesContext aes = Keyed(c.key, kIv);
        EXPECT_EQ(aes.CbcEncrypt(plain, out), kAesOk);
        EXPECT_EQ(ToHex(out), ToHex(cipher)) << c.key;
        aes = Keyed(c.key, kIv);
        EXPECT_EQ(aes.CbcDecrypt(cipher, out), kAesOk);
        EXPECT_EQ(ToHex(out), ToHex(plain)) << c.key;
        // two chunks chain like one, in both directions and in place
        Bytes data = plain;
        aes = Keyed(c.key, kIv);
        EXPECT_EQ(aes.CbcEncrypt(std::span(data).first(16), std::span(data).first(16)), kAesOk);
        EXPECT_EQ(aes.CbcEncrypt(std::span(data).subspan(16), std::span(data).subspan(16)), kAesOk);
        EXPECT_EQ(data, cipher) << c.key;
        aes = Keyed(c.key, kIv);
        EXPECT_EQ(aes.CbcDecrypt(std::span(data).first(48), std::span(data).first(48)), kAesOk);
        EXPECT_EQ(aes.CbcDecrypt(std::span(data).subspan(48), std::span(data).subspan(48)), kAesOk);
        EXPECT_EQ(data, plain) << c.key;
    }
}

TEST(Aes, RejectedArguments) {
    const struct {
        std::size_t keyLength;
        int result;
    } keys[] = {
        {0, kAesBadKeyLength}, {15, kAesBadKeyLength},
        {16, kAesOk},          {20, kAesBadKeyLength},  // whole words, but no AES key size
        {24, kAesOk},          {31, kAesBadKeyLength},
        {32, kAesOk},          {33, kAesBadKeyLength},
    };
    for (const auto& k : keys) {
        AesContext aes;
        EXPECT_EQ(aes.ExpandKey(Bytes(k.keyLength, 7)), k.result) << k.keyLength;
    }

    const Bytes in(32, 0x5a);
    const Bytes untouched(48, 0xcc);
    Bytes out = untouched;
    AesContext aes = Keyed(kCbc[0].key, kIv);
    const struct {
        std::span<const std::uint8_t> in;
        std::span<std::uint8_t> out;
        int result;
    } calls[] = {
        {std::span(in).first(17), out, kAesBadInput},                         // not whole blocks
        {in, std::span(out).first(31), kAesBadInput},                         // output too small
        {{}, out, kAesBadInput},                                              // no input buffer
        {in, {}, kAesBadInput},                                               // no output buffer
        {std::span(out).first(32), std::span(out).subspan(8), kAesBadInput},  // output inside the input
        {std::span(in).first(16), std::span(out).subspan(0, 16), kAesOk},     // for contrast
    };
    for (const auto& c : calls) {
        out = untouched;
        EXPECT_EQ(aes.CbcDecrypt(c.in, c.out), c.result) << c.in.size() << " " << c.out.size();
        if (c.result != kAesOk) {
            EXPECT_EQ(out, untouched) << c.in.size() << " " << c.out.size();
        }
        out = untouched;
        EXPECT_EQ(aes.CbcEncrypt(c.in, c.out), c.result) << c.in.size() << " " << c.out.size();
        if (c.result != kAesOk) {
            EXPECT_EQ(out, untouched) << c.in.size() << " " << c.out.size();
        }
    }

    // A rejected key leaves no key behind: nothing is decrypted with the previous one.
    EXPECT_EQ(aes.ExpandKey(Bytes(20, 1)), kAesBadKeyLength);
    out = untouched;
    EXPECT_EQ(aes.CbcDecrypt(in, out), kAesBadKeyLength);
    EXPECT_EQ(out, untouched);
    std::size_t produced = 99;
    EXPECT_EQ(aes.CbcDecryptFinal(in, out, true, &produced), kAesBadKeyLength);
    EXPECT_EQ(produced, 0u);
    AesContext::Block block{};
    EXPECT_EQ(aes.EncryptBlock(block, block), kAesBadKeyLength);
}

// The final-aware form decrypts the whole blocks and, on the last call, one more block built
// from the leftover bytes and padding of value 16 - leftover, as if the ciphertext went on.
TEST(Aes, CbcDecryptFinal) {
    const Bytes plain = FromHex(kPlain);
    const Bytes cipher = FromHex(kCbc[0].cipher);
    const struct {
        std::size_t length;  // bytes of the ciphertext given
        bool last;
        std::size_t produced;
    } cases[] = {
        {64, true, 80},   // whole blocks: a block of 16s is decrypted after them
        {53, true, 64},   // 5 bytes left over, padded with 11s
        {48, false, 48},  // not last: whole blocks only
        {53, false, 48},  // not last: the leftover bytes are not touched
        {0, true, 16},    // nothing but the extra block
    };
    for (const auto& c : cases) {
        const std::size_t whole = c.length / 16 * 16;
        Bytes out(96, 0xcc);
        std::size_t produced = 0;
        AesContext aes = Keyed(kCbc[0].key, kIv);
        EXPECT_EQ(aes.CbcDecryptFinal(std::span(cipher).first(c.length), out, c.last, &produced), kAesOk);
        EXPECT_EQ(produced, c.produced) << c.length;
        EXPECT_EQ(ToHex(std::span(out).first(whole)), ToHex(std::span(plain).first(whole))) << c.length;
        // The reference: the same bytes, padded by hand, through plain CBC.
        if (c.last) {
            const std::size_t leftover = c.length - whole;
            Bytes padded(cipher.begin(), cipher.begin() + static_cast<std::ptrdiff_t>(c.length));
            padded.resize(whole + 16, static_cast<std::uint8_t>(16 - leftover));
            Bytes reference(padded.size());
            AesContext ref = Keyed(kCbc[0].key, kIv);
            EXPECT_EQ(ref.CbcDecrypt(padded, reference), kAesOk);
            EXPECT_EQ(ToHex(std::span(out).subspan(whole, 16)), ToHex(std::span(reference).subspan(whole)))
                << c.length;
        }
        EXPECT_EQ(out[produced], 0xcc) << c.length;
    }

    // Two chunks give what one call gives.
    Bytes one(80), two(80);
    std::size_t produced = 0, first = 0, second = 0;
    AesContext aes = Keyed(kCbc[0].key, kIv);
    EXPECT_EQ(aes.CbcDecryptFinal(cipher, one, true, &produced), kAesOk);
    aes = Keyed(kCbc[0].key, kIv);
    EXPECT_EQ(aes.CbcDecryptFinal(std::span(cipher).first(32), two, false, &first), kAesOk);
    EXPECT_EQ(
        aes.CbcDecryptFinal(std::span(cipher).subspan(32), std::span(two).subspan(first), true, &second),
        kAesOk);
    EXPECT_EQ(first + second, produced);
    EXPECT_EQ(two, one);

    // In place over a buffer that starts with the IV, the output moving down over it.
    Bytes buffer = FromHex(kIv);
    buffer.insert(buffer.end(), cipher.begin(), cipher.end());
    buffer.resize(96);
    aes = Keyed(kCbc[0].key, kIv);
    EXPECT_EQ(aes.CbcDecryptFinal(std::span(buffer).subspan(16, 64), buffer, true, &produced), kAesOk);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 80), one);

    // Without the spare bytes the last call writes nothing.
    Bytes tight(64, 0xcc);
    aes = Keyed(kCbc[0].key, kIv);
    EXPECT_EQ(aes.CbcDecryptFinal(cipher, tight, true, &produced), kAesBadInput);
    EXPECT_EQ(tight, Bytes(64, 0xcc));
    EXPECT_EQ(produced, 0u);
}

#include "pdf/decode/Rc4State.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "HexBytes.h"

namespace {

std::vector<std::uint8_t> Keystream(std::span<const std::uint8_t> key, std::size_t length) {
    std::vector<std::uint8_t> zeros(length);
    Rc4State rc4;
    EXPECT_EQ(rc4.SetKey(key), kOk);
    rc4.Process(zeros);
    return zeros;
}

}  // namespace

// RFC 6229: keystream bytes at an offset, enciphering zeros.
TEST(Rc4, Rfc6229Keystream) {
    const struct {
        std::string_view key;
        std::size_t offset;
        std::string_view bytes;
    } cases[] = {
        {"0102030405", 0, "b2396305f03dc027ccc3524a0a1118a8"},
        {"0102030405", 240, "28cb1132c96ce286421dcaadb8b69eae"},
        {"0102030405", 4096, "ff25b58995996707e51fbdf08b34d875"},
        {"0102030405060708", 1520, "1fe8986713f07c3d9ae1c163ff8cf9d3"},
        {"0102030405060708090a0b0c0d0e0f10", 0, "9ac7cc9a609d1ef7b2932899cde41b97"},
        {"0102030405060708090a0b0c0d0e0f10", 256, "d39d566bc6bce3010768151549f3873f"},
        {"0102030405060708090a0b0c0d0e0f10", 4096, "a36a4c301ae8ac13610ccbc12256cacc"},
        {"0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20", 4080,
         "a13a7c79c7e119b5ab0296ab28c300b9"},
    };
    for (const auto& c : cases) {
        auto stream = Keystream(FromHex(c.key), c.offset + 16);
        EXPECT_EQ(ToHex(std::span(stream).subspan(c.offset)), c.bytes) << c.key << " @" << c.offset;
    }
}

// The key repeats over the 256 scheduling steps, so a short key acts like its repetition.
TEST(Rc4, ShortKeysRepeat) {
    const struct {
        std::vector<std::uint8_t> key;
    } cases[] = {
        {{0x41}},              // one byte, the shortest key
        {{0x01, 0x02, 0x03}},  // a length that does not divide 256
        {{0xff, 0x00, 0x80, 0x7f, 0x10}},
    };
    for (const auto& c : cases) {
        std::vector<std::uint8_t> repeated(256);
        for (std::size_t k = 0; k < repeated.size(); ++k) repeated[k] = c.key[k % c.key.size()];
        EXPECT_EQ(Keystream(c.key, 64), Keystream(repeated, 64)) << c.key.size();
    }
    Rc4State rc4;
    EXPECT_EQ(rc4.SetKey({}), kInvalidArg);
}

// A stream processed in chunks of any size gets one continuous keystream, and running the cipher
// again restores the data.
TEST(Rc4, ChunkedEqualsOnePass) {
    std::vector<std::uint8_t> plain(5000);
    for (std::size_t i = 0; i < plain.size(); ++i) plain[i] = static_cast<std::uint8_t>(i * 31 + 7);
    const auto key = FromHex("0102030405060708090a0b0c0d0e0f10");
    auto whole = plain;
    Rc4State(key).Process(whole);
    EXPECT_NE(whole, plain);
    for (std::size_t chunk : {1, 7, 255, 1024, 4999}) {
        auto data = plain;
        Rc4State rc4(key);
        for (std::size_t at = 0; at < data.size(); at += chunk)
            rc4.Process(std::span(data).subspan(at, std::min(chunk, data.size() - at)));
        EXPECT_EQ(data, whole) << chunk;
        Rc4State(key).Process(data);
        EXPECT_EQ(data, plain) << chunk;
    }
}

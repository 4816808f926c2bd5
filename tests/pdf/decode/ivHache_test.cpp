#include "pdf/decode/ivHache.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "HexBytes.h"
#include "pdf/decode/ivMD5.h"
#include "pdf/decode/ivSHA_256.h"
#include "platform/ivMemStream.h"

namespace {

// Digest sizes in bits name the functions; 128 is MD5.
std::unique_ptr<ivHache> Make(int bits) {
    if (bits == 128) return std::make_unique<ivMD5>();
    return CreateSha(bits);
}

std::string Finish(ivHache& h) {
    std::vector<std::uint8_t> out(h.DigestSize());
    std::uint32_t size = h.DigestSize();
    EXPECT_EQ(h.Final(out.data(), &size), kOk);
    EXPECT_EQ(size, h.DigestSize());
    return ToHex(out);
}

std::string Digest(int bits, std::string_view message) {
    auto h = Make(bits);
    h->Update(AsBytes(message));
    return Finish(*h);
}

constexpr std::string_view k448 = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
constexpr std::string_view k896 =
    "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrst"
    "nopqrstu";
constexpr int kAll[] = {128, 256, 384, 512};

}  // namespace

TEST(Md5, Rfc1321Suite) {
    const struct {
        std::string_view in, md5;
    } cases[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        // 62 bytes: the length no longer fits the first block
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        // 80 bytes: more than one block of data
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Digest(128, c.in), c.md5) << c.in;
        std::uint8_t out[ivMD5::kDigestSize];
        Md5(AsBytes(c.in), out);
        EXPECT_EQ(ToHex(out), c.md5) << c.in;
    }
}

TEST(Sha, Fips180Examples) {
    const struct {
        int bits;
        std::string_view in, digest;
    } cases[] = {
        {256, "abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        // 448 bits: the length needs a block of its own
        {256, k448, "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {256, k896, "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
        {384, "abc",
         "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca134c825a7"},
        {384, k448,
         "3391fdddfc8dc7393707a65b1b4709397cf8b1d162af05abfe8f450de5f36bc6b0455a8520bc4e6f5fe95b1fe3c8452b"},
        {384, k896,
         "09330c33f71147e83d192fc782cd1b4753111b173b3b05d22fa08086e3b0f712fcc7c71a557e2db966c3e9fa91746039"},
        {512, "abc",
         "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
         "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
        {512, k448,
         "204a8fc6dda82f0a0ced7beb8e08a41657c16ef468b228a8279be331a703c335"
         "96fd15c13b1b07f9aa1d3bea57789ca031ad85c7a71dd70354ec631238ca3445"},
        // 896 bits: for SHA-384/512 the length needs a block of its own
        {512, k896,
         "8e959b75dae313da8cf4f72814fc143f8f7779c6eb9f7fa17299aeadb6889018"
         "501d289e4900f7e4331b99dec4b5433ac7d329eeb6dd26545e96e55b874be909"},
    };
    for (const auto& c : cases) EXPECT_EQ(Digest(c.bits, c.in), c.digest) << c.bits << " " << c.in;
}

TEST(Sha, MillionA) {
    const struct {
        int bits;
        std::string_view digest;
    } cases[] = {
        {256, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
        {384,
         "9d0e1809716474cb086e834e310a4a1ced149e9c00f248527972cec5704c2a5b07b8b3dc38ecc4ebae97ddd87f3d8985"},
        {512,
         "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
         "de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b"},
    };
    const std::string thousand(1000, 'a');
    for (const auto& c : cases) {
        auto h = CreateSha(c.bits);
        for (int i = 0; i < 1000; ++i) h->Update(AsBytes(thousand));
        EXPECT_EQ(Finish(*h), c.digest) << c.bits;
    }
}

// Messages of 'a' ending just before, at and after the point where the padded length moves into
// another block (cross-checked with an independent implementation).
TEST(Hache, PaddingBoundaries) {
    const struct {
        int bits;
        std::size_t length;
        std::string_view digest;
    } cases[] = {
        {128, 55, "ef1772b6dff9a122358552954ad0df65"},
        {128, 63, "b06521f39153d618550606be297466d5"},
        {128, 64, "014842d480b571495a4a0363793f7367"},
        {256, 55, "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
        {256, 63, "7d3e74a05d7db15bce4ad9ec0658ea98e3f06eeecf16b4c6fff2da457ddc2f34"},
        {256, 64, "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
        {384, 111,
         "3c37955051cb5c3026f94d551d5b5e2ac38d572ae4e07172085fed81f8466b8f90dc23a8ffcdea0b8d8e58e8fdacc80a"},
        {384, 127,
         "9bd06b1763c2cf7aef40e795dc65bc96d59c41b537f3ad72ebdefd485476b5717c1aeb37c327fe9c1831b12b9efd08ae"},
        {512, 128,
         "b73d1929aa615934e61a871596b3f3b33359f42b8175602e89f7e06e5f658a24"
         "3667807ed300314b95cacdd579f3e33abdfbe351909519a846d465c59582f321"},
    };
    for (const auto& c : cases) EXPECT_EQ(Digest(c.bits, std::string(c.length, 'a')), c.digest) << c.bits;
}

// Splitting a message anywhere, including at block and padding boundaries, gives the one-shot
// digest.
TEST(Hache, SplitUpdatesEqualOneShot) {
    std::vector<std::uint8_t> message(300);
    for (std::size_t i = 0; i < message.size(); ++i) message[i] = static_cast<std::uint8_t>(i * 7 + 3);
    const std::span<const std::uint8_t> all(message);
    for (int bits : kAll) {
        auto h = Make(bits);
        h->Update(all);
        const std::string whole = Finish(*h);
        for (std::size_t split : {0, 1, 55, 56, 63, 64, 111, 112, 127, 128, 129, 300}) {
            h->Update(all.first(split));
            h->Update(all.subspan(split));
            EXPECT_EQ(Finish(*h), whole) << bits << " split at " << split;
        }
        // Three pieces, the middle one spanning a whole block
        h->Update(all.first(60));
        h->Update(all.subspan(60, 200));
        h->Update(all.subspan(260));
        EXPECT_EQ(Finish(*h), whole) << bits;
    }
}

TEST(Hache, FinalSizeQueriesAndShortBuffers) {
    for (int bits : kAll) {
        auto h = Make(bits);
        const std::uint32_t digestSize = static_cast<std::uint32_t>(bits / 8);
        h->Update(AsBytes("ab"));
        // a size query
        std::uint32_t size = 0;
        EXPECT_EQ(h->Final(nullptr, &size), kRemark) << bits;
        EXPECT_EQ(size, digestSize);
        // one byte short: nothing written
        std::vector<std::uint8_t> out(digestSize, 0xcc);
        size = digestSize - 1;
        EXPECT_EQ(h->Final(out.data(), &size), kFail) << bits;
        EXPECT_EQ(size, digestSize);
        EXPECT_EQ(out, std::vector<std::uint8_t>(digestSize, 0xcc)) << bits;
        // neither call ended the message
        h->Update(AsBytes("c"));
        EXPECT_EQ(Finish(*h), Digest(bits, "abc")) << bits;
        // a larger buffer is fine; Final left the object ready for the next message
        out.assign(digestSize + 4, 0xcc);
        size = digestSize + 4;
        h->Update(AsBytes("abc"));
        EXPECT_EQ(h->Final(out.data(), &size), kOk);
        EXPECT_EQ(size, digestSize);
        EXPECT_EQ(ToHex(std::span(out).first(digestSize)), Digest(bits, "abc")) << bits;
        EXPECT_EQ(out[digestSize], 0xcc);
        // Init drops what was absorbed
        h->Update(AsBytes("xyz"));
        h->Init();
        EXPECT_EQ(Finish(*h), Digest(bits, "")) << bits;
    }
    EXPECT_EQ(CreateSha(160), nullptr);
}

TEST(Hache, UpdateFromStream) {
    std::vector<std::uint8_t> data(3000);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i ^ (i >> 8));
    const std::span<const std::uint8_t> all(data);
    auto expected = [&](std::size_t from, std::size_t count) {
        ivSHA_256 h;
        h.Update(all.subspan(from, count));
        return Finish(h);
    };
    const struct {
        std::int64_t start, count;
        ivStatus status;
        std::size_t hashed;
    } cases[] = {
        {1500, -1, kOk, 1500},        // to the end from the middle: only the second half
        {0, -1, kOk, 3000},           // several 1,024-byte chunks
        {100, 1025, kOk, 1025},       // one byte past a chunk
        {2000, 0, kOk, 0},            // nothing
        {2000, 1500, kRemark, 1000},  // the stream ends first: what came is hashed
        {3000, -1, kOk, 0},           // already at the end
    };
    for (const auto& c : cases) {
        auto stream = ivMemStream::Create(all);
        stream->Seek(c.start, ivSeekOrigin::Begin);
        ivSHA_256 h;
        EXPECT_EQ(h.UpdateFromStream(*stream, c.count), c.status) << c.start << " " << c.count;
        EXPECT_EQ(Finish(h), expected(static_cast<std::size_t>(c.start), c.hashed))
            << c.start << " " << c.count;
    }
    auto stream = ivMemStream::Create(all);
    ivMD5 md5;
    EXPECT_EQ(md5.UpdateFromStream(*stream, -2), kInvalidArg);
}

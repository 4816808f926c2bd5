#include "pdf/decode/pdfLzw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <utility>

#include "support/TestSupport.h"

namespace {

struct Decoded {
    ivStatus status;
    std::string bytes;
};

Decoded Decode(const std::string& data, bool earlyChange = true) {
    ivMemStream out;
    ivStatus st = DecodeLZW(*MemStream(data), out, earlyChange);
    return {st, std::string(out.Data().begin(), out.Data().end())};
}

// Packs codes most significant bit first, each with its own width.
struct BitWriter {
    std::string out;
    std::uint64_t acc = 0;
    int n = 0;
    void Put(std::uint32_t code, int width) {
        acc = acc << width | code;
        for (n += width; n >= 8; n -= 8) out.push_back(static_cast<char>(acc >> (n - 8)));
    }
    std::string Finish() { return n ? out + static_cast<char>(acc << (8 - n)) : out; }
};

// 9-bit codes in order.
std::string Codes9(std::initializer_list<std::uint32_t> codes) {
    BitWriter w;
    for (std::uint32_t c : codes) w.Put(c, 9);
    return w.Finish();
}

struct EncodeOptions {
    bool earlyChange = true;
    bool leadingClear = true;
    bool clearWhenFull = true;  // else entries stop at 4,095 and coding goes on
};

// A plain LZW encoder. The width follows the decoder's table, which lags one entry behind the
// encoder's because the decoder learns an entry only from the code after it.
std::string Encode(const std::string& in, EncodeOptions opt) {
    BitWriter w;
    std::map<std::pair<std::uint32_t, char>, std::uint32_t> dict;
    std::uint32_t encNext = 258, decNext = 258;
    int width = 9;
    bool fresh = true;  // the decoder adds no entry for the first code after a clear code
    auto emit = [&](std::uint32_t code) {
        w.Put(code, width);
        if (code == 256) {
            dict.clear();
            encNext = decNext = 258;
            width = 9;
            fresh = true;
        } else if (!std::exchange(fresh, false) && ++decNext + (opt.earlyChange ? 1 : 0) >= 1u << width) {
            width = std::min(width + 1, 12);
        }
    };
    if (opt.leadingClear) emit(256);
    if (!in.empty()) {
        std::uint32_t cur = static_cast<std::uint8_t>(in[0]);
        for (std::size_t i = 1; i < in.size(); ++i) {
            auto key = std::make_pair(cur, in[i]);
            if (auto it = dict.find(key); it != dict.end()) {
                cur = it->second;
                continue;
            }
            emit(cur);
            if (encNext < 4096) dict[key] = encNext++;
            if (encNext == 4096 && opt.clearWhenFull) emit(256);
            cur = static_cast<std::uint8_t>(in[i]);
        }
        emit(cur);
    }
    emit(257);
    return w.Finish();
}

// Pseudo-random letters from a small alphabet: long enough inputs fill the table.
std::string Letters(std::size_t n, std::uint32_t alphabet) {
    std::string s;
    std::uint32_t x = 1;
    for (std::size_t i = 0; i < n; ++i) {
        x = (x * 1103515245u + 12345u) & 0x7FFFFFFFu;
        s.push_back(static_cast<char>('a' + (x >> 16) % alphabet));
    }
    return s;
}

TEST(LzwDecode, ClassicSample) {
    Decoded d = Decode("\x80\x0B\x60\x50\x22\x0C\x0C\x85\x01");
    EXPECT_EQ(d.status, kOk);
    EXPECT_EQ(d.bytes, "-----A---B");
}

TEST(LzwDecode, RoundTrips) {
    const std::string random = Letters(30000, 26);
    const struct {
        std::string in;
        EncodeOptions opt;
    } cases[] = {
        {"", {}},
        {"x", {}},
        {std::string(5000, 'a'), {}},               // every code but the first is the entry being defined
        {random, {}},                               // all widths, clear codes when the table fills
        {random, {false, true, true}},              // the same with late width changes
        {"ABABABA", {true, false, true}},           // no leading clear code
        {random, {true, true, false}},              // table full: 4,096 codes in use, no clear code
        {Letters(60000, 3), {false, true, false}},  // long strings in a full table
    };
    for (const auto& c : cases) {
        Decoded d = Decode(Encode(c.in, c.opt), c.opt.earlyChange);
        EXPECT_EQ(d.status, kOk) << c.in.size();
        EXPECT_TRUE(d.bytes == c.in) << c.in.size() << " bytes, early " << c.opt.earlyChange;
    }
}

TEST(LzwDecode, DamagedData) {
    const struct {
        std::string in;
        ivStatus status;
        std::string out;
    } cases[] = {
        {"", kFail, ""},                                              // no code at all
        {Codes9({256, 'a', 'b'}), kFail, "ab"},                       // ends without the end code
        {Codes9({256, 'a', 300, 257}), kFail, "a"},                   // code above the next free entry
        {Codes9({256, 'a', 259, 257}), kFail, "a"},                   // one past the entry being defined
        {Codes9({300, 'a', 257}), kFail, ""},                         // first code undefined
        {Codes9({258, 257}), kFail, ""},                              // first code a table entry
        {Codes9({257, 'a'}), kOk, ""},                                // end code first
        {Codes9({'a', 'b', 258, 257}), kOk, "abab"},                  // no clear code: as if one came first
        {Codes9({256, 256, 'a', 257}), kOk, "a"},                     // clear code twice
        {Codes9({256, 'a', 'b', 256, 'c', 258, 257}), kOk, "abccc"},  // 258 redefined after clear
        {Codes9({256, 'a', 257}).substr(0, 3), kFail, "a"},           // cut inside the end code
    };
    for (const auto& c : cases) {
        Decoded d = Decode(c.in);
        EXPECT_EQ(d.status, c.status) << c.out;
        EXPECT_EQ(d.bytes, c.out);
    }
}

TEST(LzwDecode, GoldenStreams) {
    // The corpus image, checked against qpdf, and a long sample coded by libtiff.
    Decoded image = Decode(ReadTestFile("decode/lzw-image.lzw"));
    EXPECT_EQ(image.status, kOk);
    EXPECT_EQ(image.bytes, ReadTestFile("decode/lzw-image.bin"));

    Decoded sample = Decode(ReadTestFile("decode/lzw-tiff.lzw"));
    EXPECT_EQ(sample.status, kOk);
    EXPECT_TRUE(sample.bytes == Letters(12000, 8)) << sample.bytes.size();
}

}  // namespace

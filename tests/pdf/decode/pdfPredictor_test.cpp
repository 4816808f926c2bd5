#include "pdf/decode/pdfPredictor.h"

#include <gtest/gtest.h>

#include "platform/ivZlibUnCompress.h"
#include "support/TestSupport.h"

namespace {

using namespace std::string_literals;

std::string ReadOut(ivRef<ivStream> s) {
    std::string out;
    EXPECT_EQ(ivReadAll(*s, out), kOk);
    return out;
}

TEST(PngPredictor, Rows) {
    const struct {
        std::string in;
        std::uint32_t columns, colors, bpc;
        std::string out;
    } cases[] = {
        {"\0abcd\0efgh"s, 4, 1, 0, "abcdefgh"},               // tag byte, then Columns bytes
        {"\1\1\1\1\1"s, 4, 1, 0, "\1\2\3\4"s},                // Sub
        {"\1\xFF\2"s, 2, 1, 0, "\xFF\1"s},                    // Sub wraps at 256
        {"\1\1\2\3\12\24\36"s, 2, 3, 0, "\1\2\3\13\26\41"s},  // Sub: left is Colors bytes back
        {"\2\5\6\2\1\1"s, 2, 1, 0, "\5\6\6\7"s},              // Up: nothing above the first row
        {"\0\xC8\xFA\3\0\0"s, 2, 1, 0, "\xC8\xFA\x64\xAF"s},  // Average sums in more than 8 bits
        {"\0\24\50\4\xF6\0"s, 2, 1, 0, "\24\50\12\50"s},      // Paeth picks up
        {"\0\36\24\4\24\0"s, 2, 1, 0, "\36\24\62\62"s},       // Paeth: left wins a tie with upper-left
        {"\0\12\0\4\12\0"s, 2, 1, 0, "\12\0\24\12"s},         // Paeth picks upper-left
        {"\0\1\2\5\3\4\xFF\5\6"s, 2, 1, 0, "\1\2\3\4\5\6"s},  // unknown tags leave the row as it is
        {"\0ab\0c"s, 2, 1, 0, "ab"},                          // a short last row is dropped
        {"\0\0\0"s, 0, 1, 0, ""},                             // Columns 0: tags only
        {"\1\x10\1"s, 16, 1, 1, "\x10\x11"s},                 // 1-bit samples: 2 bytes, left is a byte back
        {"\0abc\0def"s, 5, 1, 4, "abcdef"},                   // ceil(5 x 4 / 8) = 3
        {"\1\1\2\3"s, 3, 3, 2, "\1\2\3"s},                    // left lies past the 3-byte row: unchanged
        {"\0ab\0cd"s, 2, 1, 16, "abcd"},                      // 16-bit samples are read as 8-bit ones
        {"\1abcdefgh"s, 0x80000000u, 1, 8, ""},               // Columns 2^31: costs only the data
        {"\1abcdefgh"s, 0xFFFFFFFFu, 0xFFFFFFFFu, 7, ""},     // row size x bits overflows 64 bits
    };
    for (const auto& c : cases) {
        auto out = ApplyPNGPredictor(MemStream(c.in), c.columns, c.colors, c.bpc);
        EXPECT_EQ(ReadOut(out), c.out) << c.columns << "x" << c.colors << ", " << c.bpc << " bits";
    }
}

TEST(PngPredictor, XrefStreamMatchesQpdf) {
    auto raw = MemStream(ReadTestFile("decode/xref-stream.flate"));
    ivRef<ivStream> inflated = ivZlibUnCompress::Create(raw);
    ASSERT_TRUE(inflated);
    EXPECT_EQ(ReadOut(ApplyPNGPredictor(inflated, 4, 1, 0)), ReadTestFile("decode/xref-stream.bin"));
}

}  // namespace

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
        {"\1abcdefgh"s, 0x80000000u, 1, 8, "\1abcdefgh"s},    // Columns 2^31: passed through
        {"\1abcdefgh"s, 0xFFFFFFFFu, 0xFFFFFFFFu, 7, "\1abcdefgh"s},  // row size x bits beyond 64 bits
    };
    for (const auto& c : cases) {
        auto out = ApplyPNGPredictor(MemStream(c.in), c.columns, c.colors, c.bpc);
        EXPECT_EQ(ReadOut(out), c.out) << c.columns << "x" << c.colors << ", " << c.bpc << " bits";
    }
}

// Rows of Up-filtered ones without end, counting what is read from it.
class EndlessRows final : public ivStream {
public:
    explicit EndlessRows(std::uint32_t rowLength) : m_rowLength(rowLength) {}
    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override {
        auto* out = static_cast<std::uint8_t*>(buffer);
        for (std::uint32_t i = 0; i < count; ++i, ++m_read)
            out[i] = m_read % (m_rowLength + 1) == 0 ? 2 : 1;
        *read = count;
        return kOk;
    }
    ivStatus Write(const void*, std::uint32_t, std::uint32_t*) override { return kWrongType; }
    std::int64_t Seek(std::int64_t, ivSeekOrigin) override { return kWrongType; }
    std::uint64_t Position() const override { return m_read; }
    std::uint64_t Size() const override { return m_read; }
    ivStatus SetSize(std::uint64_t) override { return kWrongType; }
    std::uint64_t BytesRead() const { return m_read; }

private:
    std::uint32_t m_rowLength;
    std::uint64_t m_read = 0;
};

TEST(PngPredictor, UndoesRowsAsTheyAreReadWithinTheLimit) {
    auto source = std::make_shared<EndlessRows>(10);
    auto out = ApplyPNGPredictor(source, 10, 1, 8);
    std::uint8_t rows[30];
    std::uint32_t got = 0;
    ASSERT_EQ(out->Read(rows, sizeof rows, &got), kOk);
    ASSERT_EQ(got, 30u);
    EXPECT_EQ(rows[0], 1);
    EXPECT_EQ(rows[29], 3);  // third row: each Up row adds 1
    EXPECT_LE(source->BytesRead(), 8192u) << "the rows are undone as they are read, not all at once";

    // The limit ends an endless stream after the row that reaches it.
    std::string limited;
    EXPECT_EQ(ivReadAll(*ApplyPNGPredictor(std::make_shared<EndlessRows>(10), 10, 1, 8, 45), limited), kOk);
    EXPECT_EQ(limited.size(), 50u);

    // Rows beyond 16 MiB are not undone: the source comes back unread and unchanged.
    auto wide = std::make_shared<EndlessRows>(10);
    ivRef<ivStream> passed = ApplyPNGPredictor(wide, 16 * 1024 * 1024 + 1, 1, 8);
    EXPECT_EQ(passed, wide);
    EXPECT_EQ(wide->BytesRead(), 0u);
}

TEST(PngPredictor, XrefStreamMatchesQpdf) {
    auto raw = MemStream(ReadTestFile("decode/xref-stream.flate"));
    ivRef<ivStream> inflated = ivZlibUnCompress::Create(raw);
    ASSERT_TRUE(inflated);
    EXPECT_EQ(ReadOut(ApplyPNGPredictor(inflated, 4, 1, 0)), ReadTestFile("decode/xref-stream.bin"));
}

}  // namespace

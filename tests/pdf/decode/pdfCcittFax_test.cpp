#include "pdf/decode/pdfCcittFax.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"
#include "support/TestSupport.h"

namespace {

using Rows = std::vector<std::string>;

constexpr std::uint32_t kBlack = 0xFF000000u, kWhite = 0xFFFFFFFFu;

// Bits written as text, most significant first; spaces only separate codes. The last byte
// is filled up with 0 bits.
std::string Bits(std::string_view text) {
    std::string out;
    int n = 0;
    for (char c : text) {
        if (c == ' ') continue;
        if (n % 8 == 0) out.push_back(0);
        if (c == '1') out.back() = static_cast<char>(out.back() | (0x80 >> (n % 8)));
        ++n;
    }
    return out;
}

// A row as text: '.' for a 1 bit (white), '#' for a 0 bit. A row the decoder never reached
// still has every byte 0xFF, padding included, and reads "-".
std::string RowText(const ivImage2d& image, std::uint32_t y) {
    const std::uint8_t* row = image.Row(y);
    if (std::all_of(row, row + image.Stride(), [](std::uint8_t b) { return b == 0xFF; })) return "-";
    std::string s;
    for (std::uint32_t x = 0; x < image.Width(); ++x) s += (row[x >> 3] >> (7 - (x & 7))) & 1 ? '.' : '#';
    return s;
}

Rows AllRows(const ivImage2d& image) {
    Rows rows;
    for (std::uint32_t y = 0; y < image.Height(); ++y) rows.push_back(RowText(image, y));
    return rows;
}

struct Decoded {
    ivStatus status;
    ivImage2d image;
};

Decoded Decode(std::uint32_t width, std::uint32_t height, const std::string& data, CcittParams params) {
    Decoded d;
    EXPECT_EQ(d.image.Create(ivImage2d::kIndexed1, width, height), kOk);
    d.status = DecodeCCITTG4(*MemStream(data), d.image, params);
    return d;
}

constexpr CcittParams kG4{false, false, -1};

TEST(CcittG4, CodingModes) {
    const std::string row1 = "001 0111 10 1 ";  // horizontal: white 2, black 3; V0 to the end
    const struct {
        std::uint32_t height;  // rows of 8 pixels
        std::string bits;
        Rows rows;
        ivStatus status;
    } cases[] = {
        {1, row1, {"..###..."}, kOk},                                   // horizontal mode, then V0 to the end
        {2, row1 + "1 1 1", {"..###...", "..###..."}, kOk},             // V0 copies the line above
        {2, row1 + "011 011 1", {"..###...", "...###.."}, kOk},         // VR1
        {2, row1 + "000011 000011 1", {"..###...", "....###."}, kOk},   // VR2
        {2, row1 + "0000011 1", {"..###...", ".....###"}, kOk},         // VR3
        {2, "001 1000 10 1 010 010 1", {"...###..", "..###..."}, kOk},  // VL1
        {2, "001 1000 10 1 000010 000010 1", {"...###..", ".###...."}, kOk},    // VL2
        {2, "001 1000 10 1 0000010 0000010 1", {"...###..", "###....."}, kOk},  // VL3
        {2, "001 0111 11 1 0001 1", {"..##....", "........"}, kOk},             // pass over the black run
        {2, "001 1000 010 1 0000010 0000010 1 1 1", {"...#....", "#..#...."}, kOk},  // b1 left of the last
        {1, "001 00110101 10 1", {"###....."}, kOk},               // white run 0: row starts black
        {1, "001 1100 0011", {".....###"}, kOk},                   // black run cut at the width
        {1, "0000011", {"........"}, kOk},                         // VR3 past the width
        {2, row1 + "1 0000010 1", {"..###...", "........"}, kOk},  // VL3 left of a0: no black run
        {1, "1 001 0111 10 1", {"........"}, kOk},                 // rows past the height dropped
        {2, "1 0000000 1", {"........", "-"}, kOk},                // EOFB
        {2, "", {"-", "-"}, kOk},                                  // no data reads as EOFB
        {1, "0000001 111", {"-"}, 2},                              // uncompressed-mode extension
        {2, "1 0000001 001", {"........", "-"}, 3},                // other extension
        {1, "001 000000000001 1111", {"########"}, kFail},         // EOL is no run code
        {1, "001 0111", {"########"}, kOk},                        // data ends inside a run code
    };
    for (const auto& c : cases) {
        Decoded d = Decode(8, c.height, Bits(c.bits), kG4);
        EXPECT_EQ(d.status, c.status) << c.bits;
        EXPECT_EQ(AllRows(d.image), c.rows) << c.bits;
    }
}

TEST(CcittG4, CorpusImageMatchesPoppler) {
    Decoded d = Decode(16, 16, ReadTestFile("decode/ccitt-image.g4"), kG4);
    EXPECT_EQ(d.status, kOk);
    const std::string bits = ReadTestFile("decode/ccitt-image.bits");
    ASSERT_EQ(bits.size(), 32u);
    for (std::uint32_t y = 0; y < 16; ++y) {
        const std::uint8_t* row = d.image.Row(y);
        EXPECT_EQ(std::string(row, row + 2), bits.substr(y * 2, 2)) << "row " << y;
        EXPECT_EQ(row[2] | row[3], 0) << "padding of row " << y;
    }
}

// The libtiff-coded image: rows from the run list, 1 bits white.
class CcittRunsImage : public ::testing::Test {
protected:
    void SetUp() override {
        std::istringstream text(ReadTestFile("decode/ccitt-runs.txt"));
        text >> m_width >> m_height;
        std::string line;
        std::getline(text, line);
        while (std::getline(text, line)) {
            std::istringstream runs(line);
            std::string row;
            bool white = true;
            for (std::uint32_t n = 0; runs >> n; white = !white) row.append(n, white ? '.' : '#');
            m_rows.push_back(row);
        }
        m_data = ReadTestFile("decode/ccitt-runs.g4");
    }
    std::uint32_t m_width = 0, m_height = 0;
    Rows m_rows;
    std::string m_data;
};

TEST_F(CcittRunsImage, DecodesEveryRow) {
    ASSERT_EQ(m_rows.size(), m_height);
    Decoded d = Decode(m_width, m_height, m_data, kG4);
    EXPECT_EQ(d.status, kOk);
    for (std::uint32_t y = 0; y < m_height; ++y) EXPECT_EQ(RowText(d.image, y), m_rows[y]) << "row " << y;
}

TEST_F(CcittRunsImage, CutDataKeepsTheRowsBeforeTheCut) {
    for (std::size_t cut = 0; cut < m_data.size(); cut += 23) {
        Decoded d = Decode(m_width, m_height, m_data.substr(0, cut), kG4);
        EXPECT_EQ(d.status, kOk) << cut;
        std::uint32_t reached = 0;  // rows up to the one the data ended in
        while (reached < m_height && RowText(d.image, reached) != "-") ++reached;
        for (std::uint32_t y = reached; y < m_height; ++y) EXPECT_EQ(RowText(d.image, y), "-") << cut;
        for (std::uint32_t y = 0; y + 1 < reached; ++y) EXPECT_EQ(RowText(d.image, y), m_rows[y]) << cut;
    }
}

TEST(CcittG4, ArbitraryBytesEndInBoundedTime) {
    std::uint32_t x = 7;
    for (int round = 0; round < 400; ++round) {
        std::string junk;
        for (int i = 0; i < 1 + round * 3; ++i) {
            x = x * 1103515245u + 12345u;
            junk.push_back(static_cast<char>(x >> 24));
        }
        const std::uint32_t width = 1 + (x >> 8) % 300, height = 1 + (x >> 4) % 40;
        Decoded d = Decode(width, height, junk, CcittParams{false, round % 2 == 0, -1});
        EXPECT_TRUE(d.status == kOk || d.status == kFail || d.status == 2 || d.status == 3) << round;
    }
}

// Parameters go through DecodeCCITTFax; the effects show in the bitmap and the palette.
TEST(CcittFaxDecode, ReadsParametersInDictionaryOrder) {
    // Row 1 (10 bits), filler up to the byte, row 2 as three V0 codes.
    const std::string data = Bits("001 0111 10 1 000011 111");
    const Rows aligned{"..###...", "..###..."}, packed{"..###...", "....#..."}, untouched{"-", "-"};
    using Palette = std::vector<std::uint32_t>;
    // White runs are 1 bits: without BlackIs1 entry 1 is white, with it entry 1 is black.
    const Palette wb{kBlack, kWhite}, bw{kWhite, kBlack};
    const struct {
        const char* params;
        Rows rows;
        Palette palette;
        std::vector<std::string> messages;
    } cases[] = {
        {"<< /K -1 /EncodedByteAlign true >>", aligned, wb, {}},
        {"<< /K -1 >>", packed, wb, {}},                         // filler read as VR2
        {"<< /EncodedByteAlign 1 /K -1.2 >>", aligned, wb, {}},  // integer as boolean, real rounded
        {"<< /K 0 /BlackIs1 true >>", untouched, bw, {"CCITT data with K 0 is not decoded; the image is left white"}},        // K >= 0: only filled
        {"<< >>", untouched, wb, {"CCITT data with K 0 is not decoded; the image is left white"}},                            // K defaults to 0
        {"null", untouched, wb, {"CCITT data with K 0 is not decoded; the image is left white"}},                             // no parameters
        {"[ /K -1 ]", untouched, wb, {"CCITT data with K 0 is not decoded; the image is left white"}},                        // not a dictionary: defaults
        {"<< /K -1 /BlackIs1 true >>", packed, bw, {}},
        {"<< /K -1 /BlackIs1 /Yes >>", packed, wb, {"BOOL is Expected"}},
        {"<< /K /Minus >>", untouched, wb, {"Number is Expected", "CCITT data with K 0 is not decoded; the image is left white"}},
        {"<< /K -1 /K 0 >>", untouched, wb, {"CCITT data with K 0 is not decoded; the image is left white"}},  // every entry read: the last K wins
        {"<< /BlackIs1 true /BlackIs1 () /K -1 >>", packed, wb, {"BOOL is Expected"}},  // back to false
    };
    for (const auto& c : cases) {
        RecordingControl ctl;
        auto doc = DocFromBytes("", &ctl);
        doc->SetExtraChecks(true);  // so that the K in force shows when it is not decoded
        pdfParser src(doc.get(), MemStream(c.params), 0);
        ObjList list;
        ASSERT_TRUE(Succeeded(ParseObjects(*doc, src, list, 0))) << c.params;
        ASSERT_EQ(list.items.size(), 1u) << c.params;
        ivImage2d image;
        ASSERT_EQ(image.Create(ivImage2d::kIndexed1, 8, 2), kOk);
        EXPECT_EQ(DecodeCCITTFax(*doc, list.items[0], image, *MemStream(data)), kOk) << c.params;
        EXPECT_EQ(AllRows(image), c.rows) << c.params;
        EXPECT_EQ(image.Palette(), c.palette) << c.params;
        EXPECT_EQ(ctl.Texts(), c.messages) << c.params;
    }
}

}  // namespace

#include "pdf/decode/pdfCcittFax.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObject.h"
#include "platform/ivByteReader.h"

namespace {

// Palette entries as four bytes: red, green, blue, 255.
constexpr std::uint32_t kBlack = 0xFF000000u;
constexpr std::uint32_t kWhite = 0xFFFFFFFFu;

// Status for the extension code 0000001 111 (uncompressed mode) and for any other extension.
constexpr ivStatus kUncompressedMode = 2;
constexpr ivStatus kOtherExtension = 3;

struct RunCode {
    std::uint16_t run;
    std::string_view bits;
};

// The one-dimensional run-length codes. Runs of 64 and more are make-up codes, always
// followed by more codes until a terminating code (below 64) ends the run.
constexpr RunCode kWhiteCodes[] = {
    {0, "00110101"},     {1, "000111"},       {2, "0111"},         {3, "1000"},         {4, "1011"},
    {5, "1100"},         {6, "1110"},         {7, "1111"},         {8, "10011"},        {9, "10100"},
    {10, "00111"},       {11, "01000"},       {12, "001000"},      {13, "000011"},      {14, "110100"},
    {15, "110101"},      {16, "101010"},      {17, "101011"},      {18, "0100111"},     {19, "0001100"},
    {20, "0001000"},     {21, "0010111"},     {22, "0000011"},     {23, "0000100"},     {24, "0101000"},
    {25, "0101011"},     {26, "0010011"},     {27, "0100100"},     {28, "0011000"},     {29, "00000010"},
    {30, "00000011"},    {31, "00011010"},    {32, "00011011"},    {33, "00010010"},    {34, "00010011"},
    {35, "00010100"},    {36, "00010101"},    {37, "00010110"},    {38, "00010111"},    {39, "00101000"},
    {40, "00101001"},    {41, "00101010"},    {42, "00101011"},    {43, "00101100"},    {44, "00101101"},
    {45, "00000100"},    {46, "00000101"},    {47, "00001010"},    {48, "00001011"},    {49, "01010010"},
    {50, "01010011"},    {51, "01010100"},    {52, "01010101"},    {53, "00100100"},    {54, "00100101"},
    {55, "01011000"},    {56, "01011001"},    {57, "01011010"},    {58, "01011011"},    {59, "01001010"},
    {60, "01001011"},    {61, "00110010"},    {62, "00110011"},    {63, "00110100"},    {64, "11011"},
    {128, "10010"},      {192, "010111"},     {256, "0110111"},    {320, "00110110"},   {384, "00110111"},
    {448, "01100100"},   {512, "01100101"},   {576, "01101000"},   {640, "01100111"},   {704, "011001100"},
    {768, "011001101"},  {832, "011010010"},  {896, "011010011"},  {960, "011010100"},  {1024, "011010101"},
    {1088, "011010110"}, {1152, "011010111"}, {1216, "011011000"}, {1280, "011011001"}, {1344, "011011010"},
    {1408, "011011011"}, {1472, "010011000"}, {1536, "010011001"}, {1600, "010011010"}, {1664, "011000"},
    {1728, "010011011"},
};

constexpr RunCode kBlackCodes[] = {
    {0, "0000110111"},
    {1, "010"},
    {2, "11"},
    {3, "10"},
    {4, "011"},
    {5, "0011"},
    {6, "0010"},
    {7, "00011"},
    {8, "000101"},
    {9, "000100"},
    {10, "0000100"},
    {11, "0000101"},
    {12, "0000111"},
    {13, "00000100"},
    {14, "00000111"},
    {15, "000011000"},
    {16, "0000010111"},
    {17, "0000011000"},
    {18, "0000001000"},
    {19, "00001100111"},
    {20, "00001101000"},
    {21, "00001101100"},
    {22, "00000110111"},
    {23, "00000101000"},
    {24, "00000010111"},
    {25, "00000011000"},
    {26, "000011001010"},
    {27, "000011001011"},
    {28, "000011001100"},
    {29, "000011001101"},
    {30, "000001101000"},
    {31, "000001101001"},
    {32, "000001101010"},
    {33, "000001101011"},
    {34, "000011010010"},
    {35, "000011010011"},
    {36, "000011010100"},
    {37, "000011010101"},
    {38, "000011010110"},
    {39, "000011010111"},
    {40, "000001101100"},
    {41, "000001101101"},
    {42, "000011011010"},
    {43, "000011011011"},
    {44, "000001010100"},
    {45, "000001010101"},
    {46, "000001010110"},
    {47, "000001010111"},
    {48, "000001100100"},
    {49, "000001100101"},
    {50, "000001010010"},
    {51, "000001010011"},
    {52, "000000100100"},
    {53, "000000110111"},
    {54, "000000111000"},
    {55, "000000100111"},
    {56, "000000101000"},
    {57, "000001011000"},
    {58, "000001011001"},
    {59, "000000101011"},
    {60, "000000101100"},
    {61, "000001011010"},
    {62, "000001100110"},
    {63, "000001100111"},
    {64, "0000001111"},
    {128, "000011001000"},
    {192, "000011001001"},
    {256, "000001011011"},
    {320, "000000110011"},
    {384, "000000110100"},
    {448, "000000110101"},
    {512, "0000001101100"},
    {576, "0000001101101"},
    {640, "0000001001010"},
    {704, "0000001001011"},
    {768, "0000001001100"},
    {832, "0000001001101"},
    {896, "0000001110010"},
    {960, "0000001110011"},
    {1024, "0000001110100"},
    {1088, "0000001110101"},
    {1152, "0000001110110"},
    {1216, "0000001110111"},
    {1280, "0000001010010"},
    {1344, "0000001010011"},
    {1408, "0000001010100"},
    {1472, "0000001010101"},
    {1536, "0000001011010"},
    {1600, "0000001011011"},
    {1664, "0000001100100"},
    {1728, "0000001100101"},
};

// Make-up codes for long runs, shared by both colours.
constexpr RunCode kExtendedCodes[] = {
    {1792, "00000001000"},  {1856, "00000001100"},  {1920, "00000001101"},  {1984, "000000010010"},
    {2048, "000000010011"}, {2112, "000000010100"}, {2176, "000000010101"}, {2240, "000000010110"},
    {2304, "000000010111"}, {2368, "000000011100"}, {2432, "000000011101"}, {2496, "000000011110"},
    {2560, "000000011111"},
};

// The longest code has 13 bits; a run code is found by looking up the next 13 bits.
constexpr int kLookupBits = 13;

struct LookupEntry {
    std::uint16_t run = 0;
    std::uint8_t bits = 0;  // 0: no code starts with these bits
};
using RunLookup = std::array<LookupEntry, 1u << kLookupBits>;

void AddCodes(RunLookup& table, std::span<const RunCode> codes) {
    for (const RunCode& c : codes) {
        std::uint32_t value = 0;
        for (char bit : c.bits) value = value * 2 + (bit == '1' ? 1 : 0);
        const int shift = kLookupBits - static_cast<int>(c.bits.size());
        for (std::uint32_t i = value << shift; i < (value + 1) << shift; ++i) {
            table[i] = {c.run, static_cast<std::uint8_t>(c.bits.size())};
        }
    }
}

RunLookup BuildLookup(std::span<const RunCode> codes) {
    RunLookup table{};
    AddCodes(table, codes);
    AddCodes(table, kExtendedCodes);
    return table;
}

const RunLookup& Lookup(bool white) {
    static const RunLookup kWhiteLookup = BuildLookup(kWhiteCodes);
    static const RunLookup kBlackLookup = BuildLookup(kBlackCodes);
    return white ? kWhiteLookup : kBlackLookup;
}

// Most significant bit first. Past the end of the data every byte reads as 0, so a stream
// that stops early decodes as the end-of-block code.
class BitReader {
public:
    explicit BitReader(ivStream& source) : m_in(source) {}

    std::uint32_t Peek(int count) {
        while (m_count < count) {
            std::uint8_t b = 0;
            if (!m_in.ReadByte(b)) ++m_padBytes;
            m_window = (m_window << 8) | b;
            m_count += 8;
        }
        return static_cast<std::uint32_t>(m_window >> (m_count - count)) & ((1u << count) - 1);
    }
    // Unread bits that came from the data. Padding bytes are always the newest in the
    // window, and once one of their bits is read no data bit is left.
    int DataBitsLeft() const { return std::max(0, m_count - 8 * m_padBytes); }
    void Skip(int count) { m_count -= count; }
    std::uint32_t Read(int count) {
        std::uint32_t v = Peek(count);
        Skip(count);
        return v;
    }
    // Drops the unread bits of the byte being read; whole bytes in the window stay.
    void AlignToByte() { m_count -= m_count % 8; }

private:
    ivByteReader m_in;
    std::uint64_t m_window = 0;
    int m_count = 0;     // unread bits in the low end of m_window
    int m_padBytes = 0;  // zero bytes supplied past the end of the data
};

enum class Mode { kPass, kHorizontal, kVertical, kEndOfBlock, kExtension };

// Group 4 decoding of one image. Lines are lists of changing elements: the positions where the
// colour changes, starting with a change from white to black, each list closed by two copies
// of the width so that searches along the reference line always stop.
class G4Decoder {
public:
    G4Decoder(ivStream& source, ivImage2d& image, bool byteAlign)
        : m_bits(source), m_image(image), m_width(image.Width()), m_byteAlign(byteAlign) {
        m_ref = {m_width, m_width};
    }

    ivStatus Run();

private:
    Mode ReadMode(int& offset);
    bool ReadRun(bool white, std::uint32_t& run, ivStatus& end);
    // Returns false when decoding ends, with the status in `end`.
    bool DecodeRow(std::uint32_t y, ivStatus& end);
    bool Horizontal(std::uint8_t* row, std::int64_t from, ivStatus& end);
    void FindB1B2(std::int64_t& b1, std::int64_t& b2);
    void Paint(std::uint8_t* row, std::int64_t from, std::int64_t to, bool white) const;

    BitReader m_bits;
    ivImage2d& m_image;
    const std::uint32_t m_width;
    const bool m_byteAlign;
    std::vector<std::uint32_t> m_ref, m_cur;
    std::size_t m_refPos = 0;  // where the next search along the reference line starts
    std::int64_t m_a0 = -1;    // -1: the imaginary white element in front of the line
    bool m_white = true;       // colour of the run that starts at a0
};

Mode G4Decoder::ReadMode(int& offset) {
    offset = 0;
    if (m_bits.Read(1)) return Mode::kVertical;  // 1
    if (m_bits.Read(1)) {                        // 01x
        offset = m_bits.Read(1) ? 1 : -1;
        return Mode::kVertical;
    }
    if (m_bits.Read(1)) return Mode::kHorizontal;  // 001
    if (m_bits.Read(1)) return Mode::kPass;        // 0001
    for (int d = 2; d <= 3; ++d) {                 // 00001x, 000001x
        if (m_bits.Read(1)) {
            offset = m_bits.Read(1) ? d : -d;
            return Mode::kVertical;
        }
    }
    return m_bits.Read(1) ? Mode::kExtension : Mode::kEndOfBlock;
}

bool G4Decoder::ReadRun(bool white, std::uint32_t& run, ivStatus& end) {
    const RunLookup& table = Lookup(white);
    std::uint64_t total = 0;
    for (;;) {
        const LookupEntry& e = table[m_bits.Peek(kLookupBits)];
        if (e.bits == 0) {
            // A code cut off by the end of the data ends decoding like the end-of-block code.
            end = m_bits.DataBitsLeft() < kLookupBits ? kOk : kFail;
            return false;
        }
        m_bits.Skip(e.bits);
        // Each code takes bits from the data, so this sum is bounded by the data; the cap
        // only keeps it within 32 bits.
        total = std::min<std::uint64_t>(total + e.run, 0xFFFFFFFFu);
        if (e.run < 64) break;
    }
    run = static_cast<std::uint32_t>(total);
    return true;
}

void G4Decoder::FindB1B2(std::int64_t& b1, std::int64_t& b2) {
    // b1 is the first element right of a0 that changes to the colour opposite a0's: even
    // positions in the list change to black, odd ones to white. Elements before the last
    // hit minus one lie at or left of a0 (a0 only moves right), so the search resumes there.
    std::size_t j = m_refPos;
    const std::size_t parity = m_white ? 0 : 1;
    while (j < m_ref.size() && (m_ref[j] <= m_a0 || (j & 1) != parity)) ++j;
    b1 = j < m_ref.size() ? m_ref[j] : m_width;
    b2 = j + 1 < m_ref.size() ? m_ref[j + 1] : m_width;
    m_refPos = j > 0 ? j - 1 : 0;
}

void G4Decoder::Paint(std::uint8_t* row, std::int64_t from, std::int64_t to, bool white) const {
    // Only white runs are stored, as 1 bits; black runs keep the row's 0 bits.
    to = std::min<std::int64_t>(to, m_width);
    if (!white || from >= to) return;
    auto first = static_cast<std::size_t>(from >> 3), last = static_cast<std::size_t>((to - 1) >> 3);
    auto head = static_cast<std::uint8_t>(0xFFu >> (from & 7));
    auto tail = static_cast<std::uint8_t>(0xFFu << (7 - ((to - 1) & 7)));
    if (first == last) {
        row[first] |= head & tail;
        return;
    }
    row[first] |= head;
    std::memset(row + first + 1, 0xFF, last - first - 1);
    row[last] |= tail;
}

bool G4Decoder::Horizontal(std::uint8_t* row, std::int64_t from, ivStatus& end) {
    std::uint32_t run1 = 0, run2 = 0;
    if (!ReadRun(m_white, run1, end) || !ReadRun(!m_white, run2, end)) return false;
    std::int64_t a1 = std::min<std::int64_t>(from + run1, m_width);
    std::int64_t a2 = std::min<std::int64_t>(a1 + run2, m_width);
    Paint(row, from, a1, m_white);
    Paint(row, a1, a2, !m_white);
    m_cur.push_back(static_cast<std::uint32_t>(a1));
    m_cur.push_back(static_cast<std::uint32_t>(a2));
    m_a0 = a2;
    return true;
}

bool G4Decoder::DecodeRow(std::uint32_t y, ivStatus& end) {
    std::uint8_t* row = m_image.Row(y);
    bool reached = false;
    while (m_a0 < m_width) {
        int offset = 0;
        Mode mode = ReadMode(offset);
        if (mode == Mode::kEndOfBlock) {
            end = kOk;
            return false;
        }
        if (mode == Mode::kExtension) {
            end = m_bits.Read(3) == 7 ? kUncompressedMode : kOtherExtension;
            return false;
        }
        if (!reached) {
            std::memset(row, 0, m_image.Stride());
            reached = true;
        }
        const std::int64_t from = std::max<std::int64_t>(m_a0, 0);
        if (mode == Mode::kHorizontal) {
            if (!Horizontal(row, from, end)) return false;
            continue;
        }
        std::int64_t b1 = 0, b2 = 0;
        FindB1B2(b1, b2);
        if (mode == Mode::kPass) {
            Paint(row, from, b2, m_white);
            m_a0 = b2;
            continue;
        }
        // Damaged data may point left of a0 or past the line; keep the line ordered.
        std::int64_t a1 = std::clamp<std::int64_t>(b1 + offset, from, m_width);
        Paint(row, from, a1, m_white);
        m_cur.push_back(static_cast<std::uint32_t>(a1));
        m_a0 = a1;
        m_white = !m_white;
    }
    return true;
}

ivStatus G4Decoder::Run() {
    ivStatus end = kOk;
    // Rows past the height have nowhere to go: decoding stops there.
    for (std::uint32_t y = 0; y < m_image.Height(); ++y) {
        if (!DecodeRow(y, end)) return end;
        m_cur.push_back(m_width);
        m_cur.push_back(m_width);
        std::swap(m_ref, m_cur);
        m_cur.clear();
        m_refPos = 0;
        m_a0 = -1;
        m_white = true;
        if (m_byteAlign) m_bits.AlignToByte();
    }
    return kOk;
}

}  // namespace

ivStatus DecodeCCITTG4(ivStream& source, ivImage2d& image, const CcittParams& params) {
    if (image.BitsPerPixel() != 1 || image.Pixels().empty()) return kInvalidArg;
    std::fill(image.Pixels().begin(), image.Pixels().end(), std::uint8_t{0xFF});
    auto& palette = image.Palette();
    if (palette.size() < 2) palette.resize(2);
    // White runs are stored as 1 bits, so without BlackIs1 entry 1 is white; with BlackIs1 the
    // samples mean the opposite and the image reads as the file's samples do.
    palette[0] = params.blackIs1 ? kWhite : kBlack;
    palette[1] = params.blackIs1 ? kBlack : kWhite;
    // Deliberate: one-dimensional and mixed coding (K >= 0) are not decoded.
    if (params.k >= 0) return kOk;
    try {
        G4Decoder decoder(source, image, params.encodedByteAlign);
        return decoder.Run();
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;  // the rows decoded so far stay in the bitmap
    }
}

ivStatus DecodeCCITTFax(pdfDocument& doc, const pdfObject* params, ivImage2d& image, ivStream& source) {
    CcittParams p;
    const pdfDict* dict = AsDict(Deref(doc, params));
    for (const pdfPair& e : dict ? dict->Entries() : std::span<const pdfPair>{}) {
        const pdfBytes* key = AsName(e.key);
        if (!key) continue;
        // A value of the wrong type reports and leaves the default in force.
        if (std::strcmp(key->Chars(), "BlackIs1") == 0) {
            p.blackIs1 = false;
            GetBool(doc, e.value, &p.blackIs1);
        } else if (std::strcmp(key->Chars(), "EncodedByteAlign") == 0) {
            p.encodedByteAlign = false;
            GetBool(doc, e.value, &p.encodedByteAlign);
        } else if (std::strcmp(key->Chars(), "K") == 0) {
            std::uint32_t k = 0;
            GetInteger(doc, e.value, &k);
            p.k = static_cast<std::int32_t>(k);
        }
    }
    if (p.k >= 0) ReportExtra(doc, "CCITT data with K %d is not decoded; the image is left white", p.k);
    const ivStatus st = DecodeCCITTG4(source, image, p);
    if (st == kFail)
        ReportExtra(doc, "CCITT data is damaged: a code is found in no table");
    else if (st == kUncompressedMode || st == kOtherExtension)
        ReportExtra(doc, "CCITT data uses an extension that is not decoded");
    return st;
}

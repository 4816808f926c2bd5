#include "pdf/decode/pdfLzw.h"

#include <new>
#include <vector>

#include "platform/ivByteReader.h"

namespace {

constexpr std::uint32_t kClearCode = 256;
constexpr std::uint32_t kEndCode = 257;
constexpr std::uint32_t kFirstFree = 258;
// Entries go on being added once codes are 12 bits wide, although only the first 4,096 can be
// named. The table is allocated once at this size; when it is full, decoding goes on without
// new entries.
constexpr std::uint32_t kTableSize = 5119;
constexpr int kMinWidth = 9;
constexpr int kMaxWidth = 12;

struct LzwEntry {
    std::uint16_t prefix = 0;  // entry of the string without its last byte
    std::uint16_t length = 1;  // bytes in the string
    std::uint8_t last = 0;
    std::uint8_t first = 0;
};

// One decoding run: the table, the bit buffer and the output vector it appends to.
class LzwDecoder {
public:
    LzwDecoder(ivStream& source, std::vector<std::uint8_t>& out, bool earlyChange)
        : m_in(source), m_out(out), m_table(kTableSize), m_lateBy(earlyChange ? 0 : 1) {
        for (std::uint32_t i = 0; i < 256; ++i) {
            m_table[i].last = static_cast<std::uint8_t>(i);
            m_table[i].first = static_cast<std::uint8_t>(i);
        }
        Reset();
    }

    ivStatus Run(std::uint64_t limit);
    bool NotCleared() const { return m_notCleared; }

private:
    void Reset();
    bool ReadCode(std::uint32_t& code);
    void AddEntry(std::uint32_t code);
    bool WriteString(std::uint32_t code);

    ivByteReader m_in;
    std::vector<std::uint8_t>& m_out;
    std::vector<LzwEntry> m_table;
    std::uint32_t m_bits = 0;  // unread bits sit in the low m_bitCount bits
    int m_bitCount = 0;
    int m_width = kMinWidth;
    std::uint32_t m_mask = 0;
    std::uint32_t m_nextFree = 0;
    std::uint32_t m_threshold = 0;
    std::uint32_t m_previous = 0;
    bool m_havePrevious = false;
    bool m_notCleared = false;  // codes went on after the table was full
    std::uint32_t m_lateBy;  // 1 without early change: widths switch one entry later
};

void LzwDecoder::Reset() {
    m_width = kMinWidth;
    m_mask = (1u << kMinWidth) - 1;
    m_nextFree = kFirstFree;
    m_threshold = m_mask - 1;
    m_havePrevious = false;
}

bool LzwDecoder::ReadCode(std::uint32_t& code) {
    // The count left over from the previous code is always below 8, so one or two bytes
    // make up a code of at most 12 bits.
    std::uint8_t b = 0;
    do {
        if (!m_in.ReadByte(b)) return false;
        m_bits = (m_bits << 8) | b;
        m_bitCount += 8;
    } while (m_bitCount < m_width);
    code = (m_bits >> (m_bitCount - m_width)) & m_mask;
    m_bitCount -= m_width;
    return true;
}

void LzwDecoder::AddEntry(std::uint32_t code) {
    // Every 12-bit code is in use: the encoder should have cleared the table by now.
    if (m_nextFree >= 4096) m_notCleared = true;
    if (m_nextFree >= kTableSize) return;  // full: decoding goes on without new entries
    const LzwEntry& prev = m_table[m_previous];
    LzwEntry& e = m_table[m_nextFree];
    e.prefix = static_cast<std::uint16_t>(m_previous);
    e.length = static_cast<std::uint16_t>(prev.length + 1);
    e.first = prev.first;
    // A code equal to the entry being made stands for the previous string plus its own
    // first byte.
    e.last = code < m_nextFree ? m_table[code].first : prev.first;
    ++m_nextFree;
    if (m_nextFree > m_threshold + m_lateBy && m_width < kMaxWidth) {
        ++m_width;
        m_mask = (1u << m_width) - 1;
        m_threshold = m_mask - 1;
    }
}

bool LzwDecoder::WriteString(std::uint32_t code) {
    if (code < 256) {
        m_out.push_back(static_cast<std::uint8_t>(code));
        return true;
    }
    std::size_t length = m_table[code].length;
    std::size_t start = m_out.size();
    m_out.resize(start + length);
    std::uint32_t e = code;
    for (std::size_t i = length; i-- > 0;) {
        m_out[start + i] = m_table[e].last;
        if (i > 0) e = m_table[e].prefix;
    }
    // Every chain ends in a single byte; anything else means the table is damaged.
    return m_table[e].length == 1;
}

ivStatus LzwDecoder::Run(std::uint64_t limit) {
    std::uint32_t code = 0;
    for (;;) {
        if (m_out.size() >= limit) return kRemark;
        if (!ReadCode(code)) return kFail;
        if (code == kEndCode) return kOk;
        if (code == kClearCode) {
            Reset();
            continue;
        }
        if (!m_havePrevious) {
            // After a clear code, or at the start of data that lacks one: a single byte.
            if (code >= kFirstFree) return kFail;
            m_out.push_back(static_cast<std::uint8_t>(code));
            m_previous = code;
            m_havePrevious = true;
            continue;
        }
        if (code > m_nextFree) return kFail;  // not defined yet
        AddEntry(code);
        m_previous = code;
        if (!WriteString(code)) return kFail;
    }
}

}  // namespace

ivStatus DecodeLZW(ivStream& source, ivMemStream& out, bool earlyChange, std::uint64_t limit, bool* notCleared) {
    ivStatus st = kOk;
    try {
        LzwDecoder decoder(source, out.Data(), earlyChange);
        st = decoder.Run(limit);
        if (notCleared) *notCleared = decoder.NotCleared();
    } catch (const std::bad_alloc&) {
        st = kOutOfMemory;  // what was appended before stays
    }
    out.Seek(0, ivSeekOrigin::End);
    return st;
}

#include "pdf/decode/pdfPredictor.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <vector>

#include "platform/ivByteReader.h"
#include "platform/ivMemStream.h"

namespace {

// Rows are read in pieces of this size so that a huge Columns value costs memory only for
// the bytes that actually arrive.
constexpr std::uint64_t kReadChunk = 64 * 1024;
// Longer rows are not undone at all (no image is that wide): the two rows held stay small
// whatever Columns and Colors claim.
constexpr std::uint64_t kMaxRowLength = 16 * 1024 * 1024;

// Bytes of one row as stored: 16-bit components count as 8-bit ones, deliberately.
std::uint64_t RowLength(std::uint64_t rowBytes, std::uint32_t bitsPerComponent) {
    if (bitsPerComponent == 0 || bitsPerComponent >= 8) return rowBytes;
    // ceil(rowBytes * bpc / 8) without overflowing 64 bits.
    return (rowBytes / 8) * bitsPerComponent + ((rowBytes % 8) * bitsPerComponent + 7) / 8;
}

// Reads `length` bytes into `row`; false (with what came in `row`) when the data ends first.
bool ReadRow(ivByteReader& in, std::vector<std::uint8_t>& row, std::uint64_t length) {
    row.clear();
    while (row.size() < length) {
        std::size_t old = row.size();
        auto chunk = static_cast<std::uint32_t>(std::min<std::uint64_t>(length - old, kReadChunk));
        row.resize(old + chunk);
        std::uint32_t got = in.Read(row.data() + old, chunk);
        if (got < chunk) {
            row.resize(old + got);
            return false;
        }
    }
    return true;
}

std::uint8_t Paeth(int a, int b, int c) {
    int p = a + b - c;
    int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return static_cast<std::uint8_t>(a);
    return static_cast<std::uint8_t>(pb <= pc ? b : c);
}

// Undoes one row's filter in place. The walk goes component by component and, within a
// component, pixel by pixel over Columns x Colors positions whatever the stored row length;
// positions at or past the stored length are never written out and feed no stored byte, so
// they are not kept. `prev` is all zeros for the first row.
void Unfilter(std::uint8_t tag, std::vector<std::uint8_t>& cur, const std::vector<std::uint8_t>& prev,
              std::uint64_t columns, std::uint64_t colors) {
    if (tag < 1 || tag > 4) return;  // None, and unknown tags, leave the row as it is
    const std::uint64_t stored = cur.size();
    for (std::uint64_t c = 0; c < colors && c < stored; ++c) {
        for (std::uint64_t p = 0; p < columns; ++p) {
            std::uint64_t i = p * colors + c;
            if (i >= stored) break;
            int left = p > 0 ? cur[i - colors] : 0;
            int up = prev[i];
            int upLeft = p > 0 ? prev[i - colors] : 0;
            int add = tag == 1 ? left : tag == 2 ? up : tag == 3 ? (left + up) >> 1 : Paeth(left, up, upLeft);
            cur[i] = static_cast<std::uint8_t>(cur[i] + add);
        }
    }
}

// Undoes the row filters as the consumer reads: only the current and the previous row are
// held, so a few bytes read from a huge stream cost a few rows, not the whole data. Reading
// ends quietly where the rows end: a short last row, a read error of the source and `limit`
// all look like the end of the data.
class PredictorStream final : public ivStream {
public:
    PredictorStream(ivRef<ivStream> source, std::uint64_t columns, std::uint64_t colors, std::uint64_t rowLength,
                    std::uint64_t limit)
        : m_source(std::move(source)),
          m_in(*m_source),
          m_columns(columns),
          m_colors(colors),
          m_rowLength(rowLength),
          m_limit(limit) {}

    ivStatus Read(void* buffer, std::uint32_t count, std::uint32_t* read) override {
        auto* out = static_cast<std::uint8_t*>(buffer);
        std::uint32_t n = 0;
        while (n < count && (m_next < m_cur.size() || NextRow())) {
            auto take = static_cast<std::uint32_t>(std::min<std::uint64_t>(count - n, m_cur.size() - m_next));
            std::copy_n(m_cur.data() + m_next, take, out + n);
            m_next += take;
            n += take;
        }
        m_produced += n;
        if (read) *read = n;
        return n ? kOk : kRemark;
    }
    ivStatus Write(const void*, std::uint32_t, std::uint32_t* written) override {
        if (written) *written = 0;
        return kWrongType;
    }
    std::int64_t Seek(std::int64_t offset, ivSeekOrigin origin) override {
        if (origin == ivSeekOrigin::Current && offset == 0) return static_cast<std::int64_t>(m_produced);
        return kWrongType;
    }
    std::uint64_t Position() const override { return m_produced; }
    std::uint64_t Size() const override { return m_produced; }
    ivStatus SetSize(std::uint64_t) override { return kWrongType; }

private:
    // The next whole row into m_cur; false at the end of the rows.
    bool NextRow() {
        if (m_ended) return false;
        std::swap(m_cur, m_prev);
        std::uint8_t tag = 0;
        try {
            m_ended = m_rowsOut >= m_limit || !m_in.ReadByte(tag) || !ReadRow(m_in, m_cur, m_rowLength);
        } catch (const std::bad_alloc&) {
            m_ended = true;
        }
        if (m_ended) {
            m_cur.clear();
            m_prev.clear();
            m_next = 0;
            return false;
        }
        // A whole row has arrived, so a zero row of the same size is no larger than the data.
        if (m_prev.size() != m_cur.size()) m_prev.assign(m_cur.size(), 0);
        Unfilter(tag, m_cur, m_prev, m_columns, m_colors);
        m_next = 0;
        m_rowsOut += m_cur.size();
        return true;
    }

    ivRef<ivStream> m_source;
    ivByteReader m_in;
    std::uint64_t m_columns, m_colors, m_rowLength, m_limit;
    std::vector<std::uint8_t> m_cur, m_prev;
    std::size_t m_next = 0;       // next byte of m_cur to hand out
    std::uint64_t m_rowsOut = 0;  // bytes of the rows made so far
    std::uint64_t m_produced = 0;
    bool m_ended = false;
};

}  // namespace

ivRef<ivStream> ApplyPNGPredictor(ivRef<ivStream> source, std::uint32_t columns, std::uint32_t colors,
                                  std::uint32_t bitsPerComponent, std::uint64_t limit) {
    if (!source) return source;
    const std::uint64_t rowLength = RowLength(std::uint64_t(columns) * colors, bitsPerComponent);
    // Rows of no bytes (Columns 0) give no data however many tags follow.
    if (rowLength == 0) return ivMemStream::Create();
    // Rows too long to hold are treated as row buffers that cannot be had: the data passes
    // through as it is.
    if (rowLength > kMaxRowLength) return source;
    return std::make_shared<PredictorStream>(std::move(source), columns, colors, rowLength, limit);
}

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

void Unpredict(ivStream& source, std::vector<std::uint8_t>& out, std::uint64_t columns, std::uint64_t colors,
               std::uint64_t rowLength, std::uint64_t limit) {
    ivByteReader in(source);
    std::vector<std::uint8_t> cur, prev;
    std::uint8_t tag = 0;
    while (out.size() < limit && in.ReadByte(tag) && ReadRow(in, cur, rowLength)) {
        // A whole row has arrived, so a zero row of the same size is no larger than the data.
        if (prev.size() != cur.size()) prev.assign(cur.size(), 0);
        Unfilter(tag, cur, prev, columns, colors);
        out.insert(out.end(), cur.begin(), cur.end());
        std::swap(cur, prev);
    }
}

}  // namespace

ivRef<ivStream> ApplyPNGPredictor(ivRef<ivStream> source, std::uint32_t columns, std::uint32_t colors,
                                  std::uint32_t bitsPerComponent, std::uint64_t limit) {
    if (!source) return source;
    const std::uint64_t rowBytes = std::uint64_t(columns) * colors;
    auto out = ivMemStream::Create();
    try {
        Unpredict(*source, out->Data(), columns, colors, RowLength(rowBytes, bitsPerComponent), limit);
    } catch (const std::bad_alloc&) {
        // Rows are allocated as they arrive; the rows finished before memory ran out stay.
    }
    source.reset();
    out->Rewind();
    return out;
}

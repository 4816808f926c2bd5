#include "pdf/object/pdfParser.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"

pdfParser::pdfParser(const pdfDocument* owner, ivRef<ivStream> stream, std::uint32_t start,
                     std::uint32_t limit)
    : m_owner(owner), m_stream(std::move(stream)), m_limit(limit) {
    if (start == kKeepPosition) start = static_cast<std::uint32_t>(m_stream->Position());
    m_bufferPos = start;
    auto whole = m_stream->Contiguous();
    if (!whole.empty()) {
        m_inMemory = true;
        std::size_t from = std::min<std::size_t>(start, whole.size());
        std::size_t n = std::min<std::size_t>(whole.size() - from, limit);
        m_begin = m_cur = whole.data() + from;
        m_end = m_begin + n;
        m_total = static_cast<std::uint32_t>(n);
        return;
    }
    m_begin = m_cur = m_end = m_buffer.data();
    Fill();
    m_bufferPos = start;
}

ivStatus pdfParser::Fill() {
    if (m_inMemory) return kFail;
    m_bufferPos += static_cast<std::uint32_t>(m_end - m_begin);
    m_begin = m_cur = m_end = m_buffer.data();
    std::uint32_t want = std::min<std::uint32_t>(m_limit, static_cast<std::uint32_t>(m_buffer.size()));
    if (want == 0) return kFail;
    // Other readers may have moved a shared stream meanwhile; streams that only read forward
    // (an inflating one) are never shared, so they need no seek.
    std::int64_t at = m_bufferPos;
    if (m_stream->Position() != m_bufferPos) at = m_stream->Seek(m_bufferPos, ivSeekOrigin::Begin);
    std::uint32_t got = 0;
    ivStatus st = at < 0 ? static_cast<ivStatus>(at) : m_stream->Read(m_buffer.data(), want, &got);
    m_total += got;
    if (Failed(st)) {
        if (m_owner) {
            std::string why = m_stream->ErrorText();
            if (!why.empty())
                Report(*m_owner, "Read error: %s after reading %d bytes", why.c_str(),
                       static_cast<int>(m_total));
            else
                ReportAt(*m_owner, *this, "Uknown Read Error after reading %d bytes",
                         static_cast<int>(m_total));
        }
        return st;
    }
    if (m_limit != kNoLimit) m_limit -= got;
    m_end = m_begin + got;
    return got ? kOk : kFail;
}

bool IsTokenSpace(std::uint8_t c) {
    return c == ' ' || c == '\r' || c == '\n' || c == '\t';
}

bool IsTokenDelimiter(std::uint8_t c) {
    switch (c) {
        case '"':
        case '#':
        case '(':
        case ')':
        case ',':
        case '/':
        case ';':
        case '<':
        case '=':
        case '>':
        case '[':
        case ']':
        case '{':
        case '}':
            return true;
        default:
            return false;
    }
}

namespace {

// Token character classes: 1 white space, 2 delimiter, 0 ordinary.
constexpr std::array<std::uint8_t, 256> MakeTokenClasses() {
    std::array<std::uint8_t, 256> t{};
    for (std::uint8_t c : {' ', '\r', '\n', '\t'}) t[c] = 1;
    for (std::uint8_t c : {'"', '#', '(', ')', ',', '/', ';', '<', '=', '>', '[', ']', '{', '}'}) t[c] = 2;
    return t;
}
constexpr std::array<std::uint8_t, 256> kTokenClass = MakeTokenClasses();

}  // namespace

bool ReadToken(pdfParser& source, std::string& token) {
    token.clear();
    std::uint8_t c = 0;
    do {
        if (!source.ReadByte(c)) return false;
    } while (kTokenClass[c] == 1);
    token += static_cast<char>(c);
    if (kTokenClass[c] == 2) return true;
    // Most tokens end inside the buffer: scan them there at once.
    for (;;) {
        std::size_t n = 0;
        if (const std::uint8_t* p = source.Peek(1)) {
            const std::size_t avail = source.Available();
            while (n < avail && kTokenClass[p[n]] == 0) ++n;
            token.append(reinterpret_cast<const char*>(p), n);
            source.Skip(n);
            if (n < avail) break;  // the byte after the token is in the buffer
            continue;
        }
        if (!source.ReadByte(c)) return true;
        if (kTokenClass[c] != 0) {
            source.PushBack(c);
            break;
        }
        token += static_cast<char>(c);
    }
    // The token ended on white space (consumed) or a delimiter (left for the next token).
    if (source.ReadByte(c) && kTokenClass[c] == 2) source.PushBack(c);
    return true;
}

std::int32_t TokenToLong(const std::string& token) {
    // atol without its undefined behaviour on overflow: digits wrap in 32 bits.
    std::size_t i = 0;
    while (i < token.size() && (token[i] == ' ' || (token[i] >= '\t' && token[i] <= '\r'))) ++i;
    bool negative = false;
    if (i < token.size() && (token[i] == '+' || token[i] == '-')) negative = token[i++] == '-';
    std::uint32_t v = 0;
    for (; i < token.size() && token[i] >= '0' && token[i] <= '9'; ++i)
        v = v * 10 + std::uint32_t(token[i] - '0');
    return static_cast<std::int32_t>(negative ? 0u - v : v);
}

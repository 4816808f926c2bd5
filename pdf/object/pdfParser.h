#pragma once
#include <array>
#include <cstdint>
#include <string>

#include "platform/ivStream.h"

class pdfDocument;

// Byte source of the lexer and parser: reads a stream from a start position through a
// 1 KiB buffer (or straight from memory when the stream holds its data in memory), with a
// byte limit and a one-byte push-back. ReadByte is inline and non-virtual: it is the hot path.
class pdfParser {
public:
    static constexpr std::uint32_t kNoLimit = 0xFFFFFFFFu;
    static constexpr std::uint32_t kKeepPosition = 0xFFFFFFFFu;

    // `owner` receives read-error messages and may be null.
    pdfParser(const pdfDocument* owner, ivRef<ivStream> stream, std::uint32_t start,
              std::uint32_t limit = kNoLimit);
    pdfParser(const pdfParser&) = delete;
    pdfParser& operator=(const pdfParser&) = delete;

    // The next byte; false at end of data or on a read error (the byte is then 0).
    bool ReadByte(std::uint8_t& b) {
        if (m_hasPushBack) {
            m_hasPushBack = false;
            b = m_pushBack;
            return true;
        }
        if (m_cur == m_end && Failed(Fill())) {
            b = 0;
            return false;
        }
        b = *m_cur++;
        return true;
    }
    void PushBack(std::uint8_t b) {
        m_pushBack = b;
        m_hasPushBack = true;
    }
    // Position of the next unread buffer byte within the stream (a pushed-back byte is not
    // counted back).
    bool GetPosition(std::uint32_t& pos) const {
        pos = m_bufferPos + static_cast<std::uint32_t>(m_cur - m_begin);
        return true;
    }

    // The next `n` bytes when they sit in the buffer and no byte is pushed back, else null.
    const std::uint8_t* Peek(std::size_t n) const {
        return !m_hasPushBack && static_cast<std::size_t>(m_end - m_cur) >= n ? m_cur : nullptr;
    }
    // Consumes bytes seen with Peek.
    void Skip(std::size_t n) { m_cur += n; }
    // Bytes left in the buffer.
    std::size_t Available() const { return static_cast<std::size_t>(m_end - m_cur); }

    const pdfDocument* Owner() const { return m_owner; }
    // Nesting depth of arrays and dictionaries being parsed from this source.
    int& Depth() { return m_depth; }
    // Scratch space for tokens, reused from one token to the next.
    std::string& Scratch() { return m_scratch; }

private:
    ivStatus Fill();

    const pdfDocument* m_owner;
    ivRef<ivStream> m_stream;
    const std::uint8_t* m_begin = nullptr;
    const std::uint8_t* m_cur = nullptr;
    const std::uint8_t* m_end = nullptr;
    std::uint32_t m_bufferPos = 0;  // stream position of m_begin
    std::uint32_t m_limit;          // bytes still allowed; kNoLimit for no limit
    std::uint32_t m_total = 0;      // bytes obtained so far
    bool m_inMemory = false;        // reading straight from the stream's memory
    bool m_hasPushBack = false;
    std::uint8_t m_pushBack = 0;
    int m_depth = 0;
    std::string m_scratch;
    std::array<std::uint8_t, 1024> m_buffer;
};

// Character classes of the token reader: white space is blank, CR, LF and TAB only; the
// delimiters are " # ( ) , / ; < = > [ ] { } (not %).
bool IsTokenSpace(std::uint8_t c);
bool IsTokenDelimiter(std::uint8_t c);

// The whitespace-delimited token reader of cross-reference tables and object headers.
// False at end of data before a token.
bool ReadToken(pdfParser& source, std::string& token);

// atol on a token: optional blanks and sign, then digits; 0 when none.
std::int32_t TokenToLong(const std::string& token);

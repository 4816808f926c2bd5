#include "pdf/object/pdfObjectParser.h"

#include <array>
#include <cstring>
#include <string>

#include "pdf/decode/ivDecrypt.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfInlineImage.h"
#include "pdf/object/pdfParser.h"

namespace {

bool IsDigit(std::uint8_t c) {
    return c >= '0' && c <= '9';
}

// Bytes that end names and keywords besides white space; note that ")", "{" and "}" do not.
bool EndsWord(std::uint8_t c) {
    switch (c) {
        case '%':
        case '(':
        case '/':
        case '<':
        case '>':
        case '[':
        case ']':
            return true;
        default:
            return false;
    }
}

// Byte classes of names and keywords: 0 a byte of the word, 1 white space (ends it, consumed),
// 2 a delimiter (ends it, left for the next token), 3 '#' (an escape in names).
constexpr std::array<std::uint8_t, 256> MakeWordClasses() {
    std::array<std::uint8_t, 256> t{};
    for (int c = 0; c <= 32; ++c) t[c] = 1;
    for (std::uint8_t c : {'%', '(', '/', '<', '>', '[', ']'}) t[c] = 2;
    t['#'] = 3;
    return t;
}
constexpr std::array<std::uint8_t, 256> kWordClass = MakeWordClasses();

// Appends the run of plain word bytes that starts at the source's next byte, straight from
// its buffer (escapes excluded when `stopAtEscape`); returns how many it took.
std::size_t TakeWordRun(pdfParser& source, std::string& out, bool stopAtEscape) {
    const std::uint8_t* p = source.Peek(1);
    if (!p) return 0;
    const std::size_t avail = source.Available();
    std::size_t n = 0;
    while (n < avail && (kWordClass[p[n]] == 0 || (!stopAtEscape && kWordClass[p[n]] == 3))) ++n;
    out.append(reinterpret_cast<const char*>(p), n);
    source.Skip(n);
    return n;
}

int HexValue(std::uint8_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

struct Number {
    bool isReal = false;
    bool failed = false;  // a second point: keep the integer part
    std::uint32_t integer = 0;
    double real = 0;
};

// How a keyword ended: on a delimiter (pushed back), on white space (consumed) or at the end.
enum class WordEnd { Delimiter, Space, EndOfData };

// One level of the object parser. Integers are held back, up to two, because a number
// followed by another may be the start of an indirect reference.
class ObjectReader {
public:
    ObjectReader(pdfDocument& doc, pdfParser& src, ObjList& list, unsigned flags)
        : m_doc(doc), m_src(src), m_list(list), m_flags(flags) {}

    ivStatus Run();

private:
    void Append(pdfObject* obj) {
        Flush();
        m_list.items.push_back(obj);
    }
    void Flush() {
        for (int i = 0; i < m_pending; ++i)
            m_list.items.push_back(m_doc.Shared().Int(static_cast<std::int32_t>(m_ints[i])));
        m_pending = 0;
    }
    void FlushOlder() {
        m_list.items.push_back(m_doc.Shared().Int(static_cast<std::int32_t>(m_ints[0])));
        m_ints[0] = m_ints[1];
        m_pending = 1;
    }

    void SkipComment();
    void OnReference();
    void OnDigit(std::uint8_t c);
    // Second dispatch; returns true when the parse ends with `*result`.
    bool Dispatch(std::uint8_t c, ivStatus* result);
    bool OnKeyword(std::uint8_t first, ivStatus* result);
    void OnStreamKeyword(WordEnd end, std::uint8_t endByte);
    ivStatus OnInlineImageData(WordEnd end);
    void OnMinus();

    Number ReadNumber(std::uint32_t firstDigit, bool startsWithPoint);
    ivStatus ReadName();
    ivStatus ReadLiteralString();
    ivStatus ReadHexString();
    ivStatus ReadEscape(std::string& bytes);
    void AppendString(std::string& bytes);
    void Decrypt(std::string& bytes);

    pdfDocument& m_doc;
    pdfParser& m_src;
    ObjList& m_list;
    unsigned m_flags;
    std::uint32_t m_ints[2] = {0, 0};
    int m_pending = 0;
    ivStatus m_status = kFail;  // becomes 0 at the first token
    bool m_started = false;
    std::ptrdiff_t m_biIndex = -1;
};

ivStatus ObjectReader::Run() {
    std::uint8_t c = 0;
    for (;;) {
        do {
            if (!m_src.ReadByte(c)) {
                Flush();
                return m_status;
            }
        } while (c <= 32);
        if (c != '%' && !m_started) {
            m_started = true;
            m_status = kOk;
        }
        ivStatus result = kOk;
        switch (c) {
            case '>':
                Flush();
                if (m_flags & kParseInDict) {
                    if (!m_src.ReadByte(c)) return kFail;
                    if (c == '>') return kOk;
                    ReportAt(m_doc, m_src, "Expected - <");
                } else {
                    ReportAt(m_doc, m_src, "Unexpected - >");
                }
                if (Dispatch(c, &result)) return result;
                break;
            case ']':
                Flush();
                if (m_flags & kParseInArray) return kOk;
                ReportAt(m_doc, m_src, "Unexpected - ]");
                if (Dispatch(c, &result)) return result;
                break;
            case '%':
                SkipComment();
                break;
            case 'R':
                if (m_flags & kParseContent) {
                    Flush();
                    if (Dispatch(c, &result)) return result;
                } else {
                    OnReference();
                }
                break;
            default:
                if (IsDigit(c)) {
                    OnDigit(c);
                } else {
                    Flush();
                    if (Dispatch(c, &result)) return result;
                }
        }
    }
}

void ObjectReader::SkipComment() {
    std::uint8_t c = 0;
    for (;;) {
        if (!m_src.ReadByte(c)) {
            m_status = kRemark;
            return;
        }
        if (c == '\n') return;
        if (c == '\r') {
            if (m_src.ReadByte(c) && c != '\n') m_src.PushBack(c);
            return;
        }
    }
}

void ObjectReader::OnReference() {
    if (m_pending == 2) {
        m_list.items.push_back(NewRef(m_doc.Arena(), m_ints[0], static_cast<std::uint16_t>(m_ints[1])));
        m_pending = 0;
    } else {
        ReportAt(m_doc, m_src, "Error reading indirect reference");
    }
}

void ObjectReader::OnDigit(std::uint8_t c) {
    if (m_pending == 2) FlushOlder();
    Number n = ReadNumber(c - '0', false);
    if (n.isReal && !n.failed) {
        Append(NewReal(m_doc.Arena(), n.real));
    } else {
        m_ints[m_pending++] = n.integer;
    }
}

Number ObjectReader::ReadNumber(std::uint32_t firstDigit, bool startsWithPoint) {
    Number n;
    n.integer = startsWithPoint ? 0 : firstDigit;
    n.isReal = startsWithPoint;
    double scale = 10;
    std::uint8_t c = 0;
    if (!n.isReal) {  // the digits of an integer, straight from the buffer
        if (const std::uint8_t* p = m_src.Peek(1)) {
            const std::size_t avail = m_src.Available();
            std::size_t i = 0;
            for (; i < avail && IsDigit(p[i]); ++i) n.integer = n.integer * 10 + std::uint32_t(p[i] - '0');
            m_src.Skip(i);
        }
    }
    while (m_src.ReadByte(c)) {
        if (IsDigit(c)) {
            if (n.isReal) {
                n.real += (c - '0') / scale;
                scale *= 10;
            } else {
                n.integer = n.integer * 10 + std::uint32_t(c - '0');
            }
        } else if (c == '.') {
            if (n.isReal) {
                ReportAt(m_doc, m_src, "Unexpected second point in floating point");
                n.failed = true;
                return n;
            }
            n.isReal = true;
            n.real = n.integer;
        } else {
            m_src.PushBack(c);
            break;
        }
    }
    return n;
}

void ObjectReader::OnMinus() {
    std::uint8_t c = 0;
    if (!m_src.ReadByte(c)) {
        ReportAt(m_doc, m_src, "Error reading int or float");
        return;
    }
    // Deliberate: whatever follows the sign counts as a digit, its code minus 48.
    Number n = c == '.' ? ReadNumber(0, true) : ReadNumber(static_cast<std::uint32_t>(c) - 48u, false);
    if (n.isReal && !n.failed)
        Append(NewReal(m_doc.Arena(), -n.real));
    else
        Append(m_doc.Shared().Int(static_cast<std::int32_t>(0u - n.integer)));
}

bool ObjectReader::Dispatch(std::uint8_t c, ivStatus* result) {
    ivStatus st = kOk;
    switch (c) {
        case '/':
            st = ReadName();
            break;
        case '<': {
            std::uint8_t next = 0;
            if (!m_src.ReadByte(next)) {
                *result = kFail;
                return true;
            }
            if (next == '<') {
                st =
                    ParseDictionary(m_doc, m_src, &m_list, nullptr, kParseInDict | (m_flags & kParseDecrypt));
            } else {
                m_src.PushBack(next);
                st = ReadHexString();
            }
            break;
        }
        case '[':
            st = ParseArray(m_doc, m_src, &m_list, kParseInArray | (m_flags & kParseDecrypt));
            break;
        case '(':
            st = ReadLiteralString();
            break;
        case '.': {
            Number n = ReadNumber(0, true);
            if (n.failed)
                Append(m_doc.Shared().Int(static_cast<std::int32_t>(n.integer)));
            else
                Append(NewReal(m_doc.Arena(), n.real));
            break;
        }
        case '-':
            OnMinus();
            break;
        default:
            return OnKeyword(c, result);
    }
    if (Failed(st)) {
        *result = st;
        return true;
    }
    return false;
}

bool ObjectReader::OnKeyword(std::uint8_t first, ivStatus* result) {
    std::string& word = m_src.Scratch();
    word.assign(1, static_cast<char>(first));
    WordEnd end = WordEnd::EndOfData;
    std::uint8_t c = 0;
    for (;;) {
        TakeWordRun(m_src, word, false);
        if (!m_src.ReadByte(c)) break;
        if (c <= 32) {
            end = WordEnd::Space;
            break;
        }
        if (EndsWord(c)) {
            m_src.PushBack(c);
            end = WordEnd::Delimiter;
            break;
        }
        word += static_cast<char>(c);
    }
    if (word == "ID") {
        Append(m_doc.Shared().Key(word));
        if (m_biIndex < 0) {
            ReportAt(m_doc, m_src, "There was no BI previously");
        } else {
            m_status = OnInlineImageData(end);
            m_biIndex = -1;
        }
    } else if (word == "BI") {
        if (m_biIndex >= 0) ReportAt(m_doc, m_src, "Nested Inline images are not allowed");
        m_biIndex = static_cast<std::ptrdiff_t>(m_list.items.size());
        Append(m_doc.Shared().Key(word));
    } else if (word == "true" || word == "false") {
        Append(m_doc.Shared().Bool(word == "true"));
    } else if (word == "null") {
        Append(m_doc.Shared().Null());
    } else if (word == "endobj") {
        if (m_flags & kParseToEndobj) {
            *result = kOk;
            return true;
        }
    } else if (word == "endstream") {
        if (m_flags & kParseContent) {
            *result = kOk;
            return true;
        }
    } else if (word == "stream") {
        OnStreamKeyword(end, c);
        *result = kOk;
        return true;
    } else {
        Append(m_doc.Shared().Key(word));
    }
    return false;
}

// Data starts after "stream", optional blanks and tabs, and LF or CR LF. The white-space
// byte that ended the keyword is the first one looked at, so "stream\n" and "stream\r\n"
// start the data right after the line end.
void ObjectReader::OnStreamKeyword(WordEnd end, std::uint8_t endByte) {
    std::uint8_t c = endByte;
    bool have = end == WordEnd::Space || m_src.ReadByte(c);
    while (have && (c == ' ' || c == '\t')) have = m_src.ReadByte(c);
    bool ok = have && c == '\n';
    if (have && c == '\r') ok = m_src.ReadByte(c) && c == '\n';
    if (!ok) ReportAt(m_doc, m_src, "Invalid characters after stream. Must be 0x0a or 0x0d 0x0a");
    std::uint32_t pos = 0;
    m_src.GetPosition(pos);
    m_list.streamPos = pos;
}

ivStatus ObjectReader::OnInlineImageData(WordEnd end) {
    // Exactly one byte after "ID" is used up: the white space that ended it, or else the
    // delimiter that was pushed back.
    if (end == WordEnd::Delimiter) {
        std::uint8_t c = 0;
        m_src.ReadByte(c);
    }
    return ReadInlineImage(m_doc, m_src, m_list, static_cast<std::size_t>(m_biIndex));
}

ivStatus ObjectReader::ReadName() {
    std::string& name = m_src.Scratch();
    name.clear();
    std::uint8_t c = 0;
    for (;;) {
        TakeWordRun(m_src, name, true);
        if (!m_src.ReadByte(c)) break;
        if (c <= 32) break;
        if (EndsWord(c)) {
            m_src.PushBack(c);
            break;
        }
        if (c == '#') {
            std::uint8_t h = 0, l = 0;
            int hi = m_src.ReadByte(h) ? HexValue(h) : -1;
            int lo = hi >= 0 && m_src.ReadByte(l) ? HexValue(l) : -1;
            if (lo < 0) {
                ReportAt(m_doc, m_src, "Error parsing hexadimal character");
                return kFail;
            }
            c = static_cast<std::uint8_t>(hi * 16 + lo);
        }
        name += static_cast<char>(c);
    }
    Append(m_doc.Shared().Name(name));
    return kOk;
}

ivStatus ObjectReader::ReadEscape(std::string& bytes) {
    std::uint8_t e = 0;
    if (!m_src.ReadByte(e)) return kFail;
    if (e >= '0' && e <= '8') {  // deliberate: 8 counts as an octal digit
        std::uint32_t v = e - '0';
        for (int k = 1; k < 3; ++k) {
            std::uint8_t d = 0;
            if (!m_src.ReadByte(d)) break;
            if (d < '0' || d > '8') {
                m_src.PushBack(d);
                break;
            }
            v = v * 8 + (d - '0');
        }
        bytes += static_cast<char>(v & 0xFF);
        return kOk;
    }
    std::uint8_t d = 0;
    switch (e) {
        case '\n':  // line continuation; a CR right after the LF goes with it
            if (m_src.ReadByte(d) && d != '\r') m_src.PushBack(d);
            break;
        case '\r':
            break;
        case '(':
        case ')':
        case '\\':
            bytes += static_cast<char>(e);
            break;
        case 'b':
            bytes += '\b';
            break;
        case 'f':
            bytes += '\f';
            break;
        case 'n':
            bytes += '\n';
            break;
        case 'r':
            bytes += '\r';
            break;
        case 't':
            bytes += '\t';
            break;
        default:
            ReportAt(m_doc, m_src, "Backslash is ignored. Wrong escape sequence");
            bytes += static_cast<char>(e);
    }
    return kOk;
}

ivStatus ObjectReader::ReadLiteralString() {
    std::string& bytes = m_src.Scratch();
    bytes.clear();
    std::uint8_t c = 0;
    for (;;) {
        if (!m_src.ReadByte(c)) return kFail;
        switch (c) {
            case '\n':  // stored as one CR, deliberately
                bytes += '\r';
                break;
            case '\r': {  // stored as two CRs; a CR right after it is absorbed into them
                bytes += "\r\r";
                std::uint8_t next = 0;
                if (m_src.ReadByte(next) && next != '\r') m_src.PushBack(next);
                break;
            }
            case '(':  // stored twice; the nesting depth never changes, so ")" always ends
                bytes += "((";
                break;
            case ')':
                AppendString(bytes);
                return kOk;
            case '\\':
                if (Failed(ReadEscape(bytes))) return kFail;
                break;
            default:
                bytes += static_cast<char>(c);
        }
    }
}

void ObjectReader::AppendString(std::string& bytes) {
    Decrypt(bytes);
    auto b0 = static_cast<std::uint8_t>(bytes.size() > 0 ? bytes[0] : 0);
    auto b1 = static_cast<std::uint8_t>(bytes.size() > 1 ? bytes[1] : 0);
    bool bom = bytes.size() >= 4 && ((b0 == 0xFE && b1 == 0xFF) || (b0 == 0xFF && b1 == 0xFE));
    if (!bom) {
        Append(NewBytes(m_doc.Arena(), kTagString, bytes));
        return;
    }
    if (bytes.size() % 2) {
        ReportAt(m_doc, m_src, "Length of UNICODE string must be even number");
        Append(NewBytes(m_doc.Arena(), kTagString, bytes));
        return;
    }
    std::u16string units((bytes.size() - 2) / 2, u'\0');
    bool bigEndian = b0 == 0xFE;
    for (std::size_t i = 0; i < units.size(); ++i) {
        auto hi = static_cast<std::uint8_t>(bytes[2 + 2 * i]);
        auto lo = static_cast<std::uint8_t>(bytes[3 + 2 * i]);
        units[i] = bigEndian ? char16_t(hi << 8 | lo) : char16_t(lo << 8 | hi);
    }
    Append(NewUnicode(m_doc.Arena(), units));
}

void ObjectReader::Decrypt(std::string& bytes) {
    if ((m_flags & kParseDecrypt) && m_doc.Security()) m_doc.Security()->DecryptString(bytes);
}

ivStatus ObjectReader::ReadHexString() {
    std::string& bytes = m_src.Scratch();
    bytes.clear();
    std::uint8_t pair[2] = {0, 0};
    int n = 0;
    std::uint8_t c = 0;
    for (;;) {
        if (!m_src.ReadByte(c)) {
            ReportAt(m_doc, m_src, "HEX String read error");
            return kFail;
        }
        if (c == '>') break;
        if (c == '\t' || c == '\n' || c == ' ') continue;
        pair[n++] = c;
        if (n == 2) {
            int hi = HexValue(pair[0]), lo = HexValue(pair[1]);
            if (hi < 0 || lo < 0) {
                ReportAt(m_doc, m_src, "Error parsing hexadimal character");
                return kFail;
            }
            bytes += static_cast<char>(hi * 16 + lo);
            n = 0;
        }
    }
    if (n == 1) return kOk;  // deliberate: an odd digit count drops the whole value silently
    Decrypt(bytes);
    Append(NewBytes(m_doc.Arena(), kTagHexString, bytes));
    return kOk;
}

// Shared by dictionaries and arrays: parse one nesting level into a pooled list.
template <class Build>
ivStatus ParseNested(pdfDocument& doc, pdfParser& source, unsigned flags, Build&& build) {
    if (source.Depth() >= kMaxNesting) {
        ReportAt(doc, source, "Arrays and dictionaries are nested too deep");
        return kFail;
    }
    ++source.Depth();
    PooledList nested(doc.ListPool());
    ivStatus st = ParseObjects(doc, source, *nested, flags);
    --source.Depth();
    build(*nested);
    return st;
}

}  // namespace

ivStatus ParseObjects(pdfDocument& doc, pdfParser& source, ObjList& list, unsigned flags) {
    return ObjectReader(doc, source, list, flags).Run();
}

ivStatus ParseDictionary(pdfDocument& doc, pdfParser& source, ObjList* list, pdfDict** out, unsigned flags) {
    return ParseNested(doc, source, kParseInDict | (flags & kParseDecrypt), [&](ObjList& items) {
        if (items.items.size() % 2) {
            ReportAt(doc, source, "Invalid dictionary ");
            items.items.pop_back();
        }
        pdfDict* dict = NewDict(doc.Arena(), items.items);
        if (list) list->items.push_back(dict);
        if (out) *out = dict;
    });
}

ivStatus ParseArray(pdfDocument& doc, pdfParser& source, ObjList* list, unsigned flags) {
    return ParseNested(doc, source, kParseInArray | (flags & kParseDecrypt), [&](ObjList& items) {
        pdfArray* array = NewArray(doc.Arena(), items.items);
        if (list) list->items.push_back(array);
    });
}

bool ReadObjectHeader(pdfDocument& doc, pdfParser& source, const ObjId* expected, ObjId& out) {
    std::string num, gen, keyword;
    if (!ReadToken(source, num) || !ReadToken(source, gen) || !ReadToken(source, keyword)) return false;
    out.num = static_cast<std::uint32_t>(TokenToLong(num));
    out.gen = static_cast<std::uint16_t>(TokenToLong(gen));
    if (expected && (out.num != expected->num || out.gen != expected->gen)) {
        ReportAt(doc, source, "Object Misaligned");
        return false;
    }
    if (keyword != "obj") {
        ReportAt(doc, source, "'obj' is expected");
        return false;
    }
    return true;
}

#include "pdf/decode/pdfAsciiFilters.h"

#include "pdf/object/pdfDiagnostics.h"
#include "platform/ivByteReader.h"

namespace {

int HexDigit(std::uint8_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

void WriteGroup(ivMemStream& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.PutByte(static_cast<std::uint8_t>(value >> (24 - 8 * i)));
}

}  // namespace

ivRef<ivMemStream> DecodeASCIIHex(const pdfDocument& doc, ivStream& source, std::uint64_t limit) {
    auto out = ivMemStream::Create();
    ivByteReader in(source);
    std::uint8_t pair[2];
    int n = 0;
    std::uint8_t c = 0;
    while (out->Size() < limit && in.ReadByte(c) && c != '>') {
        if (c == '\n' || c == '\r' || c == ' ') continue;
        pair[n++] = c;
        if (n < 2) continue;
        n = 0;
        int hi = HexDigit(pair[0]), lo = HexDigit(pair[1]);
        if (hi < 0 || lo < 0) {
            Report(doc, "Error parsing hexadimal character");
            break;
        }
        out->PutByte(static_cast<std::uint8_t>(hi * 16 + lo));
    }
    out->Rewind();
    return out;
}

ivRef<ivMemStream> DecodeASCII85(const pdfDocument& doc, ivStream& source, std::uint64_t limit) {
    auto out = ivMemStream::Create();
    ivByteReader in(source);
    std::uint8_t group[5];
    int n = 0;
    bool endMarker = false;
    std::uint8_t c = 0;
    for (;;) {
        if (out->Size() >= limit) {  // enough: the caller says so
            out->Rewind();
            return out;
        }
        if (!in.ReadByte(c)) break;
        if (c <= 32) continue;
        if (c == '~') {
            endMarker = true;
            continue;
        }
        if (endMarker && c == '>') {
            if (n > 0) {
                for (int k = n; k < 5; ++k) group[k] = 'u' - 33;
                std::uint32_t v = 0;
                for (std::uint8_t d : group) v = v * 85 + d;
                WriteGroup(*out, v, n - 1);
            }
            out->Rewind();
            return out;
        }
        if (c == 'z') {
            if (n != 0) break;
            WriteGroup(*out, 0, 4);
            continue;
        }
        if (c >= 'v') continue;  // not a digit: ignored silently
        group[n++] = static_cast<std::uint8_t>(c - 33);
        if (n == 5) {
            std::uint32_t v = 0;
            for (std::uint8_t d : group) v = v * 85 + d;
            WriteGroup(*out, v, 4);
            n = 0;
        }
    }
    Report(doc, "Error in decoding ASCII85");
    out->Rewind();
    return out;
}

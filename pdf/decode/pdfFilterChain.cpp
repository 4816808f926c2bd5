#include "pdf/decode/pdfFilterChain.h"

#include <cstring>

#include "pdf/decode/ivDecrypt.h"
#include "pdf/decode/pdfAsciiFilters.h"
#include "pdf/decode/pdfLzw.h"
#include "pdf/decode/pdfPredictor.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivSubStream.h"
#include "platform/ivZlibUnCompress.h"

namespace {

struct StreamKeys {
    const pdfObject* filter = nullptr;
    const pdfObject* params = nullptr;
    std::int32_t length = -1;
};

// One pass over the dictionary in its order: the last Filter and DecodeParms win.
StreamKeys ReadStreamKeys(pdfDocument& doc, const pdfObject* dict) {
    StreamKeys keys;
    const pdfDict* d = AsDict(dict);
    if (!d) return keys;
    for (const pdfPair& p : d->Entries()) {
        const pdfBytes* key = AsName(p.key);
        if (!key) continue;
        if (std::strcmp(key->Chars(), "DL") == 0) {
            double ignored = 0;
            GetNumber(doc, p.value, &ignored);
        } else if (std::strcmp(key->Chars(), "Filter") == 0) {
            keys.filter = p.value;
        } else if (std::strcmp(key->Chars(), "DecodeParms") == 0) {
            keys.params = p.value;
        } else if (std::strcmp(key->Chars(), "Length") == 0) {
            std::uint32_t n = 0;
            if (Succeeded(GetInteger(doc, p.value, &n))) keys.length = static_cast<std::int32_t>(n);
        }
    }
    return keys;
}

std::uint32_t FilterCount(const pdfObject* filter) {
    if (!filter) return 0;
    if (const pdfArray* a = AsArray(filter)) return a->count;
    if (const pdfDict* d = AsDict(filter)) return d->count;  // kept: a dictionary fails as a name each round
    return 1;
}

const pdfObject* Element(const pdfObject* value, std::uint32_t i) {
    if (const pdfArray* a = AsArray(value)) return i < a->count ? a->Items()[i] : nullptr;
    return value;
}

// A decode parameter: its default unless the dictionary gives a number.
std::uint32_t Param(pdfDocument& doc, const pdfObject* params, const char* key, std::uint32_t fallback) {
    if (!params) return fallback;
    const pdfObject* v = DictLookup(doc, params, key);
    std::uint32_t n = fallback;
    if (v && Failed(GetInteger(doc, v, &n))) n = fallback;
    return n;
}

bool IsFilterName(const pdfObject* o) {
    return o && (o->tag == kTagName || o->tag == kTagString);
}

bool NameIs(const pdfObject* name, const char* full, const char* abbrev) {
    const char* s = static_cast<const pdfBytes*>(name)->Chars();
    return std::strcmp(s, full) == 0 || std::strcmp(s, abbrev) == 0;
}

bool IsImageCodec(const pdfObject* name) {
    return NameIs(name, "DCTDecode", "DCT") || NameIs(name, "CCITTFaxDecode", "CCF") ||
           NameIs(name, "JPXDecode", "JPXDecode") || NameIs(name, "JBIG2Decode", "JBIG2Decode");
}

// The stored bytes, decrypted when the document has a security handler (a cross-reference
// stream never is encrypted). `length` becomes the plain length.
ivRef<ivStream> RawData(pdfDocument& doc, const pdfStream* stream, const XrefEntry* entry, std::int32_t& length,
                        bool stripPadding) {
    ivDecrypt* security = doc.Security();
    if (!security || (entry && entry->role == kRoleXrefStream))
        return ivSubStream::Create(doc.File(), stream->dataPos, static_cast<std::uint32_t>(length));
    const XrefEntry* own = stream->entry ? stream->entry : entry;
    security->SetCurrentObject(own ? own->Id() : ObjId{});
    return security->DecryptStream(*doc.File(), stream->dataPos, length, stripPadding);
}

}  // namespace

ivRef<ivStream> CreateFlateOrLZWFilter(pdfDocument& doc, ivRef<ivStream> source, const pdfObject* params,
                                       bool lzw) {
    if (params && params->tag == kTagNull) params = nullptr;
    std::uint32_t predictor = Param(doc, params, "Predictor", 1);
    std::uint32_t columns = Param(doc, params, "Columns", 1);
    std::uint32_t colors = Param(doc, params, "Colors", 1);
    std::uint32_t bpc = Param(doc, params, "BitsPerComponent", 0);
    ivRef<ivStream> decoded;
    if (lzw) {
        std::uint32_t earlyChange = Param(doc, params, "EarlyChange", 1);
        auto out = ivMemStream::Create();
        // Whatever was decoded is kept, after a failure too.
        bool notCleared = false;
        const ivStatus st = DecodeLZW(*source, *out, earlyChange != 0, doc.DecodedLimit(), &notCleared);
        if (notCleared) ReportExtra(doc, "LZW code table is full and is not cleared");
        if (st == kFail)
            ReportExtra(doc, "LZW data can't be decoded after %llu bytes",
                        static_cast<unsigned long long>(out->Size()));
        out->Rewind();
        decoded = out;
    } else {
        decoded = ivZlibUnCompress::Create(source);
        if (!decoded) {
            Report(doc, "Can't create ZLIB stream");
            return nullptr;
        }
    }
    // Deliberate: predictor 2 (TIFF) is not undone.
    if (static_cast<std::int32_t>(predictor) < 10) return decoded;
    return ApplyPNGPredictor(decoded, columns, colors, bpc, doc.DecodedLimit());
}

namespace {

// The stored bytes of a stream object, and its keys for the filter chain. AES padding is
// stripped only when no filter follows.
ivStatus OpenStored(pdfDocument& doc, const pdfObject* obj, const XrefEntry* entry, pdfDecodedStream& out,
                    StreamKeys& keys) {
    out = pdfDecodedStream{};
    const pdfStream* stream = AsStream(obj);
    if (!stream) {
        Report(doc, "Not a stream");
        return kInvalidArg;
    }
    keys = ReadStreamKeys(doc, stream->dict);
    out.length = keys.length;
    out.stream = RawData(doc, stream, entry, out.length, FilterCount(keys.filter) == 0);
    return kOk;
}

}  // namespace

ivStatus OpenRawStream(pdfDocument& doc, const pdfObject* obj, pdfDecodedStream& out) {
    StreamKeys keys;
    return OpenStored(doc, obj, nullptr, out, keys);
}

ivStatus OpenDecodedStream(pdfDocument& doc, const pdfObject* obj, const XrefEntry* entry, pdfDecodedStream& out) {
    StreamKeys keys;
    if (ivStatus st = OpenStored(doc, obj, entry, out, keys); Failed(st)) return st;
    std::uint32_t count = FilterCount(keys.filter);
    ivStatus status = kOk;
    const pdfObject* name = nullptr;
    for (std::uint32_t i = 0; i < count; ++i) {
        const pdfObject* element = Element(keys.filter, i);
        const pdfObject* params = Element(keys.params, i);
        if (IsFilterName(element)) {
            name = element;
            status = kOk;
        } else {
            status = kInvalidArg;  // the previous round's filter stays in force
        }
        if (!name) {
            Report(doc, "Can't determine filter type");
            continue;
        }
        out.filter = name;
        out.params = AsDict(params) ? params : nullptr;
        ivRef<ivStream> next;
        if (NameIs(name, "ASCIIHexDecode", "AHx")) {
            next = DecodeASCIIHex(doc, *out.stream, doc.DecodedLimit());
        } else if (NameIs(name, "ASCII85Decode", "A85")) {
            next = DecodeASCII85(doc, *out.stream, doc.DecodedLimit());
        } else if (NameIs(name, "LZWDecode", "LZW")) {
            next = CreateFlateOrLZWFilter(doc, out.stream, params, true);
        } else if (NameIs(name, "FlateDecode", "Fl")) {
            next = CreateFlateOrLZWFilter(doc, out.stream, params, false);
        } else {
            // Image codecs are left to image decoding; the rest pass on unchanged.
            if (!IsImageCodec(name) && !NameIs(name, "Crypt", "Crypt"))
                ReportExtra(doc, "%s filter is not supported; the data is left as it is",
                            static_cast<const pdfBytes*>(name)->Chars());
            continue;
        }
        out.length = -1;
        if (next) out.stream = std::move(next);
        if (out.stream->Contiguous().size() >= doc.DecodedLimit())
            Report(doc, "Decoded stream data exceeds %llu bytes; the rest is not read",
                   static_cast<unsigned long long>(doc.DecodedLimit()));
    }
    return status;
}

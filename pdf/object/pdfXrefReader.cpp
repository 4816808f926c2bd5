#include "pdf/object/pdfXrefReader.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfDocument.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"
#include "platform/ivByteReader.h"

namespace {

constexpr std::uint32_t kHeaderBytes = 64;
constexpr std::uint32_t kTailBytes = 1024;

// "%d" as sscanf reads it: blanks, an optional sign, digits; false without a digit.
bool ScanInt(const char*& p, const char* end, int& value) {
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-')) negative = *p++ == '-';
    if (p >= end || *p < '0' || *p > '9') return false;
    std::uint32_t v = 0;
    while (p < end && *p >= '0' && *p <= '9') v = v * 10 + std::uint32_t(*p++ - '0');
    value = static_cast<int>(negative ? 0u - v : v);
    return true;
}

void ReportEntriesFull(pdfDocument& doc) {
    Report(doc, "Cross-reference entries exceed %llu; the rest are not read",
           static_cast<unsigned long long>(doc.EntryLimit()));
}

// Null once the document holds as many entries as it may.
XrefEntry* AddEntry(pdfDocument& doc, XrefSection& section, std::uint32_t num, std::uint16_t gen) {
    if (doc.EntriesFull()) return nullptr;
    XrefEntry* e = doc.NewEntry();
    e->num = num;
    e->gen = gen;
    section.entries.push_back(e);
    return e;
}

void ReadTrailerDictionary(pdfDocument& doc, XrefSection& section, pdfParser& source) {
    std::uint8_t c = 0;
    do {
        if (!source.ReadByte(c)) return;
    } while (c <= 32);
    std::uint8_t c2 = 0;
    if (c != '<' || !source.ReadByte(c2) || c2 != '<') return;
    pdfDict* dict = nullptr;
    ParseDictionary(doc, source, nullptr, &dict, 0);
    if (dict) ApplyTrailer(section, doc, dict);
}

// A table line as producers write it: ten digits, blank, five digits, blank, 'n' or 'f' and
// a two-byte line end. Read directly, it gives what the token reader would give.
bool ReadStandardLine(pdfParser& source, std::uint32_t& offset, std::uint32_t& gen, char& type) {
    // The token reader would skip the line end left before the line; so does this.
    const std::uint8_t* p = source.Peek(22);
    if (!p) return false;
    std::size_t lead = 0;
    while (lead < 2 && (p[lead] == '\r' || p[lead] == '\n' || p[lead] == ' ' || p[lead] == '\t')) ++lead;
    p += lead;
    auto digits = [p](int from, int count, std::uint32_t& value) {
        value = 0;
        for (int i = from; i < from + count; ++i) {
            if (p[i] < '0' || p[i] > '9') return false;
            value = value * 10 + std::uint32_t(p[i] - '0');
        }
        return true;
    };
    const bool lineEnd = (p[18] == ' ' && (p[19] == '\r' || p[19] == '\n')) || (p[18] == '\r' && p[19] == '\n');
    if (p[10] != ' ' || p[16] != ' ' || (p[17] != 'n' && p[17] != 'f') || !lineEnd || !digits(0, 10, offset) ||
        !digits(11, 5, gen))
        return false;
    type = static_cast<char>(p[17]);
    source.Skip(lead + 20);
    return true;
}

void ReadClassicTable(pdfDocument& doc, XrefSection& section, pdfParser& source) {
    std::string token, count, offset, gen, type;
    bool started = false, full = false;
    while (ReadToken(source, token)) {
        if (token == "trailer") {
            ReadTrailerDictionary(doc, section, source);
            return;
        }
        if (token == "xref") {
            started = true;
            continue;
        }
        if (!started) continue;
        auto first = static_cast<std::uint32_t>(TokenToLong(token));
        if (!ReadToken(source, count)) return;
        std::int32_t lines = TokenToLong(count);
        for (std::int32_t i = 0; i < lines; ++i) {
            std::uint32_t lineOffset = 0, lineGen = 0;
            char lineType = 0;
            if (!ReadStandardLine(source, lineOffset, lineGen, lineType)) {
                // A line whose tokens run out is skipped; so are all after it, the data having ended.
                if (!ReadToken(source, offset) || !ReadToken(source, gen) || !ReadToken(source, type)) return;
                lineOffset = static_cast<std::uint32_t>(TokenToLong(offset));
                lineGen = static_cast<std::uint32_t>(TokenToLong(gen));
                lineType = type[0];
            }
            if (lineType == 'n') {
                XrefEntry* e = AddEntry(doc, section, first + static_cast<std::uint32_t>(i),
                                        static_cast<std::uint16_t>(lineGen));
                // Past the limit the rows are still read, up to the trailer, but not kept.
                if (e) {
                    e->offset = lineOffset;
                } else if (!full) {
                    full = true;
                    ReportEntriesFull(doc);
                }
            } else if (lineType != 'f') {
                ReportAt(doc, source, "Error Reading XREF table");
            }
        }
    }
}

// Field widths of a cross-reference stream's entries.
struct Widths {
    std::uint32_t w[3] = {0, 0, 0};
    std::uint32_t Total() const { return w[0] + w[1] + w[2]; }
};

std::uint32_t ReadField(const std::uint8_t* bytes, std::uint32_t width) {
    std::uint32_t v = 0;
    for (std::uint32_t i = 0; i < width; ++i) v = (v << 8) | bytes[i];
    return v;
}

// Reads `count` entries from `first` on; false when the data ran out (with its message).
bool ReadStreamSubsection(pdfDocument& doc, XrefSection& section, ivByteReader& data, const Widths& widths,
                          std::uint32_t first, std::uint32_t count, ivStatus* status) {
    std::uint8_t bytes[12];
    const std::uint32_t total = widths.Total();
    for (std::uint32_t i = 0; i < count; ++i) {
        if (data.Consumed() >= doc.ParsedLimit()) {
            Report(doc, "Decoded stream data exceeds %llu bytes; the rest is not read",
                   static_cast<unsigned long long>(doc.ParsedLimit()));
            return false;
        }
        if (data.Read(bytes, total) < total) {
            Report(doc, "Error reading XREF stream");
            *status = data.LastStatus();
            return false;
        }
        std::uint32_t num = first + i;
        std::uint32_t type = widths.w[0] ? ReadField(bytes, widths.w[0]) : 1;
        std::uint32_t f2 = ReadField(bytes + widths.w[0], widths.w[1]);
        std::uint32_t f3 = ReadField(bytes + widths.w[0] + widths.w[1], widths.w[2]);
        if (type == 0) continue;
        if (type > 2) {
            Report(doc, "Invalid XREF entry type for object %d", static_cast<int>(num));
            continue;
        }
        XrefEntry* e = AddEntry(doc, section, num, type == 1 ? static_cast<std::uint16_t>(f3) : 0);
        if (!e) {
            ReportEntriesFull(doc);
            return false;
        }
        if (type == 1) {
            e->offset = f2;
        } else {
            e->flags = kXrefCompressed;
            e->objStm = f2;
            e->offset = f3;
        }
    }
    return true;
}

std::uint32_t ReadIntegerOrZero(pdfDocument& doc, const pdfObject* obj) {
    std::uint32_t v = 0;
    GetInteger(doc, obj, &v);
    return v;
}

ivStatus ReadXrefStream(pdfDocument& doc, XrefSection& section, pdfStream* stream) {
    ApplyTrailer(section, doc, stream->dict);
    pdfDecodedStream decoded;
    if (ivStatus st = OpenDecodedStream(doc, stream, nullptr, decoded); Failed(st)) return st;
    const pdfObject* w = DictGet(stream->dict, "W");
    const pdfObject* index = DictGet(stream->dict, "Index");
    std::uint32_t size = 0;
    GetInteger(doc, DictLookup(doc, stream->dict, "Size"), &size);
    const pdfArray* wa = AsArray(w);
    if (!wa) return kOk;
    Widths widths;
    // Deliberately no check of W's length: missing elements read as numbers that are not there.
    for (std::uint32_t i = 0; i < 3; ++i)
        widths.w[i] = ReadIntegerOrZero(doc, i < wa->count ? wa->Items()[i] : nullptr);
    // Fields are numbers of up to four bytes; wider ones are refused in any case. Widths that
    // add up to nothing give entries out of no data (each at offset 0), as the format says,
    // unless the extra checks refuse them too.
    const bool tooWide = widths.w[0] > 4 || widths.w[1] > 4 || widths.w[2] > 4;
    if (tooWide || (widths.Total() == 0 && doc.ExtraChecks())) {
        Report(doc, "W [%d %d %d] is not supported", static_cast<int>(widths.w[0]),
               static_cast<int>(widths.w[1]), static_cast<int>(widths.w[2]));
        return kOk;
    }
    ivByteReader data(*decoded.stream);
    ivStatus status = kOk;
    if (!index) {
        ReadStreamSubsection(doc, section, data, widths, 0, size, &status);
        return status;
    }
    const pdfArray* pairs = AsArray(index);
    std::uint32_t first = 0, count = 0;
    for (std::uint32_t i = 0; pairs && i + 1 < pairs->count; i += 2) {
        // An element that is not a number keeps the value of the previous pair.
        GetInteger(doc, pairs->Items()[i], &first);
        GetInteger(doc, pairs->Items()[i + 1], &count);
        if (!ReadStreamSubsection(doc, section, data, widths, first, count, &status)) break;
    }
    return status;
}

ivStatus ReadStreamSection(pdfDocument& doc, XrefSection& section, pdfParser& source) {
    std::string num, gen, keyword;
    if (!ReadToken(source, num) || !ReadToken(source, gen) || !ReadToken(source, keyword) ||
        keyword != "obj") {
        ReportAt(doc, source, "'obj' is expected");
        return kOk;
    }
    ObjId id{static_cast<std::uint32_t>(TokenToLong(num)), static_cast<std::uint16_t>(TokenToLong(gen))};
    PooledList list(doc.ListPool());
    ParseObjects(doc, source, *list, kParseToEndobj);
    if (list->items.empty()) return kOk;
    pdfObject* dict = list->items.front();
    const pdfObject* type = DictGet(dict, "Type");
    if (!AsTextValued(type))
        ReportAt(doc, source, "Error Reading XREF Object 01");
    else if (!TextEquals(type, "XRef"))
        ReportAt(doc, source, "Not and XRef object");
    if (list->streamPos == 0) return kOk;
    pdfStream* stream = NewStream(doc.Arena(), dict, list->streamPos, nullptr);
    doc.NoteStream(stream);
    section.xrefStream = stream;
    section.xrefStreamId = id;
    ivStatus st = ReadXrefStream(doc, section, stream);
    section.SortEntries();
    if (XrefEntry* own = section.Find(id); own && !own->loaded) {
        own->object = stream;
        stream->entry = own;
        own->role = kRoleXrefStream;
        doc.NoteLoaded(own);
    }
    return st;
}

}  // namespace

ivStatus ReadHeader(pdfDocument& doc) {
    char head[kHeaderBytes];
    std::uint32_t got = 0;
    doc.File()->Seek(0, ivSeekOrigin::Begin);
    doc.File()->Read(head, kHeaderBytes, &got);
    if (got < 6) return kNotFound;
    if (std::memcmp(head, "%PDF-", 5) != 0) {
        Report(doc, "Not a PDF file - can't find the PDF header");
        return kNotFound;
    }
    const char* p = head + 5;
    const char* end = std::find(p, static_cast<const char*>(head + got), '\0');
    int major = 0, minor = 0;
    if (!ScanInt(p, end, major) || p >= end || *p++ != '.' || !ScanInt(p, end, minor)) return kNotFound;
    doc.SetVersion(static_cast<std::uint16_t>(major), static_cast<std::uint16_t>(minor));
    return kOk;
}

ivStatus ReadStartXref(pdfDocument& doc, XrefSection** newest) {
    std::uint64_t size = doc.FileSize();
    auto n = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kTailBytes));
    std::vector<char> tail(n);
    std::uint32_t got = 0;
    doc.File()->Seek(static_cast<std::int64_t>(size - n), ivSeekOrigin::Begin);
    if (n) doc.File()->Read(tail.data(), n, &got);
    if (got < n) return kFail;
    XrefSection* section = doc.AppendSection();
    if (newest) *newest = section;
    static const char kKeyword[] = "startxref";
    std::uint32_t after = 0;
    for (std::uint32_t i = n; i-- > 8;) {
        if (tail[i] == 'f' && std::memcmp(&tail[i - 8], kKeyword, 9) == 0) {
            after = i + 1;
            break;
        }
    }
    if (after == 0) return kOk;  // deliberately silent: the document is just empty
    while (after < n && static_cast<unsigned char>(tail[after]) < 32) ++after;
    std::int32_t offset = after < n ? TokenToLong(std::string(tail.data() + after, n - after)) : 0;
    if (offset == 0) {
        Report(doc, "Can't get XRef table position");
        return kFail;
    }
    ReadSection(doc, *section, static_cast<std::uint32_t>(offset));
    return kOk;
}

ivStatus ReadSection(pdfDocument& doc, XrefSection& section, std::uint32_t offset) {
    ivStdScope scope(doc.Control(),
                     ivFormat("Reading XREF table at %d (0x%xh)", static_cast<int>(offset), offset));
    section.hasList = true;
    section.offset = offset;
    if (offset >= doc.FileSize()) {
        // Nothing is read there either way; the standard report just says nothing.
        ReportExtra(doc, "XREF table is not found: the offset is beyond the end of the file");
        return kOk;
    }
    pdfParser source(&doc, doc.File(), offset);
    std::uint8_t c = 0;
    do {
        if (!source.ReadByte(c)) return kOk;
    } while (c <= 32);
    ivStatus st = kOk;
    if (c >= '0' && c <= '9') {
        source.PushBack(c);
        st = ReadStreamSection(doc, section, source);
    } else if (c == 'x') {
        source.PushBack(c);
        ReadClassicTable(doc, section, source);
    } else {
        ReportAt(doc, source, "Unexpected character - %c. XREF table must begin with 'xref' or object id.",
                 c);
    }
    section.SortEntries();
    return st;
}

void ApplyTrailer(XrefSection& section, pdfDocument& doc, const pdfObject* dict) {
    const pdfDict* d = AsDict(dict);
    if (!d) return;
    static const char* const kStreamOnly[] = {"Type", "W", "Index", "Filter", "DecodeParms", "Length"};
    for (const pdfPair& p : d->Entries()) {
        const pdfBytes* key = AsName(p.key);
        if (!key) {
            Report(doc, "Invalid trailer entry ");
            continue;
        }
        const char* k = key->Chars();
        if (std::strcmp(k, "XRefStm") == 0) {
            // Recorded, not followed; a value that is no position in the file is still wrong.
            GetIntegerChecked(doc, p.value, &section.xrefStm);
            if (section.xrefStm >= doc.FileSize())
                ReportExtra(doc, "XRefStm %d is not an offset in the file",
                            static_cast<int>(section.xrefStm));
        } else if (std::strcmp(k, "Size") == 0) {
            GetIntegerChecked(doc, p.value, &section.size);
        } else if (std::strcmp(k, "Prev") == 0) {
            GetIntegerChecked(doc, p.value, &section.prev);
        } else if (std::strcmp(k, "Root") == 0) {
            SetRef(&section.root, p.value);
        } else if (std::strcmp(k, "Encrypt") == 0) {
            SetRef(&section.encrypt, p.value);
        } else if (std::strcmp(k, "Info") == 0) {
            SetRef(&section.info, p.value);
        } else if (std::strcmp(k, "ID") == 0) {
            SetRef(&section.id, p.value);
        } else if (std::any_of(std::begin(kStreamOnly), std::end(kStreamOnly),
                               [k](const char* s) { return std::strcmp(k, s) == 0; })) {
            if (!section.xrefStream)
                Report(doc, "W, Index, Filter, DecodeParms entries are afre for XREF stream only");
        } else {
            Report(doc, "%s is unknown trailer entry ", k);
        }
    }
}

void CheckTrailerSizes(pdfDocument& doc) {
    if (!doc.ExtraChecks()) return;
    std::uint32_t highest = 0;
    for (const auto& s : doc.Sections()) {
        // A hybrid file's stream section is not read, so its objects can't be counted here.
        if (s->xrefStm != 0) return;
        for (const XrefEntry* e : s->entries) highest = std::max(highest, e->num);
    }
    for (const auto& s : doc.Sections())
        if (s->size > std::uint64_t(highest) + 1)
            ReportExtra(doc, "Size %u is larger than the highest object number + 1 (%u)",
                        static_cast<unsigned>(s->size), static_cast<unsigned>(highest + 1));
}

void ComputeLengths(pdfDocument& doc) {
    // (offset, entry) pairs sort without touching the entries themselves.
    std::vector<std::pair<std::uint32_t, XrefEntry*>> inFile;
    std::vector<std::uint32_t> sectionOffsets;
    for (const auto& s : doc.Sections()) {
        sectionOffsets.push_back(s->offset);
        for (XrefEntry* e : s->entries)
            if (!e->Compressed()) inFile.emplace_back(e->offset, e);
    }
    auto byOffset = [](const auto& a, const auto& b) { return a.first < b.first; };
    if (!std::is_sorted(inFile.begin(), inFile.end(), byOffset))
        std::stable_sort(inFile.begin(), inFile.end(), byOffset);
    std::sort(sectionOffsets.begin(), sectionOffsets.end());
    for (std::size_t i = 0; i < inFile.size(); ++i) {
        XrefEntry* e = inFile[i].second;
        std::uint64_t end = i + 1 < inFile.size() ? inFile[i + 1].first : doc.FileSize();
        auto length = static_cast<std::uint32_t>(end - e->offset);
        // An object never runs over a section: the smallest unsigned distance to a section
        // offset comes from the first section at or after it, or (wrapping) the lowest one.
        auto next = std::lower_bound(sectionOffsets.begin(), sectionOffsets.end(), e->offset);
        if (next != sectionOffsets.end()) length = std::min(length, *next - e->offset);
        if (!sectionOffsets.empty()) length = std::min(length, sectionOffsets.front() - e->offset);
        e->length = length;
    }
}

// Writes the seed corpora of the fuzz targets from test files, each seed in the layout its
// target reads (see the comment at the top of each fuzz_*.cpp):
//   fuzz_xref, fuzz_whole  whole PDF files up to 1 MiB
//   fuzz_parser            object bodies, decoded content streams, file heads and tails
//   fuzz_decoders          stored stream data with its first filter's parameters; .lzw, .flate, .g4
//   fuzz_images            image XObjects (dictionary and stored data), codec data; .jpg, .j2k, .jp2, .jb2
//   fuzz_security          encryption dictionaries with their file identifier, password and data
// Seeds are named by a hash of their bytes, so running it twice adds nothing.
//
// Usage: vantrel_fuzz_seeds OUT_DIR INPUT...   (an INPUT folder is walked recursively)
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/decode/ivDecrypt.h"
#include "pdf/decode/ivPasswordPrompt.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfAccessors.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfRoleCodes.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxWholeFile = 1 << 20;
constexpr std::size_t kMaxSeed = 256 << 10;
constexpr std::size_t kMaxBody = 4096;
constexpr std::size_t kMaxPerTarget = 2000;

// The passwords of the test files, tried in turn after the empty one.
const char* const kPasswords[] = {"user", "owner", "p\xC3\xA4ss", "0123456789abcdefghijklmnopqrstuv"};

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

class SeedWriter {
public:
    explicit SeedWriter(fs::path out) : m_out(std::move(out)) {}

    void Add(const std::string& target, const std::string& bytes) {
        if (bytes.empty() || bytes.size() > kMaxSeed) return;
        std::size_t& count = m_counts[target];
        if (count >= kMaxPerTarget) return;
        std::uint64_t h = 1469598103934665603ull;  // FNV-1a
        for (unsigned char c : bytes) h = (h ^ c) * 1099511628211ull;
        char name[17];
        std::snprintf(name, sizeof name, "%016llx", static_cast<unsigned long long>(h));
        const fs::path dir = m_out / target;
        fs::create_directories(dir);
        const fs::path file = dir / name;
        if (fs::exists(file)) return;
        std::ofstream(file, std::ios::binary) << bytes;
        ++count;
    }
    void Summary() const {
        for (const auto& [target, count] : m_counts)
            std::printf("%-14s %zu new seeds\n", target.c_str(), count);
    }

private:
    fs::path m_out;
    std::map<std::string, std::size_t> m_counts;
};

// PDF syntax for a record, strings as hexadecimal so that any bytes survive.
void WriteSyntax(std::string& out, const pdfObject* o, int depth = 0) {
    static const char kDigits[] = "0123456789ABCDEF";
    auto hex = [&](const std::uint8_t* b, std::size_t n) {
        out += '<';
        for (std::size_t i = 0; i < n; ++i) out += {kDigits[b[i] >> 4], kDigits[b[i] & 15]};
        out += '>';
    };
    if (!o || depth > 64) {
        out += "null";
        return;
    }
    char number[64];
    switch (o->tag) {
        case kTagBool:
            out += static_cast<const pdfBool*>(o)->value ? "true" : "false";
            return;
        case kTagInt:
            out += std::to_string(static_cast<const pdfInt*>(o)->value);
            return;
        case kTagReal:
            std::snprintf(number, sizeof number, "%.5f", static_cast<const pdfReal*>(o)->value);
            out += number;
            return;
        case kTagString:
        case kTagHexString: {
            const auto* b = static_cast<const pdfBytes*>(o);
            hex(b->Data(), b->size);
            return;
        }
        case kTagUnicodeString: {
            const auto* u = static_cast<const pdfUnicode*>(o);
            std::vector<std::uint8_t> bytes = {0xFE, 0xFF};
            for (std::uint32_t i = 0; i < u->count; ++i) {
                bytes.push_back(static_cast<std::uint8_t>(u->Units()[i] >> 8));
                bytes.push_back(static_cast<std::uint8_t>(u->Units()[i]));
            }
            hex(bytes.data(), bytes.size());
            return;
        }
        case kTagName: {
            out += '/';
            for (char c : static_cast<const pdfBytes*>(o)->View()) {
                const auto b = static_cast<std::uint8_t>(c);
                if (b <= 32 || b >= 127 || std::string_view("#()<>[]{}/%").find(c) != std::string_view::npos)
                    out += {'#', kDigits[b >> 4], kDigits[b & 15]};
                else
                    out += c;
            }
            return;
        }
        case kTagKey:
            out += static_cast<const pdfBytes*>(o)->View();
            return;
        case kTagIndirect: {
            const auto* r = static_cast<const pdfRef*>(o);
            out += std::to_string(r->num) + " " + std::to_string(r->gen) + " R";
            return;
        }
        case kTagArray:
            out += '[';
            for (const pdfObject* item : static_cast<const pdfArray*>(o)->Elements()) {
                WriteSyntax(out, item, depth + 1);
                out += ' ';
            }
            out += ']';
            return;
        case kTagStream:
            WriteSyntax(out, static_cast<const pdfStream*>(o)->dict, depth);
            return;
        case kTagDictionary:
            out += "<<";
            for (const pdfPair& p : static_cast<const pdfDict*>(o)->Entries()) {
                out += ' ';
                WriteSyntax(out, p.key, depth + 1);
                out += ' ';
                WriteSyntax(out, p.value, depth + 1);
            }
            out += " >>";
            return;
        default:
            out += "null";
    }
}

std::string Syntax(const pdfObject* o) {
    std::string out;
    WriteSyntax(out, o);
    return out;
}

// A dictionary's entries without "<<", ">>" and Length, for the image target's field.
std::string EntriesWithoutLength(const pdfObject* dict) {
    std::string out;
    const pdfDict* d = AsDict(dict);
    if (!d) return out;
    for (const pdfPair& p : d->Entries()) {
        if (TextEquals(p.key, "Length")) continue;
        out += ' ';
        WriteSyntax(out, p.key);
        out += ' ';
        WriteSyntax(out, p.value);
    }
    return out;
}

std::string ReadStream(ivStream* s, std::size_t limit) {
    std::string out;
    if (!s) return out;
    char buffer[8192];
    while (out.size() < limit) {
        std::uint32_t got = 0;
        if (Failed(s->Read(buffer, sizeof buffer, &got)) || got == 0) break;
        out.append(buffer, got);
    }
    if (out.size() > limit) out.resize(limit);
    return out;
}

std::int64_t IntOf(pdfDocument& doc, const pdfObject* dict, const char* key, std::int64_t fallback) {
    const pdfObject* v = dict ? DictGet(dict, key) : nullptr;
    std::uint32_t n = 0;
    return v && Succeeded(GetInteger(doc, v, &n)) ? static_cast<std::int32_t>(n) : fallback;
}

// The byte fuzz_decoders turns into `predictor` (its PickPredictor backwards).
std::uint8_t PredictorByte(std::int64_t predictor) {
    static const std::int64_t kValues[] = {1, 2, 10, 11, 12, 13, 14, 15, 0, 9, 16, 255};
    for (std::size_t i = 0; i < std::size(kValues); ++i)
        if (kValues[i] == predictor) return static_cast<std::uint8_t>(i);
    return predictor >= 128 && predictor < 256 ? static_cast<std::uint8_t>(predictor) : 0;
}

class CandidatePrompt : public ivPasswordPrompt {
public:
    bool AskPassword(const std::string&, std::string& password) override {
        if (m_next >= std::size(kPasswords)) return false;
        password = kPasswords[m_next++];
        m_last = password;
        return true;
    }
    const std::string& Last() const { return m_last; }

private:
    std::size_t m_next = 0;
    std::string m_last;
};

class PdfMiner {
public:
    PdfMiner(SeedWriter& seeds, const std::string& bytes) : m_seeds(seeds), m_bytes(bytes) {}

    void Run() {
        if (m_bytes.size() <= kMaxWholeFile) {
            m_seeds.Add("fuzz_xref", m_bytes);
            m_seeds.Add("fuzz_whole", m_bytes);
        }
        Parser(0x80, m_bytes.substr(0, 1024));  // tokens of the head
        Parser(0x80,
               m_bytes.substr(m_bytes.size() - std::min<std::size_t>(1024, m_bytes.size())));  // of the tail
        ivIOControl control;
        ivPdf doc(ivMemStream::Create(
                      std::span(reinterpret_cast<const std::uint8_t*>(m_bytes.data()), m_bytes.size())),
                  "seed.pdf", &control);
        CandidatePrompt prompt;
        doc.SetPasswordPrompt(&prompt);
        const ivStatus opened = doc.Open();
        doc.SetPasswordPrompt(nullptr);
        if (Failed(opened)) return;
        doc.Analyse();
        for (const auto& section : doc.Sections())
            section->ForEachEntry([&](XrefEntry* e) { Entry(doc, e); });
        if (doc.Security()) Security(doc, prompt.Last());
    }

private:
    void Parser(std::uint8_t selector, const std::string& body) {
        m_seeds.Add("fuzz_parser", FuzzRecordWriter().Byte(selector).Rest(body).Bytes());
    }

    void Entry(ivPdf& doc, XrefEntry* e) {
        if (!e->Compressed() && e->offset < m_bytes.size()) {
            std::string body = m_bytes.substr(e->offset, kMaxBody);
            if (std::size_t end = body.find("endobj"); end != std::string::npos) body.resize(end + 6);
            Parser(0xC0, body);  // header, then the body
            if (std::size_t obj = body.find("obj");
                obj != std::string::npos && body.find("stream") == std::string::npos)
                Parser(kParseToEndobj | kParseDecrypt, body.substr(obj + 3));
        }
        const pdfObject* object = LoadObject(doc, e);
        const pdfStream* stream = AsStream(object);
        if (!stream) return;
        if (e->role == kRolePageStream || e->role == kRoleForm) {
            pdfDecodedStream decoded;
            OpenDecodedStream(doc, object, e, decoded);
            const std::string content = ReadStream(decoded.stream.get(), 16384);
            Parser(kParseContent, content);
            Parser(kParseContent | 0x10, content);
        }
        pdfDecodedStream raw;
        if (Failed(OpenRawStream(doc, object, raw))) return;
        const std::string stored = ReadStream(raw.stream.get(), kMaxSeed);
        Decoder(doc, stream->dict, stored);
        if (e->role == kRoleImage || TextEquals(DictGet(stream->dict, "Subtype"), "Image"))
            Image(doc, e, stream, stored);
    }

    // The first filter's data with that filter's parameters.
    void Decoder(pdfDocument& doc, const pdfObject* dict, const std::string& stored) {
        const pdfObject* filter = Deref(doc, DictGet(dict, "Filter"));
        const pdfObject* params = Deref(doc, DictGet(dict, "DecodeParms"));
        if (const pdfArray* a = AsArray(filter)) filter = a->count ? a->Items()[0] : nullptr;
        if (const pdfArray* a = AsArray(params)) params = a->count ? Deref(doc, a->Items()[0]) : nullptr;
        if (!filter) return;
        FuzzRecordWriter w;
        if (TextEquals(filter, "ASCIIHexDecode") || TextEquals(filter, "AHx")) {
            w.Byte(0);
        } else if (TextEquals(filter, "ASCII85Decode") || TextEquals(filter, "A85")) {
            w.Byte(1);
        } else if (TextEquals(filter, "FlateDecode") || TextEquals(filter, "Fl") ||
                   TextEquals(filter, "LZWDecode") || TextEquals(filter, "LZW")) {
            const bool lzw = TextEquals(filter, "LZWDecode") || TextEquals(filter, "LZW");
            const bool early = IntOf(doc, params, "EarlyChange", 1) != 0;
            const std::uint8_t predictor = PredictorByte(IntOf(doc, params, "Predictor", 1));
            w.Byte(3).Byte(static_cast<std::uint8_t>((lzw ? 1 : 0) | (early ? 0 : 2) | (params ? 0 : 0x10)));
            w.Byte(predictor);
            w.U32(static_cast<std::uint32_t>(IntOf(doc, params, "Columns", 1)));
            w.U32(static_cast<std::uint32_t>(IntOf(doc, params, "Colors", 1)));
            w.U32(static_cast<std::uint32_t>(IntOf(doc, params, "BitsPerComponent", 8)));
        } else if (TextEquals(filter, "CCITTFaxDecode") || TextEquals(filter, "CCF")) {
            const std::int64_t k = IntOf(doc, params, "K", 0);
            w.Byte(6).I32(static_cast<std::int32_t>(k)).Byte(0);
            w.U16(static_cast<std::uint16_t>(IntOf(doc, params, "Columns", 1728) - 1));
            w.U16(static_cast<std::uint16_t>(IntOf(doc, dict, "Height", 1) - 1));
        } else {
            return;
        }
        m_seeds.Add("fuzz_decoders", w.Rest(stored).Bytes());
    }

    void Image(ivPdf& doc, XrefEntry* e, const pdfStream* stream, const std::string& stored) {
        // An object the dictionary names by reference comes along as object 5 (the first one).
        std::string object5;
        const std::string entries = EntriesWithoutLength(stream->dict);
        std::string renamed = entries;
        if (const pdfDict* d = AsDict(stream->dict)) {
            for (const pdfPair& p : d->Entries()) {
                const pdfRef* r = AsRef(p.value);
                if (!r || TextEquals(p.key, "Length")) continue;
                object5 = Syntax(ResolveRef(doc, r->Id()));
                const std::string from = std::to_string(r->num) + " " + std::to_string(r->gen) + " R";
                if (std::size_t at = renamed.find(from); at != std::string::npos)
                    renamed.replace(at, from.size(), "5 0 R");
                break;
            }
        }
        m_seeds.Add("fuzz_images",
                    FuzzRecordWriter().Byte(3).Field(renamed).Field(object5).Field("").Rest(stored).Bytes());
        // Compressed image data as the codecs get it.
        pdfDecodedStream decoded;
        if (Failed(OpenDecodedStream(doc, stream, e, decoded))) return;
        const std::string data = ReadStream(decoded.stream.get(), kMaxSeed);
        if (TextEquals(decoded.filter, "DCTDecode") || TextEquals(decoded.filter, "DCT"))
            m_seeds.Add("fuzz_images", FuzzRecordWriter().Byte(0).Rest(data).Bytes());
        else if (TextEquals(decoded.filter, "JPXDecode"))
            m_seeds.Add("fuzz_images", FuzzRecordWriter().Byte(1).Rest(data).Bytes());
        else if (TextEquals(decoded.filter, "JBIG2Decode")) {
            std::string globals;
            if (const pdfObject* g = Deref(doc, DictGet(decoded.params, "JBIG2Globals"))) {
                pdfDecodedStream gs;
                if (Succeeded(OpenDecodedStream(doc, g, nullptr, gs)))
                    globals = ReadStream(gs.stream.get(), 0xFFFF);
            }
            m_seeds.Add("fuzz_images", FuzzRecordWriter().Byte(2).Field(globals).Rest(data).Bytes());
        }
    }

    // Both modes of the security target from the document's own handler input.
    void Security(ivPdf& doc, const std::string& password) {
        const XrefSection* trailer = doc.NewestSection();
        const pdfObject* dict =
            trailer->encrypt.obj ? trailer->encrypt.obj : ResolveRef(doc, trailer->encrypt.Id());
        std::string id;
        const pdfArray* ids = AsArray(trailer->id.obj ? trailer->id.obj : ResolveRef(doc, trailer->id.Id()));
        if (ids && ids->count)
            if (const pdfBytes* b = AsBytes(ids->Items()[0])) id.assign(b->Chars(), b->size);
        const std::string text = Syntax(Deref(doc, dict));
        // The first stream in the file, as stored (still encrypted), with its identifier.
        for (const pdfStream* s : doc.Streams()) {
            if (!s->entry || s->entry->Compressed()) continue;
            const std::int64_t length = IntOf(doc, s->dict, "Length", 0);
            if (s->dataPos >= m_bytes.size()) continue;
            const std::string data =
                m_bytes.substr(s->dataPos, static_cast<std::size_t>(std::max<std::int64_t>(length, 0)));
            for (const std::string& pw : {password, std::string()}) {
                m_seeds.Add("fuzz_security", FuzzRecordWriter()
                                                 .Byte(0)
                                                 .Field(pw)
                                                 .Field(text)
                                                 .Field(id)
                                                 .Field("Title")
                                                 .Rest(data)
                                                 .Bytes());
                m_seeds.Add("fuzz_security", FuzzRecordWriter()
                                                 .Byte(1)
                                                 .Field(pw)
                                                 .Field(text)
                                                 .Field(id)
                                                 .Field(data.substr(0, 64))
                                                 .U32(s->entry->num)
                                                 .U16(s->entry->gen)
                                                 .I32(static_cast<std::int32_t>(data.size()))
                                                 .Rest(data)
                                                 .Bytes());
            }
            break;
        }
    }

    SeedWriter& m_seeds;
    const std::string& m_bytes;
};

void AddFile(SeedWriter& seeds, const fs::path& path) {
    const std::string ext = path.extension().string();
    const std::string stem = path.stem().string();
    if (ext == ".pdf") {
        const std::string bytes = Slurp(path);
        PdfMiner(seeds, bytes).Run();
        return;
    }
    if (fs::file_size(path) > kMaxSeed) return;
    const std::string bytes = Slurp(path);
    if (ext == ".jpg") {
        seeds.Add("fuzz_images", FuzzRecordWriter().Byte(0).Rest(bytes).Bytes());
    } else if (ext == ".j2k" || ext == ".jp2") {
        seeds.Add("fuzz_images", FuzzRecordWriter().Byte(1).Rest(bytes).Bytes());
    } else if (ext == ".jb2") {
        if (stem.ends_with("-globals")) return;
        const fs::path globals = path.parent_path() / (stem + "-globals.jb2");
        seeds.Add(
            "fuzz_images",
            FuzzRecordWriter().Byte(2).Field(fs::exists(globals) ? Slurp(globals) : "").Rest(bytes).Bytes());
    } else if (ext == ".g4") {
        for (auto [w, h] : {std::pair{16, 16}, std::pair{1728, 64}})
            seeds.Add("fuzz_decoders",
                      FuzzRecordWriter().Byte(5).I32(-1).Byte(0).U16(w - 1).U16(h - 1).Rest(bytes).Bytes());
    } else if (ext == ".lzw") {
        seeds.Add("fuzz_decoders", FuzzRecordWriter().Byte(2).Byte(1).Rest(bytes).Bytes());
        seeds.Add("fuzz_decoders",
                  FuzzRecordWriter().Byte(3).Byte(0x11).Byte(1).U32(1).U32(1).U32(8).Rest(bytes).Bytes());
    } else if (ext == ".flate") {
        seeds.Add("fuzz_decoders",
                  FuzzRecordWriter().Byte(3).Byte(0).Byte(12).U32(4).U32(1).U32(8).Rest(bytes).Bytes());
    } else if (ext == ".bin" && stem.find("7-0") != std::string::npos) {
        seeds.Add("fuzz_parser",
                  FuzzRecordWriter().Byte(kParseContent).Rest(bytes).Bytes());  // page contents
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s OUT_DIR INPUT...\n", argv[0]);
        return 64;
    }
    SeedWriter seeds(argv[1]);
    std::vector<fs::path> files;
    for (int i = 2; i < argc; ++i) {
        std::error_code ec;
        if (fs::is_directory(argv[i], ec)) {
            for (const auto& item : fs::recursive_directory_iterator(argv[i], ec))
                if (item.is_regular_file()) files.push_back(item.path());
        } else if (fs::is_regular_file(argv[i], ec)) {
            files.emplace_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& f : files) AddFile(seeds, f);
    seeds.Summary();
    return 0;
}

#include "BenchData.h"

#include <zlib.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <unordered_map>

namespace bench {

namespace {

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
    char buffer[1024];
    std::va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (n < 0 || static_cast<std::size_t>(n) >= sizeof buffer) throw std::length_error("Format");
    return std::string(buffer, static_cast<std::size_t>(n));
}

const char* const kWords[] = {"lorem", "ipsum", "dolor", "sit", "amet", "consectetur", "adipiscing",
                              "elit", "sed", "do", "eiusmod", "tempor", "incididunt", "ut", "labore",
                              "et", "dolore", "magna", "aliqua", "enim", "ad", "minim", "veniam"};

std::string Words(Rng& r, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) {
        if (i) s += ' ';
        s += kWords[r.Below(std::size(kWords))];
    }
    return s;
}

std::string Real(Rng& r, std::uint32_t whole) {
    return Format("%u.%u", r.Below(whole), r.Below(1000));
}

const char* const kId = "[<9F1C2A7E44D05B3881E0C6A1D2F3B4C5><9F1C2A7E44D05B3881E0C6A1D2F3B4C5>]";

// Objects with their offsets, then a classic table over object numbers 0 to the highest.
class Writer {
public:
    Writer() : m_out("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n") {}

    void Object(std::uint32_t num, const std::string& body) {
        Note(num);
        m_out += Format("%u 0 obj\n", num);
        m_out += body;
        m_out += "\nendobj\n";
    }
    void Stream(std::uint32_t num, const std::string& entries, const std::string& data) {
        Note(num);
        m_out += Format("%u 0 obj\n<<", num);
        m_out += entries;
        m_out += Format("/Length %zu>>\nstream\n", data.size());
        m_out += data;
        m_out += "\nendstream\nendobj\n";
    }
    std::string Finish(const std::string& trailerEntries) {
        const std::size_t table = m_out.size();
        const std::size_t size = m_offsets.size();
        m_out += Format("xref\n0 %zu\n", size);
        for (std::size_t i = 0; i < size; ++i)
            m_out += i && m_offsets[i] ? Format("%010u 00000 n\r\n", m_offsets[i]) : "0000000000 65535 f\r\n";
        m_out += Format("trailer\n<</Size %zu", size) + trailerEntries + "/ID" + kId + ">>\n";
        m_out += Format("startxref\n%zu\n%%%%EOF\n", table);
        return std::move(m_out);
    }

private:
    void Note(std::uint32_t num) {
        if (m_offsets.size() <= num) m_offsets.resize(num + 1, 0);
        m_offsets[num] = static_cast<std::uint32_t>(m_out.size());
    }

    std::string m_out;
    std::vector<std::uint32_t> m_offsets;
};

std::uint8_t Paeth(int a, int b, int c) {
    const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return static_cast<std::uint8_t>(a);
    return static_cast<std::uint8_t>(pb <= pc ? b : c);
}

}  // namespace

ivRef<ivMemStream> MemStreamOf(std::string_view bytes) {
    return ivMemStream::Create(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

std::string ObjectText(std::size_t bytes, std::size_t* count) {
    Rng r(7);
    std::string out;
    std::size_t n = 0;
    while (out.size() < bytes) {
        const std::uint32_t num = static_cast<std::uint32_t>(n + 10);
        std::string body;
        switch (n % 8) {
            case 0:
            case 4:  // page
                body = Format(
                    "<< /Type /Page /Parent %u 0 R /MediaBox [0 0 612 792] /Contents %u 0 R "
                    "/Resources << /Font << /F1 5 0 R /F2 6 0 R >> /XObject << /Im%u %u 0 R >> "
                    "/ExtGState << /GS0 7 0 R >> /ProcSet [/PDF /Text /ImageC] >> "
                    "/Annots [%u 0 R %u 0 R] /StructParents %u /Rotate %u >>",
                    r.Below(500) + 3, num + 1, r.Below(40), r.Below(90000) + 9, num + 2, num + 3, r.Below(10000),
                    90 * r.Below(2));
                break;
            case 1:  // link annotation
                body = "<< /Type /Annot /Subtype /Link /Rect [" + Real(r, 600) + " " + Real(r, 800) + " " +
                       Real(r, 600) + " " + Real(r, 800) + "] /Border [0 0 0] /H /I " +
                       Format("/A << /S /URI /URI (https://example.org/doc/%u#p%u) >> /P %u 0 R /F 4 >>",
                              r.Below(1000), r.Below(200), num - 1);
                break;
            case 2: {  // TrueType font with its widths
                body = Format(
                    "<< /Type /Font /Subtype /TrueType /BaseFont /ABCDEF+Liberation#20Serif /FirstChar 32 "
                    "/LastChar 126 /Encoding /WinAnsiEncoding /FontDescriptor %u 0 R /Widths [",
                    num + 1);
                for (int i = 32; i <= 126; ++i) body += Format(i == 32 ? "%u" : " %u", 250 + r.Below(700));
                body += "] >>";
                break;
            }
            case 3:  // font descriptor
                body = Format(
                    "<< /Type /FontDescriptor /FontName /ABCDEF+LiberationSerif /Flags 34 "
                    "/FontBBox [-543 -303 1278 981] /ItalicAngle 0 /Ascent 891 /Descent -216 "
                    "/CapHeight 662 /StemV 80 /MissingWidth 250 /FontFile2 %u 0 R >>",
                    r.Below(90000) + 9);
                break;
            case 5:  // outline item
                body = "<< /Title (" + Words(r, 4) + Format(") /Parent %u 0 R /Prev %u 0 R /Next %u 0 R ", num - 7,
                                                            num - 8, num + 8) +
                       "/Dest [" + Format("%u 0 R /XYZ 0 ", num - 5) + Real(r, 800) + " null] /C [0 0 0.5] /F 2 >>";
                break;
            case 6:  // structure element
                body = Format("<< /Type /StructElem /S /P /P %u 0 R /Pg %u 0 R /K [%u %u << /Type /MCR /MCID %u >>] ",
                              r.Below(9000) + 9, num - 2, r.Below(30), r.Below(30), r.Below(30)) +
                       "/Lang (en-GB) /ActualText <FEFF00" + Format("%02X00%02X", 65 + r.Below(26), 97 + r.Below(26)) +
                       "> /Alt (" + Words(r, 3) + ") >>";
                break;
            default:  // array of numbers, booleans and a null, as in a number tree
                body = "[";
                for (int i = 0; i < 8; ++i)
                    body += Format("%u %u 0 R ", r.Below(10000), r.Below(90000) + 9);
                body += "true false null -12 +7 .5 -0.25]";
        }
        out += Format("%u 0 obj\n", num);
        out += body;
        out += "\nendobj\n";
        ++n;
    }
    if (count) *count = n;
    return out;
}

std::string ContentText(std::size_t bytes) {
    Rng r(11);
    std::string out;
    while (out.size() < bytes) {
        switch (r.Below(6)) {
            case 0:
                out += "/P <</MCID " + Format("%u", r.Below(50)) + ">> BDC\nBT\n/F1 " + Format("%u", 8 + r.Below(8)) +
                       " Tf\n" + Real(r, 500) + " " + Real(r, 700) + " Td\n14 TL\n(" + Words(r, 8) + ") Tj\nT*\n(" +
                       Words(r, 6) + ") '\n[(" + Words(r, 2) + ") -250 (" + Words(r, 3) + ")] TJ\nET\nEMC\n";
                break;
            case 1:
                out += "q\n0.5 0 0 0.5 " + Real(r, 500) + " " + Real(r, 700) + " cm\n" + Real(r, 1) + " " +
                       Real(r, 1) + " " + Real(r, 1) + " rg\n" + Real(r, 500) + " " + Real(r, 700) + " " +
                       Real(r, 200) + " " + Real(r, 100) + " re\nf\nQ\n";
                break;
            case 2:
                out += Real(r, 500) + " " + Real(r, 700) + " m\n" + Real(r, 500) + " " + Real(r, 700) + " l\n" +
                       Real(r, 500) + " " + Real(r, 700) + " " + Real(r, 500) + " " + Real(r, 700) + " " +
                       Real(r, 500) + " " + Real(r, 700) + " c\nh\n1.5 w\n0 0 1 RG\nS\n";
                break;
            case 3:
                out += "q\n/GS0 gs\n" + Format("%u 0 0 %u %u %u cm\n/Im%u Do\nQ\n", 50 + r.Below(200),
                                               50 + r.Below(200), r.Below(400), r.Below(600), r.Below(40));
                break;
            case 4:
                out += "BT\n/F2 10 Tf\n1 0 0 1 " + Real(r, 500) + " " + Real(r, 700) + " Tm\n<" +
                       Format("%04X%04X%04X", r.Below(65536), r.Below(65536), r.Below(65536)) + "> Tj\nET\n";
                break;
            default:
                out += "q\n/Fm0 Do\nQ\n[3 2] 0 d\n0 J 0 j 10 M\n0.2 g\n";
        }
    }
    return out;
}

std::string ClassicTableFile(std::uint32_t entries, std::uint32_t* tableOffset) {
    Rng r(3);
    std::string out = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
    *tableOffset = static_cast<std::uint32_t>(out.size());
    out += Format("xref\n0 %u\n0000000000 65535 f\r\n", entries + 1);
    std::uint32_t offset = 15;
    for (std::uint32_t i = 0; i < entries; ++i) {
        out += Format("%010u 00000 n\r\n", offset);
        offset += 40 + r.Below(400);
    }
    out += Format("trailer\n<</Size %u/Root 1 0 R/Info 2 0 R/ID%s>>\nstartxref\n%u\n%%%%EOF\n", entries + 1, kId,
                  *tableOffset);
    return out;
}

std::string XrefStreamFile(std::uint32_t entries, std::uint32_t* streamOffset) {
    // Rows of 7 bytes (type, 4-byte field, 2-byte field), each with the Up filter applied.
    const std::uint32_t self = entries + 1;  // the stream's own number, listed last
    std::string rows;
    std::uint8_t prev[7] = {}, row[7] = {};
    std::uint32_t offset = 15, objStm = 0, index = 0;
    auto put = [&](std::uint8_t type, std::uint32_t f2, std::uint16_t f3) {
        row[0] = type;
        for (int i = 0; i < 4; ++i) row[1 + i] = static_cast<std::uint8_t>(f2 >> (24 - 8 * i));
        row[5] = static_cast<std::uint8_t>(f3 >> 8);
        row[6] = static_cast<std::uint8_t>(f3);
        rows += '\x02';
        for (int i = 0; i < 7; ++i) rows += static_cast<char>(static_cast<std::uint8_t>(row[i] - prev[i]));
        std::copy(row, row + 7, prev);
    };
    put(0, 0, 65535);
    for (std::uint32_t num = 1; num <= entries; ++num) {
        if (index == 0) {  // an object stream, then 100 objects in it
            put(1, offset, 0);
            offset += 4000 + (num * 37) % 3000;
            objStm = num;
            index = 100;
        } else {
            put(2, objStm, static_cast<std::uint16_t>(100 - index));
            --index;
        }
    }
    *streamOffset = offset;
    put(1, offset, 0);
    const std::string data = Deflate(rows);
    std::string out = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
    // The stream sits where its own entry says.
    out.resize(offset, ' ');
    out += Format("%u 0 obj\n<</Type/XRef/Size %u/W[1 4 2]/Root 1 0 R/Info 2 0 R/ID%s"
                  "/Filter/FlateDecode/DecodeParms<</Columns 7/Predictor 12>>/Length %zu>>\nstream\n",
                  self, self + 1, kId, data.size());
    out += data;
    out += Format("\nendstream\nendobj\nstartxref\n%u\n%%%%EOF\n", offset);
    return out;
}

std::string Deflate(std::string_view data, int level) {
    uLongf size = compressBound(static_cast<uLong>(data.size()));
    std::string out(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
                  static_cast<uLong>(data.size()), level) != Z_OK)
        throw std::runtime_error("compress2");
    out.resize(size);
    return out;
}

std::string FlateImage(std::uint32_t width, std::uint32_t height, int pngFilter, std::string* decoded) {
    constexpr std::uint32_t kBpp = 3;
    const std::uint32_t stride = width * kBpp;
    Rng r(5);
    std::string plain(std::size_t(stride) * height, '\0');
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x)
            for (std::uint32_t c = 0; c < kBpp; ++c)  // smooth gradients, a little noise, flat bands
                plain[std::size_t(y) * stride + x * kBpp + c] =
                    (y / 50) % 4 == 3 ? static_cast<char>(0xF0 - c)
                                      : static_cast<char>((x * (c + 1) + y * (3 - c)) / 4 + (r.Below(4) == 0));
    if (decoded) *decoded = plain;
    if (pngFilter < 0) return Deflate(plain);
    std::string tagged;
    tagged.reserve(std::size_t(stride + 1) * height);
    auto at = [&](std::uint32_t y, std::uint32_t i) -> int {
        return static_cast<std::uint8_t>(plain[std::size_t(y) * stride + i]);
    };
    for (std::uint32_t y = 0; y < height; ++y) {
        const int filter = pngFilter == 5 ? static_cast<int>(y % 5) : pngFilter;
        tagged += static_cast<char>(filter);
        for (std::uint32_t i = 0; i < stride; ++i) {
            const int x = at(y, i), a = i >= kBpp ? at(y, i - kBpp) : 0, b = y ? at(y - 1, i) : 0,
                      c = y && i >= kBpp ? at(y - 1, i - kBpp) : 0;
            int v = x;
            switch (filter) {
                case 1: v = x - a; break;
                case 2: v = x - b; break;
                case 3: v = x - (a + b) / 2; break;
                case 4: v = x - Paeth(a, b, c); break;
                default: break;
            }
            tagged += static_cast<char>(static_cast<std::uint8_t>(v));
        }
    }
    return Deflate(tagged);
}

std::string LzwEncode(std::string_view in, bool earlyChange) {
    std::string out;
    std::uint64_t acc = 0;
    int bits = 0, width = 9;
    std::uint32_t encNext = 258, decNext = 258;
    bool fresh = true;  // the decoder adds no entry for the first code after a clear code
    std::unordered_map<std::uint32_t, std::uint16_t> table;
    auto emit = [&](std::uint32_t code) {
        acc = acc << width | code;
        for (bits += width; bits >= 8; bits -= 8) out += static_cast<char>(acc >> (bits - 8));
        if (code == 256) {
            table.clear();
            encNext = decNext = 258;
            width = 9;
            fresh = true;
        } else if (fresh) {
            fresh = false;
        } else if (++decNext + (earlyChange ? 1 : 0) >= 1u << width) {
            width = std::min(width + 1, 12);
        }
    };
    emit(256);
    if (!in.empty()) {
        std::uint32_t cur = static_cast<std::uint8_t>(in[0]);
        for (std::size_t i = 1; i < in.size(); ++i) {
            const std::uint32_t key = cur << 8 | static_cast<std::uint8_t>(in[i]);
            if (auto it = table.find(key); it != table.end()) {
                cur = it->second;
                continue;
            }
            emit(cur);
            if (encNext < 4096) table.emplace(key, static_cast<std::uint16_t>(encNext++));
            if (encNext == 4096) emit(256);
            cur = static_cast<std::uint8_t>(in[i]);
        }
        emit(cur);
    }
    emit(257);
    if (bits) out += static_cast<char>(acc << (8 - bits));
    return out;
}

std::string SmallObjectsDocument(std::uint32_t pages, std::uint32_t* objects) {
    Rng r(13);
    Writer w;
    std::uint32_t next = 1;
    auto alloc = [&next] { return next++; };
    const std::uint32_t catalog = alloc(), info = alloc(), outlines = alloc(), font1 = alloc(), font2 = alloc(),
                        gs = alloc(), form = alloc();
    // Page numbers first, so pages and tree nodes can point at each other.
    std::vector<std::uint32_t> page(pages);
    for (auto& p : page) p = alloc();
    // The tree bottom-up: 16 kids per node; parent[i] of each page and node.
    std::vector<std::uint32_t> parentOf(std::size_t(next) + pages / 8 + 64, 0);
    std::vector<std::uint32_t> level = page;
    std::vector<std::pair<std::uint32_t, std::vector<std::uint32_t>>> nodes;
    std::vector<std::uint32_t> counts(parentOf.size(), 1);
    while (level.size() > 1 || nodes.empty()) {
        std::vector<std::uint32_t> up;
        for (std::size_t i = 0; i < level.size(); i += 16) {
            const std::uint32_t node = alloc();
            if (parentOf.size() <= node) {
                parentOf.resize(node + 1, 0);
                counts.resize(node + 1, 1);
            }
            std::vector<std::uint32_t> kids(level.begin() + static_cast<std::ptrdiff_t>(i),
                                            level.begin() + static_cast<std::ptrdiff_t>(std::min(level.size(), i + 16)));
            counts[node] = 0;
            for (std::uint32_t k : kids) {
                parentOf[k] = node;
                counts[node] += counts[k];
            }
            nodes.emplace_back(node, std::move(kids));
            up.push_back(node);
        }
        level = std::move(up);
    }
    const std::uint32_t root = level.front();
    for (const auto& [node, kids] : nodes) {
        std::string body = "<</Type/Pages";
        if (node == root)
            body += "/MediaBox[0 0 595 842]/Resources<</Font<</F1 " + Format("%u 0 R/F2 %u 0 R>>/ExtGState<</GS0 %u 0 R>>",
                                                                            font1, font2, gs) +
                    Format("/XObject<</Fm0 %u 0 R>>>>", form);
        else
            body += Format("/Parent %u 0 R", parentOf[node]);
        body += "/Kids[";
        for (std::size_t k = 0; k < kids.size(); ++k) body += Format(k ? " %u 0 R" : "%u 0 R", kids[k]);
        body += Format("]/Count %u>>", counts[node]);
        w.Object(node, body);
    }
    for (std::uint32_t i = 0; i < pages; ++i) {
        const std::uint32_t content = alloc(), link = alloc(), note = alloc();
        std::string image;
        if (i % 10 == 0) {
            const std::uint32_t im = alloc();
            w.Stream(im, "/Type/XObject/Subtype/Image/Width 8/Height 8/ColorSpace/DeviceGray/BitsPerComponent 8",
                     std::string(64, static_cast<char>(i)));
            image = Format("/Resources<</XObject<</Im0 %u 0 R>>/Font<</F1 %u 0 R>>>>", im, font1);
        }
        w.Stream(content, "/Filter/FlateDecode", Deflate(ContentText(200 + r.Below(300))));
        w.Object(link, Format("<</Type/Annot/Subtype/Link/Rect[72 %u 200 %u]/Border[0 0 0]/P %u 0 R/Dest[%u 0 R/Fit]>>",
                              100 + i % 500, 112 + i % 500, page[i], page[(i * 7 + 3) % pages]));
        w.Object(note, Format("<</Type/Annot/Subtype/Text/Rect[500 700 520 720]/Contents(Note %u)/P %u 0 R/Open false>>",
                              i, page[i]));
        w.Object(page[i], Format("<</Type/Page/Parent %u 0 R/Contents %u 0 R/Annots[%u 0 R %u 0 R]%s%s>>",
                                 parentOf[page[i]], content, link, note, image.c_str(),
                                 i % 7 == 3 ? "/Rotate 90" : ""));
    }
    // A flat outline: one item per 10 pages.
    std::vector<std::uint32_t> items;
    for (std::uint32_t i = 0; i < pages; i += 10) items.push_back(alloc());
    for (std::size_t k = 0; k < items.size(); ++k) {
        std::string body = Format("<</Title(Section %zu)/Parent %u 0 R", k + 1, outlines);
        if (k) body += Format("/Prev %u 0 R", items[k - 1]);
        if (k + 1 < items.size()) body += Format("/Next %u 0 R", items[k + 1]);
        body += Format("/Dest[%u 0 R/XYZ 0 842 null]>>", page[k * 10]);
        w.Object(items[k], body);
    }
    w.Object(outlines, items.empty() ? "<</Type/Outlines/Count 0>>"
                                     : Format("<</Type/Outlines/First %u 0 R/Last %u 0 R/Count %zu>>", items.front(),
                                              items.back(), items.size()));
    w.Object(font1, "<</Type/Font/Subtype/Type1/BaseFont/Helvetica/Encoding/WinAnsiEncoding>>");
    w.Object(font2, "<</Type/Font/Subtype/Type1/BaseFont/Times-Roman/Encoding/WinAnsiEncoding>>");
    w.Object(gs, "<</Type/ExtGState/CA 1/ca 1/LW 1>>");
    w.Stream(form, "/Type/XObject/Subtype/Form/BBox[0 0 100 100]/Resources<<>>", "0 0 m 100 100 l S");
    w.Object(info, "<</Title(Benchmark document)/Producer(vantrel bench)/CreationDate(D:20240301120000Z)>>");
    w.Object(catalog, Format("<</Type/Catalog/Pages %u 0 R/Outlines %u 0 R/PageLabels<</Nums[0<</S/D>>]>>>>",
                             root, outlines));
    if (objects) *objects = next - 1;
    return w.Finish(Format("/Root %u 0 R/Info %u 0 R", catalog, info));
}

}  // namespace bench

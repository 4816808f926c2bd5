// Hostile files through the whole command line: loops, deep nesting, huge claims, garbage
// behind every image filter, broken encryption dictionaries. Each file is built here in memory
// (or, where a fixture in tests/data already is that file, read from there) and given to
// vantrel-cli in a child process with --json --export-images, or --contents 1 for content-stream
// cases, once as it is and once with --extra-checks. Every run must end within its time and
// stay under its memory (the child's peak resident size from wait4): the guards hold in both
// modes. As it is, the file exits with the status the command-line contract gives its
// standard report (0 clean, 1 messages, 2 not opened); with the extra checks, every file
// gets at least one message.
//
// VANTREL_HOSTILE_DIR=FOLDER keeps the files (and the runs' outputs) there instead of in a
// temporary folder, for a look at them with other tools.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/CliRun.h"
#include "support/PdfBuilder.h"
#include "support/TestSupport.h"

namespace fs = std::filesystem;

namespace {

enum class Run { Report, Contents };

struct Hostile {
    std::string name;
    std::function<std::string()> make;  // the file's bytes
    int exitStatus;                     // without --extra-checks
    Run run = Run::Report;
};

// ---- builders -------------------------------------------------------------------------------

std::string Repeat(std::string_view piece, std::size_t times) {
    std::string out;
    out.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i) out += piece;
    return out;
}

// Deterministic bytes that no decoder can make sense of.
std::string Garbage(std::size_t n, std::uint32_t seed) {
    std::string out(n, '\0');
    for (char& c : out) {
        seed = seed * 1664525u + 1013904223u;
        c = static_cast<char>(seed >> 24);
    }
    return out;
}

// Catalog 1, page tree 2, page 3 with `pageEntries`, its contents 4 holding `contents`.
void OnePage(PdfBuilder& pdf, std::string_view pageEntries = "", std::string_view contents = "") {
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    pdf.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 4 0 R" +
                      std::string(pageEntries) + " >>");
    pdf.Stream(4, "", contents);
}

// OnePage plus `objects`, one classic table, startxref.
std::string Document(const std::vector<std::pair<std::uint32_t, std::string>>& objects,
                     std::string_view pageEntries = "", std::string_view contents = "",
                     std::string_view trailerExtra = "") {
    PdfBuilder pdf;
    OnePage(pdf, pageEntries, contents);
    std::uint32_t size = 5;
    for (const auto& [num, body] : objects) {
        pdf.Object(num, body);
        size = std::max(size, num + 1);
    }
    pdf.StartXref(pdf.Table(" /Size " + std::to_string(size) + " /Root 1 0 R" + std::string(trailerExtra)));
    return pdf.Bytes();
}

// A document whose page draws the image 5 0 with the given dictionary entries and data.
std::string ImageDocument(std::string_view entries, std::string_view data,
                          const std::vector<std::pair<std::uint32_t, std::string>>& more = {}) {
    PdfBuilder pdf;
    OnePage(pdf, " /Resources << /XObject << /Im0 5 0 R >> >>", "q 10 0 0 10 0 0 cm /Im0 Do Q");
    pdf.Stream(5, " /Type /XObject /Subtype /Image " + std::string(entries), data);
    for (const auto& [num, body] : more) pdf.Object(num, body);
    pdf.StartXref(pdf.Table(" /Size 10 /Root 1 0 R"));
    return pdf.Bytes();
}

std::string Fixture(const std::string& name) {
    std::string bytes = ReadTestFile(name);
    if (bytes.empty()) ADD_FAILURE() << "missing fixture tests/data/" << name;
    return bytes;
}

// A fixture with every occurrence of `from` replaced by `to` of the same length, so that no
// offset moves.
std::string Patched(const std::string& name, const std::string& from, const std::string& to) {
    std::string bytes = Fixture(name);
    EXPECT_EQ(from.size(), to.size());
    bool found = false;
    for (std::size_t at = 0; (at = bytes.find(from, at)) != std::string::npos; at += to.size()) {
        bytes.replace(at, from.size(), to);
        found = true;
    }
    EXPECT_TRUE(found) << from << " not in " << name;
    return bytes;
}

// ---- Prev chains: sections written oldest first, each Prev filled once every offset is known.
std::string Sections(const std::vector<int>& prevOf) {
    PdfBuilder pdf;
    OnePage(pdf);
    std::vector<std::size_t> slots(prevOf.size());
    std::vector<std::uint32_t> at(prevOf.size());
    for (std::size_t i = 0; i < prevOf.size(); ++i) {
        at[i] = pdf.Offset();
        pdf.Raw("xref\n0 1\n0000000000 65535 f\r\n");
        if (i == 0) {
            // The first table lists the document's objects.
            pdf.Raw("1 4\n");
            for (std::uint32_t n = 1; n <= 4; ++n) {
                char line[24];
                std::snprintf(line, sizeof line, "%010u 00000 n\r\n", pdf.OffsetOf(n));
                pdf.Raw(line);
            }
        }
        pdf.Raw("trailer\n<< /Size 5 /Root 1 0 R /Prev ");
        slots[i] = pdf.Slot();
        pdf.Raw(" >>\n");
    }
    for (std::size_t i = 0; i < prevOf.size(); ++i)
        pdf.Fill(slots[i], at[static_cast<std::size_t>(prevOf[i])]);
    pdf.StartXref(at.back());
    return pdf.Bytes();
}

// zlib data for `prefix` and then `n` (at least 1) zero bytes, the zeros in about 1/1300 of
// their size, made by hand with the fixed Huffman codes: literals, then matches of 258 bytes
// at distance 1.
std::string DeflateZeros(std::uint64_t n, std::string_view prefix = "") {
    std::string out = "\x78\x01";
    std::uint32_t acc = 0;
    int bits = 0;
    auto put = [&](std::uint32_t value, int count) {  // packed from the least significant bit
        acc |= value << bits;
        for (bits += count; bits >= 8; bits -= 8, acc >>= 8) out += static_cast<char>(acc & 0xFF);
    };
    auto code = [&](std::uint32_t value, int count) {  // Huffman codes go most significant bit first
        std::uint32_t reversed = 0;
        for (int i = 0; i < count; ++i) reversed |= (value >> i & 1) << (count - 1 - i);
        put(reversed, count);
    };
    auto literal = [&](std::uint8_t b) { b < 144 ? code(0x30 + b, 8) : code(0x190 + b - 144, 9); };
    put(1, 1);  // the last block,
    put(1, 2);  // with fixed codes
    std::uint32_t a = 1, b = 0;  // Adler-32 of everything
    for (char c : prefix) {
        literal(static_cast<std::uint8_t>(c));
        a = (a + static_cast<std::uint8_t>(c)) % 65521;
        b = (b + a) % 65521;
    }
    b = static_cast<std::uint32_t>((b + n % 65521 * a) % 65521);
    std::uint64_t left = n;
    for (literal(0), --left; left >= 258; left -= 258) {
        code(0xC5, 8);  // length 258
        code(0, 5);     // distance 1
    }
    for (; left > 0; --left) literal(0);
    code(0, 7);  // end of block
    if (bits) out += static_cast<char>(acc);
    const std::uint32_t adler = b << 16 | a;
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(adler >> shift);
    return out;
}

// Objects 5 to 5 + n - 1, each a reference to the next; the last one is `end`.
std::vector<std::pair<std::uint32_t, std::string>> ReferenceChain(std::uint32_t n, const std::string& end) {
    std::vector<std::pair<std::uint32_t, std::string>> objects;
    for (std::uint32_t i = 0; i + 1 < n; ++i) objects.emplace_back(5 + i, std::to_string(6 + i) + " 0 R");
    objects.emplace_back(5 + n - 1, end);
    return objects;
}

// An object stream 5 holding object 6 (an integer) with `entries` for its dictionary; object 6
// is listed in it by a cross-reference stream at index `index`.
std::string ObjectStreamDocument(std::string_view entries, std::uint32_t index = 0) {
    PdfBuilder pdf;
    OnePage(pdf);
    pdf.Stream(5, " /Type /ObjStm" + std::string(entries), "6 0 42");
    const std::uint32_t at = pdf.Offset();
    std::string rows;
    auto row = [&rows](std::uint8_t type, std::uint32_t f2, std::uint16_t f3) {
        PdfBuilder::AppendXrefRow(rows, type, f2, f3);
    };
    row(0, 0, 65535);
    for (std::uint32_t n = 1; n <= 5; ++n) row(1, pdf.OffsetOf(n), 0);
    row(2, 5, static_cast<std::uint16_t>(index));
    row(1, at, 0);
    pdf.Raw("7 0 obj\n<< /Type /XRef /Size 8 /W [1 4 2] /Root 1 0 R /Length " + std::to_string(rows.size()) +
            " >>\nstream\n" + rows + "\nendstream\nendobj\n");
    pdf.StartXref(at);
    return pdf.Bytes();
}

// A stream object typed by hand, so that its Length can be anything.
std::string RawStream(std::string_view entries, std::string_view data) {
    return "<<" + std::string(entries) + " >>\nstream\n" + std::string(data) + "\nendstream";
}

// The image document with the image's dictionary entries (Length included) typed by hand.
std::string RawImageDocument(std::string_view entries, std::string_view data) {
    PdfBuilder pdf;
    OnePage(pdf, " /Resources << /XObject << /Im0 5 0 R >> >>", "q 10 0 0 10 0 0 cm /Im0 Do Q");
    pdf.Object(5, RawStream(" /Type /XObject /Subtype /Image" + std::string(entries), data));
    pdf.StartXref(pdf.Table(" /Size 6 /Root 1 0 R"));
    return pdf.Bytes();
}

// A one-page document whose contents stream says its Length is `length`.
// One page whose Contents is `contents`; object 4 is `stream`, its whole body typed by hand.
std::string ContentsDocument(std::string_view contents, std::string_view stream) {
    PdfBuilder pdf;
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    pdf.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents " + std::string(contents) +
                      " >>");
    pdf.Object(4, stream);
    pdf.StartXref(pdf.Table(" /Size 5 /Root 1 0 R"));
    return pdf.Bytes();
}

std::string ContentsWithLength(const std::string& length) {
    return ContentsDocument("4 0 R", RawStream(" /Length " + length, "BT /F1 12 Tf (x) Tj ET"));
}

// zlib data in stored (uncompressed) blocks, for Flate streams without a compressor.
std::string Deflated(std::string_view data) {
    std::string out = "\x78\x01";
    std::size_t at = 0;
    do {
        const std::size_t n = std::min<std::size_t>(data.size() - at, 65535);
        const bool last = at + n == data.size();
        out += static_cast<char>(last ? 1 : 0);
        out += static_cast<char>(n & 0xFF);
        out += static_cast<char>(n >> 8);
        out += static_cast<char>(~n & 0xFF);
        out += static_cast<char>((~n >> 8) & 0xFF);
        out.append(data.substr(at, n));
        at += n;
    } while (at < data.size());
    std::uint32_t a = 1, b = 0;
    for (unsigned char c : data) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    const std::uint32_t adler = b << 16 | a;
    for (int i = 3; i >= 0; --i) out += static_cast<char>((adler >> (8 * i)) & 0xFF);
    return out;
}

// A document whose newest section is the cross-reference stream 5 with `entries` (Type and
// Root are there) and `rows` as its data, unfiltered unless `entries` says otherwise.
std::string XrefStreamWith(std::string_view entries, std::string_view rows) {
    PdfBuilder pdf;
    OnePage(pdf);
    const std::uint32_t at = pdf.Offset();
    pdf.Object(5, "<< /Type /XRef /Root 1 0 R" + std::string(entries) + " /Length " +
                      std::to_string(rows.size()) + " >>\nstream\n" + std::string(rows) + "\nendstream");
    pdf.StartXref(at);
    return pdf.Bytes();
}

// The rows of W [1 4 2] for objects 0 to 5 of a OnePage document whose stream 5 starts at `at`.
std::string Rows(const PdfBuilder& pdf, std::uint32_t at) {
    std::string rows;
    auto row = [&rows](std::uint8_t type, std::uint32_t f2, std::uint16_t f3) {
        PdfBuilder::AppendXrefRow(rows, type, f2, f3);
    };
    row(0, 0, 65535);
    for (std::uint32_t n = 1; n <= 4; ++n) row(1, pdf.OffsetOf(n), 0);
    row(1, at, 0);
    return rows;
}

// A classic one-page document whose trailer or startxref says something odd: `trailer` goes
// into the trailer, `startxref` replaces the table's offset when given.
std::string ClassicWith(std::string_view trailer, std::optional<std::string> startxref = std::nullopt) {
    PdfBuilder pdf;
    OnePage(pdf);
    const std::uint32_t at = pdf.Table(" /Size 5 /Root 1 0 R" + std::string(trailer));
    if (startxref)
        pdf.Raw("startxref\n" + *startxref + "\n%%EOF\n");
    else
        pdf.StartXref(at);
    return pdf.Bytes();
}

// A classic table typed by hand after the one-page document's objects.
std::string HandTable(const std::function<std::string(const PdfBuilder&)>& table) {
    PdfBuilder pdf;
    OnePage(pdf);
    const std::uint32_t at = pdf.Offset();
    pdf.Raw(table(pdf));
    pdf.StartXref(at);
    return pdf.Bytes();
}

std::string Line(std::uint32_t offset) {
    char line[24];
    std::snprintf(line, sizeof line, "%010u 00000 n\r\n", offset);
    return line;
}

// A document with one image of every filter, `filter` given in full ("/Filter /DCTDecode ...").
std::string GarbageImage(const std::string& filter, std::uint32_t seed,
                         const std::vector<std::pair<std::uint32_t, std::string>>& more = {}) {
    return ImageDocument("/Width 32 /Height 32 /ColorSpace /DeviceGray /BitsPerComponent 8 " + filter,
                         Garbage(4096, seed), more);
}

std::vector<Hostile> Cases() {
    const std::string deepArray = Repeat("[", 100000) + Repeat("]", 100000);
    const std::string deepDict = Repeat("<< /A ", 100000) + Repeat(">> ", 100000);
    std::vector<Hostile> cases = {
        // Prev chains of every shape.
        {"prev_self", [] { return Sections({0}); }, 1},
        {"prev_a_b_a",
         [] {
             return Sections({1, 0});
         },
         1},
        {"prev_a_b_c_b",
         [] {
             return Sections({1, 0, 1});
         },
         1},
        {"prev_loop_fixture", [] { return Fixture("prev-loop.pdf"); }, 1},
        {"xref_stream_prev_self", [] { return Fixture("xrefstream-prev-self.pdf"); }, 1},
        {"xrefstm_and_prev_name_their_own_table",
         [] {
             PdfBuilder pdf;
             OnePage(pdf);
             const std::string at = std::to_string(pdf.Offset());
             pdf.StartXref(pdf.Table(" /Size 5 /Root 1 0 R /XRefStm " + at + " /Prev " + at));
             return pdf.Bytes();
         },
         1},
        {"xref_stream_prev_to_classic_and_back",
         [] {
             PdfBuilder pdf;
             OnePage(pdf);
             const std::uint32_t classic = pdf.Offset();
             pdf.Raw("xref\n0 1\n0000000000 65535 f\r\ntrailer\n<< /Size 6 /Root 1 0 R /Prev ");
             const std::size_t slot = pdf.Slot();
             pdf.Raw(" >>\n");
             const std::uint32_t stream = pdf.Offset();
             pdf.Object(5, RawStream(" /Type /XRef /Size 6 /Root 1 0 R /W [1 4 2] /Prev " +
                                         std::to_string(classic) + " /Length 42",
                                     Rows(pdf, stream)));
             pdf.Fill(slot, stream);
             pdf.StartXref(stream);
             return pdf.Bytes();
         },
         1},
        // Nesting.
        {"deep_array_100000",
         [=] {
             return Document({{5, deepArray}});
         },
         1},
        {"deep_dictionary_100000",
         [=] {
             return Document({{5, deepDict}});
         },
         1},
        {"deep_array_in_contents", [=] { return Document({}, "", deepArray + " Tj"); }, 1, Run::Contents},
        {"deep_dictionary_in_inline_image",
         [=] { return Document({}, "", "BI /W 1 /H 1 /D " + deepDict + " ID x EI"); }, 1, Run::Contents},
        // Page tree.
        {"kids_cycle", [] { return Fixture("tree-kids-cycle.pdf"); }, 1},
        {"kids_name_their_own_node",
         [] {
             PdfBuilder pdf;
             pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
             pdf.Object(2, "<< /Type /Pages /Kids [2 0 R 3 0 R] /Count 1 >>");
             pdf.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>");
             pdf.StartXref(pdf.Table(" /Size 4 /Root 1 0 R"));
             return pdf.Bytes();
         },
         1},
        {"page_listed_100000_times",
         [] {
             PdfBuilder pdf;
             pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
             pdf.Object(2, "<< /Type /Pages /Kids [" + Repeat("3 0 R ", 100000) + "] /Count 100000 >>");
             pdf.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>");
             pdf.StartXref(pdf.Table(" /Size 4 /Root 1 0 R"));
             return pdf.Bytes();
         },
         0},
        {"shared_subtrees", [] { return Fixture("tree-shared-subtrees.pdf"); }, 1},
        // Outlines, actions, forms and resources that loop.
        {"outline_next_loop", [] { return Fixture("outline-next-loop.pdf"); }, 1},
        {"outline_first_is_root", [] { return Fixture("outline-first-is-root.pdf"); }, 1},
        {"action_next_loop", [] { return Fixture("action-next-loop.pdf"); }, 0},
        {"action_next_array_loop", [] { return Fixture("action-next-array-loop.pdf"); }, 0},
        {"form_draws_itself", [] { return Fixture("xobject-form-draws-itself.pdf"); }, 0},
        {"resources_contain_themselves", [] { return Fixture("res-contains-itself.pdf"); }, 1},
        {"resources_cycle_through_form", [] { return Fixture("res-cycle-through-form.pdf"); }, 0},
        // Huge values.
        {"image_length_2147483647",
         [] {
             return RawImageDocument(
                 " /Width 8 /Height 8 /ColorSpace /DeviceGray /BitsPerComponent 8 /Length 2147483647",
                 Garbage(64, 9));
         },
         0},
        {"image_length_4294967295",
         [] {
             return RawImageDocument(
                 " /Width 8 /Height 8 /ColorSpace /DeviceGray /BitsPerComponent 8 /Length 4294967295",
                 Garbage(64, 10));
         },
         0},
        {"contents_length_negative", [] { return ContentsWithLength("-5"); }, 0, Run::Contents},
        {"contents_length_2147483648", [] { return ContentsWithLength("2147483648"); }, 0, Run::Contents},
        {"xref_stream_w_2147483647",
         [] { return XrefStreamWith(" /Size 6 /W [1 2147483647 1]", Garbage(64, 1)); }, 1},
        {"xref_stream_w_4294967295",
         [] { return XrefStreamWith(" /Size 6 /W [4294967295 4 2]", Garbage(64, 2)); }, 1},
        {"xref_stream_size_2147483647",
         [] { return XrefStreamWith(" /W [1 4 2] /Size 2147483647", Garbage(42, 3)); }, 1},
        {"xref_stream_index_0_2147483647",
         [] { return XrefStreamWith(" /Size 6 /W [1 4 2] /Index [0 2147483647]", Garbage(42, 4)); }, 1},
        {"xref_stream_index_at_top",
         [] {
             return XrefStreamWith(" /Size 6 /W [1 4 2] /Index [4294967294 2 2147483647 2147483647]",
                                   Garbage(42, 5));
         },
         1},
        {"xref_stream_columns_2147483647",
         [] {
             return XrefStreamWith(
                 " /Size 6 /W [1 4 2] /Filter /FlateDecode /DecodeParms << /Predictor 12 /Columns 2147483647 "
                 ">>",
                 Deflated(Garbage(700, 6)));
         },
         1},
        {"classic_size_2147483647", [] { return ClassicWith(" /Size 2147483647"); }, 0},
        {"classic_subsection_count_2147483648",
         [] {
             return HandTable([](const PdfBuilder&) {
                 return "xref\n0 2147483648\n0000000000 65535 f\r\ntrailer\n<< /Size 5 /Root 1 0 R >>\n";
             });
         },
         1},
        {"object_stream_n_2147483647", [] { return ObjectStreamDocument(" /N 2147483647 /First 6"); }, 0},
        {"object_stream_first_2147483647", [] { return ObjectStreamDocument(" /N 1 /First 2147483647"); }, 0},
        {"object_stream_index_65535", [] { return ObjectStreamDocument(" /N 1 /First 6", 65535); }, 0},
        {"image_width_height_2147483647",
         [] {
             return ImageDocument(
                 "/Width 2147483647 /Height 2147483647 /ColorSpace /DeviceRGB /BitsPerComponent 8", "abcd");
         },
         0},
        {"image_width_4294967295",
         [] {
             return ImageDocument("/Width 4294967295 /Height 1 /ColorSpace /DeviceGray /BitsPerComponent 8",
                                  "abcd");
         },
         0},
        {"image_bits_per_component_2147483647",
         [] {
             return ImageDocument("/Width 16 /Height 16 /ColorSpace /DeviceRGB /BitsPerComponent 2147483647",
                                  "abcd");
         },
         0},
        {"image_columns_2147483647",
         [] {
             return ImageDocument(
                 "/Width 16 /Height 16 /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /FlateDecode "
                 "/DecodeParms << /Predictor 15 /Columns 2147483647 /Colors 3 >>",
                 Deflated(Garbage(3000, 7)));
         },
         0},
        // Offsets that are negative or lie outside the file; claims of 2^31 bytes in a small file.
        {"startxref_negative", [] { return ClassicWith("", "-1"); }, 0},
        {"startxref_beyond_32_bits", [] { return ClassicWith("", "4294967296"); }, 2},
        {"startxref_beyond_eof", [] { return Fixture("startxref-beyond-eof.pdf"); }, 0},
        {"prev_negative", [] { return ClassicWith(" /Prev -100"); }, 0},
        {"prev_beyond_eof", [] { return ClassicWith(" /Prev 99999999999"); }, 0},
        {"xrefstm_negative", [] { return ClassicWith(" /XRefStm -5"); }, 0},
        {"entry_offsets_outside_the_file",
         [] {
             return HandTable([](const PdfBuilder& pdf) {
                 return "xref\n0 6\n0000000000 65535 f\r\n" + Line(pdf.OffsetOf(1)) + Line(pdf.OffsetOf(2)) +
                        Line(pdf.OffsetOf(3)) + Line(4294967295u) + "-000000001 00000 n\r\n" +
                        "trailer\n<< /Size 6 /Root 1 0 R >>\n";
             });
         },
         0},
        {"object_offset_beyond_eof", [] { return Fixture("object-offset-beyond-eof.pdf"); }, 0},
        {"image_claims_2147483648_bytes",
         [] {
             return RawImageDocument(
                 " /Width 65536 /Height 32768 /ColorSpace /DeviceGray /BitsPerComponent 8 "
                 "/Filter /FlateDecode /Length 2147483648 /DL 2147483648",
                 Deflated(Garbage(1000, 8)));
         },
         0},
        {"object_stream_claims_2147483648_bytes",
         [] { return ObjectStreamDocument(" /N 2147483648 /First 2147483648 /DL 2147483648"); }, 0},
        {"xref_count_beyond_data", [] { return Fixture("xref-count-beyond-data.pdf"); }, 1},
        {"image_2_to_the_30_pixels_square", [] { return Fixture("img-huge.pdf"); }, 0},
        // References that lead through 100,000 objects.
        {"info_reference_chain_100000",
         [] { return Document(ReferenceChain(100000, "<< /Title (end) >>"), "", "", " /Info 5 0 R"); }, 1},
        {"pages_reference_chain_100000",
         [] {
             PdfBuilder pdf;
             pdf.Object(1, "<< /Type /Catalog /Pages 5 0 R >>");
             pdf.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
             pdf.Object(3, "<< /Type /Page /Parent 2 0 R /MediaBox 100004 0 R >>");
             for (const auto& [num, body] : ReferenceChain(100000, "2 0 R")) pdf.Object(num, body);
             pdf.Object(100005, "[0 0 612 792]");
             pdf.StartXref(pdf.Table(" /Size 100006 /Root 1 0 R"));
             return pdf.Bytes();
         },
         1},
        // Decoders: a table that is never cleared, and garbage behind every image filter.
        {"lzw_without_clear_codes",
         [] {
             return ImageDocument(
                 "/Width 64 /Height 64 /ColorSpace /DeviceGray /BitsPerComponent 8 /Filter /LZWDecode",
                 LzwWithoutClearCodes(40000));
         },
         0},
        // 1 GiB of zeros in 6.6 MB: the page needs 100 bytes of them, or 64 MiB and a message.
        {"flate_bomb_image_behind_png_predictor",
         [] {
             return ImageDocument("/Width 10 /Height 10 /ColorSpace /DeviceGray /BitsPerComponent 8 "
                                  "/Filter /FlateDecode /DecodeParms << /Predictor 12 /Columns 10 >>",
                                  DeflateZeros(std::uint64_t(1) << 30));
         },
         0},
        {"flate_bomb_contents",
         [] {
             const std::string data = DeflateZeros(std::uint64_t(1) << 30);
             return ContentsDocument(
                 "4 0 R", RawStream(" /Filter /FlateDecode /Length " + std::to_string(data.size()), data));
         },
         1, Run::Contents},
        // 2,000 tokens named 100,000 times: 200 million tokens from 600 kB, unless the page's
        // streams together are held to what one stream may give.
        {"contents_array_names_one_stream_100000_times",
         [] {
             const std::string data = Repeat("q Q ", 1000);
             return ContentsDocument("[" + Repeat("4 0 R ", 100000) + "]",
                                     RawStream(" /Length " + std::to_string(data.size()), data));
         },
         1, Run::Contents},
        // Thirty million one-byte rows inflated out of 150 kB, each an entry at offset 0.
        {"xref_stream_inflating_to_30_million_entries",
         [] {
             PdfBuilder pdf;
             pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
             pdf.Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
             pdf.Stream(3, " /Type /XRef /Size 30000000 /W [0 1 0] /Root 1 0 R /Filter /FlateDecode",
                        DeflateZeros(30000000));
             pdf.StartXref(pdf.OffsetOf(3));
             return pdf.Bytes();
         },
         1},
        {"garbage_dct", [] { return GarbageImage("/Filter /DCTDecode", 11); }, 0},
        {"garbage_jpx", [] { return GarbageImage("/Filter /JPXDecode", 12); }, 0},
        {"garbage_jbig2",
         [] {
             return GarbageImage("/Filter /JBIG2Decode /DecodeParms << /JBIG2Globals 6 0 R >>", 13,
                                 {{6, RawStream(" /Length 64", Garbage(64, 14))}});
         },
         0},
        {"garbage_ccitt_g4",
         [] { return GarbageImage("/Filter /CCITTFaxDecode /DecodeParms << /K -1 /Columns 32 >>", 15); }, 0},
        {"garbage_ccitt_g3",
         [] { return GarbageImage("/Filter /CCITTFaxDecode /DecodeParms << /K 0 /Columns 32 >>", 16); }, 0},
        {"garbage_flate", [] { return GarbageImage("/Filter /FlateDecode", 17); }, 0},
        {"garbage_flate_png_predictor",
         [] { return GarbageImage("/Filter /FlateDecode /DecodeParms << /Predictor 15 /Columns 32 >>", 18); },
         0},
        {"garbage_lzw", [] { return GarbageImage("/Filter /LZWDecode", 19); }, 0},
        {"garbage_ascii85", [] { return GarbageImage("/Filter /ASCII85Decode", 20); }, 0},
        {"garbage_asciihex", [] { return GarbageImage("/Filter /ASCIIHexDecode", 21); }, 0},
        {"garbage_run_length", [] { return GarbageImage("/Filter /RunLengthDecode", 22); }, 0},
        {"garbage_flate_then_dct", [] { return GarbageImage("/Filter [/FlateDecode /DCTDecode]", 23); }, 0},
        {"dct_truncated", [] { return Fixture("img-dct-truncated.pdf"); }, 0},
        // Encryption dictionaries that lack what the keys are made from.
        {"encryption_id_missing", [] { return Fixture("enc-id-missing.pdf"); }, 1},
        {"encryption_id_short", [] { return Fixture("enc-id-short.pdf"); }, 0},
        {"encryption_id_empty", [] { return Fixture("enc-id-empty.pdf"); }, 1},
        {"encryption_o_short", [] { return Fixture("enc-o-short.pdf"); }, 2},
        {"encryption_u_short", [] { return Fixture("enc-u-short.pdf"); }, 2},
        {"encryption_oe_short", [] { return Fixture("enc-oe-short.pdf"); }, 1},
        {"encryption_ue_short", [] { return Fixture("enc-ue-short.pdf"); }, 1},
        {"encryption_perms_short", [] { return Fixture("enc-perms-short.pdf"); }, 1},
        {"encryption_aes256_perms_missing", [] { return Patched("enc-aes-256.pdf", "/Perms <", "/Xerms <"); },
         1},
        {"encryption_aes256_u_missing", [] { return Patched("enc-aes-256.pdf", "/U <", "/X <"); }, 2},
        {"encryption_aes256_o_missing", [] { return Patched("enc-aes-256.pdf", "/O <", "/X <"); }, 1},
        {"encryption_aes256_id_missing", [] { return Patched("enc-aes-256.pdf", "/ID [", "/XD ["); }, 1},
        {"encryption_rc4_o_missing", [] { return Patched("enc-rc4-40.pdf", "/O <", "/X <"); }, 2},
        {"encryption_rc4_u_missing", [] { return Patched("enc-rc4-40.pdf", "/U <", "/X <"); }, 2},
    };
    return cases;
}

void PrintTo(const Hostile& c, std::ostream* os) {
    *os << c.name;
}

class HostileFile : public ::testing::TestWithParam<Hostile> {};

// Runs the file as the case says, in the standard mode or with the extra checks.
CliOutcome RunHostile(const Hostile& c, bool extraChecks) {
    const std::string mode = extraChecks ? "-extra" : "";
    ScratchFolder folder("hostile-" + c.name + mode, std::getenv("VANTREL_HOSTILE_DIR"));
    const fs::path pdf = folder.Path() / (c.name + ".pdf");
    std::ofstream(pdf, std::ios::binary) << c.make();
    fs::create_directories(folder.Path() / "images");

    std::vector<std::string> args;
    if (extraChecks) args.push_back("--extra-checks");
    if (c.run == Run::Contents) {
        args.insert(args.end(), {"--contents", "1", pdf.string()});
    } else {
        args.insert(args.end(),
                    {"--json", "--export-images", (folder.Path() / "images").string(), pdf.string()});
    }
    const CliLimits limits = DefaultCliLimits();
    CliOutcome o = RunCli(args, folder.Path(), limits);
    EXPECT_EQ(o.killedFor, "") << "stopped for using too much " << o.killedFor;
    EXPECT_EQ(o.signal, 0) << o.err.substr(0, 4000);
    EXPECT_FALSE(o.SanitizerReported()) << o.err.substr(0, 4000);
    EXPECT_LT(o.seconds, limits.seconds);
    EXPECT_LT(o.peakMegabytes, limits.megabytes);
    return o;
}

TEST_P(HostileFile, EndsInTimeWithinMemoryWithTheContractsStatus) {
    const Hostile& c = GetParam();
    const CliOutcome o = RunHostile(c, false);
    EXPECT_EQ(o.exitStatus, c.exitStatus) << o.err.substr(0, 2000);
    RecordProperty("seconds", std::to_string(o.seconds));
    RecordProperty("peak_mb", std::to_string(o.peakMegabytes));
}

TEST_P(HostileFile, WithExtraChecksEndsInTimeWithinMemoryWithMessages) {
    const Hostile& c = GetParam();
    const CliOutcome o = RunHostile(c, true);
    // The extra checks only add messages: a file that could not be opened still cannot be.
    if (c.exitStatus == 2)
        EXPECT_EQ(o.exitStatus, 2);
    else
        EXPECT_TRUE(o.exitStatus == c.exitStatus || o.exitStatus == 1) << o.exitStatus;
    if (c.run == Run::Report)
        EXPECT_GE(o.MessageCount(), 1);
    else
        EXPECT_FALSE(o.err.empty()) << "no message on standard error";
}

INSTANTIATE_TEST_SUITE_P(, HostileFile, ::testing::ValuesIn(Cases()),
                         [](const ::testing::TestParamInfo<Hostile>& p) { return p.param.name; });

// Ten object streams of 8 MiB each, from 50 kB each: the first two objects are read, the
// decoding stops at 64 MiB + 16x the file and no object past 16 MiB + 8x the file is made.
TEST(HostileObjectStreams, InflateWithinTheDocumentsBudgets) {
    PdfBuilder pdf;
    std::string refs;
    for (int i = 0; i < 10; ++i) refs += " /A" + std::to_string(i) + " " + std::to_string(100 + i) + " 0 R";
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R" + refs + " >>");
    pdf.Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    std::string rows;
    for (std::uint32_t i = 0; i < 10; ++i) {
        const std::string index = std::to_string(100 + i) + " 0 ";
        pdf.Stream(10 + i, " /Type /ObjStm /N 1 /First " + std::to_string(index.size()) + " /Filter /FlateDecode",
                   DeflateZeros(8 << 20, index));
    }
    PdfBuilder::AppendXrefRow(rows, 0, 0, 65535);
    for (std::uint32_t n = 1; n < 110; ++n) {
        if (n == 1 || n == 2 || (n >= 10 && n < 20)) PdfBuilder::AppendXrefRow(rows, 1, pdf.OffsetOf(n), 0);
        else if (n >= 100) PdfBuilder::AppendXrefRow(rows, 2, 10 + n - 100, 0);
        else PdfBuilder::AppendXrefRow(rows, 0, 0, 0);
    }
    const std::uint32_t xref = pdf.Offset();
    pdf.Stream(110, " /Type /XRef /Size 110 /W [1 4 2] /Root 1 0 R", rows);
    pdf.StartXref(xref);

    ScratchFolder folder("hostile-object-streams", std::getenv("VANTREL_HOSTILE_DIR"));
    const fs::path file = folder.Path() / "object-streams.pdf";
    std::ofstream(file, std::ios::binary) << pdf.Bytes();
    const CliLimits limits = DefaultCliLimits();
    const CliOutcome o = RunCli({"--json", file.string()}, folder.Path(), limits);
    EXPECT_EQ(o.exitStatus, 1) << o.err.substr(0, 2000);
    EXPECT_LT(o.seconds, limits.seconds);
    EXPECT_LT(o.peakMegabytes, limits.megabytes);
    EXPECT_NE(o.out.find("Object 102 0 R is not read: objects in object streams exceed"), std::string::npos);
    EXPECT_EQ(o.out.find("Object 101 0 R is not read"), std::string::npos);
    EXPECT_NE(o.out.find("Object streams gave more than"), std::string::npos);
}

}  // namespace

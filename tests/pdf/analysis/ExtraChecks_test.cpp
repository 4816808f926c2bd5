// Our own validations beyond the standard report come only with the extra checks: each file
// below shows its message with the switch and not without, and the switch takes no other
// message away.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfContents.h"
#include "pdf/analysis/pdfImage.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfRoleCodes.h"
#include "platform/ivImage2d.h"
#include "support/PdfBuilder.h"
#include "support/TestSupport.h"

namespace {

using Strings = std::vector<std::string>;

// Everything the program can ask of a file: open, analyse, the data of every stream, every
// image decoded and the contents of every page. Returns the message texts.
Strings Exercise(const std::string& bytes, bool extraChecks) {
    RecordingControl control;
    ivPdf doc(MemStream(bytes), "", &control);
    doc.SetExtraChecks(extraChecks);
    if (Failed(doc.Open())) return control.Texts();
    doc.Analyse();
    for (const auto& section : doc.Sections())
        section->ForEachEntry([&](XrefEntry* entry) {
            if (!entry->loaded || !AsStream(entry->object)) return;
            pdfDecodedStream data;
            std::vector<std::uint8_t> bytesOut;
            if (Succeeded(OpenDecodedStream(doc, entry->object, entry, data)) && data.stream)
                ivReadAll(*data.stream, bytesOut, 1 << 20);
            std::unique_ptr<ivImage2d> image;
            if (entry->role == kRoleImage) DecodeImage(doc, entry->object, image, nullptr);
        });
    for (const pdfPage* page : doc.Pages()) {
        std::shared_ptr<const pdfContentOps> ops;
        ReadPageContents(doc, page->Object(), ops);
    }
    return control.Texts();
}

// The messages that begin with `text` (parser messages carry a position after it).
long CountOf(const Strings& messages, const std::string& text) {
    return std::count_if(messages.begin(), messages.end(),
                         [&](const std::string& m) { return m.rfind(text, 0) == 0; });
}

// Whether `part` appears in `whole` in the same order, other messages in between.
bool IsSubsequence(const Strings& part, const Strings& whole) {
    auto at = whole.begin();
    for (const std::string& m : part) {
        at = std::find(at, whole.end(), m);
        if (at == whole.end()) return false;
        ++at;
    }
    return true;
}

// Catalog 1, pages 2, page 3 drawing its contents 4 and the image 5 when `image` is given.
std::string OnePage(const std::string& contents, const std::string& image = "",
                    const std::string& imageData = "", const std::string& trailer = " /Size 6 /Root 1 0 R") {
    PdfBuilder pdf;
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    pdf.Object(3,
               "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 8 8] /Contents 4 0 R"
               " /Resources << /XObject << /Im0 5 0 R >> >> >>");
    pdf.Stream(4, "", contents);
    if (!image.empty()) pdf.Stream(5, " /Type /XObject /Subtype /Image " + image, imageData);
    pdf.StartXref(pdf.Table(trailer));
    return pdf.Bytes();
}

std::string WithObject(std::uint32_t num, const std::string& body, const std::string& trailer) {
    PdfBuilder pdf;
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [] /Count 0 >>");
    pdf.Object(num, body);
    pdf.StartXref(pdf.Table(trailer));
    return pdf.Bytes();
}

std::string Patched(const std::string& fixture, const std::string& from, const std::string& to) {
    std::string bytes = ReadTestFile(fixture);
    const std::size_t at = bytes.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) bytes.replace(at, from.size(), to);
    return bytes;
}

struct ExtraCase {
    const char* message;  // the text, or its beginning
    std::function<std::string()> file;
};

const ExtraCase kCases[] = {
    // Cross-reference sections and trailers.
    {"Size 9 is larger than the highest object number + 1 (5)",
     [] { return OnePage("", "", "", " /Size 9 /Root 1 0 R"); }},
    {"XRefStm 99999 is not an offset in the file",
     [] { return OnePage("", "", "", " /Size 6 /Root 1 0 R /XRefStm 99999"); }},
    {"XREF table is not found: the offset is beyond the end of the file",
     [] { return ReadTestFile("startxref-beyond-eof.pdf"); }},
    {"W [0 0 0] is not supported", [] { return ReadTestFile("xrefstream-widths-zero.pdf"); }},
    // Objects and object streams.
    {"Object offset 99999 is beyond the end of the file",
     [] { return ReadTestFile("object-offset-beyond-eof.pdf"); }},
    {"Stream Length -5 is not valid",
     [] { return WithObject(3, "<< /Length -5 >>\nstream\nabc\nendstream", " /Size 4 /Root 1 0 R"); }},
    {"Stream Length 9999 goes beyond the end of the file",
     [] { return WithObject(3, "<< /Length 9999 >>\nstream\nabc\nendstream", " /Size 4 /Root 1 0 R"); }},
    {"N is 99, but the object stream lists only",
     [] { return Patched("objstm-good.pdf", "/N 4 /First", "/N 99/First"); }},
    {"Object 4 0 R is not listed in its object stream",
     [] { return ReadTestFile("objstm-object-missing.pdf"); }},
    {"Object 5 0 R starts beyond the end of its object stream",
     [] { return Patched("objstm-good.pdf", "/First 20", "/First 99"); }},
    {"Not a dictionary", [] { return OnePage("", "", "", " /Size 6 /Root 9 0 R"); }},  // no catalog
    // Filters.
    {"RunLengthDecode filter is not supported; the data is left as it is",
     [] {
         return WithObject(3, "<< /Length 3 /Filter /RunLengthDecode >>\nstream\nabc\nendstream",
                           " /Size 4 /Root 1 0 R");
     }},
    {"LZW data can't be decoded after 0 bytes",
     [] {
         return WithObject(3, "<< /Length 1 /Filter /LZWDecode >>\nstream\n\x80\nendstream",
                           " /Size 4 /Root 1 0 R");
     }},
    {"LZW code table is full and is not cleared",
     [] {
         const std::string data = LzwWithoutClearCodes(10);
         return WithObject(3,
                           "<< /Length " + std::to_string(data.size()) + " /Filter /LZWDecode >>\nstream\n" +
                               data + "\nendstream",
                           " /Size 4 /Root 1 0 R");
     }},
    {"CCITT data with K 0 is not decoded; the image is left white",
     [] {
         return OnePage(
             "", "/Width 8 /Height 8 /BitsPerComponent 1 /Filter /CCITTFaxDecode /DecodeParms << /K 0 >>",
             "\xFF\xFF");
     }},
    {"CCITT data is damaged: a code is found in no table",
     [] {
         return OnePage(
             "", "/Width 8 /Height 8 /BitsPerComponent 1 /Filter /CCITTFaxDecode /DecodeParms << /K -1 >>",
             std::string("\x20\x00", 2));  // horizontal mode, then no white code
     }},
    {"CCITT data uses an extension that is not decoded",
     [] {
         return OnePage(
             "", "/Width 8 /Height 8 /BitsPerComponent 1 /Filter /CCITTFaxDecode /DecodeParms << /K -1 >>",
             std::string("\x02\x00", 2));
     }},
    // Security.
    {"File ID is 4 bytes long; it is padded with zeros to 16",
     [] { return ReadTestFile("enc-id-short.pdf"); }},
    {"Number is Expected", [] { return ReadTestFile("enc-p-not-number.pdf"); }},  // before "Can't parse P"
    // Analysis.
    {"Page 5 0 R is listed more than once in the page tree",
     [] { return ReadTestFile("tree-listed-twice.pdf"); }},
    {"Action 5 0 R is its own Next", [] { return ReadTestFile("action-next-loop.pdf"); }},
    {"Form 5 0 R draws itself through its resources",
     [] { return ReadTestFile("xobject-form-draws-itself.pdf"); }},
    // Images and contents.
    {"Image BPP 32 is not valid", [] { return ReadTestFile("img-bpc-32.pdf"); }},
    {"ColorSpace is not specified",
     [] { return OnePage("", "/Width 2 /Height 2 /BitsPerComponent 16", std::string(24, 'x')); }},
    {"Inline image data is not followed by EI", [] { return OnePage("BI /W 1 /H 1 /BPC 8 /CS /G ID x"); }},
};

TEST(ExtraChecks, EachMessageComesWithTheSwitchOnly) {
    for (const ExtraCase& c : kCases) {
        const std::string bytes = c.file();
        const Strings standard = Exercise(bytes, false);
        const Strings extra = Exercise(bytes, true);
        EXPECT_EQ(CountOf(standard, c.message), 0) << c.message;
        EXPECT_GE(CountOf(extra, c.message), 1) << c.message << "\n" << ::testing::PrintToString(extra);
        // The zero widths are the exception: refused, they give no entries to read later.
        if (std::string(c.message) != "W [0 0 0] is not supported") {
            EXPECT_TRUE(IsSubsequence(standard, extra)) << c.message;
        }
    }
}

TEST(ExtraChecks, ZeroWidthsGiveEntriesAtOffsetZero) {
    RecordingControl control;
    ivPdf doc(MemStream(ReadTestFile("xrefstream-widths-zero.pdf")), "", &control);
    ASSERT_EQ(doc.Open(), kOk);
    // Size 6 rows of no bytes: each is an in-use entry at offset 0, generation 0.
    const XrefSection& section = *doc.NewestSection();
    ASSERT_EQ(section.entries.size(), 6u);
    for (std::uint32_t i = 0; i < 6; ++i) {
        EXPECT_EQ(section.entries[i]->num, i);
        EXPECT_EQ(section.entries[i]->offset, 0u);
        EXPECT_FALSE(section.entries[i]->Compressed());
    }
}

}  // namespace

// Object streams inflated ahead on a second thread: the prefetcher alone on heads it must and
// must not take, and whole documents, whose report must not depend on whether it ran.
#include "pdf/object/pdfObjStmPrefetch.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/cliRender.h"
#include "pdf/analysis/ivPdf.h"
#include "platform/ivFileStream.h"
#include "platform/ivMemStream.h"
#include "support/CliRun.h"
#include "support/PdfBuilder.h"

namespace fs = std::filesystem;

namespace {

std::string Deflate(const std::string& data) {
    uLongf size = compressBound(static_cast<uLong>(data.size()));
    std::string out(size, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
              static_cast<uLong>(data.size()), 6);
    out.resize(size);
    return out;
}

// An object stream holding `objects` (number, body), its data deflated, the dictionary's
// entries written as `entries` (with %L for the length).
std::string ObjStmBody(const std::vector<std::pair<std::uint32_t, std::string>>& objects,
                       std::string entries = "/Filter /FlateDecode /Length %L") {
    std::string header, bodies;
    for (const auto& [num, body] : objects) {
        header += std::to_string(num) + " " + std::to_string(bodies.size()) + " ";
        bodies += body + "\n";
    }
    const std::string packed = Deflate(header + bodies);
    entries.replace(entries.find("%L"), 2, std::to_string(packed.size()));
    return "<< /Type /ObjStm /N " + std::to_string(objects.size()) + " /First " + std::to_string(header.size()) +
           " " + entries + " >>\nstream\n" + packed + "\nendstream";
}

// Catalog 1, page tree 2 and pages 3 to 8, two objects in each of object streams 10 to 13,
// listed by cross-reference stream 20.
std::string ThreeStreamDocument() {
    const std::vector<std::pair<std::uint32_t, std::string>> objects = {
        {1, "<< /Type /Catalog /Pages 2 0 R >>"},
        {2, "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R 6 0 R 7 0 R 8 0 R] /Count 6 >>"},
        {3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>"},
        {4, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Annots [9 0 R] >>"},
        {5, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>"},
        {6, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>"},
        {7, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Contents 99 0 R >>"},  // missing
        {8, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>"},
    };
    PdfBuilder pdf("%PDF-1.5\n");
    // Streams 10 to 12 hold two objects each; 13 holds the last two with parameters the
    // prefetcher leaves alone.
    for (std::uint32_t s = 0; s < 3; ++s)
        pdf.Object(10 + s, ObjStmBody({objects[2 * s], objects[2 * s + 1]}));
    pdf.Object(13, ObjStmBody({objects[6], objects[7]}, "/Filter [/FlateDecode] /Length %L"));
    pdf.Object(9, "<< /Type /Annot /Subtype /Text /Rect [0 0 10 10] >>");
    const std::uint32_t at = pdf.Offset();
    std::string rows;
    auto row = [&rows](std::uint8_t type, std::uint32_t f2, std::uint16_t f3) {
        PdfBuilder::AppendXrefRow(rows, type, f2, f3);
    };
    row(0, 0, 65535);
    for (std::uint32_t n = 1; n <= 8; ++n) row(2, 10 + (n - 1) / 2, static_cast<std::uint16_t>((n - 1) % 2));
    row(1, pdf.OffsetOf(9), 0);
    for (std::uint32_t s = 10; s <= 13; ++s) row(1, pdf.OffsetOf(s), 0);
    for (std::uint32_t n = 14; n < 20; ++n) row(0, 0, 0);
    row(1, at, 0);
    pdf.Object(20, "<< /Type /XRef /Size 21 /W [1 4 2] /Root 1 0 R /Length " + std::to_string(rows.size()) +
                       " >>\nstream\n" + rows + "\nendstream");
    pdf.StartXref(at);
    return pdf.Bytes();
}

std::string Report(ivRef<ivStream> file, const std::string& name) {
    ReportData data;
    data.path = "document.pdf";
    data.doc = std::make_unique<ivPdf>(file, name, &data.control);
    data.openStatus = data.doc->Open();
    data.analyseStatus = data.doc->Analyse();
    return JsonReport(data);
}

TEST(ObjStmPrefetch, ReportIsTheSameWithAndWithoutIt) {
    ScratchFolder folder("prefetch-document");
    const fs::path path = folder.Path() / "document.pdf";
    const std::string bytes = ThreeStreamDocument();
    std::ofstream(path, std::ios::binary) << bytes;
    // Held in memory, the streams are not prefetched; read from the file by name, they are,
    // as far as the worker gets ahead of the analysis: several runs meet both cases.
    const std::string ordinary = Report(ivMemStream::Create(std::span(
                                            reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size())),
                                        "");
    EXPECT_NE(ordinary.find("\"page_count\":6"), std::string::npos) << ordinary;
    EXPECT_NE(ordinary.find("Object 99 0 R was not found"), std::string::npos) << ordinary;
    for (int run = 0; run < 10; ++run) EXPECT_EQ(Report(ivFileStream::Open(path), path.string()), ordinary);
}

TEST(ObjStmPrefetch, TakesThePlainCaseOnly) {
    ScratchFolder folder("prefetch-heads");
    PdfBuilder pdf("%PDF-1.5\n");
    const std::vector<std::pair<std::uint32_t, std::string>> one = {{1, "(one)"}};
    const std::string data = "1 0 (one)\n";
    pdf.Object(10, ObjStmBody(one));                                                     // plain
    pdf.Object(11, ObjStmBody(one, "/Filter /FlateDecode /DecodeParms << /Predictor 1 >> /Length %L"));
    pdf.Object(12, ObjStmBody(one, "/Filter /Fl /Length %L"));                           // abbreviated
    pdf.Object(13, ObjStmBody(one, "/Filter /FlateDecode /Length 99 0 R %L"));           // indirect
    pdf.Object(14, ObjStmBody(one, "/Length %L0000 /Filter /FlateDecode"));              // past the end
    pdf.Object(15, "<< /Type /ObjStm /N 1 /First 4 /Filter /FlateDecode /Length 4 >>\nstream\nabcd\nendstream");
    pdf.Object(16, ObjStmBody(one, "/Length %L /Filter /FlateDecode"));                  // plain again
    const fs::path path = folder.Path() / "heads.pdf";
    std::ofstream(path, std::ios::binary) << pdf.Bytes();

    std::vector<pdfObjStmPrefetch::Request> order;
    for (std::uint32_t n = 10; n <= 16; ++n) order.push_back({n, pdf.OffsetOf(n)});
    pdfObjStmPrefetch prefetch(path.string(), order, 1 << 20);
    prefetch.WaitForWorker();
    // Asked out of order, and once for a stream it was never given.
    auto last = prefetch.Take(16);
    ASSERT_TRUE(last);
    EXPECT_EQ(std::string(last->bytes.begin(), last->bytes.end()), data);
    EXPECT_FALSE(prefetch.Take(17));
    for (std::uint32_t n = 11; n <= 15; ++n) EXPECT_FALSE(prefetch.Take(n)) << n;
    // Taken or passed over, a stream is not given twice.
    EXPECT_FALSE(prefetch.Take(16));
    auto first = prefetch.Take(10);
    ASSERT_TRUE(first);
    EXPECT_EQ(std::string(first->bytes.begin(), first->bytes.end()), data);
    EXPECT_EQ(first->dataPos, pdf.Bytes().find("stream\n", pdf.OffsetOf(10)) + 7);
}

TEST(ObjStmPrefetch, StopsWithItsOwnerWhateverIsLeft) {
    ScratchFolder folder("prefetch-stop");
    PdfBuilder pdf("%PDF-1.5\n");
    std::vector<pdfObjStmPrefetch::Request> order;
    for (std::uint32_t n = 10; n < 200; ++n) {
        pdf.Object(n, ObjStmBody({{1, std::string(2000, 'x')}}));
        order.push_back({n, pdf.OffsetOf(n)});
    }
    const fs::path path = folder.Path() / "many.pdf";
    std::ofstream(path, std::ios::binary) << pdf.Bytes();
    // A limit of 1 KiB a stream: nothing is inflated whole, and nothing is waited for.
    pdfObjStmPrefetch small(path.string(), order, 1024);
    EXPECT_FALSE(small.Take(150));
    pdfObjStmPrefetch untouched(path.string(), order, 1 << 20);
}

}  // namespace

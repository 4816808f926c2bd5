// What the object trees and the cross-reference view show: item texts, icons and hints, the
// search filter and the context menu's trimming, on documents built here.
#include <gtest/gtest.h>

#include "pdf/analysis/ivObjectItems.h"
#include "pdf/analysis/ivObjectSave.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivXrefFilter.h"
#include "pdf/analysis/ivXrefItems.h"
#include "pdf/analysis/pdfPageTree.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivMemStream.h"
#include "support/PdfBuilder.h"
#include "support/TestSupport.h"

namespace {

using Strings = std::vector<std::string>;

// An analysed document over bytes in memory.
struct Doc {
    RecordingControl control;
    std::unique_ptr<ivPdf> doc;
    explicit Doc(const std::string& bytes) : doc(std::make_unique<ivPdf>(MemStream(bytes), "", &control)) {
        doc->Open();
        doc->Analyse();
    }
    ivPdf& operator*() { return *doc; }
    XrefEntry& Entry(std::uint32_t num, std::uint16_t gen = 0) { return *doc->LookupEntry({num, gen}); }
    const pdfObject* Object(std::uint32_t num) { return ResolveRef(*doc, {num, 0}); }
};

// Catalog 1, pages 2, page 3 with contents 4 and font 5; object 12 is referred to by 20 to 28;
// 7 holds a value of each kind.
std::string Sample() {
    PdfBuilder pdf;
    pdf.Object(1, "<< /Type /Catalog /Pages 2 0 R >>");
    pdf.Object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    pdf.Object(3,
               "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595.3 841.9] /Contents 4 0 R "
               "/Resources << /Font << /F1 5 0 R >> >> >>");
    pdf.Stream(4, "", "BT ET");
    pdf.Object(5, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /FontDescriptor 6 0 R >>");
    pdf.Object(6, "<< /Type /FontDescriptor /FontName /Helvetica >>");
    pdf.Object(7, "<< /N null /B true /I 12 /R -1.5 /S (text) /H <" + std::string(600, 'A') +
                      "> /Nm /Name /Box [0 0.5 612 792] /Five [1 2 3 4 5] /Missing 99 0 R /Chain 8 0 R /D << "
                      "/Type /XObject >> >>");
    pdf.Object(8, "9 0 R");
    pdf.Object(9, "<< /Type /Pages >>");
    pdf.Object(12, "<< /Type /Target >>");
    for (std::uint32_t n = 20; n <= 28; ++n) pdf.Object(n, "<< /Ref 12 0 R >>");
    pdf.StartXref(pdf.Table(" /Size 29 /Root 1 0 R"));
    return pdf.Bytes();
}

TEST(TreeItems, ObjectItemTextsAndIcons) {
    Doc d(Sample());
    const pdfDict* seven = AsDict(d.Object(7));
    ASSERT_TRUE(seven);
    std::vector<std::pair<std::string, int>> items;
    for (const pdfPair& p : seven->Entries()) {
        const ivItemText item = ObjectItemText(*d, KeyPrefix(p.key), p.value);
        items.emplace_back(item.text, item.icon);
    }
    const std::vector<std::pair<std::string, int>> expected = {
        {"N null", kIconOther},
        {"B true", kIconOther},
        {"I 12", kIconNumber},
        {"R -1.5", kIconNumber},
        {"S text", kIconText},
        {"H " + std::string(254, 'A'), kIconOther},  // 300 bytes, the first 127 shown
        {"Nm /Name", kIconText},
        {"Box :0,0.5,612,792", kIconArray},  // four numbers
        {"Five ", kIconArray},               // any other array: the key alone
        {"Missing [99 0 R] Unresolved", kIconOther},
        {"Chain [8 0 R] [9 0 R]  (Pages)", kIconPages},  // each link shows its reference
        {"D  (XObject)", kIconXObject},
    };
    EXPECT_EQ(items, expected);
    const ivItemText missing = ObjectItemText(*d, "", DictGet(seven, "Missing"));
    EXPECT_TRUE(missing.unresolved);
    EXPECT_TRUE(IsExpandable(DictGet(seven, "Missing")));  // still unfoldable
    EXPECT_EQ(d.control.Count("Object 99 0 R was not found"), 1);

    const ivItemText root = CatalogItemText(*d);
    EXPECT_EQ(root.text, "[1 0 R] Catalog  (Catalog)");
    EXPECT_EQ(root.icon, kIconCatalog);
    const ivItemText page = PageItemText(0, *(*d).Pages()[0]);
    EXPECT_EQ(page.text, "Page 1,  A4");
    EXPECT_EQ(page.icon, kIconPage);
    // A landscape A4 page still reads A4, with the landscape icon; a square one is upright.
    pdfPage landscape(nullptr, {}, nullptr);
    landscape.mediaBox = {0, 0, 841.9, 595.3};
    EXPECT_EQ(PageItemText(1, landscape).text, "Page 2,  A4");
    EXPECT_EQ(PageItemText(1, landscape).icon, kIconLandscapePage);
    landscape.mediaBox = {0, 0, 500, 500};
    EXPECT_EQ(PageItemText(1, landscape).icon, kIconPage);
}

TEST(TreeItems, ObjectHints) {
    Doc d(Sample());
    const pdfDict* seven = AsDict(d.Object(7));
    const XrefEntry& five = d.Entry(5);
    EXPECT_EQ(ObjectItemHint(*d, DictGet(seven, "I")), "Type:Int");
    EXPECT_EQ(ObjectItemHint(*d, DictGet(seven, "Missing")),
              "Indirect Reference 99 0 R\nUnresolved reference");
    const pdfObject* toFive = DictGet(AsDict(DictGet(d.Object(3), "Resources")), "Font");
    EXPECT_EQ(ObjectItemHint(*d, DictGet(toFive, "F1")),
              ivFormat("Indirect Reference 5 0 R\nLocation: %u (0x%Xh)\nSize: %u bytes\nType:Dictionary",
                       five.offset, five.offset, five.length));
    EXPECT_EQ(StreamDataHint(*AsStream(d.Object(4))),
              ivFormat("Stream\nStream Start: %u (0x%Xh)", AsStream(d.Object(4))->dataPos,
                       AsStream(d.Object(4))->dataPos));
}

TEST(TreeItems, EntryTextsAndHints) {
    Doc d(Sample());
    EXPECT_EQ(EntryItemText(*d, d.Entry(5)), "[5 0 R] Font Type1/Font");
    EXPECT_EQ(EntryItemText(*d, d.Entry(3)), "[3 0 R] Page Dictionary/Page");
    EXPECT_EQ(EntryItemText(*d, d.Entry(12)), "[12 0 R] /Target");
    EXPECT_EQ(EntryItemIcon(*d, d.Entry(2)), kIconPages);
    // Nine users: six are listed, then "..".
    const XrefEntry& twelve = d.Entry(12);
    EXPECT_EQ(
        EntryItemHint(*d, twelve),
        ivFormat("[12 0 R]\nLocation: %u (0x%Xh)\nSize: %u bytes\nUsed by:9 objects :20 0 R,21 0 R,22 0 R,"
                 "23 0 R,24 0 R,25 0 R..",
                 twelve.offset, twelve.offset, twelve.length));
    const XrefEntry& contents = d.Entry(4);
    EXPECT_EQ(
        EntryItemHint(*d, contents),
        ivFormat(
            "[4 0 R] Page Stream\nLocation: %u (0x%Xh)\nSize: %u bytes\nUsed by:1 object :3 0 R\nPage: 1",
            contents.offset, contents.offset, contents.length));
}

TEST(TreeItems, SectionsAndObjectStreamLocations) {
    EXPECT_EQ(SectionRevision(0, 1), 0);
    EXPECT_EQ(SectionRevision(0, 3), 3);
    EXPECT_EQ(SectionRevision(2, 3), 1);
    Doc single(Sample());
    const XrefSection& s = *(*single).Sections()[0];
    // 19 objects, and the placeholder of 99 0 R, which was looked up and not found.
    EXPECT_EQ(SectionItemText(s, 0), "XREF [20]");
    EXPECT_EQ(SectionItemText(s, 2), "XREF [20], Revison: 2");
    EXPECT_EQ(SectionItemHint(s),
              ivFormat("XREF Table\nLocation: %u (0x%Xh)Entries: 20", s.offset, s.offset));
    Doc stm(ReadTestFile("objstm-good.pdf"));
    const XrefEntry& compressed = stm.Entry(2);
    ASSERT_TRUE(compressed.Compressed());
    const std::string hint = EntryItemHint(*stm, compressed);
    const std::size_t line = hint.find('\n') + 1;
    EXPECT_EQ(hint.substr(line, hint.find('\n', line) - line),
              ivFormat("Location:1 0 R#%u", compressed.offset));
}

TEST(TreeItems, FilterTexts) {
    Doc d(Sample());
    using Mode = ivXrefFilter::Mode;
    const struct {
        const char* text;
        Mode mode;
        std::uint32_t num;
        bool anyGen;
    } cases[] = {
        {"12", Mode::Object, 12, true},      {"12 0", Mode::Object, 12, false},
        {"12 0 R", Mode::Object, 12, false}, {"[12 0 R]", Mode::Object, 12, false},
        {"to 12 0 R", Mode::To, 12, false},  {"from 12 0 R", Mode::From, 12, false},
        {"font", Mode::Text, 0, true},       {"0", Mode::Text, 0, true},            // not a positive number
        {"", Mode::None, 0, true},           {"to 77 0 R", Mode::None, 77, false},  // no such object
        {"from", Mode::None, 0, true},
    };
    for (const auto& c : cases) {
        const ivXrefFilter f = ivXrefFilter::Parse(*d, c.text);
        EXPECT_EQ(f.GetMode(), c.mode) << c.text;
        EXPECT_EQ(f.Number(), c.num) << c.text;
        EXPECT_EQ(f.AnyGeneration(), c.anyGen) << c.text;
    }
    EXPECT_EQ(ivXrefFilter::Parse(*d, "font").UpperText(), "FONT");
}

Strings MatchedIds(Doc& d, const char* text) {
    const ivXrefMatches m = FindMatches(*d, ivXrefFilter::Parse(*d, text));
    Strings ids;
    for (std::size_t s = 0; s < m.rows.size(); ++s)
        for (std::uint32_t row : m.rows[s]) {
            const XrefEntry* e = (*d).Sections()[s]->entries[row];
            ids.push_back(std::to_string(e->num));
        }
    EXPECT_EQ(ids.size(), m.count) << text;
    return ids;
}

TEST(TreeItems, FilterMatches) {
    Doc d(Sample());
    EXPECT_EQ(MatchedIds(d, "12"), Strings{"12"});
    EXPECT_EQ(MatchedIds(d, "12 1"), Strings{});
    EXPECT_EQ(MatchedIds(d, "to 12 0 R"), (Strings{"20", "21", "22", "23", "24", "25", "26", "27", "28"}));
    EXPECT_EQ(MatchedIds(d, "from 3 0 R"), (Strings{"2", "4", "5"}));  // its parent, contents and font
    // Role names and /Type names, any case: "Font", "Font Descriptor", and /Font, /FontDescriptor.
    EXPECT_EQ(MatchedIds(d, "font"), (Strings{"5", "6"}));
    EXPECT_EQ(MatchedIds(d, "TARGET"), Strings{"12"});
}

TEST(TreeItems, ContextMenuFitsTheObject) {
    Doc d(Sample());
    const pdfDict* seven = AsDict(d.Object(7));
    // A reference to a stream: save it as an object and as a stream, locate it.
    const ivObjectMenu contents = ObjectMenuFor(*d, ObjId{4, 0});
    EXPECT_TRUE(contents.saveObject && contents.saveStream && contents.locate && contents.linkToEnabled);
    EXPECT_FALSE(contents.saveImage);
    // A direct number: nothing to save, nothing to locate.
    const ivObjectMenu number = ObjectMenuFor(*d, DictGet(seven, "I"));
    EXPECT_FALSE(number.saveObject || number.saveStream || number.locate);
    // A missing object: only the reference itself.
    const ivObjectMenu missing = ObjectMenuFor(*d, DictGet(seven, "Missing"));
    EXPECT_TRUE(missing.saveObject);
    EXPECT_FALSE(missing.locate);
    EXPECT_EQ(missing.target, DictGet(seven, "Missing"));
    // An object nothing refers to: LinkTo is offered but not enabled.
    const ivObjectMenu unused = ObjectMenuFor(*d, d.Object(7));
    EXPECT_TRUE(unused.locate);
    EXPECT_FALSE(unused.linkToEnabled || unused.saveObject);
}

TEST(TreeItems, EntryBytesAsStored) {
    const std::string bytes = Sample();
    Doc d(bytes);
    const XrefEntry& five = d.Entry(5);
    auto out = ivMemStream::Create();
    ASSERT_EQ(CopyEntryBytes(*d, five, *out), kOk);
    EXPECT_EQ(std::string(out->Data().begin(), out->Data().end()), bytes.substr(five.offset, five.length));
    auto data = ivMemStream::Create();
    EXPECT_EQ(CopyDecodedStream(*d, d.Object(4), *data), kOk);
    EXPECT_EQ(std::string(data->Data().begin(), data->Data().end()), "BT ET");
    // An object kept in an object stream: its piece of the decoded data.
    Doc stm(ReadTestFile("objstm-good.pdf"));
    auto piece = ivMemStream::Create();
    ASSERT_EQ(CopyEntryBytes(*stm, stm.Entry(5), *piece), kOk);
    EXPECT_EQ(std::string(piece->Data().begin(), piece->Data().end()).substr(0, 2), "42");
}

}  // namespace

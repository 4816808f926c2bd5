#include "pdf/analysis/pdfDocInfo.h"

#include <gtest/gtest.h>

#include <array>

#include "pdf/analysis/ivPdf.h"
#include "pdf/object/OpenedFixture.h"

namespace {

// Title, Author, Subject, Keywords, Creator, Producer.
using Fields = std::array<std::optional<std::string>, 6>;

Fields FieldsOf(const pdfDocInfo& i) {
    return {i.title, i.author, i.subject, i.keywords, i.creator, i.producer};
}

const std::optional<std::string> kNone;

// Each row opens and analyses its file and reads its Info dictionary, which adds no message.
// Texts are UTF-8; where a comment says nothing else, `qpdf --json` (version 1 for strings it
// calls binary) shows the same text for the file.
TEST(DocInfo, ReadsTheNewestTrailersInfo) {
    const struct {
        const char* file;
        std::optional<Fields> fields;  // nothing: no Info dictionary
    } cases[] = {
        {"classic-good.pdf", Fields{kNone, kNone, kNone, kNone, kNone, "Vantrel test fixtures"}},
        // The update's Info replaces the one of qpdf's section.
        {"qpdf-incremental.pdf", Fields{"Updated", kNone, kNone, kNone, kNone, "Vantrel test fixtures"}},
        {"incremental-update.pdf", std::nullopt},
        // qpdf keeps the line end of "Two<LF>lines" as LF; the lexer stores it as CR.
        {"info-literal.pdf", Fields{"Plain title", "Escapes: (paren) back\\slash tab\tend", "Two\rlines",
                                    "octal AB and \n escaped", "Line continued", ""}},
        // \b, \f, the octal \18 (1 x 8 + 8) and \0 give bytes that PDFDocEncoding leaves
        // undefined: each keeps its own code point.
        {"info-control-escapes.pdf", Fields{std::string("a\bb\fc\x10"
                                                        "d\0e",
                                                        9),
                                            kNone, kNone, kNone, kNone, kNone}},
        {"info-hex.pdf", Fields{"Hello, world", "Jos\u00E9", "\u2022\uFB01\u20AC", "", kNone, kNone}},
        // Keywords and Creator hold a surrogate without its partner: qpdf drops the first and
        // turns the second into U+0200. Producer is little-endian after FF FE.
        {"info-utf16.pdf", Fields{"H\u00E9llo", "Anne", "Smile:\U0001F600", "\uFFFDA", "\uFFFDA", "LE"}},
        // Creator: 0x01, 0x7F, 0x9F and 0xAD are undefined and keep their own code points (as
        // qpdf gives U+0001).
        {"info-pdfdoc.pdf",
         Fields{"\u02D8\u02C7\u02C6\u02D9\u02DD\u02DB\u02DA\u02DC",
                "\u2022\u2020\u2021\u2026\u2014\u2013\u0192\u2044\u2039\u203A\u2212\u2030\u201E\u201C\u201D"
                "\u2018",
                "\u2019\u201A\u2122\uFB01\uFB02\u0141\u0152\u0160\u0178\u017D\u0131\u0142\u0153\u0161\u017E",
                "\u20AC\u00A1\u00AC\u00AE\u00E9\u00FF", "\u0001\u007F\u009F\u00AD", "Caf\u00E9 cr\u00E8me"}},
        {"info-direct.pdf", Fields{"Direct", kNone, kNone, kNone, kNone, "In the trailer"}},
        {"info-missing-object.pdf", std::nullopt},
        {"info-not-dictionary.pdf", std::nullopt},
        // An Info dictionary without entries is still one.
        {"info-empty.pdf", Fields{kNone, kNone, kNone, kNone, kNone, kNone}},
        // The last Title wins (as in qpdf); Author 12 cannot be shown and keeps "Kept" (qpdf: 12).
        {"info-duplicate-keys.pdf", Fields{"Second", "Kept", kNone, kNone, kNone, kNone}},
        // Title 12, Keywords an array and Creator a missing object give nothing; Author is a
        // reference to a string, Subject a name; "title" and the string key (Producer) are
        // not the entries shown.
        {"info-value-types.pdf", Fields{kNone, "Indirect author", "Named", kNone, kNone, kNone}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        ASSERT_EQ(f.Doc().Analyse(), kOk) << c.file;
        f.TakeMessages();
        const std::optional<pdfDocInfo> info = ReadDocInfo(f.Doc());
        EXPECT_EQ(info ? std::optional(FieldsOf(*info)) : std::nullopt, c.fields) << c.file;
        // Only a trailer Info naming a missing object is news after the analysis.
        std::vector<std::string> expected;
        if (std::string(c.file) == "info-missing-object.pdf")
            expected = {"Reading Object 6 0 R > Object 6 0 R was not found"};
        EXPECT_EQ(f.TakeMessages(), expected) << c.file;
    }
}

// Records no lexer makes, and the boundaries of the UTF-16 reading.
TEST(DocInfo, TextOfSingleValues) {
    RecordingControl control;
    ivPdf doc(MemStream(""), "memory", &control);
    ivArena& arena = doc.Arena();
    auto unicode = [&](std::u16string units) { return NewUnicode(arena, units); };
    auto bytes = [&](pdfTag tag, std::string b) { return NewBytes(arena, tag, b); };
    const struct {
        const pdfObject* value;
        std::optional<std::string> text;
    } cases[] = {
        {unicode(u"\xD83D"), "\uFFFD"},                        // a high surrogate ends the text
        {unicode(u"\xD83D\xD83D\xDE00"), "\uFFFD\U0001F600"},  // a second high one starts the pair
        {unicode(u"\xDE00\xD83D"), "\uFFFD\uFFFD"},            // a pair in the wrong order
        {unicode(u"\x0041\xFEFF"), "A\uFEFF"},                 // a mark inside the text is a character
        // Too short for the lexer to make a UNICODE String: the mark is read as PDFDocEncoding.
        {bytes(kTagString, "\xFE\xFF"), "\u00FE\u00FF"},
        {bytes(kTagString, std::string("a\0b", 3)), std::string("a\0b", 3)},  // no byte is lost
        {bytes(kTagName, "\xA0"), "\u20AC"},
        {NewInt(arena, 7), std::nullopt},
        {nullptr, std::nullopt},
        // A reference to an object no section holds, looked up without a message.
        {NewRef(arena, 4, 0), std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TextStringToUtf8(doc, c.value), c.text) << (c.text ? *c.text : "none");
    EXPECT_TRUE(control.Paths().empty());
}

}  // namespace

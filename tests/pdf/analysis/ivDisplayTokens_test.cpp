// The object viewer's tokens, lines, marks and help, on values parsed here and a small
// description file written for the test.
#include "pdf/analysis/ivDisplayTokens.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/ivPdfInfo.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectParser.h"
#include "pdf/object/pdfParser.h"
#include "pdf/object/pdfRoleCodes.h"
#include "support/TestSupport.h"

namespace {

using Strings = std::vector<std::string>;

// Parses `text` into records of `doc`; content mode for content streams.
std::vector<pdfObject*> Parse(pdfDocument& doc, const std::string& text, bool content) {
    pdfParser source(&doc, MemStream(text), 0);
    ObjList list;
    ParseObjects(doc, source, list, content ? kParseContent : 0);
    return list.items;
}

Strings Lines(const ivViewText& v) {
    Strings out;
    for (std::size_t i = 0; i < v.lines.size(); ++i) out.push_back(v.LineText(i));
    return out;
}

std::size_t TokenIndex(const ivViewText& v, const std::string& text, int occurrence = 0) {
    for (std::size_t i = 0; i < v.tokens.size(); ++i)
        if (DisplayTokenText(v.tokens[i]) == text && occurrence-- == 0) return i;
    ADD_FAILURE() << text << " not shown";
    return v.tokens.size();
}

class Help : public ::testing::Test {
protected:
    void SetUp() override {
        m_file =
            std::filesystem::temp_directory_path() / ("vantrel-help-" + std::to_string(::getpid()) + ".xml");
        std::ofstream(m_file) << R"(<?xml version="1.0"?>
<pdf>
  <operators>
    <category name="Special Graphics State">
      <i id="cm" args="matrix" help="Concatenates a matrix.\nTo the CTM."/>
      <i id="q" help="Saves the state."/>
    </category>
    <i id="TJ" help="Shows text."/>
  </operators>
  <catalog>
    <category name="Catalog">
      <i id="ViewerPreferences" help="How to show the document."/>
      <i id="Names" help="The name trees."/>
    </category>
    <i id="ViewerPreferences.HideToolbar" help="Hides the tool bars."/>
    <i id="ViewerPreferences.Direction" help="Reading order.">
      <enum id="R2L" help="Right to left."/>
    </i>
  </catalog>
  <page>
    <i id="Resources" help="The page's resources."/>
    <i id="Rotate" help="Quarter turns."><enum id="90" help="A quarter turn."/></i>
  </page>
  <resources><i id="Font" help="Fonts by name."/></resources>
  <font><i id="Flags" help="Font flags."><bit id="1" help="Fixed pitch."/><bit id="3" help="Symbolic."/></i></font>
</pdf>
)";
        m_info = std::make_unique<ivPdfInfo>(m_file);
        ASSERT_TRUE(m_info->Loaded());
    }
    void TearDown() override { std::filesystem::remove(m_file); }

    std::filesystem::path m_file;
    std::unique_ptr<ivPdfInfo> m_info;
    RecordingControl m_control;
    std::unique_ptr<pdfDocument> m_doc = DocFromBytes("", &m_control);
};

TEST_F(Help, ObjectLinesAndStrings) {
    const auto items =
        Parse(*m_doc, "<< /Type /Catalog /Kids [1 0 R (a)b) (ab)] /Sub << /N 5 >> /S (a\\)b) >>", false);
    ASSERT_EQ(items.size(), 1u);
    const ivViewText v = ObjectViewText(items[0]);
    // "(a)b)" is the string "(a)" and the keyword "b)": the first parenthesis ends a string.
    EXPECT_EQ(Lines(v), (Strings{"<<", "  /Type /Catalog", "  /Kids [ 1 0 R (a) b) (ab) ]", "  /Sub <<",
                                 "    /N 5", "  >>", "  /S (a/051b)", ">>"}));
    const std::size_t type = TokenIndex(v, "/Type");
    EXPECT_TRUE(v.tokens[type].isKey);
    EXPECT_EQ(v.tokens[type].marks, kMarkOperator);
    EXPECT_EQ(v.tokens[type + 1].marks, kMarkOperand);
    EXPECT_EQ(v.tokens[0].marks, kMarkOutsideDict);
}

TEST_F(Help, ContentMarksAndBalance) {
    ivViewText v = ContentViewText(Parse(*m_doc, "q BT /F1 12 Tf ET q Q", true));
    EXPECT_EQ(Lines(v), (Strings{"q", "BT", "/F1 12 Tf", "ET", "q", "Q", ""}));
    EXPECT_EQ(v.status, "Push/Pop context are not match");
    EXPECT_EQ(v.tokens[TokenIndex(v, "q")].marks, kMarkOperator | kMarkPush);
    EXPECT_EQ(v.tokens[TokenIndex(v, "/F1")].marks, kMarkOperand | kMarkInText);
    EXPECT_EQ(v.tokens[TokenIndex(v, "ET")].marks, kMarkOperator | kMarkInText);
    EXPECT_EQ(v.tokens[TokenIndex(v, "Q")].marks, kMarkOperator | kMarkPop);
    EXPECT_EQ(ContentViewText(Parse(*m_doc, "q Q", true)).status, "");
}

// Array and dictionary operands show their items on the operation's line, and every item
// explains the operator.
TEST_F(Help, ContentOperandsWithItems) {
    const ivViewText v = ContentViewText(Parse(*m_doc, "[(a) -20 (b)] TJ /P << /MCID 3 >> BDC", true));
    EXPECT_EQ(Lines(v), (Strings{"[ (a) -20 (b) ] TJ", "/P << /MCID 3 >> BDC", ""}));
    EXPECT_EQ(v.tokens[TokenIndex(v, "(b)")].marks, kMarkOperand);
    EXPECT_EQ(v.tokens[TokenIndex(v, "/MCID")].marks, kMarkOperand);
    EXPECT_FALSE(v.tokens[TokenIndex(v, "/MCID")].isKey);
    EXPECT_EQ(TokenHelp(*m_info, v, TokenIndex(v, "(b)"), kRolePage), "TJ\nShows text.");
}

// A long array is laid out over several lines of at most 64 items.
TEST_F(Help, LongArraysWrap) {
    std::string text = "<< /W [";
    for (int i = 0; i < 130; ++i) text += " " + std::to_string(i);
    const ivViewText v = ObjectViewText(Parse(*m_doc, text + " ] >>", false).front());
    const Strings lines = Lines(v);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[1].substr(0, 10), "  /W [ 0 1");
    EXPECT_EQ(lines[2].substr(0, 9), "    64 65");
    EXPECT_EQ(lines[3], "    128 129 ]");
}

TEST_F(Help, OperatorsAndMatrices) {
    const ivViewText v = ContentViewText(Parse(*m_doc, "0 1 -1 0 10 20 cm 2 0 0 3 0 0 cm 1 2 cm", true));
    const std::string rotation = TokenHelp(*m_info, v, TokenIndex(v, "cm"), kRolePage);
    EXPECT_EQ(rotation,
              "cm\nConcatenates a matrix.\nTo the CTM.\n===========================\nScaling X: 1,  Y:1\n"
              "Rotation: 90\xC2\xB0\nTranslation X: 10,  Y:20\n---Special Graphics State");
    // An operand explains its operator.
    EXPECT_EQ(TokenHelp(*m_info, v, TokenIndex(v, "-1"), kRolePage), rotation);
    EXPECT_NE(TokenHelp(*m_info, v, TokenIndex(v, "cm", 1), kRolePage)
                  .find("Scaling X: 2,  Y:3\nRotation: 0\xC2\xB0"),
              std::string::npos);
    // Two operands: no decomposition.
    EXPECT_EQ(TokenHelp(*m_info, v, TokenIndex(v, "cm", 2), kRolePage).find("Scaling"), std::string::npos);
}

TEST_F(Help, KeysNestedKeysEnumsAndBits) {
    const auto catalog =
        Parse(*m_doc, "<< /ViewerPreferences << /HideToolbar true /Direction /R2L >> >>", false);
    const ivViewText c = ObjectViewText(catalog[0]);
    EXPECT_EQ(TokenHelp(*m_info, c, TokenIndex(c, "/ViewerPreferences"), kRoleCatalog),
              "ViewerPreferences\nHow to show the document.\n---Catalog");
    EXPECT_EQ(TokenHelp(*m_info, c, TokenIndex(c, "/HideToolbar"), kRoleCatalog),
              "HideToolbar\nHides the tool bars.");
    EXPECT_EQ(TokenHelp(*m_info, c, TokenIndex(c, "/R2L"), kRoleCatalog),
              "Direction\nReading order.\nRight to left.");

    // A page's resources are looked up in the resources' section.
    const auto page = Parse(*m_doc, "<< /Rotate 90 /Resources << /Font << /F1 5 0 R >> >> >>", false);
    const ivViewText p = ObjectViewText(page[0]);
    EXPECT_EQ(TokenHelp(*m_info, p, TokenIndex(p, "90"), kRolePage),
              "Rotate\nQuarter turns.\nA quarter turn.");
    EXPECT_EQ(TokenHelp(*m_info, p, TokenIndex(p, "/Font"), kRolePage), "Font\nFonts by name.");
    EXPECT_EQ(TokenHelp(*m_info, p, TokenIndex(p, "/F1"), kRolePage), "");  // Font.F1 is nothing known

    const auto font = Parse(*m_doc, "<< /Flags 5 >>", false);
    const ivViewText f = ObjectViewText(font[0]);
    EXPECT_EQ(TokenHelp(*m_info, f, TokenIndex(f, "5"), kRoleFont),
              "Flags\nFont flags.\nFixed pitch.\nSymbolic.");
}

TEST(DisplayTokens, AnnotationRolesFollowTheirSubtype) {
    RecordingControl control;
    auto doc = DocFromBytes("", &control);
    const auto link = Parse(*doc, "<< /Subtype /Link >>", false);
    const auto other = Parse(*doc, "<< /Subtype /Square >>", false);
    EXPECT_EQ(HelpRoleOf(link[0], kRoleAnnotation), kRoleLinkAnnotation);
    EXPECT_EQ(HelpRoleOf(other[0], kRoleAnnotation), kRoleAnnotation);
    EXPECT_EQ(HelpRoleOf(link[0], kRoleFont), kRoleFont);
}

TEST(DisplayTokens, ObjectStreamListing) {
    RecordingControl control;
    ivPdf doc(MemStream(ReadTestFile("objstm-good.pdf")), "", &control);
    doc.Open();
    doc.Analyse();
    const pdfStream* stream = AsStream(ResolveRef(doc, {1, 0}));
    ASSERT_TRUE(stream && stream->objStmIndex);
    const ivViewText v = ObjectStreamViewText(doc, *stream);
    const Strings lines = Lines(v);
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], "#0 [2 0 obj]");
    EXPECT_EQ(lines[1], "<<");
    const XrefEntry* two = doc.LookupEntry({2, 0});
    EXPECT_NE(std::find(lines.begin(), lines.end(), std::to_string(two->length) + " bytes"), lines.end());
}

}  // namespace

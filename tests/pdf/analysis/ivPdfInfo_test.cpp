#include "pdf/analysis/ivPdfInfo.h"

#include <gtest/gtest.h>

#include <cstring>

#include "pdf/analysis/pdfRoles.h"
#include "pdf/object/pdfRoleCodes.h"

namespace {

const std::filesystem::path kFile = std::filesystem::path(VANTREL_RESOURCES) / "pdfinfo.xml";

// The content operators of the PDF reference's operator summary.
const char* const kOperators[] = {
    "b", "B", "b*", "B*", "BDC", "BI", "BMC", "BT", "BX", "c", "cm", "CS", "cs", "d", "d0", "d1", "Do",
    "DP", "EI", "EMC", "ET", "EX", "f", "F", "f*", "G", "g", "gs", "h", "i", "ID", "j", "J", "K", "k", "l",
    "m", "M", "MP", "n", "q", "Q", "re", "RG", "rg", "ri", "s", "S", "SC", "sc", "SCN", "scn", "sh", "T*",
    "Tc", "Td", "TD", "Tf", "Tj", "TJ", "TL", "Tm", "Tr", "Ts", "Tw", "Tz", "v", "w", "W", "W*", "y", "'",
    "\""};

TEST(PdfInfo, EveryRoleSectionAndOperatorHasHelp) {
    ivPdfInfo info(kFile);
    ASSERT_TRUE(info.Loaded());
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_file(kFile.c_str()));
    for (const pdfRoleInfo& row : RoleTable()) {
        if (!row.section) continue;
        pugi::xml_node section = doc.child("pdf").child(row.section);
        ASSERT_TRUE(section) << row.section;
        EXPECT_TRUE(section.find_node([](pugi::xml_node n) { return std::strcmp(n.name(), "i") == 0; }))
            << row.section << " has no key";
    }
    static_assert(std::size(kOperators) == 73);
    for (const char* op : kOperators) {
        pugi::xml_node item = info.Find(kRolePageStream, op);
        ASSERT_TRUE(item) << op;
        EXPECT_GT(std::strlen(item.attribute("help").value()), 10u) << op;
        EXPECT_STREQ(item.parent().name(), "category") << op;
    }
    EXPECT_STREQ(info.Find(kRolePageStream, "cm").attribute("args").value(), "matrix");
    EXPECT_STREQ(info.Find(kRolePageStream, "Tm").attribute("args").value(), "matrix");
}

TEST(PdfInfo, LookupFallsBackToTheParentSection) {
    ivPdfInfo info(kFile);
    // A Link annotation's own keys, then the keys every annotation has.
    EXPECT_TRUE(info.Find(kRoleLinkAnnotation, "Dest"));
    EXPECT_TRUE(info.Find(kRoleLinkAnnotation, "Rect"));
    EXPECT_FALSE(info.Find(kRoleLinkAnnotation, "NoSuchKey"));
    EXPECT_TRUE(info.Find(kRoleFontDescriptor, "Flags").child("bit"));
    EXPECT_FALSE(info.Find(kRoleCmykColourSpace, "Type"));  // a role without a section
}

TEST(PdfInfo, AKeyInsideADictionaryValueIsFoundAsOuterDotInner) {
    ivPdfInfo info(kFile);
    pugi::xml_node hide = info.Find(kRoleCatalog, "ViewerPreferences.HideToolbar");
    ASSERT_TRUE(hide);
    EXPECT_GT(std::strlen(hide.attribute("help").value()), 10u);
    pugi::xml_node duplex = info.Find(kRoleCatalog, "ViewerPreferences.Duplex");
    EXPECT_TRUE(duplex.find_child_by_attribute("enum", "id", "Simplex"));
    // A Widget's MK keys stand with those of every annotation.
    EXPECT_TRUE(info.Find(kRoleWidgetAnnotation, "MK.TP").child("enum"));
}

TEST(PdfInfo, AMissingFileGivesNoHelp) {
    ivPdfInfo info("/nonexistent/pdfinfo.xml");
    EXPECT_FALSE(info.Loaded());
    EXPECT_FALSE(info.Find(kRoleCatalog, "Pages"));
}

}  // namespace

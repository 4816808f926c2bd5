#include "pdf/analysis/ivSessionTexts.h"

#include <gtest/gtest.h>

#include "pdf/analysis/ivPdf.h"

namespace {

TEST(SessionTexts, TitleStatusAndPrompts) {
    EXPECT_EQ(WindowTitle("/home/me/docs/file.pdf"), "file.pdf - Vantrel 1.2");
    EXPECT_EQ(WindowTitle("C:\\docs\\report.pdf"), "report.pdf - Vantrel 1.2");
    EXPECT_EQ(PageCountText(0), "0 Pages");
    EXPECT_EQ(PageCountText(1), "1 Page");
    EXPECT_EQ(PageCountText(12), "12 Pages");
    EXPECT_EQ(FileSizeText(1310720), "File Size: 1.25 MB (1,310,720 bytes)");
    EXPECT_EQ(
        MissingFileText("/x/a.pdf", false),
        "Sorry, we couldn't find your file. Is it possible it was moved, renamed or deleted?\n(/x/a.pdf)");
    EXPECT_EQ(
        MissingFileText("/x/a.pdf", true),
        "Sorry, we couldn't find your file. Is it possible it was moved, renamed or deleted?\n(/x/a.pdf)"
        "\nDo you want delete file from the list?");
    EXPECT_EQ(PasswordPromptText("secret.pdf"),
              "'secret.pdf' is protected. Please enter a Document Open Password.");
    EXPECT_EQ(PasswordPromptText(std::string(300, 'n')).size(), 260u);  // cut as every formatted text
}

// The status bar's first field and the properties page: the release by the minor number alone.
TEST(SessionTexts, VersionTexts) {
    const struct {
        std::uint16_t major, minor;
        const char* text;
    } cases[] = {
        {1, 0, "1.0 (Unknown Acrobat)"},   {1, 1, "1.1 (Unknown Acrobat)"}, {1, 3, "1.3 (Acrobat 4.0)"},
        {1, 7, "1.7 (Acrobat 8.0)"},       {1, 8, "1.8 (Acrobat X)"},       {1, 9, "1.9 (Acrobat X)"},
        {2, 0, "2.0 (Unknown Acrobat)"},  // the major number is not consulted
        {1, 65535, "1.65535 (Acrobat X)"},
    };
    for (const auto& c : cases) EXPECT_EQ(VersionText(c.major, c.minor), c.text) << c.text;
}

}  // namespace

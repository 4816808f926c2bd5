#include "pdf/analysis/pdfLinearization.h"

#include <gtest/gtest.h>

#include "pdf/object/OpenedFixture.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

using Strings = std::vector<std::string>;

constexpr std::uint8_t kNoRole = 0, kPage = 6, kParameters = 51, kHints = 52;

struct RoleOf {
    std::uint32_t num = 0;  // 0: not checked
    std::uint8_t role = 0;
};

std::string In(int num, const std::string& text) {
    return "Analize linearization parameter dictionary " + std::to_string(num) + " 0 R > " + text;
}

// Each row opens and analyses its file, then compares what the analysis reported (the check
// runs last) and the roles of the parameter dictionary and of the object H points at. Unless
// a row says otherwise the dictionary is 9 0 and H names the stream 5 0.
TEST(Linearization, ChecksTheParameterDictionary) {
    const struct {
        const char* file;
        Strings messages;
        RoleOf hints = {5, kHints};
        RoleOf parameters = {9, kParameters};
        bool linearized = true;
    } cases[] = {
        {"lin-good.pdf", {}},
        {"qpdf-linearized.pdf", {}, {5, kHints}, {3, kParameters}},
        {"qpdf-linearized-pages.pdf", {}, {10, kHints}, {8, kParameters}},
        // The same file with L one more than its length.
        {"qpdf-linearized-pages-length-off.pdf",
         {In(8, "L - does not match file length")},
         {10, kHints},
         {8, kParameters}},
        // One section: its wrong L, H, O and N are never looked at.
        {"lin-single-section.pdf", {}, {}, {9, kNoRole}, false},
        // Two sections, but the newest one's first object is the catalog.
        {"incremental-update.pdf", {}, {}, {1, 29}, false},
        {"lin-version-not-number.pdf", {}, {5, kNoRole}, {9, kNoRole}, false},
        {"lin-o-second-page.pdf",
         {In(9, "O - refers to 1 page. (Not an error, usually it should be first page's page object)")}},
        {"lin-o-not-page.pdf", {In(9, "O - is not the page object")}},
        {"lin-first-page-compressed.pdf", {In(9, "First page can't be inside of stream object")}},
        // Both the missing length and the mismatch it causes.
        {"lin-l-missing.pdf",
         {In(9, "L - required parameter is not found"), In(9, "L - does not match file length")}},
        {"lin-l-not-number.pdf", {In(9, "Number is Expected"), In(9, "L - does not match file length")}},
        {"lin-n-missing.pdf",
         {In(9, "N - required parameter is not found"), In(9, "N - does not match number of pages")}},
        {"lin-h-missing.pdf", {In(9, "H - required parameter is not found")}, {5, kNoRole}},
        {"lin-h-number.pdf", {In(9, "H - must be an array")}, {5, kNoRole}},
        {"lin-h-one-number.pdf", {In(9, "H - must be an array of two or four integers")}, {5, kNoRole}},
        // H names the offset of the first-page cross-reference table.
        {"lin-hint-stream-missing.pdf", {In(9, "Hint Stream is not found")}, {5, kNoRole}},
        // H names the first page's offset: the page keeps its role.
        {"lin-hint-stream-is-page.pdf", {In(9, "3 0 R Used as something else already")}, {3, kPage}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        ASSERT_EQ(f.OpenStatus(), kOk) << c.file;
        EXPECT_TRUE(f.TakeMessages().empty()) << c.file;
        ASSERT_EQ(f.Doc().Analyse(), kOk) << c.file;
        EXPECT_EQ(f.TakeMessages(), c.messages) << c.file;
        EXPECT_EQ(FindEntry(f.Doc(), {c.parameters.num, 0})->role, c.parameters.role) << c.file;
        if (c.hints.num) {
            EXPECT_EQ(FindEntry(f.Doc(), {c.hints.num, 0})->role, c.hints.role) << c.file;
        }
        // A second run finds the roles in place and says again what it said.
        EXPECT_EQ(CheckLinearization(f.Doc()), c.linearized ? kOk : kRemark) << c.file;
        EXPECT_EQ(f.TakeMessages(), c.messages) << c.file;
    }
}

}  // namespace

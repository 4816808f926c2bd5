#include "pdf/analysis/pdfObjectAnalysis.h"

#include <gtest/gtest.h>

#include "pdf/analysis/pdfRoleRegistry.h"
#include "pdf/object/OpenedFixture.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

std::vector<std::string> Ids(std::span<XrefEntry* const> entries) {
    std::vector<std::string> out;
    for (const XrefEntry* e : entries) out.push_back(std::to_string(e->num));
    return out;
}

TEST(ObjectAnalysis, RolesOfFontsStructureAndSignatures) {
    OpenedFixture f("role-fonts.pdf");
    f.Doc().Analyse();
    const struct {
        std::uint32_t num;
        int role;
    } cases[] = {
        {1, 29},  {2, 45},  {3, 6},   // catalog, page tree, page
        {4, 4},   {5, 20},  {6, 3},   // font, its Widths array, its descriptor
        {7, 2},   {8, 19},            // font file, ToUnicode
        {9, 4},   {10, 0},  {11, 0},  // Type 3 font: a direct CharProcs dictionary is not walked
        {12, 4},  {13, 23}, {14, 22}, {20, 43}, {21, 44}, {22, 0},  // only the root's K gets role 44
        {23, 46}, {24, 0},
    };
    for (const auto& c : cases) EXPECT_EQ(FindEntry(f.Doc(), {c.num, 0})->role, c.role) << c.num;
    EXPECT_EQ(f.TakeMessages(), std::vector<std::string>{"Analize 24 0 R > Type must be a name"});
}

TEST(ObjectAnalysis, ReferrersAreRecordedOncePerReferringObject) {
    OpenedFixture f("tree-listed-twice.pdf");
    f.Doc().Analyse();
    ivPdf& d = f.Doc();
    EXPECT_EQ(Ids(d.Referrers(FindEntry(d, {2, 0}))), (std::vector<std::string>{"1", "3", "4"}));
    EXPECT_EQ(Ids(d.Referrers(FindEntry(d, {5, 0}))), std::vector<std::string>{"4"});  // listed twice in 4
    EXPECT_TRUE(d.Referrers(FindEntry(d, {1, 0})).empty());
}

TEST(RoleRegistry, SetRoleKeepsTheFirstUse) {
    OpenedFixture f("classic-good.pdf");
    ivPdf& d = f.Doc();
    XrefEntry* e = FindEntry(d, {5, 0});
    EXPECT_EQ(SetRole(d, nullptr, e, 4), kOk);
    EXPECT_EQ(SetRole(d, nullptr, e, 4), kRemark);  // same role: callers skip the object
    EXPECT_EQ(SetRole(d, nullptr, e, 11), kFail);
    EXPECT_EQ(e->role, 4);
    EXPECT_EQ(SetRole(d, NewDict(d.Arena(), {}), nullptr, 4), kInvalidArg);  // a direct value has no entry
    EXPECT_EQ(f.TakeMessages(), std::vector<std::string>{"5 0 R Used as something else already"});
}

TEST(RoleRegistry, MarkRoleFlags) {
    OpenedFixture f("role-fonts.pdf");
    ivPdf& d = f.Doc();
    f.TakeMessages();
    ivArena& a = d.Arena();
    pdfObject* ref5 = NewRef(a, 5, 0);    // an indirect array
    pdfObject* ref13 = NewRef(a, 13, 0);  // an indirect dictionary
    EXPECT_EQ(MarkRole(d, nullptr, 1, 0), kFail);
    EXPECT_EQ(MarkRole(d, ref5, 20, 0), kFail);              // arrays not allowed
    EXPECT_EQ(MarkRole(d, ref13, 23, 0), kFail);             // dictionaries not allowed
    EXPECT_EQ(MarkRole(d, NewInt(a, 1), 20, 0), kNotFound);  // a direct value needs an entry
    EXPECT_EQ(MarkRole(d, ref5, 20, kMarkArrayItself), kOk);
    EXPECT_EQ(FindEntry(d, {5, 0})->role, 20);
    EXPECT_EQ(MarkRole(d, ref13, 23, kMarkIndirectDict), kOk);
    EXPECT_EQ(FindEntry(d, {13, 0})->role, 23);
    EXPECT_EQ(f.TakeMessages(), (std::vector<std::string>{"NULL Object passed", "Array is not allowed",
                                                          "Dictionary is not allowed"}));
}

}  // namespace

#include "pdf/object/pdfObjectAccess.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "OpenedFixture.h"
#include "pdf/decode/pdfFilterChain.h"
#include "pdf/object/pdfObjectText.h"

namespace {

using Strings = std::vector<std::string>;

std::string Show(const pdfObject* o) {
    return o ? ObjectText(o) : "(no record)";
}

// "Reading Object N G R > Accessing Object N G R > ", the scopes of a first access by reference.
std::string Access(int num, int gen) {
    std::string id = std::to_string(num) + " " + std::to_string(gen) + " R";
    return "Reading Object " + id + " > Accessing Object " + id + " > ";
}

TEST(ObjectAccess, MissingObjectIsReportedOnce) {
    OpenedFixture f("classic-good.pdf");
    EXPECT_EQ(ResolveRef(f.Doc(), {99, 0}), nullptr);
    EXPECT_EQ(ResolveRef(f.Doc(), {99, 0}), nullptr);
    EXPECT_EQ(ResolveRef(f.Doc(), {1, 1}), nullptr);  // 1 0 exists: number and generation must both match
    EXPECT_EQ(f.TakeMessages(), (Strings{"Reading Object 99 0 R > Object 99 0 R was not found",
                                         "Reading Object 1 1 R > Object 1 1 R was not found"}));
    const XrefEntry* placeholder = f.Doc().NewestSection()->Find({99, 0});
    ASSERT_NE(placeholder, nullptr);
    EXPECT_EQ(placeholder->flags, kXrefNotFound);
    EXPECT_EQ(FindEntry(f.Doc(), {99, 0}), nullptr);
    EXPECT_TRUE(f.TakeMessages().empty());

    // Without a section that was read there is no list to remember the placeholder in.
    OpenedFixture empty("startxref-missing.pdf");
    EXPECT_EQ(FindEntry(empty.Doc(), {1, 0}), nullptr);
    EXPECT_EQ(FindEntry(empty.Doc(), {1, 0}), nullptr);
    EXPECT_EQ(empty.TakeMessages(), (Strings{"Object 1 0 R was not found", "Object 1 0 R was not found"}));
}

TEST(ObjectAccess, NewestSectionWins) {
    OpenedFixture f("incremental-update.pdf");
    XrefEntry* e = FindEntry(f.Doc(), {4, 0});
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e, f.Doc().NewestSection()->Find({4, 0}));
    const pdfObject* obj = ResolveRef(f.Doc(), {4, 0});
    pdfDecodedStream decoded;
    ASSERT_EQ(OpenDecodedStream(f.Doc(), obj, e, decoded), kOk);
    std::string data;
    ivReadAll(*decoded.stream, data);
    EXPECT_EQ(data, "BT /F1 12 Tf (second) Tj ET");
    EXPECT_TRUE(f.TakeMessages().empty());
}

TEST(ObjectAccess, WrongGenerationIsNotFound) {
    OpenedFixture f("ref-wrong-generation.pdf");
    const pdfRef* see = AsRef(DictGet(ResolveRef(f.Doc(), {3, 0}), "See"));
    ASSERT_NE(see, nullptr);
    EXPECT_EQ(ResolveRef(f.Doc(), see->Id()), nullptr);
    EXPECT_EQ(Show(ResolveRef(f.Doc(), {2, 0})), "(generation 0)");
    EXPECT_EQ(f.TakeMessages(), (Strings{"Reading Object 2 1 R > Object 2 1 R was not found"}));
}

// Each row opens its file afresh and reads one object (generation 0) twice. Messages are
// given below the scopes "Reading Object N 0 R > Accessing Object N 0 R".
TEST(ObjectAccess, ReadsEachObjectOnce) {
    const std::string misaligned = "Object Misaligned",
                      twoValues = "Only one object is expected. missed 'endobj'?";
    const std::string in1 = "Reading Stream 1 0 R > ", in9 = "Reading Stream 9 0 R > ";
    const std::string wrongOffset = in1 + "Wrong object offset in the stream";
    const std::string typeXref = in1 + "Object stream 'type' must be 'ObjStm'. However it is XRef";
    const std::string typeMissing = in1 + "Object stream 'type' is not found";
    const std::string notStream = in1 + "Object stream must be a stream";
    const std::string noStream = in9 + "Can't find an object stream";
    const std::string missing9 = in9 + "Reading Object 9 0 R > Object 9 0 R was not found";
    const struct {
        const char* file;
        std::uint32_t num;
        const char* value;
        Strings first;   // messages of the first access
        Strings second;  // messages of the second access
    } cases[] = {
        {"xref-free-entries.pdf", 4, "(kept)", {}, {}},
        {"object-misaligned.pdf", 12, "(twelve)", {}, {}},
        // A failed header leaves the entry unread: every access tries and reports again.
        {"object-misaligned.pdf", 11, "(no record)", {misaligned}, {misaligned}},
        {"object-two-values.pdf", 5, "5", {twoValues}, {}},
        {"object-empty.pdf", 2, "(no record)", {}, {}},
        // The Type lookup and, the role being still unknown, the Subtype lookup both complain.
        {"stream-dictionary-is-array.pdf", 2, "stream <<", {"Not a dictionary", "Not a dictionary"}, {}},
        {"object-offset-beyond-eof.pdf", 2, "(no record)", {}, {}},  // no header there: silent
        {"objstm-good.pdf", 2, "<< /Type /Catalog /Pages 3 0 R >>", {}, {}},
        {"objstm-good.pdf", 5, "42", {}, {}},
        // Found by number: the index the cross-reference stream gives is not used.
        {"objstm-index-swapped.pdf", 3, "<< /Kind (three) >>", {}, {}},
        {"objstm-index-swapped.pdf", 4, "(four)", {}, {}},
        // Header "3 10 4 5": 4 ends where 3 begins.
        {"objstm-offsets-descending.pdf", 4, "true", {wrongOffset}, {}},
        {"objstm-offsets-descending.pdf", 3, "<< /Kind (three) >>", {wrongOffset}, {}},
        {"objstm-offsets-equal.pdf", 4, "(same)", {wrongOffset}, {}},
        {"objstm-object-missing.pdf", 4, "(no record)", {}, {}},  // not in the stream's header: silent
        {"objstm-object-missing.pdf", 3, "<< /Kind (three) >>", {}, {}},
        // A stream that cannot serve as an object stream gets no index, so each access fails anew.
        {"objstm-type-xref.pdf", 3, "(no record)", {typeXref}, {typeXref}},
        {"objstm-type-missing.pdf", 3, "(no record)", {typeMissing}, {typeMissing}},
        {"objstm-not-stream.pdf", 3, "(no record)", {notStream}, {notStream}},
        // The missing stream itself is reported once, through its placeholder.
        {"objstm-stream-missing.pdf", 3, "(no record)", {missing9, noStream}, {noStream}},
    };
    for (const auto& c : cases) {
        std::string row = std::string(c.file) + " " + std::to_string(c.num);
        auto under = [&](const Strings& texts) {
            Strings out;
            for (const auto& t : texts) out.push_back(Access(static_cast<int>(c.num), 0) + t);
            return out;
        };
        OpenedFixture f(c.file);
        const pdfObject* first = ResolveRef(f.Doc(), {c.num, 0});
        EXPECT_EQ(Show(first), c.value) << row;
        EXPECT_EQ(f.TakeMessages(), under(c.first)) << row;
        EXPECT_EQ(ResolveRef(f.Doc(), {c.num, 0}), first) << row;
        EXPECT_EQ(f.TakeMessages(), under(c.second)) << row;
        if (first) {
            EXPECT_EQ(FindEntryByRecord(f.Doc(), first), FindEntry(f.Doc(), {c.num, 0})) << row;
        }
    }
}

TEST(ObjectAccess, EmptyBodyCountsAsLoaded) {
    OpenedFixture f("object-empty.pdf");
    EXPECT_EQ(ResolveRef(f.Doc(), {2, 0}), nullptr);
    EXPECT_TRUE(FindEntry(f.Doc(), {2, 0})->loaded);
}

TEST(ObjectAccess, FindEntryByOffset) {
    OpenedFixture inc("incremental-update.pdf");
    const auto& sections = inc.Doc().Sections();
    // Object 1 is listed by both sections at one offset: the newest section is asked first.
    EXPECT_EQ(FindEntryByOffset(inc.Doc(), inc.OffsetOf(1, 0)), sections[0]->Find({1, 0}));
    EXPECT_EQ(FindEntryByOffset(inc.Doc(), inc.OffsetOf(4, 0, 0)), sections[1]->Find({4, 0}));
    EXPECT_EQ(FindEntryByOffset(inc.Doc(), inc.OffsetOf(4, 0, 0) + 1), nullptr);
    // A compressed entry keeps its index where an in-file entry keeps its offset.
    OpenedFixture objstm("objstm-good.pdf");
    EXPECT_EQ(FindEntryByOffset(objstm.Doc(), 0), nullptr);
    EXPECT_EQ(FindEntryByOffset(objstm.Doc(), 1), nullptr);
}

TEST(ObjectAccess, ExtraChecksReportAnOffsetBeyondTheFileOnce) {
    OpenedFixture f("object-offset-beyond-eof.pdf", true);
    EXPECT_EQ(f.Doc().Analyse(), kOk);
    EXPECT_EQ(ResolveRef(f.Doc(), {2, 0}), nullptr);
    EXPECT_EQ(f.Control().Count("Object offset 99999 is beyond the end of the file"), 1);
}

// Damaged files must open and analyse to the end, whatever they hold.
TEST(ObjectAccess, EveryFixtureOpensAndAnalyses) {
    for (const auto& p : std::filesystem::directory_iterator(TestDataPath(""))) {
        if (p.path().extension() != ".pdf") continue;
        OpenedFixture f(p.path().filename().string());
        EXPECT_EQ(f.Doc().Analyse(), kOk) << p.path();
    }
}

TEST(ObjectAccessRoles, SetFromTheStreamDictionary) {
    const struct {
        std::uint32_t num;
        std::uint8_t role;
    } cases[] = {
        {2, kRoleImage},         // /Type /XObject /Subtype /Image
        {3, kRoleObjectStream},  // /Type /ObjStm
        {4, kRoleMetadata},
        {5, kRoleEmbeddedFile},
        {6, kRole3D},
        {7, kRoleXrefStream},  // /Type /XRef, though no section reads it
        {8, kRoleMetadata},    // /Type given as a string
        {9, kRoleMetadata},    // a Type role leaves Subtype /Image unread
        {10, 0},               // a dictionary, not a stream: no role check
        {11, 0},               // /Subtype /Form
        {12, kRoleImage},      // /Subtype (Image) without a Type
        {13, 0},               // a Type that names no role
    };
    OpenedFixture f("stream-roles.pdf");
    for (const auto& c : cases) {
        EXPECT_NE(ResolveRef(f.Doc(), {c.num, 0}), nullptr) << c.num;
        EXPECT_EQ(FindEntry(f.Doc(), {c.num, 0})->role, c.role) << c.num;
    }
    EXPECT_TRUE(f.TakeMessages().empty());
}

TEST(ObjectAccessRoles, ConflictKeepsTheFirstRole) {
    // The object stream that a page also draws as an image: image analysis got there first.
    OpenedFixture conflict("stream-role-conflict.pdf");
    XrefEntry* objStm = FindEntry(conflict.Doc(), {5, 0});
    SetAccessRole(conflict.Doc(), objStm, kRoleImage);
    EXPECT_NE(ResolveRef(conflict.Doc(), {5, 0}), nullptr);
    EXPECT_EQ(objStm->role, kRoleImage);
    EXPECT_EQ(conflict.TakeMessages(), (Strings{Access(5, 0) + "5 0 R Used as something else already"}));

    OpenedFixture f("stream-roles.pdf");
    ResolveRef(f.Doc(), {2, 0});
    XrefEntry* image = FindEntry(f.Doc(), {2, 0});
    SetAccessRole(f.Doc(), image, kRoleImage);  // the same role again is no conflict
    SetAccessRole(f.Doc(), image, kRoleObjectStream);
    EXPECT_EQ(image->role, kRoleImage);
    EXPECT_EQ(f.TakeMessages(), (Strings{"2 0 R Used as something else already"}));

    // Subtype /Image is looked at only while the role is still unknown.
    XrefEntry* subtypeOnly = FindEntry(f.Doc(), {12, 0});
    SetAccessRole(f.Doc(), subtypeOnly, kRoleObjectStream);
    ResolveRef(f.Doc(), {12, 0});
    EXPECT_EQ(subtypeOnly->role, kRoleObjectStream);
    EXPECT_TRUE(f.TakeMessages().empty());
}

TEST(ObjectAccessObjStm, CompressedEntries) {
    OpenedFixture f("objstm-good.pdf");
    EXPECT_EQ(Describe(*f.Doc().NewestSection()),
              (Strings{f.InFile(1), "2 0 in 1#0", "3 0 in 1#1", "4 0 in 1#2", "5 0 in 1#3", f.InFile(6)}));
    EXPECT_EQ(FindEntry(f.Doc(), {5, 0})->length, kUnknownLength);  // known once the stream is indexed
    // The members as the fixture types them; each runs to the next one, the last to the end.
    const char* members[] = {"<< /Type /Catalog /Pages 3 0 R >>\n",
                             "<< /Type /Pages /Kids [4 0 R] /Count 1 >>\n",
                             "<< /Type /Page /Parent 3 0 R /MediaBox [0 0 200 100] >>\n", "42\n"};
    for (std::uint32_t n = 2; n <= 5; ++n) {
        EXPECT_NE(ResolveRef(f.Doc(), {n, 0}), nullptr) << n;
        EXPECT_EQ(FindEntry(f.Doc(), {n, 0})->length, std::string(members[n - 2]).size()) << n;
    }
    EXPECT_EQ(FindEntry(f.Doc(), {1, 0})->role, kRoleObjectStream);
    EXPECT_TRUE(f.TakeMessages().empty());
}

}  // namespace

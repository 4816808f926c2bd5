#include "pdf/analysis/pdfPageTree.h"

#include <gtest/gtest.h>

#include "pdf/analysis/pdfContents.h"
#include "pdf/object/OpenedFixture.h"
#include "pdf/object/pdfObjectAccess.h"
#include "pdf/object/pdfObjectText.h"

namespace {

using Strings = std::vector<std::string>;

// Everything reported so far, open included, without position suffixes.
Strings AllMessages(OpenedFixture& f) {
    Strings out;
    for (const std::string& p : f.Control().Paths()) out.push_back(WithoutPosition(p));
    return out;
}

Strings PageIds(ivPdf& doc) {
    Strings ids;
    for (const pdfPage* p : doc.Pages()) ids.push_back(std::to_string(p->Id().num));
    return ids;
}

TEST(PageTree, WalkBuildsThePageList) {
    const struct {
        const char* file;
        Strings pages;
        Strings messages;
    } cases[] = {
        {"classic-good.pdf", {"3"}, {}},
        {"tree-pages-is-page.pdf", {}, {"Page is not expected here"}},
        {"tree-node-without-kids.pdf", {}, {}},  // a Count that disagrees is not checked
        // Kids leading back to an ancestor end the walk there; the page is listed once.
        {"tree-kids-cycle.pdf",
         {"3"},
         {"Page tree node 2 0 R is its own ancestor; its Kids are not walked again"}},
        // A page listed twice appears twice, and so does everything below a node listed twice.
        {"tree-listed-twice.pdf", {"5", "5", "3", "5", "5"}, {}},
        {"tree-nested-too-deep.pdf", {}, {"Objects are nested too deep to follow"}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        EXPECT_EQ(f.OpenStatus(), kOk) << c.file;
        EXPECT_EQ(PageIds(f.Doc()), c.pages) << c.file;
        EXPECT_EQ(AllMessages(f), c.messages) << c.file;
    }
}

TEST(PageTree, SharedSubtreesStopWithinABudget) {
    // Twenty levels that each list the next one ten times would mean 10^20 pages.
    OpenedFixture f("tree-shared-subtrees.pdf");
    EXPECT_LE(f.Doc().Pages().size(), 100001u);
    EXPECT_GT(f.Doc().Pages().size(), 1000u);
    Strings messages = AllMessages(f);
    const auto cut = std::find_if(messages.begin(), messages.end(), [](const std::string& m) {
        return m.rfind("Page tree node ", 0) == 0 &&
               m.find(" is listed too many times; its Kids are not walked again") != std::string::npos;
    });
    EXPECT_NE(cut, messages.end());
}

TEST(PageTree, TreeNodesAndRoles) {
    OpenedFixture f("tree-listed-twice.pdf");
    const pdfTree* root = f.Doc().RootTree();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->Id().num, 2u);
    ASSERT_EQ(root->Children().size(), 3u);
    EXPECT_EQ(root->Children()[0]->Kind(), kNodeTree);
    EXPECT_EQ(root->Children()[1]->Kind(), kNodePage);
    EXPECT_NE(root->Children()[0].get(), root->Children()[2].get());  // a node per listing
    EXPECT_EQ(f.Doc().Pages()[0]->Parent()->Id().num, 4u);
    EXPECT_EQ(FindEntry(f.Doc(), {5, 0})->role, 6);  // pages get their role during open
}

TEST(PageTree, InheritedAttributesAndMediaBoxes) {
    OpenedFixture f("tree-inherited-attributes.pdf");
    const auto& pages = f.Doc().Pages();
    ASSERT_EQ(pages.size(), 4u);
    struct Box {
        bool valid;
        double l, b, r, t;
    };
    const Box boxes[] = {
        {true, 0, 0, 612, 792},    // inherited from the grandparent, corners normalised
        {true, 0, 0, 595.5, 842},  // an element given by reference is followed
        {false, 0, 0, 0, 0},       // three numbers: no media box
        {true, 0, 0, 100.5, 0},    // a non-number element stays 0
    };
    for (std::size_t i = 0; i < 4; ++i) {
        const pdfRect& r = pages[i]->mediaBox;
        EXPECT_EQ(pages[i]->mediaBoxValid, boxes[i].valid) << i;
        EXPECT_EQ((std::vector<double>{r.left, r.bottom, r.right, r.top}),
                  (std::vector<double>{boxes[i].l, boxes[i].b, boxes[i].r, boxes[i].t}))
            << i;
    }
    EXPECT_EQ(ObjectText(pages[0]->resources), "<< /ProcSet [/PDF] >>");  // from the grandparent
    EXPECT_EQ(ObjectText(pages[1]->resources), "<< /Font << >> >>");      // by reference
    // A Resources of the wrong type on the page itself does not fall back to the parents.
    EXPECT_EQ(pages[3]->resources, nullptr);
    EXPECT_EQ(AllMessages(f), Strings{"Page Attribute has an invalid type"});
}

TEST(PageContents, StreamsOfAPageReadAsOneList) {
    OpenedFixture f("contents-array.pdf");
    f.TakeMessages();
    std::shared_ptr<const pdfContentOps> ops;
    ASSERT_EQ(ReadPageContents(f.Doc(), f.Doc().Pages()[0]->Object(), ops), kOk);
    Strings lines;
    for (const pdfOperation& op : SplitOperations(*ops)) {
        std::string line;
        for (const pdfObject* o : op.operands) line += ObjectText(o) + " ";
        lines.push_back(line + (op.op ? TokenText(op.op) : "-"));
    }
    // The array's second element is no stream, the third is decoded, the last is missing.
    EXPECT_EQ(lines, (Strings{"q", "1 0 0 1 10 10 cm", "[inline image] EI", "Q"}));
    EXPECT_EQ(
        f.TakeMessages(),
        (Strings{"Reading Contents of Page 3 0 R > Not a stream",
                 "Reading Contents of Page 3 0 R > Reading Object 99 0 R > Object 99 0 R was not found"}));

    // Parsed once: a second request hands out the same list.
    std::shared_ptr<const pdfContentOps> again, single;
    ASSERT_EQ(ReadContentStream(f.Doc(), ResolveRef(f.Doc(), {8, 0}), single), kOk);
    ASSERT_EQ(ReadContentStream(f.Doc(), ResolveRef(f.Doc(), {8, 0}), again), kOk);
    EXPECT_EQ(single.get(), again.get());
    auto ops2 = SplitOperations(*single);
    ASSERT_EQ(ops2.size(), 4u);
    EXPECT_EQ(ops2.back().op, nullptr);  // "1 2" at the end has no operator
    EXPECT_EQ(ReadContentStream(f.Doc(), nullptr, again), kMissing);
}

}  // namespace

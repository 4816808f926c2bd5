#include "pdf/analysis/pdfResources.h"

#include <gtest/gtest.h>

#include <sstream>

#include "pdf/object/OpenedFixture.h"
#include "pdf/object/pdfObjectAccess.h"

namespace {

using Strings = std::vector<std::string>;

// One fixture after analysis: the roles of the objects named in `roles` ("N:role N:role",
// generation 0) and every message that the analysis reported, with its scopes; with the
// extra checks on when `extra` is set.
struct WalkCase {
    const char* fixture;
    const char* roles;
    Strings messages;
    bool extra = false;
};

std::string RolesOf(ivPdf& doc, const std::string& wanted) {
    std::istringstream in(wanted);
    std::string item, out;
    while (in >> item) {
        auto num = static_cast<std::uint32_t>(std::stoul(item.substr(0, item.find(':'))));
        const XrefEntry* e = doc.NewestSection()->Find({num, 0});
        out += (out.empty() ? "" : " ") + std::to_string(num) + ":" + (e ? std::to_string(e->role) : "none");
    }
    return out;
}

void Check(const WalkCase& c) {
    OpenedFixture f(c.fixture, c.extra);
    f.TakeMessages();
    ASSERT_EQ(f.Doc().Analyse(), kOk) << c.fixture;
    EXPECT_EQ(f.TakeMessages(), c.messages) << c.fixture;
    EXPECT_EQ(RolesOf(f.Doc(), c.roles), c.roles) << c.fixture;
}

std::string Analize(int num) {
    return "Analize " + std::to_string(num) + " 0 R > ";
}

TEST(ResourceWalks, ContentsAndResources) {
    const WalkCase cases[] = {
        // Both streams of a Contents array are page streams; the one a second page also uses stays so.
        {"res-contents-array-shared.pdf", "3:6 4:6 5:5 6:5", {}},
        // An indirect Contents array gives its streams the role but takes none itself.
        {"res-contents-indirect-array.pdf", "4:0 5:5 6:5", {}},
        // Metadata is followed from an indirect property list only, not from a direct one.
        {"res-properties-metadata.pdf", "4:5 5:0 6:15 7:0", {}},
        // An indirect array takes the Resources role before it is found wrong; a direct one only reports.
        {"res-not-dictionary.pdf",
         "5:17",
         {Analize(3) + "Resource must be a dictionary object",
          Analize(4) + "Resource must be a dictionary object"}},
        // A tiling pattern's resources are followed; a shading pattern dictionary is a pattern too.
        {"res-pattern-resources.pdf", "4:5 5:16 6:16 7:27 8:28", {}},
        // An indirect ExtGState sub-dictionary takes the role itself, and what it lists is not marked.
        {"res-extgstate-indirect.pdf", "4:27 5:0", {}},
    };
    for (const auto& c : cases) Check(c);
}

TEST(ResourceWalks, XObjects) {
    const WalkCase cases[] = {
        // The image keeps the role it got when it was read; drawing it as page content conflicts once.
        {"xobject-image-as-contents.pdf", "4:11", {Analize(3) + "4 0 R Used as something else already"}},
        // The form's resources are followed once, from the first page: the page tree used as a
        // graphics state is reported once, not three times.
        {"xobject-form-many-pages.pdf", "6:12 7:27", {Analize(3) + "2 0 R Used as something else already"}},
        // A form that draws itself ends at its second visit; the extra checks say where.
        {"xobject-form-draws-itself.pdf", "4:5 5:12", {}},
        {"xobject-form-draws-itself.pdf",
         "4:5 5:12",
         {Analize(3) + "Form 5 0 R draws itself through its resources"},
         true},
        // A form and a pattern whose resources are the page's own resources.
        {"res-cycle-through-form.pdf", "4:5 5:17 6:12 7:16", {}},
        {"res-cycle-through-form.pdf",
         "4:5 5:17 6:12 7:16",
         {Analize(3) + "Form 6 0 R draws itself through its resources",   // through its own XObjects
          Analize(3) + "Form 6 0 R draws itself through its resources"},  // through the pattern's
         true},
        // Resources that name themselves as an XObject sub-dictionary, a property list and a shading.
        {"res-contains-itself.pdf", "4:17", {Analize(3) + "4 0 R Used as something else already"}},
    };
    for (const auto& c : cases) Check(c);
}

TEST(ResourceWalks, ColourSpaces) {
    const WalkCase cases[] = {
        // The image's indirect ICCBased array and its profile; the indirect ColorSpace
        // sub-dictionary of the resources is a colour space as a whole.
        {"colorspace-iccbased-indirect.pdf", "4:11 5:8 6:49 7:7", {}},
        // Written directly, neither in the image nor in the resources, nothing takes a role.
        {"colorspace-iccbased-direct.pdf", "4:11 5:0", {}},
        {"colorspace-indexed-lookup.pdf", "5:10 6:13", {}},
        // The last reference is the base, here an ICCBased array, which the palette role refuses;
        // the page and the image's own visit each walk the colour space.
        {"colorspace-indexed-base-ref.pdf",
         "5:10 6:0 7:0",
         {Analize(3) + "Array is not allowed", Analize(4) + "Array is not allowed"}},
        {"colorspace-separation-cmyk.pdf", "5:9 6:50", {}},
        // A tint transform written as a dictionary does not take the function role.
        {"colorspace-separation-function-dict.pdf",
         "5:9 6:0",
         {Analize(3) + "Dictionary is not allowed", Analize(4) + "Dictionary is not allowed"}},
    };
    for (const auto& c : cases) Check(c);
}

TEST(ResourceWalks, AnnotationsAndActions) {
    const WalkCase cases[] = {
        // Every action of the Next array.
        {"annot-link-next-array.pdf", "4:35 5:34 6:34 7:34 8:34", {}},
        // An indirect Annots array; annotations without Type; only Link actions are followed.
        {"annot-annots-indirect.pdf", "4:47 5:35 6:35 7:34 8:0", {}},
        {"annot-3d.pdf", "4:35 5:26 6:41 7:42", {}},
        // A stream whose dictionary is an array takes the role and is then refused; a string
        // in Annots is passed over.
        {"annot-not-dictionary.pdf",
         "4:35 5:0",
         {Analize(3) + "Accessing Object 4 0 R > Not a dictionary",
          Analize(3) + "Accessing Object 4 0 R > Not a dictionary",
          Analize(3) + "Anotations must be a dictionary object"}},
        // Two actions whose Next lead to each other: the chain ends; the extra checks say where.
        {"action-next-loop.pdf", "5:34 6:34", {}},
        {"action-next-loop.pdf", "5:34 6:34", {Analize(3) + "Action 5 0 R is its own Next"}, true},
        // Next arrays that lead back, and an indirect Next array that lists itself.
        {"action-next-array-loop.pdf", "5:34 6:34 7:34 8:34", {}},
        {"action-next-array-loop.pdf",
         "5:34 6:34 7:34 8:34",
         {Analize(3) + "Action 5 0 R is its own Next", Analize(3) + "Action 8 0 R is its own Next",
          Analize(3) + "Action 7 0 R is its own Next"},
         true},
        // A chain that reaches an annotation ends there: the annotation's own Next is not followed.
        {"action-next-to-annotation.pdf",
         "4:35 5:34 6:0",
         {Analize(3) + "4 0 R Used as something else already"}},
    };
    for (const auto& c : cases) Check(c);
}

TEST(ResourceWalks, Outlines) {
    const WalkCase cases[] = {
        // Items on two levels and the actions of items, direct or indirect, with their Next.
        {"outline-items.pdf", "4:31 5:33 6:33 7:33 8:34 9:34", {}},
        {"outline-next-loop.pdf", "5:33 6:33", {Analize(1) + "Outline item 5 0 R was already visited"}},
        // A child that is the outline root itself.
        {"outline-first-is-root.pdf", "4:31 5:33", {Analize(1) + "Outline item 4 0 R was already visited"}},
        // A direct item ends the level, so the item after it is not reached.
        {"outline-direct-item.pdf", "5:33 6:0", {Analize(1) + "Outline item can't be read"}},
        // A child that does not exist ends only its own level; an item that is a number takes
        // the role and ends its level.
        {"outline-unreadable-items.pdf",
         "5:33 6:33 7:33",
         {Analize(1) + "Object 99 0 R was not found", Analize(1) + "Outline item 99 0 R can't be read",
          Analize(1) + "Outline item 7 0 R can't be read"}},
        // A page in the Next chain keeps its role and is walked as an item.
        {"outline-item-is-page.pdf", "3:6 5:33", {Analize(1) + "3 0 R Used as something else already"}},
    };
    for (const auto& c : cases) Check(c);
}

TEST(ResourceWalks, LongChainsAreCut) {
    // Page 3 draws form 4, which draws 5, and so on to 1003. A walk follows 50 forms before
    // its depth guard stops it, each time before the next form takes its role, so the next
    // form's own visit follows the chain on: every form ends up a form.
    OpenedFixture chain("xobject-form-chain-1000.pdf");
    chain.TakeMessages();
    chain.Doc().Analyse();
    Strings expected{Analize(3) + "Objects are nested too deep to follow"};
    for (int cut = 54; cut <= 904; cut += 50)
        expected.push_back(Analize(cut) + "Objects are nested too deep to follow");
    EXPECT_EQ(chain.TakeMessages(), expected);
    int forms = 0;
    for (std::uint32_t n = 4; n <= 1003; ++n) forms += chain.Doc().NewestSection()->Find({n, 0})->role == 12;
    EXPECT_EQ(forms, 1000);

    // Outline items nested 300 deep: the first 200 levels are items, the rest are not reached.
    OpenedFixture outline("outline-nested-300.pdf");
    outline.TakeMessages();
    outline.Doc().Analyse();
    EXPECT_EQ(outline.TakeMessages(), Strings{Analize(1) + "Objects are nested too deep to follow"});
    EXPECT_EQ(RolesOf(outline.Doc(), "5:33 204:33 205:0 304:0"), "5:33 204:33 205:0 304:0");
}

}  // namespace

#include "pdf/analysis/pdfPageLabel.h"

#include <gtest/gtest.h>

#include "pdf/analysis/pdfPageTree.h"
#include "pdf/object/OpenedFixture.h"

namespace {

using Strings = std::vector<std::string>;

// Points for a length in millimetres.
constexpr double Pt(double mm) {
    return mm * 72 / 25.4;
}

std::string LabelOf(double width, double height, std::size_t index = 0) {
    pdfPage page(nullptr, {}, nullptr);
    page.mediaBoxValid = true;
    page.mediaBox = {0, 0, width, height};
    return PageLabel(index, page);
}

TEST(PageLabel, PaperNamesAndMillimetres) {
    const struct {
        double width, height;  // points
        const char* label;
    } cases[] = {
        {595.3, 841.9, "Page 1,  A4"},
        {841.9, 595.3, "Page 1,  A4"},  // landscape
        {612, 792, "Page 1,  Letter"},
        {792, 612, "Page 1,  Letter"},
        {612, 1008, "Page 1,  Legal"},
        {841.89, 1190.55, "Page 1,  A3"},
        {600, 800, "Page 1, 212 x 282 mm"},
        // Within half a millimetre on both sides, strictly.
        {Pt(210.49), Pt(296.51), "Page 1,  A4"},
        {Pt(210.51), Pt(297), "Page 1, 211 x 297 mm"},
        {Pt(210), Pt(297.51), "Page 1, 210 x 298 mm"},
        {Pt(209.49), Pt(297), "Page 1, 209 x 297 mm"},
        // Both sides must fit the same orientation.
        {Pt(210), Pt(210), "Page 1, 210 x 210 mm"},
        {Pt(297), Pt(297), "Page 1, 297 x 297 mm"},
        {Pt(100.4), Pt(100.6), "Page 1, 100 x 101 mm"},
        {0, 0, "Page 1, 0 x 0 mm"},
        // Sizes beyond what the text can hold are clamped, not undefined.
        {1e300, 1e300, "Page 1, 2147483647 x 2147483647 mm"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LabelOf(c.width, c.height), c.label) << c.width << " x " << c.height;
    EXPECT_EQ(LabelOf(600, 800, 41), "Page 42, 212 x 282 mm");
}

TEST(PageLabel, LabelsOfOpenedFiles) {
    const Strings sizes = {"Page 1,  A4", "Page 2,  A4",          "Page 3,  Letter", "Page 4,  Legal",
                           "Page 5,  A3", "Page 6, 212 x 282 mm", "Page 7,  A4"};
    const struct {
        const char* file;
        Strings labels;
    } cases[] = {
        // Page 1 inherits its box; page 5's corners are swapped; page 7's start at -100 50.
        {"pages-paper-sizes.pdf", sizes},
        // qpdf copies the inherited box into the first page.
        {"qpdf-linearized-pages.pdf", sizes},
        // A box of three numbers is not read: the page shows an empty size.
        {"pages-media-box-invalid.pdf", {"Page 1, 0 x 0 mm"}},
    };
    for (const auto& c : cases) {
        OpenedFixture f(c.file);
        Strings labels;
        for (std::size_t i = 0; i < f.Doc().Pages().size(); ++i)
            labels.push_back(PageLabel(i, *f.Doc().Pages()[i]));
        EXPECT_EQ(labels, c.labels) << c.file;
    }
}

}  // namespace

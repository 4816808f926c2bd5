#include "pdf/analysis/pdfPageLabel.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "pdf/analysis/pdfPageTree.h"
#include "platform/ivFormat.h"

namespace {

struct Paper {
    const char* name;
    double width, height;  // millimetres, upright
};
// Checked in this order; the first match names the page.
constexpr Paper kPapers[] = {
    {"Letter", 215.9, 279.4},
    {"Legal", 215.9, 355.6},
    {"A4", 210, 297},
    {"A3", 297, 420},
};
constexpr double kMmPerPoint = 25.4 / 72;
constexpr double kTolerance = 0.5;  // millimetres either way, exclusive

bool Near(double a, double b) {
    return std::fabs(a - b) < kTolerance;
}

bool Fits(const Paper& paper, double width, double height) {
    return (Near(width, paper.width) && Near(height, paper.height)) ||
           (Near(width, paper.height) && Near(height, paper.width));
}

// Whole millimetres for "%d"; sizes no int holds (a box of 1e300 points) are clamped.
int WholeMm(double mm) {
    if (std::isnan(mm)) return 0;
    return static_cast<int>(std::clamp(std::round(mm), double{INT_MIN}, double{INT_MAX}));
}

}  // namespace

// A page whose media box could not be read keeps the empty box it started with, so its label
// says "0 x 0 mm": the pane shows that the size is unknown rather than guessing one.
std::string PageLabel(std::size_t index, const pdfPage& page) {
    std::string label = ivFormat("Page %d, ", static_cast<int>(index + 1));
    const double width = page.mediaBox.Width() * kMmPerPoint;
    const double height = page.mediaBox.Height() * kMmPerPoint;
    for (const Paper& paper : kPapers)
        if (Fits(paper, width, height)) return label + " " + paper.name;  // two blanks, as intended
    return label + ivFormat("%d x %d mm", WholeMm(width), WholeMm(height));
}

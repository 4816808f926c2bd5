// Times what a user does with the cross-reference view on a large file: unfolding the big
// section and painting it, scrolling to its end, the "to", "from" and text filters and
// clearing them; and the heap the view's model takes before anything is unfolded. Runs on
// the offscreen platform; prints one line a step.
//
//   vantrel_tree_bench FILE.pdf [TARGET-NUMBER]
#include <malloc.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <cstdio>

#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivFileStream.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivObjectTreeModel.h"
#include "ui/panes/ivXREFFrame.h"

namespace {

std::size_t HeapInUse() {
    return mallinfo2().uordblks;
}

// Runs `step`, lets the view lay out and paint, and prints the time taken.
template <class Step>
double Timed(const char* what, QWidget& view, Step step, const char* goal) {
    QElapsedTimer clock;
    clock.start();
    step();
    view.repaint();
    QCoreApplication::processEvents();
    const double ms = clock.nsecsElapsed() / 1e6;
    std::printf("%-48s %9.1f ms   (goal %s)\n", what, ms, goal);
    return ms;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: vantrel_tree_bench FILE.pdf [TARGET-NUMBER]\n");
        return 64;
    }
    ivIOControl control;
    auto doc = std::make_shared<ivPdf>(ivFileStream::Open(argv[1]), argv[1], &control);
    doc->Open();
    doc->Analyse();
    // The "to"/"from" target: the object given, else the catalog's page tree.
    std::uint32_t target = argc > 2 ? static_cast<std::uint32_t>(std::atol(argv[2])) : 0;
    if (!target) {
        const pdfRef* pages = AsRef(DictGet(doc->Catalog(), "Pages"));
        target = pages ? pages->num : doc->CatalogId().num;
    }

    ivXREFFrame frame;
    frame.resize(420, 900);
    frame.show();
    QCoreApplication::processEvents();
    const std::size_t before = HeapInUse();
    QElapsedTimer fill;
    fill.start();
    frame.SetDocument(doc);
    QCoreApplication::processEvents();
    std::printf("%-48s %9.1f ms\n", "fill the view (part of opening)", fill.nsecsElapsed() / 1e6);
    const std::size_t entries = frame.Model()->EntryTotal();
    const double perEntry = entries ? double(HeapInUse() - before) / double(entries) : 0;
    std::printf("%-48s %9.1f bytes (goal at most 16), %zu entries\n",
                "model heap per entry, nothing unfolded", perEntry, entries);

    ivObjTree& tree = *frame.Tree();
    ivObjectTreeModel& model = *frame.Model();
    // The largest section is the one to unfold.
    int big = 0;
    for (int s = 1; s < model.rowCount(); ++s)
        if (model.rowCount(model.index(s, 0)) > model.rowCount(model.index(big, 0))) big = s;
    Timed(
        "unfold the largest section and paint", tree, [&] { tree.expand(model.index(big, 0)); }, "< 50 ms");
    Timed(
        "scroll to its end and paint", tree,
        [&] { tree.verticalScrollBar()->setValue(tree.verticalScrollBar()->maximum()); }, "< 50 ms");
    const std::string to = "to " + std::to_string(target) + " 0 R",
                      from = "from " + std::to_string(target) + " 0 R";
    Timed(("filter \"" + to + "\"").c_str(), tree, [&] { frame.Filter(QString::fromStdString(to)); },
          "< 500 ms");
    std::printf("%-48s %s\n", "", frame.CountText().toStdString().c_str());
    Timed(("filter \"" + from + "\"").c_str(), tree, [&] { frame.Filter(QString::fromStdString(from)); },
          "< 500 ms");
    std::printf("%-48s %s\n", "", frame.CountText().toStdString().c_str());
    Timed(
        "filter \"font\"", tree, [&] { frame.Filter("font"); }, "< 2000 ms");
    std::printf("%-48s %s\n", "", frame.CountText().toStdString().c_str());
    Timed(
        "clear the filter", tree, [&] { frame.ClearFilter(); }, "< 50 ms");
    return 0;
}

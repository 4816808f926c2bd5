#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include "UiTest.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfRoleCodes.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivObjectTreeModel.h"
#include "ui/panes/ivTreeFrames.h"
#include "ui/panes/ivXREFFrame.h"

namespace {

using Kind = ivObjectTreeModel::Kind;

// Unfolds `index` as the view would: it counts the children, which makes them.
void Unfold(ivObjectTreeModel& model, const QModelIndex& index) {
    model.rowCount(index);
}

QStringList Texts(ivObjectTreeModel& model, const QModelIndex& parent = {}) {
    QStringList out;
    for (int r = 0; r < model.rowCount(parent); ++r) out << model.index(r, 0, parent).data().toString();
    return out;
}

}  // namespace

class tst_Trees : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void documentTreeUnfoldsLevelByLevel() {
        ivIOControl control;
        ivObjectTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.ShowCatalog(OpenedTestFile("classic-good.pdf", control));
        QCOMPARE(Texts(model), QStringList{"[1 0 R] Catalog  (Catalog)"});
        const QModelIndex root = model.index(0, 0);
        QVERIFY(model.hasChildren(root));
        Unfold(model, root);
        QVERIFY(Texts(model, root).contains("Pages [2 0 R]  (Pages)"));
        const QModelIndex pages = model.index(Texts(model, root).indexOf("Pages [2 0 R]  (Pages)"), 0, root);
        Unfold(model, pages);
        QVERIFY(Texts(model, pages).contains("Kids "));
        QCOMPARE(model.parent(model.index(0, 0, pages)), pages);
        QVERIFY(model.ObjectToShow(pages) != nullptr);  // the Pages dictionary, resolved
        QVERIFY(!model.data(root, Qt::ToolTipRole).toString().isEmpty());
    }

    void pagesAndRoleListsAreRowsOfTheDocumentsLists() {
        ivIOControl control;
        auto doc = OpenedTestFile("role-fonts.pdf", control);
        ivObjectTreeModel pages, fonts;
        QAbstractItemModelTester pagesTester(&pages, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QAbstractItemModelTester fontsTester(&fonts, QAbstractItemModelTester::FailureReportingMode::QtTest);
        pages.ShowPages(doc);
        QCOMPARE(pages.rowCount(), static_cast<int>(doc->Pages().size()));
        QVERIFY(pages.index(0, 0).data().toString().startsWith("Page 1, "));
        Unfold(pages, pages.index(0, 0));
        QVERIFY(pages.rowCount(pages.index(0, 0)) > 0);
        std::vector<XrefEntry*> list;
        for (XrefEntry* e : doc->Sections()[0]->entries)
            if (e->role == kRoleFont) list.push_back(e);
        QVERIFY(!list.empty());
        fonts.ShowEntries(doc, list);
        QCOMPARE(fonts.rowCount(), static_cast<int>(list.size()));
        QVERIFY(fonts.index(0, 0).data().toString().contains("Font"));
        QCOMPARE(fonts.KindOf(fonts.index(0, 0)), Kind::Entry);
    }

    void sectionsTrailersAndFilters() {
        ivIOControl control;
        auto doc = OpenedTestFile("qpdf-incremental.pdf", control);
        ivObjectTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.ShowSections(doc);
        const int sections = static_cast<int>(doc->Sections().size());
        QCOMPARE(model.rowCount(), sections);
        QVERIFY(model.index(0, 0).data().toString().endsWith(QString(", Revison: %1").arg(sections)));
        QVERIFY(model.index(sections - 1, 0).data().toString().endsWith(", Revison: 1"));
        const QModelIndex first = model.index(0, 0);
        QCOMPARE(model.rowCount(first), 1 + static_cast<int>(doc->Sections()[0]->entries.size()));
        const QModelIndex trailer = model.index(0, 0, first);
        QCOMPARE(trailer.data().toString(), QString("Trailer"));
        Unfold(model, trailer);
        QCOMPARE(Texts(model, trailer).first(), QString("Root 2 0 R  (Catalog)"));
        // An entry's children are made when it unfolds, below a node of its own.
        const QModelIndex entry = model.index(1, 0, first);
        QCOMPARE(entry.data().toString(), QString("[9 0 R] Document Information"));
        Unfold(model, entry);
        QVERIFY(model.rowCount(entry) > 0);
        QCOMPARE(model.parent(model.index(0, 0, entry)), entry);

        // The update holds the new Info object 9; the old section its object stream 1 and more.
        model.SetFilter(ivXrefFilter::Parse(*doc, "9"));
        QVERIFY(model.Filtered());
        QCOMPARE(model.MatchCount(), std::size_t(1));
        QCOMPARE(model.rowCount(model.index(0, 0)), 2);  // the trailer and the match
        QCOMPARE(model.rowCount(model.index(1, 0)), 1);  // the section's stream alone
        model.SetFilter(ivXrefFilter::Parse(*doc, "information"));
        QCOMPARE(model.MatchCount(), std::size_t(2));  // the role of 9 and of 6
        model.SetFilter(std::nullopt);
        QCOMPARE(model.rowCount(model.index(0, 0)), 1 + static_cast<int>(doc->Sections()[0]->entries.size()));
    }

    void unresolvedReferencesCarryTheMark() {
        ivIOControl control;
        ivObjectTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.ShowSections(OpenedTestFile("info-missing-object.pdf", control));
        const QModelIndex trailer = model.index(0, 0, model.index(0, 0));
        Unfold(model, trailer);
        // Info names an object that is not there: the trailer leaves it out.
        QCOMPARE(Texts(model, trailer), QStringList{"Root 1 0 R  (Catalog)"});
    }

    void xrefFrameFiltersCountsAndLocates() {
        ivIOControl control;
        ivXREFFrame frame;
        frame.SetDocument(OpenedTestFile("role-fonts.pdf", control));
        frame.Filter("font");
        QVERIFY(frame.Model()->Filtered());
        QCOMPARE(frame.SearchBox()->text(), QString("font"));
        QVERIFY(frame.CountText().contains(" of "));
        QVERIFY(frame.findChild<QLabel*>("matchCount")->isVisibleTo(&frame));
        frame.SearchBox()->clear();  // the clear button's way
        QVERIFY(!frame.Model()->Filtered());
        QVERIFY(frame.CountText().isEmpty());
        // "0" searches texts; a text that gives no mode removes the filter.
        frame.Filter("0");
        QVERIFY(frame.Model()->Filtered());
        frame.Filter("");
        QVERIFY(!frame.Model()->Filtered());

        frame.Filter("font");
        frame.Locate(3, 0);
        QVERIFY(!frame.Model()->Filtered());  // locating clears the filter
        QCOMPARE(frame.Model()->EntryOf(frame.Tree()->currentIndex())->num, 3u);
        frame.Locate(999, 0);  // no such object: nothing changes
        QCOMPARE(frame.Model()->EntryOf(frame.Tree()->currentIndex())->num, 3u);
    }

    void choosingAndCopying() {
        ivIOControl control;
        ivTreeFrame frame;
        frame.SetDocument(OpenedTestFile("classic-good.pdf", control));
        ivObjTree* tree = frame.Tree();
        QSignalSpy shown(tree, &ivObjTree::ShowRequested);
        const QModelIndex root = frame.Model()->index(0, 0);
        QVERIFY(tree->isExpanded(root));  // the root unfolds at once
        Q_EMIT tree->activated(root);
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown.front()[1].toUInt(), kReuseView | kBringToFront | kSharedView);
        tree->setCurrentIndex(root);
        tree->CopyItem(root, false);
        QCOMPARE(QApplication::clipboard()->text(), QString("[1 0 R] Catalog  (Catalog)"));
        QVERIFY(tree->OnCommand("Object.ViewWindow"));
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown.back()[1].toUInt(), kReuseView | kBringToFront);
        QSignalSpy located(tree, &ivObjTree::LocateRequested);
        QVERIFY(tree->OnCommand("Object.Locate"));
        QCOMPARE(located.count(), 1);
        QCOMPARE(located.front()[0].toUInt(), 1u);
        QVERIFY(!tree->OnCommand("zoom.in"));  // not the tree's
    }
};

VANTREL_UI_TEST(tst_Trees);
#include "tst_Trees.moc"

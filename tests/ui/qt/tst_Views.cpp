#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <QTreeView>

#include "UiTest.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfDiagnostics.h"
#include "pdf/object/pdfObjectAccess.h"
#include "platform/ivImage2d.h"
#include "ui/panes/ivErrorBtn.h"
#include "ui/shell/ivCommands.h"
#include "ui/shell/ivWndMain.h"
#include "ui/views/ivWndDockView.h"
#include "ui/views/ivWndHEXViewer.h"
#include "ui/views/ivWndImageViewer.h"
#include "ui/views/ivWndViewer.h"

namespace {

// view-modes.pdf: 3 the page, 4 its contents, 5 a font, 6 a 4 x 2 grey image, 7 metadata.
const pdfObject* Object(ivPdf& doc, std::uint32_t num) {
    return ResolveRef(doc, {num, 0});
}

QStringList Actions(QMenu* menu) {
    QStringList out;
    for (QAction* a : menu->actions())
        if (!a->isSeparator()) out << a->objectName();
    return out;
}

std::shared_ptr<ivImage2d> GreyImage(std::uint32_t width, std::uint32_t height) {
    auto image = std::make_shared<ivImage2d>();
    image->Create(ivImage2d::kGray8, width, height);
    return image;
}

}  // namespace

class tst_Views : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { m_doc = OpenedTestFile("view-modes.pdf", m_control); }

    void modeChosenByWhatTheObjectIs() {
        ivWndDockView view(true);
        view.resize(700, 600);
        view.show();
        view.SetDocument(m_doc);

        view.ShowObject(Object(*m_doc, 6));
        QCOMPARE(view.Mode(), ivViewMode::Image);
        QVERIFY(view.ZoomButtonsShown());
        QVERIFY(view.ModeDropDownEnabled());
        QCOMPARE(view.InfoText(), QString("4 x 2 pixels, 8-bit grey"));
        QVERIFY(qobject_cast<ivWndImageViewer*>(view.ModeView())->Image());
        QVERIFY(view.OnCommand("zoom.200"));
        QCOMPARE(qobject_cast<ivWndImageViewer*>(view.ModeView())->Zoom(), 2.0f);

        view.ShowObject(Object(*m_doc, 3));  // a page shows its contents only
        QCOMPARE(view.Mode(), ivViewMode::Content);
        QVERIFY(!view.ModeDropDownEnabled());
        QVERIFY(!view.ZoomButtonsShown());
        const auto* contents = qobject_cast<ivWndViewer*>(view.ModeView());
        QVERIFY(contents && contents->Text().lines.size() >= 6);
        QCOMPARE(QString::fromStdString(contents->Text().LineText(1)), QString("40 0 0 20 10 10 cm"));
        view.OnCommand("View.HEX");
        QCOMPARE(view.Mode(), ivViewMode::Content);

        view.ShowObject(Object(*m_doc, 5));
        QVERIFY(!view.ModePartShown());
        QCOMPARE(view.Mode(), ivViewMode::None);
        QCOMPARE(QString::fromStdString(view.ObjectViewer()->Text().LineText(1)), QString("  /Type /Font"));

        view.ShowObject(Object(*m_doc, 7));
        QCOMPARE(view.Mode(), ivViewMode::Hex);
        QCOMPARE(view.InfoText(), QString("Stream Length: 37"));
        QCOMPARE(qobject_cast<ivWndHEXViewer*>(view.ModeView())->Bytes().size(), std::size_t(37));

        view.ShowObject(Object(*m_doc, 4));
        QCOMPARE(view.Mode(), ivViewMode::Content);
        QVERIFY(view.ModeDropDownEnabled());
    }

    void rawBytesAreTheObjectAsStored() {
        ivWndDockView view(true);
        view.SetDocument(m_doc);
        view.ShowObject(Object(*m_doc, 7));
        QVERIFY(view.OnCommand("View.RAW"));
        QCOMPARE(view.Mode(), ivViewMode::Raw);
        const auto& bytes = qobject_cast<ivWndHEXViewer*>(view.ModeView())->Bytes();
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(bytes.data()), 7), QByteArray("7 0 obj"));
        QVERIFY(view.InfoText().endsWith("bytes at offset 638 (0x27E) in the file"));
        // A font has no mode part until its raw bytes are asked for.
        view.ShowObject(Object(*m_doc, 5));
        QVERIFY(view.OnCommand("View.mode.RAW"));
        QVERIFY(view.ModePartShown());
        QCOMPARE(qobject_cast<ivWndHEXViewer*>(view.ModeView())->Bytes().front(), std::uint8_t('5'));
    }

    void splitterPositionOutlivesModeChanges() {
        ivWndDockView view(true);
        view.resize(700, 600);
        view.show();
        view.SetDocument(m_doc);
        view.ShowObject(Object(*m_doc, 7));
        QCOMPARE(view.ObjectViewer()->height(), view.SplitterPosition());
        QVERIFY(view.SplitterPosition() > 100);
        view.SetSplitterPosition(210);
        view.OnCommand("View.IMG");
        QCOMPARE(view.Mode(), ivViewMode::Image);
        view.OnCommand("View.HEX");
        QCOMPARE(view.SplitterPosition(), 210);
        view.ShowObject(Object(*m_doc, 5));  // no mode part
        view.ShowObject(Object(*m_doc, 6));
        QCOMPARE(view.SplitterPosition(), 210);
        QCOMPARE(view.ObjectViewer()->height(), 210);
        view.SetSplitterPosition(1000);  // held to the limits
        QCOMPARE(view.SplitterPosition(), 320);
    }

    void showObjectReusesViewsAndMakesClosableTabs() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        QCOMPARE(window.OpenDocument(TestFile("view-modes.pdf"), 0), kOk);
        ivPdf& doc = *window.Session().Document();
        QTabWidget* centre = window.Centre();
        window.ShowObject(Object(doc, 6), kReuseView | kBringToFront | kSharedView);
        QCOMPARE(centre->count(), 1);
        QCOMPARE(centre->tabText(0), QString("6 0 R"));
        QVERIFY(centre->tabToolTip(0).contains("6 0 R"));
        // Ctrl: a new tab, unless a tab shows the object already.
        window.ShowObject(Object(doc, 5), kReuseView | kBringToFront);
        QCOMPARE(centre->count(), 2);
        auto* fontView = qobject_cast<ivWndDockView*>(centre->currentWidget());
        QVERIFY(fontView && fontView->Closable() && !window.SharedView()->Closable());
        QCOMPARE(centre->tabText(1), QString("5 0 R"));
        centre->setCurrentIndex(0);
        window.ShowObject(Object(doc, 5), kReuseView | kBringToFront | kSharedView);
        QCOMPARE(centre->count(), 2);
        QCOMPARE(centre->currentWidget(), fontView);
        window.ShowObject(Object(doc, 6), kReuseView | kBringToFront);  // in the shared view
        QCOMPARE(centre->count(), 2);
        QCOMPARE(centre->currentWidget(), window.SharedView());

        std::unique_ptr<QMenu> shared(window.SharedView()->BuildTabMenu(nullptr));
        std::unique_ptr<QMenu> own(fontView->BuildTabMenu(nullptr));
        QVERIFY(!Actions(shared.get()).contains("edit.close"));
        QVERIFY(Actions(shared.get()).contains("File.SaveImageToFile"));
        QVERIFY(Actions(own.get()).contains("edit.close"));
        QVERIFY(!Actions(own.get()).contains("File.SaveImageToFile"));
        ivWndDockView::RestoreTabMenu();
        QVERIFY(fontView->OnTabCommand("edit.close"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(centre->count(), 1);
    }

    void aChosenMessageLeadsToItsObject() {
        ivIOControl control;
        {
            ivObjIDScope scope(&control, 5, 0, "Accessing Object");
            ivStdScope inner(&control, "Reading the widths");
            control.AddMessage("Widths must be an array");
        }
        control.AddMessage("Outside any object");
        ivErrorBtn list(control);
        QSignalSpy chosen(&list, &ivErrorBtn::ObjectChosen);
        QAbstractItemModel* model = list.Tree()->model();
        const QModelIndex scope = model->index(0, 0);
        const QModelIndex message = model->index(0, 0, model->index(0, 0, scope));
        QCOMPARE(message.data().toString(), QString("Widths must be an array"));
        Q_EMIT list.Tree()->activated(message);
        QCOMPARE(chosen.count(), 1);
        QCOMPARE(chosen[0][0].toUInt(), 5u);
        Q_EMIT list.Tree()->activated(model->index(1, 0));
        QCOMPARE(chosen.count(), 1);
    }

    void imageViewerZoomsCentresAndReusesScaleTables() {
        ivWndImageViewer viewer;
        viewer.resize(400, 300);
        viewer.show();
        QApplication::clipboard()->setText("kept");
        QVERIFY(viewer.OnCommand("edit.copy"));  // no image: nothing happens
        QVERIFY(viewer.OnCommand("File.SaveImageToFile"));
        QCOMPARE(QApplication::clipboard()->text(), QString("kept"));

        viewer.SetImage(GreyImage(100, 120));
        QCOMPARE(viewer.Zoom(), 1.0f);  // it fits
        QCOMPARE(viewer.horizontalScrollBar()->maximum(), 0);
        QCOMPARE(viewer.verticalScrollBar()->maximum(), 0);
        QCOMPARE(viewer.ImageOrigin(),
                 QPoint((viewer.viewport()->width() - 100) / 2, (viewer.viewport()->height() - 120) / 2));
        viewer.grab();
        QCOMPARE(viewer.ScaleTableBuilds(), 1);
        viewer.SetZoom(1.0f);
        viewer.grab();
        QCOMPARE(viewer.ScaleTableBuilds(), 1);

        viewer.OnCommand("zoom.400");
        QCOMPARE(viewer.Zoom(), 3.0f);
        viewer.OnCommand("zoom.300");
        viewer.grab();
        QCOMPARE(viewer.ScaleTableBuilds(), 2);
        std::unique_ptr<QMenu> menu(viewer.BuildContextMenu(nullptr));
        QStringList checked;
        for (QAction* a : menu->actions())
            if (a->isChecked()) checked << a->objectName();
        QCOMPARE(checked, QStringList{"zoom.300"});
        QVERIFY(viewer.verticalScrollBar()->maximum() > 0);  // 300 x 360 in a 400 x 300 window
        QCOMPARE(viewer.horizontalScrollBar()->maximum(), 0);

        viewer.OnCommand("edit.copy");
        QCOMPARE(QApplication::clipboard()->image().size(), QSize(100, 120));
    }

    void largeImageIsFittedAndPanned() {
        ivWndImageViewer viewer;
        viewer.resize(400, 300);
        viewer.show();
        viewer.SetImage(GreyImage(4000, 1000));
        QVERIFY(viewer.Zoom() < 0.1f);
        viewer.OnCommand("zoom.100");
        QCOMPARE(viewer.ImageOrigin(), QPoint(0, 0));
        QTest::mousePress(viewer.viewport(), Qt::LeftButton, {}, QPoint(200, 150));
        QTest::mouseMove(viewer.viewport(), QPoint(150, 120));
        QTest::mouseRelease(viewer.viewport(), Qt::LeftButton, {}, QPoint(150, 120));
        QCOMPARE(viewer.ImageOrigin(), QPoint(-50, -30));
    }

    void textViewerSelectsAndCopiesTokens() {
        ivWndDockView view(true);
        view.SetDocument(m_doc);
        view.ShowObject(Object(*m_doc, 5));
        ivWndViewer* viewer = view.ObjectViewer();
        viewer->Select(1, 2);
        QCOMPARE(viewer->SelectedText(false), QString("/Type /Font"));
        QVERIFY(viewer->OnCommand("edit.copy"));
        QCOMPARE(QApplication::clipboard()->text(), QString("/Type /Font"));
        QVERIFY(viewer->OnCommand("edit.copyComments"));
        QVERIFY(QApplication::clipboard()->text().startsWith("/Type\n    Type\n    Name, required: Font."));
    }

private:
    ivIOControl m_control;
    std::shared_ptr<ivPdf> m_doc;
};

VANTREL_UI_TEST(tst_Views);
#include "tst_Views.moc"

#include <QAction>
#include <QDockWidget>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>

#include "UiTest.h"
#include "pdf/analysis/ivPdf.h"
#include "ui/panes/ivBaseTreeFrame.h"
#include "ui/panes/ivObjTree.h"
#include "ui/panes/ivXREFFrame.h"
#include "ui/shell/ivCommands.h"
#include "ui/shell/ivWndMain.h"

namespace {

QMenu* RecentMenu(ivWndMain& window) {
    for (QAction* top : window.menuBar()->actions())
        for (QAction* a : top->menu()->actions())
            if (a->menu() && a->menu()->objectName() == "File.Recent") return a->menu();
    return nullptr;
}

QStringList Texts(QMenu* menu) {
    QStringList out;
    for (QAction* a : menu->actions()) out << a->text();
    return out;
}

}  // namespace

class tst_MainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startsEmptyUnderTheProductTitle() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        QCOMPARE(window.windowTitle(), QString("Vantrel 1.2"));
        QVERIFY(window.StatusTexts().isEmpty());
        QVERIFY(!window.WarningButton());
        QCOMPARE(window.Centre()->count(), 1);
        QCOMPARE(window.Centre()->tabText(0), QString("View"));
        QCOMPARE(window.XrefFrame()->windowTitle(), QString("XREF table"));
        QCOMPARE(window.XrefFrame()->SearchBox()->placeholderText(), QString("Search Objects"));
        QStringList left;
        for (ivBaseTreeFrame* f : window.LeftFrames()) left << f->windowTitle();
        QCOMPARE(left, (QStringList{"Document Tree", "Pages", "Fonts", "Images"}));
    }

    void openAndCloseSetTitleAndStatus() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        QCOMPARE(window.OpenDocument(TestFile("classic-good.pdf"), kAddToRecent), kOk);
        QCOMPARE(window.windowTitle(), QString("classic-good.pdf - Vantrel 1.2"));
        QCOMPARE(window.StatusTexts(), (QStringList{"1.4 (Acrobat 5.0)", "File Size: 754 bytes", "1 Page"}));
        for (ivBaseTreeFrame* f : window.LeftFrames()) QVERIFY(f->Document() == window.Session().Document());
        QVERIFY(window.XrefFrame()->Document() == window.Session().Document());
        window.OnCommand("file.close");
        QCOMPARE(window.windowTitle(), QString("Vantrel 1.2"));
        QVERIFY(window.StatusTexts().isEmpty());
        QVERIFY(!window.XrefFrame()->Document());
    }

    void aFailedOpenLeavesTheDocumentAndSaysSo() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        window.OpenDocument(TestFile("classic-good.pdf"), kAddToRecent);
        QCOMPARE(window.OpenDocument(TestFile("no-such-file.pdf"), kAddToRecent), kFail);
        QCOMPARE(window.windowTitle(), QString("Vantrel 1.2"));
        QVERIFY(window.Session().Document());
        QCOMPARE(window.StatusTexts().size(), 3);
        QVERIFY(window.WarningButton() && !window.WarningButton()->isHidden());
    }

    void warningButtonFollowsTheMessages() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        window.OpenDocument(TestFile("classic-good.pdf"), kAddToRecent);
        QVERIFY(!window.WarningButton());  // no irregularity, no button
        window.OpenDocument(TestFile("trailer-unknown-key.pdf"), kAddToRecent);
        QToolButton* button = window.WarningButton();
        QVERIFY(button && !button->isHidden());
        QCOMPARE(button->toolTip(), QString("Show Warning Messages"));
        // The drop-down lists the messages, then "Clear Messages".
        QMenu* menu = button->menu();
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 3);
        QCOMPARE(menu->actions()[2]->text(), QString("Clear Messages"));
        menu->actions()[2]->trigger();
        QVERIFY(button->isHidden());
        window.OnCommand("File.Reload");
        QVERIFY(!button->isHidden());
        window.OnCommand("File.Close");  // closing clears the messages too
        QVERIFY(button->isHidden());
    }

    void recentFilesDropDownAndItsLastFilling() {
        ScratchSettings s;
        {
            ivWndMain window(s.Settings(), *ivCommands::Instance());
            QMenu* recent = RecentMenu(window);
            QVERIFY(recent);
            Q_EMIT recent->aboutToShow();
            QCOMPARE(Texts(recent), QStringList{"No Recent Files"});
            window.OpenDocument(TestFile("classic-good.pdf"), kAddToRecent);
            window.OpenDocument(TestFile("img-gray-8bit.pdf"), kAddToRecent);
            Q_EMIT recent->aboutToShow();
            QCOMPARE(Texts(recent),
                     (QStringList{TestFile("img-gray-8bit.pdf"), TestFile("classic-good.pdf")}));
            recent->actions()[1]->trigger();
            QCOMPARE(window.windowTitle(), QString("classic-good.pdf - Vantrel 1.2"));
            window.Session().Recent().Remove(TestFile("classic-good.pdf").toStdString());
            window.Session().Recent().Remove(TestFile("img-gray-8bit.pdf").toStdString());
            Q_EMIT recent->aboutToShow();  // an empty list leaves the last filling
            QCOMPARE(recent->actions().size(), 2);
            window.Session().Recent().Add(TestFile("classic-good.pdf").toStdString());
        }
        // Saved when the window goes.
        QCOMPARE(s.Settings().Store().value("files/MRU/0").toString(), TestFile("classic-good.pdf"));
        QVERIFY(!s.Settings().Store().contains("files/MRU/1"));
    }

    void droppingFilesOpensTheFirst() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        QVERIFY(window.OpenDropped({QUrl::fromLocalFile(TestFile("img-gray-8bit.pdf")),
                                    QUrl::fromLocalFile(TestFile("classic-good.pdf")),
                                    QUrl::fromLocalFile(TestFile("info-hex.pdf"))}));
        QCOMPARE(window.windowTitle(), QString("img-gray-8bit.pdf - Vantrel 1.2"));
        QCOMPARE(window.Session().Recent().Entries().size(), std::size_t(1));
    }

    void activeTabChoosesTheFrontPane() {
        ScratchSettings s;
        s.Settings().SetActiveTab(2);
        ivWndMain fonts(s.Settings(), *ivCommands::Instance());
        fonts.show();
        QVERIFY(QTest::qWaitForWindowExposed(&fonts));
        QVERIFY(!fonts.LeftFrames()[2]->visibleRegion().isEmpty());
        QVERIFY(fonts.LeftFrames()[0]->visibleRegion().isEmpty());
        s.Settings().SetActiveTab(7);  // anything else: the Document Tree
        ivWndMain tree(s.Settings(), *ivCommands::Instance());
        tree.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tree));
        QVERIFY(!tree.LeftFrames()[0]->visibleRegion().isEmpty());
    }

    void viewCommandsActivatePanes() {
        ScratchSettings s;
        ivWndMain window(s.Settings(), *ivCommands::Instance());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.OnCommand("View.images");
        QVERIFY(window.LeftFrames()[3]->Tree()->hasFocus());
        window.OnCommand("Edit.find");
        QVERIFY(window.XrefFrame()->SearchBox()->hasFocus());
        // Keys work without a menu: Alt+D is the Document Tree.
        QTest::keyClick(&window, Qt::Key_D, Qt::AltModifier);
        QVERIFY(window.LeftFrames()[0]->Tree()->hasFocus());
    }
};

VANTREL_UI_TEST(tst_MainWindow);
#include "tst_MainWindow.moc"

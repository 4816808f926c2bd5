#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include "UiTest.h"
#include "ui/shell/ivCommands.h"

class tst_Commands : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void actionsCarryTextsKeysAndNames() {
        ivCommands& c = *ivCommands::Instance();
        QAction* open = c.Action("file.OPEN");  // compared without case
        QVERIFY(open);
        QCOMPARE(open->objectName(), QString("File.Open"));
        QCOMPARE(open->text(), QString("&Open..."));  // the display attribute is not shown
        QCOMPARE(open->toolTip(), QString("Open PDF File"));
        QCOMPARE(open->shortcut(), QKeySequence("Ctrl+O"));
        QVERIFY(!open->icon().isNull());
        QCOMPARE(c.Action("File.Reload")->shortcuts(),
                 (QList<QKeySequence>{QKeySequence("Ctrl+R"), QKeySequence("F5")}));
        QCOMPARE(c.Action("Help.Keys")->text(), QString("Keyboard &Shrorcuts..."));
        QVERIFY(c.Action("View.Missing") == nullptr);
    }

    void checkGroupsAreExclusive() {
        ivCommands& c = *ivCommands::Instance();
        QAction* hex = c.Action("View.HEX");
        QAction* image = c.Action("View.IMG");
        QVERIFY(hex->isCheckable() && image->isCheckable());
        QVERIFY(hex->actionGroup() && hex->actionGroup() == image->actionGroup());
        hex->setChecked(true);
        image->setChecked(true);
        QVERIFY(!hex->isChecked());
    }

    void menusComeFromTheTable() {
        ivCommands& c = *ivCommands::Instance();
        QMenuBar bar;
        c.BuildMenuBar(&bar);
        QStringList titles;
        for (QAction* a : bar.actions()) titles << a->text();
        QCOMPARE(titles, (QStringList{"&FILE", "&TOOLS", "&HELP"}));
        QMenu* file = bar.actions()[0]->menu();
        QStringList items;
        for (QAction* a : file->actions()) items << (a->isSeparator() ? "|" : a->text());
        QCOMPARE(items, (QStringList{"&Open...", "&Reload", "Close", "|", "Open &Recent", "|",
                                     "&Properties...", "|", "E&xit"}));
        // The recent files' drop-down shows its one item until it is filled.
        QMenu* recent = file->actions()[4]->menu();
        QVERIFY(recent);
        QCOMPARE(recent->actions().size(), 1);
        QCOMPARE(recent->actions()[0]->text(), QString("No Recent Files"));

        std::unique_ptr<QMenu> context(c.BuildMenu("Context.Stream", nullptr));
        QVERIFY(context);
        QCOMPARE(context->actions().size(), 4);
        QVERIFY(c.BuildMenu("Context.Nothing", nullptr) == nullptr);
    }

    void triggeringAnnouncesTheName() {
        ivCommands& c = *ivCommands::Instance();
        QString seen;
        auto connection =
            connect(&c, &ivCommands::Triggered, this, [&](const QString& name) { seen = name; });
        c.Action("zoom.in")->trigger();
        disconnect(connection);
        QCOMPARE(seen, QString("zoom.in"));
    }

    void aMissingTableLeavesNoMenus() {
        ivCommands c;
        QVERIFY(!c.Load(":/no-such-table.txt"));
        QMenuBar bar;
        c.BuildMenuBar(&bar);
        QVERIFY(bar.actions().isEmpty());
        QVERIFY(c.Actions().isEmpty());
        QVERIFY(!c.LoadText("command broken text=\"open\n"));
    }
};

VANTREL_UI_TEST(tst_Commands);
#include "tst_Commands.moc"

#include <QAbstractItemModelTester>
#include <QTest>
#include <QTreeView>

#include "UiTest.h"
#include "platform/ivIOControl.h"
#include "platform/ivScope.h"
#include "ui/panes/ivErrorBtn.h"
#include "ui/panes/ivMessageModel.h"

namespace {

// "Reading XREF table" holding three messages, one of them inside an object scope, and one
// message outside every scope.
void Report(ivIOControl& control) {
    {
        ivStdScope section(&control, "Reading XREF table at 10 (0xah)");
        control.AddMessage("first");
        {
            ivStdScope object(&control, "Accessing Object 3 0 R");
            control.AddMessage("inner");
        }
        control.AddMessage("last");
    }
    control.AddMessage("outside");
}

}  // namespace

class tst_MessageList : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void scopesUnfoldToWhatWasReportedInside() {
        ivIOControl control;
        ivMessageModel model(&control.Messages());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        Report(control);
        // The model reads the sink's tree as it is; a new model sees the messages.
        ivMessageModel filled(&control.Messages());
        QAbstractItemModelTester filledTester(&filled,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(filled.rowCount(), 2);
        const QModelIndex section = filled.index(0, 0);
        QCOMPARE(section.data().toString(), QString("Reading XREF table at 10 (0xah)"));
        QCOMPARE(filled.rowCount(section), 3);
        QCOMPARE(filled.index(0, 0, section).data().toString(), QString("first"));
        const QModelIndex object = filled.index(1, 0, section);
        QCOMPARE(object.data().toString(), QString("Accessing Object 3 0 R"));
        QCOMPARE(filled.rowCount(object), 1);
        const QModelIndex inner = filled.index(0, 0, object);
        QCOMPARE(inner.data().toString(), QString("inner"));
        QCOMPARE(filled.parent(inner), object);
        QCOMPARE(filled.parent(object), section);
        QCOMPARE(filled.index(1, 0).data().toString(), QString("outside"));
        QCOMPARE(filled.rowCount(filled.index(1, 0)), 0);
    }

    void dropDownSizeFollowsItsContent() {
        QCOMPARE(ivErrorBtn::DropDownSize({300, 40}), QSize(300, 40));
        QCOMPARE(ivErrorBtn::DropDownSize({100, 40}), QSize(500, 40));  // narrower than 101: 500
        QCOMPARE(ivErrorBtn::DropDownSize({499, 5}), QSize(499, 16));
        QCOMPARE(ivErrorBtn::DropDownSize({500, 900}), QSize(500, 600));
        // A message of 2,000 characters makes the drop-down 500 pixels wide.
        ivIOControl control;
        control.AddMessage(std::string(2000, 'w'));
        ivErrorBtn list(control);
        QCOMPARE(list.sizeHint().width(), 500);
        ivIOControl some;
        some.AddMessage("Object 12 0 R was not found, a message of middling length");
        ivErrorBtn middling(some);
        QVERIFY(middling.sizeHint().width() > 100 && middling.sizeHint().width() < 500);
        QVERIFY(middling.sizeHint().height() >= 16);
        ivIOControl few;
        few.AddMessage("short");
        QCOMPARE(ivErrorBtn(few).sizeHint().width(), 500);  // below 101 pixels: 500
    }

    void unfoldingMakesTheDropDownTaller() {
        ivIOControl control;
        Report(control);
        ivErrorBtn list(control);
        list.show();
        const int folded = list.sizeHint().height();
        list.Tree()->expandAll();
        QVERIFY(list.sizeHint().height() > folded);
    }
};

VANTREL_UI_TEST(tst_MessageList);
#include "tst_MessageList.moc"

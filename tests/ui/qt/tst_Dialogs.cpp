#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>

#include "UiTest.h"
#include "pdf/analysis/ivPdf.h"
#include "platform/ivFileStream.h"
#include "ui/shell/CInfoDlg.h"
#include "ui/shell/CKeysDialog.h"
#include "ui/shell/COptionsDlg.h"
#include "ui/shell/CPassDialog.h"
#include "ui/shell/CSaveDialog.h"
#include "ui/shell/ivCommands.h"

namespace {

struct OpenedDoc {
    ivIOControl control;
    std::unique_ptr<ivPdf> doc;
    explicit OpenedDoc(const QString& path) {
        doc = std::make_unique<ivPdf>(ivFileStream::Open(path.toStdString()), path.toStdString(), &control);
        doc->Open();
        doc->Analyse();
    }
};

QStringList FilesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}

}  // namespace

class tst_Dialogs : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void optionsShowAndWriteTheSettings() {
        ScratchSettings s;
        s.Settings().SetActiveTab(7);
        COptionsDlg dialog(s.Settings());
        QCOMPARE(dialog.windowTitle(), QString("Vantrel 1.2 Options"));
        QVERIFY(dialog.LoadLastBox()->isChecked());
        QCOMPARE(dialog.ActiveTabList()->currentIndex(), -1);  // an unknown tab selects nothing
        QVERIFY(!dialog.ExtraChecksBox()->isChecked());
        dialog.Apply();
        QCOMPARE(s.Settings().ActiveTab(), 7);  // left as it was
        dialog.LoadLastBox()->setChecked(false);
        dialog.ActiveTabList()->setCurrentIndex(1);
        dialog.ExtraChecksBox()->setChecked(true);
        dialog.Apply();
        QCOMPARE(s.Settings().LoadLast(), false);
        QCOMPARE(s.Settings().ActiveTab(), 1);
        QCOMPARE(s.Settings().ExtraChecks(), true);
    }

    void keysListsEveryKeyedCommand() {
        CKeysDialog dialog(ivCommands::Instance()->Table());
        QCOMPARE(dialog.windowTitle(), QString("Keyboard Shortcuts"));
        QTreeWidget* list = dialog.List();
        QCOMPARE(list->headerItem()->text(0), QString("Key"));
        QCOMPARE(list->headerItem()->text(1), QString("Description"));
        QCOMPARE(list->topLevelItemCount(), 9);
        QStringList rows;
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            rows << list->topLevelItem(i)->text(0) + " " + list->topLevelItem(i)->text(1);
        QVERIFY(rows.contains("Ctrl+R, F5 Reload File"));
        QVERIFY(rows.contains("Alt+P Activate  Pages List"));
        dialog.show();
        QCOMPARE(list->columnWidth(0), 96);
    }

    void passwordDialogAsksWithTheFilesName() {
        CPassDialog dialog("secret.pdf", "tried");
        QCOMPARE(dialog.windowTitle(), QString("Password"));
        QCOMPARE(dialog.Password(), QString("tried"));
        QVERIFY(dialog.findChild<QLineEdit*>()->echoMode() == QLineEdit::Password);
        bool found = false;
        for (QLabel* label : dialog.findChildren<QLabel*>())
            found |= label->text() == "'secret.pdf' is protected. Please enter a Document Open Password.";
        QVERIFY(found);
    }

    void propertiesShowTheDocument() {
        OpenedDoc d(TestFile("info-literal.pdf"));
        CInfoDlg dialog(*d.doc);
        QCOMPARE(dialog.windowTitle(), QString("Document Properties"));
        QCOMPARE(dialog.findChild<QLineEdit*>("title")->text(), QString("Plain title"));
        QCOMPARE(dialog.findChild<QLineEdit*>("version")->text(), QString("1.4 (Acrobat 5.0)"));
        QVERIFY(dialog.findChild<QLineEdit*>("size")->text().endsWith(" bytes"));
        bool noSecurity = false;
        for (QLabel* label : dialog.findChildren<QLabel*>()) noSecurity |= label->text() == "No Security";
        QVERIFY(noSecurity);
    }

    void exportChecksTheFolderFirst() {
        ScratchSettings s;
        OpenedDoc d(TestFile("img-export-mixed.pdf"));
        CSaveDialog dialog(*d.doc, s.Settings());
        QStringList warnings;
        dialog.SetWarningHandler([&](const QString& text) { warnings << text; });
        dialog.FolderEdit()->clear();
        dialog.accept();
        QCOMPARE(warnings, QStringList{"Please specify output folder!"});
        QVERIFY(!dialog.Running());
        const QString blocked = TestFile("classic-good.pdf") + "/images";  // below a file
        dialog.FolderEdit()->setText(blocked);
        dialog.accept();
        QCOMPARE(warnings.last(), "Can't create folder " + blocked);
        QVERIFY(!dialog.Running());
    }

    void exportWritesTheFilesAndRemembersTheChoices() {
        ScratchSettings s;
        OpenedDoc d(TestFile("img-export-mixed.pdf"));
        QTemporaryDir out;
        const QString folder = out.filePath("made/by/the/dialog");
        CSaveDialog dialog(*d.doc, s.Settings());
        QSignalSpy finished(&dialog, &CSaveDialog::Finished);
        dialog.FolderEdit()->setText(folder);
        dialog.KeepJpegBox()->setChecked(true);
        dialog.NamingList()->setCurrentIndex(0);
        dialog.accept();
        QVERIFY(finished.wait(20000));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        // The JPEG and CCITT data copied out, the third image decoded and written as JPEG.
        QCOMPARE(FilesIn(folder), (QStringList{"12 0.jpg", "13 0.jpg", "3 0.jpg"}));
        QCOMPARE(dialog.Outcome().images, 4u);
        const pdfExportSettings stored = s.Settings().Export();
        QCOMPARE(QString::fromStdString(stored.si_Folder), folder);
        QCOMPARE(stored.si_keepJpeg, true);
        QCOMPARE(stored.si_name, 0);
        // The next dialog starts from them; the format list offers the export filters.
        CSaveDialog again(*d.doc, s.Settings());
        QCOMPARE(again.FolderEdit()->text(), folder);
        QVERIFY(again.KeepJpegBox()->isChecked());
        QCOMPARE(again.FormatList()->currentText(), QString("jpg - JPEG"));
    }
};

VANTREL_UI_TEST(tst_Dialogs);
#include "tst_Dialogs.moc"

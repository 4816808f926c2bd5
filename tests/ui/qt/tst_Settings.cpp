#include <QSettings>
#include <QTest>

#include "UiTest.h"

class tst_Settings : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void defaultsWhenNothingIsStored() {
        ScratchSettings s;
        QCOMPARE(s.Settings().LoadLast(), true);
        QCOMPARE(s.Settings().ActiveTab(), 0);
        QCOMPARE(s.Settings().Theme(), QString("white"));
        QCOMPARE(s.Settings().ExtraChecks(), false);
        const pdfExportSettings e = s.Settings().Export();
        QCOMPARE(e.si_Folder, std::string());
        QCOMPARE(e.si_keepJpeg, false);
        QCOMPARE(e.si_name, 0);
        QCOMPARE(e.si_format, std::string("jpeg"));
    }

    void valuesAreWrittenUnderTheirKeys() {
        ScratchSettings s;
        s.Settings().SetLoadLast(false);
        s.Settings().SetActiveTab(3);
        s.Settings().SetExtraChecks(true);
        s.Settings().SetTheme(QString(70, 'd'));
        s.Settings().SetExport({"/out", true, 1, "png"});
        QSettings& raw = s.Settings().Store();
        QCOMPARE(raw.value("options/loadLast").toInt(), 0);
        QCOMPARE(raw.value("options/activeTab").toInt(), 3);
        QCOMPARE(raw.value("options/extraChecks").toInt(), 1);
        QCOMPARE(raw.value("options/theme").toString().size(), 64);  // at most 64 characters
        QCOMPARE(raw.value("tools/si_Folder").toString(), QString("/out"));
        QCOMPARE(raw.value("tools/si_keepJpeg").toInt(), 1);
        QCOMPARE(raw.value("tools/si_name").toInt(), 1);
        QCOMPARE(raw.value("tools/si_format").toString(), QString("png"));
        s.Settings().Recent().Write("0", "a.pdf");
        QCOMPARE(raw.value("files/MRU/0").toString(), QString("a.pdf"));
    }

    void unreadableValuesGiveDefaults() {
        ScratchSettings s;
        s.Settings().Store().setValue("options/loadLast", "yes please");
        s.Settings().Store().setValue("options/activeTab", "");
        QCOMPARE(s.Settings().LoadLast(), true);
        QCOMPARE(s.Settings().ActiveTab(), 0);
    }
};

VANTREL_UI_TEST(tst_Settings);
#include "tst_Settings.moc"

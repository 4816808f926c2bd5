#include <QFile>
#include <QTest>

#include "UiTest.h"
#include "pdf/analysis/ivPdf.h"
#include "pdf/object/pdfDiagnostics.h"
#include "ui/shell/ivDocSession.h"

namespace {

// A window that records what the session asks of it.
class RecordingView : public ivSessionView {
public:
    std::string title;
    std::vector<std::vector<std::string>> statuses;
    std::vector<std::string> prompts;
    bool answerYes = false;
    std::shared_ptr<ivPdf> panes;
    int busy = 0;

    void SetTitle(const std::string& t) override { title = t; }
    void SetStatus(const std::vector<std::string>& fields) override { statuses.push_back(fields); }
    void SetBusy(bool on) override { busy += on ? 1 : -1; }
    void ResetViews(const std::shared_ptr<ivPdf>&) override {}
    void FillPanes(const std::shared_ptr<ivPdf>& doc) override { panes = doc; }
    bool AskMissingFile(const std::string& text) override {
        prompts.push_back(text);
        return answerYes;
    }
    ivPasswordPrompt* PasswordPrompt() override { return nullptr; }
};

// A session over a recording window and a sink of its own.
struct SessionFixture {
    RecordingView view;
    ivDPFControl control;
    ivDocSession session{view, control};
};

std::string Path(const char* name) {
    return TestFile(name).toStdString();
}

}  // namespace

class tst_Session : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void openShowsStepsThenTheThreeFields() {
        SessionFixture f;
        auto& [view, control, session] = f;
        QCOMPARE(session.OpenDocument(Path("classic-good.pdf"), kAddToRecent), kOk);
        QCOMPARE(view.title, std::string("classic-good.pdf - Vantrel 1.2"));
        QCOMPARE(view.statuses.size(), std::size_t(3));
        QCOMPARE(view.statuses[0], std::vector<std::string>{"Opening..."});
        QCOMPARE(view.statuses[1], std::vector<std::string>{"Analizing..."});
        QCOMPARE(view.statuses[2],
                 (std::vector<std::string>{"1.4 (Acrobat 5.0)", "File Size: 754 bytes", "1 Page"}));
        QCOMPARE(view.busy, 0);
        QVERIFY(view.panes == session.Document());
        QCOMPARE(session.Recent().Entries().size(), std::size_t(1));

        session.Close();
        QCOMPARE(view.title, std::string("Vantrel 1.2"));
        QCOMPARE(view.statuses.back(), std::vector<std::string>{});
        QVERIFY(!view.panes && !session.Document());
        QCOMPARE(session.Recent().Entries().size(), std::size_t(1));  // closing keeps the list
    }

    void anEmptyDocumentHasNoPages() {
        SessionFixture f;
        auto& [view, control, session] = f;
        session.OpenDocument(Path("tree-pages-is-page.pdf"), 0);
        QCOMPARE(view.statuses.back()[2], std::string("0 Pages"));
        QVERIFY(control.MessageCount() > 0);
        QVERIFY(session.Recent().Entries().empty());  // not asked to add it
    }

    void aFailedOpenKeepsTheDocumentUnderTheBareTitle() {
        SessionFixture f;
        auto& [view, control, session] = f;
        session.OpenDocument(Path("classic-good.pdf"), kAddToRecent);
        const std::shared_ptr<ivPdf> shown = session.Document();
        const std::string missing = Path("no-such-file.pdf");
        QCOMPARE(session.OpenDocument(missing, kAddToRecent), kFail);
        QVERIFY(session.Document() == shown);
        QCOMPARE(view.title, std::string("Vantrel 1.2"));
        QVERIFY(view.prompts.empty());  // not asked to prompt
        QCOMPARE(control.MessageCount(), std::size_t(1));
        QCOMPARE(control.Messages().children.back()->text, "Can't open file " + missing);
        QCOMPARE(session.Recent().Entries().size(), std::size_t(1));
    }

    void reloadingADeletedFileOffersItsRemoval() {
        QTemporaryDir dir;
        const QString copy = dir.filePath("gone.pdf");
        QVERIFY(QFile::copy(TestFile("classic-good.pdf"), copy));
        SessionFixture f;
        auto& [view, control, session] = f;
        session.OpenDocument(copy.toStdString(), kAddToRecent);
        session.OpenDocument(Path("img-gray-8bit.pdf"), kAddToRecent);
        session.OpenRecent(session.Recent().Entries()[1].id);  // back to the copy
        const std::shared_ptr<ivPdf> shown = session.Document();
        QVERIFY(QFile::remove(copy));
        view.answerYes = true;
        session.Reload();
        QCOMPARE(view.prompts.size(), std::size_t(1));
        QVERIFY(view.prompts[0].find("\nDo you want delete file from the list?") != std::string::npos);
        QCOMPARE(session.Recent().Entries().size(), std::size_t(1));  // removed
        QVERIFY(session.Document() == shown);                         // the old analysis stays
        QCOMPARE(view.title, std::string("Vantrel 1.2"));
        // No is answered alike for a recent-files item that is gone: the entry stays.
        view.answerYes = false;
        session.Recent().Add(copy.toStdString());
        session.OpenRecent(session.Recent().Entries()[0].id);
        QCOMPARE(session.Recent().Entries().size(), std::size_t(2));
        session.OpenRecent(12345);  // no entry has it: nothing happens
        QCOMPARE(view.prompts.size(), std::size_t(2));
    }

    void reloadMakesANewAnalyserAndItsMessagesAgain() {
        SessionFixture f;
        auto& [view, control, session] = f;
        session.OpenDocument(Path("trailer-unknown-key.pdf"), kAddToRecent);
        const std::shared_ptr<ivPdf> first = session.Document();
        const std::size_t messages = control.MessageCount();
        QVERIFY(messages > 0);
        control.ClearMessages();
        session.Reload();
        QVERIFY(session.Document() != first);
        QCOMPARE(control.MessageCount(), messages);
    }

    void extraChecksApplyToFilesOpenedAfterwards() {
        SessionFixture f;
        auto& [view, control, session] = f;
        session.OpenDocument(Path("tree-listed-twice.pdf"), 0);
        QCOMPARE(control.MessageCount(), std::size_t(0));
        session.SetExtraChecks(true);
        session.Reload();
        QCOMPARE(control.MessageCount(), std::size_t(1));
    }
};

VANTREL_UI_TEST(tst_Session);
#include "tst_Session.moc"

// Runs every registered QTest class on the offscreen platform; the exit status is non-zero
// when any of them failed.
#include <QApplication>
#include <QTest>
#include <vector>

#include "UiTest.h"
#include "pdf/analysis/ivPdf.h"
#include "platform/ivFileStream.h"
#include "ui/shell/ivCommands.h"

namespace {

std::vector<UiTestFactory>& Factories() {
    static std::vector<UiTestFactory> factories;
    return factories;
}

}  // namespace

bool RegisterUiTest(UiTestFactory factory) {
    Factories().push_back(std::move(factory));
    return true;
}

QString TestFile(const QString& name) {
    return QString(VANTREL_TEST_DATA) + "/" + name;
}

std::shared_ptr<ivPdf> OpenedTestFile(const char* name, ivIOControl& control) {
    const QString path = TestFile(name);
    auto doc = std::make_shared<ivPdf>(ivFileStream::Open(path.toStdString()), path.toStdString(), &control);
    doc->Open();
    doc->Analyse();
    return doc;
}

ScratchSettings::ScratchSettings()
    : m_settings(std::make_unique<ivSettings>(m_dir.filePath("Vantrel.conf"))) {
    ivSettings::SetInstance(m_settings.get());
}

ScratchSettings::~ScratchSettings() {
    ivSettings::SetInstance(nullptr);
}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ivCommands commands;
    commands.Load(":/commands.txt");
    ivCommands::SetInstance(&commands);
    int failed = 0;
    for (const UiTestFactory& make : Factories()) {
        std::unique_ptr<QObject> test = make();
        failed += QTest::qExec(test.get(), argc, argv) != 0;
    }
    return failed;
}

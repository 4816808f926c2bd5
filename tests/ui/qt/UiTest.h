#pragma once
#include <QObject>
#include <QString>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include "ui/shell/ivSettings.h"

// The Qt tests are QTest classes in one program; each file registers its class.
using UiTestFactory = std::function<std::unique_ptr<QObject>()>;
bool RegisterUiTest(UiTestFactory factory);
#define VANTREL_UI_TEST(Class) \
    static const bool Class##Registered = RegisterUiTest([] { return std::make_unique<Class>(); })

class ivIOControl;
class ivPdf;

// A file of tests/data.
QString TestFile(const QString& name);
// A file of tests/data, opened and analysed, reporting to `control`.
std::shared_ptr<ivPdf> OpenedTestFile(const char* name, ivIOControl& control);

// Settings of a test's own, in a folder that goes away with it; installed as the program's
// settings for as long as it lives.
class ScratchSettings {
public:
    ScratchSettings();
    ~ScratchSettings();
    ivSettings& Settings() { return *m_settings; }
    QString Folder() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<ivSettings> m_settings;
};

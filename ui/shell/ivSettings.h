#pragma once
#include <QString>
#include <memory>

#include "pdf/analysis/pdfImageExport.h"
#include "ui/shell/ivRecentFiles.h"

class QSettings;

// The program's settings store, one per process: the user's "Morvane Software KFT"/"Vantrel"
// settings (the registry on Windows, ~/.config/Morvane Software KFT/Vantrel.conf elsewhere),
// with the group and value names in one place. Values that cannot be read give their
// defaults; a failure to write is not reported.
class ivSettings {
public:
    ivSettings();
    // A store of its own in `iniFile`, for tests.
    explicit ivSettings(const QString& iniFile);
    ~ivSettings();
    ivSettings(const ivSettings&) = delete;
    ivSettings& operator=(const ivSettings&) = delete;

    // The store the program uses; set by start-up (tests set their own).
    static ivSettings* Instance();
    static void SetInstance(ivSettings* settings);

    // "options"
    bool LoadLast() const;  // open the most recent file at start-up (default on)
    void SetLoadLast(bool on);
    int ActiveTab() const;  // the left group's front tab at start-up (default 0)
    void SetActiveTab(int tab);
    QString Theme() const;  // colour theme, at most 64 characters (default "white")
    void SetTheme(const QString& name);
    bool ExtraChecks() const;  // our own checks beyond the standard report (default off)
    void SetExtraChecks(bool on);

    // "tools": the image export's settings.
    pdfExportSettings Export() const;
    void SetExport(const pdfExportSettings& settings);

    // "files/MRU": the recent-files list, one value a position.
    ivRecentStore& Recent() { return *m_recent; }

    QSettings& Store() { return *m_store; }

private:
    int Integer(const QString& key, int fallback) const;

    std::unique_ptr<QSettings> m_store;
    std::unique_ptr<ivRecentStore> m_recent;
};

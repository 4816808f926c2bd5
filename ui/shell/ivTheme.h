#pragma once
#include <QColor>
#include <QString>
#include <QStringList>

#include "ui/shell/ivThemeFile.h"

class QApplication;

// The colour theme: "NAME.thm" beside the executable, else in the installed data folder
// (share/vantrel/themes). It sets the application's palette and answers the painting code's
// questions by colour-theme name and property identifier (8 background, 202 border,
// 240 text). A theme found in neither place leaves the built-in colours.
class ivTheme {
public:
    // The folders searched, in order.
    static QStringList Folders();
    // Loads the named theme; false when no file was found.
    bool Load(const QString& name);
    bool LoadFile(const QString& path);
    // Sets the palette of the whole application from the sections "window", "tree" and "hint".
    void Apply(QApplication& app) const;
    // The colour of a property of one window kind ("mainmenu", "viewFrame", "warning", "error");
    // `fallback` when the theme does not give it.
    QColor Color(const char* section, int id, const QColor& fallback) const;

    static ivTheme& Current();

private:
    ivThemeFile m_file;
};

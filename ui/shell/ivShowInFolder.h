#pragma once
#include <QString>

// Shows the file selected in the system's file browser: Explorer on Windows; elsewhere the
// file manager's org.freedesktop.FileManager1 ShowItems over D-Bus, or, without one, the
// containing folder opened as a URL.
void ShowInFolder(const QString& path);

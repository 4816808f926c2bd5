#pragma once
#include <QDialog>

// The about box: the program's title and version, what it is, and where it keeps its settings.
class CAboutDialog : public QDialog {
    Q_OBJECT
public:
    explicit CAboutDialog(QWidget* parent = nullptr);
};

#pragma once
#include <QDialog>

class ivPdf;

// The document properties sheet "Document Properties": the page "General" (file, version,
// size and the document information entries) and the page "Security".
class CInfoDlg : public QDialog {
    Q_OBJECT
public:
    CInfoDlg(ivPdf& doc, QWidget* parent = nullptr);

    // The "General" page on its own, filled from the document.
    static QWidget* GeneralPage(ivPdf& doc);
};

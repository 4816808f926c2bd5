#pragma once
#include <QDialog>
#include <atomic>
#include <functional>
#include <thread>

#include "pdf/analysis/pdfImageExport.h"

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QLineEdit;
class QProgressBar;
class ivPdf;
class ivSettings;

// "Extract All Images": the output folder, the format of decoded images, the file naming
// and whether JPEG data is copied out as it is. OK checks the folder (making it when it is
// missing), stores the choices under "tools" and writes every image on a worker thread while
// the progress bar advances; the dialog closes when the worker is done. The document must
// not change meanwhile, which the dialog being modal ensures.
class CSaveDialog : public QDialog {
    Q_OBJECT
public:
    CSaveDialog(ivPdf& doc, ivSettings& settings, QWidget* parent = nullptr);
    ~CSaveDialog() override;

    // How a problem with the folder is shown; a message box titled with the product by default.
    void SetWarningHandler(std::function<void(const QString&)> warn) { m_warn = std::move(warn); }
    const pdfExportOutcome& Outcome() const { return m_outcome; }
    bool Running() const { return m_worker.joinable(); }

    QLineEdit* FolderEdit() const { return m_folder; }
    QComboBox* FormatList() const { return m_format; }
    QComboBox* NamingList() const { return m_naming; }
    QCheckBox* KeepJpegBox() const { return m_keepJpeg; }

public Q_SLOTS:
    void accept() override;  // OK: check, store, start
    void reject() override;  // ignored while the worker runs

Q_SIGNALS:
    void Finished();

private:
    // The folder as typed, made if missing; empty after a warning.
    QString CheckFolder();
    void Start(const pdfExportSettings& settings);
    void WorkerDone();
    void Browse();

    ivPdf& m_doc;
    ivSettings& m_settings;
    std::function<void(const QString&)> m_warn;
    QLineEdit* m_folder;
    QComboBox* m_format;
    QComboBox* m_naming;
    QCheckBox* m_keepJpeg;
    QProgressBar* m_progress;
    QDialogButtonBox* m_buttons;
    std::thread m_worker;
    pdfExportOutcome m_outcome;
};

#include "ui/shell/CSaveDialog.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <filesystem>

#include "pdf/analysis/ivSessionTexts.h"
#include "platform/ivCodec.h"
#include "platform/ivFormat.h"
#include "ui/shell/ivSettings.h"

CSaveDialog::CSaveDialog(ivPdf& doc, ivSettings& settings, QWidget* parent)
    : QDialog(parent),
      m_doc(doc),
      m_settings(settings),
      m_folder(new QLineEdit),
      m_format(new QComboBox),
      m_naming(new QComboBox),
      m_keepJpeg(new QCheckBox("Copy JPEG images out as they are")),
      m_progress(new QProgressBar),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)) {
    setWindowTitle("Extract All Images");
    setObjectName("CSaveDialog");
    m_warn = [this](const QString& text) { QMessageBox::warning(this, kProductTitle, text); };
    const pdfExportSettings stored = settings.Export();

    m_folder->setText(QString::fromStdString(stored.si_Folder));
    auto* browse = new QPushButton("...");
    browse->setToolTip("Browse for folder");
    browse->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(browse, &QPushButton::clicked, this, &CSaveDialog::Browse);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(m_folder, 1);
    folderRow->addWidget(browse);

    for (const ivCodecInfo& codec : RegisteredCodecs()) {
        if (!(codec.caps & kCodecExport)) continue;
        m_format->addItem(
            QString("%1 - %2").arg(QString::fromUtf8(codec.extension.data(), codec.extension.size()),
                                   QString::fromUtf8(codec.name.data(), codec.name.size())),
            QString::fromUtf8(codec.id.data(), codec.id.size()));
        if (codec.id == stored.si_format) m_format->setCurrentIndex(m_format->count() - 1);
    }
    m_naming->addItems({"Object ID", "Index number"});
    m_naming->setCurrentIndex(stored.si_name == 1 ? 1 : 0);
    m_keepJpeg->setChecked(stored.si_keepJpeg);
    m_progress->setVisible(false);

    auto* form = new QFormLayout(this);
    form->addRow("Output folder:", folderRow);
    form->addRow("Format:", m_format);
    form->addRow("File names:", m_naming);
    form->addRow(m_keepJpeg);
    form->addRow(m_progress);
    form->addRow(m_buttons);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &CSaveDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &CSaveDialog::reject);
    setMinimumWidth(460);
}

CSaveDialog::~CSaveDialog() {
    if (m_worker.joinable()) m_worker.join();
}

void CSaveDialog::Browse() {
    const QString folder = QFileDialog::getExistingDirectory(this, "Browse for folder", m_folder->text());
    if (!folder.isEmpty()) m_folder->setText(QDir::toNativeSeparators(folder));
}

QString CSaveDialog::CheckFolder() {
    const QString folder = m_folder->text().trimmed();
    if (folder.isEmpty()) {
        m_warn("Please specify output folder!");
        m_folder->setFocus();
        return {};
    }
    std::error_code ec;
    const std::filesystem::path path(folder.toStdString());
    std::filesystem::create_directories(path, ec);
    if (!std::filesystem::is_directory(path, ec)) {
        m_warn(QString::fromStdString(ivFormat("Can't create folder %s", folder.toStdString().c_str())));
        m_folder->setFocus();
        return {};
    }
    return folder;
}

void CSaveDialog::accept() {
    if (Running()) return;
    QString folder = CheckFolder();
    if (folder.isEmpty()) return;
    pdfExportSettings s;
    s.si_keepJpeg = m_keepJpeg->isChecked();
    s.si_name = m_naming->currentIndex();
    s.si_format = m_format->currentData().toString().toStdString();
    s.si_Folder = folder.toStdString();
    m_settings.SetExport(s);
    if (!folder.endsWith('/') && !folder.endsWith(QDir::separator())) folder += QDir::separator();
    s.si_Folder = folder.toStdString();
    Start(s);
}

void CSaveDialog::reject() {
    if (!Running()) QDialog::reject();
}

void CSaveDialog::Start(const pdfExportSettings& settings) {
    for (QWidget* w : std::initializer_list<QWidget*>{m_folder, m_format, m_naming, m_keepJpeg})
        w->setEnabled(false);
    m_buttons->setEnabled(false);
    m_progress->setRange(0, 0);
    m_progress->setVisible(true);
    // The worker only reads the document and writes files; it tells the dialog through queued
    // calls, which run on this thread.
    m_worker = std::thread([this, settings] {
        m_outcome = ExportImages(m_doc, settings, [this](std::uint32_t done, std::uint32_t total) {
            QMetaObject::invokeMethod(
                this,
                [this, done, total] {
                    m_progress->setRange(0, static_cast<int>(total));
                    m_progress->setValue(static_cast<int>(done));
                },
                Qt::QueuedConnection);
        });
        QMetaObject::invokeMethod(this, &CSaveDialog::WorkerDone, Qt::QueuedConnection);
    });
}

void CSaveDialog::WorkerDone() {
    if (m_worker.joinable()) m_worker.join();
    Q_EMIT Finished();
    QDialog::accept();
}

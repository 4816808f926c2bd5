#include "ui/shell/CInfoDlg.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "pdf/analysis/ivPdf.h"
#include "pdf/analysis/pdfDocInfo.h"
#include "platform/ivFormat.h"
#include "ui/shell/CSecDlg.h"
#include "ui/shell/ivShowInFolder.h"

namespace {

QLineEdit* Field(const std::optional<std::string>& text, const QString& name) {
    auto* edit = new QLineEdit(text ? QString::fromStdString(*text) : QString());
    edit->setReadOnly(true);
    edit->setObjectName(name);
    edit->setCursorPosition(0);
    return edit;
}

}  // namespace

QWidget* CInfoDlg::GeneralPage(ivPdf& doc) {
    auto* page = new QWidget;
    page->setObjectName("CInfoDlgGeneral");
    auto* form = new QFormLayout(page);
    const QString path = QString::fromStdString(doc.FileName());
    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(Field(doc.FileName(), "file"), 1);
    auto* show = new QPushButton("Show in Folder");
    QObject::connect(show, &QPushButton::clicked, page, [path] { ShowInFolder(path); });
    fileRow->addWidget(show);
    form->addRow("File:", fileRow);
    const std::optional<pdfDocInfo> info = ReadDocInfo(doc);
    const pdfDocInfo none;
    const pdfDocInfo& i = info ? *info : none;
    form->addRow("Title:", Field(i.title, "title"));
    form->addRow("Author:", Field(i.author, "author"));
    form->addRow("Subject:", Field(i.subject, "subject"));
    form->addRow("Application:", Field(i.creator, "creator"));
    form->addRow("PDF Producer:", Field(i.producer, "producer"));
    form->addRow("File Size:", Field(FormatSizeEx(doc.FileSize()), "size"));
    form->addRow("Keywords:", Field(i.keywords, "keywords"));
    form->addRow("PDF Version:", Field(VersionText(doc.VersionMajor(), doc.VersionMinor()), "version"));
    return page;
}

CInfoDlg::CInfoDlg(ivPdf& doc, QWidget* parent) : QDialog(parent) {
    setWindowTitle("Document Properties");
    setObjectName("dialog_document");
    auto* tabs = new QTabWidget;
    tabs->addTab(GeneralPage(doc), "General");
    tabs->addTab(new CSecDlg(doc.Security(), this), "Security");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
    resize(520, 400);
}

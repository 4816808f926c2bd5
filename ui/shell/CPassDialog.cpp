#include "ui/shell/CPassDialog.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "pdf/analysis/ivSessionTexts.h"

CPassDialog::CPassDialog(const QString& fileName, const QString& lastTried, QWidget* parent)
    : QDialog(parent), m_edit(new QLineEdit(lastTried)) {
    setWindowTitle("Password");
    setObjectName("CPassDialog");
    auto* prompt = new QLabel(QString::fromStdString(PasswordPromptText(fileName.toStdString())));
    prompt->setWordWrap(true);
    auto* label = new QLabel("&Enter password:");
    label->setBuddy(m_edit);
    m_edit->setEchoMode(QLineEdit::Password);
    m_edit->selectAll();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(prompt);
    layout->addWidget(label);
    layout->addWidget(m_edit);
    layout->addWidget(buttons);
    setMinimumWidth(380);
}

QString CPassDialog::Password() const {
    return m_edit->text();
}

bool ivDialogPasswordPrompt::AskPassword(const std::string& fileName, std::string& password) {
    // The document is being opened under a wait cursor; the dialog wants the normal one.
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    CPassDialog dialog(QString::fromStdString(fileName), QString::fromStdString(password), m_parent);
    const bool ok = dialog.exec() == QDialog::Accepted;
    QApplication::restoreOverrideCursor();
    if (ok) password = dialog.Password().toStdString();
    return ok;
}

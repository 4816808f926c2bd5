#pragma once
#include <QDialog>

#include "pdf/decode/ivPasswordPrompt.h"

class QLineEdit;

// Asks for a document open password: "'NAME' is protected. ..." above one edit field.
class CPassDialog : public QDialog {
    Q_OBJECT
public:
    // `fileName` is the file's short name; `lastTried` pre-fills the field.
    CPassDialog(const QString& fileName, const QString& lastTried, QWidget* parent = nullptr);
    QString Password() const;

private:
    QLineEdit* m_edit;
};

// The password prompt of the desktop program: the dialog, over `parent`, until Cancel.
class ivDialogPasswordPrompt final : public ivPasswordPrompt {
public:
    explicit ivDialogPasswordPrompt(QWidget* parent) : m_parent(parent) {}
    bool AskPassword(const std::string& fileName, std::string& password) override;

private:
    QWidget* m_parent;  // not owned
};

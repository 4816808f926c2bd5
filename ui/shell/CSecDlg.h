#pragma once
#include <QWidget>

class ivDecrypt;

// The "Security" page of the document properties: "No Security", or the encryption method,
// the key length and the file key.
class CSecDlg : public QWidget {
    Q_OBJECT
public:
    // `security` is the document's decryptor, or null.
    explicit CSecDlg(const ivDecrypt* security, QWidget* parent = nullptr);
};

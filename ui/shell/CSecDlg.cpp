#include "ui/shell/CSecDlg.h"

#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "pdf/decode/ivDecrypt.h"
#include "platform/ivFormat.h"

namespace {

QLabel* Value(const std::string& text) {
    auto* label = new QLabel(QString::fromStdString(text));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

}  // namespace

CSecDlg::CSecDlg(const ivDecrypt* security, QWidget* parent) : QWidget(parent) {
    setObjectName("CSecDlg");
    if (!security) {
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(new QLabel("No Security"));
        layout->addStretch();
        return;
    }
    auto* form = new QFormLayout(this);
    form->addRow("Method:", Value(security->MethodText()));
    form->addRow("Key length:", Value(ivFormat("%d bit", security->Length())));
    form->addRow("Key:", Value(security->FileKeyText()));
}

#include "ui/shell/CAboutDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "pdf/analysis/ivSessionTexts.h"
#include "ui/shell/ivIcons.h"

CAboutDialog::CAboutDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QString("About ") + kProductTitle);
    setObjectName("CAboutDialog");
    auto* icon = new QLabel;
    icon->setPixmap(ivAppIcon().pixmap(64, 64));
    icon->setAlignment(Qt::AlignTop);
    auto* text = new QLabel(QString("<h3>%1</h3>"
                                    "<p>An inspector and structural validator for PDF files.</p>"
                                    "<p>Build %2 &middot; Qt %3</p>")
                                .arg(kProductTitle, VANTREL_VERSION, qVersion()));
    text->setTextFormat(Qt::RichText);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* row = new QHBoxLayout;
    row->addWidget(icon);
    row->addWidget(text, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(buttons);
}

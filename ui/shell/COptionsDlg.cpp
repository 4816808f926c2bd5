#include "ui/shell/COptionsDlg.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "pdf/analysis/ivSessionTexts.h"
#include "ui/shell/ivSettings.h"

COptionsDlg::COptionsDlg(ivSettings& settings, QWidget* parent)
    : QDialog(parent),
      m_settings(settings),
      m_loadLast(new QCheckBox("Open last file")),
      m_activeTab(new QComboBox),
      m_extraChecks(new QCheckBox("Extra checks")) {
    setWindowTitle(QString(kProductTitle) + " Options");
    setObjectName("dialog_options");
    m_loadLast->setChecked(settings.LoadLast());
    m_activeTab->addItems({"Document Tree", "Pages", "Fonts", "Images"});
    const int tab = settings.ActiveTab();
    m_activeTab->setCurrentIndex(tab >= 0 && tab < 4 ? tab : -1);  // an unknown value selects nothing
    m_extraChecks->setChecked(settings.ExtraChecks());
    m_extraChecks->setToolTip(
        "Also report our own checks beyond the standard report (from the next file opened)");

    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    form->addRow(m_loadLast);
    form->addRow("Activate:", m_activeTab);
    form->addRow(m_extraChecks);
    auto* tabs = new QTabWidget;
    tabs->addTab(page, "General");

    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        Apply();
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this, &COptionsDlg::Apply);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
}

void COptionsDlg::Apply() {
    m_settings.SetLoadLast(m_loadLast->isChecked());
    // With nothing selected the stored value stays as it is.
    if (m_activeTab->currentIndex() >= 0) m_settings.SetActiveTab(m_activeTab->currentIndex());
    m_settings.SetExtraChecks(m_extraChecks->isChecked());
}

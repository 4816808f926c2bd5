#pragma once
#include <QDialog>

class QCheckBox;
class QComboBox;
class ivSettings;

// "Vantrel 1.2 Options", page "General": open the last file at start-up, the left pane that
// comes to the front at start-up, and our own checks beyond the standard report. The first
// two take effect at the next start, the last at the next file opened.
class COptionsDlg : public QDialog {
    Q_OBJECT
public:
    COptionsDlg(ivSettings& settings, QWidget* parent = nullptr);

    QCheckBox* LoadLastBox() const { return m_loadLast; }
    QComboBox* ActiveTabList() const { return m_activeTab; }
    QCheckBox* ExtraChecksBox() const { return m_extraChecks; }

    // Writes the three values.
    void Apply();

private:
    ivSettings& m_settings;
    QCheckBox* m_loadLast;
    QComboBox* m_activeTab;
    QCheckBox* m_extraChecks;
};

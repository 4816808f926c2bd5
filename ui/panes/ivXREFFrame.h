#pragma once
#include "ui/panes/ivBaseTreeFrame.h"

class QLabel;
class QLineEdit;

// The cross-reference pane: the search box above the tree of sections and entries. Enter in
// the box applies its text as a filter, clearing it removes the filter; while a filter is
// applied, the number of entries it lets through shows beside the box.
class ivXREFFrame : public ivBaseTreeFrame {
    Q_OBJECT
public:
    explicit ivXREFFrame(QWidget* parent = nullptr);
    QLineEdit* SearchBox() const { return m_search; }
    // "37 of 1,000,218" while a filter is applied, else empty.
    QString CountText() const;

    // Selects the entry of an object in the first section that holds it; beeps for an object
    // without an entry.
    void Locate(unsigned num, unsigned gen);
    // Puts `text` into the box and applies it.
    void Filter(const QString& text);
    void ApplyFilter();
    void ClearFilter();

protected:
    void Fill() override;

private:
    QLineEdit* m_search;
    QLabel* m_count;
};

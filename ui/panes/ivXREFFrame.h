#pragma once
#include "ui/panes/ivBaseTreeFrame.h"

class QLineEdit;

// The cross-reference pane: the search box above the tree of sections and entries.
class ivXREFFrame : public ivBaseTreeFrame {
    Q_OBJECT
public:
    explicit ivXREFFrame(QWidget* parent = nullptr);
    QLineEdit* SearchBox() const { return m_search; }

private:
    QLineEdit* m_search;
};

#pragma once
#include <QDialog>

class QTreeWidget;
class ivCommandTable;

// "Keyboard Shortcuts": every command of the table that has a key, its keys joined by ", ",
// and what it does (its hint, else its menu text).
class CKeysDialog : public QDialog {
    Q_OBJECT
public:
    CKeysDialog(const ivCommandTable& table, QWidget* parent = nullptr);
    QTreeWidget* List() const { return m_list; }

private:
    QTreeWidget* m_list;
};

#include "ui/shell/CKeysDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "ui/shell/ivCommandTable.h"

namespace {

constexpr int kKeyColumnWidth = 96;

std::string Joined(const std::vector<std::string>& keys) {
    std::string out;
    for (const std::string& k : keys) out += (out.empty() ? "" : ", ") + k;
    return out;
}

// The menu text without its mnemonic marks.
std::string PlainText(const ivCommandInfo& c) {
    std::string text;
    for (char ch : c.DisplayText())
        if (ch != '&') text += ch;
    return text;
}

}  // namespace

CKeysDialog::CKeysDialog(const ivCommandTable& table, QWidget* parent)
    : QDialog(parent), m_list(new QTreeWidget) {
    setWindowTitle("Keyboard Shortcuts");
    setObjectName("CKeysDialog");
    m_list->setColumnCount(2);
    m_list->setHeaderLabels({"Key", "Description"});
    m_list->setRootIsDecorated(false);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->setAllColumnsShowFocus(true);
    // The description takes the rest of the list's width.
    m_list->header()->setStretchLastSection(true);
    m_list->setColumnWidth(0, kKeyColumnWidth);
    for (const ivCommandInfo& c : table.Commands()) {
        if (c.keys.empty()) continue;
        const std::string what = c.hint.empty() ? PlainText(c) : c.hint;
        new QTreeWidgetItem(m_list, {QString::fromStdString(Joined(c.keys)), QString::fromStdString(what)});
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
    resize(420, 360);
}
